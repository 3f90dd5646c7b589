#pragma once

#include <cstdint>
#include <exception>

namespace IOStream {

/// Forward-only bit reader of H.264 and HEVC syntax, most significant bit first. It takes out emulation
/// prevention bytes on the way (ISO/IEC 14496-10, 7.4.1; ISO/IEC 23008-2, 7.4.2) and decodes unsigned
/// Exp-Golomb codes (9.1 and 9.2 there). It owns nothing: the bytes belong to the caller and outlive the
/// reader. A reader belongs to one thread and is not used again once it has thrown.
class BitBuffer {
public:
    /// A bit was asked for behind the last byte.
    struct IOBitBufferNoDataException : std::exception {
        const char* what() const noexcept override { return "No data in buffer"; }
    };
    /// An Exp-Golomb code of more than 30 leading zeros.
    struct IOBitBufferIllegalDataException : std::exception {
        const char* what() const noexcept override { return "Illegal data in buffer"; }
    };

    /// Reads `size` bytes from `data` on, with emulation prevention bytes taken out.
    BitBuffer(const uint8_t* data, uint32_t size) : next(data), bytesLeft(size) {}

    /// Makes a bit available; nothing while one is.
    /// @throws IOBitBufferNoDataException behind the last byte, even if the second zero of a 00 00 03 is
    ///         still to be delivered (kept)
    void Fill();
    /// The next bit, 0 or 1. Throws as `Fill`.
    uint32_t ReadBit();
    /// The next `count` bits, 0 to 32, first bit highest; 0 reads nothing and gives 0. Throws as `Fill`.
    uint32_t ReadBits(uint8_t count);
    /// The next ue(v) value. Leading zeros are counted modulo 256 (kept). Throws as `Fill`.
    /// @throws IOBitBufferIllegalDataException above 30 leading zeros
    uint32_t ReadUE();
    /// Drops `count` bits. Throws as `Fill`. Without emulation prevention whole bytes are jumped over first,
    /// and the rest of the byte in hand is read after the jump (kept).
    void SkipBits(uint32_t count);

    const uint8_t* next;        ///< next byte not yet fetched
    uint32_t bytesLeft;         ///< bytes from `next` to the end
    uint32_t emulationMode = 1; ///< 1: 00 00 03 stands for two zeros; any other value: bytes as they stand
    uint16_t mask = 0;          ///< bit of `current` that is read next, 128 to 1; 0: none is ready
    uint8_t current = 0;        ///< byte that is being read
    bool pendingZero = false;   ///< the second zero of a 00 00 03 is still to be delivered
};

inline void BitBuffer::Fill() {
    if (mask != 0) return;
    if (bytesLeft == 0) throw IOBitBufferNoDataException();
    mask = 128;
    if (pendingZero) {
        pendingZero = false;
        return;
    }
    // Only the three bytes at `next` count: of 00 00 03 00 03 the second 03 is data.
    const bool isEscaped = emulationMode == 1 && static_cast<int32_t>(bytesLeft) >= 3 && next[0] == 0 &&
                           next[1] == 0 && next[2] == 3;
    const uint32_t taken = isEscaped ? 3 : 1;
    current = *next; // of an escaped pair of zeros the first; the second follows with the next byte
    pendingZero = isEscaped;
    next += taken;
    bytesLeft -= taken;
}

inline uint32_t BitBuffer::ReadBit() {
    Fill();
    const uint32_t bit = (current & mask) != 0 ? 1 : 0;
    mask >>= 1;
    return bit;
}

inline uint32_t BitBuffer::ReadBits(uint8_t count) {
    uint32_t value = 0;
    for (uint8_t bit = 0; bit < count; ++bit)
        value = value << 1 | ReadBit();
    return value;
}

inline uint32_t BitBuffer::ReadUE() {
    uint8_t leadingZeros = 0;
    while (ReadBit() == 0)
        ++leadingZeros; // modulo 256: kept
    if (leadingZeros > 30) throw IOBitBufferIllegalDataException();
    return ReadBits(leadingZeros) + (1U << leadingZeros) - 1;
}

inline void BitBuffer::SkipBits(uint32_t count) {
    if (emulationMode == 0) {
        if (bytesLeft < count / 8) throw IOBitBufferNoDataException();
        next += count / 8;
        bytesLeft -= count / 8;
        count %= 8;
    }
    for (; count > 0; --count)
        ReadBit();
}

} // namespace IOStream
