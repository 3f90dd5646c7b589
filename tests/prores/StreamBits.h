#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

/// Bits, code words and big-endian fields of ProRes streams (SMPTE RDD 36), for tests that write streams of
/// their own. Nothing here comes from the engine, so that an error there isn't repeated here.
namespace stream {

using Bytes = std::vector<uint8_t>;

/// Gathers bits, the most significant first.
class BitWriter {
public:
    /// Appends the low `count` (0 to 64) bits of `value`.
    void Put(uint64_t value, uint32_t count) {
        for (uint32_t bit = count; bit > 0; --bit) {
            PutBit((value >> (bit - 1) & 1) != 0);
        }
    }

    /// Bits so far.
    size_t Count() const { return count_; }

    /// The bytes so far; the last one is filled up with zeros.
    const Bytes& Data() const { return bytes_; }

private:
    void PutBit(bool one) {
        if (count_ % 8 == 0) {
            bytes_.push_back(0);
        }
        if (one) {
            bytes_.back() = static_cast<uint8_t>(bytes_.back() | 0x80 >> count_ % 8);
        }
        ++count_;
    }

    Bytes bytes_;
    size_t count_ = 0;
};

/// Appends `value` (below 2^31) in the code of `book`: bits 7-5 the Rice order, 4-2 the exp-Golomb order,
/// 1-0 the longest prefix of a Rice code (SMPTE RDD 36, 7.1.1.1).
inline void PutCode(BitWriter& bits, uint8_t book, uint32_t value) {
    const uint32_t riceOrder = book >> 5;
    const uint32_t expOrder = book >> 2 & 7;
    const uint32_t switchBits = book & 3;
    const uint32_t firstExp = (switchBits + 1) << riceOrder;
    if (value < firstExp) {
        bits.Put(1, (value >> riceOrder) + 1);
        bits.Put(value, riceOrder);
        return;
    }
    const uint32_t exp = value - firstExp + (1U << expOrder);
    const auto expBits = static_cast<uint32_t>(std::bit_width(exp));
    bits.Put(exp, switchBits + 1 + (expBits - 1 - expOrder) + expBits);
}

/// Overwrites a big-endian field.
inline void Patch16(Bytes& bytes, size_t offset, uint32_t value) {
    bytes.at(offset) = static_cast<uint8_t>(value >> 8);
    bytes.at(offset + 1) = static_cast<uint8_t>(value);
}
inline void Patch32(Bytes& bytes, size_t offset, uint32_t value) {
    Patch16(bytes, offset, value >> 16);
    Patch16(bytes, offset + 2, value & 0xffff);
}

/// Appends a big-endian field.
inline void Append16(Bytes& bytes, uint32_t value) {
    bytes.resize(bytes.size() + 2);
    Patch16(bytes, bytes.size() - 2, value);
}
inline void Append32(Bytes& bytes, uint32_t value) {
    Append16(bytes, value >> 16);
    Append16(bytes, value & 0xffff);
}

inline void Append(Bytes& bytes, const Bytes& more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

} // namespace stream
