#pragma once

#include "host/ColorConvertKernels.h"
#include "host/Half.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>

/// Single samples, as the scalar and the vector forms of the stages agree on them.
namespace color_samples {

static_assert(std::endian::native == std::endian::little, "samples are stored as they stand in a register");

// ---------------------------------------------------------------------------------------------------------
// Samples

/// Takes what is not a number as 0 and limits what is out of a half's range.
inline float Sane(float value) {
    if (value != value) return 0;
    return std::min(std::max(value, -colorFloatLimit), colorFloatLimit);
}

template <typename T>
float LoadSample(const uint8_t* bytes, int64_t index) {
    T sample;
    std::memcpy(&sample, bytes + index * int64_t{sizeof(T)}, sizeof(T));
    if constexpr (std::is_floating_point_v<T>) {
        return Sane(sample);
    } else {
        return static_cast<float>(sample);
    }
}

template <typename T>
void StoreSample(uint8_t* bytes, int64_t index, T sample) {
    std::memcpy(bytes + index * int64_t{sizeof(T)}, &sample, sizeof(T));
}

/// A number of 0 or more to the nearest integer, as a sum and a truncation: the vector forms have the same
/// bits.
template <typename T, typename Real>
T Round(Real value) {
    const Real next = value + Real{0.5};
    return static_cast<T>(next);
}

template <typename T>
T Quantize(float value, ColorLimits limits) {
    if constexpr (std::is_floating_point_v<T>) {
        return value;
    } else {
        return Round<T>(std::min(std::max(value, limits.least), limits.most));
    }
}

inline ColorLimits AlphaLimits(const ColorRange& range) { return {0, static_cast<float>(range.opaque)}; }

// ---------------------------------------------------------------------------------------------------------
// Orders of four samples

enum class QuadOrder { CbYCrA, AYCbCr };

template <QuadOrder Order>
std::array<float*, 4> LinesInOrder(const ColorLines& lines) {
    if constexpr (Order == QuadOrder::CbYCrA) return {lines.cb, lines.luma, lines.cr, lines.alpha};
    return {lines.alpha, lines.luma, lines.cb, lines.cr};
}

template <QuadOrder Order>
std::array<ColorLimits, 4> LimitsInOrder(const ColorRange& range) {
    if constexpr (Order == QuadOrder::CbYCrA)
        return {range.chroma, range.luma, range.chroma, AlphaLimits(range)};
    return {AlphaLimits(range), range.luma, range.chroma, range.chroma};
}

// ---------------------------------------------------------------------------------------------------------
// Channels of an image. Integer channels are worked on with white at their greatest value, the others at 1.

template <typename T>
struct IntegerChannel {
    using Stored = T;
    static float Load(T stored) { return stored; }
    template <typename Real>
    static T Store(Real value) {
        constexpr Real white = static_cast<T>(~T{0});
        return Round<T>(std::min(std::max(value, Real{0}), white));
    }
};
using ByteChannel = IntegerChannel<uint8_t>;
using WordChannel = IntegerChannel<uint16_t>;

struct HalfChannel {
    using Stored = uint16_t;
    static float Load(uint16_t stored) { return Sane(HalfToFloat(stored)); }
    static uint16_t Store(double value) { return FloatToHalf(static_cast<float>(value)); }
};

struct FloatChannel {
    using Stored = float;
    static float Load(float stored) { return Sane(stored); }
    static float Store(double value) { return static_cast<float>(value); }
};

} // namespace color_samples
