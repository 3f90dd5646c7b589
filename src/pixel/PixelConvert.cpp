#include "pixel/PixelConvert.h"

#include "host/Platform.h"
#include "pixel/PixelFormatTable.h"
#include "pixel/RowConverters.h"
#include "pixel/RowConvertersVector.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr int blobAlignment = 32;
constexpr int64_t matrixBt709 = 1;

bool HasPixels(const Image& image) { return image.Width > 0 && image.Height > 0; }

/// Bytes of a blob row that the image's pixels take in a format.
int64_t LeastRowBytes(const PixelFormat& format, const Image& image) {
    return HasPixels(image) ? static_cast<int64_t>(format.least.Bytes(static_cast<uint32_t>(image.Width)))
                            : 0;
}

/// Whether blob rows hold the image's pixels; an image without pixels needs no rows.
bool RowsFit(const PixelFormat& format, const Image& image, int32_t rowBytes) {
    return !HasPixels(image) || rowBytes >= LeastRowBytes(format, image);
}

/// A buffer of the image's rows, none for a negative height; or null.
uint8_t* AllocateBlob(const Image& image, int32_t rowBytes) {
    const int64_t rows = std::max(image.Height, 0);
    return static_cast<uint8_t*>(Platform::AllocMemAligned(rows * rowBytes, blobAlignment));
}

/// Clears the bytes of each row from `used` on: the conversion to come leaves them alone, and they are not to
/// carry old memory into a file.
void ClearRowEnds(uint8_t* blob, const Image& image, int32_t rowBytes, int64_t used) {
    for (int64_t row = 0; row < image.Height; ++row)
        std::memset(blob + row * rowBytes + used, 0, static_cast<size_t>(rowBytes - used));
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

/// Runs the vector converter, or the scalar one where there is none.
bool ConvertRows(Image* image, Image::RowFunction vector, Image::RowFunction scalar, uint8_t* blob,
                 int32_t rowBytes) {
    if (!HasPixels(*image)) return true;
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
    if (image == nullptr || !RowsFit(*format, *image, step)) return false;
    if (blob == nullptr && HasPixels(*image)) return false;

    const PixelRoute& route = format->read;
    if (route.kind == PixelRoute::Kind::Rows)
        return ConvertRows(image, VectorRowReader(route.packing, *image), ScalarRowReader(route.packing),
                           blob, step);
    // Whether the host's conversion succeeds is not seen. Kept.
    ReadByHost(image, route.layout, blob, step);
    return true;
}

bool PixelConvert::ImageToBlob(Image*& image, int32_t fourCC, int32_t rowBytes, uint8_t*& blob, bool flag) {
    if (image == nullptr) return false;
    const bool isFresh = blob == nullptr;
    if (isFresh) blob = AllocateBlob(*image, rowBytes);
    if (blob == nullptr) return false;

    // A buffer made for a conversion that is then refused stays with the caller, as it is. Kept.
    const PixelFormat* format = FindPixelFormat(static_cast<uint32_t>(fourCC));
    if (format == nullptr || format->write.kind == PixelRoute::Kind::None) return false;
    if (!RowsFit(*format, *image, rowBytes)) return false;

    const PixelRoute& route = format->write;
    if (route.kind == PixelRoute::Kind::Rows) {
        if (isFresh) ClearRowEnds(blob, *image, rowBytes, LeastRowBytes(*format, *image));
        ConvertRows(image, VectorRowWriter(route.packing, *image), ScalarRowWriter(route.packing), blob,
                    rowBytes);
    } else {
        // Only the row converters are sure to fill what they are given.
        if (isFresh) ClearRowEnds(blob, *image, rowBytes, 0);
        WriteByHost(image, route.layout, blob, rowBytes, flag);
    }
    return true;
}
