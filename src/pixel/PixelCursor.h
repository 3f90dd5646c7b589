#pragma once

#include "host/Image.h"

#include <cstdint>

/// Walks the pixels of one image row from the left, by way of the image's own accessors.
///
/// Everything that the walk needs is read from the image once. Addresses are kept as numbers: on an image
/// without main data they are mere offsets from 0, and the accessors are called with these all the same.
class PixelCursor {
public:
    /// Starts at column 0 of image row `row`, 0 being the bottom row of the picture.
    PixelCursor(Image* image, int32_t row)
        : image_(image), stride_(image->PixelStride), auxStride_(image->AuxPixelStride),
          data_(reinterpret_cast<uintptr_t>(image->RowAddress(row))),
          aux_(reinterpret_cast<uintptr_t>(image->AuxRowAddress(row))), getPixel_(image->GetPixel),
          setPixel_(image->SetPixel), getPixelFloat_(image->GetPixelFloat),
          setPixelFloat_(image->SetPixelFloat) {}

    void Get(Pixel& pixel) const { getPixel_(pixel, Data(), Aux(), image_); }
    void Set(const Pixel& pixel) const { setPixel_(pixel, Data(), Aux(), image_); }
    void Get(PixelFloat& pixel) const { getPixelFloat_(pixel, Data(), Aux(), image_); }
    void Set(const PixelFloat& pixel) const { setPixelFloat_(pixel, Data(), Aux(), image_); }

    /// Goes to the next pixel on the right.
    void Step() {
        data_ += static_cast<uintptr_t>(stride_);
        aux_ += static_cast<uintptr_t>(auxStride_);
    }

private:
    uint8_t* Data() const { return reinterpret_cast<uint8_t*>(data_); }
    uint8_t* Aux() const { return reinterpret_cast<uint8_t*>(aux_); }

    Image* image_;
    intptr_t stride_;
    intptr_t auxStride_;
    uintptr_t data_;
    uintptr_t aux_;
    Image::GetPixelFunction getPixel_;
    Image::SetPixelFunction setPixel_;
    Image::GetPixelFloatFunction getPixelFloat_;
    Image::SetPixelFloatFunction setPixelFloat_;
};
