#pragma once

#include "prores/PrxCodeBooks.h"

#include <bit>
#include <cstdint>
#include <optional>

/// The first bits of a stream, for the tables that tell what they hold.
class PrxCodePrefix {
public:
    /// The low `count` bits of `bits`.
    constexpr PrxCodePrefix(uint32_t bits, uint32_t count) : bits_(bits << (32 - count)), count_(count) {}

    constexpr uint32_t Used() const { return used_; }

    /// Takes `count` bits, at least 1; none if there are fewer.
    constexpr std::optional<uint32_t> Read(uint32_t count) {
        if (used_ + count > count_) return std::nullopt;
        const uint32_t value = bits_ >> (32 - count);
        bits_ <<= count;
        used_ += count;
        return value;
    }

    /// Takes a code word; none if it does not end in the prefix.
    constexpr std::optional<uint32_t> ReadCode(uint32_t bookIndex) {
        const PrxCodeBook book = PrxGetCodeBook(bookIndex);
        const auto zeros = static_cast<uint32_t>(std::countl_zero(bits_));
        if (zeros >= count_) return std::nullopt;
        const std::optional<uint32_t> codeWord = Read(book.Length(zeros));
        if (!codeWord) return std::nullopt;
        return *codeWord + static_cast<uint32_t>(book.Offset(zeros));
    }

private:
    uint32_t bits_;
    uint32_t count_;
    uint32_t used_ = 0;
};
