#pragma once

#include "framework/CxAVTypes.h"

/// Codes of movie tracks that some back-end may claim. The registry answers for a code, and has no list of
/// its own; a code that is not here still decodes, and is only not listed.
inline constexpr uint32_t kTrackCodes[] = {
    24,
    32,
    FourCC("2Vuy"),
    FourCC("2vuy"),
    FourCC("AVdh"),
    FourCC("AVdn"),
    FourCC("BGRA"),
    FourCC("ap4h"),
    FourCC("ap4x"),
    FourCC("apch"),
    FourCC("apcn"),
    FourCC("apco"),
    FourCC("apcs"),
    FourCC("avc1"),
    FourCC("avci"),
    FourCC("b64a"),
    FourCC("r210"),
    FourCC("raw "),
    FourCC("rgb "),
    FourCC("uyvy"),
    FourCC("v210"),
    FourCC("v216"),
    FourCC("yuv2"),
};
