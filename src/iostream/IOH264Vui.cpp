#include "iostream/IOH264NALPayload.h"
#include "iostream/SkipUEs.h"

#include <array>

namespace IOStream {

namespace {

constexpr uint32_t extendedSAR = 255;

/// Width of a sample over its height by aspect_ratio_idc (table E-1); 0 for values that are refused. 7, which
/// table E-1 gives as 20:11, is refused with them. Kept.
constexpr std::array<float, 17> sampleAspects = {
    1.0F,          1.0F,           12.0F / 11.0F, 10.0F / 11.0F, 16.0F / 11.0F, 40.0F / 33.0F,
    24.0F / 11.0F, 0.0F,           32.0F / 11.0F, 80.0F / 33.0F, 18.0F / 11.0F, 15.0F / 11.0F,
    64.0F / 33.0F, 160.0F / 99.0F, 4.0F / 3.0F,   3.0F / 2.0F,   2.0F};

/// aspect_ratio_idc and what belongs to it.
/// @return false if the value is refused
bool ParseAspectRatio(BitBuffer& reader, float& pixelAspect) {
    const uint32_t idc = reader.ReadBits(8);
    if (idc == extendedSAR) {
        reader.SkipBits(16 + 16); // sar_width and sar_height: the aspect stays as it is. Kept.
        return true;
    }
    if (idc >= sampleAspects.size() || sampleAspects[idc] == 0.0F) return false;
    pixelAspect = sampleAspects[idc];
    return true;
}

} // namespace

bool IOH264NALPayload::ParseVUICommon(BitBuffer& reader, uint32_t spsID) {
    const bool isAspectPresent = reader.ReadBit() != 0;
    if (isAspectPresent && !ParseAspectRatio(reader, info.pixelAspect)) return false;
    if (reader.ReadBit() != 0) reader.SkipBits(1); // overscan_info_present_flag, overscan_appropriate_flag
    if (reader.ReadBit() == 0) return true;        // video_signal_type_present_flag
    // The reserved values of video_format are refused, where E.2.1 has them read as "unspecified". Kept.
    if (reader.ReadBits(3) > 5) return false;
    info.fullRangeBySPS[spsID] = reader.ReadBit() != 0 ? 2 : 1;
    if (reader.ReadBit() == 0) return true; // colour_description_present_flag
    info.colourPrimaries = static_cast<uint8_t>(reader.ReadBits(8));
    info.transferCharacteristics = static_cast<uint8_t>(reader.ReadBits(8));
    info.matrixCoefficients = static_cast<uint8_t>(reader.ReadBits(8));
    return true;
}

bool IOH264NALPayload::ParseVUI(BitBuffer& reader, uint32_t spsID) {
    if (!ParseVUICommon(reader, spsID)) return false;
    if (reader.ReadBit() != 0) SkipUEs(reader, 2); // chroma_loc_info_present_flag, the places of both fields
    if (reader.ReadBit() != 0) {                   // timing_info_present_flag
        info.frameRateDen = reader.ReadBits(32);
        info.frameRateNum = reader.ReadBits(32) >> 1; // the scale counts fields; an odd one loses the half
        info.fixedFrameRate = reader.ReadBit() != 0;
    }
    const bool isNalHrdPresent = reader.ReadBit() != 0;
    if (isNalHrdPresent && !ParseHRD(reader)) return false;
    const bool isVclHrdPresent = reader.ReadBit() != 0;
    if (isVclHrdPresent && !ParseHRD(reader)) return false;
    if (isNalHrdPresent || isVclHrdPresent) {
        info.hrdPresent = true;
        reader.SkipBits(1); // low_delay_hrd_flag
    }
    info.picStructPresent = reader.ReadBit() != 0;
    if (reader.ReadBit() != 0) { // bitstream_restriction_flag
        reader.SkipBits(1);      // motion_vectors_over_pic_boundaries_flag
        SkipUEs(reader, 6);      // limits of sizes, vectors and reordering
    }
    return true;
}

bool IOH264NALPayload::ParseHRD(BitBuffer& reader) {
    const uint32_t cpbCntMinus1 = reader.ReadUE();
    if (cpbCntMinus1 > 31) return false;
    reader.SkipBits(4 + 4); // bit_rate_scale, cpb_size_scale
    for (uint32_t cpb = 0; cpb <= cpbCntMinus1; ++cpb) {
        SkipUEs(reader, 2); // bit_rate_value_minus1, cpb_size_value_minus1
        reader.SkipBits(1); // cbr_flag
    }
    reader.SkipBits(5); // initial_cpb_removal_delay_length_minus1
    info.cpbRemovalDelayLength = static_cast<uint8_t>(reader.ReadBits(5) + 1);
    info.dpbOutputDelayLength = static_cast<uint8_t>(reader.ReadBits(5) + 1);
    // E.2.2 allows 32 bits; more than 24 are refused. Kept.
    if (info.cpbRemovalDelayLength > 24 || info.dpbOutputDelayLength > 24) return false;
    info.timeOffsetLength = static_cast<uint8_t>(reader.ReadBits(5));
    return true;
}

} // namespace IOStream
