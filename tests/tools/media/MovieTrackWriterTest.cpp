// Movies that another program reads.

#include "media/MovieTrackWriter.h"

#include "MediaFiles.h"
#include "framework/CxAVTypes.h"
#include "media/MovieTrackSource.h"
#include "media/ToolError.h"
#include "pixel/PixelConvert.h"

#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <sys/resource.h>

namespace {

constexpr int frameCount = 5;

MovieTrackSettings Settings(const std::string& path, uint32_t fourCC, int width = 62, int height = 47) {
    MovieTrackSettings settings;
    settings.path = path;
    settings.fourCC = fourCC;
    settings.width = width;
    settings.height = height;
    settings.frameRate = {24000, 1001};
    return settings;
}

/// Bytes that differ from frame to frame and from byte to byte; with v210 and r210 the padding too.
std::vector<uint8_t> Frame(int index, size_t size) {
    std::vector<uint8_t> bytes(size);
    for (size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<uint8_t>(i * 7 + i / 251 + index * 31);
    return bytes;
}

size_t FrameSize(const MovieTrackSettings& settings) {
    return static_cast<size_t>(PixelConvert::CalcRowBytes(settings.fourCC, settings.width)) * settings.height;
}

std::vector<std::vector<uint8_t>> WriteMovie(const MovieTrackSettings& settings) {
    std::vector<std::vector<uint8_t>> frames;
    MovieTrackWriter writer(settings);
    for (int i = 0; i < frameCount; ++i) {
        frames.push_back(Frame(i, FrameSize(settings)));
        writer.WriteFrame(frames.back().data(), frames.back().size());
    }
    writer.Finish();
    return frames;
}

ExitStatus StatusOf(const std::function<void()>& job) {
    try {
        job();
    } catch (const ToolError& error) {
        return error.status();
    }
    return ExitStatus::Done;
}

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
    for (const char* name : {"b.mov", "b.mkv", "b.avi"}) {
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

TEST(MovieTrackWriter, WithoutFinishTheOldMovieStays) {
    const TempFolder folder;
    WriteBytes(folder / "a.mov", {1, 2, 3});
    const MovieTrackSettings settings = Settings(folder / "a.mov", FourCC("v210"));
    {
        MovieTrackWriter writer(settings);
        writer.WriteFrame(Frame(0, FrameSize(settings)).data(), FrameSize(settings));
        EXPECT_TRUE(std::filesystem::exists(folder / "a.mov.part"));
    }
    EXPECT_EQ(ReadBytes(folder / "a.mov"), (std::vector<uint8_t>{1, 2, 3}));
    EXPECT_EQ(folder.FileCount(), 1u);
}

TEST(MovieTrackWriter, AFrameOfTheWrongSizeIsRefused) {
    const TempFolder folder;
    const MovieTrackSettings settings = Settings(folder / "a.mov", FourCC("v210"));
    MovieTrackWriter writer(settings);
    const std::vector<uint8_t> frame = Frame(0, FrameSize(settings) - 1);
    EXPECT_EQ(StatusOf([&] { writer.WriteFrame(frame.data(), frame.size()); }), ExitStatus::JobFailed);
    EXPECT_EQ(StatusOf([&] { writer.WriteFrame(frame.data(), 0); }), ExitStatus::JobFailed);
}

TEST(MovieTrackWriter, AnExtensionWithoutAContainerIsUnsupported) {
    const TempFolder folder;
    for (const char* name : {"a.exr", "a", "a.mp3"}) {
        EXPECT_EQ(StatusOf([&] { MovieTrackWriter(Settings(folder / name, FourCC("v210"))); }),
                  ExitStatus::Unsupported);
    }
    EXPECT_EQ(folder.FileCount(), 0u);
}

TEST(MovieTrackWriter, ACodeThatTheContainerCannotHoldIsUnsupported) {
    const TempFolder folder;
    EXPECT_EQ(StatusOf([&] { MovieTrackWriter(Settings(folder / "a.avi", 24)); }), ExitStatus::Unsupported);
    EXPECT_EQ(StatusOf([&] { MovieTrackWriter(Settings(folder / "a.mkv", FourCC("b64a"))); }),
              ExitStatus::Unsupported);
    EXPECT_EQ(StatusOf([&] { MovieTrackWriter(Settings(folder / "a.mov", FourCC("zzzz"))); }),
              ExitStatus::Unsupported);
    EXPECT_EQ(folder.FileCount(), 0u);
}

TEST(MovieTrackWriter, SettingsThatCannotBeAreWrongUsage) {
    const TempFolder folder;
    const auto status = [&](const std::function<void(MovieTrackSettings&)>& change) {
        MovieTrackSettings settings = Settings(folder / "a.mov", FourCC("v210"));
        change(settings);
        return StatusOf([&] { MovieTrackWriter{settings}; });
    };
    EXPECT_EQ(status([](auto& s) { s.width = 0; }), ExitStatus::Usage);
    EXPECT_EQ(status([](auto& s) { s.height = 40000; }), ExitStatus::Usage);
    EXPECT_EQ(status([](auto& s) { s.frameRate = {0, 1}; }), ExitStatus::Usage);
    EXPECT_EQ(status([](auto& s) { s.frameRate = {INT64_MAX, INT64_MAX - 1}; }), ExitStatus::Usage);
    EXPECT_EQ(status([](auto& s) { s.fieldOrder = 4; }), ExitStatus::Usage);
    EXPECT_EQ(status([](auto& s) { s.timeCode = "noon"; }), ExitStatus::Usage);
    EXPECT_EQ(status([](auto& s) { s.timeCode = "00:00:00;00"; }), ExitStatus::Usage); // no drop frame at 24
    EXPECT_EQ(folder.FileCount(), 0u);
}

TEST(MovieTrackWriter, AMissingFolderCannotBeWritten) {
    const TempFolder folder;
    const std::string path = folder / "none/a.mov";
    try {
        MovieTrackWriter writer(Settings(path, FourCC("v210")));
        FAIL() << "opened";
    } catch (const ToolError& error) {
        EXPECT_EQ(error.status(), ExitStatus::CannotWrite);
        EXPECT_EQ(error.what(), path + ": No such file or directory");
    }
}

/// Files of this process end at a size while this object lives, as on a full disk.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : oldHandler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &old);
        const rlimit limit{bytes, old.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &old);
        std::signal(SIGXFSZ, oldHandler);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit old{};
    void (*oldHandler)(int);
};

TEST(MovieTrackWriter, AFullDiskLeavesNoFile) {
    const TempFolder folder;
    // From one that stops the header, over those that stop a frame, to those that stop the index at the end.
    for (const char* name : {"a.mov", "a.avi", "a.mkv"}) {
        WriteMovie(Settings(folder / name, FourCC("v210")));
        const uintmax_t whole = std::filesystem::file_size(folder / name);
        std::filesystem::remove(folder / name);
        for (const uintmax_t limit : {uintmax_t{0}, uintmax_t{10}, whole / 2, whole - 200, whole - 1}) {
            const FileSizeLimit full(limit);
            EXPECT_EQ(StatusOf([&] { WriteMovie(Settings(folder / name, FourCC("v210"))); }),
                      ExitStatus::CannotWrite)
                << name << ' ' << limit << " of " << whole;
            EXPECT_EQ(folder.FileCount(), 0u);
        }
    }
}

TEST(MovieTrackWriter, AFullDiskIsToldInItsOwnWords) {
    const TempFolder folder;
    const FileSizeLimit full(1000);
    try {
        WriteMovie(Settings(folder / "a.mov", FourCC("v210")));
        FAIL() << "written";
    } catch (const ToolError& error) {
        EXPECT_EQ(error.what(), (folder / "a.mov") + ": File too large");
    }
}

} // namespace
