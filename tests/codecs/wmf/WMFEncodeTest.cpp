// Samples from the encoder: what it is told and given, and what becomes of its output.

#include "codecs/wmf/WMFEncodeSupport.h"
#include "framework/AllocatorSpy.h"
#include "pixel/PixelConvert.h"

namespace {

using CxWMF::WMFCodec;

TEST_F(WMFEncode, SettingsMakeAnEncoderStepByStep) {
    Script().sequenceHeader = smallHeader;
    CxVideoSettings settings = EncoderSettings();
    settings.gopSize = 12;
    EXPECT_EQ(Configure(settings), CxAV_OK);
    EXPECT_EQ(AllCalls(), (Calls{"MFTEnumEx encoder 81 video YUY2 video H264",
                                 "ActivateObject IMFTransform",
                                 "GetStreamIDs",
                                 "GetOutputAvailableType 9 0",
                                 "GetOutputAvailableType 9 1",
                                 "SetUINT32 AVG_BITRATE=8000000",
                                 "SetUINT64 FRAME_RATE=1000:40",
                                 "SetUINT64 FRAME_SIZE=16:2",
                                 "SetUINT32 MAX_KEYFRAME_SPACING=12",
                                 "SetUINT32 INTERLACE_MODE=2",
                                 "SetUINT32 MPEG2_PROFILE=77",
                                 "QueryInterface ICodecAPI",
                                 "SetValue 95f31b26=12",
                                 "SetValue 972835ed=1",
                                 "SetValue 98332df8=100",
                                 "SetOutputType 9 H264",
                                 "GetBlobSize MPEG_SEQUENCE_HEADER",
                                 "GetBlob MPEG_SEQUENCE_HEADER",
                                 "GetInputAvailableType 7 0",
                                 "GetInputAvailableType 7 1",
                                 "SetUINT64 FRAME_RATE=1000:40",
                                 "SetUINT32 INTERLACE_MODE=2",
                                 "SetInputType 7 YUY2",
                                 "GetInputStatus 7",
                                 "ProcessMessage BEGIN_STREAMING 0"}));
    EXPECT_EQ(record_, smallRecord);
    EXPECT_EQ(codec_.GetWidth(), 16);
    EXPECT_EQ(codec_.GetHeight(), 2);
}

TEST_F(WMFEncode, ASourceThatIsOpenedMakesAnEncoderTwice) {
    WMFTrack track = H264Track(3);
    EXPECT_EQ(codec_.SetDataSource(&track), CxAV_OK);
    Calls calls = AllCalls();
    // What is said of types stands between.
    std::erase_if(calls, [](const std::string& call) {
        return !call.starts_with("MFTEnumEx") && !call.starts_with("Process");
    });
    EXPECT_EQ(calls,
              (Calls{"MFTEnumEx encoder 81 video YUY2 video H264", "ProcessMessage BEGIN_STREAMING 0",
                     "ProcessMessage END_STREAMING 0", "ProcessMessage FLUSH 0",
                     "MFTEnumEx encoder 81 video YUY2 video H264", "ProcessMessage BEGIN_STREAMING 0"}));
    Script().outputs = {SampleAt(0)};
    EXPECT_EQ(Encode(image_.get()), CxAV_OK);
    EXPECT_GT(frame_.size, 0U);
}

TEST_F(WMFEncode, WithoutABitRateTheQualityCounts) {
    CxVideoSettings settings = EncoderSettings();
    settings.bitRate = 0;
    settings.quality = 70;
    Configure(settings);
    EXPECT_EQ(Properties(), (Calls{"SetValue 1c0608e9=3", "SetValue fcbf57a3=70", "SetValue 972835ed=1",
                                   "SetValue 98332df8=70"}));
    settings.quality = 130;
    Configure(settings);
    EXPECT_EQ(Properties(), (Calls{"SetValue 1c0608e9=3", "SetValue fcbf57a3=100", "SetValue 972835ed=1",
                                   "SetValue 98332df8=130"}));
}

TEST_F(WMFEncode, FieldsAreToldInTheTypeAndAsAProperty) {
    CxVideoSettings settings = EncoderSettings();
    for (const uint32_t fieldOrder : {2U, 3U}) {
        settings.fieldOrder = fieldOrder;
        Configure(settings);
        EXPECT_TRUE(Asked("SetUINT32 INTERLACE_MODE=" + std::to_string(fieldOrder + 1)));
        EXPECT_EQ(Properties(),
                  (Calls{"SetValue acb5de96=0", "SetValue 972835ed=1", "SetValue 98332df8=100"}));
    }
}

TEST_F(WMFEncode, AFieldOrderThatIsNoneOfTheThreeIsNotToldInTheType) {
    CxVideoSettings settings = EncoderSettings();
    settings.fieldOrder = 0;
    Configure(settings);
    // The one of the input.
    EXPECT_TRUE(Asked("SetUINT32 INTERLACE_MODE=2"));
    EXPECT_EQ(Properties().front(), "SetValue acb5de96=0");
}

TEST_F(WMFEncode, AKeyFrameDistanceThatIsNotPositiveIsLeftToTheEncoder) {
    CxVideoSettings settings = EncoderSettings();
    for (const uint32_t distance : {0U, 0x80000000U}) {
        settings.gopSize = distance;
        Configure(settings);
        for (const std::string& call : AllCalls()) {
            EXPECT_FALSE(call.starts_with("SetUINT32 MAX_KEYFRAME_SPACING")) << call;
            EXPECT_FALSE(call.starts_with("SetValue 95f31b26")) << call;
        }
    }
}

TEST_F(WMFEncode, PropertiesThatAreRefusedAreLeftOut) {
    Script().results["SetValue"] = {E_FAIL, E_FAIL};
    EXPECT_EQ(Configure(), CxAV_OK);
    EXPECT_EQ(Properties(), (Calls{"SetValue 972835ed=1", "SetValue 98332df8=100"}));
}

TEST_F(WMFEncode, WithoutParameterSetsThereIsNoRecord) {
    CxVideoSettings settings = EncoderSettings();
    settings.extraData = {1, 2, 3};
    EXPECT_EQ(Configure(settings), CxAV_OK);
    EXPECT_EQ(record_, (Bytes{1, 2, 3}));
}

TEST_F(WMFEncode, ParameterSetsThatMakeNoRecordLeaveTheExtraData) {
    Script().sequenceHeader = {0, 0, 0, 1, 0x67};
    CxVideoSettings settings = EncoderSettings();
    settings.extraData = {1, 2, 3};
    EXPECT_EQ(Configure(settings), CxAV_OK);
    EXPECT_EQ(record_, (Bytes{1, 2, 3}));
}

TEST_F(WMFEncode, ParameterSetsEndWhereTheirBytesDo) {
    Script().sequenceHeader = smallHeader;
    Script().blobSlack = 5;
    EXPECT_EQ(Configure(), CxAV_OK);
    EXPECT_EQ(record_, smallRecord);
}

TEST_F(WMFEncode, ParameterSetsThatAreReadTwiceAtMostAreLeftOut) {
    Script().sequenceHeader = smallHeader;
    for (const char* const function : {"GetBlobSize", "GetBlob"}) {
        Script().results[function] = {E_FAIL};
        EXPECT_EQ(Configure(), CxAV_OK);
        EXPECT_EQ(record_, smallRecord);
        Script().results[function] = {E_FAIL, E_FAIL};
        EXPECT_EQ(Configure(), CxAV_OK);
        EXPECT_TRUE(record_.empty());
    }
}

TEST_F(WMFEncode, AnImageIsGivenAsYuvAndOneSampleTaken) {
    FillWith(*image_, {65535, 65535, 65535, 65535});
    Configure();
    AllCalls();
    Script().outputs = {SampleAt(0)};
    Bytes sample;
    EXPECT_EQ(Encode(image_.get(), &sample), CxAV_OK);
    EXPECT_EQ(sample, (Bytes{0, 0, 0, 2, 0x65, 0x88}));
    std::string picture;
    for (int i = 0; i < 32; ++i)
        picture += "80eb";
    EXPECT_EQ(AllCalls(), (Calls{"GetOutputStreamInfo 9",
                                 "MFCreateMemoryBuffer 64",
                                 "Lock",
                                 "Unlock",
                                 "SetCurrentLength 64",
                                 "MFCreateSample",
                                 "AddBuffer",
                                 "ProcessInput 7 " + picture + " at 1000000000 for 400000",
                                 "Release sample",
                                 "Release buffer",
                                 "GetOutputStatus",
                                 "GetOutputStreamInfo 9",
                                 "MFCreateSample",
                                 "MFCreateMemoryBuffer 64",
                                 "AddBuffer",
                                 "ProcessOutput 0 1 9",
                                 "GetSampleTime",
                                 "GetSampleDuration",
                                 "ConvertToContiguousBuffer",
                                 "GetCurrentLength",
                                 "Lock",
                                 "Unlock",
                                 "Release buffer",
                                 "Release sample",
                                 "Release buffer"}));
}

TEST_F(WMFEncode, PicturesAreWrittenUnderTheCodeUyvyWhateverTheEncoderTakes) {
    std::mt19937 random = MakeRandom();
    FillAtRandom(*image_, random);
    Configure();
    AllCalls();
    Encode(image_.get());
    uint8_t* blob = nullptr;
    Image* image = image_.get();
    ASSERT_TRUE(PixelConvert::ImageToBlob(image, static_cast<int32_t>(FourCC("uyvy")), 32, blob, false));
    std::string picture;
    constexpr const char* digits = "0123456789abcdef";
    for (int i = 0; i < 64; ++i)
        picture += {digits[blob[i] >> 4], digits[blob[i] & 15]};
    Platform::FreeMemAligned(blob);
    EXPECT_TRUE(Asked("ProcessInput 7 " + picture + " at 1000000000 for 400000"));
}

TEST_F(WMFEncode, TheFirstFramesGiveNoDataAndANullImageDrainsThem) {
    Configure();
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(Encode(image_.get()), CxAV_OK);
        EXPECT_EQ(frame_.data, nullptr);
        EXPECT_EQ(frame_.size, 0U);
        EXPECT_EQ(codec_.GetLastError(), CxAV_NEED_MORE_DATA);
    }
    Script().outputs = {SampleAt(0), SampleAt(40), SampleAt(80)};
    AllCalls();
    for (int64_t i = 0; i < 3; ++i) {
        Bytes sample;
        EXPECT_EQ(Encode(nullptr, &sample), CxAV_OK);
        EXPECT_EQ(sample, (Bytes{0, 0, 0, 2, 0x65, 0x88}));
        EXPECT_EQ(frame_.timing.presentationTime, 40 * i);
        EXPECT_EQ(TransformCalls(),
                  (Calls{"GetOutputStreamInfo 9", "ProcessMessage DRAIN 0", "GetOutputStatus",
                         "GetOutputStreamInfo 9", "ProcessOutput 0 1 9"}));
    }
    EXPECT_EQ(Encode(nullptr), CxAV_OK);
    EXPECT_EQ(frame_.data, nullptr);
}

TEST_F(WMFEncode, ADrainThatFailsIsTriedTwice) {
    Configure();
    Script().results["ProcessMessage"] = {E_FAIL, E_FAIL};
    AllCalls();
    EXPECT_EQ(Encode(nullptr), CxAV_OK);
    EXPECT_EQ(std::ranges::count(AllCalls(), "ProcessMessage DRAIN 0"), 2);
}

TEST_F(WMFEncode, TimesOfImagesRiseByTheDurationFrom100Seconds) {
    Configure();
    std::vector<int64_t> times;
    Script().onInput = [&times](int64_t time) { times.push_back(time); };
    for (int i = 0; i < 3; ++i)
        Encode(image_.get());
    EXPECT_EQ(times, (std::vector<int64_t>{1000000000, 1000400000, 1000800000}));
}

TEST_F(WMFEncode, TimesAreNotBoundByWhatHasRoom) {
    CxVideoSettings settings = EncoderSettings();
    settings.frameDuration = 0xffffffff;
    Configure(settings);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(Encode(image_.get()), CxAV_OK);
    Script().outputs = {MFOutput{.time = INT64_MIN, .duration = INT64_MAX, .bytes = {0, 0, 1, 5}}};
    EXPECT_EQ(Encode(nullptr), CxAV_OK);
    EXPECT_EQ(frame_.timing.presentationTime, INT64_MIN / ticks - 100000);
}

TEST_F(WMFEncode, TheTimingIsThatOfTheSample) {
    Configure();
    MFOutput key = SampleAt(80);
    key.cleanPoint = 1;
    MFOutput other = SampleAt(40);
    other.cleanPoint = 2;
    other.duration = 40 * ticks + 9999;
    Script().outputs = {key, other, SampleAt(0)};
    EXPECT_EQ(Encode(image_.get()), CxAV_OK);
    EXPECT_EQ(frame_.timing.presentationTime, 80);
    EXPECT_EQ(frame_.timing.decodeTime, 0);
    EXPECT_EQ(frame_.timing.duration, 40);
    EXPECT_EQ(frame_.timing.timeBase, 32U);
    EXPECT_TRUE(frame_.timing.isKeyFrame);
    EXPECT_EQ(Encode(image_.get()), CxAV_OK);
    EXPECT_EQ(frame_.timing.presentationTime, 40);
    EXPECT_EQ(frame_.timing.decodeTime, 40);
    EXPECT_EQ(frame_.timing.duration, 40);
    EXPECT_FALSE(frame_.timing.isKeyFrame);
    EXPECT_EQ(Encode(image_.get()), CxAV_OK);
    EXPECT_EQ(frame_.timing.decodeTime, 80);
    EXPECT_FALSE(frame_.timing.isKeyFrame);
}

TEST_F(WMFEncode, ASampleIsAlignedAndHasRoomForLongerPrefixes) {
    Configure();
    Script().outputs = {SampleAt(0)};
    AllocatorSpy::Reset();
    EXPECT_EQ(Encode(image_.get()), CxAV_OK);
    EXPECT_EQ(AllocatorSpy::lastSize, 6 + 1024);
    EXPECT_EQ(AllocatorSpy::lastAlignment, 4096);
    EXPECT_EQ(AllocatorSpy::allocations, AllocatorSpy::frees);
}

TEST_F(WMFEncode, AnImageOfAnotherSizeGetsAPictureOfItsOwnSize) {
    Configure();
    const ImagePtr image = MakeImage(9, 3);
    EXPECT_EQ(Encode(image.get()), CxAV_OK);
    EXPECT_TRUE(Asked("MFCreateMemoryBuffer 54"));
    EXPECT_EQ(codec_.GetWidth(), 9);
    EXPECT_EQ(codec_.GetHeight(), 3);
}

TEST_F(WMFEncode, AnEncoderIsEndedFlushedAndReleasedWithItsCodec) {
    {
        WMFCodec codec(CxAV_ENCODE, nullptr);
        CxVideoSettings settings = EncoderSettings();
        EXPECT_EQ(codec.SetEncoderSettings(settings), CxAV_OK);
        AllCalls();
    }
    EXPECT_EQ(AllCalls(),
              (Calls{"ProcessMessage END_STREAMING 0", "ProcessMessage FLUSH 0", "CoUninitialize"}));
}

TEST_F(WMFEncode, NewSettingsStartNewTimes) {
    Configure();
    Script().outputs = {SampleAt(0)};
    Encode(image_.get());
    Configure();
    int64_t given = 0;
    Script().onInput = [&given](int64_t time) { given = time; };
    Script().outputs = {SampleAt(0)};
    Encode(image_.get());
    EXPECT_EQ(given, 100000 * ticks);
    EXPECT_EQ(frame_.timing.decodeTime, 0);
}

} // namespace
