// What the objects of the library are and give, apart from pictures.

#include "standins/rawsdk/RawSession.h"

#include <gtest/gtest.h>

#include <fstream>

namespace {

constexpr IID unknownInterface = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
constexpr const char* camera = "Ravenlight Heron Field S2";

/// A session with a clip that has everything.
class Objects : public testing::Test {
protected:
    Objects() {
        rawsdk::ClipProperties clip = SizedClip(16, 10);
        clip.frameRate = 23.5f;
        clip.metadata = {{u"take", rawsdk::NumberValue(uint32_t{0x80000000})},
                         {u"scene", rawsdk::TextValue(u"7a")}};
        clip.settings.contrast = 1.25f;
        clip.settings.colorScienceGeneration = 5;
        rawsdk::FrameProperties first;
        first.settings = {3200, -7, 0.5f, 800};
        first.metadata = {{u"lens", rawsdk::TextValue(u"50 mm")}};
        first.timecode = 0x01020304;
        WriteClip(folder_ / "clip.vrel", clip, {first, {}});
        EXPECT_EQ(session_.Open(folder_ / "clip.vrel"), S_OK);
    }

    std::string Timecode(uint64_t frame) {
        BstrHolder text;
        EXPECT_EQ(session_.clip->GetTimecode(frame, text.Receive()), S_OK);
        return text.Text();
    }

    TemporaryFolder folder_;
    RawSession session_;
};

TEST_F(Objects, HaveTheInterfacesOfTheirKindAndNoOther) {
    for (const IID& identifier :
         {IID_RawConstants, IID_RawExtras, IID_RawPipelineSetup, IID_RawManualFlowCpu})
        EXPECT_TRUE(Query<IUnknown>(session_.codec.Get(), identifier));
    for (const IID& identifier :
         {IID_RawManualFlowDevice, IID_RawClipReader, unknownInterface, rawsdk::IID_Control})
        EXPECT_FALSE(Query<IUnknown>(session_.codec.Get(), identifier));
    EXPECT_TRUE(Query<IUnknown>(session_.clip.Get(), IID_RawClipReader));
    EXPECT_FALSE(Query<IUnknown>(session_.clip.Get(), IID_RawFrameSize));
}

TEST_F(Objects, AreTheSameUnknownByEachOfTheirInterfaces) {
    const auto constants = Query<RawConstants>(session_.codec.Get(), IID_RawConstants);
    EXPECT_EQ(Query<IUnknown>(constants.Get(), IID_IUnknown).Get(),
              Query<IUnknown>(session_.codec.Get(), IID_IUnknown).Get());
}

TEST_F(Objects, RefuseToGiveAnInterfaceToNull) {
    EXPECT_EQ(session_.codec->QueryInterface(IID_RawExtras, nullptr), E_POINTER);
    void* interface = this;
    EXPECT_EQ(session_.codec->QueryInterface(unknownInterface, &interface), E_NOINTERFACE);
    EXPECT_EQ(interface, nullptr);
}

TEST_F(Objects, CountTheirReferences) {
    EXPECT_EQ(session_.clip->AddRef(), 3u);
    EXPECT_EQ(session_.clip->Release(), 2u);
}

TEST_F(Objects, OutliveTheOnesThatTheyCameFrom) {
    Held<RawMetadataIterator> iterator;
    EXPECT_EQ(session_.clip->GetMetadataIterator(iterator.Receive()), S_OK);
    session_.reader.Release();
    session_.clip.Release();
    BstrHolder key;
    EXPECT_EQ(iterator->GetKey(key.Receive()), S_OK);
    EXPECT_EQ(key.Text(), "take");
    Value value;
    EXPECT_EQ(session_.settings->GetAttribute(rawContrast, &value), S_OK);
    EXPECT_EQ(value.fltVal, 1.25f);
}

TEST_F(Objects, TellTheFactsOfTheClip) {
    uint32_t width = 0;
    uint32_t height = 0;
    float rate = 0;
    uint64_t count = 0;
    BstrHolder type;
    EXPECT_EQ(session_.clip->GetWidth(&width), S_OK);
    EXPECT_EQ(session_.clip->GetHeight(&height), S_OK);
    EXPECT_EQ(session_.clip->GetFrameRate(&rate), S_OK);
    EXPECT_EQ(session_.clip->GetFrameCount(&count), S_OK);
    EXPECT_EQ(session_.clip->GetCameraType(type.Receive()), S_OK);
    EXPECT_EQ(width, 16u);
    EXPECT_EQ(height, 10u);
    EXPECT_EQ(rate, 23.5f);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(type.Text(), camera);
}

TEST_F(Objects, TellTimecodesAndEmptyTextWithoutOne) {
    EXPECT_EQ(Timecode(0), "01:02:03:04");
    EXPECT_EQ(Timecode(1), "");
}

TEST_F(Objects, TellNoTimecodeOfAFrameThatThereIsNot) {
    BSTR text = nullptr;
    EXPECT_EQ(session_.clip->GetTimecode(2, &text), E_INVALIDARG);
    EXPECT_EQ(text, nullptr);
}

TEST_F(Objects, GoThroughTheMetadataAndEndBehindTheLast) {
    Held<RawMetadataIterator> iterator;
    ASSERT_EQ(session_.clip->GetMetadataIterator(iterator.Receive()), S_OK);
    BstrHolder key;
    Value take;
    EXPECT_EQ(iterator->GetKey(key.Receive()), S_OK);
    EXPECT_EQ(iterator->GetData(&take), S_OK);
    EXPECT_EQ(key.Text(), "take");
    EXPECT_EQ(take.vt, VT_UI4);
    EXPECT_EQ(take.ulVal, 0x80000000u);
    Value scene;
    EXPECT_EQ(iterator->Next(), S_OK);
    EXPECT_EQ(iterator->GetData(&scene), S_OK);
    EXPECT_EQ(TextOfBstr(scene.bstrVal), "7a");
    EXPECT_EQ(iterator->Next(), S_FALSE);
    EXPECT_EQ(iterator->Next(), S_FALSE);
    Value none;
    EXPECT_EQ(iterator->GetKey(key.Receive()), S_FALSE);
    EXPECT_EQ(iterator->GetData(&none), S_FALSE);
    EXPECT_EQ(none.vt, VT_EMPTY);
}

TEST_F(Objects, HaveAnIteratorForNoMetadataToo) {
    const Held<RawFrame> frame = session_.ReadyFrame(1);
    Held<RawMetadataIterator> iterator;
    ASSERT_EQ(frame->GetMetadataIterator(iterator.Receive()), S_OK);
    BstrHolder key;
    EXPECT_EQ(iterator->GetKey(key.Receive()), S_FALSE);
    EXPECT_EQ(iterator->Next(), S_FALSE);
}

TEST_F(Objects, TellTheSettingsOfAFrame) {
    const Held<RawFrame> frame = session_.ReadyFrame(0);
    Held<RawFrameSettings> settings;
    ASSERT_EQ(frame->CloneFrameSettings(settings.Receive()), S_OK);
    Value kelvin;
    Value tint;
    Value exposure;
    Value iso;
    EXPECT_EQ(settings->GetAttribute(rawWhiteBalanceKelvin, &kelvin), S_OK);
    EXPECT_EQ(settings->GetAttribute(rawWhiteBalanceTint, &tint), S_OK);
    EXPECT_EQ(settings->GetAttribute(rawExposure, &exposure), S_OK);
    EXPECT_EQ(settings->GetAttribute(rawIso, &iso), S_OK);
    EXPECT_EQ(kelvin.vt, VT_UI4);
    EXPECT_EQ(kelvin.ulVal, 3200u);
    EXPECT_EQ(tint.vt, VT_I2);
    EXPECT_EQ(tint.iVal, -7);
    EXPECT_EQ(exposure.vt, VT_R4);
    EXPECT_EQ(exposure.fltVal, 0.5f);
    EXPECT_EQ(iso.vt, VT_I2);
    EXPECT_EQ(iso.iVal, 800);
    Value unknown;
    EXPECT_EQ(settings->GetAttribute(rawGain, &unknown), E_INVALIDARG);
}

TEST_F(Objects, TellTheSettingsOfTheClip) {
    for (const uint32_t code : {rawContrast, rawSaturation, rawMidpoint, rawHighlights, rawShadows,
                                rawBlackLevel, rawWhiteLevel, rawGain}) {
        Value value;
        EXPECT_EQ(session_.settings->GetAttribute(code, &value), S_OK);
        EXPECT_EQ(value.vt, VT_R4);
    }
    for (const uint32_t code : {rawVideoBlackLevel, rawHighlightRecovery, rawColorScienceGeneration}) {
        Value value;
        EXPECT_EQ(session_.settings->GetAttribute(code, &value), S_OK);
        EXPECT_EQ(value.vt, VT_UI2);
    }
    for (const uint32_t code : {rawGamut, rawGamma, rawLutMode}) {
        Value value;
        EXPECT_EQ(session_.settings->GetAttribute(code, &value), S_OK);
        EXPECT_EQ(value.vt, VT_BSTR);
    }
}

TEST_F(Objects, TakeTheSettingsThatTheyAllow) {
    Value mode;
    mode.vt = VT_BSTR;
    mode.bstrVal = BstrOfText("Sidecar");
    EXPECT_EQ(session_.settings->SetAttribute(rawLutMode, &mode), S_OK);
    Value read;
    session_.settings->GetAttribute(rawLutMode, &read);
    EXPECT_EQ(TextOfBstr(read.bstrVal), "Sidecar");
}

TEST_F(Objects, RefuseSettingsThatTheyDoNotAllow) {
    Value mode;
    mode.vt = VT_BSTR;
    mode.bstrVal = BstrOfText("Another");
    EXPECT_EQ(session_.settings->SetAttribute(rawLutMode, &mode), E_INVALIDARG);
    Value number;
    number.vt = VT_R4;
    number.fltVal = 99;
    EXPECT_EQ(session_.settings->SetAttribute(rawContrast, &number), E_INVALIDARG);
    EXPECT_EQ(session_.settings->SetAttribute(rawLutMode, &number), E_INVALIDARG);
    EXPECT_EQ(session_.settings->SetAttribute(rawLutMode, nullptr), E_POINTER);
}

TEST_F(Objects, KeepTheSettingsOfEachCloneApart) {
    Value contrast;
    contrast.vt = VT_R4;
    contrast.fltVal = 0.5f;
    EXPECT_EQ(session_.settings->SetAttribute(rawContrast, &contrast), S_OK);
    Held<RawClipSettings> another;
    EXPECT_EQ(session_.clip->CloneClipSettings(another.Receive()), S_OK);
    Value read;
    another->GetAttribute(rawContrast, &read);
    EXPECT_EQ(read.fltVal, 1.25f);
}

TEST_F(Objects, TellTheRangesOfAttributes) {
    const auto constants = Query<RawConstants>(session_.codec.Get(), IID_RawConstants);
    const BstrHolder name{camera};
    Value least;
    Value most;
    bool readOnly = true;
    EXPECT_EQ(constants->GetFrameAttributeRange(name.Get(), rawWhiteBalanceKelvin, &least, &most, &readOnly),
              S_OK);
    EXPECT_EQ(least.vt, VT_UI4);
    EXPECT_EQ(least.ulVal, 2000u);
    EXPECT_EQ(most.ulVal, 50000u);
    EXPECT_FALSE(readOnly);
    EXPECT_EQ(constants->GetClipAttributeRange(name.Get(), rawSaturation, &least, &most, &readOnly), S_OK);
    EXPECT_EQ(least.fltVal, 0);
    EXPECT_EQ(most.fltVal, 4);
}

TEST_F(Objects, TellNoRangeOfOtherAttributesOrCameras) {
    const auto constants = Query<RawConstants>(session_.codec.Get(), IID_RawConstants);
    Value least;
    Value most;
    bool readOnly = true;
    const BstrHolder name{camera};
    EXPECT_EQ(constants->GetClipAttributeRange(name.Get(), rawIso, &least, &most, &readOnly), E_INVALIDARG);
    EXPECT_EQ(constants->GetClipAttributeRange(name.Get(), rawGamma, &least, &most, &readOnly), E_INVALIDARG);
    EXPECT_EQ(
        constants->GetClipAttributeRange(BstrHolder("other").Get(), rawContrast, &least, &most, &readOnly),
        E_INVALIDARG);
    EXPECT_EQ(constants->GetClipAttributeRange(nullptr, rawContrast, &least, &most, &readOnly), E_INVALIDARG);
    EXPECT_EQ(constants->GetClipAttributeRange(name.Get(), rawContrast, nullptr, &most, &readOnly),
              E_POINTER);
}

TEST_F(Objects, ListTheValuesOfTexts) {
    const auto constants = Query<RawConstants>(session_.codec.Get(), IID_RawConstants);
    const BstrHolder name{camera};
    uint32_t count = 0;
    bool readOnly = true;
    ASSERT_EQ(constants->GetAttributeList(name.Get(), rawGamma, nullptr, &count, &readOnly), S_OK);
    ASSERT_EQ(count, 3u);
    std::vector<Value> values(count);
    ASSERT_EQ(constants->GetAttributeList(name.Get(), rawGamma, values.data(), &count, &readOnly), S_OK);
    EXPECT_EQ(TextOfBstr(values[0].bstrVal), "Ravenlight Design Film");
    EXPECT_EQ(TextOfBstr(values[2].bstrVal), "Linear");
}

TEST_F(Objects, ListNothingWhereItDoesNotFitOrIsNoText) {
    const auto constants = Query<RawConstants>(session_.codec.Get(), IID_RawConstants);
    const BstrHolder name{camera};
    uint32_t count = 2;
    bool readOnly = true;
    std::vector<Value> values(2);
    EXPECT_EQ(constants->GetAttributeList(name.Get(), rawGamma, values.data(), &count, &readOnly),
              E_INVALIDARG);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(constants->GetAttributeList(name.Get(), rawGain, nullptr, &count, &readOnly), E_INVALIDARG);
    EXPECT_EQ(constants->GetAttributeList(name.Get(), rawGamma, nullptr, nullptr, &readOnly), E_POINTER);
}

TEST_F(Objects, HaveOnePipeline) {
    Held<RawCodec> codec;
    ASSERT_EQ(session_.factory->CreateCodec(codec.Receive()), S_OK);
    const auto setup = Query<RawPipelineSetup>(codec.Get(), IID_RawPipelineSetup);
    EXPECT_FALSE(Query<RawManualFlow>(codec.Get(), IID_RawManualFlowCpu));
    EXPECT_EQ(setup->SetPipeline(RawCode("gpub"), nullptr, nullptr), E_NOTIMPL);
    EXPECT_EQ(setup->SetPipeline(rawPipelineCpu, this, nullptr), E_INVALIDARG);
    EXPECT_EQ(setup->SetPipelineOption(1), E_INVALIDARG);
    EXPECT_EQ(setup->SetPipeline(rawPipelineCpu, nullptr, nullptr), S_OK);
    EXPECT_TRUE(Query<RawManualFlow>(codec.Get(), IID_RawManualFlowCpu));
}

TEST_F(Objects, RefuseClipsThatAreNone) {
    Held<RawClip> clip;
    EXPECT_NE(session_.codec->OpenClip(BstrHolder(folder_ / "none.vrel").Get(), clip.Receive()), S_OK);
    EXPECT_NE(session_.codec->OpenClip(nullptr, clip.Receive()), S_OK);
    std::ofstream(folder_ / "text.vrel") << "this is no clip at all, but it is long enough for a header";
    EXPECT_NE(session_.codec->OpenClip(BstrHolder(folder_ / "text.vrel").Get(), clip.Receive()), S_OK);
    EXPECT_FALSE(clip);
    EXPECT_EQ(session_.codec->OpenClip(BstrHolder("x").Get(), nullptr), E_POINTER);
}

} // namespace
