#include "iostream/IOHEVCNALPayload.h"
#include "iostream/SkipUEs.h"

#include <cmath>

// VUI and HRD parameters (ISO/IEC 23008-2, annex E).

namespace IOStream {

namespace {

/// Whole frames a second, halves rounded up, cut to 16 bits; 0 without a unit of time. The standard's
/// avgFrameRate counts frames in 256 seconds; whole frames are what the record has here: kept.
uint16_t WholeFrameRate(uint32_t timeScale, uint32_t units) {
    if (units == 0) return 0;
    const float rate = std::round(static_cast<float>(timeScale) / static_cast<float>(units));
    return static_cast<uint16_t>(static_cast<uint64_t>(rate));
}

/// cpb_cnt_minus1 of a sub-layer, behind the flags and the duration that decide whether it is there.
uint32_t ReadCpbCountMinus1(BitBuffer& reader) {
    const bool isFixedRate =
        reader.ReadBit() != 0 || reader.ReadBit() != 0; // in general, within the sequence
    if (isFixedRate) {
        reader.ReadUE(); // elemental_duration_in_tc_minus1
        return reader.ReadUE();
    }
    const bool isLowDelay = reader.ReadBit() != 0;
    return isLowDelay ? 0 : reader.ReadUE();
}

/// The parameters of one sub-layer, for `kinds` of NAL and VCL.
/// @return false above 32 buffers
bool SkipSubLayerHRD(BitBuffer& reader, uint32_t kinds, bool isSubPicture) {
    const uint32_t cpbCountMinus1 = ReadCpbCountMinus1(reader);
    if (cpbCountMinus1 > 31) return false;
    for (uint32_t cpb = 0; cpb < kinds * (cpbCountMinus1 + 1); ++cpb) {
        SkipUEs(reader, isSubPicture ? 4 : 2); // rates and sizes
        reader.SkipBits(1);
    }
    return true;
}

} // namespace

bool IOHEVCNALPayload::ParseVUI(BitBuffer& reader, uint32_t spsID) {
    if (!ParseVUICommon(reader, spsID)) return false;
    const bool hasChromaLocation = reader.ReadBit() != 0;
    if (hasChromaLocation) SkipUEs(reader, 2);
    reader.SkipBits(2); // neutral_chroma_indication_flag, field_seq_flag
    frameFieldInfoPresent = reader.ReadBit() != 0;
    const bool hasDisplayWindow = reader.ReadBit() != 0;
    if (hasDisplayWindow) SkipUEs(reader, 4);
    const bool hasTiming = reader.ReadBit() != 0;
    if (hasTiming && !ParseVUITiming(reader)) return false;
    const bool hasRestrictions = reader.ReadBit() != 0;
    if (!hasRestrictions) return true;
    reader.SkipBits(3);
    const uint32_t segmentation = reader.ReadUE() & 0xFFF; // min_spatial_segmentation_idc
    StoreLittleEndian16(Record_SpatialSegmentation, segmentation);
    SkipUEs(reader, 4);
    return true;
}

/// What vui_timing_info_present_flag opens.
/// @return false if the HRD parameters are refused
bool IOHEVCNALPayload::ParseVUITiming(BitBuffer& reader) {
    info.frameRateDen = reader.ReadBits(32);
    info.frameRateNum = reader.ReadBits(32);
    info.fixedFrameRate = reader.ReadBit() != 0;
    StoreLittleEndian16(Record_AvgFrameRate, WholeFrameRate(info.frameRateNum, info.frameRateDen));
    if (info.fixedFrameRate) SkipUEs(reader, 1);
    const bool hasHRD = reader.ReadBit() != 0;
    return !hasHRD || ParseHRD(reader);
}

/// Writes a field of the record, whose bytes stand in the reverse of the standard's order: kept.
void IOHEVCNALPayload::StoreLittleEndian16(RecordByte at, uint32_t value) {
    record[at] = static_cast<uint8_t>(value);
    record[at + 1U] = static_cast<uint8_t>(value >> 8);
}

bool IOHEVCNALPayload::ParseHRD(BitBuffer& reader) {
    const uint32_t hasNAL = reader.ReadBit();
    const uint32_t hasVCL = reader.ReadBit();
    const uint32_t kinds = hasNAL + hasVCL;
    const bool isSubPicture = kinds > 0 && ParseHRDCommon(reader);
    for (uint32_t layer = 0; layer < LayerCount(); ++layer)
        if (!SkipSubLayerHRD(reader, kinds, isSubPicture)) return false;
    return true;
}

/// The lengths of delays that NAL and VCL parameters share.
/// @return sub_pic_hrd_params_present_flag
bool IOHEVCNALPayload::ParseHRDCommon(BitBuffer& reader) {
    const bool isSubPicture = reader.ReadBit() != 0;
    if (isSubPicture) reader.SkipBits(8 + 5 + 1 + 5);
    reader.SkipBits(4 + 4);
    if (isSubPicture) reader.SkipBits(4);
    reader.SkipBits(5);
    info.cpbRemovalDelayLength = static_cast<uint8_t>(reader.ReadBits(5) + 1);
    info.dpbOutputDelayLength = static_cast<uint8_t>(reader.ReadBits(5) + 1);
    return isSubPicture;
}

} // namespace IOStream
