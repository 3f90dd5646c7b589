#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// What tables of colour factors, from and to RGB, have in common: an entry for each colour matrix, and in it
/// a row for each range of RGB.

/// The largest codes of RGB in full range, of 8, 10 and 16 bits.
inline constexpr std::array<int32_t, 3> prxRgbRanges = {255, 1023, 65535};

/// The row for RGB codes up to `largest`, one of those.
constexpr size_t PrxRgbRangeIndex(int32_t largest) {
    size_t index = 0;
    while (index + 1 < prxRgbRanges.size() && prxRgbRanges[index] != largest)
        ++index;
    return index;
}

template <class Entry>
struct PrxByColorMatrix {
    Entry bt709;
    Entry bt601;
    Entry bt2020;

    /// The entry for a `colorMatrix` of 1 (BT.709), 9 (BT.2020) or anything else (BT.601).
    constexpr const Entry& operator[](int32_t colorMatrix) const {
        return colorMatrix == 1 ? bt709 : colorMatrix == 9 ? bt2020 : bt601;
    }
};
