#include "iostream/peer/HEVCPeerFacts.h"

#include <gtest/gtest.h>

using namespace IOStream;

// Facts of streams of x265 on which the parsers and FFmpeg part ways, each by what makes it differ.

namespace {

/// What the standard's record has where FFmpeg wrote it, brought into the form that is kept here: reserved
/// bits zero, fields of several bytes little-endian. Parallelism and rate, which FFmpeg leaves at zero, and
/// the counts that a writer fills in, stay as they are in `payload`.
std::array<uint8_t, 23> KeptForm(std::vector<uint8_t> muxed, const HEVCPayload& payload) {
    muxed.resize(23);
    std::reverse(muxed.begin() + 2, muxed.begin() + 6);
    std::swap(muxed[13], muxed[14]);
    muxed[14] &= 0x0F;
    muxed[16] &= 3;
    muxed[17] &= 7;
    muxed[18] &= 7;
    muxed[21] &= 0x3C;
    for (const size_t at : {15, 19, 20, 22})
        muxed[at] = payload.record[at];
    std::array<uint8_t, 23> kept = {};
    std::copy(muxed.begin(), muxed.end(), kept.begin());
    return kept;
}

} // namespace

TEST(HEVCPeerDepartures, RecordDiffersInByteOrderReservedBitsParallelismAndRate) {
    const HEVCPeerStream stream({.pixelFormat = "yuv422p10le"});
    const HEVCPayload payload = Parsed(stream.Bytes());
    const std::vector<uint8_t> muxed = stream.MuxedRecord();
    EXPECT_EQ(payload.record, KeptForm(muxed, payload));
    // What FFmpeg has and what is kept here, before the form is changed.
    EXPECT_EQ(muxed[2], payload.record[5]);
    EXPECT_NE(muxed[2], payload.record[2]);
    EXPECT_EQ(muxed[13] & 0xF0, 0xF0);
    EXPECT_EQ(muxed[16] & 0xFC, 0xFC);
    EXPECT_EQ(muxed[19] | muxed[20], 0); // not told; whole frames here
    EXPECT_EQ(payload.record[19], 25);
}

TEST(HEVCPeerDepartures, AspectSevenEndsTheVui) {
    const HEVCPeerStream stream({.params = "sar=7:colorprim=bt709:transfer=bt709:colormatrix=bt709"});
    const HEVCPayload payload = Parsed(stream.Bytes());
    const DemuxedFacts facts = stream.Demux();
    EXPECT_FLOAT_EQ(facts.pixelAspect, 20.0F / 11.0F);
    EXPECT_EQ(payload.info.pixelAspect, 1.0F);
    EXPECT_EQ(facts.colourPrimaries, 1);
    EXPECT_EQ(payload.info.colourPrimaries, 2);
    EXPECT_EQ(facts.frameRate, 25.0);
    EXPECT_EQ(payload.info.frameRateNum, 0U);
    EXPECT_EQ(payload.info.width, facts.width);
}

TEST(HEVCPeerDepartures, ExtendedAspectIsNotRead) {
    const HEVCPeerStream stream({.filter = "setsar=7/5"});
    const HEVCPayload payload = Parsed(stream.Bytes());
    EXPECT_FLOAT_EQ(stream.Demux().pixelAspect, 7.0F / 5.0F);
    EXPECT_EQ(payload.info.pixelAspect, 1.0F);
    EXPECT_EQ(payload.info.frameRateNum, 25U);
}

// The bits taken are general_max_8bit_constraint_flag and general_max_422chroma_constraint_flag where the
// profile has such, and reserved ones elsewhere; general_progressive_source_flag is set in all three.
TEST(HEVCPeerDepartures, ProgressiveSourcesGoByOtherBits) {
    struct Case {
        const char* pixelFormat;
        bool frameMbsOnly, fieldSeen;
        uint32_t fieldOrder;
    };
    for (const Case& source : {Case{"yuv420p", false, false, IOField_Unknown},
                               Case{"yuv422p10le", true, false, IOField_Progressive},
                               Case{"yuv444p", false, true, IOField_Unknown}}) {
        const std::vector<uint8_t> stream = HEVCPeerStream({.pixelFormat = source.pixelFormat}).Bytes();
        const HEVCPayload payload = Parsed(stream);
        const TracedUnit set = LastOf(TraceHeaders("hevc", stream), sequenceSet);
        EXPECT_EQ(set["general_progressive_source_flag"], 1);
        EXPECT_EQ(payload.frameMbsOnly, source.frameMbsOnly);
        EXPECT_EQ(payload.frameMbsOnly, set["general_max_422chroma_constraint_flag"] != 0);
        EXPECT_EQ(payload.fieldSeen, source.fieldSeen);
        EXPECT_EQ(payload.fieldSeen, set["general_max_8bit_constraint_flag"] != 0);
        EXPECT_EQ(payload.info.fieldOrder, source.fieldOrder);
    }
}

TEST(HEVCPeerDepartures, CroppingOfAnEarlierSetStays) {
    const HEVCPeerStream cropped({.size = "70x54"});
    const std::vector<uint8_t> stream = Joined(cropped, HEVCPeerStream({.size = "96x80"}));
    const HEVCPayload payload = Parsed(stream);
    EXPECT_EQ(LastOf(TraceHeaders("hevc", stream), sequenceSet)["conformance_window_flag"], 0);
    EXPECT_GT(payload.info.cropRight, 0);
    EXPECT_EQ(payload.info.cropRight, Parsed(cropped.Bytes()).info.cropRight);
    EXPECT_EQ(payload.info.width, 96); // which it does not reduce
    EXPECT_EQ(payload.info.height, 80);
}
