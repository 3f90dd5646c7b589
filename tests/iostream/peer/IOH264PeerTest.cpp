// Streams of x264 in the profiles below High: what the parsers read is what FFmpeg shows, but for the facts
// that are listed with the rule that makes them differ.

#include "framework/CxAVTypes.h"
#include "iostream/peer/H264PeerFacts.h"

#include <gtest/gtest.h>

namespace {

using Names = std::vector<std::string>;

struct Encoding {
    const char* name;
    const char* source;
    const char* options;
    Names differing;
};

void PrintTo(const Encoding& encoding, std::ostream* out) { *out << encoding.name; }

// Why facts differ:
// - aspect_ratio_idc 7 (20:11) is refused, and with it all that follows in the set;
// - of Extended_SAR (255) the ratio is not read;
// - a frame of a stream that may have fields counts as top field first, whatever the pictures' timing says.
const Encoding encodings[] = {
    {"Baseline", "size=64x48:rate=25", "-profile:v baseline", {}},
    {"BaselineInThreeSlices", "size=64x96:rate=24", "-profile:v baseline -x264-params slices=3", {}},
    {"Main", "size=64x48:rate=25", "-profile:v main", {}},
    {"MainWithCropping", "size=66x50:rate=30000/1001", "-profile:v main", {}},
    {"MainCroppedOnAllSides", "size=64x64:rate=25", "-profile:v main -x264-params crop-rect=2,4,6,8", {}},
    {"MainIntraOnly", "size=64x48:rate=60000/1001", "-profile:v main -g 1", {}},
    {"MainWithManyReferences", "size=64x48:rate=25", "-profile:v main -refs 5 -bf 3 -coder vlc", {}},
    {"MainWithoutDeblocking", "size=64x48:rate=25", "-profile:v main -x264-params no-deblock=1", {}},
    {"MainUnderAnotherId", "size=64x48:rate=25", "-profile:v main -x264-params sps-id=29", {}},
    {"MainWithVariableRateHrd",
     "size=64x48:rate=25",
     "-profile:v main -maxrate 500k -bufsize 500k -x264-params nal-hrd=vbr",
     {}},
    {"MainWithConstantRateHrd",
     "size=64x48:rate=25",
     "-profile:v main -b:v 500k -maxrate 500k -bufsize 500k -x264-params nal-hrd=cbr",
     {}},
    {"MainInFullRangeOfWideColour",
     "size=64x48:rate=50",
     "-profile:v main -color_range pc -color_primaries bt2020 -color_trc smpte2084 -colorspace bt2020nc",
     {}},
    {"MainInLimitedRange",
     "size=64x48:rate=25",
     "-profile:v main -color_range tv -color_primaries bt709 -color_trc bt709 -colorspace bt709",
     {}},
    {"MainWithAspect12To11", "size=64x48:rate=25,setsar=12/11", "-profile:v main", {}},
    {"MainWithAspect2To1", "size=64x48:rate=25,setsar=2", "-profile:v main", {}},
    {"MainWithAspect20To11",
     "size=64x48:rate=25,setsar=20/11",
     "-profile:v main",
     {"pixelAspect", "frameRate", "fixedFrameRate"}},
    {"MainWithExtendedAspect", "size=64x48:rate=25,setsar=7/5", "-profile:v main", {"pixelAspect"}},
    {"MbaffTopFieldFirst", "size=66x52:rate=25", "-profile:v main -x264-params tff=1", {}},
    {"MbaffBottomFieldFirst", "size=66x52:rate=25", "-profile:v main -x264-params bff=1", {"fieldOrder"}},
    {"ProgressiveAmongFields",
     "size=64x64:rate=25",
     "-profile:v main -x264-params fake-interlaced=1",
     {"fieldOrder"}},
    {"MbaffWithHrd",
     "size=64x64:rate=30000/1001",
     "-profile:v main -maxrate 500k -bufsize 500k -x264-params tff=1:nal-hrd=vbr",
     {}},
};

class IOH264Peer : public testing::TestWithParam<Encoding> {};

INSTANTIATE_TEST_SUITE_P(Of, IOH264Peer, testing::ValuesIn(encodings),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_P(IOH264Peer, OnlyTheListedFactsDifferFromFFmpegs) {
    const H264PeerStream peer = EncodeByX264(GetParam().source, GetParam().options);
    EXPECT_EQ(Differences(FactsOf(ReadStream(peer.bytes), peer)), GetParam().differing);
}

TEST(IOH264PeerRecord, ARecordThatFFmpegMuxedTellsWhatTheStreamTells) {
    const H264PeerStream peer =
        EncodeByX264("size=66x52:rate=25", "-profile:v main -x264-params tff=1", true);
    H264Parsers payload;
    EXPECT_EQ(payload.ParseConfigRecord(peer.muxedRecord, FourCC("avcC")), 4u);
    // Frame type, field order and filter are told by slices, and a record has none.
    EXPECT_EQ(Differences(FactsOf(payload, peer)), (Names{"fieldOrder", "frameType"}));
}

TEST(IOH264PeerSets, OfTwoSetsTheLaterCountsAndBothRangesAreKept) {
    const H264PeerStream first =
        EncodeByX264("size=64x48:rate=25,setsar=12/11", "-profile:v baseline -color_range pc");
    const H264PeerStream second =
        EncodeByX264("size=66x50:rate=24", "-profile:v main -color_primaries bt709 -x264-params sps-id=4");
    const H264Parsers payload = ReadStream(Joined(first, second));
    EXPECT_EQ(Differences(FactsOf(payload, second)), Names());
    EXPECT_EQ(payload.info.fullRangeBySPS, (std::map<uint32_t, uint32_t>{{0, 2}, {4, 1}}));
}

// A later set without cropping has the cropping of the earlier one, scaled once more; and it leaves the range
// and the colours that it does not speak of.
TEST(IOH264PeerSets, ALaterSetLeavesWhatItDoesNotSpeakOf) {
    const H264PeerStream first = EncodeByX264("size=66x62:rate=25", "-profile:v main -color_primaries bt709");
    const H264PeerStream second = EncodeByX264("size=64x48:rate=25", "-profile:v main -x264-params sps-id=4");
    const H264Parsers payload = ReadStream(Joined(first, second));
    EXPECT_EQ(Differences(FactsOf(payload, second)),
              (Names{"width", "height", "cropRight", "cropBottom", "colourPrimaries"}));
    EXPECT_EQ(payload.info.cropRight, 2 * 14);
    EXPECT_EQ(payload.info.cropBottom, 2 * 2);
}

} // namespace
