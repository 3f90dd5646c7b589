#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace IOStream {

/// The start code that conversions write.
inline constexpr uint8_t startCode[4] = {0, 0, 0, 1};

/// One NAL unit, header and all, without start code or length field.
using NALBytes = std::span<const uint8_t>;

/// Bytes of a length field by the byte of a record whose low bits are lengthSizeMinusOne.
inline uint8_t LengthSize(uint8_t recordByte) { return static_cast<uint8_t>((recordByte & 3) + 1); }

/// Reads the length-prefixed data of ISO/IEC 14496-15, samples and configuration records, from front to back
/// and never behind its end. What passes the end is not there, and the reader stays before it.
class LengthPrefixedReader {
public:
    LengthPrefixedReader(const uint8_t* data, uint64_t size) : rest_(data, size) {}

    /// What is still to be read.
    NALBytes Rest() const { return rest_; }

    /// The next bytes: `byteCount`, or as many as are left.
    NALBytes Take(uint64_t byteCount) {
        const NALBytes taken = rest_.first(std::min<uint64_t>(byteCount, rest_.size()));
        rest_ = rest_.subspan(taken.size());
        return taken;
    }

    /// A big-endian number of `byteCount` bytes, 0 to 4.
    std::optional<uint32_t> ReadNumber(uint32_t byteCount) {
        if (rest_.size() < byteCount) return std::nullopt;
        uint32_t number = 0;
        for (const uint8_t byte : Take(byteCount))
            number = number << 8 | byte;
        return number;
    }

    /// A unit behind its length field of `lengthSize` bytes, 0 to 4.
    std::optional<NALBytes> ReadUnit(uint32_t lengthSize) {
        const NALBytes start = rest_;
        const std::optional<uint32_t> length = ReadNumber(lengthSize);
        if (!length || *length > rest_.size()) {
            rest_ = start;
            return std::nullopt;
        }
        return Take(*length);
    }

private:
    NALBytes rest_;
};

/// Appends bytes as they stand.
inline void Append(std::vector<uint8_t>& out, NALBytes bytes) {
    out.insert(out.end(), bytes.begin(), bytes.end());
}

/// Appends a unit behind a start code.
inline void AppendWithStartCode(std::vector<uint8_t>& out, NALBytes unit) {
    Append(out, startCode);
    Append(out, unit);
}

/// Appends a 16-bit big-endian number; of a larger one the low bits.
inline void AppendNumber(std::vector<uint8_t>& out, uint64_t number) {
    out.push_back(static_cast<uint8_t>(number >> 8));
    out.push_back(static_cast<uint8_t>(number));
}

/// Appends a unit behind a 16-bit length field.
inline void AppendWithLength(std::vector<uint8_t>& out, NALBytes unit) {
    AppendNumber(out, unit.size());
    Append(out, unit);
}

/// Bytes of an "hvcC" record before its arrays; the last of them counts the arrays.
inline constexpr size_t hvccHeaderSize = 23;

/// Visits the units of an "hvcC" record in their order, as far as they lie in it, as `visit(type, unit)`.
/// @param record  `hvccHeaderSize` bytes at least
template <class Visitor>
void VisitHVCCUnits(NALBytes record, Visitor visit) {
    LengthPrefixedReader reader(record.data() + hvccHeaderSize, record.size() - hvccHeaderSize);
    for (uint32_t arraysLeft = record[hvccHeaderSize - 1]; arraysLeft > 0; --arraysLeft) {
        const std::optional<uint32_t> header = reader.ReadNumber(1);
        const std::optional<uint32_t> unitCount = reader.ReadNumber(2);
        if (!header || !unitCount) return;
        for (uint32_t unitsLeft = *unitCount; unitsLeft > 0; --unitsLeft) {
            const std::optional<NALBytes> unit = reader.ReadUnit(2);
            if (!unit) return;
            visit(static_cast<uint8_t>(*header & 63), *unit);
        }
    }
}

} // namespace IOStream
