// Damaged samples, a decoder that fails and pictures that are not what they should be.

#include "codecs/wmf/WMFTestSupport.h"
#include "support/HeapSpy.h"

namespace {

using CxWMF::WMFCodec;

class WMFFailures : public WMFTest {
protected:
    WMFFailures() {
        EXPECT_EQ(codec_.SetDataSource(&track_), CxAV_OK);
        AllCalls();
        WorkAgain();
    }

    static void WorkAgain() {
        Script().results.clear();
        Script().empty.clear();
        Script().outputs.clear();
        Script().mostLocked = 0xffffffff;
        Script().onInput = [](int64_t time) { Script().outputs.push_back(PictureAt(time / ticks, 235)); };
    }
    CxAVError Decode(int32_t frame) { return ::Decode(codec_, frame, image_.get()); }
    CxAVError DecodeSample(uint8_t* data, int32_t size) {
        CxDecodeRequest request;
        request.sampleTime = request.targetTime = 40;
        IMFSample* frame = nullptr;
        const CxAVError result = codec_.DecodeSample(data, size, frame, request);
        codec_.ReleaseDecodedFrame(frame);
        return result;
    }
    void ExpectThatDecodingWorks() {
        WorkAgain();
        EXPECT_EQ(Decode(1), CxAV_OK);
        EXPECT_NEAR(PixelAt(*image_, 0, 0).G, 65535, 2);
    }
    /// A frame whose picture can't be converted leaves the image alone, and the next one works.
    void ExpectThatAPictureFails(const MFOutput& output) {
        Script().onInput = [&output](int64_t) { Script().outputs = {output}; };
        EXPECT_EQ(Decode(0), CxAV_FAILED);
        EXPECT_TRUE(IsFilledWith(*image_, marker));
        ExpectThatDecodingWorks();
    }

    WMFTrack track_ = H264Track(3);
    WMFCodec codec_{CxAV_DECODE, nullptr};
    ImagePtr image_ = MakeImage(16, 2);
    Bytes sample_ = {0, 0, 0, 1, 0x65};

private:
    void SetUp() override { FillWith(*image_, marker); }
};

/// A function that fails for good, and what a sample then comes to.
struct Failure {
    const char* function;
    CxAVError expected;
};

class WMFSampleFailure : public WMFFailures, public testing::WithParamInterface<Failure> {};

TEST_P(WMFSampleFailure, HasItsResultAndDecodingGoesOn) {
    Script().results[GetParam().function] = {E_FAIL, E_FAIL, E_FAIL, E_FAIL};
    EXPECT_EQ(DecodeSample(sample_.data(), 5), GetParam().expected);
    EXPECT_EQ(codec_.GetLastError(), GetParam().expected);
    ExpectThatDecodingWorks();
}

INSTANTIATE_TEST_SUITE_P(Each, WMFSampleFailure,
                         testing::Values(Failure{"MFCreateMemoryBuffer", CxAV_INVALID_STATE},
                                         Failure{"MFCreateSample", CxAV_INVALID_STATE},
                                         Failure{"AddBuffer", CxAV_INVALID_STATE},
                                         Failure{"Lock", CxAV_NEED_MORE_DATA},
                                         Failure{"SetCurrentLength", CxAV_NEED_MORE_DATA},
                                         Failure{"ProcessInput", CxAV_NEED_MORE_DATA},
                                         Failure{"GetOutputStreamInfo", CxAV_INVALID_STATE},
                                         Failure{"ProcessOutput", CxAV_INVALID_STATE}),
                         [](const auto& failure) { return std::string(failure.param.function); });

TEST_F(WMFFailures, ADamagedSampleCountsAsTakenAndTheNextFrameComes) {
    track_.keyDistance = 3;
    Script().results["ProcessInput"] = {E_FAIL, E_FAIL};
    EXPECT_EQ(Decode(1), CxAV_OK);
    const Calls calls = TransformCalls();
    EXPECT_EQ(std::ranges::count(calls, "ProcessInput 7 0000000100"), 2);
    EXPECT_EQ(std::ranges::count(calls, "ProcessInput 7 0000000101 at 400000 for 10000000"), 1);
}

TEST_F(WMFFailures, AFeedThatFailsOnceIsMadeAgain) {
    Script().results["MFCreateMemoryBuffer"] = {E_OUTOFMEMORY};
    EXPECT_EQ(DecodeSample(sample_.data(), 5), CxAV_OK);
}

TEST_F(WMFFailures, ASizeBelow0OrWithoutDataGivesTheDecoderNothing) {
    EXPECT_EQ(DecodeSample(sample_.data(), -1), CxAV_NEED_MORE_DATA);
    EXPECT_EQ(DecodeSample(nullptr, 5), CxAV_NEED_MORE_DATA);
    for (const std::string& call : AllCalls())
        EXPECT_FALSE(call.starts_with("ProcessInput")) << call;
    ExpectThatDecodingWorks();
}

TEST_F(WMFFailures, ABufferWithTooLittleRoomForASampleGivesTheDecoderNothing) {
    Script().mostLocked = 4;
    EXPECT_EQ(DecodeSample(sample_.data(), 5), CxAV_NEED_MORE_DATA);
    for (const std::string& call : AllCalls())
        EXPECT_FALSE(call.starts_with("ProcessInput")) << call;
    ExpectThatDecodingWorks();
}

TEST_F(WMFFailures, WithoutATransformASampleIsUnsupported) {
    WMFCodec codec(CxAV_DECODE, nullptr);
    IMFSample* frame = nullptr;
    CxDecodeRequest request;
    EXPECT_EQ(codec.DecodeSample(sample_.data(), 5, frame, request), CxAV_UNSUPPORTED);
    EXPECT_EQ(codec.GetLastError(), CxAV_UNSUPPORTED);
}

TEST_F(WMFFailures, ADecoderThatNeverGivesOutputIsAnInvalidStateAtTheEnd) {
    Script().onInput = nullptr;
    EXPECT_EQ(Decode(0), CxAV_INVALID_STATE);
    EXPECT_EQ(std::ranges::count(AllCalls(), "ProcessMessage DRAIN 0"), 1);
    ExpectThatDecodingWorks();
}

TEST_F(WMFFailures, AStreamThatChangesForEverEnds) {
    Script().onInput = nullptr;
    Script().outputs.assign(1000, StreamChange());
    EXPECT_EQ(DecodeSample(sample_.data(), 5), CxAV_INVALID_STATE);
    EXPECT_EQ(Script().outputs.size(), 1000U - 256U);
    ExpectThatDecodingWorks();
}

TEST_F(WMFFailures, OutputWithoutAnEndEnds) {
    Script().onInput = nullptr;
    Script().outputs.assign(1000, PictureAt(40));
    EXPECT_EQ(DecodeSample(sample_.data(), 5), CxAV_OK);
    EXPECT_EQ(Script().outputs.size(), 1000U - 256U);
    ExpectThatDecodingWorks();
}

TEST_F(WMFFailures, OfTwoFramesOfTheWantedTimeTheLastOneCounts) {
    Script().onInput = [](int64_t) { Script().outputs = {PictureAt(0, 16), PictureAt(0, 235)}; };
    EXPECT_EQ(Decode(0), CxAV_OK);
    EXPECT_NEAR(PixelAt(*image_, 0, 0).G, 65535, 2);
}

TEST_F(WMFFailures, AFrameOfTheDecodersOwnIsTakenInstead) {
    Script().onInput = [](int64_t time) {
        for (const int64_t later : {40, 0}) {
            MFOutput output = PictureAt(time / ticks + later, 235);
            output.sample = MFSample::Own;
            Script().outputs.push_back(output);
        }
    };
    EXPECT_EQ(Decode(0), CxAV_OK);
    EXPECT_NEAR(PixelAt(*image_, 0, 0).G, 65535, 2);
    // Of those that were given none is left: two frames, a sample and its buffer each, and the transform.
    EXPECT_EQ(Script().objects, 2 * 2 + 1);
}

TEST_F(WMFFailures, ASampleThatIsReplacedOrTakenAwayInAFailureIsReleased) {
    for (const MFSample kind : {MFSample::Own, MFSample::None}) {
        Script().onInput = nullptr;
        Script().outputs = {MFOutput{.result = E_FAIL, .sample = kind}};
        EXPECT_EQ(DecodeSample(sample_.data(), 5), CxAV_INVALID_STATE);
        EXPECT_EQ(Script().objects, 1);
    }
    ExpectThatDecodingWorks();
}

TEST_F(WMFFailures, OutputWithoutASampleIsAnInvalidState) {
    Script().onInput = nullptr;
    Script().outputs = {MFOutput{.sample = MFSample::None}};
    EXPECT_EQ(DecodeSample(sample_.data(), 5), CxAV_INVALID_STATE);
    ExpectThatDecodingWorks();
}

TEST_F(WMFFailures, OutputInformationThatFailsAfterAStreamChangeKeepsTheFrame) {
    Script().onInput = nullptr;
    Script().outputs = {PictureAt(40), StreamChange(), PictureAt(80)};
    Script().results["GetOutputStreamInfo"] = {S_OK, E_FAIL};
    EXPECT_EQ(DecodeSample(sample_.data(), 5), CxAV_OK);
    EXPECT_EQ(Script().outputs.size(), 1U);
}

TEST_F(WMFFailures, FramesOfNegativeTimesAreReleased) {
    testing::internal::CaptureStderr();
    Script().outputs = {PictureAt(-40)};
    EXPECT_EQ(Decode(1), CxAV_OK);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Invalid frame number while caching\n");
}

TEST_F(WMFFailures, APictureWithoutBytesFails) { ExpectThatAPictureFails(MFOutput{}); }

TEST_F(WMFFailures, APictureWithoutBytesIsNotLocked) {
    Script().onInput = [](int64_t) { Script().outputs = {MFOutput{}}; };
    EXPECT_EQ(Decode(0), CxAV_FAILED);
    AllCalls();
    EXPECT_EQ(Decode(0), CxAV_FAILED);
    EXPECT_EQ(AllCalls(), (Calls{"ConvertToContiguousBuffer", "GetCurrentLength", "Release buffer"}));
}

TEST_F(WMFFailures, APictureThatIsTooSmallForTheImageFails) {
    MFOutput output = PictureAt(0);
    output.bytes.pop_back();
    ExpectThatAPictureFails(output);
}

TEST_F(WMFFailures, APictureForWhoseConversionThereIsNoMemoryFails) {
    EXPECT_EQ(Decode(0), CxAV_OK);
    FillWith(*image_, marker);
    // The library's own memory stays below the limit.
    Script().calls.reserve(100);
    {
        const NoMemory noMemory(Allocation::Single, 64);
        EXPECT_EQ(Decode(0), CxAV_FAILED);
    }
    EXPECT_TRUE(IsFilledWith(*image_, marker));
    ExpectThatDecodingWorks();
}

TEST_F(WMFFailures, AnImageThatIsLargerThanThePictureFails) {
    image_ = MakeImage(16, 3);
    EXPECT_EQ(Decode(0), CxAV_FAILED);
    image_ = MakeImage(17, 2);
    EXPECT_EQ(Decode(0), CxAV_FAILED);
}

TEST_F(WMFFailures, APictureWhoseBufferCantBeHadFails) {
    Script().results["ConvertToContiguousBuffer"] = {E_FAIL};
    ExpectThatAPictureFails(PictureAt(0));
    codec_.ClearCachedFrames();
    FillWith(*image_, marker);
    Script().empty = {"ConvertToContiguousBuffer"};
    EXPECT_EQ(Decode(2), CxAV_FAILED);
    EXPECT_TRUE(IsFilledWith(*image_, marker));
}

TEST_F(WMFFailures, APictureWhoseBufferCantBeReadFails) {
    EXPECT_EQ(Decode(0), CxAV_OK);
    for (const char* const function : {"GetCurrentLength", "Lock"}) {
        FillWith(*image_, marker);
        Script().results[function] = {E_FAIL};
        EXPECT_EQ(Decode(0), CxAV_FAILED) << function;
        EXPECT_TRUE(IsFilledWith(*image_, marker)) << function;
    }
}

TEST_F(WMFFailures, NoFrameOrImageConvertsToNothing) {
    Image* none = nullptr;
    EXPECT_FALSE(codec_.ConvertFrameToImage(nullptr, none));
    EXPECT_EQ(::Decode(codec_, 0, nullptr), CxAV_FAILED);
}

TEST_F(WMFFailures, AFrameThatIsUnknownOrNegativeIsAnInvalidState) {
    for (const int32_t frame : {-1, 3})
        EXPECT_EQ(Decode(frame), CxAV_INVALID_STATE) << frame;
    EXPECT_TRUE(AllCalls().empty());
}

} // namespace
