#pragma once

#include <algorithm>
#include <cstdint>

/// Arithmetic of signed 16-bit values as vector units do it.

/// The nearest 16-bit value.
constexpr int16_t PrxSaturate16(int32_t value) {
    return static_cast<int16_t>(std::clamp<int32_t>(value, INT16_MIN, INT16_MAX));
}

constexpr int16_t PrxSaturatedAdd(int16_t a, int16_t b) { return PrxSaturate16(a + b); }
constexpr int16_t PrxSaturatedSub(int16_t a, int16_t b) { return PrxSaturate16(a - b); }

/// High half of the product.
constexpr int16_t PrxMulHigh(int16_t a, int16_t b) { return static_cast<int16_t>((a * b) >> 16); }

/// A coefficient times its table entry, halved. A product beyond 16 bits wraps, so that large ones can change
/// their sign: part of the fixed-point transforms. Kept.
constexpr int16_t PrxDequantise(int16_t coefficient, int16_t factor) {
    return static_cast<int16_t>(static_cast<int16_t>(coefficient * factor) >> 1);
}
