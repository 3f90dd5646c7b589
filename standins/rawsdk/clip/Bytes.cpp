#include "rawsdk/clip/Bytes.h"

#include <array>

namespace rawsdk {

namespace {

constexpr std::array<uint32_t, 256> crcTable = [] {
    std::array<uint32_t, 256> table{};
    for (uint32_t byte = 0; byte < table.size(); ++byte) {
        uint32_t value = byte;
        for (int bit = 0; bit < 8; ++bit)
            value = value >> 1 ^ ((value & 1) != 0 ? 0xEDB88320u : 0);
        table[byte] = value;
    }
    return table;
}();

} // namespace

void ByteWriter::WriteBytes(std::span<const uint8_t> bytes) {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

uint32_t Crc32(std::span<const uint8_t> bytes) {
    uint32_t value = 0xFFFFFFFF;
    for (const uint8_t byte : bytes)
        value = value >> 8 ^ crcTable[(value ^ byte) & 0xFF];
    return ~value;
}

} // namespace rawsdk
