#pragma once

#include "host/ColorConvertSamples.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace color_scalar {

using namespace color_samples;

/// (1 2 1) / 4 about `middle`.
inline float Weigh121(const float* middle) {
    return ((middle[-1] + middle[1]) + (middle[0] + middle[0])) * 0.25f;
}

template <typename Real>
float WeighRgb(const ColorFromRgb::Weights& weights, Real red, Real green, Real blue, double offset) {
    const Real sum = (static_cast<Real>(weights[0]) * red + static_cast<Real>(weights[1]) * green) +
                     static_cast<Real>(weights[2]) * blue;
    return static_cast<float>(sum + static_cast<Real>(offset));
}

inline float LimitChroma(float code) { return std::min(std::max(code, -colorChromaLimit), colorChromaLimit); }

inline int32_t Limit16(int32_t value) { return std::clamp(value, -32768, 32767); }

/// A product of fractions of 2^15, rounded to nearest.
inline int32_t MultiplyBy15Bits(int32_t a, int32_t b) { return (a * b + (1 << 14)) >> 15; }

/// 2^8 times the chroma of the pixel at `x`, from samples that stand at every other pixel.
inline int32_t ChromaAt(const int16_t* line, int64_t x) {
    const int16_t* const sample = line + x / 2;
    return sample[0] + sample[x % 2];
}

/// The byte of a channel of which 2^7 are a step and 0 stands for 128. Doubling it limits it.
inline uint8_t ByteOf(int32_t channel) { return static_cast<uint8_t>((Limit16(2 * channel) >> 8) + 128); }

/// The stages of `ColorKernels` in their scalar form, over the elements from `begin` to before `end` of a
/// row. The vector forms finish their rows with it.
struct Steps {
    // Strings of C Y and C Y A

    template <typename T, bool HasAlpha>
    static void UnpackPairs(const uint8_t* row, const ColorLines& lines, int64_t begin, int64_t end) {
        constexpr int64_t step = HasAlpha ? 3 : 2;
        for (int64_t x = begin; x < end; ++x) {
            lines.chroma[x] = LoadSample<T>(row, step * x);
            lines.luma[x] = LoadSample<T>(row, step * x + 1);
            if constexpr (HasAlpha) lines.alpha[x] = LoadSample<T>(row, step * x + 2);
        }
    }

    template <typename T, bool HasAlpha>
    static void PackPairs(const ColorLines& lines, const ColorRange& range, uint8_t* row, int64_t begin,
                          int64_t end) {
        constexpr int64_t step = HasAlpha ? 3 : 2;
        for (int64_t x = begin; x < end; ++x) {
            StoreSample(row, step * x, Quantize<T>(lines.chroma[x], range.chroma));
            StoreSample(row, step * x + 1, Quantize<T>(lines.luma[x], range.luma));
            if constexpr (HasAlpha)
                StoreSample(row, step * x + 2, Quantize<T>(lines.alpha[x], AlphaLimits(range)));
        }
    }

    /// 32-bit words to three samples each.
    static void ExpandTens(const uint8_t* row, uint16_t* samples, int64_t begin, int64_t end) {
        for (int64_t i = begin; i < end; ++i) {
            uint32_t word;
            std::memcpy(&word, row + 4 * i, sizeof word);
            for (int64_t j = 0; j < 3; ++j)
                samples[3 * i + j] = static_cast<uint16_t>(word >> (10 * j) & 0x3ff);
        }
    }

    /// Three samples to each 32-bit word; the two bits above them are zero.
    static void CompressTens(const uint16_t* samples, uint8_t* row, int64_t begin, int64_t end) {
        for (int64_t i = begin; i < end; ++i) {
            const uint16_t* in = samples + 3 * i;
            StoreSample<uint32_t>(row, i, in[0] | uint32_t{in[1]} << 10 | uint32_t{in[2]} << 20);
        }
    }

    // Four samples to a pixel

    template <typename T, QuadOrder Order>
    static void UnpackQuads(const uint8_t* row, const ColorLines& lines, int64_t begin, int64_t end) {
        const auto ordered = LinesInOrder<Order>(lines);
        for (int64_t x = begin; x < end; ++x) {
            for (size_t c = 0; c < 4; ++c)
                ordered[c][x] = LoadSample<T>(row, 4 * x + static_cast<int64_t>(c));
        }
    }

    template <typename T, QuadOrder Order>
    static void PackQuads(const ColorLines& lines, const ColorRange& range, uint8_t* row, int64_t begin,
                          int64_t end) {
        const auto ordered = LinesInOrder<Order>(lines);
        const auto limits = LimitsInOrder<Order>(range);
        for (int64_t x = begin; x < end; ++x) {
            for (size_t c = 0; c < 4; ++c)
                StoreSample(row, 4 * x + static_cast<int64_t>(c), Quantize<T>(ordered[c][x], limits[c]));
        }
    }

    static void UnpackQuadTens(const uint8_t* row, const ColorLines& lines, int64_t begin, int64_t end) {
        for (int64_t x = begin; x < end; ++x) {
            uint32_t word;
            std::memcpy(&word, row + 4 * x, sizeof word);
            lines.cb[x] = static_cast<float>(word >> 2 & 0x3ff);
            lines.luma[x] = static_cast<float>(word >> 12 & 0x3ff);
            lines.cr[x] = static_cast<float>(word >> 22);
        }
    }

    static void PackQuadTens(const ColorLines& lines, const ColorRange& range, uint8_t* row, int64_t begin,
                             int64_t end) {
        for (int64_t x = begin; x < end; ++x) {
            const auto cb = Quantize<uint32_t>(lines.cb[x], range.chroma);
            const auto luma = Quantize<uint32_t>(lines.luma[x], range.luma);
            const auto cr = Quantize<uint32_t>(lines.cr[x], range.chroma);
            StoreSample<uint32_t>(row, x, cb << 2 | luma << 12 | cr << 22);
        }
    }

    // Planes

    template <typename T>
    static void UnpackPlane(const uint8_t* row, float* line, int64_t begin, int64_t end) {
        for (int64_t x = begin; x < end; ++x)
            line[x] = LoadSample<T>(row, x);
    }

    template <typename T>
    static void PackPlane(const float* line, ColorLimits limits, uint8_t* row, int64_t begin, int64_t end) {
        for (int64_t x = begin; x < end; ++x)
            StoreSample(row, x, Quantize<T>(line[x], limits));
    }

    template <typename T>
    static void UnpackChromaPlanes(const uint8_t* cb, const uint8_t* cr, float* chroma, int64_t begin,
                                   int64_t end) {
        for (int64_t i = begin; i < end; ++i) {
            chroma[2 * i] = LoadSample<T>(cb, i);
            chroma[2 * i + 1] = LoadSample<T>(cr, i);
        }
    }

    template <typename T>
    static void PackChromaPlanes(const float* chroma, ColorLimits limits, uint8_t* cb, uint8_t* cr,
                                 int64_t begin, int64_t end) {
        for (int64_t i = begin; i < end; ++i) {
            StoreSample(cb, i, Quantize<T>(chroma[2 * i], limits));
            StoreSample(cr, i, Quantize<T>(chroma[2 * i + 1], limits));
        }
    }

    // Chroma at half and full rate

    static void Upsample(const ColorLines& lines, int64_t begin, int64_t end) {
        for (int64_t i = begin; i < end; ++i) {
            const float* pair = lines.chroma + 2 * i;
            lines.cb[2 * i] = pair[0];
            lines.cr[2 * i] = pair[1];
            lines.cb[2 * i + 1] = (pair[0] + pair[2]) * 0.5f;
            lines.cr[2 * i + 1] = (pair[1] + pair[3]) * 0.5f;
        }
    }

    static void Downsample(const ColorLines& lines, int64_t begin, int64_t end) {
        for (int64_t i = begin; i < end; ++i) {
            lines.chroma[2 * i] = Weigh121(lines.cb + 2 * i);
            lines.chroma[2 * i + 1] = Weigh121(lines.cr + 2 * i);
        }
    }

    static void Blend(float* line, const float* other, float weight, int64_t begin, int64_t end) {
        for (int64_t i = begin; i < end; ++i)
            line[i] = line[i] * weight + other[i] * (1 - weight);
    }

    // Bytes to bytes

    static void BlendBytes(const uint8_t* own, const uint8_t* other, int16_t* line, int64_t begin,
                           int64_t end) {
        for (int64_t i = begin; i < end; ++i)
            line[i] = static_cast<int16_t>((3 * own[i] + other[i] - 4 * 128) * 32);
    }

    static void BytesToImage(const ColorByteRow& row, const ColorBytesToRgb& matrix, uint8_t* pixels,
                             int64_t begin, int64_t end) {
        for (int64_t x = begin; x < end; ++x) {
            const auto luma = static_cast<int32_t>(row.luma[x] * 256u * matrix.luma >> 16);
            const int32_t y = luma + matrix.offset;
            const int32_t cb = ChromaAt(row.cb, x);
            const int32_t cr = ChromaAt(row.cr, x);
            const int32_t halfBlue = MultiplyBy15Bits(cb, matrix.halfCbToBlue);
            const int32_t green = Limit16(y + MultiplyBy15Bits(cb, matrix.cbToGreen));
            const std::array<uint8_t, 4> pixel = {
                ByteOf(Limit16(y + MultiplyBy15Bits(cr, matrix.crToRed))),
                ByteOf(Limit16(green + MultiplyBy15Bits(cr, matrix.crToGreen))),
                ByteOf(Limit16(Limit16(y + halfBlue) + halfBlue)),
                255,
            };
            std::memcpy(pixels + x * int64_t{sizeof pixel}, pixel.data(), sizeof pixel);
        }
    }

    // Images

    /// @tparam Real  precision of the arithmetic
    template <typename Real, typename Channel>
    static void ToImage(const ColorLines& lines, const ColorToRgb& matrix, uint8_t* pixels, int64_t begin,
                        int64_t end) {
        const auto real = [](double value) { return static_cast<Real>(value); };
        for (int64_t x = begin; x < end; ++x) {
            const Real y = (Real{lines.luma[x]} - real(matrix.black)) * real(matrix.luma);
            const Real cb = Real{lines.cb[x]} - real(matrix.zero);
            const Real cr = Real{lines.cr[x]} - real(matrix.zero);
            const std::array<typename Channel::Stored, 4> pixel = {
                Channel::Store(y + real(matrix.crToRed) * cr),
                Channel::Store((y + real(matrix.cbToGreen) * cb) + real(matrix.crToGreen) * cr),
                Channel::Store(y + real(matrix.cbToBlue) * cb),
                Channel::Store(Real{lines.alpha[x]} * real(matrix.alpha)),
            };
            std::memcpy(pixels + x * int64_t{sizeof pixel}, pixel.data(), sizeof pixel);
        }
    }

    template <typename Real, typename Channel>
    static void FromImage(const uint8_t* pixels, const ColorFromRgb& matrix, const ColorLines& lines,
                          int64_t begin, int64_t end) {
        for (int64_t x = begin; x < end; ++x) {
            std::array<typename Channel::Stored, 4> pixel;
            std::memcpy(pixel.data(), pixels + x * int64_t{sizeof pixel}, sizeof pixel);
            const Real red = Channel::Load(pixel[0]);
            const Real green = Channel::Load(pixel[1]);
            const Real blue = Channel::Load(pixel[2]);
            const Real alpha = Channel::Load(pixel[3]);
            lines.luma[x] = WeighRgb(matrix.luma, red, green, blue, matrix.black);
            lines.cb[x] = LimitChroma(WeighRgb(matrix.cb, red, green, blue, matrix.zero));
            lines.cr[x] = LimitChroma(WeighRgb(matrix.cr, red, green, blue, matrix.zero));
            lines.alpha[x] = static_cast<float>(alpha * static_cast<Real>(matrix.alpha));
        }
    }
};

} // namespace color_scalar
