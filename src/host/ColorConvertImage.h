#pragma once

#include "host/ColorConvertKernels.h"
#include "host/Image.h"

#include <cstdint>

/// The rows of an image as the conversions see them, by number from the top. Images that stand in memory as
/// the host lays them out are worked on directly, others pixel by pixel through their floating-point
/// accessors.
class ColorImage {
public:
    /// @param precise  whether the arithmetic must be double even for integer channels
    ColorImage(Image& image, const ColorKernels& kernels, bool precise);

    /// Whether there are pixels to work on: the host's accessors need main data. The accessors of others get
    /// offsets from address 0 without it.
    bool IsUsable() const;
    /// Whether the pixels stand in memory as bytes, in `PlainRow`.
    bool HasBytes() const { return WorkingKind() == ImageData_RGBA8; }
    uint8_t* PlainRow(int64_t row) const { return image_.RowAddress(ImageRow(row)); }
    /// Value of white in the working scale of the image.
    double White() const;

    /// @param pixels  scratch room for one row of float channels
    void WriteRow(int64_t row, int64_t width, const ColorLines& lines, const ColorToRgb& matrix,
                  float* pixels) const;
    void ReadRow(int64_t row, int64_t width, const ColorFromRgb& matrix, const ColorLines& lines,
                 float* pixels) const;

private:
    ImageDataKind WorkingKind() const;
    int32_t ImageRow(int64_t row) const { return static_cast<int32_t>(image_.Height - 1 - row); }

    Image& image_;
    ColorKernels::ToImage toImage_;
    ColorKernels::FromImage fromImage_;
};
