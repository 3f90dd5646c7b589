// Files that are not what they should be, and time stamps that never match.

#include "ffmpeg/FormatTestSupport.h"

#include <filesystem>

namespace {

namespace fs = std::filesystem;

constexpr int frameCount = 24;

class FFMPEGFileFormatsDamage : public testing::Test {
protected:
    FFMPEGFileFormatsDamage() {
        CorvexDoc::SetConsoleHook([](EventConsoleSubID, const std::string&) {});
    }
    ~FFMPEGFileFormatsDamage() override { CorvexDoc::SetConsoleHook({}); }

    /// A fresh object reads what it can of a file, and works as ever on a good one afterwards.
    /// @return frames that loaded
    int LoadAll(const std::string& path) {
        LoadedFormat loaded;
        int count = 0;
        const std::string words = WordsOf([&] {
            if (loaded.Open(path))
                for (uint32_t frame = 0; frame < frameCount; ++frame)
                    count += Loads(loaded, frame * 7 % frameCount) ? 1 : 0;
        });
        ExpectUsable(loaded);
        return count;
    }

    static bool Loads(LoadedFormat& loaded, uint32_t frame) {
        const ImagePtr image = MakeImage(64, 48);
        Image* target = image.get();
        return loaded.format.LoadFrameTagList(frame, target, loaded.tags);
    }

    /// Start and count are those of the first file that told them, so only that a frame loads is expected.
    void ExpectUsable(LoadedFormat& loaded) {
        ASSERT_TRUE(loaded.Open(good));
        const int32_t first = loaded.format.TimeToFrame(0);
        const std::string words = WordsOf([&] {
            EXPECT_TRUE(first != 0 || loaded.Load(5) == 5);
            EXPECT_TRUE(first != 0 || loaded.Load(6) == 6);
        });
    }

    const Workspace workspace;
    const std::string good = WriteMovie(workspace, "good.mp4", GreyTrack());
};

TEST_F(FFMPEGFileFormatsDamage, AnEmptyFileDoesNotOpen) {
    for (const char* const name : {"empty.mp4", "empty.mkv", "empty.avi", "empty.mts", "empty.gif"}) {
        workspace.Write(name, "");
        EXPECT_EQ(LoadAll(workspace.Path(name)), 0);
    }
}

TEST_F(FFMPEGFileFormatsDamage, AFileOfSomethingElseDoesNotOpen) {
    workspace.Write("words.mov", std::string(5000, 'w'));
    EXPECT_EQ(LoadAll(workspace.Path("words.mov")), 0);
}

TEST_F(FFMPEGFileFormatsDamage, ATruncatedFileGivesTheFramesThatItHas) {
    for (const char* const name : {"movie.mkv", "movie.flv", "movie.avi", "movie.mp4"}) {
        WriteMovie(workspace, name, GreyTrack());
        const std::string whole = workspace.Read(name);
        const std::string cut = std::string("cut") + name;
        int last = frameCount;
        for (size_t tenths = 9; tenths > 0; --tenths) {
            workspace.Write(cut, whole.substr(0, whole.size() * tenths / 10));
            last = LoadAll(workspace.Path(cut));
            EXPECT_LE(last, frameCount);
        }
        EXPECT_LT(last, frameCount);
    }
}

TEST_F(FFMPEGFileFormatsDamage, AFileCutNearItsEndGivesItsFirstFramesRight) {
    WriteMovie(workspace, "movie.mkv", GreyTrack());
    const std::string whole = workspace.Read("movie.mkv");
    workspace.Write("cut.mkv", whole.substr(0, whole.size() * 8 / 10));
    LoadedFormat loaded(workspace.Path("cut.mkv"));
    const std::string words = WordsOf([&] {
        for (uint32_t frame = 0; frame < 8; ++frame)
            EXPECT_EQ(loaded.Load(frame), static_cast<int32_t>(frame));
        EXPECT_EQ(loaded.Load(23), -1);
        EXPECT_EQ(loaded.Load(3), 3);
    });
}

TEST_F(FFMPEGFileFormatsDamage, CorruptBytesDoNoHarm) {
    std::mt19937 random = MakeRandom();
    for (const char* const name : {"movie.mkv", "movie.flv", "movie.avi", "movie.mp4", "movie.mts"}) {
        const bool isStream = std::string(name).ends_with("mts");
        WriteMovie(workspace, name, isStream ? GreyStreamTrack() : GreyTrack());
        const std::string whole = workspace.Read(name);
        for (int i = 0; i < 6; ++i) {
            std::string corrupt = whole;
            for (int k = 0; k < 1 << i; ++k)
                corrupt[random() % corrupt.size()] = static_cast<char>(random());
            const std::string path = std::string("corrupt") + name;
            workspace.Write(path, corrupt);
            EXPECT_LE(LoadAll(workspace.Path(path)), frameCount);
        }
    }
}

TEST_F(FFMPEGFileFormatsDamage, AFileThatDisappearsWhileOpenLoadsOn) {
    const std::string movie = WriteMovie(workspace, "movie.mkv", GreyTrack());
    LoadedFormat loaded(movie);
    EXPECT_EQ(loaded.Load(0), 0);
    fs::remove(movie);
    EXPECT_EQ(loaded.Load(20), 20);
    EXPECT_TRUE(loaded.format.CloseFile());
    EXPECT_FALSE(loaded.Open(movie));
    ExpectUsable(loaded);
}

TEST_F(FFMPEGFileFormatsDamage, AFileThatIsCutWhileOpenFailsFromThereOn) {
    const EncodedTrack large({.encoder = "rawvideo", .width = 256, .height = 256});
    const std::string movie = WriteMovie(workspace, "movie.avi", large);
    LoadedFormat loaded(movie);
    const auto size = fs::file_size(movie);
    fs::resize_file(movie, 0);
    const std::string words = WordsOf([&] { EXPECT_EQ(loaded.Load(11), -1); });
    fs::resize_file(movie, size);
    EXPECT_EQ(loaded.Load(10), -1) << "all of it is 0 now";
    ExpectUsable(loaded);
}

TEST_F(FFMPEGFileFormatsDamage, AFileThatIsReplacedWhileOpenIsReadAsItIs) {
    const std::string movie = WriteMovie(workspace, "movie.mkv", GreyTrack());
    LoadedFormat loaded(movie);
    EXPECT_EQ(loaded.Load(2), 2);
    workspace.Write("movie.mkv", std::string(workspace.Read("movie.mkv").size(), 'x'));
    const std::string words = WordsOf([&] {
        for (uint32_t frame = 0; frame < frameCount; ++frame)
            Loads(loaded, frameCount - frame);
    });
    ExpectUsable(loaded);
}

TEST_F(FFMPEGFileFormatsDamage, APathThatIsNoFileDoesNotOpen) {
    LoadedFormat loaded;
    EXPECT_FALSE(loaded.Open(workspace.Path("")));
    EXPECT_FALSE(loaded.Open("no such protocol:movie.mp4"));
    ExpectUsable(loaded);
}

/// What is done to the times of every packet. No frame has the number 7 then.
struct BrokenTimes {
    const char* name;
    ChangedPackets::Change change;
};

int Unknown(AVPacket& packet) {
    packet.pts = packet.dts = AV_NOPTS_VALUE;
    return 0;
}
int Same(AVPacket& packet) {
    packet.pts = packet.dts = 0;
    return 0;
}
int Negative(AVPacket& packet) {
    packet.pts = packet.dts = -1 - ChangedPackets::count;
    return 0;
}
int Falling(AVPacket& packet) {
    constexpr int64_t first = std::numeric_limits<int32_t>::min();
    packet.pts = packet.dts = first + 1000 - 40 * ChangedPackets::count;
    return 0;
}
int Sparse(AVPacket& packet) {
    for (int64_t* const time : {&packet.pts, &packet.dts})
        if (*time != AV_NOPTS_VALUE) *time *= 100;
    return 0;
}
int Highest(AVPacket& packet) {
    packet.pts = packet.dts = std::numeric_limits<int64_t>::max() - 24 + ChangedPackets::count % 24;
    return 0;
}
int Lowest(AVPacket& packet) {
    packet.pts = packet.dts = std::numeric_limits<int64_t>::min() + 1 + ChangedPackets::count % 24;
    return 0;
}
int WithoutThe7th(AVPacket& packet) {
    if (packet.pts == 280) packet.pts = packet.dts = 40;
    return 0;
}

class FFMPEGFileFormatsBrokenTimes : public FFMPEGFileFormatsDamage,
                                     public testing::WithParamInterface<BrokenTimes> {};

TEST_P(FFMPEGFileFormatsBrokenTimes, TheSearchForAFrameEnds) {
    LoadedFormat loaded(WriteMovie(workspace, "movie.mkv", GreyTrack()));
    const std::string words = WordsOf([&] {
        const ChangedPackets changed(GetParam().change);
        EXPECT_FALSE(Loads(loaded, 7));
        // Each attempt reads the file once at most.
        EXPECT_LE(ChangedPackets::count, 3 * frameCount);
        EXPECT_FALSE(Loads(loaded, 7));
        Loads(loaded, 8);
        Loads(loaded, 0x7fffffff);
    });
    EXPECT_EQ(loaded.Load(7), 7);
    EXPECT_EQ(loaded.Load(8), 8);
}

INSTANTIATE_TEST_SUITE_P(All, FFMPEGFileFormatsBrokenTimes,
                         testing::Values(BrokenTimes{"Unknown", Unknown}, BrokenTimes{"Same", Same},
                                         BrokenTimes{"Negative", Negative}, BrokenTimes{"Falling", Falling},
                                         BrokenTimes{"Sparse", Sparse}, BrokenTimes{"Highest", Highest},
                                         BrokenTimes{"Lowest", Lowest},
                                         BrokenTimes{"WithoutThe7th", WithoutThe7th}),
                         [](const auto& tested) { return tested.param.name; });

TEST_F(FFMPEGFileFormatsDamage, AFailureInTheMiddleEndsThePlaybackAndTheNextFrameIsSought) {
    LoadedFormat loaded(WriteMovie(workspace, "movie.mkv", GreyTrack()));
    EXPECT_EQ(loaded.Load(0), 0);
    const std::string words = WordsOf([&] {
        const ChangedPackets failing([](AVPacket&) { return AVERROR_INVALIDDATA; });
        EXPECT_EQ(loaded.Load(20), -1);
    });
    const SoughtPlaces sought;
    EXPECT_EQ(loaded.Load(1), 1);
    EXPECT_EQ(SoughtPlaces::Count(), 1);
}

TEST_F(FFMPEGFileFormatsDamage, FramesOnBothSidesOfALongGapLoad) {
    const auto openGap = [](AVPacket& packet) {
        if (packet.pts < 12) return;
        packet.pts += 200;
        packet.dts += 200;
    };
    LoadedFormat loaded(WriteMovie(workspace, "gap.mkv", GreyTrack(), {.change = openGap}));
    for (int frame = 0; frame < 12; ++frame)
        EXPECT_EQ(loaded.Load(frame), frame);
    for (int frame = 11; frame >= 0; --frame)
        EXPECT_EQ(loaded.Load(frame), frame);
    EXPECT_EQ(loaded.Load(212), 12);
    EXPECT_EQ(loaded.Load(9), 9);
}

TEST_F(FFMPEGFileFormatsDamage, OfTwoPicturesOfOneNumberTheFirstIsGivenInAnyOrder) {
    LoadedFormat loaded(WriteMovie(workspace, "movie.mkv", GreyTrack()));
    const ChangedPackets changed([](AVPacket& packet) {
        if (packet.pts == 200) packet.pts = 176;
        return 0;
    });
    for (const int frame : {4, 6, 4, 7, 3, 4})
        EXPECT_EQ(loaded.Load(frame), frame);
}

TEST_F(FFMPEGFileFormatsDamage, APacketThatTheDecoderRefusesFailsItsFrame) {
    LoadedFormat loaded(WriteMovie(workspace, "movie.mkv", GreyTrack()));
    const std::string words = WordsOf([&] {
        const ReplacedFunction send(&FFmpegFunctions::avcodec_send_packet,
                                    [](AVCodecContext*, const AVPacket*) { return AVERROR_INVALIDDATA; });
        EXPECT_EQ(loaded.Load(3), -1);
    });
    EXPECT_EQ(words, "");
    EXPECT_EQ(loaded.Load(3), 3);
}

TEST_F(FFMPEGFileFormatsDamage, ADrainedDecoderSaysSoAndFails) {
    LoadedFormat loaded(WriteMovie(workspace, "movie.mkv", GreyTrack()));
    EXPECT_EQ(loaded.Load(23), 23);
    EXPECT_EQ(WordsOf([&] { EXPECT_EQ(loaded.Load(24), -1); }), "Failed to frame\n");
}

} // namespace
