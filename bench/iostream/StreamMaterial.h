#pragma once

#include <cstdint>
#include <span>
#include <vector>

/// H.264 video as x264 writes it, for the benchmarks of elementary streams.

/// A track's samples, one behind the other.
struct StreamMaterial {
    std::vector<uint8_t> storage; ///< the data, and zeros behind it that the peer may read
    std::span<uint8_t> data;
    std::vector<std::span<uint8_t>> samples; ///< all of `data`, in order
};

/// A byte stream of 200 MB: camera-like pictures of 1920x1080, each of eight slices of some tens of
/// kilobytes. Made once.
const StreamMaterial& ByteStream();

/// The same units behind length fields of `lengthSize` bytes, 3 or 4.
StreamMaterial LengthPrefixedSamples(uint32_t lengthSize);
