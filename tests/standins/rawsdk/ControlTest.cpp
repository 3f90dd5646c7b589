// What tests can make the library do, and see of it.

#include "standins/rawsdk/RawSession.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

class ControlledSession : public testing::Test {
protected:
    ControlledSession() {
        rawsdk::ClipProperties clip = SizedClip(8, 8);
        clip.metadata = {
            {u"a", rawsdk::NumberValue(1)}, {u"b", rawsdk::NumberValue(2)}, {u"c", rawsdk::NumberValue(3)}};
        WriteClip(folder_ / "clip.vrel", clip, {{}});
        EXPECT_EQ(session_.Open(folder_ / "clip.vrel"), S_OK);
    }

    HRESULT Width() {
        uint32_t width = 7;
        const HRESULT result = session_.clip->GetWidth(&width);
        EXPECT_EQ(width, result == S_OK && !expectsNothing_ ? 8u : 0u);
        return result;
    }

    TemporaryFolder folder_;
    RawSession session_;
    bool expectsNothing_ = false;
};

TEST_F(ControlledSession, FailsACallOnceAndTwice) {
    for (const uint32_t times : {1u, 2u}) {
        SdkControl().Add({"RawClip.GetWidth", 0, times, E_UNEXPECTED});
        for (uint32_t i = 0; i < times; ++i)
            EXPECT_EQ(Width(), E_UNEXPECTED);
        EXPECT_EQ(Width(), S_OK);
    }
}

TEST_F(ControlledSession, FailsACallAfterOthersHaveSucceeded) {
    SdkControl().Add({"RawClip.GetWidth", 2, 1, E_FAIL});
    EXPECT_EQ(Width(), S_OK);
    EXPECT_EQ(Width(), S_OK);
    EXPECT_EQ(Width(), E_FAIL);
    EXPECT_EQ(Width(), S_OK);
}

TEST_F(ControlledSession, FailsACallUntilItIsReset) {
    SdkControl().Add({"RawClip.GetWidth"});
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(Width(), E_FAIL);
    SdkControl().Reset();
    EXPECT_EQ(Width(), S_OK);
}

TEST_F(ControlledSession, LetsACallSucceedAndGiveNothing) {
    SdkControl().Add({"RawClip.GetWidth", 0, 1, S_OK});
    expectsNothing_ = true;
    EXPECT_EQ(Width(), S_OK);
    SdkControl().Add({"RawClip.CloneClipSettings", 0, 1, S_OK});
    Held<RawClipSettings> settings;
    EXPECT_EQ(session_.clip->CloneClipSettings(settings.Receive()), S_OK);
    EXPECT_FALSE(settings);
}

TEST_F(ControlledSession, FailsACallAboutOneThing) {
    SdkControl().Add({"RawClipSettings.GetAttribute gamt"});
    Value value;
    EXPECT_EQ(session_.settings->GetAttribute(rawGain, &value), S_OK);
    EXPECT_EQ(session_.settings->GetAttribute(rawGamut, &value), E_FAIL);
}

TEST_F(ControlledSession, HidesAnInterface) {
    SdkControl().Add({"RawCodec.QueryInterface RawExtras", 0, 1, E_NOINTERFACE});
    EXPECT_TRUE(Query<RawConstants>(session_.codec.Get(), IID_RawConstants));
    EXPECT_FALSE(Query<RawExtras>(session_.codec.Get(), IID_RawExtras));
    EXPECT_TRUE(Query<RawExtras>(session_.codec.Get(), IID_RawExtras));
}

TEST_F(ControlledSession, EndsAnIteratorBadly) {
    Held<RawMetadataIterator> iterator;
    ASSERT_EQ(session_.clip->GetMetadataIterator(iterator.Receive()), S_OK);
    SdkControl().Add({"RawMetadataIterator.Next", 1, 1, E_UNEXPECTED});
    EXPECT_EQ(iterator->Next(), S_OK);
    EXPECT_EQ(iterator->Next(), E_UNEXPECTED);
}

TEST_F(ControlledSession, GivesNoFactoryIfItIsNotTo) {
    SdkControl().Add({"CreateRavenlightRawFactoryInstance", 0, 1});
    EXPECT_EQ(CreateRavenlightRawFactoryInstance(), nullptr);
}

TEST_F(ControlledSession, RecordsCallsInTheirOrderFromWhereItIsTold) {
    SdkControl().RecordCalls();
    BstrHolder timecode;
    session_.clip->GetTimecode(0, timecode.Receive());
    Query<RawClipReader>(session_.clip.Get(), IID_RawClipReader);
    Value value;
    session_.settings->GetAttribute(rawGain, &value);
    session_.Read(0);
    session_.codec->SetCallback(nullptr);
    const std::vector<std::string> expected = {"RawClip.GetTimecode 0",
                                               "RawClip.QueryInterface RawClipReader",
                                               "RawClipSettings.GetAttribute gain",
                                               "RawClipReader.GetBitstreamBound",
                                               "RawClipReader.CreateReadJob 0",
                                               "RawJob.Submit read",
                                               "RawCodec.SetCallback null"};
    EXPECT_EQ(SdkControl().Calls(), expected);
}

TEST_F(ControlledSession, RecordsCallsThatFail) {
    SdkControl().Add({"RawClip.GetWidth", 0, 1, E_FAIL});
    SdkControl().RecordCalls();
    Width();
    Width();
    EXPECT_EQ(SdkControl().Calls(), (std::vector<std::string>{"RawClip.GetWidth", "RawClip.GetWidth"}));
}

TEST_F(ControlledSession, RecordsTheEndsOfClipsAndCodecs) {
    SdkControl().RecordCalls();
    session_.settings.Release();
    session_.reader.Release();
    session_.clip.Release();
    EXPECT_EQ(SdkControl().Calls(), std::vector<std::string>{"RawClip.Released"});
}

TEST_F(ControlledSession, CountsTheObjectsThatThereAre) {
    const uint64_t before = SdkControl().LiveObjects();
    Held<RawClipSettings> settings;
    session_.clip->CloneClipSettings(settings.Receive());
    EXPECT_EQ(SdkControl().LiveObjects(), before + 1);
    settings.Release();
    EXPECT_EQ(SdkControl().LiveObjects(), before);
}

TEST_F(ControlledSession, IsTheSameForEveryFactory) { EXPECT_EQ(&SdkControl(), &SdkControl()); }

} // namespace
