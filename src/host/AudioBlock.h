#pragma once

#include <cstdint>

/// Sound that goes with a picture to be saved. Its address is given under `AudioTag_Block`, and the block
/// stays the caller's.
struct AudioBlock {
    uint8_t* Data = nullptr;   ///< interleaved samples, little-endian
    int32_t SampleRate = 0;    ///< per second
    uint8_t BitsPerSample = 0; ///< 8 unsigned, 16 and 24 signed, 32 floating point
    uint8_t Channels = 0;
    int32_t Size = 0; ///< bytes at `Data`
};

/// Tag of the save operations.
enum AudioTag : uint64_t {
    AudioTag_Block = 0x600000ca, ///< address of an `AudioBlock`
};
