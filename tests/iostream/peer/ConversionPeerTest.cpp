// Streams of x264 and x265: they survive the way to samples and back, and their records are those of FFmpeg's
// MP4 muxer.

#include "iostream/BitStreamWriter.h"
#include "iostream/Conversions.h"
#include "iostream/peer/H264PeerStream.h"
#include "iostream/peer/HEVCPeerStream.h"

#include <gtest/gtest.h>

namespace {

using IOStream::IOH264NALPayload;
using IOStream::IOHEVCNALPayload;

/// The stream with one more zero before each 00 00 01 that has none, as conversions write start codes.
Bytes WithLongStartCodes(const Bytes& stream) {
    Bytes longer;
    for (size_t i = 0; i < stream.size(); ++i) {
        const bool isStartCode =
            i + 3 <= stream.size() && stream[i] == 0 && stream[i + 1] == 0 && stream[i + 2] == 1;
        if (isStartCode && (longer.empty() || longer.back() != 0)) longer.push_back(0);
        longer.push_back(stream[i]);
    }
    return longer;
}

/// The units of a sample with length fields of four bytes.
std::vector<Bytes> UnitsOf(const Bytes& sample) {
    std::vector<Bytes> units;
    for (size_t at = 0; at + 4 <= sample.size();) {
        size_t length = 0;
        for (int i = 0; i < 4; ++i)
            length = length << 8 | sample[at++];
        const auto begin = sample.begin() + static_cast<ptrdiff_t>(at);
        units.emplace_back(begin, begin + static_cast<ptrdiff_t>(length));
        at += length;
    }
    return units;
}

void ExpectToSurvive(const Bytes& stream) {
    const auto sample = ConvertToHVCCStream(stream);
    ASSERT_TRUE(sample);
    const AnnexBSample back = ConvertToAnnexB(*sample, 4);
    EXPECT_TRUE(back.isDone);
    EXPECT_EQ(back.Stream(), WithLongStartCodes(stream));
    EXPECT_EQ(ConvertToHVCCStream(back.Stream()), sample);
    for (const uint8_t lengthSize : {2, 3}) {
        const AnnexBSample shorter =
            ConvertToAnnexB(LengthPrefixed(UnitsOf(*sample), lengthSize), lengthSize);
        EXPECT_TRUE(shorter.isDone);
        EXPECT_EQ(shorter.out, back.Stream()) << int{lengthSize};
    }
}

bool BeginsWith(const Bytes& bytes, const Bytes& start) {
    return bytes.size() >= start.size() && std::equal(start.begin(), start.end(), bytes.begin());
}

struct X264Case {
    const char* name;
    const char* options;
    size_t extensionSize; ///< of the record's end, which high profiles have
};

void PrintTo(const X264Case& stream, std::ostream* out) { *out << stream.name; }

class X264Conversion : public testing::TestWithParam<X264Case> {};

TEST_P(X264Conversion, StreamAndRecordAreThoseOfFFmpeg) {
    const H264PeerStream peer = EncodeByX264("size=64x96:rate=25", GetParam().options, true);
    ExpectToSurvive(peer.bytes);
    const Converted record = ConvertToAVCC(peer.bytes);
    ASSERT_TRUE(record.isDone);
    EXPECT_TRUE(BeginsWith(peer.muxedRecord, record.out));
    EXPECT_EQ(peer.muxedRecord.size() - record.out.size(), GetParam().extensionSize);
    const Converted sets = ConvertH264(peer.muxedRecord);
    EXPECT_TRUE(sets.isDone);
    EXPECT_EQ(sets.lengthSize, 4);
    EXPECT_EQ(sets.out, ConvertH264(record.out).out) << "the extension adds nothing";
    EXPECT_EQ(ExtractParameterSets<IOH264NALPayload>(peer.muxedRecord).units.size(), 2U);
}

const X264Case x264Cases[] = {
    {"BaselineInSlices", "-profile:v baseline -x264-params slices=4", 0},
    {"MainInterlacedWithDelimiters", "-profile:v main -x264-params tff=1:aud=1", 0},
    {"High", "-profile:v high -pix_fmt yuv420p -bf 2", 4},
    {"High444AtTenBits", "-pix_fmt yuv444p10le", 4},
};

INSTANTIATE_TEST_SUITE_P(Of, X264Conversion, testing::ValuesIn(x264Cases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(X265Conversion, StreamAndParameterSetsAreThoseOfFFmpeg) {
    for (const char* params :
         {"slices=2:repeat-headers=1", "aud=1:hrd=1:vbv-bufsize=1000:vbv-maxrate=1000"}) {
        const HEVCPeerStream peer({.size = "128x128", .params = params});
        ExpectToSurvive(peer.Bytes());
        const Converted record = ConvertToHVCC(peer.Bytes());
        ASSERT_TRUE(record.isDone);
        const Bytes muxed = peer.MuxedRecord();
        const std::vector<Bytes> ours = ExtractParameterSets<IOHEVCNALPayload>(record.out).units;
        const std::vector<Bytes> theirs = ExtractParameterSets<IOHEVCNALPayload>(muxed).units;
        ASSERT_GE(ours.size(), 3U);
        ASSERT_GE(theirs.size(), 3U);
        for (size_t set = 0; set < 3; ++set)
            EXPECT_EQ(ours[set], theirs[set]) << params << ", set " << set;
        const Bytes sets = ConvertHEVC(muxed).out;
        EXPECT_TRUE(BeginsWith(sets, AnnexB({theirs[0], theirs[1], theirs[2]})));
    }
}

} // namespace
