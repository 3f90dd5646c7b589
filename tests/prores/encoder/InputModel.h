#pragma once

#include "support/GuardedBytes.h"

#include <array>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

/// What Y'CbCr input converters should do, told anew from the layouts of the pixel formats.
namespace input_model {

enum Channel { alpha, luma, cb, cr };

struct Format {
    const char* name;
    uint32_t pixelFormat;
    int32_t sampleBytes;          ///< 1, 2, or 4 for floats
    bool packed;                  ///< 4:2:2: four samples are two pixels
    std::array<Channel, 4> order; ///< of four samples in memory

    int32_t BytesOf(int32_t pixels) const {
        return packed ? (pixels + 1) / 2 * 4 * sampleBytes : pixels * 4 * sampleBytes;
    }
};

const std::vector<Format>& Formats();
const Format& FormatOf(uint32_t pixelFormat);

/// Values of 16 by 16 pixels: integers, but for `r4fl`. Packed formats have the chroma of even pixels only.
struct Pixels {
    std::array<std::array<std::array<double, 16>, 16>, 4> values; ///< by channel, row and column

    double& At(Channel channel, int32_t x, int32_t y);
    double At(Channel channel, int32_t x, int32_t y) const;
    /// Gives each value a number of its own from `next`.
    void Fill(const std::function<double()>& next);
};

/// Ways to fill pixels of a format: random, and extreme.
std::vector<std::function<double()>> Fills(const Format& format, std::mt19937& random);

/// The sample that a value becomes.
int32_t SampleOf(const Format& format, Channel channel, double value);

/// The blocks of a macroblock of which `rows` rows and `columns` pixels exist.
std::vector<int16_t> BlocksOf(const Format& format, const Pixels& pixels, int32_t chromaFormat, int32_t rows,
                              int32_t columns);

/// The existing part of a macroblock in memory with nothing else around it on one side.
class PackedPixels {
public:
    struct Shape {
        int32_t rows = 16;
        int32_t columns = 16;
        int32_t gap = 0;      ///< bytes between rows
        bool upwards = false; ///< each row stands before the one above it
    };
    PackedPixels(const Format& format, const Pixels& pixels, Shape shape,
                 GuardedBytes::Guard guard = GuardedBytes::Guard::Behind);

    uint8_t* Source() const { return memory_.data() + (shape_.upwards ? (shape_.rows - 1) * stride_ : 0); }
    ptrdiff_t RowBytes() const { return shape_.upwards ? -stride_ : stride_; }
    const Shape& GetShape() const { return shape_; }

private:
    Shape shape_;
    ptrdiff_t stride_;
    GuardedBytes memory_;
};

} // namespace input_model
