// Raw clips through the format class that the host finds for them, with the library that stands in for the
// camera maker's SDK.

#include "module/RawClipsSupport.h"

#include "cameraraw/RawValue.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <span>
#include <thread>

namespace {

/// How far a sample of a smooth picture may be from what it was made of: the sensor has 12 bits, and a darker
/// sample stands for more codes.
constexpr int32_t mostError = 200; // of 65535

/// The LUT mode that the library tells of a clip.
std::string LutModeOf(const std::string& path) {
    RawPointer<RawCodec> codec;
    RawPointer<RawClip> clip;
    RawPointer<RawClipSettings> settings;
    RawValue mode;
    EXPECT_EQ(NewFactory()->CreateCodec(codec.Receive()), S_OK);
    EXPECT_EQ(codec->OpenClip(RawValue(path).Get()->bstrVal, clip.Receive()), S_OK);
    EXPECT_EQ(clip->CloneClipSettings(settings.Receive()), S_OK);
    EXPECT_EQ(settings->GetAttribute(rawLutMode, mode.Receive()), S_OK);
    std::string text;
    mode.StoreIn(text);
    return text;
}

/// How far an image is from the picture, at the worst sample.
int32_t ErrorOf(Image& image, const RawPicture& picture, uint64_t frame) {
    int32_t most = 0;
    for (int32_t y = 0; y < image.Height; ++y) {
        const auto* row = reinterpret_cast<const uint16_t*>(image.RowTable[image.Height - 1 - y]);
        for (int32_t x = 0; x < image.Width; ++x, row += 4)
            for (uint32_t plane = 0; plane < 3; ++plane)
                most = std::max(most, std::abs(row[plane] - picture.At(frame, plane, static_cast<uint32_t>(x),
                                                                       static_cast<uint32_t>(y))));
    }
    return most;
}

std::string MetadataText(const Image& image, const char* key) {
    return image.ImageInfo.FindKeyConst("Metadata").FindKeyConst(key).ToString("-");
}

TEST_F(RawClips, TheHeaderTellsSizeCountAndRate) {
    ASSERT_TRUE(Open(Write({.frames = 5, .frameRate = 23.976F})));
    EXPECT_EQ(format->GetAttr(0x100000c8, 0), 64);
    EXPECT_EQ(format->GetAttr(0x100000c9, 0), 48);
    EXPECT_EQ(format->GetAttr(0x100000cb, 0), 5);
    EXPECT_EQ(format->GetAttr(0x200000c8, 0.0), static_cast<double>(23.976F));
}

TEST_F(RawClips, AnyFrameInAnyOrderIsThePictureThatItWasMadeOf) {
    const RawClipRecipe recipe = {.frames = 8};
    ASSERT_TRUE(Open(Write(recipe)));
    int32_t most = 0;
    for (const uint32_t frame : {7, 0, 3, 3, 2, 6, 1, 4, 5, 7}) {
        const ImagePtr image = Load(frame);
        ASSERT_NE(image, nullptr) << frame;
        most = std::max(most, ErrorOf(*image, recipe.picture, frame));
        EXPECT_GT(ErrorOf(*image, recipe.picture, (frame + 1) % 8), 500) << "frames differ";
    }
    EXPECT_LE(most, mostError);
    EXPECT_GE(most, mostError / 10) << "the bound is loose";
}

TEST_F(RawClips, OddSizesDecodeToo) {
    const RawClipRecipe recipe = {.picture = {37, 23}, .frames = 1};
    ASSERT_TRUE(Open(Write(recipe)));
    const ImagePtr image = Load(0);
    ASSERT_NE(image, nullptr);
    EXPECT_LE(ErrorOf(*image, recipe.picture, 0), mostError);
}

TEST_F(RawClips, JobsThatFinishLateAreWaitedFor) {
    const RawClipRecipe recipe;
    ASSERT_TRUE(Open(Write(recipe)));
    SdkControl().DelayJobs(5);
    const ImagePtr image = Load(1);
    ASSERT_NE(image, nullptr);
    EXPECT_LE(ErrorOf(*image, recipe.picture, 1), mostError);
}

TEST_F(RawClips, MetadataReachTheImageAndTheFramesWin) {
    ASSERT_TRUE(Open(Write()));
    const ImagePtr image = Load(2);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(MetadataText(*image, "camera"), "Größe A");
    EXPECT_EQ(MetadataText(*image, "take"), "2");
    EXPECT_EQ(MetadataText(*image, "TimeCode"), "01:00:00:02");
}

TEST_F(RawClips, AClipWithoutTimeCodesOpensAndTellsNone) {
    ASSERT_TRUE(Open(Write({.hasTimecodes = false})));
    const ImagePtr image = Load(0);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(MetadataText(*image, "camera"), "Größe A");
    EXPECT_EQ(MetadataText(*image, "TimeCode"), "-");
}

TEST_F(RawClips, AClipWithARateOf0OpensByItsTimeCodeAndNotWithoutOne) {
    EXPECT_TRUE(Open(Write({.frameRate = 0})));
    testing::internal::CaptureStderr();
    EXPECT_FALSE(Open(Write({.frameRate = 0, .hasTimecodes = false}, "none.vrel")));
    EXPECT_FALSE(Open(Write({.frameRate = -24}, "negative.vrel")));
    testing::internal::GetCapturedStderr();
}

TEST_F(RawClips, TheLutThatTheClipChoosesChangesThePicture) {
    rawsdk::ColorTable black;
    black.size = 2;
    black.colors.assign(8, {0, 0, 0});
    RawClipRecipe recipe = {.frames = 1, .table = black};
    recipe.settings.lutMode = rawsdk::lutEmbedded;
    const std::string path = Write(recipe);
    ASSERT_TRUE(Open(path));
    EXPECT_EQ(LutModeOf(path), "Embedded") << "whatever opening it has tried";
    const ImagePtr image = Load(0);
    ASSERT_NE(image, nullptr);
    const auto* const row = reinterpret_cast<const uint16_t*>(image->RowTable[10]);
    EXPECT_EQ(std::vector<uint16_t>(row, row + 4), (std::vector<uint16_t>{0, 0, 0, 65535}));
}

TEST_F(RawClips, AnotherClipOnTheOpenObjectTakesThePlaceOfTheFirst) {
    const RawClipRecipe large = {.picture = {96, 80}};
    ASSERT_TRUE(Open(Write()));
    ASSERT_TRUE(Open(Write(large, "large.vrel")));
    EXPECT_EQ(format->width, 96);
    const ImagePtr image = Load(1);
    ASSERT_NE(image, nullptr);
    EXPECT_LE(ErrorOf(*image, large.picture, 1), mostError);
}

TEST_F(RawClips, AFrameThatIsNotThereFailsAndTheOthersLoad) {
    ASSERT_TRUE(Open(Write()));
    testing::internal::CaptureStderr();
    EXPECT_EQ(Load(3), nullptr);
    EXPECT_EQ(Load(UINT32_MAX), nullptr);
    testing::internal::GetCapturedStderr();
    EXPECT_NE(Load(2), nullptr);
}

TEST_F(RawClips, AFileThatIsNoClipOrIsMissingIsRefused) {
    workspace.Write("none.vrel", "no clip");
    testing::internal::CaptureStderr();
    EXPECT_FALSE(Open(workspace.Path("none.vrel")));
    EXPECT_FALSE(Open(workspace.Path("missing.vrel")));
    const std::string words = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(words.starts_with("Vrel HRESULT = 0x")) << words;
    EXPECT_EQ(words.find('\n'), std::string::npos);
    EXPECT_TRUE(Open(Write()));
}

/// Where a frame's record stands in a clip's file.
rawsdk::FramePlace PlaceOf(const std::string& file, size_t frame) {
    const std::span<const uint8_t> bytes(reinterpret_cast<const uint8_t*>(file.data()), file.size());
    const rawsdk::ClipHeader header = rawsdk::ReadHeader(bytes.first(rawsdk::ClipHeader::bytes));
    const auto directory = bytes.subspan(header.directoryOffset, header.directorySize);
    return rawsdk::ReadDirectory(directory, header.directoryOffset).frames.at(frame);
}

TEST_F(RawClips, ADamagedFrameFailsAndTheOthersLoad) {
    std::ifstream clip(Write(), std::ios::binary);
    std::string file((std::istreambuf_iterator<char>(clip)), {});
    const rawsdk::FramePlace place = PlaceOf(file, 1);
    for (uint32_t i = place.size / 2; i < place.size; ++i)
        file[place.offset + i] = static_cast<char>(~file[place.offset + i]);
    workspace.Write("damaged.vrel", file);
    ASSERT_TRUE(Open(workspace.Path("damaged.vrel")));
    testing::internal::CaptureStderr();
    EXPECT_EQ(Load(1), nullptr);
    EXPECT_NE(testing::internal::GetCapturedStderr(), "");
    EXPECT_NE(Load(0), nullptr);
    EXPECT_NE(Load(2), nullptr);
}

TEST_F(RawClips, AJobThatFailsTwiceFailsTheFrameAndTheNextOneLoads) {
    ASSERT_TRUE(Open(Write()));
    SdkControl().Add({.call = "DecodeJob.Run", .times = 2});
    testing::internal::CaptureStderr();
    EXPECT_EQ(Load(0), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Vrel (WaitForDecodeJob) HRESULT = 0x80004005");
    EXPECT_NE(Load(0), nullptr);
}

TEST_F(RawClips, ObjectsOnSeveralThreadsDoNotDisturbEachOther) {
    const RawClipRecipe recipe = {.frames = 8};
    const std::string path = Write(recipe);
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&] {
            const std::unique_ptr<ImageFormat> own = NewFormat();
            TagList none;
            EXPECT_TRUE(own->LoadHeaderTagList(path.c_str(), none));
            for (uint32_t frame = 0; frame < 8; ++frame) {
                const ImagePtr image = MakeImage(64, 48);
                Image* target = image.get();
                EXPECT_TRUE(own->LoadFrameTagList(frame, target, none));
                EXPECT_LE(ErrorOf(*image, recipe.picture, frame), mostError);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

TEST_F(RawClips, AThousandFramesLeaveNoObjectBehind) {
    ASSERT_TRUE(Open(Write({.picture = {8, 8}})));
    const ImagePtr image = MakeImage(8, 8);
    Image* target = image.get();
    ASSERT_TRUE(format->LoadFrameTagList(0, target, tags));
    const uint64_t before = SdkControl().LiveObjects();
    for (uint32_t frame = 0; frame < 1000; ++frame)
        ASSERT_TRUE(format->LoadFrameTagList(frame % 3, target, tags));
    // A thread of the library lets go of a job after it has told of its end, so each may still hold its last
    // one.
    EXPECT_LT(SdkControl().LiveObjects(), before + 500) << "less than an object for each frame";
    format.reset();
    EXPECT_EQ(SdkControl().LiveObjects(), 0U);
}

TEST_F(RawClips, AJobThatKeepsItsRecordAtTheSecondTryRuns) {
    ASSERT_TRUE(Open(Write()));
    for (const char* const call :
         {"RawJob.SetUserData read", "RawJob.SetUserData decode", "RawJob.SetUserData process"}) {
        SdkControl().Add({.call = call, .times = 1});
        testing::internal::CaptureStderr();
        EXPECT_NE(Load(0), nullptr) << call;
        testing::internal::GetCapturedStderr();
    }
}

TEST_F(RawClips, AJobThatKeepsNoRecordIsNotWaitedForAndTheNextFrameLoads) {
    ASSERT_TRUE(Open(Write()));
    for (const char* const call :
         {"RawJob.SetUserData read", "RawJob.SetUserData decode", "RawJob.SetUserData process"}) {
        SdkControl().Add({.call = call, .times = 4});
        testing::internal::CaptureStderr();
        EXPECT_EQ(Load(0), nullptr) << call;
        EXPECT_NE(testing::internal::GetCapturedStderr(), "") << call;
        EXPECT_NE(Load(1), nullptr) << call;
    }
}

} // namespace
