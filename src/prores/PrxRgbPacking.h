#pragma once

#include "prores/PrxColorCoefficients.h"
#include "prores/PrxFormats.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

/// The RGB formats: what one pixel looks like, and the way to it from Y'CbCr.

/// What a luma sample of 13 bits, centred on half its range, lacks to have black at 0.
inline constexpr int32_t prxRgbLumaOffset = 3584;

/// A pixel is one word of 32 or 64 bits with each channel at its place.
struct PrxRgbLayout {
    int32_t outMax; ///< largest code of a channel
    int32_t bytesPerPixel;
    bool bigEndian;
    bool hasAlpha;
    int32_t aShift;
    int32_t rShift;
    int32_t gShift;
    int32_t bShift;

    /// Of a format that has alpha.
    constexpr int32_t AlphaBytes() const { return outMax == 255 ? 1 : 2; }
};

/// The layout of an RGB format. 10-bit pixels have no place for alpha.
constexpr PrxRgbLayout PrxRgbLayoutOf(uint32_t pixelFormat) {
    switch (pixelFormat) {
    case prxFormatArgb: return {255, 4, true, true, 24, 16, 8, 0};
    case prxFormatBgra: return {255, 4, false, true, 24, 16, 8, 0};
    case prxFormatR10k: return {1023, 4, true, false, 0, 22, 12, 2};
    case prxFormatN302: return {1023, 4, false, false, 0, 22, 12, 2};
    case prxFormatR210: return {1023, 4, true, false, 0, 20, 10, 0};
    default: return {65535, 8, true, true, 48, 32, 16, 0}; // b64a
    }
}

/// Result of `select(format, alpha)` with format and presence of alpha samples as constants; null for what is
/// no RGB format with pixels. A format without alpha goes without, whatever `hasAlpha` says.
template <typename Function, typename Select>
Function PrxSelectByRgbFormat(uint32_t pixelFormat, bool hasAlpha, Select select) {
    const auto with = [&](auto format) -> Function {
        if constexpr (PrxRgbLayoutOf(format).hasAlpha) {
            if (hasAlpha) return select(format, std::true_type());
        }
        return select(format, std::false_type());
    };
    switch (pixelFormat) {
    case prxFormatArgb: return with(std::integral_constant<uint32_t, prxFormatArgb>());
    case prxFormatBgra: return with(std::integral_constant<uint32_t, prxFormatBgra>());
    case prxFormatB64a: return with(std::integral_constant<uint32_t, prxFormatB64a>());
    case prxFormatR10k: return with(std::integral_constant<uint32_t, prxFormatR10k>());
    case prxFormatR210: return with(std::integral_constant<uint32_t, prxFormatR210>());
    case prxFormatN302: return with(std::integral_constant<uint32_t, prxFormatN302>());
    default: return nullptr;
    }
}

/// Alpha of pixel `x` of a row of samples, of one byte or two in native order; without samples opaque, or 0
/// where a pixel has no alpha.
template <uint32_t PixelFormat, bool HasAlpha>
uint32_t PrxRgbAlpha(const uint8_t* row, int32_t x) {
    constexpr PrxRgbLayout layout = PrxRgbLayoutOf(PixelFormat);
    if constexpr (!HasAlpha) {
        return layout.hasAlpha ? layout.outMax : 0;
    } else if constexpr (layout.AlphaBytes() == 1) {
        return row[x];
    } else {
        uint16_t alpha;
        std::memcpy(&alpha, row + 2 * static_cast<ptrdiff_t>(x), sizeof(alpha));
        return alpha;
    }
}

/// Integer nearest to `value`, the even one of two, within 0..outMax. No Y'CbCr of 16 bits gives a value that
/// doesn't fit in 32 bits.
inline uint64_t PrxRgbCode(float value, int32_t outMax) {
    return static_cast<uint64_t>(std::clamp(static_cast<int32_t>(std::lrint(value)), 0, outMax));
}

/// Stores one pixel. Each product and each sum is rounded to single precision.
template <uint32_t PixelFormat>
void PrxStoreRgbPixel(float y, float cb, float cr, const PrxColorCoefficients& factors, uint32_t alpha,
                      uint8_t* out) {
    constexpr PrxRgbLayout layout = PrxRgbLayoutOf(PixelFormat);
    const float luma = factors.yScale * y;
    const uint64_t r = PrxRgbCode(luma + factors.crToR * cr, layout.outMax);
    const uint64_t g = PrxRgbCode((luma + factors.cbToG * cb) + factors.crToG * cr, layout.outMax);
    const uint64_t b = PrxRgbCode(luma + factors.cbToB * cb, layout.outMax);
    const uint64_t word = static_cast<uint64_t>(alpha) << layout.aShift | r << layout.rShift |
                          g << layout.gShift | b << layout.bShift;
    for (int32_t i = 0; i < layout.bytesPerPixel; ++i)
        out[layout.bigEndian ? layout.bytesPerPixel - 1 - i : i] = static_cast<uint8_t>(word >> 8 * i);
}
