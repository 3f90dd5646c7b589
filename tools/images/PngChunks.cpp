#include "images/PngChunks.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>

namespace {

constexpr std::array<char, 8> kSignature = {'\x89', 'P', 'N', 'G', '\r', '\n', '\x1a', '\n'};
constexpr int64_t kLengthAndType = 8;
constexpr int64_t kCheckSum = 4;

uint32_t BigEndian(const char* bytes) {
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i)
        value = value << 8 | static_cast<uint8_t>(bytes[i]);
    return value;
}

} // namespace

bool PngChunksAreWhole(const std::string& path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const int64_t size = file.tellg();
    std::array<char, 8> head{};
    file.seekg(0);
    if (!file.read(head.data(), head.size()) || head != kSignature) return false;
    for (int64_t offset = head.size(); offset + kLengthAndType + kCheckSum <= size;) {
        file.seekg(offset);
        if (!file.read(head.data(), head.size())) return false;
        offset += kLengthAndType + BigEndian(head.data()) + kCheckSum;
        if (std::memcmp(head.data() + 4, "IEND", 4) == 0) return offset <= size;
    }
    return false;
}
