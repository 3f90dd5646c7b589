// Uncompressed tracks: the code under which the registry finds them, and the rows that codecs get.

#include "media/RawLayout.h"

#include "MediaFiles.h"
#include "ffmpeg/DecoderCodes.h"
#include "framework/CxAVTypes.h"
#include "media/MovieTrackSource.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

/// A file that ffmpeg writes, its code, and how ffmpeg gives its pictures in the same bytes.
struct RawKind {
    const char* name;
    const char* file;
    const char* arguments; ///< to write it
    uint32_t fourCC;
    int width;
    size_t rowBytes;     ///< that the codecs expect
    const char* pixels;  ///< ffmpeg arguments for the same bytes without a container
    size_t peerRowBytes; ///< bytes of a row as ffmpeg gives them
};

void PrintTo(const RawKind& kind, std::ostream* stream) { *stream << kind.name; }

constexpr int height = 47;
constexpr size_t frameCount = 3;

const RawKind rawKinds[] = {
    {"RgbInMov", "a.mov", "-c:v rawvideo -pix_fmt rgb24", 24, 63, 189, "-pix_fmt rgb24", 189},
    {"ArgbInMov", "a.mov", "-c:v rawvideo -pix_fmt argb", 32, 63, 252, "-pix_fmt argb", 252},
    {"BgraInMov", "a.mov", "-c:v rawvideo -pix_fmt bgra", FourCC("BGRA"), 63, 252, "-pix_fmt bgra", 252},
    {"BgraInAvi", "a.avi", "-c:v rawvideo -pix_fmt bgra", FourCC("BGRA"), 63, 252, "-pix_fmt bgra", 252},
    {"BgraInMkv", "a.mkv", "-c:v rawvideo -pix_fmt bgra -allow_raw_vfw 1", FourCC("BGRA"), 63, 252,
     "-pix_fmt bgra", 252},
    {"UyvyInMov", "a.mov", "-c:v rawvideo -pix_fmt uyvy422", FourCC("2vuy"), 62, 124, "-pix_fmt uyvy422",
     124},
    {"UyvyOfOddWidthInMov", "a.mov", "-c:v rawvideo -pix_fmt uyvy422", FourCC("2vuy"), 63, 126,
     "-pix_fmt uyvy422", 128},
    {"UyvyInAvi", "a.avi", "-c:v rawvideo -pix_fmt uyvy422", FourCC("uyvy"), 62, 124, "-pix_fmt uyvy422",
     124},
    {"HdycInAvi", "a.avi", "-c:v rawvideo -pix_fmt uyvy422 -tag:v HDYC", FourCC("uyvy"), 62, 124,
     "-pix_fmt uyvy422", 124},
    {"UyvyInMkv", "a.mkv", "-c:v rawvideo -pix_fmt uyvy422", FourCC("uyvy"), 62, 124, "-pix_fmt uyvy422",
     124},
    {"V210InMov", "a.mov", "-c:v v210", FourCC("v210"), 62, 256, "-c:v v210", 256},
    {"V210InAvi", "a.avi", "-c:v v210", FourCC("v210"), 62, 256, "-c:v v210", 256},
    {"V210InMkv", "a.mkv", "-c:v v210", FourCC("v210"), 62, 256, "-c:v v210", 256},
    {"R210InMov", "a.mov", "-c:v r210", FourCC("r210"), 63, 256, "-c:v r210", 256},
    {"R210InMkv", "a.mkv", "-c:v r210", FourCC("r210"), 63, 256, "-c:v r210", 256},
    {"B64aInMov", "a.mov", "-c:v rawvideo -pix_fmt rgba64be -tag:v b64a -strict -1", FourCC("b64a"), 63, 504,
     "-c:v rawvideo -pix_fmt rgba64be -tag:v b64a", 504},
    {"V408InMov", "a.mov", "-c:v v408", FourCC("v408"), 63, 252, "-c:v v408", 252},
};

class RawTracks : public testing::TestWithParam<RawKind> {};
INSTANTIATE_TEST_SUITE_P(Files, RawTracks, testing::ValuesIn(rawKinds),
                         [](const auto& info) { return std::string(info.param.name); });

/// Compares every row of every frame with the peer's, which may have padding of its own.
void ExpectFrames(MovieTrackSource& source, const std::vector<uint8_t>& peer, size_t rowBytes,
                  size_t peerRowBytes) {
    ASSERT_EQ(peer.size(), peerRowBytes * height * frameCount);
    const size_t compared = std::min(rowBytes, peerRowBytes);
    for (size_t frame = 0; frame < frameCount; ++frame) {
        int32_t size = 0;
        const uint8_t* data = source.ReadSample(static_cast<int32_t>(frame), nullptr, size);
        ASSERT_NE(data, nullptr);
        ASSERT_EQ(static_cast<size_t>(size), rowBytes * height);
        for (size_t row = 0; row < height; ++row) {
            const uint8_t* expected = peer.data() + (frame * height + row) * peerRowBytes;
            ASSERT_TRUE(std::equal(expected, expected + compared, data + row * rowBytes))
                << frame << ' ' << row;
        }
    }
}

TEST_P(RawTracks, ComeUnderTheirCodeWithTheRowsThatCodecsExpect) {
    const RawKind& kind = GetParam();
    const TempFolder folder;
    const std::string path = folder / kind.file;
    RunFfmpeg(TestPicture(kind.width, height, "25", frameCount) + " " + kind.arguments + " '" + path + "'");
    const auto source = MovieTrackSource::Open(path);
    EXPECT_EQ(source->GetFourCC(), kind.fourCC);
    EXPECT_EQ(source->GetWidth(), kind.width);
    // Not from the file: ffmpeg itself takes the rows of QuickTime's RGB at odd widths for shorter than they
    // are.
    RunFfmpeg(TestPicture(kind.width, height, "25", frameCount) + " " + kind.pixels + " -f rawvideo '" +
              (folder / "peer") + "'");
    ExpectFrames(*source, ReadBytes(folder / "peer"), kind.rowBytes, kind.peerRowBytes);
}

TEST(RawLayout, RowsThatStandBottomFirstAreTurned) {
    const TempFolder folder;
    const std::string path = folder / "a.avi";
    RunFfmpeg(TestPicture(63, height, "25", frameCount) + " -c:v rawvideo -pix_fmt bgra '" + path + "'");
    std::vector<uint8_t> bytes = ReadBytes(path);
    const std::string word = "strf";
    const auto format = std::search(bytes.begin(), bytes.end(), word.begin(), word.end());
    ASSERT_NE(format, bytes.end());
    // The height of the bitmap header, negative for top row first as ffmpeg writes it.
    const uint8_t bottomFirst[4] = {height, 0, 0, 0};
    std::copy(bottomFirst, bottomFirst + 4, format + 16);
    WriteBytes(path, bytes);
    const auto source = MovieTrackSource::Open(path);
    EXPECT_EQ(source->GetFourCC(), FourCC("BGRA"));
    ExpectFrames(*source, FfmpegBytes(path, "-pix_fmt bgra"), 252, 252);
}

TEST(RawLayout, QuickTimeRawOfOtherDepthsComesUnderItsDepth) {
    const TempFolder folder;
    RunFfmpeg(TestPicture(64, 48, "25", 1) + " -c:v rawvideo -pix_fmt rgb555be '" + (folder / "a.mov") + "'");
    EXPECT_EQ(MovieTrackSource::Open(folder / "a.mov")->GetFourCC(), 16u);
}

TEST(RawLayout, AviBgrComesUnderACodeOfItsOwn) {
    const TempFolder folder;
    RunFfmpeg(TestPicture(63, 47, "25", 1) + " -c:v rawvideo -pix_fmt bgr24 '" + (folder / "a.avi") + "'");
    EXPECT_EQ(MovieTrackSource::Open(folder / "a.avi")->GetFourCC(), FourCC("24BG"));
}

TEST(RawLayout, Yuv2KeepsItsCode) {
    const TempFolder folder;
    RunFfmpeg(TestPicture(64, 48, "25", 1) + " -c:v rawvideo -pix_fmt yuyv422 -tag:v yuv2 -strict -1 '" +
              (folder / "a.mov") + "'");
    EXPECT_EQ(MovieTrackSource::Open(folder / "a.mov")->GetFourCC(), FourCC("yuv2"));
}

uint32_t CodeOf(AVCodecID codec, const char* tag = nullptr) {
    AVCodecParameters parameters{};
    parameters.codec_id = codec;
    if (tag != nullptr) parameters.codec_tag = MKTAG(tag[0], tag[1], tag[2], tag[3]);
    return RegistryFourCC(parameters);
}

TEST(RawLayout, TracksWithoutACodeGoByTheirCodec) {
    EXPECT_EQ(CodeOf(AV_CODEC_ID_H264), FourCC("avc1"));
    EXPECT_EQ(CodeOf(AV_CODEC_ID_HEVC), FourCC("hvc1"));
    EXPECT_EQ(CodeOf(AV_CODEC_ID_MPEG2VIDEO), FourCC("mp2v"));
    EXPECT_EQ(CodeOf(AV_CODEC_ID_MPEG4), FourCC("mp4v"));
    EXPECT_EQ(CodeOf(AV_CODEC_ID_MJPEG), FourCC("jpeg"));
    EXPECT_EQ(CodeOf(AV_CODEC_ID_VP9), FourCC("VP90"));
    EXPECT_EQ(CodeOf(AV_CODEC_ID_DVVIDEO), FourCC("dvc "));
    EXPECT_EQ(CodeOf(AV_CODEC_ID_FFV1), 0U);
}

TEST(RawLayout, CodesOfOtherContainersBecomeOneOfTheCodec) {
    EXPECT_EQ(CodeOf(AV_CODEC_ID_H264, "H264"), FourCC("avc1"));
    EXPECT_EQ(CodeOf(AV_CODEC_ID_H264, "avc3"), FourCC("avc1"));
    EXPECT_EQ(CodeOf(AV_CODEC_ID_HEVC, "dvh1"), FourCC("hvc1"));
    EXPECT_EQ(CodeOf(AV_CODEC_ID_MPEG4, "XVID"), FourCC("mp4v"));
    EXPECT_EQ(CodeOf(AV_CODEC_ID_MPEG4, "FMP4"), FourCC("mp4v"));
    EXPECT_EQ(CodeOf(AV_CODEC_ID_MJPEG, "MJPG"), FourCC("jpeg"));
    EXPECT_EQ(CodeOf(AV_CODEC_ID_VP9, "vp09"), FourCC("VP90"));
    EXPECT_EQ(CodeOf(AV_CODEC_ID_DVVIDEO, "dv25"), FourCC("dvc "));
}

TEST(RawLayout, EveryCodeThatFFmpegClaimsStaysWithItsCodec) {
    for (const CxFFMPEG::DecoderCode& code : CxFFMPEG::DecoderCodes()) {
        AVCodecParameters parameters{};
        parameters.codec_id = code.codec;
        parameters.codec_tag = SwapTag(code.fourCC);
        EXPECT_EQ(RegistryFourCC(parameters), code.fourCC);
    }
}

TEST(RawLayout, ACodeOfAnotherCodecDoesNotStay) {
    EXPECT_EQ(CodeOf(AV_CODEC_ID_MPEG4, "avc1"), FourCC("mp4v"));
    EXPECT_EQ(CodeOf(AV_CODEC_ID_HEVC, "avc1"), FourCC("hvc1"));
}

TEST(RawLayout, ACodeThatNobodyKnowsStays) {
    AVCodecParameters parameters{};
    parameters.codec_tag = MKTAG('v', '2', '1', '6');
    EXPECT_EQ(RegistryFourCC(parameters), FourCC("v216"));
}

TEST(RowPacker, CompressedCodesAreLeftAlone) {
    EXPECT_FALSE(RowPacker(FourCC("apch"), 64, 4, false).IsNeeded());
}

TEST(RowPacker, APictureInFormIsHandedThrough) {
    std::vector<uint8_t> picture(3 * 5 * 2);
    EXPECT_EQ(RowPacker(24, 5, 2, false).Pack(picture.data(), 30), picture.data());
}

TEST(RowPacker, BytesBehindAWholePictureAreLeftOut) {
    std::vector<uint8_t> picture(31);
    EXPECT_EQ(RowPacker(24, 5, 2, false).Pack(picture.data(), 31), picture.data());
}

TEST(RowPacker, APictureThatIsTooShortIsRefused) {
    std::vector<uint8_t> picture(30);
    for (int64_t size = 0; size < 30; ++size) {
        EXPECT_EQ(RowPacker(24, 5, 2, false).Pack(picture.data(), size), nullptr) << size;
    }
}

TEST(RowPacker, RowsOfV210WithoutTheirPaddingArePadded) {
    std::vector<uint8_t> picture(2 * 16, 7); // 6 pixels in 16 bytes
    RowPacker packer(FourCC("v210"), 6, 2, false);
    const uint8_t* packed = packer.Pack(picture.data(), 32);
    ASSERT_NE(packed, nullptr);
    EXPECT_EQ(packed[15], 7);
    EXPECT_EQ(packed[16], 0);
    EXPECT_EQ(packed[128], 7);
}

TEST(RowPacker, LongerRowsAreCutAndTurned) {
    std::vector<uint8_t> picture{1, 2, 3, 0, 4, 5, 6, 0};
    RowPacker packer(24, 1, 2, true);
    const uint8_t* packed = packer.Pack(picture.data(), 8);
    ASSERT_NE(packed, nullptr);
    EXPECT_EQ(std::vector<uint8_t>(packed, packed + 6), (std::vector<uint8_t>{4, 5, 6, 1, 2, 3}));
}

} // namespace
