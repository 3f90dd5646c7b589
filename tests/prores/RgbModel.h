#pragma once

#include "prores/PrxFormats.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// A model of the RGB formats, independent of the engine: the arithmetic step by step, in single precision as
/// the engine promises it and in double precision, and the bytes of a pixel written out format by format.

inline constexpr uint32_t rgbFormats[] = {prxFormatArgb, prxFormatBgra, prxFormatB64a,
                                          prxFormatR10k, prxFormatR210, prxFormatN302};
inline constexpr int32_t colorMatrices[] = {1, 6, 9};

inline bool HasAlphaModel(uint32_t format) {
    return format == prxFormatArgb || format == prxFormatBgra || format == prxFormatB64a;
}

inline int32_t OutMaxModel(uint32_t format) {
    if (format == prxFormatB64a) return 65535;
    return HasAlphaModel(format) ? 255 : 1023;
}

inline size_t PixelBytesModel(uint32_t format) { return format == prxFormatB64a ? 8 : 4; }
inline size_t AlphaBytesModel(uint32_t format) { return format == prxFormatB64a ? 2 : 1; }

/// Name of a case, for failure messages.
inline std::string RgbCaseName(uint32_t format, int32_t colorMatrix, bool hasAlpha) {
    return "format " + std::to_string(format) + ", matrix " + std::to_string(colorMatrix) +
           (hasAlpha ? ", alpha" : "");
}

/// Cr to R, Cb to G, Cr to G, Cb to B, for chroma in -0.5..0.5 and RGB in 0..1.
inline std::array<double, 4> BaseFactorsModel(int32_t colorMatrix) {
    switch (colorMatrix) {
    case 1: return {1.5748, -0.18732427, -0.46812427, 1.8556};
    case 6: return {1.402, -0.34413629, -0.71413629, 1.772};
    default: return {1.4746, -0.16455313, -0.57135313, 1.8814};
    }
}

/// Y'CbCr of one pixel in units of 1 / scale of an 8-bit code, with luma black and neutral chroma at 0.
/// Chroma may lie between two integers.
struct YcbcrModel {
    int32_t y;
    double cb;
    double cr;
};

using RgbModel = std::array<double, 3>;

/// RGB in double precision, neither rounded nor limited.
inline RgbModel ExactRgb(const YcbcrModel& pixel, int32_t colorMatrix, int32_t outMax, int32_t scale) {
    const auto [crToR, cbToG, crToG, cbToB] = BaseFactorsModel(colorMatrix);
    const double y = pixel.y * (outMax / (219.0 * scale));
    const double cb = pixel.cb * (outMax / (224.0 * scale));
    const double cr = pixel.cr * (outMax / (224.0 * scale));
    return {y + crToR * cr, y + cbToG * cb + crToG * cr, y + cbToB * cb};
}

/// Results of single-precision operations; volatile, so that each is rounded on its own.
inline float ProductModel(float a, float b) {
    const volatile float product = a * b;
    return product;
}
inline float SumModel(float a, float b) {
    const volatile float sum = a + b;
    return sum;
}

/// The integer nearest to a float, the even one of two, without regard to the rounding mode.
inline int32_t NearestEvenModel(float value) {
    const double below = std::floor(static_cast<double>(value));
    const double fraction = static_cast<double>(value) - below;
    const bool up = fraction > 0.5 || (fraction == 0.5 && std::fmod(below, 2.0) != 0.0);
    return static_cast<int32_t>(below) + (up ? 1 : 0);
}

/// RGB codes by the arithmetic promised.
inline std::array<int32_t, 3> CodesModel(const YcbcrModel& pixel, int32_t colorMatrix, int32_t outMax,
                                         int32_t scale) {
    std::array<float, 4> factors;
    for (size_t i = 0; i < 4; ++i)
        factors[i] = static_cast<float>(BaseFactorsModel(colorMatrix)[i] * (outMax / (224.0 * scale)));
    const auto [crToR, cbToG, crToG, cbToB] = factors;
    const float yScale = static_cast<float>(outMax / (219.0 * scale));
    const float y = ProductModel(yScale, static_cast<float>(pixel.y));
    const auto cb = static_cast<float>(pixel.cb);
    const auto cr = static_cast<float>(pixel.cr);
    const float r = SumModel(y, ProductModel(crToR, cr));
    const float g = SumModel(SumModel(y, ProductModel(cbToG, cb)), ProductModel(crToG, cr));
    const float b = SumModel(y, ProductModel(cbToB, cb));
    const auto code = [outMax](float value) { return std::clamp(NearestEvenModel(value), 0, outMax); };
    return {code(r), code(g), code(b)};
}

inline void AppendBigEndian(std::vector<uint8_t>& bytes, uint32_t value, int32_t count) {
    for (int32_t shift = 8 * (count - 1); shift >= 0; shift -= 8)
        bytes.push_back(static_cast<uint8_t>(value >> shift));
}

/// The bytes of a pixel with these codes.
inline std::vector<uint8_t> PixelModel(uint32_t format, const std::array<int32_t, 3>& codes, uint32_t alpha) {
    const auto r = static_cast<uint32_t>(codes[0]);
    const auto g = static_cast<uint32_t>(codes[1]);
    const auto b = static_cast<uint32_t>(codes[2]);
    std::vector<uint8_t> bytes;
    switch (format) {
    case prxFormatArgb:
        for (const uint32_t channel : {alpha, r, g, b})
            AppendBigEndian(bytes, channel, 1);
        return bytes;
    case prxFormatBgra:
        for (const uint32_t channel : {b, g, r, alpha})
            AppendBigEndian(bytes, channel, 1);
        return bytes;
    case prxFormatB64a:
        for (const uint32_t channel : {alpha, r, g, b})
            AppendBigEndian(bytes, channel, 2);
        return bytes;
    case prxFormatR210: AppendBigEndian(bytes, r << 20 | g << 10 | b, 4); return bytes;
    default: break;
    }
    AppendBigEndian(bytes, r << 22 | g << 12 | b << 2, 4);
    if (format == prxFormatN302) std::reverse(bytes.begin(), bytes.end());
    return bytes;
}

/// RGB codes of a pixel in memory.
inline std::array<int32_t, 3> CodesOf(uint32_t format, const uint8_t* p) {
    if (format == prxFormatArgb) return {p[1], p[2], p[3]};
    if (format == prxFormatBgra) return {p[2], p[1], p[0]};
    if (format == prxFormatB64a) return {p[2] << 8 | p[3], p[4] << 8 | p[5], p[6] << 8 | p[7]};
    const bool bigEndian = format != prxFormatN302;
    uint32_t word = 0;
    for (int32_t i = 0; i < 4; ++i)
        word = word << 8 | p[bigEndian ? i : 3 - i];
    if (format != prxFormatR210) word >>= 2;
    return {static_cast<int32_t>(word >> 20 & 0x3FF), static_cast<int32_t>(word >> 10 & 0x3FF),
            static_cast<int32_t>(word & 0x3FF)};
}

/// Alpha of a sample in the decoder's type, or opaque.
inline uint32_t AlphaModel(uint32_t format, const uint8_t* sample) {
    if (sample == nullptr) return static_cast<uint32_t>(OutMaxModel(format));
    return format == prxFormatB64a ? static_cast<uint32_t>(sample[0] | sample[1] << 8) : sample[0];
}
