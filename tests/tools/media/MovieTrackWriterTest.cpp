// Movies that another program reads.

#include "media/MovieTrackWriter.h"

#include "MediaFiles.h"
#include "SmallMovies.h"
#include "framework/CxAVTypes.h"
#include "media/MovieTrackSource.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

/// A code in a container: what ffprobe calls it, and its code when it is read again.
struct CodeKind {
    const char* name;
    const char* file;
    uint32_t fourCC;
    int width;
    const char* tagText;
    uint32_t readBack;
};

void PrintTo(const CodeKind& kind, std::ostream* stream) { *stream << kind.name; }

const CodeKind codeKinds[] = {
    {"Rgb", "a.mov", 24, 62, "raw ", 24},
    {"RgbOfOddWidth", "a.mov", 24, 63, "raw ", 24},
    {"Argb", "a.mov", 32, 63, "raw ", 32},
    {"Uyvy", "a.mov", FourCC("2vuy"), 62, "2vuy", FourCC("2vuy")},
    {"UyvyOfOddWidth", "a.mov", FourCC("2vuy"), 63, "2vuy", FourCC("2vuy")},
    {"Bgra", "a.mov", FourCC("BGRA"), 63, "BGRA", FourCC("BGRA")},
    {"B64a", "a.mov", FourCC("b64a"), 63, "b64a", FourCC("b64a")},
    {"R210", "a.mov", FourCC("r210"), 65, "r210", FourCC("r210")},
    {"V210", "a.mov", FourCC("v210"), 49, "v210", FourCC("v210")},
    {"V216", "a.mov", FourCC("v216"), 62, "v216", FourCC("v216")},
    {"V216OfOddWidth", "a.mov", FourCC("v216"), 63, "v216", FourCC("v216")},
    {"V408", "a.mov", FourCC("v408"), 63, "v408", FourCC("v408")},
    {"UyvyInAvi", "a.avi", FourCC("2vuy"), 62, "UYVY", FourCC("uyvy")},
    {"V210InAvi", "a.avi", FourCC("v210"), 50, "v210", FourCC("v210")},
    {"R210InAvi", "a.avi", FourCC("r210"), 65, "r210", FourCC("r210")},
    {"UyvyInMkv", "a.mkv", FourCC("2vuy"), 62, "UYVY", FourCC("uyvy")},
    {"V210InMkv", "a.mkv", FourCC("v210"), 50, "v210", FourCC("v210")},
};

class WrittenCodes : public testing::TestWithParam<CodeKind> {
protected:
    void SetUp() override {
        path = folder / GetParam().file;
        frames = WriteMovie(Settings(path, GetParam().fourCC, GetParam().width));
    }

    TempFolder folder;
    std::string path;
    std::vector<std::vector<uint8_t>> frames;
};
INSTANTIATE_TEST_SUITE_P(Files, WrittenCodes, testing::ValuesIn(codeKinds),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_P(WrittenCodes, AreWhatFfprobeSees) {
    EXPECT_EQ(ProbeValue(path, "stream=codec_tag_string"), GetParam().tagText);
    EXPECT_EQ(ProbeValue(path, "stream=width"), std::to_string(GetParam().width));
    EXPECT_EQ(ProbeValue(path, "stream=height"), "47");
    EXPECT_EQ(ProbeValue(path, "stream=avg_frame_rate"), "24000/1001");
    EXPECT_EQ(Probe(path, "packet=pts").size(), static_cast<size_t>(frameCount));
}

TEST_P(WrittenCodes, ComeBackWithTheSameBytes) {
    const auto source = MovieTrackSource::Open(path);
    EXPECT_EQ(source->GetFourCC(), GetParam().readBack);
    ASSERT_EQ(source->GetFrameCount(), frameCount);
    EXPECT_EQ(source->Info().frameRate, (Rational{24000, 1001}));
    EXPECT_TRUE(source->Info().constantFrameRate);
    for (int i = 0; i < frameCount; ++i) {
        int32_t size = 0;
        const uint8_t* data = source->ReadSample(i, nullptr, size);
        ASSERT_NE(data, nullptr);
        EXPECT_EQ(std::vector<uint8_t>(data, data + size), frames[i]) << i;
    }
}

TEST_P(WrittenCodes, LeaveNoOtherFile) { EXPECT_EQ(folder.FileCount(), 1u); }

TEST(MovieTrackWriter, RowsOfOddWidthAreWholePixelPairsForOtherPrograms) {
    const TempFolder folder;
    const auto frames = WriteMovie(Settings(folder / "a.mov", FourCC("2vuy"), 63));
    const std::vector<uint8_t> peer = FfmpegBytes(folder / "a.mov", "-pix_fmt uyvy422");
    ASSERT_EQ(peer.size(), size_t{128} * 47 * frameCount);
    for (size_t row = 0; row < 47; ++row) {
        EXPECT_TRUE(std::equal(&peer[row * 128], &peer[row * 128] + 126, &frames[0][row * 126])) << row;
    }
}

TEST(MovieTrackWriter, RowsOfPlainRgbHaveAnEvenLength) {
    const TempFolder folder;
    const auto frames = WriteMovie(Settings(folder / "a.mov", 24, 63));
    const std::vector<uint8_t> peer = FfmpegBytes(folder / "a.mov", "-c:v copy");
    ASSERT_EQ(peer.size(), size_t{190} * 47 * frameCount);
    for (size_t row = 0; row < 47; ++row) {
        EXPECT_TRUE(std::equal(&peer[row * 190], &peer[row * 190] + 189, &frames[0][row * 189])) << row;
    }
}

TEST(MovieTrackWriter, TheDepthTellsOfAlpha) {
    const TempFolder folder;
    for (const auto& [fourCC, depth] :
         {std::pair(24u, 24), {32u, 32}, {FourCC("BGRA"), 32}, {FourCC("v210"), 24}}) {
        WriteMovie(Settings(folder / "a.mov", fourCC));
        EXPECT_EQ(MovieTrackSource::Open(folder / "a.mov")->Info().bitsPerCodedSample, depth) << fourCC;
    }
    for (const bool alpha : {false, true}) {
        MovieTrackSettings settings = Settings(folder / "a.mov", FourCC("ap4h"));
        settings.alpha = alpha;
        MovieTrackWriter writer(settings);
        writer.WriteFrame(Frame(0, 100).data(), 100);
        writer.Finish();
        EXPECT_EQ(MovieTrackSource::Open(folder / "a.mov")->Info().bitsPerCodedSample, alpha ? 32 : 24);
    }
}

TEST(MovieTrackWriter, FieldOrderReachesOtherPrograms) {
    const TempFolder folder;
    const char* const names[] = {"progressive", "tt", "bb"};
    for (int order = 1; order <= 3; ++order) {
        MovieTrackSettings settings = Settings(folder / "a.mov", FourCC("v210"));
        settings.fieldOrder = order;
        WriteMovie(settings);
        EXPECT_EQ(ProbeValue(folder / "a.mov", "stream=field_order"), names[order - 1]);
        EXPECT_EQ(MovieTrackSource::Open(folder / "a.mov")->GetFieldOrder(), order);
    }
}

TEST(MovieTrackWriter, ColourTagsReachOtherPrograms) {
    const TempFolder folder;
    MovieTrackSettings settings = Settings(folder / "a.mov", FourCC("v210"));
    settings.colorPrimaries = 9;
    settings.colorTransfer = 14;
    settings.colorMatrix = 9;
    WriteMovie(settings);
    EXPECT_EQ(ProbeValue(folder / "a.mov", "stream=color_primaries"), "bt2020");
    EXPECT_EQ(ProbeValue(folder / "a.mov", "stream=color_transfer"), "bt2020-10");
    EXPECT_EQ(ProbeValue(folder / "a.mov", "stream=color_space"), "bt2020nc");
    const auto source = MovieTrackSource::Open(folder / "a.mov");
    EXPECT_EQ(source->GetColorMatrix(), 5);
    EXPECT_EQ(source->GetColorPrimaries(), 4);
    EXPECT_EQ(source->Info().colorMatrix.source, ValueSource::Container);
}

TEST(MovieTrackWriter, WithoutColourTagsNoneAreWritten) {
    const TempFolder folder;
    WriteMovie(Settings(folder / "a.mov", FourCC("v210")));
    EXPECT_EQ(ProbeValue(folder / "a.mov", "stream=color_space"), "unknown");
}

TEST(MovieTrackWriter, TheTimeCodeIsATrackOfItsOwn) {
    const TempFolder folder;
    MovieTrackSettings settings = Settings(folder / "a.mov", FourCC("v210"));
    settings.timeCode = "01:02:03:04";
    WriteMovie(settings);
    EXPECT_EQ(ProbeValue(folder / "a.mov", "stream_tags=timecode"), "01:02:03:04");
    const auto source = MovieTrackSource::Open(folder / "a.mov");
    EXPECT_EQ(source->Info().timeCode, "01:02:03:04");
    ASSERT_EQ(source->Info().streams.size(), 2u);
    EXPECT_EQ(source->Info().streams[1].fourCCText, "tmcd");
}

TEST(MovieTrackWriter, DropFrameTimeCodeKeepsItsMark) {
    const TempFolder folder;
    MovieTrackSettings settings = Settings(folder / "a.mov", FourCC("v210"));
    settings.frameRate = {30000, 1001};
    settings.timeCode = "00:59:59;28";
    WriteMovie(settings);
    EXPECT_EQ(ProbeValue(folder / "a.mov", "stream_tags=timecode"), "00:59:59;28");
}

TEST(MovieTrackWriter, ThePixelAspectReachesOtherPrograms) {
    const TempFolder folder;
    MovieTrackSettings settings = Settings(folder / "a.mov", FourCC("v210"));
    settings.pixelAspect = {4, 3};
    WriteMovie(settings);
    EXPECT_EQ(ProbeValue(folder / "a.mov", "stream=sample_aspect_ratio"), "4:3");
    EXPECT_EQ(MovieTrackSource::Open(folder / "a.mov")->Info().displayWidth, 83);
}

TEST(MovieTrackWriter, EveryRateIsExact) {
    const TempFolder folder;
    for (const Rational rate :
         {Rational{25, 1}, {30000, 1001}, {60000, 1001}, {12, 1}, {1000, 1}, {120, 7}}) {
        MovieTrackSettings settings = Settings(folder / "a.mov", FourCC("v210"));
        settings.frameRate = rate;
        WriteMovie(settings);
        const auto source = MovieTrackSource::Open(folder / "a.mov");
        EXPECT_EQ(source->Info().frameRate, rate);
        EXPECT_TRUE(source->Info().constantFrameRate);
        EXPECT_EQ(source->GetFrameCount(), frameCount);
    }
}

/// Writes the samples of a track into another file, with all that a codec needs.
void CopyTrack(const std::string& from, const std::string& to) {
    const auto source = MovieTrackSource::Open(from);
    MovieTrackSettings settings = Settings(to, source->GetFourCC(), source->GetWidth(), source->GetHeight());
    settings.extraData = *source->GetCodecPrivateData();
    settings.alpha = source->Info().bitsPerCodedSample == 32;
    MovieTrackWriter writer(settings);
    for (int32_t i = 0; i < source->GetSampleCount(); ++i) {
        int32_t size = 0;
        const uint8_t* data = source->ReadSample(i, nullptr, size);
        writer.WriteFrame(data, size, source->GetKeySample(i) == i);
    }
    writer.Finish();
}

TEST(MovieTrackWriter, H264MovesWithItsConfigurationRecord) {
    const TempFolder folder;
    RunFfmpeg(TestPicture(128, 96, "24000/1001", 10) + " -c:v libx264 -bf 0 -g 5 -pix_fmt yuv420p '" +
              (folder / "a.mov") + "'");
    for (const char* name : {"b.mov", "b.mkv"}) {
        CopyTrack(folder / "a.mov", folder / name);
        EXPECT_EQ(FfmpegBytes(folder / name, "-pix_fmt yuv420p"),
                  FfmpegBytes(folder / "a.mov", "-pix_fmt yuv420p"));
        const auto copy = MovieTrackSource::Open(folder / name);
        EXPECT_EQ(copy->GetKeySample(4), 0);
        EXPECT_EQ(copy->GetKeySample(9), 5);
    }
}

TEST(MovieTrackWriter, CompressedFramesKeepTheirCodeAndAlpha) {
    const TempFolder folder;
    RunFfmpeg(
        TestPicture(64, 48, "24000/1001", 4) +
        " -vf format=rgba,colorchannelmixer=aa=0.5 -c:v prores_ks -profile:v 4444 -pix_fmt yuva444p10le '" +
        (folder / "a.mov") + "'");
    for (const char* name : {"b.mov", "b.mkv"}) {
        CopyTrack(folder / "a.mov", folder / name);
        EXPECT_EQ(ProbeValue(folder / name, "stream=codec_tag_string"), "ap4h");
        EXPECT_EQ(FfmpegBytes(folder / name, "-pix_fmt yuva444p10le"),
                  FfmpegBytes(folder / "a.mov", "-pix_fmt yuva444p10le"));
    }
}

TEST(MovieTrackWriter, NamesHaveAnyCharacter) {
    const TempFolder folder;
    WriteMovie(Settings(folder / "a:%04d é.mov", FourCC("v210")));
    EXPECT_EQ(MovieTrackSource::Open(folder / "a:%04d é.mov")->GetFrameCount(), frameCount);
}

TEST(MovieTrackWriter, AMovieTakesThePlaceOfTheOldOne) {
    const TempFolder folder;
    WriteBytes(folder / "a.mov", {1, 2, 3});
    WriteMovie(Settings(folder / "a.mov", FourCC("v210")));
    EXPECT_EQ(MovieTrackSource::Open(folder / "a.mov")->GetFrameCount(), frameCount);
}

} // namespace
