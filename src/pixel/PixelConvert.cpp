#include "pixel/PixelConvert.h"

#include "host/Platform.h"
#include "pixel/PixelFormatTable.h"
#include "pixel/RowConverters.h"
#include "pixel/RowConvertersVector.h"

#include <cstring>

namespace {

constexpr int blobAlignment = 32;
constexpr int64_t matrixBt709 = 1;

/// Bytes of a blob row that the image's pixels take in a format.
int64_t LeastRowBytes(const PixelFormat& format, const Image& image) {
    return image.Width > 0 ? static_cast<int64_t>(format.least.Bytes(static_cast<uint32_t>(image.Width))) : 0;
}

bool RowsFit(const PixelFormat& format, const Image& image, int32_t rowBytes) {
    return rowBytes >= 0 && rowBytes >= LeastRowBytes(format, image);
}

bool HasPixels(const Image& image) { return image.Width > 0 && image.Height > 0; }

/// A buffer for `image`, or null. Bytes of a row from `used` on are 0: the conversion to come leaves them
/// alone, and they are not to carry old memory into a file.
uint8_t* AllocateBlob(const Image& image, int32_t rowBytes, int64_t used) {
    if (image.Height < 0 || rowBytes < 0) return nullptr;
    auto* blob =
        static_cast<uint8_t*>(Platform::AllocMemAligned(int64_t{image.Height} * rowBytes, blobAlignment));
    if (blob == nullptr) return nullptr;
    for (int64_t row = 0; row < image.Height; ++row)
        std::memset(blob + row * rowBytes + used, 0, static_cast<size_t>(rowBytes - used));
    return blob;
}

void ReadByHost(Image* image, ColorLayout layout, uint8_t* blob, int32_t rowBytes) {
    const TagItem items[] = {
        {ColorTag_Buffer, TagItem::FromPtr(blob)},
        {ColorTag_Matrix, TagItem::FromInt(matrixBt709)},
        {ColorTag_Layout, TagItem::FromInt(layout)},
        {ColorTag_RowBytes, TagItem::FromInt(rowBytes)},
        {0, 0},
    };
    CxYUV2RGBTagList(image, TagList(items, false));
}

void WriteByHost(Image* image, ColorLayout layout, uint8_t* blob, int32_t rowBytes, bool flag) {
    const TagItem items[] = {
        {ColorTag_Width, TagItem::FromInt(image->Width)}, {ColorTag_Height, TagItem::FromInt(image->Height)},
        {ColorTag_Buffer, TagItem::FromPtr(blob)},        {ColorTag_Matrix, TagItem::FromInt(matrixBt709)},
        {ColorTag_Layout, TagItem::FromInt(layout)},      {ColorTag_Flag, TagItem::FromInt(flag)},
        {ColorTag_RowBytes, TagItem::FromInt(rowBytes)},  {0, 0},
    };
    CxRGB2YUVTagList(image, TagList(items, false));
}

bool ConvertRows(Image* image, Image::RowFunction vector, Image::RowFunction scalar, uint8_t* blob,
                 int32_t rowBytes) {
    RowContext context = {rowMarkerWithAlpha, rowBytes, blob};
    return image->DoMultiProcess(vector != nullptr ? vector : scalar, &context, image->Height, nullptr,
                                 false);
}

} // namespace

int32_t PixelConvert::CalcRowBytes(uint32_t fourCC, uint32_t width) {
    const PixelFormat* format = FindPixelFormat(fourCC);
    // The width is not checked: the size wraps at 32 bits. Kept.
    return format != nullptr ? static_cast<int32_t>(format->row.Bytes(width)) : 0;
}

bool PixelConvert::BlobToImage(uint8_t* blob, uint32_t rowBytes, uint32_t fourCC, Image*& image) {
    const PixelFormat* format = FindPixelFormat(fourCC);
    const auto step = static_cast<int32_t>(rowBytes);
    if (format == nullptr || format->read.kind == PixelRoute::Kind::None) return false;
    if (blob == nullptr || image == nullptr || !RowsFit(*format, *image, step)) return false;

    const PixelRoute& route = format->read;
    if (route.kind == PixelRoute::Kind::Rows)
        return ConvertRows(image, VectorRowReader(route.packing, *image), ScalarRowReader(route.packing),
                           blob, step);
    // Whether the host's conversion succeeds is not seen. Kept.
    if (HasPixels(*image)) ReadByHost(image, route.layout, blob, step);
    return true;
}

bool PixelConvert::ImageToBlob(Image*& image, int32_t fourCC, int32_t rowBytes, uint8_t*& blob, bool flag) {
    if (image == nullptr) return false;
    const PixelFormat* format = FindPixelFormat(static_cast<uint32_t>(fourCC));
    const PixelRoute route = format != nullptr ? format->write : PixelRoute();
    const bool isPossible = route.kind != PixelRoute::Kind::None && RowsFit(*format, *image, rowBytes);

    if (blob == nullptr) {
        // Only the row converters are sure to fill what they are given.
        const bool isFilled = isPossible && route.kind == PixelRoute::Kind::Rows;
        blob = AllocateBlob(*image, rowBytes, isFilled ? LeastRowBytes(*format, *image) : 0);
    }
    // A buffer made for a conversion that is then refused stays with the caller. Kept.
    if (blob == nullptr || !isPossible) return false;

    if (route.kind == PixelRoute::Kind::Rows) {
        ConvertRows(image, VectorRowWriter(route.packing, *image), ScalarRowWriter(route.packing), blob,
                    rowBytes);
    } else if (HasPixels(*image)) {
        WriteByHost(image, route.layout, blob, rowBytes, flag);
    }
    return true;
}
