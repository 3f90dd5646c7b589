#include "iostream/peer/HEVCPeerFacts.h"

#include <gtest/gtest.h>

using namespace IOStream;

namespace {

void ExpectProfileAndFormat(const HEVCPayload& payload, const TracedUnit& set) {
    constexpr std::array<uint16_t, 4> formats = {1, 420, 422, 444};
    EXPECT_EQ(payload.info.profile, set["general_profile_idc"]);
    EXPECT_EQ(payload.record[1] >> 5, set["general_profile_space"] << 1 | set["general_tier_flag"]);
    EXPECT_EQ(payload.info.level, set["general_level_idc"]);
    EXPECT_EQ(payload.record[21] >> 3, set["sps_max_sub_layers_minus1"] + 1);
    EXPECT_EQ(payload.record[21] >> 2 & 1, set["sps_temporal_id_nesting_flag"]);
    EXPECT_EQ(payload.info.chromaFormat, formats.at(static_cast<size_t>(set["chroma_format_idc"])));
    EXPECT_EQ(payload.separateColourPlane, set["separate_colour_plane_flag"] != 0);
    EXPECT_EQ(payload.info.bitDepth, set["bit_depth_luma_minus8"] + 8);
    EXPECT_EQ(payload.record[17], set["bit_depth_luma_minus8"]);
    EXPECT_EQ(payload.record[18], set["bit_depth_chroma_minus8"]);
    EXPECT_EQ(payload.log2MaxPicOrderCntLsb, set["log2_max_pic_order_cnt_lsb_minus4"] + 4);
}

void ExpectSize(const IOElementaryStreamInfo& info, const TracedUnit& set) {
    const int64_t unitX = info.chromaFormat == 420 || info.chromaFormat == 422 ? 2 : 1;
    const int64_t unitY = info.chromaFormat == 420 ? 2 : 1;
    EXPECT_EQ(info.cropLeft, unitX * set["conf_win_left_offset"]);
    EXPECT_EQ(info.cropRight, unitX * set["conf_win_right_offset"]);
    EXPECT_EQ(info.cropTop, unitY * set["conf_win_top_offset"]);
    EXPECT_EQ(info.cropBottom, unitY * set["conf_win_bottom_offset"]);
    EXPECT_EQ(info.width + info.cropLeft + info.cropRight, set["pic_width_in_luma_samples"]);
    EXPECT_EQ(info.height + info.cropTop + info.cropBottom, set["pic_height_in_luma_samples"]);
}

void ExpectVui(const HEVCPayload& payload, const TracedUnit& set) {
    const IOElementaryStreamInfo& info = payload.info;
    EXPECT_EQ(payload.frameFieldInfoPresent, set["frame_field_info_present_flag"] != 0);
    EXPECT_EQ(info.frameRateNum, set["vui_time_scale"]);
    EXPECT_EQ(info.frameRateDen, set["vui_num_units_in_tick"]);
    EXPECT_EQ(info.fixedFrameRate, set["vui_poc_proportional_to_timing_flag"] != 0);
    EXPECT_EQ(payload.record[13] | payload.record[14] << 8, set["min_spatial_segmentation_idc"]);
    if (set.Has("video_full_range_flag")) {
        const auto id = static_cast<uint32_t>(set["sps_seq_parameter_set_id"]);
        EXPECT_EQ(info.fullRangeBySPS.at(id), set["video_full_range_flag"] + 1);
    }
    if (set["colour_description_present_flag"] != 0) {
        EXPECT_EQ(info.colourPrimaries, set["colour_primaries"]);
        EXPECT_EQ(info.transferCharacteristics, set["transfer_characteristics"]);
        EXPECT_EQ(info.matrixCoefficients, set["matrix_coefficients"]);
    }
    if (set["nal_hrd_parameters_present_flag"] != 0 || set["vcl_hrd_parameters_present_flag"] != 0) {
        EXPECT_EQ(info.cpbRemovalDelayLength, set["au_cpb_removal_delay_length_minus1"] + 1);
        EXPECT_EQ(info.dpbOutputDelayLength, set["dpb_output_delay_length_minus1"] + 1);
    }
}

void ExpectParallelism(const HEVCPayload& payload, const TracedUnit& set) {
    const bool hasTiles = set["tiles_enabled_flag"] != 0;
    const bool hasWavefronts = set["entropy_coding_sync_enabled_flag"] != 0;
    EXPECT_EQ(payload.record[15], hasTiles && hasWavefronts ? 0 : hasTiles ? 2 : hasWavefronts ? 3 : 1);
}

} // namespace

HEVCPayload Parsed(const std::vector<uint8_t>& stream) {
    HEVCPayload payload;
    payload.Append(stream);
    payload.GetStreamInfo();
    return payload;
}

void ExpectTraced(const HEVCPayload& payload, const HeaderTrace& trace) {
    const TracedUnit& set = LastOf(trace, sequenceSet);
    ExpectProfileAndFormat(payload, set);
    ExpectSize(payload.info, set);
    ExpectVui(payload, set);
    ExpectParallelism(payload, LastOf(trace, pictureSet));
}

void ExpectDemuxed(const IOElementaryStreamInfo& info, const DemuxedFacts& facts) {
    EXPECT_EQ(info.width, facts.width);
    EXPECT_EQ(info.height, facts.height);
    EXPECT_EQ(info.profile, facts.profile);
    EXPECT_EQ(info.level, facts.level);
    EXPECT_EQ(info.bitDepth, facts.bitDepth);
    EXPECT_EQ(info.chromaFormat, facts.chromaFormat);
    EXPECT_EQ(info.fullRangeBySPS.at(0), facts.isFullRange ? 2U : 1U);
    EXPECT_EQ(info.colourPrimaries, facts.colourPrimaries);
    EXPECT_EQ(info.transferCharacteristics, facts.transferCharacteristics);
    EXPECT_EQ(info.matrixCoefficients, facts.matrixCoefficients);
    EXPECT_FLOAT_EQ(info.pixelAspect, facts.pixelAspect);
    EXPECT_DOUBLE_EQ(static_cast<double>(info.frameRateNum) / info.frameRateDen, facts.frameRate);
}
