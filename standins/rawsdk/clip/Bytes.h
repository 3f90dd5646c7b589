#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace rawsdk {

static_assert(std::endian::native == std::endian::little, "clips are little-endian");

/// Reads numbers and texts one after the other. What lies past the end is 0 or empty, and then the reader is
/// not sound any more.
class ByteReader {
public:
    explicit ByteReader(std::span<const uint8_t> bytes) : rest_(bytes) {}

    template <typename Number>
    Number Read() {
        static_assert(std::is_arithmetic_v<Number>);
        Number value = 0;
        const std::span<const uint8_t> bytes = ReadBytes(sizeof(Number));
        if (!bytes.empty()) std::memcpy(&value, bytes.data(), sizeof(Number));
        return value;
    }
    std::span<const uint8_t> ReadBytes(size_t count) {
        if (count > rest_.size()) {
            sound_ = false;
            rest_ = {};
            return {};
        }
        const std::span<const uint8_t> bytes = rest_.first(count);
        rest_ = rest_.subspan(count);
        return bytes;
    }
    /// A text of `Unit`s behind the number of its bytes.
    template <typename Unit>
    std::basic_string<Unit> ReadText() {
        const std::span<const uint8_t> bytes = ReadBytes(Read<uint32_t>());
        if (bytes.size() % sizeof(Unit) != 0) sound_ = false;
        std::basic_string<Unit> text(bytes.size() / sizeof(Unit), Unit{0});
        if (!text.empty()) std::memcpy(text.data(), bytes.data(), text.size() * sizeof(Unit));
        return text;
    }

    size_t Left() const { return rest_.size(); }
    bool IsSound() const { return sound_; }

private:
    std::span<const uint8_t> rest_;
    bool sound_ = true;
};

/// Writes what `ByteReader` reads.
class ByteWriter {
public:
    template <typename Number>
    void Write(Number value) {
        static_assert(std::is_arithmetic_v<Number>);
        uint8_t bytes[sizeof(Number)];
        std::memcpy(bytes, &value, sizeof(Number));
        WriteBytes(bytes);
    }
    void WriteBytes(std::span<const uint8_t> bytes);
    template <typename Unit>
    void WriteText(std::basic_string_view<Unit> text) {
        Write(static_cast<uint32_t>(text.size() * sizeof(Unit)));
        WriteBytes({reinterpret_cast<const uint8_t*>(text.data()), text.size() * sizeof(Unit)});
    }

    const std::vector<uint8_t>& Bytes() const { return bytes_; }

private:
    std::vector<uint8_t> bytes_;
};

/// The check sum of ISO/IEC/IEEE 8802-3 (CRC-32).
uint32_t Crc32(std::span<const uint8_t> bytes);

} // namespace rawsdk
