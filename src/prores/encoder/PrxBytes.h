#pragma once

#include <cstdint>

/// Big-endian values, as all of a stream's are.
inline void PrxStore16(uint8_t* out, uint32_t value) {
    out[0] = static_cast<uint8_t>(value >> 8);
    out[1] = static_cast<uint8_t>(value);
}
inline void PrxStore32(uint8_t* out, uint32_t value) {
    PrxStore16(out, value >> 16);
    PrxStore16(out + 2, value);
}
