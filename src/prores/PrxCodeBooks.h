#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

/// The code words of coefficients (SMPTE RDD 36) and their adaptation, for decoder and encoder.

/// A code book. A code word is a number of zeros and a one, and then more bits: with up to `switchBits`
/// zeros it is a Rice code of order `riceOrder`, with more an exponential Golomb code of order `expOrder`
/// for the values that follow.
struct PrxCodeBook {
    uint32_t riceOrder;
    uint32_t expOrder;
    uint32_t switchBits;

    /// Bits of the code word that starts with `zeros` zeros, these included.
    constexpr uint32_t Length(uint32_t zeros) const {
        return zeros > switchBits ? expOrder - switchBits + 2 * zeros : zeros + 1 + riceOrder;
    }

    /// What to add to the code word that starts with `zeros` zeros, taken as a number, to have its value.
    constexpr int32_t Offset(uint32_t zeros) const {
        const auto rice = int32_t{1} << riceOrder;
        if (zeros > switchBits) return static_cast<int32_t>(switchBits + 1) * rice - (int32_t{1} << expOrder);
        return (static_cast<int32_t>(zeros) - 1) * rice;
    }
};

/// The code books as bytes: bits 7-5 `riceOrder`, 4-2 `expOrder`, 1-0 `switchBits`.
inline constexpr std::array<uint8_t, 10> prxCodeBookBytes = {0x04, 0x28, 0x4C, 0x70, 0xB8,
                                                             0x05, 0x29, 0x4D, 0x06, 0x0A};

constexpr PrxCodeBook PrxGetCodeBook(uint32_t index) {
    const uint32_t byte = prxCodeBookBytes[index];
    return {byte >> 5, byte >> 2 & 7, byte & 3};
}

inline constexpr uint32_t prxFirstDcBook = 4; ///< code book of the first DC value of a component

inline constexpr uint32_t prxFirstDcDelta = 3; ///< what stands for the delta before the first one
inline constexpr uint32_t prxFirstRun = 4;     ///< what stands for the run before the first one
inline constexpr uint32_t prxFirstLevel = 2;   ///< what stands for the level before the first one

inline constexpr uint32_t prxMaxRun = 2015;    ///< largest run of a stream
inline constexpr uint32_t prxMaxLevel = 16383; ///< largest magnitude of a level

/// Code books by the value that was coded before. The last entry stands for all larger values too.
inline constexpr std::array<uint8_t, 4> prxDcBooks = {0, 1, 7, 3};
inline constexpr std::array<uint8_t, 16> prxRunBooks = {8, 8, 5, 5, 0, 6, 6, 6, 6, 1, 1, 1, 1, 1, 1, 2};
inline constexpr std::array<uint8_t, 10> prxLevelBooks = {0, 9, 5, 8, 0, 1, 1, 1, 1, 2};

template <size_t Size>
constexpr uint32_t PrxBookAfter(const std::array<uint8_t, Size>& books, uint64_t previous) {
    return books[std::min<uint64_t>(previous, Size - 1)];
}

/// Code book of a DC delta, by the magnitude of the delta before it.
constexpr uint32_t PrxDcBook(uint64_t previousMagnitude) {
    return PrxBookAfter(prxDcBooks, previousMagnitude);
}

/// Code book of a run, by the run before it.
constexpr uint32_t PrxRunBook(uint64_t previousRun) { return PrxBookAfter(prxRunBooks, previousRun); }

/// Code book of a level's magnitude less 1, by the magnitude before it.
constexpr uint32_t PrxLevelBook(uint64_t previousLevel) { return PrxBookAfter(prxLevelBooks, previousLevel); }
