#include "iostream/peer/HEVCPeerFacts.h"

#include <gtest/gtest.h>

using namespace IOStream;

// What the parsers make of streams of x265, held against what FFmpeg makes of them.

namespace {

struct PeerCase {
    const char* name;
    HEVCEncoding encoding;
    const char* shown; ///< syntax element that is not 0 if x265 did as it was asked
};

void PrintTo(const PeerCase& stream, std::ostream* out) { *out << stream.name; }

bool Shows(const HeaderTrace& trace, const char* element) {
    return std::any_of(trace.begin(), trace.end(),
                       [element](const TracedUnit& unit) { return unit[element] != 0; });
}

class HEVCPeer : public testing::TestWithParam<PeerCase> {};

const PeerCase peerCases[] = {
    {"Main", {}, "general_profile_compatibility_flag[1]"},
    {"Main10", {.pixelFormat = "yuv420p10le"}, "bit_depth_luma_minus8"},
    {"Main12", {.pixelFormat = "yuv420p12le"}, "general_max_12bit_constraint_flag"},
    {"Main422At10Bits", {.pixelFormat = "yuv422p10le"}, "general_max_422chroma_constraint_flag"},
    {"Main444At8Bits", {.pixelFormat = "yuv444p"}, "general_max_8bit_constraint_flag"},
    {"Main444At12Bits", {.pixelFormat = "yuv444p12le"}, "general_max_12bit_constraint_flag"},
    {"Gray", {.pixelFormat = "gray"}, "general_max_monochrome_constraint_flag"},
    {"CropOf420", {.size = "70x54"}, "conf_win_bottom_offset"},
    {"CropOf422", {.pixelFormat = "yuv422p", .size = "70x53"}, "conf_win_bottom_offset"},
    {"CropOf444", {.pixelFormat = "yuv444p", .size = "69x53"}, "conf_win_bottom_offset"},
    {"HRD", {.params = "hrd=1:vbv-bufsize=1000:vbv-maxrate=1000:aud=1"}, "vui_hrd_parameters_present_flag"},
    {"Aspect", {.params = "sar=4"}, "aspect_ratio_info_present_flag"},
    {"ColourAndRange",
     {.params = "range=full:colorprim=bt2020:transfer=smpte2084:colormatrix=bt2020nc"},
     "video_full_range_flag"},
    {"WindowLocationAndOverscan",
     {.params = "display-window=2,4,6,8:chromaloc=2:overscan=crop:videoformat=pal"},
     "default_display_window_flag"},
    {"Wavefronts",
     {.size = "128x128", .params = "ctu=16:min-cu-size=8:wpp=1"},
     "entropy_coding_sync_enabled_flag"},
    {"Slices", {.size = "128x256", .params = "ctu=32:slices=2"}, "slice_segment_address"},
    {"TemporalLayers", {.params = "temporal-layers=1:bframes=3"}, "sps_max_sub_layers_minus1"},
    {"DefaultScalingLists", {.params = "scaling-list=default"}, "scaling_list_enabled_flag"},
    {"SeveralReferences", {.params = "ref=4:bframes=2:b-pyramid=1"}, "sps_max_num_reorder_pics[0]"},
    {"NTSCRate", {.rate = "30000/1001"}, "vui_timing_info_present_flag"},
    {"RepeatedSets", {.params = "repeat-headers=1:keyint=2"}, "vui_timing_info_present_flag"},
};

} // namespace

TEST_P(HEVCPeer, ReadsTheSameFacts) {
    const HEVCPeerStream stream(GetParam().encoding);
    const HEVCPayload payload = Parsed(stream.Bytes());
    const HeaderTrace trace = TraceHeaders("hevc", stream.Bytes());
    EXPECT_TRUE(Shows(trace, GetParam().shown)) << GetParam().shown;
    ExpectTraced(payload, trace);
    ExpectDemuxed(payload.info, stream.Demux());
}

INSTANTIATE_TEST_SUITE_P(Streams, HEVCPeer, testing::ValuesIn(peerCases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(HEVCPeerStreams, LastOfSeveralSetsStands) {
    const std::vector<uint8_t> stream = Joined(
        HEVCPeerStream({.size = "96x80"}), HEVCPeerStream({.pixelFormat = "yuv422p10le", .size = "70x54"}));
    const HEVCPayload payload = Parsed(stream);
    ExpectTraced(payload, TraceHeaders("hevc", stream));
    EXPECT_EQ(payload.info.width, 70);
    EXPECT_EQ(payload.info.height, 54);
}

TEST(HEVCPeerStreams, FieldsOfPicTimingFollowTheLastOne) {
    for (const char* params : {"interlace=tff", "interlace=bff"}) {
        const std::vector<uint8_t> stream = HEVCPeerStream({.params = params}).Bytes();
        const HEVCPayload payload = Parsed(stream);
        const int64_t picStruct = LastOf(TraceHeaders("hevc", stream), "Picture Timing")["pic_struct"];
        ASSERT_TRUE(picStruct == 1 || picStruct == 2);
        EXPECT_EQ(payload.info.fieldOrder, picStruct == 1 ? IOField_TopFirst : IOField_BottomFirst);
    }
}

TEST(HEVCPeerStreams, MuxedRecordGivesTheFactsOfTheStream) {
    const HEVCPeerStream stream({.pixelFormat = "yuv422p10le", .size = "70x54"});
    HEVCPayload payload;
    EXPECT_EQ(payload.ParseConfigRecord(stream.MuxedRecord(), 0x68766343), 4U);
    ExpectTraced(payload, TraceHeaders("hevc", stream.Bytes()));
    ExpectDemuxed(payload.info, stream.Demux());
}
