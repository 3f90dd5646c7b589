// What the decoder offers and refuses on its two sides, and how streams change.

#include "standins/mediafoundation/DecoderDriver.h"
#include "standins/mediafoundation/Surfaces.h"

#include <gtest/gtest.h>

namespace {

class DecoderTypes : public testing::Test {
protected:
    Ptr<IMFMediaType> OutputType(const GUID& subtype = MFVideoFormat_YUY2) {
        return OutputTypeOf(decoder_.Transform(), subtype);
    }

    DecoderDriver decoder_{96, 80};
    IMFTransform& transform_ = decoder_.Transform();
};

Ptr<IMFTransform> FreshDecoder() { return NewTransform(MFT_CATEGORY_VIDEO_DECODER); }

TEST_F(DecoderTypes, OfTheInputAreH264Alone) {
    EXPECT_EQ(InputSubtypesOf(transform_), std::vector<GUID>{MFVideoFormat_H264});
}

TEST_F(DecoderTypes, OfTheOutputStandInThePlatformsOrder) {
    EXPECT_EQ(OutputSubtypesOf(transform_),
              (std::vector<GUID>{Subtype("NV12"), Subtype("YV12"), Subtype("IYUV"), Subtype("YUY2")}));
}

TEST_F(DecoderTypes, OfTheOutputHaveTheSizeInWholeMacroblocks) {
    EXPECT_EQ(PairOf(*OutputType(), MF_MT_FRAME_SIZE), PairOf(96, 80));
    decoder_.SetInput(90, 65);
    EXPECT_EQ(PairOf(*OutputType(), MF_MT_FRAME_SIZE), PairOf(96, 80));
    EXPECT_EQ(NumberOf(*OutputType(), MF_MT_INTERLACE_MODE), 2u);
}

TEST_F(DecoderTypes, OfTheOutputAreUnknownBeforeTheInputs) {
    const Ptr<IMFTransform> fresh = FreshDecoder();
    IMFMediaType* type = nullptr;
    EXPECT_EQ(fresh->GetOutputAvailableType(0, 0, &type), MF_E_TRANSFORM_TYPE_NOT_SET);
    EXPECT_EQ(fresh->SetOutputType(0, OutputType().get(), 0), MF_E_TRANSFORM_TYPE_NOT_SET);
    EXPECT_EQ(type, nullptr);
}

TEST_F(DecoderTypes, AreNeededForSamples) {
    const Ptr<IMFTransform> fresh = FreshDecoder();
    TimedBytes output;
    DWORD status = 0;
    EXPECT_EQ(fresh->GetInputStatus(0, &status), MF_E_TRANSFORM_TYPE_NOT_SET);
    EXPECT_EQ(Feed(*fresh, {{0, 0, 1}, {}, {}}), MF_E_TRANSFORM_TYPE_NOT_SET);
    EXPECT_EQ(TakeOne(*fresh, output), MF_E_TRANSFORM_TYPE_NOT_SET);
}

TEST_F(DecoderTypes, LetItTakeSamples) {
    DWORD status = 0;
    EXPECT_EQ(transform_.GetInputStatus(0, &status), S_OK);
    EXPECT_EQ(status, DWORD{MFT_INPUT_STATUS_ACCEPT_DATA});
    EXPECT_EQ(transform_.GetOutputStatus(&status), S_OK);
    EXPECT_EQ(status, 0u);
}

TEST_F(DecoderTypes, AreGivenAsCopies) {
    IMFMediaType* found = nullptr;
    ASSERT_EQ(transform_.GetInputCurrentType(0, &found), S_OK);
    const Ptr<IMFMediaType> type(found);
    EXPECT_EQ(PairOf(*type, MF_MT_FRAME_SIZE), PairOf(96, 80));
    type->SetUINT64(MF_MT_FRAME_SIZE, 1);
    ASSERT_EQ(transform_.GetInputCurrentType(0, &found), S_OK);
    EXPECT_EQ(PairOf(*Ptr<IMFMediaType>(found), MF_MT_FRAME_SIZE), PairOf(96, 80));
}

TEST_F(DecoderTypes, TellWhetherTheyAreCompressed) {
    BOOL isCompressed = 0;
    EXPECT_EQ(InputTypeOf(transform_, MFVideoFormat_H264)->IsCompressedFormat(&isCompressed), S_OK);
    EXPECT_EQ(isCompressed, 1);
    EXPECT_EQ(OutputType()->IsCompressedFormat(&isCompressed), S_OK);
    EXPECT_EQ(isCompressed, 0);
}

TEST_F(DecoderTypes, OfTheInputMustBeH264) {
    EXPECT_EQ(transform_.SetInputType(0, OutputType().get(), 0), MF_E_INVALIDMEDIATYPE);
    const Ptr<IMFMediaType> audio = InputTypeOf(transform_, MFVideoFormat_H264);
    audio->SetGUID(MF_MT_MAJOR_TYPE, Subtype("auds"));
    EXPECT_EQ(transform_.SetInputType(0, audio.get(), 0), MF_E_INVALIDMEDIATYPE);
}

TEST_F(DecoderTypes, OfTheOutputMustBeOffered) {
    const Ptr<IMFMediaType> type = OutputType();
    type->SetGUID(MF_MT_SUBTYPE, Subtype("P010"));
    EXPECT_EQ(transform_.SetOutputType(0, type.get(), 0), MF_E_INVALIDMEDIATYPE);
    type->SetGUID(MF_MT_SUBTYPE, MFVideoFormat_YUY2);
    type->SetUINT64(MF_MT_FRAME_SIZE, PairOf(112, 80));
    EXPECT_EQ(transform_.SetOutputType(0, type.get(), 0), MF_E_INVALIDMEDIATYPE);
    type->DeleteItem(MF_MT_FRAME_SIZE);
    EXPECT_EQ(transform_.SetOutputType(0, type.get(), 0), S_OK);
}

TEST_F(DecoderTypes, OfTheOutputGoWithANewInputType) {
    EXPECT_EQ(decoder_.SetInput(96, 80), S_OK);
    EXPECT_EQ(Feed(transform_, {{0, 0, 1}, {}, {}}), MF_E_TRANSFORM_TYPE_NOT_SET);
}

TEST_F(DecoderTypes, OfOtherStreamsAreRefused) {
    IMFMediaType* type = nullptr;
    DWORD status = 0;
    EXPECT_EQ(transform_.GetInputAvailableType(1, 0, &type), MF_E_INVALIDSTREAMNUMBER);
    EXPECT_EQ(transform_.SetOutputType(1, OutputType().get(), 0), MF_E_INVALIDSTREAMNUMBER);
    EXPECT_EQ(transform_.GetInputStatus(1, &status), MF_E_INVALIDSTREAMNUMBER);
    EXPECT_EQ(transform_.ProcessInput(1, NewSample().get(), 0), MF_E_INVALIDSTREAMNUMBER);
}

TEST_F(DecoderTypes, OfNullAreRefused) {
    EXPECT_EQ(transform_.SetInputType(0, nullptr, 0), E_INVALIDARG);
    EXPECT_EQ(transform_.GetInputAvailableType(0, 0, nullptr), E_POINTER);
    EXPECT_EQ(transform_.ProcessInput(0, nullptr, 0), E_INVALIDARG);
    EXPECT_EQ(transform_.ProcessOutput(0, 1, nullptr, nullptr), E_POINTER);
}

TEST_F(DecoderTypes, OfSizesThatNoStreamHasCountAsUnknown) {
    for (const auto& [width, height] : {std::pair{0xffffffffu, 0xffffffffu}, {16385u, 16u}, {0u, 0u}}) {
        const Ptr<IMFMediaType> type = InputTypeOf(transform_, MFVideoFormat_H264);
        type->SetUINT64(MF_MT_FRAME_SIZE, PairOf(width, height));
        EXPECT_EQ(transform_.SetInputType(0, type.get(), 0), S_OK);
        EXPECT_EQ(decoder_.SetOutput(MFVideoFormat_YUY2), S_OK);
        EXPECT_EQ(OutputBytesOf(transform_), 0u);
    }
}

TEST_F(DecoderTypes, LeaveStreamsNumberedFromZero) {
    DWORD input = 5;
    DWORD output = 6;
    EXPECT_EQ(transform_.GetStreamIDs(1, &input, 1, &output), E_NOTIMPL);
    DWORD limits[4] = {};
    EXPECT_EQ(transform_.GetStreamLimits(&limits[0], &limits[1], &limits[2], &limits[3]), S_OK);
    for (const DWORD limit : limits)
        EXPECT_EQ(limit, 1u);
}

TEST_F(DecoderTypes, GoWithThePropertyOfAcceleration) {
    const GUID acceleration = {0xf7db8a2f, 0x4f48, 0x4ee8, {0xae, 0x31, 0x8b, 0x6e, 0xbe, 0x55, 0x8a, 0xe2}};
    void* found = nullptr;
    ASSERT_EQ(transform_.QueryInterface(IID_ICodecAPI, &found), S_OK);
    const Ptr<ICodecAPI> properties(static_cast<ICodecAPI*>(found));
    VARIANT value;
    VariantInit(&value);
    EXPECT_EQ(properties->SetValue(&acceleration, &value), E_INVALIDARG);
    value.vt = VT_UI4;
    value.ulVal = 1;
    EXPECT_EQ(properties->SetValue(&acceleration, &value), S_OK);
    EXPECT_EQ(properties->SetValue(&MF_MT_SUBTYPE, &value), E_NOTIMPL);
    EXPECT_EQ(properties->IsSupported(&acceleration), S_OK);
}

TEST(StreamChange, ComesWhereTheInputTypeToldAnotherSize) {
    const PeerStream stream = PeerEncode(Scene(96, 80, 5), {.profile = "baseline"});
    for (const auto& [width, height] : {std::pair{320u, 240u}, {16u, 16u}, {0u, 0u}}) {
        DecoderDriver decoder(width, height);
        const std::vector<TimedBytes> outputs = decoder.DecodeAll(stream.samples);
        EXPECT_EQ(TimesOf(outputs), TimesOfFirst(5));
        EXPECT_TRUE(BytesOf(outputs) == SurfacesOf(PeerDecode(stream.samples)));
        EXPECT_EQ(decoder.streamChanges, 1);
    }
}

TEST(StreamChange, ComesInTheMiddleOfAStreamWhoseSizeChanges) {
    const PeerCoding coding = {.profile = "high", .parameters = "bframes=2:b-adapt=0:partitions=none"};
    std::vector<TimedBytes> samples = PeerEncode(Scene(96, 80, 6), coding).samples;
    std::vector<Bytes> expected = SurfacesOf(PeerDecode(samples));
    const std::vector<TimedBytes> larger = PeerEncode(Scene(128, 64, 6), coding).samples;
    const std::vector<Bytes> expectedLarger = SurfacesOf(PeerDecode(larger));
    samples.insert(samples.end(), larger.begin(), larger.end());
    expected.insert(expected.end(), expectedLarger.begin(), expectedLarger.end());
    DecoderDriver decoder(96, 80);
    EXPECT_TRUE(BytesOf(decoder.DecodeAll(samples)) == expected);
    EXPECT_EQ(decoder.streamChanges, 1);
}

TEST(StreamChange, WaitsForTheOutputType) {
    const PeerStream stream = PeerEncode(Scene(96, 80, 2), {.profile = "baseline"});
    DecoderDriver decoder(320, 240);
    IMFTransform& transform = decoder.Transform();
    TimedBytes output;
    EXPECT_EQ(Feed(transform, stream.samples[0]), S_OK);
    EXPECT_EQ(TakeOne(transform, output), MF_E_TRANSFORM_STREAM_CHANGE);
    EXPECT_EQ(TakeOne(transform, output), MF_E_TRANSFORM_TYPE_NOT_SET);
    EXPECT_EQ(Feed(transform, stream.samples[1]), MF_E_TRANSFORM_TYPE_NOT_SET);
    EXPECT_EQ(decoder.SetOutput(MFVideoFormat_YUY2), S_OK);
    EXPECT_EQ(OutputBytesOf(transform), 96u * 80u * 2u);
    EXPECT_EQ(TakeOne(transform, output), S_OK);
    EXPECT_EQ(output.time, TimeOf(0));
}

TEST(StreamChange, IsMarkedInTheOutputsStatus) {
    const PeerStream stream = PeerEncode(Scene(96, 80, 1), {.profile = "baseline"});
    DecoderDriver decoder(320, 240);
    Feed(decoder.Transform(), stream.samples[0]);
    const Ptr<IMFSample> sample = NewSample();
    MFT_OUTPUT_DATA_BUFFER buffer = {};
    buffer.pSample = sample.get();
    DWORD status = 1;
    EXPECT_EQ(decoder.Transform().ProcessOutput(0, 1, &buffer, &status), MF_E_TRANSFORM_STREAM_CHANGE);
    EXPECT_EQ(buffer.dwStatus, 0x100u);
    EXPECT_EQ(status, 0u);
}

} // namespace
