#pragma once

#include <cstdint>
#include <vector>

/// A frame as the encoder of one compression makes it.
struct WholeFrame {
    uint32_t fourCC; ///< of its track
    int32_t width;   ///< pixels
    int32_t height;  ///< pixels
    std::vector<uint8_t> bytes;
};

/// One frame of every compression that is encoded, by the encoders of the registry: those of any size at a
/// small one, which isn't of whole macroblocks. Made on the first call. Ends the process without the library
/// of DNx.
const std::vector<WholeFrame>& WholeFrames();
