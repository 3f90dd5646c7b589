// Streams of x264 in the High profiles, whose sequence parameter set is read without bit_depth_chroma_minus8.
//
// With 8 bits of chroma the element has one bit, 1, and all behind it is read one bit early.
// log2_max_frame_num_minus4 begins with the zero before it, the flag of the scaling matrix, and takes the
// first bit or bits of pic_order_cnt_type with it; what is left happens to make a pic_order_cnt_type that
// ends at the right place again in what x264 writes. So three values differ, and the size and all behind it
// are right.
//
// With 10 bits its code is 011. The second bit is taken for the flag of a scaling matrix, and lists are read
// from what is none, to the end of the set: there is no size and no rate. A lossless stream of 8 bits has
// qpprime_y_zero_transform_bypass_flag 1, which is taken for that flag, and ends likewise.

#include "iostream/peer/H264PeerFacts.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using Names = std::vector<std::string>;

struct Encoding {
    const char* name;
    const char* source;
    const char* options;
    bool isPlaceFoundAgain; ///< the set is read rightly from max_num_ref_frames on
};

void PrintTo(const Encoding& encoding, std::ostream* out) { *out << encoding.name; }

constexpr Encoding encodings[] = {
    {"High", "size=66x50:rate=30000/1001", "-pix_fmt yuv420p", true},
    {"HighWithoutBFrames", "size=66x50:rate=25", "-pix_fmt yuv420p -bf 0", true},
    {"HighWithColourAndHrd", "size=64x48:rate=25,setsar=4/3",
     "-pix_fmt yuv420p -maxrate 500k -bufsize 500k -refs 5 -bf 3 -x264-params nal-hrd=vbr:sps-id=2 "
     "-color_range pc -color_primaries bt2020 -color_trc arib-std-b67 -colorspace bt2020nc",
     true},
    {"HighMbaff", "size=66x52:rate=25", "-pix_fmt yuv420p -x264-params tff=1", true},
    {"HighWithScalingMatrix", "size=64x48:rate=25", "-pix_fmt yuv420p -x264-params cqm=jvt", true},
    {"HighWithoutDeblocking", "size=64x48:rate=25", "-pix_fmt yuv420p -x264-params no-deblock=1", true},
    {"HighMonochrome", "size=66x50:rate=25", "-pix_fmt gray", true},
    {"High422", "size=66x50:rate=25", "-pix_fmt yuv422p", true},
    {"High422Mbaff", "size=66x50:rate=25", "-pix_fmt yuv422p -x264-params tff=1", true},
    {"High444", "size=67x51:rate=25", "-pix_fmt yuv444p", true},
    {"High10", "size=66x50:rate=25", "-pix_fmt yuv420p10le", false},
    {"High10Intra", "size=66x50:rate=25", "-pix_fmt yuv420p10le -g 1", false},
    {"High10Monochrome", "size=66x50:rate=25", "-pix_fmt gray10le", false},
    {"High422Of10Bits", "size=66x50:rate=25", "-pix_fmt yuv422p10le", false},
    {"High444Of10Bits", "size=67x51:rate=25", "-pix_fmt yuv444p10le", false},
    {"Lossless", "size=66x50:rate=25", "-pix_fmt yuv420p -qp 0", false},
    {"LosslessOf10Bits", "size=66x50:rate=25", "-pix_fmt yuv444p10le -qp 0", false},
};

class IOH264HighPeer : public testing::TestWithParam<Encoding> {
protected:
    H264PeerStream peer = EncodeByX264(GetParam().source, GetParam().options);
};

INSTANTIATE_TEST_SUITE_P(Of, IOH264HighPeer, testing::ValuesIn(encodings),
                         [](const auto& info) { return std::string(info.param.name); });

/// Names of the facts that differ from FFmpeg's; all must stand behind the element.
Names DifferencesBehind(const std::vector<Fact>& facts) {
    for (const Fact& fact : facts)
        EXPECT_TRUE(fact.isBehindChromaDepth || fact.ours == fact.theirs) << fact.name;
    return Differences(facts);
}

TEST_P(IOH264HighPeer, FactsDifferFromFFmpegsBehindTheElementAsFarAsThePlaceIsLost) {
    Names names = DifferencesBehind(FactsOf(ReadStream(peer.bytes), peer));
    // Slices are read by wrong lengths: whether the filter seems to be off is up to their bits.
    std::erase(names, "deblockingEnabled");
    if (GetParam().isPlaceFoundAgain) {
        EXPECT_EQ(names, (Names{"log2MaxFrameNum", "picOrderCntType", "log2MaxPicOrderCntLsb"}));
        return;
    }
    for (const char* name : {"width", "height", "frameMbsOnly", "log2MaxFrameNum", "frameRate"})
        EXPECT_NE(std::find(names.begin(), names.end(), name), names.end()) << name;
}

/// Bits of a sequence parameter set, header and all, without emulation prevention.
class SetBits {
public:
    explicit SetBits(std::span<const uint8_t> unit) {
        uint32_t zeros = 0;
        for (const uint8_t byte : unit) {
            const bool isPrevention = zeros >= 2 && byte == 3;
            for (int bit = 7; bit >= 0 && !isPrevention; --bit)
                bits_.push_back(byte >> bit & 1);
            zeros = byte == 0 ? zeros + 1 : 0;
        }
    }

    /// Takes bit_depth_chroma_minus8 out.
    std::vector<uint8_t> WithoutChromaDepth() {
        place_ = 32; // header, profile, flags, level
        SkipUE();    // seq_parameter_set_id
        const size_t chromaFormat = place_;
        SkipUE();
        const bool is444 = place_ - chromaFormat == 5; // the code of 3
        if (is444) ++place_;
        SkipUE(); // bit_depth_luma_minus8
        const size_t chromaDepth = place_;
        SkipUE();
        bits_.erase(bits_.begin() + static_cast<ptrdiff_t>(chromaDepth),
                    bits_.begin() + static_cast<ptrdiff_t>(place_));
        BitStreamWriter writer;
        for (const bool bit : bits_)
            writer.Flag(bit);
        return WithEmulationPrevention(writer.Bytes());
    }

private:
    void SkipUE() {
        size_t zeros = 0;
        while (!bits_.at(place_ + zeros))
            ++zeros;
        place_ += 2 * zeros + 1;
    }

    std::vector<bool> bits_;
    size_t place_ = 0;
};

/// The stream with its sequence parameter sets as the parser takes them to be.
std::vector<uint8_t> WithoutChromaDepth(const std::vector<uint8_t>& stream) {
    const std::vector<uint8_t> startCode = {0, 0, 0, 1};
    const auto set = std::search(stream.begin(), stream.end(), startCode.begin(), startCode.end()) + 4;
    const auto setEnd = std::search(set, stream.end(), startCode.begin(), startCode.end());
    std::vector<uint8_t> changed = startCode;
    const std::vector<uint8_t> unit = SetBits({set, setEnd}).WithoutChromaDepth();
    changed.insert(changed.end(), unit.begin(), unit.end());
    changed.insert(changed.end(), setEnd, stream.end());
    return changed;
}

TEST_P(IOH264HighPeer, WithoutTheElementAllFactsAreFFmpegs) {
    EXPECT_EQ(Differences(FactsOf(ReadStream(WithoutChromaDepth(peer.bytes)), peer)), Names());
}

} // namespace
