#pragma once

#include "prores/PrxCodeBooks.h"

#include <bit>
#include <cstdint>

/// A code word, or several of them: the low `length` bits of `bits`, whose other bits are 0.
struct PrxCodeWord {
    uint64_t bits;
    uint32_t length;

    /// This one and then `next`; 64 bits at most.
    constexpr PrxCodeWord Then(const PrxCodeWord& next) const {
        return {bits << next.length | next.bits, length + next.length};
    }
};

/// The code word of `value` in a code book (SMPTE RDD 36, 7.1.1.1). It is a number with zeros before it: of a
/// Rice code the lowest bits behind a one, of an exponential Golomb code the value itself, offset.
constexpr PrxCodeWord PrxCodeWordOf(const PrxCodeBook& book, uint32_t value) {
    const uint32_t firstExp = (book.switchBits + 1) << book.riceOrder;
    if (value < firstExp) {
        const uint32_t one = 1U << book.riceOrder;
        return {one | (value & (one - 1)), book.Length(value >> book.riceOrder)};
    }
    const uint32_t bits = value - firstExp + (1U << book.expOrder);
    const auto width = static_cast<uint32_t>(std::bit_width(bits));
    return {bits, book.Length(book.switchBits + width - book.expOrder)};
}
