#pragma once

#include "prores/encoder/PrxCodeWord.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

/// What vectors of code words are made from, by what was coded before: 15 stands for larger values too.
///
/// A code word is a number, and its length grows by 2 with each bit of that number, as long as it is an
/// exponential Golomb code. The Rice codes that begin a book are of the same form in some books; in the
/// others they are the words of the first values, one by one.
struct PrxBookTables {
    /// 16 entries, and the same again for each 16 bytes of a vector.
    using Table = std::array<uint8_t, 64>;

    static constexpr size_t entryCount = 16;
    static constexpr uint8_t noRow = 0x80; ///< a row of a book all of whose words are of the general form
    static constexpr uint32_t rowSize = 5; ///< values 0 to 3 of a book, and a 0 for all others
    static constexpr int32_t addendBias = 1;
    static constexpr int32_t lengthBias = 4;

    alignas(64) Table addend = {};      ///< number of the word less the value, plus `addendBias`
    alignas(64) Table length = {};      ///< length of the word less 2 for each bit, plus `lengthBias`
    alignas(64) Table row = {};         ///< begin of the book's first words in the tables below, or `noRow`
    alignas(64) Table firstNumber = {}; ///< number of the word
    alignas(64) Table firstLength = {}; ///< its length, or 0 if the word is of the general form

    template <size_t Size>
    explicit constexpr PrxBookTables(const std::array<uint8_t, Size>& books) {
        std::array<uint8_t, prxCodeBookBytes.size()> rows = {};
        rows.fill(noRow);
        uint8_t nextRow = 0;
        for (size_t previous = 0; previous < entryCount; ++previous) {
            const uint32_t index = books[std::min(previous, Size - 1)];
            const PrxCodeBook book = PrxGetCodeBook(index);
            if (rows[index] == noRow && !HasGeneralFormOnly(book)) {
                rows[index] = nextRow;
                AddFirstWords(book, nextRow);
                nextRow += rowSize;
            }
            const auto firstExp = static_cast<int32_t>((book.switchBits + 1) << book.riceOrder);
            addend[previous] = static_cast<uint8_t>((1 << book.expOrder) - firstExp + addendBias);
            length[previous] = static_cast<uint8_t>(book.switchBits - book.expOrder + lengthBias);
            row[previous] = rows[index];
        }
        for (Table* table : {&addend, &length, &row, &firstNumber, &firstLength})
            for (size_t i = entryCount; i < table->size(); ++i)
                (*table)[i] = (*table)[i - entryCount];
    }

private:
    /// Whether the Rice codes go on as the exponential Golomb codes behind them do.
    static constexpr bool HasGeneralFormOnly(const PrxCodeBook& book) {
        return book.switchBits == 0 && book.expOrder == book.riceOrder + 1;
    }

    constexpr void AddFirstWords(const PrxCodeBook& book, size_t to) {
        for (uint32_t value = 0; value + 1 < rowSize; ++value) {
            const PrxCodeWord word = PrxCodeWordOf(book, value);
            firstNumber[to + value] = static_cast<uint8_t>(word.bits);
            firstLength[to + value] = static_cast<uint8_t>(word.length);
        }
    }
};

inline constexpr PrxBookTables prxDcBookTables(prxDcBooks);
inline constexpr PrxBookTables prxRunBookTables(prxRunBooks);
inline constexpr PrxBookTables prxLevelBookTables(prxLevelBooks);
