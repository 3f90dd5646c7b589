// Saves that go wrong, and what they leave.

#include "ffmpeg/SaveTestSupport.h"

#include <csignal>
#include <filesystem>
#include <sys/resource.h>

namespace {

using namespace CxFFMPEG;

/// Lets no file of the process grow beyond a number of bytes until the end of its life.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &kept_);
        const rlimit limited = {bytes, kept_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &kept_);
        std::signal(SIGXFSZ, handler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit kept_ = {};
    void (*handler_)(int);
};

class FailedSave : public testing::Test {
protected:
    /// Starts a save that is refused, and sees that the object is of use afterwards.
    /// @return what is said on standard error
    std::string WordsOfRefusal(Saver& saver, const std::string& file, Image& image) {
        const std::string words = WordsOf([&] {
            EXPECT_FALSE(saver.Start(file, image));
            EXPECT_FALSE(saver.Save(image)) << "nothing is being saved";
        });
        saver.Choose("Container", "Matroska");
        saver.Choose("EncoderProfile", "MPEG4");
        saver.SetOptions("");
        SaveGreyMovie(saver, workspace.Path("after.mkv"), 2);
        EXPECT_EQ(LoadGreyMovie(workspace.Path("after.mkv")), Numbers(2));
        return words;
    }

    const Workspace workspace;
    const std::string path = workspace.Path("movie.mkv");
    const ImagePtr image = GreyImage(0);
};

TEST_F(FailedSave, AnUnknownContainerOrEncoderIsRefusedWithoutAFile) {
    Saver saver("no such container");
    EXPECT_EQ(WordsOfRefusal(saver, path, *image), "");
    saver.Choose("EncoderProfile", "no such encoder");
    EXPECT_EQ(WordsOfRefusal(saver, path, *image), "");
    saver.Choose("Container", "");
    EXPECT_EQ(WordsOfRefusal(saver, path, *image), "");
    EXPECT_FALSE(workspace.Has("movie.mkv"));
}

TEST_F(FailedSave, AnUnknownContainerOrEncoderOrNothingToSaveLeavesTheSaveThatRuns) {
    Saver saver;
    ASSERT_TRUE(saver.Start(path, *image));
    EXPECT_TRUE(saver.Save(*image));
    saver.Choose("EncoderProfile", "no such encoder");
    EXPECT_FALSE(saver.Start(workspace.Path("second.mkv"), *image));
    saver.Choose("Container", "no such container");
    EXPECT_FALSE(saver.Start(workspace.Path("second.mkv"), *image));
    EXPECT_FALSE(saver.format.SaveHeaderTagList(static_cast<const char*>(nullptr), image.get(), saver.tags));
    EXPECT_FALSE(saver.format.SaveHeaderTagList(path.c_str(), nullptr, saver.tags));
    EXPECT_TRUE(saver.Save(*GreyImage(1)));
    saver.End();
    EXPECT_EQ(LoadGreyMovie(path), Numbers(2));
    EXPECT_FALSE(workspace.Has("second.mkv"));
}

TEST_F(FailedSave, APathThatCannotBeWrittenEndsTheSaveThatRuns) {
    Saver saver;
    ASSERT_TRUE(saver.Start(path, *image));
    EXPECT_TRUE(saver.Save(*image));
    EXPECT_FALSE(saver.Start(workspace.Path("missing/movie.mkv"), *image));
    EXPECT_FALSE(saver.Save(*image));
    EXPECT_EQ(LoadGreyMovie(path), Numbers(1));
}

TEST_F(FailedSave, APathThatCannotBeWrittenIsRefused) {
    Saver saver;
    for (const std::string& bad : {workspace.Path("missing/movie.mkv"), workspace.Path(""), std::string()})
        EXPECT_EQ(WordsOfRefusal(saver, bad, *image), "") << bad;
    EXPECT_FALSE(saver.format.SaveHeaderTagList(static_cast<const char*>(nullptr), image.get(), saver.tags));
    EXPECT_FALSE(saver.format.SaveHeaderTagList(path.c_str(), nullptr, saver.tags));
}

TEST_F(FailedSave, OnlyFilesAreSaved) {
    Saver saver;
    saver.Setup();
    EXPECT_FALSE(saver.format.SaveHeaderTagList(static_cast<IOClass*>(nullptr), image.get(), saver.tags));
}

TEST_F(FailedSave, OddSizesOfHalvedChromaAreRefusedByTheEncoder) {
    Saver saver("Matroska", "H.264 [High]");
    for (const auto& [width, height] : {std::pair(63, 48), std::pair(64, 47)}) {
        saver.Choose("EncoderProfile", "H.264 [High]");
        EXPECT_EQ(WordsOfRefusal(saver, path, *GreyImage(0, width, height)), "Could not open codec\n");
        EXPECT_EQ(std::filesystem::file_size(path), 0U) << "the file was made";
    }
}

TEST_F(FailedSave, OddSizesOfWholeChromaAreSaved) {
    Saver saver("Matroska", "H.264 [High_444]");
    ASSERT_TRUE(saver.Start(path, *GreyImage(0, 63, 47)));
    EXPECT_TRUE(saver.Save(*GreyImage(0, 63, 47)));
    saver.End();
    EXPECT_EQ(LoadGreyMovie(path), Numbers(1));
}

TEST_F(FailedSave, AnImageWithoutPixelsIsRefused) {
    for (const auto& [width, height] : {std::pair(0, 0), std::pair(64, 0), std::pair(0, 48)}) {
        Saver saver;
        EXPECT_EQ(WordsOfRefusal(saver, path, *MakeImage(width, height)), "Could not open codec\n");
    }
}

TEST_F(FailedSave, OptionsThatTheEncoderCannotOpenWithAreRefused) {
    Saver saver("Matroska", "H.264 [High]");
    saver.SetOptions("preset=nosuch,");
    const std::string words = WordsOfRefusal(saver, path, *image);
    EXPECT_TRUE(words.ends_with("Could not open codec\n")) << words;
}

TEST_F(FailedSave, OptionsThatTheEncoderDoesNotKnowChangeNothing) {
    Saver saver;
    saver.SetOptions(",,;;:|\n=,=x,nosuch=1,novalue," + std::string(3000, '|') + std::string(3000, 'x') +
                     "=,");
    SaveGreyMovie(saver, path, 2);
    EXPECT_EQ(LoadGreyMovie(path), Numbers(2));
}

TEST_F(FailedSave, ImagesOfAnotherSizeAreRefusedAndTheOthersSaved) {
    Saver saver;
    ASSERT_TRUE(saver.Start(path, *image));
    EXPECT_TRUE(saver.Save(*image));
    for (const auto& [width, height] :
         {std::pair(63, 48), std::pair(64, 49), std::pair(128, 96), std::pair(2, 2), std::pair(0, 0)})
        EXPECT_FALSE(saver.Save(*GreyImage(5, width, height))) << width << "x" << height;
    EXPECT_TRUE(saver.Save(*GreyImage(1)));
    saver.End();
    EXPECT_EQ(LoadGreyMovie(path), Numbers(2));
}

TEST_F(FailedSave, AMissingImageIsRefusedAndTheOthersSaved) {
    Saver saver;
    ASSERT_TRUE(saver.Start(path, *image));
    EXPECT_FALSE(saver.format.SaveFrameTagList(0, nullptr, saver.tags));
    EXPECT_TRUE(saver.Save(*image));
    saver.End();
    EXPECT_EQ(LoadGreyMovie(path), Numbers(1));
}

TEST_F(FailedSave, WithoutAFrameTheFileStaysEmpty) {
    for (const char* const encoder : {"MPEG4", "H.264 [High]", "Theora [420]"}) {
        Saver saver("Matroska", encoder);
        ASSERT_TRUE(saver.Start(path, *image));
        saver.End();
        EXPECT_EQ(std::filesystem::file_size(path), 0U) << encoder;
    }
}

TEST_F(FailedSave, FramesBeforeAHeaderAndAfterTheEndAreRefused) {
    Saver saver;
    saver.Setup();
    EXPECT_FALSE(saver.Save(*image));
    SaveGreyMovie(saver, path, 2);
    EXPECT_FALSE(saver.Save(*image));
    saver.End();
    EXPECT_EQ(LoadGreyMovie(path), Numbers(2));
}

TEST_F(FailedSave, AContainerThatRefusesItsHeaderLeavesNoMovie) {
    Saver saver("PSP MP4 (MPEG-4 Part 14)", "MPEG4");
    ASSERT_TRUE(saver.Start(path, *image)) << "the header comes with the first packet";
    for (int32_t i = 0; i < 4; ++i)
        EXPECT_TRUE(saver.Save(*image)) << "what becomes of a packet is not told";
    saver.End();
    EXPECT_FALSE(SavedMovie(path).IsOpen());
}

TEST_F(FailedSave, ALiveStreamIsSavedAsItsListAndItsSegments) {
    Saver saver("Apple HTTP Live Streaming", "H.264 [High]");
    SaveGreyMovie(saver, workspace.Path("movie.m3u8"), 4);
    const std::string list = workspace.Read("movie.m3u8");
    EXPECT_TRUE(list.starts_with("#EXTM3U")) << list;
    EXPECT_NE(list.find("\n#EXTINF:0.166667,\nmovie0.ts\n#EXT-X-ENDLIST\n"), std::string::npos) << list;
    EXPECT_GT(std::filesystem::file_size(workspace.Path("movie0.ts")), 0U);
}

TEST_F(FailedSave, AMuxerThatWantsADirectoryIsSurvived) {
    Saver saver("HDS Muxer", "H.264 [High]");
    SaveGreyMovie(saver, workspace.Path("movie.f4m"), 4);
    EXPECT_FALSE(SavedMovie(workspace.Path("movie.f4m")).IsOpen()) << "a file is in the directory's place";
}

/// Saves noise until the file has no more room.
/// @return frames that were taken
int32_t SaveNoise(Saver& saver, const std::string& path, int32_t frames, rlim_t room) {
    const FileSizeLimit limit(room);
    int32_t taken = 0;
    EXPECT_TRUE(saver.Start(path, *GreyImage(0)));
    for (int32_t i = 0; i < frames; ++i)
        taken += saver.Save(*NoiseImage(static_cast<uint32_t>(i))) ? 1 : 0;
    saver.format.CloseFile();
    return taken;
}

TEST_F(FailedSave, ADiskThatFillsUpLeavesThePicturesThatHadRoom) {
    Saver saver;
    EXPECT_EQ(SaveNoise(saver, path, 24, 40000), 24) << "what becomes of a packet is not told";
    EXPECT_LE(std::filesystem::file_size(path), 40000U);
    const SavedMovie movie(path);
    ASSERT_NE(movie.Pictures(), nullptr);
    EXPECT_GT(movie.pictureCount, 4);
    EXPECT_LT(movie.pictureCount, 24);
    LoadedFormat loaded;
    EXPECT_TRUE(loaded.Open(path));
}

TEST_F(FailedSave, SoundThatFindsNoRoomIsTold) {
    Saver saver;
    std::vector<uint8_t> samples(40000);
    AudioBlock block = {samples.data(), 48000, 16, 2, static_cast<int32_t>(samples.size())};
    saver.tags.SetPtr(AudioTag_Block, &block);
    const int32_t taken = SaveNoise(saver, path, 24, 300000);
    EXPECT_GT(taken, 2);
    EXPECT_LT(taken, 24);
    EXPECT_GT(SavedMovie(path).pictureCount, 2);
}

TEST_F(FailedSave, NoContainerSuffersFromADiskThatIsFull) {
    for (const char* const container : {"AVI (Audio Video Interleaved)", "QuickTime / MOV", "Matroska",
                                        "MPEG-TS (MPEG-2 Transport Stream)"}) {
        for (const rlim_t room : {0, 100, 5000, 40000}) {
            Saver saver(container, "MPEG4");
            EXPECT_EQ(SaveNoise(saver, path, 12, room), 12) << container;
            EXPECT_LE(std::filesystem::file_size(path), room) << container;
        }
    }
}

TEST_F(FailedSave, AKilledProcessLeavesTheClustersThatWereComplete) {
    const std::string line = "'" CORVEX_ENDLESS_SAVE "' killed.mkv & victim=$!; "
                             "until [ $(stat -c %s killed.mkv || echo 0) -gt 200000 ]; do "
                             "sleep 0.01; kill -0 $victim || break; done; "
                             "kill -KILL $victim; wait $victim; [ $? = 137 ]";
    EXPECT_EQ(workspace.Shell(line).status, 0);
    ASSERT_GT(std::filesystem::file_size(workspace.Path("killed.mkv")), 200000U);
    const SavedMovie movie(workspace.Path("killed.mkv"));
    ASSERT_NE(movie.Pictures(), nullptr);
    EXPECT_GT(movie.pictureCount, 20);
    const ProgramRun read = workspace.Shell("ffmpeg -nostdin -v error -i killed.mkv -f framemd5 -");
    EXPECT_EQ(read.status, 0) << read.err;
}

} // namespace
