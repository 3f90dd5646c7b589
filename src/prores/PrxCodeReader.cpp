#include "prores/PrxCodeReader.h"

#include "prores/PrxBitReader.h"
#include "prores/PrxCodeBooks.h"

#include <cstdint>
#include <optional>

uint64_t PrxReadCode(PrxBitReader& reader, uint32_t bookIndex) {
    const PrxCodeBook book = PrxGetCodeBook(bookIndex);
    const uint32_t zeros = reader.LeadingZeros();
    reader.Skip(zeros);
    reader.Refill();
    const uint64_t codeWord = reader.Read(book.Length(zeros) - zeros);
    reader.Refill();
    return codeWord + static_cast<uint64_t>(int64_t{book.Offset(zeros)});
}

std::optional<PrxCoefficient> PrxReadCoefficient(PrxBitReader& reader, uint32_t runBook, uint32_t levelBook) {
    const uint64_t run = PrxReadCode(reader, runBook);
    if (reader.Ended()) return std::nullopt;
    const uint64_t magnitude = PrxReadCode(reader, levelBook) + 1;
    const bool negative = reader.Read(1) != 0;
    reader.Refill();
    if (run > prxMaxRun || magnitude > prxMaxLevel) return std::nullopt;
    const auto level = static_cast<int32_t>(magnitude);
    return PrxCoefficient{static_cast<uint32_t>(run), negative ? -level : level};
}
