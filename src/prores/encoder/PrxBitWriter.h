#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

/// Writes bits, first bit first, under a budget of bytes that it never passes: the first code that does not
/// fit closes the writer, so that the output ends on a whole code.
class PrxBitWriter {
public:
    /// Longest code of `AppendCodes`.
    static constexpr uint32_t longestAppended = 56;

    /// A writer of at most `budget` bytes at `output`; a negative budget means no limit. No byte is touched
    /// behind the budget, nor, without one, behind the bits that are written.
    PrxBitWriter(uint8_t* output, int64_t budget);

    /// Writes the low `length` bits (1 to 64) of `value`, whose other bits are 0. Returns false, now and from
    /// now on, if they do not fit; the writer is then flushed.
    bool WriteBits(uint64_t value, uint32_t length) {
        if (length > limit_ - bits_) return Close();
        bits_ += length;
        if (length > longestAppended) {
            const uint32_t upper = length - longestAppended;
            Append(value >> longestAppended, upper);
            value &= (uint64_t{1} << longestAppended) - 1;
            length = longestAppended;
        }
        Append(value, length);
        return true;
    }

    /// Bits that may go to `AppendCodes`: all that the budget leaves; 0 without a limit.
    size_t RoomToAppend() const {
        const ptrdiff_t bytes = end_ - next_; // below 0 behind the start of a writer without a limit
        return bytes > 0 ? static_cast<size_t>(bytes) * 8 - used_ : 0;
    }

    /// Writes `count` codes of 0 to `longestAppended` bits, together no more than `RoomToAppend`.
    void AppendCodes(const uint64_t* codes, const uint64_t* lengths, size_t count) {
        const uint64_t before = Position();
        PrxBitWriter local = *this; // keeps the state in registers
        for (size_t i = 0; i < count; ++i)
            local.Append(codes[i], lengths[i]);
        *this = local;
        bits_ += Position() - before;
    }

    /// Bits written so far, without those that fill up the last byte.
    uint64_t Bits() const { return bits_; }

    /// Stores what is left, filled up with 0 to a byte, and closes the writer. Returns the bytes written.
    uint32_t Flush();

private:
    bool Close();

    /// Bits that `next_` and `used_` tell of.
    uint64_t Position() const { return static_cast<uint64_t>(next_ - begin_) * 8 + used_; }

    /// Merges a code behind the `used_` bits, at most 7, has the bits stored, and drops the whole bytes.
    template <class Store>
    void Insert(uint64_t code, uint64_t length, Store store) {
        accumulator_ |= code << ((64 - used_ - length) & 63);
        used_ += length;
        store();
        next_ += used_ / 8;
        accumulator_ <<= used_ & 56;
        used_ &= 7;
    }

    void Append(uint64_t code, uint64_t length) {
        if (end_ - next_ >= 8) [[likely]] {
            Insert(code, length, [this] { StoreWord(); });
        } else {
            Insert(code, length, [this] { StoreBytes(); });
        }
    }

    void StoreWord() {
        const uint64_t word =
            std::endian::native == std::endian::little ? __builtin_bswap64(accumulator_) : accumulator_;
        std::memcpy(next_, &word, sizeof word);
    }

    /// Stores the whole bytes alone.
    void StoreBytes() {
        for (uint32_t i = 0; i < used_ / 8; ++i)
            next_[i] = static_cast<uint8_t>(accumulator_ >> (56 - 8 * i));
    }

    uint64_t accumulator_ = 0; ///< bits that are not stored for good, the first one in bit 63; then zeros
    uint64_t used_ = 0;        ///< how many these are
    uint8_t* next_;            ///< where they go
    uint8_t* end_;             ///< whole words may be stored before here
    uint8_t* begin_;
    uint64_t bits_ = 0;
    uint64_t limit_; ///< `bits_` may not pass this
};
