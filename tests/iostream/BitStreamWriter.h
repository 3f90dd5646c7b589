#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <vector>

/// Bits of H.264 and HEVC syntax, first bit highest, as a test wants them. All calls but `Bytes` can be
/// chained.
class BitStreamWriter {
public:
    /// u(count): the low `count` bits of `value`, 0 to 32.
    BitStreamWriter& U(uint32_t count, uint32_t value) {
        for (uint32_t bit = count; bit-- > 0;)
            Push(value >> bit & 1);
        return *this;
    }
    /// u(1)
    BitStreamWriter& Flag(bool value) { return U(1, value ? 1 : 0); }
    /// ue(v), values to 2^32 - 2.
    BitStreamWriter& UE(uint32_t value) {
        const uint64_t code = uint64_t{value} + 1;
        uint32_t suffix = 0;
        while (code >> (suffix + 1) != 0)
            ++suffix;
        return U(suffix, 0).Flag(true).U(suffix, static_cast<uint32_t>(code));
    }
    /// se(v)
    BitStreamWriter& SE(int32_t value) {
        const uint32_t twice = 2 * static_cast<uint32_t>(value);
        return UE(value > 0 ? twice - 1 : 0 - twice);
    }
    /// `count` times the bit `value`.
    BitStreamWriter& Repeat(size_t count, bool value) {
        for (size_t bit = 0; bit < count; ++bit)
            Push(value ? 1 : 0);
        return *this;
    }
    /// rbsp_trailing_bits(): a 1 and zeros to the end of the byte.
    BitStreamWriter& Trailing() {
        Push(1);
        return Align();
    }
    /// Zeros to the end of the byte, none at its end.
    BitStreamWriter& Align() {
        while (bits_ % 8 != 0)
            Push(0);
        return *this;
    }

    /// What was written, the last byte filled up with zeros, without emulation prevention.
    const std::vector<uint8_t>& Bytes() const { return bytes_; }

private:
    void Push(uint32_t bit) {
        if (bits_ % 8 == 0) bytes_.push_back(0);
        bytes_.back() |= static_cast<uint8_t>(bit << (7 - bits_ % 8));
        ++bits_;
    }

    std::vector<uint8_t> bytes_;
    size_t bits_ = 0;
};

/// The bytes with emulation prevention put in (ISO/IEC 14496-10, 7.4.1): before a byte of 3 or less behind
/// two zeros, and behind a zero at the end.
inline std::vector<uint8_t> WithEmulationPrevention(const std::vector<uint8_t>& bytes) {
    std::vector<uint8_t> escaped;
    size_t zeros = 0;
    for (const uint8_t byte : bytes) {
        if (zeros >= 2 && byte <= 3) {
            escaped.push_back(3);
            zeros = 0;
        }
        escaped.push_back(byte);
        zeros = byte == 0 ? zeros + 1 : 0;
    }
    if (zeros > 0) escaped.push_back(3);
    return escaped;
}

/// A whole unit without start code: the header's bytes, one for H.264 and two for HEVC, and `payload` with
/// emulation prevention.
inline std::vector<uint8_t> NALUnit(std::initializer_list<uint8_t> header,
                                    const std::vector<uint8_t>& payload) {
    std::vector<uint8_t> unit(header);
    const std::vector<uint8_t> escaped = WithEmulationPrevention(payload);
    unit.insert(unit.end(), escaped.begin(), escaped.end());
    return unit;
}

/// The units behind a start code each, of four bytes or of three.
inline std::vector<uint8_t> AnnexB(const std::vector<std::vector<uint8_t>>& units,
                                   uint32_t startCodeLength = 4) {
    std::vector<uint8_t> stream;
    for (const std::vector<uint8_t>& unit : units) {
        stream.insert(stream.end(), startCodeLength - 1, 0);
        stream.push_back(1);
        stream.insert(stream.end(), unit.begin(), unit.end());
    }
    return stream;
}

/// The units behind a big-endian length field of `lengthSize` bytes each.
inline std::vector<uint8_t> LengthPrefixed(const std::vector<std::vector<uint8_t>>& units,
                                           uint32_t lengthSize = 4) {
    std::vector<uint8_t> sample;
    for (const std::vector<uint8_t>& unit : units) {
        for (uint32_t byte = lengthSize; byte-- > 0;)
            sample.push_back(static_cast<uint8_t>(unit.size() >> 8 * byte));
        sample.insert(sample.end(), unit.begin(), unit.end());
    }
    return sample;
}
