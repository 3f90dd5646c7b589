#pragma once

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>

/// Reads bits, the most significant first. Behind the last byte stand zero bits without end; no byte outside
/// the data is touched.
class PrxBitReader {
public:
    /// Bits that are valid after a refill.
    static constexpr uint32_t refilledBits = 56;

    /// A reader of nothing.
    PrxBitReader() = default;

    PrxBitReader(const uint8_t* data, size_t size) : cursor_(data), end_(data + size) {
        if (size < 8) [[unlikely]] {
            TakeAll();
        } else {
            Refill();
        }
    }

    /// The next bits, the first one in bit 63. As many are valid as after the last refill, less what was
    /// skipped since.
    uint64_t Bits() const { return bits_; }

    /// Zeros before the next one; 63 if there is none in reach.
    uint32_t LeadingZeros() const { return static_cast<uint32_t>(std::countl_zero(bits_ | 1)); }

    /// Whether the stream has ended: the next 32 bits, which must be valid, are 0. So many zeros end a
    /// component though ones follow. Kept.
    bool Ended() const { return bits_ >> 32 == 0; }

    /// Skips `count` valid bits: bits 0 to 5 of the argument, so that it may carry other things above.
    void Skip(uint64_t count) {
        assert((count & 63) <= valid_);
        bits_ <<= count & 63;
        valid_ -= count & 63;
    }

    /// Takes `count` valid bits, at least 1.
    uint64_t Read(uint32_t count) {
        const uint64_t value = bits_ >> (64 - count);
        Skip(count);
        return value;
    }

    /// Makes at least `refilledBits` bits valid.
    void Refill() {
        const auto left = static_cast<size_t>(end_ - cursor_);
        // Bits behind the valid ones are already those of the stream: to merge them again changes nothing.
        if (left >= 8) [[likely]] {
            bits_ |= Load(cursor_) >> valid_;
            cursor_ += (63 - valid_) / 8;
        } else {
            bits_ |= LoadTail(left) >> valid_;
            cursor_ += std::min<size_t>((63 - valid_) / 8, left);
        }
        valid_ |= refilledBits;
    }

private:
    static uint64_t Load(const uint8_t* bytes) {
        uint64_t word;
        std::memcpy(&word, bytes, sizeof word);
        return std::endian::native == std::endian::little ? __builtin_bswap64(word) : word;
    }

    /// The last `left` bytes, at most 7, and zeros. The data has 8 bytes at least: less is taken at once.
    uint64_t LoadTail(size_t left) const { return left != 0 ? Load(end_ - 8) << (64 - 8 * left) : 0; }

    /// Takes the whole of less than 8 bytes.
    void TakeAll() {
        for (uint32_t shift = 56; cursor_ != end_; shift -= 8)
            bits_ |= uint64_t{*cursor_++} << shift;
        valid_ = refilledBits;
    }

    uint64_t bits_ = 0;
    uint64_t valid_ = 0;
    const uint8_t* cursor_ = nullptr;
    const uint8_t* end_ = nullptr;
};
