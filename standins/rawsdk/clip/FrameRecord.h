#pragma once

#include "rawsdk/clip/ClipFormat.h"

#include <cstdint>
#include <span>
#include <vector>

namespace rawsdk {

/// A frame as it stands in the file, and in the buffer of whoever reads it.
struct FrameRecord {
    /// Bytes of the smallest and of the largest record.
    static constexpr uint32_t leastBytes = 16;
    static constexpr uint32_t mostBytes = 0x7FFFFFFF;

    uint32_t size = 0; ///< bytes of the record
    uint32_t crc = 0;  ///< check sum of what stands before the strips
    FrameSettings settings;
    Metadata metadata;
    std::vector<std::span<const uint8_t>> strips; ///< compressed, in the record's memory
};

/// Makes the record of a frame.
/// @param samples  of the whole frame, rows without padding
/// @throw Failure  without memory, or if the record would be too large
std::vector<uint8_t> WriteFrame(const FrameProperties& properties, std::span<const uint16_t> samples,
                                uint32_t width, uint32_t height);

/// Reads the record that the bytes are, without decompressing its strips.
/// @throw Failure  if the record is damaged
FrameRecord ReadFrame(std::span<const uint8_t> bytes, uint32_t height);

} // namespace rawsdk
