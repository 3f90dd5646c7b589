// Movies that are saved, and what of the images arrives in the file.

#include "ffmpeg/SaveTestSupport.h"

#include <algorithm>
#include <tuple>

namespace {

using namespace CxFFMPEG;

/// A directory to save into.
class SavedFile : public testing::Test {
protected:
    /// Saves two frames of grey at a rate.
    /// @param text  the first image's time code; null: the images have no metadata
    /// @return the time code in the file
    std::string TimeCodeOf(const char* text, double rate) {
        Saver saver;
        saver.Set("FrameRateFps", rate);
        SaveGreyMovie(saver, path, 2, [&](Image& image) {
            if (text != nullptr) MetadataTable(image).FindKey("TimeCode") = text;
        });
        return SavedMovie(path).Tag("timecode");
    }
    /// What the stream of a save of one image tells.
    AVCodecParameters ParametersOf(const Image& like, bool isInterlaced) {
        Saver saver;
        TagList tags;
        tags.Set(ImageTag_Interlaced, isInterlaced ? 1 : 0, false);
        const ImagePtr image = GreyImage(0, like.Width, like.Height);
        image->SetAttrsTagList(tags);
        image->XAspect = like.XAspect;
        image->YAspect = like.YAspect;
        EXPECT_TRUE(saver.Start(path, *image));
        EXPECT_TRUE(saver.Save(*image));
        saver.End();
        const SavedMovie movie(path);
        return movie.Pictures() != nullptr ? *movie.Pictures()->codecpar : AVCodecParameters();
    }
    AVFieldOrder FieldOrderOf(int32_t width, int32_t height, bool isInterlaced) {
        return ParametersOf(*MakeImage(width, height), isInterlaced).field_order;
    }

    const Workspace workspace;
    const std::string path = workspace.Path("movie.mkv");
};

TEST_F(SavedFile, EveryFrameArrivesInItsOrder) {
    for (const char* const encoder : {"MPEG4", "H.264 [High]", "MPEG2"}) {
        Saver saver("Matroska", encoder);
        saver.Set("KeyFrames", 12.0);
        SaveGreyMovie(saver, path, 24);
        EXPECT_EQ(LoadGreyMovie(path), Numbers(24)) << encoder;
    }
}

TEST_F(SavedFile, PicturesBringTheirParametersWhereTheContainerKeepsNone) {
    Saver saver("Windows Television (WTV)", "MPEG4");
    saver.Set("KeyFrames", 4.0);
    SaveGreyMovie(saver, path, 8);
    EXPECT_EQ(LoadGreyMovie(path), Numbers(8));
    for (const char* const encoder : {"H.264 [High]", "H.264 [Main]"}) {
        Saver raw("raw H.264 video", encoder);
        SaveGreyMovie(raw, path, 8);
        const SavedMovie movie(path);
        ASSERT_NE(movie.Pictures(), nullptr) << encoder;
        EXPECT_EQ(movie.pictureCount, 8) << encoder;
        EXPECT_EQ(movie.Pictures()->codecpar->width, 64) << encoder;
    }
}

TEST_F(SavedFile, ContainersOfOtherKindsHoldTheFramesToo) {
    for (const char* const container : {"AVI (Audio Video Interleaved)", "QuickTime / MOV",
                                        "MP4 (MPEG-4 Part 14)", "MPEG-TS (MPEG-2 Transport Stream)"}) {
        Saver saver(container, "H.264 [High]");
        SaveGreyMovie(saver, path, 12);
        EXPECT_EQ(LoadGreyMovie(path), Numbers(12)) << container;
    }
}

TEST_F(SavedFile, PicturesLastAsLongAsTheRateSays) {
    for (const auto& [rate, num, den] : {std::tuple(24.0, 24, 1), std::tuple(29.97, 30000, 1001)}) {
        Saver saver("QuickTime / MOV", "H.264 [High]");
        saver.Set("FrameRateFps", rate);
        SaveGreyMovie(saver, path, 12);
        const SavedMovie movie(path);
        ASSERT_NE(movie.Pictures(), nullptr);
        EXPECT_EQ(movie.pictureCount, 12);
        EXPECT_EQ(movie.Pictures()->r_frame_rate.num, num);
        EXPECT_EQ(movie.Pictures()->r_frame_rate.den, den);
        EXPECT_DOUBLE_EQ(movie.Pictures()->duration * av_q2d(movie.Pictures()->time_base), 12.0 * den / num)
            << "the last one too";
    }
}

TEST_F(SavedFile, FramesAreNumberedByTheOrderOfSaving) {
    Saver saver;
    ASSERT_TRUE(saver.Start(path, *GreyImage(0)));
    int32_t next = 0;
    for (const uint32_t number : {7U, 7U, 0U, 4294967295U})
        EXPECT_TRUE(saver.format.SaveFrameTagList(number, GreyImage(next++).get(), saver.tags));
    saver.End();
    EXPECT_EQ(LoadGreyMovie(path), Numbers(4));
}

TEST_F(SavedFile, FramesThatTheEncoderHoldsBackArriveWithTheEnd) {
    Saver saver("Matroska", "H.264 [High]");
    saver.Set("KeyFrames", 12.0);
    ASSERT_TRUE(saver.Start(path, *GreyImage(0)));
    for (const int32_t frame : Numbers(12))
        ASSERT_TRUE(saver.Save(*GreyImage(frame)));
    EXPECT_EQ(std::filesystem::file_size(path), 0U) << "not even the header is there before a packet is";
    saver.End();
    EXPECT_EQ(LoadGreyMovie(path), Numbers(12));
}

TEST_F(SavedFile, TheEndOfTheObjectEndsTheFile) {
    {
        Saver saver;
        ASSERT_TRUE(saver.Start(path, *GreyImage(0)));
        for (const int32_t frame : Numbers(5))
            ASSERT_TRUE(saver.Save(*GreyImage(frame)));
    }
    EXPECT_EQ(LoadGreyMovie(path), Numbers(5));
}

TEST_F(SavedFile, OneObjectSavesOneMovieAfterTheOther) {
    Saver saver;
    SaveGreyMovie(saver, path, 3);
    const std::string second = workspace.Path("second.mkv");
    saver.Choose("EncoderProfile", "MPEG2");
    SaveGreyMovie(saver, second, 4);
    EXPECT_EQ(LoadGreyMovie(path), Numbers(3));
    EXPECT_EQ(LoadGreyMovie(second), Numbers(4));
    EXPECT_EQ(SavedMovie(second).Pictures()->codecpar->codec_id, AV_CODEC_ID_MPEG2VIDEO);
}

TEST_F(SavedFile, ANewHeaderEndsTheSaveBefore) {
    Saver saver("Matroska", "H.264 [High]");
    ASSERT_TRUE(saver.Start(path, *GreyImage(0)));
    for (const int32_t frame : Numbers(3))
        ASSERT_TRUE(saver.Save(*GreyImage(frame)));
    ASSERT_TRUE(saver.Start(workspace.Path("second.mkv"), *GreyImage(0)));
    EXPECT_EQ(LoadGreyMovie(path), Numbers(3));
    saver.End();
}

TEST_F(SavedFile, AMovieThatIsLoadedMeanwhileStaysLoaded) {
    const std::string other = WriteMovie(workspace, "other.mp4", GreyTrack());
    Saver saver;
    ASSERT_TRUE(saver.format.LoadHeaderTagList(other.c_str(), saver.tags));
    ASSERT_TRUE(saver.Start(path, *GreyImage(0)));
    ASSERT_TRUE(saver.Save(*GreyImage(0)));
    Image* image = nullptr;
    EXPECT_TRUE(saver.format.LoadFrameTagList(7, image, saver.tags));
    EXPECT_EQ(FrameOfImage(*image), 7);
    Image::Free(image);
    saver.End();
    EXPECT_FALSE(saver.format.LoadFrameTagList(8, image, saver.tags)) << "the end closes both";
    Image::Free(image);
}

TEST_F(SavedFile, OptionsStandInTheSettingsThatX264Writes) {
    Saver saver("Matroska", "H.264 [High]");
    saver.Set("KeyFrames", 12.0);
    saver.SetOptions("preset=slow,crf=18,");
    SaveGreyMovie(saver, path, 3);
    const SavedMovie movie(path);
    const std::string stream(movie.pictures.begin(), movie.pictures.end());
    EXPECT_NE(stream.find("x264 - core"), std::string::npos);
    for (const char* const setting : {" rc=crf ", " crf=18.0 ", " subme=8 "})
        EXPECT_NE(stream.find(setting), std::string::npos) << setting;
}

TEST_F(SavedFile, WithoutATimeCodeTheLargestCountIsTheTimeCode) {
    EXPECT_EQ(TimeCodeOf(nullptr, 24.0), "46:16:10:15") << "no metadata";
    EXPECT_EQ(TimeCodeOf("", 24.0), "46:16:10:15") << "metadata without a time code";
}

TEST_F(SavedFile, AnHourAtTwentyFiveArrivesAsItIs) {
    EXPECT_EQ(TimeCodeOf("01:00:00:00", 25.0), "01:00:00:00");
    EXPECT_EQ(TimeCodeOf("01:00:00:00", 24.0), "01:00:00:00");
}

TEST_F(SavedFile, AtFractionsOfARateTheTimeCodeMoves) {
    EXPECT_EQ(TimeCodeOf("01:00:00:00", 23.976), "01:02:36:12") << "86400 frames at 23";
    EXPECT_EQ(TimeCodeOf("01:00:00:00", 29.97), "01:02:04:04") << "108000 frames at 29";
    EXPECT_EQ(TimeCodeOf("01:00:00:00", 59.94), "01:01:01:01") << "216000 frames at 59";
}

TEST_F(SavedFile, ATextOfTwelveCharactersHasThreeDigitsOfFrames) {
    EXPECT_EQ(TimeCodeOf("00:00:00:100", 25.0), "00:00:04:00");
    EXPECT_EQ(TimeCodeOf("00:00:01:100", 25.0), "00:00:05:00");
}

TEST_F(SavedFile, ATextShorterThanElevenCharactersHasNoFrames) {
    EXPECT_EQ(TimeCodeOf("00:00:07", 25.0), "00:00:07:00");
    EXPECT_EQ(TimeCodeOf("00:00:07:", 25.0), "00:00:07:00");
    EXPECT_EQ(TimeCodeOf("00:00:07:1", 25.0), "00:00:07:00");
    EXPECT_EQ(TimeCodeOf("00:00:07:12", 25.0), "00:00:07:12");
}

TEST_F(SavedFile, ARateBelowOneCountsItsTimeCodeInSeconds) {
    EXPECT_EQ(TimeCodeOf(nullptr, 0.5), "86:28:15:00");
    EXPECT_EQ(TimeCodeOf("00:00:07:00", 0.5), "00:00:07:00");
}

TEST_F(SavedFile, AnImageWithoutMetadataKeepsTheTimeCodeOfTheSaveBefore) {
    Saver saver;
    SaveGreyMovie(saver, path, 2,
                  [](Image& image) { MetadataTable(image).FindKey("TimeCode") = "00:00:09:00"; });
    SaveGreyMovie(saver, path, 2);
    EXPECT_EQ(SavedMovie(path).Tag("timecode"), "00:00:09:00");
    SaveGreyMovie(saver, path, 2, [](Image& image) { MetadataTable(image); });
    EXPECT_EQ(SavedMovie(path).Tag("timecode"), "46:16:10:15");
}

TEST_F(SavedFile, MetadataThatAreNoTableAreNone) {
    Saver saver;
    SaveGreyMovie(saver, path, 2, [](Image& image) {
        image.ImageInfo.Set(ScriptVal_Table, nullptr);
        image.ImageInfo.FindKey("Metadata") = "TimeCode";
    });
    EXPECT_EQ(SavedMovie(path).Tag("timecode"), "46:16:10:15");
}

TEST_F(SavedFile, InterlacedPicturesOfTheNtscSizesHaveTheBottomFieldFirst) {
    EXPECT_EQ(FieldOrderOf(720, 486, true), AV_FIELD_BT);
    EXPECT_EQ(FieldOrderOf(720, 480, true), AV_FIELD_BT);
}

TEST_F(SavedFile, OtherInterlacedPicturesHaveTheTopFieldFirst) {
    EXPECT_EQ(FieldOrderOf(720, 576, true), AV_FIELD_TB);
    EXPECT_EQ(FieldOrderOf(64, 48, true), AV_FIELD_TB);
}

TEST_F(SavedFile, ProgressivePicturesAreSoAtAnySize) {
    EXPECT_EQ(FieldOrderOf(720, 486, false), AV_FIELD_PROGRESSIVE);
    EXPECT_EQ(FieldOrderOf(64, 48, false), AV_FIELD_PROGRESSIVE);
}

TEST_F(SavedFile, SquarePixelsAreSquare) {
    const AVRational aspect = ParametersOf(*MakeImage(64, 48), false).sample_aspect_ratio;
    EXPECT_EQ(aspect.num, 1);
    EXPECT_EQ(aspect.den, 1);
}

TEST_F(SavedFile, OfAnotherPixelAspectTheDenominatorArrivesAsANumber) {
    const ImagePtr narrow = MakeImage(64, 48);
    narrow->XAspect = 0.9;
    const AVRational aspect = ParametersOf(*narrow, false).sample_aspect_ratio;
    EXPECT_EQ(aspect.num, 10);
    EXPECT_EQ(aspect.den, 1);
}

TEST_F(SavedFile, ColoursAreThoseOfHdVideo) {
    const AVCodecParameters parameters = ParametersOf(*MakeImage(64, 48), false);
    EXPECT_EQ(parameters.color_primaries, AVCOL_PRI_BT709);
    EXPECT_EQ(parameters.color_trc, AVCOL_TRC_BT709);
    EXPECT_EQ(parameters.color_space, AVCOL_SPC_BT709);
}

} // namespace
