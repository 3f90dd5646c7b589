#pragma once

#include <cstdint>
#include <optional>

namespace IOStream {

/// Where a start code stands in a byte stream.
struct StartCode {
    uint32_t place;
    uint8_t length; ///< 3, or 4 with the zero before 00 00 01
};

/// The first start code from `from` on with a byte behind it. The last byte does not count as one of a start
/// code's word of four bytes, so 00 00 01 with a single byte behind it at the end of the data is not found:
/// kept.
std::optional<StartCode> FindUnit(const uint8_t* data, uint32_t from, uint32_t size);

/// Visits the start codes from `from`, at most `size`, on in their order, as `visit(startCode, headerByte)`,
/// and moves `from` behind the header byte of each once it is visited. Touches no byte outside of the data.
/// @return false at a start code before a byte with forbidden_zero_bit set, which is not visited and before
///         which `from` stays
template <class Visitor>
bool VisitUnits(const uint8_t* data, uint32_t& from, uint32_t size, Visitor visit) {
    constexpr uint8_t forbiddenZeroBit = 0x80;
    while (const std::optional<StartCode> found = FindUnit(data, from, size)) {
        const uint32_t header = found->place + found->length;
        if ((data[header] & forbiddenZeroBit) != 0) return false;
        visit(*found, data[header]);
        from = header + 1;
    }
    return true;
}

} // namespace IOStream
