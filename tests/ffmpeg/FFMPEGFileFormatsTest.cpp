// Opening and closing movies, and what the format tells of them.

#include "ffmpeg/FFMPEGFileFormats.h"

#include "ffmpeg/FormatTestSupport.h"
#include "host/Registry.h"

#include <filesystem>

namespace {

using CxFFMPEG::FFMPEGFileFormats;

/// A movie that is on the disk as long as the test runs.
class FFMPEGFileFormatsFile : public testing::Test {
protected:
    const Workspace workspace;
    const std::string movie = WriteMovie(workspace, "movie.mp4", GreyTrack());
};

/// A movie without pictures.
std::string WriteSound(const Workspace& workspace) {
    const std::string path = workspace.Path("sound.mov");
    WriteMovie(workspace, "both.mov", GreyTrack(), {.soundStreams = 1});
    workspace.Shell("ffmpeg -nostdin -v error -i both.mov -vn -c copy sound.mov");
    return path;
}

TEST(FFMPEGFileFormats, AFreshObjectTellsItsDefaults) {
    FFMPEGFileFormats format(nullptr, ScriptVal(), TagList());
    int32_t integer = 7;
    double number = 7.0;
    for (const Tag key : {0x100000c8, 0x100000c9, 0x100000ca, 0x10000067, 0x1000006d, 0x1000006c}) {
        EXPECT_TRUE(format.CopyAttr(key, &integer)) << std::hex << key;
        EXPECT_EQ(integer, 0) << std::hex << key;
        integer = 7;
    }
    EXPECT_TRUE(format.CopyAttr(0x100000cb, &integer));
    EXPECT_EQ(integer, std::numeric_limits<int32_t>::min());
    for (const Tag key : {0x200000c9, 0x20000067}) {
        EXPECT_TRUE(format.CopyAttr(key, &number)) << std::hex << key;
        EXPECT_EQ(number, 0.0) << std::hex << key;
        number = 7.0;
    }
    EXPECT_TRUE(format.CopyAttr(0x200000c8, &number));
    EXPECT_EQ(number, 1.0);
}

TEST(FFMPEGFileFormats, AttributesThatItDoesNotKnowAreTheBases) {
    FFMPEGFileFormats format(nullptr, ScriptVal(), TagList());
    int32_t integer = 7;
    EXPECT_FALSE(format.CopyAttr(0x100000cc, &integer));
    EXPECT_EQ(integer, 7);
}

TEST(FFMPEGFileFormats, TheStoredTimeIsKeptAsAWholeNumber) {
    FFMPEGFileFormats format(nullptr, ScriptVal(), TagList());
    TagList tags;
    tags.Set(0x200000c9, -12.75, false);
    EXPECT_TRUE(format.SetAttrsTagList(tags));
    double stored = 0.0;
    EXPECT_TRUE(format.CopyAttr(0x200000c9, &stored));
    EXPECT_EQ(stored, -12.0);
}

TEST(FFMPEGFileFormats, SettingTellsWhetherItOrTheBaseFoundSomething) {
    FFMPEGFileFormats format(nullptr, ScriptVal(), TagList());
    TagList tags;
    EXPECT_FALSE(format.SetAttrsTagList(tags));
    tags.Set(0x100000c8, 320, false);
    EXPECT_TRUE(format.SetAttrsTagList(tags));
    EXPECT_EQ(format.width, 320);
    EXPECT_EQ(format.GetAttr(0x200000c9, -1.0), 0.0);
}

TEST(FFMPEGFileFormats, TheObjectTellsItsOwnSize) {
    const FFMPEGFileFormats format(nullptr, ScriptVal(), TagList());
    EXPECT_EQ(format.ObjectSize(), sizeof(FFMPEGFileFormats));
}

TEST(FFMPEGFileFormats, WithoutAFileNothingLoadsAndClosingIsFine) {
    LoadedFormat loaded;
    Image* image = nullptr;
    loaded.format.width = loaded.format.height = 4;
    EXPECT_FALSE(loaded.format.LoadFrameTagList(0, image, loaded.tags));
    ASSERT_NE(image, nullptr) << "the base prepares the image first";
    Image::Free(image);
    EXPECT_EQ(loaded.format.CountFrames(), 0);
    EXPECT_TRUE(loaded.format.CloseFile());
    EXPECT_TRUE(loaded.format.CloseFile());
}

TEST_F(FFMPEGFileFormatsFile, AHeaderTellsSizeRateAndCount) {
    LoadedFormat loaded;
    ASSERT_TRUE(loaded.Open(movie));
    EXPECT_EQ(loaded.format.GetAttr(0x100000c8, 0), 64);
    EXPECT_EQ(loaded.format.GetAttr(0x100000c9, 0), 48);
    EXPECT_EQ(loaded.Count(), 24);
    EXPECT_EQ(loaded.Rate(), 25.0);
}

TEST_F(FFMPEGFileFormatsFile, ARateIsTheQuotientOfItsFraction) {
    LoadedFormat loaded(WriteMovie(workspace, "ntsc.mov", GreyTrack(), {.rate = {30000, 1001}}));
    EXPECT_EQ(loaded.Rate(), 30000.0 / 1001.0);
}

TEST_F(FFMPEGFileFormatsFile, OnlyTheDataTypeOfPicturesLoads) {
    LoadedFormat loaded;
    EXPECT_FALSE(loaded.format.LoadHeaderTagList(CxID("DataType_Sound", true), movie.c_str(), loaded.tags));
    EXPECT_EQ(loaded.Load(0), -1);
    EXPECT_TRUE(
        loaded.format.LoadHeaderTagList(CxID(CLSID_DataType_Image, true), movie.c_str(), loaded.tags));
    EXPECT_EQ(loaded.Load(0), 0);
}

/// Counts the files that are opened.
int openedFiles = 0;
int CountOpened(AVFormatContext** file, const char* path, const AVInputFormat* format,
                AVDictionary** options) {
    ++openedFiles;
    return avformat_open_input(file, path, format, options);
}

TEST_F(FFMPEGFileFormatsFile, TheSamePathIsNotOpenedAgain) {
    LoadedFormat loaded(movie);
    openedFiles = 0;
    const ReplacedFunction open(&FFmpegFunctions::avformat_open_input, CountOpened);
    EXPECT_TRUE(loaded.Open(movie));
    EXPECT_EQ(openedFiles, 0);
    EXPECT_EQ(loaded.Load(5), 5);
    EXPECT_TRUE(loaded.Open(WriteMovie(workspace, "other.mp4", GreyTrack())));
    EXPECT_EQ(openedFiles, 1);
}

TEST_F(FFMPEGFileFormatsFile, AHeaderThatIsLoadedAgainStartsWithANewDecoder) {
    LoadedFormat loaded(movie);
    EXPECT_EQ(loaded.Load(7), 7);
    ASSERT_TRUE(loaded.Open(movie));
    const SoughtPlaces sought;
    EXPECT_EQ(loaded.Load(8), 8);
    EXPECT_EQ(SoughtPlaces::Count(), 1);
}

TEST_F(FFMPEGFileFormatsFile, AClosedFileOpensAgain) {
    LoadedFormat loaded(movie);
    EXPECT_EQ(loaded.Load(3), 3);
    EXPECT_TRUE(loaded.format.CloseFile());
    EXPECT_EQ(loaded.Load(3), -1);
    ASSERT_TRUE(loaded.Open(movie));
    EXPECT_EQ(loaded.Load(4), 4);
}

TEST_F(FFMPEGFileFormatsFile, WhatWasFoundOutStaysAcrossAClose) {
    LoadedFormat loaded(WriteMovie(workspace, "late.mkv", GreyTrack(), {.rate = {50, 1}, .firstFrame = 50}));
    EXPECT_TRUE(loaded.format.CloseFile());
    EXPECT_EQ(loaded.format.FrameToTime(0), 1000);
    EXPECT_EQ(loaded.Rate(), 50.0);
    EXPECT_EQ(loaded.Count(), 24);
    EXPECT_EQ(loaded.format.CountFrames(), 24);
}

TEST_F(FFMPEGFileFormatsFile, TheFirstFilesStartAndCountStayForTheNext) {
    const EncodedTrack half({.frames = 12});
    LoadedFormat loaded(movie);
    ASSERT_TRUE(loaded.Open(WriteMovie(workspace, "half.mkv", half, {.firstFrame = 25})));
    EXPECT_EQ(loaded.Count(), 24);
    EXPECT_EQ(loaded.format.FrameToTime(0), 0);
    EXPECT_EQ(loaded.Load(25), 0);
    EXPECT_EQ(loaded.Load(0), -1);
}

TEST_F(FFMPEGFileFormatsFile, TheDecoderOfAFileDoesNotOutliveIt) {
    LoadedFormat loaded(movie);
    EXPECT_EQ(loaded.Load(3), 3);
    const std::string other = WriteMovie(workspace, "other.mkv", GreyTrack());
    EXPECT_TRUE(loaded.format.OpenFile(other.c_str(), TagList()));
    EXPECT_EQ(loaded.Load(3), -1) << "no header was loaded";
    EXPECT_TRUE(loaded.Open(other));
    EXPECT_EQ(loaded.Load(3), 3);
}

TEST_F(FFMPEGFileFormatsFile, AFailedOpenLeavesTheObjectClosedAndUsable) {
    LoadedFormat loaded(movie);
    for (const std::string& bad : {workspace.Path("missing.mp4"), workspace.Path(""), std::string()}) {
        EXPECT_FALSE(loaded.format.OpenFile(bad.c_str(), TagList())) << bad;
        EXPECT_FALSE(loaded.Open(bad)) << bad;
        EXPECT_EQ(loaded.Load(0), -1);
        EXPECT_TRUE(loaded.Open(movie));
        EXPECT_EQ(loaded.Load(0), 0);
    }
    EXPECT_FALSE(loaded.format.OpenFile(nullptr, TagList()));
    EXPECT_FALSE(loaded.format.LoadHeaderTagList(nullptr, loaded.tags));
    EXPECT_TRUE(loaded.Open(movie));
}

TEST_F(FFMPEGFileFormatsFile, StreamsThatFFmpegDoesNotFindLeaveTheFileClosed) {
    LoadedFormat loaded;
    {
        const ReplacedFunction find(&FFmpegFunctions::avformat_find_stream_info,
                                    [](AVFormatContext*, AVDictionary**) { return AVERROR_INVALIDDATA; });
        EXPECT_FALSE(loaded.format.OpenFile(movie.c_str(), TagList()));
        EXPECT_FALSE(loaded.Open(movie));
    }
    EXPECT_TRUE(loaded.Open(movie));
}

TEST_F(FFMPEGFileFormatsFile, AFileWithoutPicturesSaysSo) {
    const std::string sound = WriteSound(workspace);
    LoadedFormat loaded;
    bool isLoaded = true;
    const std::string words = WordsOf([&] { isLoaded = loaded.Open(sound); });
    EXPECT_FALSE(isLoaded);
    EXPECT_EQ(words, "No valid stream found in file '" + sound + "'\n");
    EXPECT_EQ(loaded.Load(0), -1);
    EXPECT_TRUE(loaded.Open(movie));
    EXPECT_EQ(loaded.Load(2), 2);
}

TEST_F(FFMPEGFileFormatsFile, AFileThatCantBeOpenedIsNotTalkedAbout) {
    LoadedFormat loaded;
    const std::string words = WordsOf([&] { EXPECT_FALSE(loaded.Open(workspace.Path("missing.mp4"))); });
    EXPECT_EQ(words, "");
}

TEST_F(FFMPEGFileFormatsFile, AStreamThatFFmpegCantDecodeFails) {
    LoadedFormat loaded;
    {
        const ReplacedFunction find(
            &FFmpegFunctions::avcodec_find_decoder,
            [](AVCodecID) -> decltype(avcodec_find_decoder(AVCodecID())) { return nullptr; });
        EXPECT_FALSE(loaded.Open(movie));
        EXPECT_EQ(loaded.Load(0), -1);
    }
    EXPECT_TRUE(loaded.Open(movie));
    EXPECT_EQ(loaded.Load(0), 0);
}

TEST_F(FFMPEGFileFormatsFile, ARateWithoutANumeratorOrDenominatorFails) {
    for (const auto change : {+[](AVStream& stream) {
                                  stream.r_frame_rate = {0, 1};
                              },
                              +[](AVStream& stream) {
                                  stream.r_frame_rate = {25, 0};
                              }}) {
        LoadedFormat loaded;
        {
            const ChangedStreams changed(change);
            EXPECT_FALSE(loaded.Open(movie));
        }
        EXPECT_EQ(loaded.Load(0), -1);
        EXPECT_TRUE(loaded.format.CloseFile());
        EXPECT_TRUE(loaded.Open(movie));
        EXPECT_EQ(loaded.Load(0), 0);
    }
}

TEST_F(FFMPEGFileFormatsFile, ARateWithoutADenominatorIsToldAs0) {
    const ChangedStreams changed([](AVStream& stream) { stream.r_frame_rate = {25, 0}; });
    LoadedFormat loaded;
    EXPECT_FALSE(loaded.Open(movie));
    EXPECT_EQ(loaded.Rate(), 0.0);
}

TEST_F(FFMPEGFileFormatsFile, AllStreamsButThePicturesAreDiscarded) {
    const ChangedStreams remembered([](AVStream&) {});
    LoadedFormat loaded(WriteMovie(workspace, "sounds.mov", GreyTrack(), {.soundStreams = 2}));
    const AVFormatContext& file = *ChangedStreams::file;
    ASSERT_EQ(file.nb_streams, 3U);
    EXPECT_EQ(file.streams[0]->discard, AVDISCARD_ALL);
    EXPECT_EQ(file.streams[1]->discard, AVDISCARD_ALL);
    EXPECT_EQ(file.streams[2]->discard, AVDISCARD_DEFAULT);
    EXPECT_NE(file.flags & AVFMT_FLAG_GENPTS, 0);
    for (int32_t frame = 0; frame < 24; ++frame)
        EXPECT_EQ(loaded.Load(frame), frame);
}

TEST_F(FFMPEGFileFormatsFile, AHostFindsAndLoadsAMovieByItsExtension) {
    WriteMovie(workspace, "movie.mkv", GreyTrack());
    const std::vector<Registry*> formats = Registry::FormatsForExtension(".mkv");
    ASSERT_FALSE(formats.empty());
    const std::unique_ptr<Object> object = formats.front()->Create(ScriptVal(), TagList());
    auto* const format = dynamic_cast<ImageFormat*>(object.get());
    ASSERT_NE(format, nullptr);
    TagList tags;
    ASSERT_TRUE(format->LoadHeaderTagList(CxID(CLSID_DataType_Image, true),
                                          workspace.Path("movie.mkv").c_str(), tags));
    EXPECT_EQ(format->GetAttr(0x100000cb, 0), 24);
    EXPECT_EQ(format->GetAttr(0x200000c8, 0.0), 25.0);
    Image* image = nullptr;
    ASSERT_TRUE(format->LoadFrameTagList(17, image, tags));
    EXPECT_EQ(FrameOfImage(*image), 17);
    Image::Free(image);
}

} // namespace
