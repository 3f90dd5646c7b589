// Wrong settings and images, and an encoder that fails.

#include "codecs/wmf/WMFEncodeSupport.h"
#include "framework/AllocatorSpy.h"
#include "support/HeapSpy.h"

namespace {

using CxWMF::WMFCodec;
class WMFEncodeFailures : public WMFEncode {};

TEST_F(WMFEncodeFailures, SettingsOfADecoderAreAnInvalidState) {
    WMFCodec decoder(CxAV_DECODE, nullptr);
    CxVideoSettings settings = EncoderSettings();
    EXPECT_EQ(decoder.SetEncoderSettings(settings), CxAV_INVALID_STATE);
    EXPECT_EQ(decoder.GetLastError(), CxAV_INVALID_STATE);
}

TEST_F(WMFEncodeFailures, SettingsThatFailLeaveNoEncoderAndTheNextOnesWork) {
    const std::pair<const char*, CxAVError> failures[] = {
        {"MFTEnumEx", CxAV_UNSUPPORTED},       {"GetOutputAvailableType", CxAV_FAILED},
        {"SetOutputType", CxAV_INVALID_STATE}, {"GetInputAvailableType", CxAV_FAILED},
        {"SetInputType", CxAV_INVALID_STATE},  {"GetInputStatus", CxAV_FAILED}};
    for (const auto& [function, expected] : failures) {
        // A failure of all of them; other failures of types are passed over.
        Script().results[function] = {MF_E_NO_MORE_TYPES};
        EXPECT_EQ(Configure(), expected) << function;
        EXPECT_EQ(Script().objects, 0) << function;
        EXPECT_EQ(Encode(image_.get()), CxAV_UNSUPPORTED) << function;
    }
    EXPECT_EQ(Configure(), CxAV_OK);
}

TEST_F(WMFEncodeFailures, SettingsWithoutMemoryFailAndLeaveNoEncoder) {
    Script().sequenceHeader = smallHeader;
    CxVideoSettings settings = EncoderSettings();
    settings.text0 = "a name that is too long for a string of its own";
    CxAVError result = CxAV_FAILED;
    for (int allocations = 0; result != CxAV_OK; ++allocations) {
        WMFCodec codec(CxAV_ENCODE, nullptr);
        {
            const HeapSpy spy(allocations);
            result = codec.SetEncoderSettings(settings);
            EXPECT_EQ(result, spy.RanOut() ? CxAV_FAILED : CxAV_OK);
        }
        if (result != CxAV_OK) {
            EXPECT_EQ(Script().objects, 0) << allocations;
        }
    }
    EXPECT_EQ(settings.extraData, smallRecord);
}

TEST_F(WMFEncodeFailures, AnEncoderThatHadBegunIsEndedIfThereIsNoMemoryForTheRecord) {
    constexpr size_t setBytes = 50000;
    Script().sequenceHeader = {0, 0, 0, 1};
    Script().sequenceHeader.resize(setBytes, 7);
    Script().sequenceHeader.insert(Script().sequenceHeader.end(), {0, 0, 0, 1, 0x68});
    {
        // The parameter sets have room, and the record, which grows by doubling, has none.
        const NoMemory noMemory(Allocation::Single, setBytes + setBytes / 2);
        EXPECT_EQ(Configure(), CxAV_FAILED);
    }
    const Calls calls = AllCalls();
    EXPECT_EQ(Calls(calls.end() - 3, calls.end()),
              (Calls{"ProcessMessage BEGIN_STREAMING 0", "ProcessMessage END_STREAMING 0",
                     "ProcessMessage FLUSH 0"}));
    EXPECT_EQ(Script().objects, 0);
    EXPECT_EQ(Configure(), CxAV_OK);
}

TEST_F(WMFEncodeFailures, ASampleWithoutMemoryFails) {
    Configure();
    Script().outputs = {SampleAt(0), SampleAt(40)};
    AllocatorSpy::Reset();
    AllocatorSpy::fails = true;
    EXPECT_EQ(Encode(image_.get()), CxAV_FAILED);
    AllocatorSpy::Reset();
    EXPECT_EQ(Encode(image_.get()), CxAV_OK);
}

TEST_F(WMFEncodeFailures, APictureThatIsNotConvertedForLackOfMemoryHoldsNoOldMemory) {
    Configure();
    AllCalls();
    AllocatorSpy::fails = true;
    EXPECT_EQ(Encode(image_.get()), CxAV_OK);
    AllocatorSpy::Reset();
    EXPECT_TRUE(Asked("ProcessInput 7 " + std::string(128, '0') + " at 1000000000 for 400000"));
}

TEST_F(WMFEncodeFailures, WithoutSettingsIsUnsupported) {
    EXPECT_EQ(Encode(image_.get()), CxAV_UNSUPPORTED);
    EXPECT_EQ(Encode(nullptr), CxAV_UNSUPPORTED);
    EXPECT_EQ(codec_.GetLastError(), CxAV_UNSUPPORTED);
}

struct Failure {
    const char* function;
    std::deque<HRESULT> results;
    CxAVError expected;
};

class WMFEncodeResult : public WMFEncode, public testing::WithParamInterface<Failure> {};

TEST_P(WMFEncodeResult, HasItsResultAndTheNextImageWorks) {
    Configure();
    Script().results[GetParam().function] = GetParam().results;
    Script().outputs = {SampleAt(0)};
    EXPECT_EQ(Encode(image_.get()), GetParam().expected);
    EXPECT_EQ(codec_.GetLastError(), GetParam().expected);
    EXPECT_EQ(frame_.data, nullptr);
    EXPECT_EQ(frame_.size, 0U);
    Script().results.clear();
    Script().outputs = {SampleAt(0)};
    EXPECT_EQ(Encode(image_.get()), CxAV_OK);
    EXPECT_GT(frame_.size, 0U);
}

INSTANTIATE_TEST_SUITE_P(
    Each, WMFEncodeResult,
    testing::Values(Failure{"GetOutputStreamInfo", {E_FAIL}, CxAV_UNSUPPORTED},
                    Failure{"GetOutputStreamInfo", {S_OK, E_FAIL}, CxAV_FAILED},
                    Failure{"GetOutputStatus", {E_FAIL}, CxAV_FAILED},
                    Failure{"MFCreateMemoryBuffer", {E_FAIL}, CxAV_UNSUPPORTED},
                    Failure{"MFCreateMemoryBuffer", {S_OK, E_FAIL}, CxAV_FAILED},
                    Failure{"Lock", {E_FAIL}, CxAV_UNSUPPORTED}, Failure{"Lock", {S_OK, E_FAIL}, CxAV_FAILED},
                    Failure{"SetCurrentLength", {E_FAIL}, CxAV_UNSUPPORTED},
                    Failure{"MFCreateSample", {E_FAIL}, CxAV_UNSUPPORTED},
                    Failure{"AddBuffer", {E_FAIL}, CxAV_UNSUPPORTED},
                    Failure{"ProcessInput", {E_FAIL}, CxAV_INVALID_STATE},
                    Failure{"ProcessInput", {MF_E_NOTACCEPTING}, CxAV_INVALID_STATE},
                    Failure{"ProcessOutput", {E_FAIL}, CxAV_FAILED},
                    Failure{"ProcessOutput", {MF_E_TRANSFORM_STREAM_CHANGE}, CxAV_FAILED},
                    Failure{"ConvertToContiguousBuffer", {E_FAIL}, CxAV_FAILED}),
    [](const auto& failure) { return std::string(failure.param.function) + std::to_string(failure.index); });

TEST_F(WMFEncodeFailures, OutputWithoutBytesIsAFailureAndItsBufferNotLocked) {
    Configure();
    Script().outputs = {SampleAt(0, {})};
    AllCalls();
    EXPECT_EQ(Encode(image_.get()), CxAV_FAILED);
    // That of the image.
    EXPECT_EQ(std::ranges::count(AllCalls(), "Lock"), 1);
}

TEST_F(WMFEncodeFailures, ASampleOfTheEncodersOwnIsTakenInstead) {
    Configure();
    MFOutput output = SampleAt(0);
    output.sample = MFSample::Own;
    Script().outputs = {output};
    Bytes sample;
    EXPECT_EQ(Encode(image_.get(), &sample), CxAV_OK);
    EXPECT_EQ(sample, (Bytes{0, 0, 0, 2, 0x65, 0x88}));
}

TEST_F(WMFEncodeFailures, OutputWithoutASampleIsAFailure) {
    Configure();
    Script().outputs = {MFOutput{.sample = MFSample::None}};
    EXPECT_EQ(Encode(image_.get()), CxAV_FAILED);
}

TEST_F(WMFEncodeFailures, AnImageOf65536PixelsIsAnInvalidState) {
    Configure();
    for (const auto& [width, height] : {std::pair{65536, 1}, std::pair{1, 65536}}) {
        const ImagePtr image = MakeImage(width, height, ImageData_RGBA8);
        EXPECT_EQ(Encode(image.get()), CxAV_INVALID_STATE);
        Image* pointer = image.get();
        uint8_t* data = nullptr;
        uint32_t size = 0;
        CxEncodedTiming timing;
        EXPECT_EQ(codec_.EncodeSample(pointer, data, size, timing), CxAV_INVALID_STATE);
    }
    EXPECT_EQ(codec_.GetWidth(), 16);
}

TEST_F(WMFEncodeFailures, ABufferWithTooLittleRoomIsUnsupported) {
    Configure();
    Script().mostLocked = 63;
    EXPECT_EQ(Encode(image_.get()), CxAV_UNSUPPORTED);
}

} // namespace
