// What is told of a movie, and where each value comes from.

#include "MediaFiles.h"
#include "framework/CxAVTypes.h"
#include "media/MovieTrackSource.h"

#include <gtest/gtest.h>

namespace {

std::unique_ptr<MovieTrackSource> Make(const TempFolder& folder, const std::string& name,
                                       const std::string& input, const std::string& arguments) {
    RunFfmpeg(input + " " + arguments + " '" + (folder / name) + "'");
    return MovieTrackSource::Open(folder / name);
}

void ExpectValue(const TrackValue& value, int number, const std::string& text, ValueSource source) {
    EXPECT_EQ(value.value, number);
    EXPECT_EQ(value.text, text);
    EXPECT_EQ(value.source, source) << ValueSourceName(value.source);
}

const std::string h264 = "-pix_fmt yuv420p -c:v libx264 ";

TEST(TrackDescription, CodedSizeIncludesThePaddingThatIsCropped) {
    const TempFolder folder;
    const auto source = Make(folder, "a.mp4", TestPicture(120, 90, "25", 2), h264);
    EXPECT_EQ(source->Info().width, 120);
    EXPECT_EQ(source->Info().height, 90);
    EXPECT_EQ(source->Info().codedWidth, 128);
    EXPECT_EQ(source->Info().codedHeight, 96);
    EXPECT_EQ(source->GetHeight(), 90);
}

TEST(TrackDescription, UncompressedPicturesHaveNoPadding) {
    const TempFolder folder;
    const auto source = Make(folder, "a.mov", TestPicture(50, 30, "25", 2), "-c:v v210");
    EXPECT_EQ(source->Info().codedWidth, 50);
    EXPECT_EQ(source->Info().codedHeight, 30);
    EXPECT_EQ(source->Info().codecName, "v210");
    EXPECT_EQ(source->Info().containerTag, FourCC("v210"));
}

TEST(TrackDescription, ThePixelAspectWidensTheDisplay) {
    const TempFolder folder;
    const auto source = Make(folder, "a.mov", TestPicture(90, 60, "25", 2), "-vf setsar=4/3 -c:v v210");
    EXPECT_EQ(source->Info().sampleAspect, (Rational{4, 3}));
    EXPECT_EQ(source->Info().displayWidth, 120);
    EXPECT_EQ(source->Info().displayHeight, 60);
}

TEST(TrackDescription, ColourComesFromTheContainer) {
    const TempFolder folder;
    const auto source =
        Make(folder, "a.mov", TestPicture(64, 48, "25", 2),
             "-c:v v210 -color_primaries smpte170m -color_trc smpte170m -colorspace smpte170m");
    ExpectValue(source->Info().colorMatrix, 6, "smpte170m", ValueSource::Container);
    ExpectValue(source->Info().colorPrimaries, 6, "smpte170m", ValueSource::Container);
    EXPECT_EQ(source->GetColorMatrix(), 3);
    EXPECT_EQ(source->GetColorPrimaries(), 2);
}

TEST(TrackDescription, ColourComesFromTheBitstreamWhereTheContainerIsSilent) {
    const TempFolder folder;
    const auto source =
        Make(folder, "a.mts", TestPicture(64, 48, "25", 10),
             h264 + "-color_primaries smpte240m -color_trc smpte240m -colorspace smpte240m -color_range pc");
    ExpectValue(source->Info().colorMatrix, 7, "smpte240m", ValueSource::Bitstream);
    ExpectValue(source->Info().colorRange, 2, "pc", ValueSource::Bitstream);
    EXPECT_EQ(source->GetColorMatrix(), 4);
    EXPECT_EQ(source->GetColorPrimaries(), 3);
    EXPECT_EQ(source->GetColorRange(), 2);
}

TEST(TrackDescription, WhatNobodyTellsIsAssumed) {
    const TempFolder folder;
    const auto source = Make(folder, "a.avi", TestPicture(64, 48, "25", 2), "-c:v v210");
    ExpectValue(source->Info().colorMatrix, 1, "bt709", ValueSource::Assumed);
    ExpectValue(source->Info().colorPrimaries, 1, "bt709", ValueSource::Assumed);
    ExpectValue(source->Info().colorTransfer, 1, "bt709", ValueSource::Assumed);
    ExpectValue(source->Info().colorRange, 1, "tv", ValueSource::Assumed);
    ExpectValue(source->Info().fieldOrder, 1, "progressive", ValueSource::Assumed);
    EXPECT_EQ(source->GetColorMatrix(), 1);
    EXPECT_EQ(source->GetColorPrimaries(), 1);
    EXPECT_EQ(source->GetColorRange(), 1);
    EXPECT_EQ(source->GetFieldOrder(), 1);
}

TEST(TrackDescription, FieldOrderComesFromTheBitstream) {
    const TempFolder folder;
    const auto top =
        Make(folder, "t.mts", TestPicture(128, 96, "25", 10), h264 + "-flags +ildct+ilme -x264opts tff=1");
    ExpectValue(top->Info().fieldOrder, 2, "tt", ValueSource::Bitstream);
    const auto bottom =
        Make(folder, "b.mts", TestPicture(128, 96, "25", 10), h264 + "-flags +ildct+ilme -x264opts bff=1");
    ExpectValue(bottom->Info().fieldOrder, 3, "bb", ValueSource::Bitstream);
}

TEST(TrackDescription, EveryStreamIsListed) {
    const TempFolder folder;
    const auto source = Make(folder, "a.mov", "-f lavfi -i sine -f lavfi -i testsrc=s=64x48:r=25",
                             "-map 0 -map 1 -c:v v210 -t 0.2 -timecode 10:00:00:00");
    const auto& streams = source->Info().streams;
    ASSERT_EQ(streams.size(), 3u);
    EXPECT_EQ(streams[0].type, "audio");
    EXPECT_EQ(streams[1].type, "video");
    EXPECT_EQ(streams[1].fourCCText, "v210");
    EXPECT_EQ(streams[2].type, "data");
    EXPECT_EQ(source->Info().streamIndex, 1);
    EXPECT_EQ(source->Info().timeCode, "10:00:00:00");
}

TEST(TrackDescription, MetadataOfTheFileIsTold) {
    const TempFolder folder;
    const auto source =
        Make(folder, "a.mov", TestPicture(64, 48, "25", 2), "-c:v v210 -metadata title='A moth'");
    EXPECT_EQ(source->Info().metadata.at("title"), "A moth");
    EXPECT_EQ(source->Info().timeCode, "");
}

TEST(TrackDescription, TimesAreExact) {
    const TempFolder folder;
    const auto source = Make(folder, "a.mov", TestPicture(64, 48, "30000/1001", 7), "-c:v v210");
    EXPECT_EQ(source->Info().duration, (Rational{7007, 30000}));
    EXPECT_EQ(source->Info().startTime, (Rational{0, 1}));
    EXPECT_EQ(source->Info().frameCount, 7);
    EXPECT_EQ(source->Info().bitRate / 1000, int64_t{256 * 48 * 8} * 30000 / 1001 / 1000);
}

TEST(TrackDescription, TheProfileAndTheConfigurationRecordAreTold) {
    const TempFolder folder;
    const auto source = Make(folder, "a.mp4", TestPicture(64, 48, "25", 2), h264 + "-profile:v high");
    EXPECT_EQ(source->Info().profile, "High");
    EXPECT_EQ(source->Info().pixelFormat, "yuv420p");
    ASSERT_FALSE(source->Info().extraData.empty());
    EXPECT_EQ(source->Info().extraData[0], 1); // avcC begins with its version
    EXPECT_EQ(source->GetCodecPrivateData(), &source->Info().extraData);
}

} // namespace
