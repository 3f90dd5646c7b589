#pragma once

#include "prores/PrxRgbPacking.h"

#include <cstdint>

/// Result of `make(format)` with the format as a constant; null for a format that `Has` doesn't name.
template <typename Function, bool (*Has)(uint32_t), typename Make>
Function PrxSelectRgbInput(uint32_t pixelFormat, Make make) {
    return PrxSelectByRgbFormat<Function>(pixelFormat, false, [make](auto format, auto) -> Function {
        if constexpr (Has(format)) {
            return make(format);
        } else {
            return nullptr;
        }
    });
}
