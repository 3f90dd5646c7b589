#include "iostream/IOH264NALPayload.h"
#include "iostream/SkipUEs.h"

#include <algorithm>
#include <array>
#include <span>

namespace IOStream {

namespace {

/// Profiles whose set tells chroma format and bit depth. 134, 135 and 139 would do so too by 7.3.2.1.1, but
/// are read as if they did not. Kept.
constexpr std::array<uint8_t, 10> highProfiles = {44, 83, 86, 100, 110, 118, 122, 128, 138, 244};
/// Profiles of 8 bits and 4:2:0 throughout: baseline, main and extended.
constexpr std::array<uint8_t, 3> plainProfiles = {66, 77, 88};

bool Contains(std::span<const uint8_t> profiles, uint8_t profile) {
    return std::find(profiles.begin(), profiles.end(), profile) != profiles.end();
}

/// se(v) of the code number that `ReadUE` gives (9.1.1).
int32_t SignedOfCode(uint32_t code) {
    const auto half = static_cast<int32_t>(code >> 1);
    return (code & 1) != 0 ? half + 1 : -half;
}

/// scaling_list() (7.3.2.1.1.1); only its length matters.
void SkipScalingList(BitBuffer& reader, uint32_t count) {
    int32_t next = 8;
    for (uint32_t entry = 0; entry < count && next != 0; ++entry)
        next = (next + SignedOfCode(reader.ReadUE()) + 256) & 255;
}

void SkipScalingMatrix(BitBuffer& reader, uint32_t lists) {
    for (uint32_t list = 0; list < lists; ++list)
        if (reader.ReadBit() != 0) SkipScalingList(reader, list < 6 ? 16 : 64);
}

} // namespace

uint32_t IOH264NALPayload::ParseSPS(const uint8_t* payload, uint32_t size) {
    if (size < 3) return 0;
    info.profile = payload[0]; // the constraint flags behind it are not kept
    info.level = payload[2];
    BitBuffer reader(payload + 3, size - 3);
    const uint32_t spsID = reader.ReadUE();
    if (spsID > 31) return 0;
    if (!ParseSampleFormat(reader)) return 0;
    log2MaxFrameNum = reader.ReadUE() + 4;
    if (!ParsePicOrderCnt(reader)) return 0;
    info.maxRefFrames = reader.ReadUE();
    reader.SkipBits(1); // gaps_in_frame_num_value_allowed_flag
    ParseFrameSize(reader);
    const bool isVuiPresent = reader.ReadBit() != 0;
    if (isVuiPresent && !ParseVUI(reader, spsID)) return 0;
    return size - reader.bytesLeft;
}

bool IOH264NALPayload::ParseSampleFormat(BitBuffer& reader) {
    if (Contains(highProfiles, info.profile)) return ParseHighSampleFormat(reader);
    if (Contains(plainProfiles, info.profile)) {
        info.chromaFormat = 420;
        info.bitDepth = 8;
    }
    return true;
}

bool IOH264NALPayload::ParseHighSampleFormat(BitBuffer& reader) {
    constexpr std::array<uint16_t, 4> chromaFormats = {1, 420, 422, 444};
    const uint32_t chromaFormatIdc = reader.ReadUE();
    if (chromaFormatIdc >= chromaFormats.size()) return false;
    info.chromaFormat = chromaFormats[chromaFormatIdc];
    if (chromaFormatIdc == 3) separateColourPlane = reader.ReadBit() != 0;
    info.bitDepth = static_cast<uint8_t>(reader.ReadUE() + 8);
    // bit_depth_chroma_minus8 is not read as an element: of a stream with 8 bits of chroma its one bit is
    // dropped here, qpprime_y_zero_transform_bypass_flag is taken for the flag of the scaling matrix, and the
    // rest of the set is read one bit early. Kept.
    reader.SkipBits(1);
    if (reader.ReadBit() != 0) SkipScalingMatrix(reader, chromaFormatIdc == 3 ? 12 : 8);
    return true;
}

bool IOH264NALPayload::ParsePicOrderCnt(BitBuffer& reader) {
    picOrderCntType = reader.ReadUE();
    if (picOrderCntType == 0) log2MaxPicOrderCntLsb = reader.ReadUE() + 4;
    if (picOrderCntType != 1) return true;
    deltaPicOrderAlwaysZero = reader.ReadBit() != 0;
    SkipUEs(reader, 2); // offset_for_non_ref_pic, offset_for_top_to_bottom_field
    const uint32_t cycle = reader.ReadUE();
    if (cycle > 255) return false;
    SkipUEs(reader, cycle); // offset_for_ref_frame
    return true;
}

void IOH264NALPayload::ParseFrameSize(BitBuffer& reader) {
    const uint32_t widthInMbs = reader.ReadUE() + 1;
    const uint32_t heightInMapUnits = reader.ReadUE() + 1;
    const bool isFrameMbsOnly = reader.ReadBit() != 0;
    // A set of fields after one of frames clears neither flag nor field order. Kept.
    if (isFrameMbsOnly) {
        frameMbsOnly = true;
        info.fieldOrder = IOField_Progressive;
    } else {
        info.mbAdaptiveFrameField = reader.ReadBit() != 0;
    }
    reader.SkipBits(1); // direct_8x8_inference_flag
    if (reader.ReadBit() != 0)
        for (uint16_t* crop : {&info.cropLeft, &info.cropRight, &info.cropTop, &info.cropBottom})
            *crop = static_cast<uint16_t>(reader.ReadUE());
    ScaleCropping(isFrameMbsOnly);
    const uint32_t width = widthInMbs * 16 - info.cropRight - info.cropLeft;
    const uint32_t height = heightInMapUnits * (isFrameMbsOnly ? 16 : 32) - info.cropBottom - info.cropTop;
    info.width = static_cast<uint16_t>(width);
    info.height = static_cast<uint16_t>(height);
}

/// From crop units to luma samples. Without cropping in this set the samples of an earlier one are still
/// there, are scaled once more and cut this picture. Kept.
void IOH264NALPayload::ScaleCropping(bool isFrameMbsOnly) {
    const uint32_t unitX = info.chromaFormat == 420 || info.chromaFormat == 422 ? 2 : 1;
    const uint32_t unitY = (isFrameMbsOnly ? 1 : 2) * (info.chromaFormat == 420 ? 2 : 1);
    info.cropLeft = static_cast<uint16_t>(info.cropLeft * unitX);
    info.cropRight = static_cast<uint16_t>(info.cropRight * unitX);
    info.cropTop = static_cast<uint16_t>(info.cropTop * unitY);
    info.cropBottom = static_cast<uint16_t>(info.cropBottom * unitY);
}

} // namespace IOStream
