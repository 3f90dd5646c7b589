#pragma once

#include "iostream/BitStreamWriter.h"
#include "iostream/PayloadAccess.h"

#include <array>
#include <functional>
#include <optional>

/// H.264 payload with its parsers laid open too.
class H264Parsers : public H264Payload {
public:
    using H264Payload::H264Payload;
    using IOH264NALPayload::ParseIDRSlice;
    using IOH264NALPayload::ParsePPS;
    using IOH264NALPayload::ParseSliceStart;
    using IOH264NALPayload::ParseSPS;
    using IOH264NALPayload::ParseUnit;

    uint32_t ReadSPS(const std::vector<uint8_t>& payload) {
        return ParseSPS(payload.data(), static_cast<uint32_t>(payload.size()));
    }
    bool ReadPPS(const std::vector<uint8_t>& payload) {
        return ParsePPS(payload.data(), static_cast<uint32_t>(payload.size()));
    }
    bool ReadIDRSlice(const std::vector<uint8_t>& payload) {
        return ParseIDRSlice(payload.data(), static_cast<uint32_t>(payload.size()));
    }
    void ReadNAL(uint8_t type, const std::vector<uint8_t>& payload) {
        ParseNAL(type, payload.data(), static_cast<uint32_t>(payload.size()));
    }
};

/// Writes part of a set.
using Syntax = std::function<void(BitStreamWriter&)>;

/// A sequence parameter set (ISO/IEC 14496-10, 7.3.2.1.1), from defaults that a test changes. Without changes
/// it is baseline, 1920 by 1088 frames.
struct SequenceSet {
    uint8_t profile = 66;
    uint8_t level = 40;
    uint32_t id = 0;
    Syntax sampleFormat; ///< from chroma_format_idc on
    uint32_t log2MaxFrameNumMinus4 = 0;
    Syntax picOrderCnt = [](BitStreamWriter& bits) { bits.UE(2); }; ///< from pic_order_cnt_type on
    uint32_t maxRefFrames = 1;
    uint32_t widthInMbs = 120;
    uint32_t heightInMapUnits = 68;
    bool frameMbsOnly = true;
    bool mbAdaptive = false;
    std::optional<std::array<uint32_t, 4>> crop; ///< left, right, top, bottom, in crop units
    Syntax vui;

    void WriteFrameSize(BitStreamWriter& bits) const {
        bits.UE(widthInMbs - 1).UE(heightInMapUnits - 1).Flag(frameMbsOnly);
        if (!frameMbsOnly) bits.Flag(mbAdaptive);
        bits.Flag(true).Flag(crop.has_value()); // direct_8x8_inference_flag, frame_cropping_flag
        if (crop)
            for (const uint32_t side : *crop)
                bits.UE(side);
    }

    /// All behind the NAL header, without emulation prevention.
    std::vector<uint8_t> Payload() const {
        BitStreamWriter bits;
        bits.U(8, profile).U(8, 0).U(8, level).UE(id);
        if (sampleFormat) sampleFormat(bits);
        bits.UE(log2MaxFrameNumMinus4);
        picOrderCnt(bits);
        bits.UE(maxRefFrames).Flag(false); // gaps_in_frame_num_value_allowed_flag
        WriteFrameSize(bits);
        bits.Flag(vui != nullptr);
        if (vui) vui(bits);
        return bits.Trailing().Bytes();
    }
};

/// A picture parameter set (7.3.2.2) in the same way; without changes one slice group and all flags 0.
struct PictureSet {
    uint32_t id = 0;
    uint32_t spsID = 0;
    bool entropyCodingMode = false;
    bool bottomFieldPicOrderPresent = false;
    Syntax sliceGroups = [](BitStreamWriter& bits) { bits.UE(0); }; ///< from num_slice_groups_minus1 on
    uint32_t referencesL0Minus1 = 0;
    uint32_t referencesL1Minus1 = 0;
    bool deblockingControlPresent = false;
    bool redundantPicCntPresent = false;

    std::vector<uint8_t> Payload() const {
        BitStreamWriter bits;
        bits.UE(id).UE(spsID).Flag(entropyCodingMode).Flag(bottomFieldPicOrderPresent);
        sliceGroups(bits);
        bits.UE(referencesL0Minus1).UE(referencesL1Minus1);
        bits.Flag(false).U(2, 0); // weighted_pred_flag, weighted_bipred_idc
        bits.SE(-3).SE(4).SE(-2); // pic_init_qp_minus26, pic_init_qs_minus26, chroma_qp_index_offset
        bits.Flag(deblockingControlPresent).Flag(false).Flag(redundantPicCntPresent);
        return bits.Trailing().Bytes();
    }
};
