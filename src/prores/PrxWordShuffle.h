#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// The bytes that a byte shuffle within 16 bytes takes; 0x80 gives 0.
using PrxWordShuffle = std::array<uint8_t, 16>;

/// The shuffle that gives each word of 16 bits the word that `words` names, or 0 for -1.
constexpr PrxWordShuffle PrxShuffleOfWords(const std::array<int, 8>& words) {
    PrxWordShuffle shuffle = {};
    for (size_t i = 0; i < words.size(); ++i) {
        shuffle[2 * i] = words[i] < 0 ? 0x80 : static_cast<uint8_t>(2 * words[i]);
        shuffle[2 * i + 1] = words[i] < 0 ? 0x80 : static_cast<uint8_t>(2 * words[i] + 1);
    }
    return shuffle;
}
