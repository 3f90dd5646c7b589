#pragma once

#include "prores/PrxBitReader.h"
#include "prores/PrxCodeBooks.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

/// Reads a code word of any length. Needs a refilled reader that has not ended, so that at most 31 zeros
/// lead, and leaves it refilled. The value has 37 bits at most.
uint64_t PrxReadCode(PrxBitReader& reader, uint32_t bookIndex);

/// An AC coefficient and the zeros before it.
struct PrxCoefficient {
    uint32_t run;
    int32_t level; ///< not 0
};

/// Reads a run, a level and a sign. Needs a refilled reader that has not ended, and leaves it refilled. None
/// if the stream ends behind the run, or if the run or the level is larger than a stream may have it.
std::optional<PrxCoefficient> PrxReadCoefficient(PrxBitReader& reader, uint32_t runBook, uint32_t levelBook);

/// A code word with few leading zeros: what one look-up tells of it.
struct PrxShortCode {
    /// Most leading zeros. With so few, no level is larger than a stream may have it, and a run, a level and
    /// a sign fit the bits of one refill.
    static constexpr uint32_t maxZeros = 10;

    uint8_t length = 0;
    int8_t offset = 0; ///< of the value from the code word taken as a number

    constexpr PrxShortCode() = default;
    constexpr PrxShortCode(uint32_t bookIndex, uint32_t zeros)
        : length(static_cast<uint8_t>(PrxGetCodeBook(bookIndex).Length(zeros))),
          offset(static_cast<int8_t>(PrxGetCodeBook(bookIndex).Offset(zeros))) {}

    /// Takes the code word, whose bits must be valid.
    uint64_t Read(PrxBitReader& reader) const {
        return reader.Read(length) + static_cast<uint64_t>(int64_t{offset});
    }
};

/// The short code words of one code book by their leading zeros.
using PrxShortCodes = std::array<PrxShortCode, 16>;

constexpr PrxShortCodes PrxMakeShortCodes(uint32_t bookIndex) {
    PrxShortCodes codes;
    for (uint32_t zeros = 0; zeros <= PrxShortCode::maxZeros; ++zeros)
        codes[zeros] = PrxShortCode(bookIndex, zeros);
    return codes;
}

/// The short codes of each of `books`.
template <size_t Size>
constexpr std::array<PrxShortCodes, Size> PrxMakeShortCodes(const std::array<uint8_t, Size>& books) {
    std::array<PrxShortCodes, Size> codes;
    for (size_t i = 0; i < Size; ++i)
        codes[i] = PrxMakeShortCodes(books[i]);
    return codes;
}
