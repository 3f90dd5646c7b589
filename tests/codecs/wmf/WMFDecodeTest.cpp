// Frames from the decoder: what it is asked for each sample, and what becomes of its pictures.

#include "codecs/wmf/WMFDecodeSupport.h"
#include "pixel/PixelConvert.h"

namespace {

using CxWMF::WMFCodec;

TEST_F(WMFDecode, ASampleIsGivenAndAllOutputTakenUntilMoreInputIsNeeded) {
    EXPECT_EQ(DecodeSample({0, 0, 0, 1, 0x65}, 40, 40), CxAV_OK);
    EXPECT_EQ(AllCalls(),
              (Calls{"MFCreateMemoryBuffer 5", "Lock", "Unlock", "SetCurrentLength 5", "MFCreateSample",
                     "AddBuffer", "Release buffer", "ProcessInput 7 0000000165 at 400000 for 10000000",
                     "Release sample", "GetOutputStreamInfo 9",
                     // The frame, whose buffer is dropped at once and which itself is released by its owner.
                     "MFCreateSample", "MFCreateMemoryBuffer 64", "AddBuffer", "ProcessOutput 0 1 9",
                     "GetSampleTime", "GetSampleDuration", "Release buffer",
                     // No more.
                     "MFCreateSample", "MFCreateMemoryBuffer 64", "AddBuffer", "ProcessOutput 0 1 9",
                     "Release sample", "Release buffer", "Release sample"}));
}

TEST_F(WMFDecode, ASampleOfTime0GetsNoTimeAndNoDuration) {
    EXPECT_EQ(DecodeSample({0, 0, 0, 1, 0x65}, 0, 0), CxAV_OK);
    EXPECT_EQ(TransformCalls().front(), "ProcessInput 7 0000000165");
}

TEST_F(WMFDecode, AFrameWithoutATimeIsThatOfTime0) {
    Script().onInput = nullptr;
    Script().outputs = {MFOutput{.bytes = {1}}};
    EXPECT_EQ(DecodeSample({0, 0, 0, 1, 0x65}, 0, 0), CxAV_OK);
}

TEST_F(WMFDecode, TimesAreCutToMilliseconds) {
    Script().onInput = nullptr;
    Script().outputs = {MFOutput{.time = 40 * ticks + 9999, .bytes = {1}}};
    EXPECT_EQ(DecodeSample({0, 0, 0, 1, 0x65}, 40, 40), CxAV_OK);
}

TEST_F(WMFDecode, LengthsBecomeStartCodesInACopyOfTheSample) {
    const Bytes sample = {0, 0, 0, 2, 0x65, 0x11, 0, 0, 0, 1, 0x41};
    EXPECT_EQ(DecodeSample(sample, 40, 40), CxAV_OK);
    EXPECT_EQ(TransformCalls().front(), "ProcessInput 7 0000000165110000000141 at 400000 for 10000000");
    track_.samples[0] = sample;
    EXPECT_EQ(Decode(0), CxAV_OK);
    EXPECT_EQ(track_.samples[0], sample);
}

TEST_F(WMFDecode, ASampleThatIsTakenWithoutAFrameNeedsMoreData) {
    Script().onInput = nullptr;
    EXPECT_EQ(DecodeSample({0, 0, 0, 1, 0x65}, 40, 40), CxAV_NEED_MORE_DATA);
}

TEST_F(WMFDecode, ASampleThatIsNotAcceptedIsGivenAgainOnceOutputWasTaken) {
    Script().results["ProcessInput"] = {MF_E_NOTACCEPTING, MF_E_NOTACCEPTING};
    Script().outputs = {PictureAt(0)};
    EXPECT_EQ(DecodeSample({0, 0, 0, 1, 0x65}, 40, 0), CxAV_OK);
    const std::string given = "ProcessInput 7 0000000165 at 400000 for 10000000";
    EXPECT_EQ(TransformCalls(), (Calls{given, given, "GetOutputStreamInfo 9", "ProcessOutput 0 1 9",
                                       "ProcessOutput 0 1 9", given}));
}

TEST_F(WMFDecode, ASampleThatIsGivenAgainIsRetriedOnce) {
    Script().results["ProcessInput"] = {MF_E_NOTACCEPTING, MF_E_NOTACCEPTING, E_FAIL, E_FAIL};
    EXPECT_EQ(DecodeSample({0, 0, 0, 1, 0x65}, 40, 0), CxAV_NEED_MORE_DATA);
    EXPECT_EQ(TransformCalls().size(), 6U);
}

TEST_F(WMFDecode, ASampleThatIsNotAcceptedIsNotGivenAgainAfterAFailure) {
    Script().results["ProcessInput"] = {MF_E_NOTACCEPTING, MF_E_NOTACCEPTING};
    Script().results["ProcessOutput"] = {E_FAIL};
    EXPECT_EQ(DecodeSample({0, 0, 0, 1, 0x65}, 40, 0), CxAV_INVALID_STATE);
    EXPECT_EQ(TransformCalls().size(), 4U);
}

TEST_F(WMFDecode, NoSampleEndsTheStreamAndDrains) {
    Script().outputs = {PictureAt(0)};
    EXPECT_EQ(DecodeSample({}, 0, 0), CxAV_OK);
    EXPECT_EQ(TransformCalls(),
              (Calls{"ProcessMessage END_OF_STREAM 0", "ProcessMessage DRAIN 0", "GetOutputStreamInfo 9",
                     "ProcessOutput 0 1 9", "ProcessOutput 0 1 9"}));
}

TEST_F(WMFDecode, MessagesOfADrainAreEachTriedTwice) {
    Script().results["ProcessMessage"] = {E_FAIL, E_FAIL, E_FAIL};
    EXPECT_EQ(DecodeSample({}, 0, 0), CxAV_INVALID_STATE);
    const Calls calls = TransformCalls();
    EXPECT_EQ(Calls(calls.begin(), calls.begin() + 4),
              (Calls{"ProcessMessage END_OF_STREAM 0", "ProcessMessage END_OF_STREAM 0",
                     "ProcessMessage DRAIN 0", "ProcessMessage DRAIN 0"}));
}

TEST_F(WMFDecode, AStreamChangeInTheMiddleOfACallIsMetWithTheTypeAndGoesOn) {
    Script().onInput = [](int64_t) { Script().outputs = {PictureAt(0), StreamChange(), PictureAt(40)}; };
    EXPECT_EQ(DecodeSample({0, 0, 0, 1, 0x65}, 40, 40), CxAV_OK);
    EXPECT_EQ(TransformCalls(),
              (Calls{"ProcessInput 7 0000000165 at 400000 for 10000000", "GetOutputStreamInfo 9",
                     "ProcessOutput 0 1 9", "ProcessOutput 0 1 9", "GetOutputAvailableType 9 0",
                     "GetOutputAvailableType 9 1", "GetOutputAvailableType 9 2", "SetOutputType 9 YUY2",
                     "GetOutputStreamInfo 9", "ProcessOutput 0 1 9", "ProcessOutput 0 1 9"}));
}

TEST_F(WMFDecode, AfterAStreamChangeTheSampleIsReleasedOnceTheTypeIsSet) {
    Script().onInput = [](int64_t) { Script().outputs = {StreamChange()}; };
    EXPECT_EQ(DecodeSample({0, 0, 0, 1, 0x65}, 40, 40), CxAV_NEED_MORE_DATA);
    const Calls calls = AllCalls();
    const auto change = std::ranges::find(calls, "ProcessOutput 0 1 9");
    ASSERT_GT(calls.end() - change, 8);
    EXPECT_EQ(Calls(change, change + 9),
              (Calls{"ProcessOutput 0 1 9", "GetOutputAvailableType 9 0", "GetOutputAvailableType 9 1",
                     "GetOutputAvailableType 9 2", "SetOutputType 9 YUY2", "GetOutputStreamInfo 9",
                     "Release sample", "Release buffer", "MFCreateSample"}));
}

TEST_F(WMFDecode, AfterAStreamChangeTheSubtypeAloneCounts) {
    Script().isOutputAudio = true;
    Script().outputs = {StreamChange()};
    EXPECT_EQ(DecodeSample({0, 0, 0, 1, 0x65}, 40, 40), CxAV_OK);
    EXPECT_EQ(std::ranges::count(AllCalls(), "SetOutputType 9 YUY2"), 1);
}

TEST_F(WMFDecode, TheCallerDoesNotSeeAStreamChange) {
    Script().changedOutputSize = 128;
    Script().onInput = [](int64_t time) {
        Script().outputs = {StreamChange(), PictureAt(time / ticks, 235)};
    };
    EXPECT_EQ(Decode(0), CxAV_OK);
    EXPECT_EQ(std::ranges::count(AllCalls(), "MFCreateMemoryBuffer 128"), 2);
    EXPECT_NEAR(PixelAt(*image_, 15, 1).G, 65535, 2);
}

TEST_F(WMFDecode, ATypeAfterAStreamChangeIsSetTwiceIfItFails) {
    Script().outputs = {StreamChange()};
    Script().results["SetOutputType"] = {E_FAIL, E_FAIL};
    EXPECT_EQ(DecodeSample({0, 0, 0, 1, 0x65}, 40, 40), CxAV_OK);
    EXPECT_EQ(std::ranges::count(AllCalls(), "SetOutputType 9 YUY2"), 2);
}

TEST_F(WMFDecode, AFlushThatFailsIsTriedTwice) {
    Script().results["ProcessMessage"] = {E_FAIL, E_FAIL};
    codec_.Flush();
    EXPECT_EQ(AllCalls(), (Calls{"ProcessMessage FLUSH 0", "ProcessMessage FLUSH 0"}));
}

TEST_F(WMFDecode, AFlushWithoutATransformDoesNothing) {
    WMFCodec codec(CxAV_DECODE, nullptr);
    AllCalls();
    codec.Flush();
    EXPECT_TRUE(AllCalls().empty());
}

TEST_F(WMFDecode, PicturesAreReadUnderTheCodeUyvyWhateverTheyAre) {
    std::mt19937 random = MakeRandom();
    const Bytes picture = RandomBytes(16 * 2 * 2, random);
    Script().onInput = [&picture](int64_t) { Script().outputs = {MFOutput{.bytes = picture}}; };
    EXPECT_EQ(Decode(0), CxAV_OK);
    const ImagePtr expected = MakeImage(16, 2);
    Image* image = expected.get();
    Bytes blob = picture;
    ASSERT_TRUE(PixelConvert::BlobToImage(blob.data(), 32, FourCC("uyvy"), image));
    for (int32_t y = 0; y < 2; ++y)
        for (int32_t x = 0; x < 16; ++x)
            ASSERT_EQ(PixelAt(*image_, x, y), PixelAt(*expected, x, y));
}

TEST_F(WMFDecode, RowsAreThoseOfAWidthOfWholeMacroblocks) {
    track_.width = 20;
    Open();
    image_ = MakeImage(20, 2);
    Bytes picture(64, 16);
    picture.resize(128, 235);
    for (size_t i = 0; i < picture.size(); i += 2)
        picture[i] = 128;
    Script().outputSize = 128;
    Script().onInput = [&picture](int64_t) { Script().outputs = {MFOutput{.bytes = picture}}; };
    EXPECT_EQ(Decode(0), CxAV_OK);
    for (int32_t x = 0; x < 20; ++x) {
        EXPECT_NEAR(PixelAt(*image_, x, 0).G, 0, 2) << x;
        EXPECT_NEAR(PixelAt(*image_, x, 1).G, 65535, 2) << x;
    }
}

TEST_F(WMFDecode, AnImageThatTheConversionRefusesCountsAsDecodedAndStays) {
    // Enough bytes, but in rows of fewer pixels than the image has.
    Script().outputSize = 128;
    Script().onInput = [](int64_t) { Script().outputs = {MFOutput{.bytes = Bytes(128, 235)}}; };
    image_ = MarkedImage(17, 2);
    EXPECT_EQ(Decode(0), CxAV_OK);
    EXPECT_TRUE(IsFilledWith(*image_, marker));
}

TEST_F(WMFDecode, APictureIsLockedAsLongAsItIsRead) {
    EXPECT_EQ(Decode(0), CxAV_OK);
    AllCalls();
    EXPECT_EQ(Decode(0), CxAV_OK);
    EXPECT_EQ(AllCalls(),
              (Calls{"ConvertToContiguousBuffer", "GetCurrentLength", "Lock", "Unlock", "Release buffer"}));
}

TEST_F(WMFDecode, NoMetadataAreWritten) {
    EXPECT_EQ(Decode(0), CxAV_OK);
    EXPECT_FALSE(image_->ImageInfo.IsTable());
}

} // namespace
