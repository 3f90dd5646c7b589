#include "TrackCodes.h"

#include "ffmpeg/DecoderCodes.h"
#include "framework/CxAVTypes.h"

std::set<uint32_t> TrackCodes() {
    // Those of the back-ends beside FFmpeg's.
    std::set<uint32_t> codes = {
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
        FourCC("b64a"),
        FourCC("r210"),
        FourCC("raw "),
        FourCC("rgb "),
        FourCC("uyvy"),
        FourCC("v210"),
        FourCC("v216"),
        FourCC("yuv2"),
    };
    for (const CxFFMPEG::DecoderCode& row : CxFFMPEG::DecoderCodes())
        codes.insert(row.fourCC);
    return codes;
}
