#pragma once

#include "framework/CxAVTypes.h"

#include <cstdint>
#include <vector>

/// Kind of uncompressed picture that goes with a compression.
enum class DNXPictureKind : uint8_t {
    Rgb,     ///< `a48r`
    YCbCr16, ///< `v216`, with alpha `yv16`
    YCbCr8,  ///< `2vuy`, with alpha `yv8u`
};

/// One compression of the library, with all that is known of it.
struct DNXCompression {
    uint32_t id;
    uint32_t fourCC;     ///< of tracks
    const char* name;    ///< in metadata
    const char* encoder; ///< display name of the encoder; null if none is offered
    uint32_t width;      ///< pixels; 0 for any
    uint32_t height;     ///< pixels; 0 for any
    uint32_t flags;      ///< of `CxEncoderInfo`
    bool progressive;    ///< frames are progressive whatever the field order
    DNXPictureKind kind;
    uint32_t sampling; ///< `dnxSampling...` of frames to be coded; 4:4:4 is RGB
    uint32_t depth;    ///< bits that an encoder is told: 10 for 8-bit compressions too. Kept
};

inline constexpr uint32_t dnxHDCode = FourCC("AVdn");
inline constexpr uint32_t dnxHRCode = FourCC("AVdh");

/// The compression of an id. An id that nobody knows is a DNxHD of 8 bits that is not progressive, with the
/// name "DNxHD".
const DNXCompression& FindDNXCompression(uint32_t id);

/// The encoder catalogue, built on first use; any thread.
const std::vector<CxEncoderInfo>& DNXCatalogue();
