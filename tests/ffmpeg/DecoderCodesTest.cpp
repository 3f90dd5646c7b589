#include "ffmpeg/DecoderCodes.h"

#include "framework/CxAVTypes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>

namespace {

using CxFFMPEG::CodecOfTrack;
using CxFFMPEG::DecoderCode;
using CxFFMPEG::DecoderCodes;
using CxFFMPEG::IsAvcIntra;

using Codes = std::set<uint32_t>;

uint32_t Code(const std::string& text) { return FourCC({text[0], text[1], text[2], text[3], '\0'}); }

Codes CodesOf(AVCodecID codec) {
    Codes codes;
    for (const DecoderCode& entry : DecoderCodes())
        if (entry.codec == codec) codes.insert(entry.fourCC);
    return codes;
}

Codes Listed(const std::vector<std::string>& texts) {
    Codes codes;
    for (const std::string& text : texts)
        codes.insert(Code(text));
    return codes;
}

/// Three characters and each of the last ones.
Codes Family(const std::string& start, const std::string& lasts) {
    Codes codes;
    for (const char last : lasts)
        codes.insert(Code(start + last));
    return codes;
}

Codes operator+(Codes a, const Codes& b) {
    a.insert(b.begin(), b.end());
    return a;
}

const Codes avcIntra =
    Family("ai1", "2356pq") + Family("ai5", "2356pq") + Listed({"aivx", "avcI", "avci", "xf4c"});

TEST(DecoderCodes, Has84CodesInTheirOrderEachOnce) {
    EXPECT_EQ(DecoderCodes().size(), 84u);
    const auto isNoStep = [](const DecoderCode& a, const DecoderCode& b) { return a.fourCC >= b.fourCC; };
    const auto codes = DecoderCodes();
    EXPECT_EQ(std::adjacent_find(codes.begin(), codes.end(), isNoStep), codes.end());
}

TEST(DecoderCodes, GivesEachCodecItsNumberOfCodes) {
    const std::map<int, size_t> expected = {{2, 41}, {24, 16}, {27, 19}, {12, 1},
                                            {7, 2},  {8, 1},   {173, 3}, {167, 1}};
    std::map<int, size_t> counts;
    for (const DecoderCode& entry : DecoderCodes())
        ++counts[entry.codec];
    EXPECT_EQ(counts, expected);
}

TEST(DecoderCodes, TheCodesOfMpeg2) {
    EXPECT_EQ(CodesOf(AV_CODEC_ID_MPEG2VIDEO),
              Family("hdv", "123456789a") + Family("xdv", "123456789abcdef") + Family("xd5", "9abcdef") +
                  Listed({"xfz1", "mx3n", "mx3p", "mx4n", "mx4p", "mx5n", "mx5p", "mp2v", "m2v1"}));
}

TEST(DecoderCodes, TheCodesOfDvOfWhichTheFirstEndsInABlank) {
    EXPECT_EQ(CodesOf(AV_CODEC_ID_DVVIDEO),
              Listed({"dvc ", "dvcp", "dvsd", "pvsd", "dvpp", "dv5n", "dv5p", "dv1n", "dv1p", "p2dv"}) +
                  Family("dvh", "qp2356"));
}

TEST(DecoderCodes, TheCodesOfH264AreThoseOfAvcIntraAndThreeMore) {
    EXPECT_EQ(CodesOf(AV_CODEC_ID_H264), avcIntra + Listed({"avc1", "xalg", "HDMV"}));
}

TEST(DecoderCodes, TheCodesOfAllOthers) {
    EXPECT_EQ(CodesOf(AV_CODEC_ID_MPEG4), Listed({"mp4v"}));
    EXPECT_EQ(CodesOf(AV_CODEC_ID_MJPEG), Listed({"jpeg", "mjpa"}));
    EXPECT_EQ(CodesOf(AV_CODEC_ID_MJPEGB), Listed({"mjpb"}));
    EXPECT_EQ(CodesOf(AV_CODEC_ID_HEVC), Listed({"hvc1", "hevc", "hev1"}));
    EXPECT_EQ(CodesOf(AV_CODEC_ID_VP9), Listed({"VP90"}));
}

TEST(DecoderCodes, EveryCodeOfTheTableLeadsToItsCodec) {
    for (const DecoderCode& entry : DecoderCodes())
        EXPECT_EQ(CodecOfTrack(entry.fourCC), entry.codec) << entry.fourCC;
}

TEST(DecoderCodes, ACodeOutsideTheTableIsFFmpegsOwnNumber) {
    EXPECT_EQ(CodecOfTrack(27), AV_CODEC_ID_H264);
    EXPECT_EQ(CodecOfTrack(AV_CODEC_ID_PRORES), AV_CODEC_ID_PRORES);
    EXPECT_EQ(CodecOfTrack(0), AV_CODEC_ID_NONE);
    EXPECT_EQ(CodecOfTrack(FourCC("what")), AV_CODEC_ID_NONE);
    EXPECT_EQ(CodecOfTrack(~0U), AV_CODEC_ID_NONE);
}

TEST(DecoderCodes, SixteenCodesAreAvcIntra) {
    EXPECT_EQ(avcIntra.size(), 16u);
    for (const DecoderCode& entry : DecoderCodes())
        EXPECT_EQ(IsAvcIntra(entry.fourCC), avcIntra.contains(entry.fourCC)) << entry.fourCC;
}

TEST(DecoderCodes, ANumberIsNotAvcIntra) { EXPECT_FALSE(IsAvcIntra(27)); }

} // namespace
