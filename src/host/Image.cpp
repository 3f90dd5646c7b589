#include "host/Image.h"

#include "host/ImageAccessors.h"

#include <cstdlib>
#include <limits>
#include <new>

namespace {

/// Rows start on cache lines, so that threads on neighbouring rows never share one.
constexpr int64_t rowAlignment = 64;

constexpr int64_t RoundUpToRow(int64_t bytes) {
    return (bytes + rowAlignment - 1) / rowAlignment * rowAlignment;
}

uint8_t* AlignToRow(void* block) {
    const uintptr_t address = reinterpret_cast<uintptr_t>(block);
    return static_cast<uint8_t*>(block) + (rowAlignment - address % rowAlignment) % rowAlignment;
}

} // namespace

Image::~Image() { std::free(pixelBlock_); }

bool Image::SetAttrsTagList(const TagList& tags) {
    interlaced_ = static_cast<int32_t>(tags.GetLong(ImageTag_Interlaced, interlaced_));
    return RefObject::SetAttrsTagList(tags) || tags.FindQuery(ImageTag_Interlaced);
}

bool Image::CopyAttr(Tag key, void* out) {
    if (key != ImageTag_Interlaced) return RefObject::CopyAttr(key, out);
    *static_cast<int32_t*>(out) = interlaced_;
    return true;
}

bool Image::AllocateRows(int64_t rowBytes) {
    constexpr int64_t largest = std::numeric_limits<int64_t>::max() - rowAlignment;
    if (rowBytes > 0 && Height > largest / rowBytes) return false;

    // Large blocks come as zero pages, which cost nothing until a thread writes to them.
    pixelBlock_ = std::calloc(1, static_cast<size_t>(rowBytes * Height + rowAlignment));
    rows_.reset(new (std::nothrow) uint8_t*[static_cast<size_t>(Height)]);
    if (pixelBlock_ == nullptr || rows_ == nullptr) return false;

    uint8_t* const bottomRow = AlignToRow(pixelBlock_);
    for (int32_t row = 0; row < Height; ++row)
        rows_[row] = bottomRow + row * rowBytes;
    RowTable = rows_.get();
    return true;
}

Image* Image::Allocate(int32_t width, int32_t height, ImageDataKind kind) {
    const ImageKindDescriptor* const descriptor = FindImageKind(kind);
    if (width < 0 || height < 0 || descriptor == nullptr) return nullptr;

    Image* image = new (std::nothrow) Image;
    if (image == nullptr) return nullptr;
    image->Width = width;
    image->Height = height;
    image->DataFormat = &descriptor->format;
    image->PixelStride = static_cast<int32_t>(descriptor->format.BytesPerPixel);
    image->GetPixel = descriptor->getPixel;
    image->SetPixel = descriptor->setPixel;
    image->GetPixelFloat = descriptor->getPixelFloat;
    image->SetPixelFloat = descriptor->setPixelFloat;
    if (!image->AllocateRows(RoundUpToRow(int64_t{width} * image->PixelStride))) Free(image);
    return image;
}

void Image::Free(Image*& image) {
    delete image;
    image = nullptr;
}

bool Image::HasHostAccessors() const {
    const ImageKindDescriptor* const descriptor =
        DataFormat != nullptr ? FindImageKind(DataFormat->Kind) : nullptr;
    return descriptor != nullptr && GetPixel == descriptor->getPixel && SetPixel == descriptor->setPixel &&
           GetPixelFloat == descriptor->getPixelFloat && SetPixelFloat == descriptor->setPixelFloat;
}

bool Image::HasPlainPixels() const {
    return HasHostAccessors() && HasMainData() &&
           PixelStride == static_cast<int32_t>(DataFormat->BytesPerPixel);
}
