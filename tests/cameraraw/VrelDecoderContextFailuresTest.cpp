// Each call of the SDK that fails, once and always, and each that gives nothing.

#include "cameraraw/VrelDecoderContext.h"

#include "cameraraw/RawTestSupport.h"

#include <cctype>
#include <ostream>

namespace {

constexpr char null[] = "Vrel NULL pointer";
constexpr char once[] = "Vrel HRESULT = 0x0";
constexpr char twice[] = "Vrel HRESULT = 0x80040002";
/// What is said of a job that is refused twice, and once more when it is run again.
constexpr char refused[] = "Vrel HRESULT = 0x80040002Vrel HRESULT = 0x80040004";
constexpr int always = 1000;

enum class Outcome {
    Works, ///< the clip opens, or the frame decodes
    Fails,
};

/// A call that goes wrong, and what comes of it.
struct FailingCall {
    std::string name;
    Outcome once;            ///< of one failure
    std::string onceWords;   ///< that are said then
    Outcome always;          ///< of failures without end
    std::string alwaysWords; ///< that are said then
    int64_t tries = 2;       ///< how often the call is made then
};

void PrintTo(const FailingCall& call, std::ostream* out) { *out << call.name; }

/// Name of a test, for rows of calls.
template <typename Row>
std::string NameOf(const testing::TestParamInfo<Row>& row) {
    std::string name = row.param.name;
    std::erase_if(name, [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); });
    return name;
}

class RawCall : public RawTest, public testing::WithParamInterface<FailingCall> {
protected:
    RawCall() { Script().finish = Finish::InsideSubmit; }
};

/// Opening a clip, the context's beginning included.
class OpeningCall : public RawCall {
protected:
    static std::string Open(Outcome expected) {
        return WordsOf(
            [&] { EXPECT_EQ(VrelDecoderContext().OpenClip("clip.vrel"), expected == Outcome::Works); });
    }
};

TEST_P(OpeningCall, ThatFailsOnceHasItsOutcomeAndItsWords) {
    Script().failing[GetParam().name] = 1;
    EXPECT_EQ(Open(GetParam().once), GetParam().onceWords);
    EXPECT_EQ(Open(Outcome::Works), "");
}

TEST_P(OpeningCall, ThatAlwaysFailsHasItsOutcomeAndItsWords) {
    Script().failing[GetParam().name] = always;
    EXPECT_EQ(Open(GetParam().always), GetParam().alwaysWords);
    EXPECT_EQ(CallsOf(GetParam().name), GetParam().tries);
    Script().failing.clear();
    EXPECT_EQ(Open(Outcome::Works), "");
}

const FailingCall openingCalls[] = {
    // Of an interface, and of the clip's facts below, it is what the second try gives that counts. Without
    // one of
    // the first three the context stays without a codec.
    {"RawFactory.CreateCodec", Outcome::Works, once, Outcome::Fails, twice + std::string(null)},
    {"RawCodec.QueryInterface RawConstants", Outcome::Works, once, Outcome::Fails, twice + std::string(null)},
    {"RawCodec.QueryInterface RawExtras", Outcome::Works, once, Outcome::Fails, twice + std::string(null)},
    {"RawConstants.GetFrameAttributeRange expo", Outcome::Works, once, Outcome::Works, twice},
    {"RawConstants.GetClipAttributeRange tmid", Outcome::Works, once, Outcome::Works, twice},
    {"RawConstants.GetAttributeList gamt count", Outcome::Works, once, Outcome::Works, twice},
    {"RawConstants.GetAttributeList gama values", Outcome::Works, once, Outcome::Works, twice},
    {"RawCodec.QueryInterface RawPipelineSetup", Outcome::Works, once, Outcome::Fails, twice},
    {"RawPipelineSetup.SetPipelineOption 0", Outcome::Works, once, Outcome::Works, twice},
    // The second try counts, and the report takes a third.
    {"RawPipelineSetup.SetPipeline cpub", Outcome::Works, "", Outcome::Fails, "Vrel HRESULT = 0x80040003", 3},
    {"RawCodec.QueryInterface RawManualFlow", Outcome::Works, once, Outcome::Fails,
     twice + std::string(null)},
    {"RawCodec.SetCallback", Outcome::Fails, once, Outcome::Fails, twice},
    {"RawCodec.SetCallback null", Outcome::Works, once, Outcome::Works, twice},
    {"RawCodec.OpenClip", Outcome::Works, once, Outcome::Fails, twice},
    {"RawClip.QueryInterface RawClipReader", Outcome::Works, once, Outcome::Fails, twice},
    {"RawClip.GetWidth", Outcome::Works, once, Outcome::Fails, twice},
    {"RawClip.GetHeight", Outcome::Works, once, Outcome::Fails, twice},
    {"RawClip.GetFrameCount", Outcome::Works, once, Outcome::Fails, twice},
    {"RawClip.GetFrameRate", Outcome::Works, once, Outcome::Fails, twice},
    {"RawClip.GetTimecode 0", Outcome::Works, once, Outcome::Works, twice},
    {"RawClipReader.GetBitstreamBound", Outcome::Fails, once, Outcome::Fails, twice},
    {"RawClipReader.CreateReadJob 0", Outcome::Fails, once, Outcome::Fails, twice},
    {"RawJob.SetUserData read", Outcome::Works, "", Outcome::Fails, "", 2},
    {"RawJob.Submit read", Outcome::Fails, "", Outcome::Fails, "", 1},
    {"RawFrame.QueryInterface RawFrameSize", Outcome::Works, once, Outcome::Fails, twice},
    {"RawFrameSize.GetProcessedDimensions", Outcome::Works, once, Outcome::Works, twice},
    {"RawFrame.CloneFrameSettings", Outcome::Fails, once, Outcome::Fails, twice},
    {"RawClip.CloneClipSettings", Outcome::Fails, once, Outcome::Fails, twice},
    {"RawClip.GetCameraType", Outcome::Works, once, Outcome::Works, twice},
    {"RawFrameSettings.GetAttribute wbkv", Outcome::Works, "", Outcome::Works, "", 1},
    {"RawClipSettings.GetAttribute lutm", Outcome::Works, "", Outcome::Works, "", 1},
    {"RawClipSettings.SetAttribute lutm=Embedded", Outcome::Works, "", Outcome::Works, "", 1},
    {"RawClipSettings.GetLut", Outcome::Works, "", Outcome::Works, "", 2},
    {"RawClip.GetMetadataIterator", Outcome::Works, "", Outcome::Works, "", 1},
    {"RawFrame.GetMetadataIterator", Outcome::Works, "", Outcome::Works, "", 1},
    {"RawMetadataIterator.GetKey", Outcome::Works, "", Outcome::Works, "", 2},
};

INSTANTIATE_TEST_SUITE_P(All, OpeningCall, testing::ValuesIn(openingCalls), NameOf<FailingCall>);

/// Decoding a frame of an open clip.
class DecodingCall : public RawCall {
protected:
    DecodingCall() { EXPECT_TRUE(context.OpenClip("clip.vrel")); }

    std::string Decode(Outcome expected) {
        Script().calls.clear();
        return WordsOf([&] {
            CxAlignedBuffer output;
            EXPECT_EQ(context.DecodeFrame(0, output), expected == Outcome::Works);
        });
    }

    VrelDecoderContext context;
};

TEST_P(DecodingCall, ThatFailsOnceHasItsOutcomeAndItsWords) {
    Script().failing[GetParam().name] = 1;
    EXPECT_EQ(Decode(GetParam().once), GetParam().onceWords);
    EXPECT_EQ(Decode(Outcome::Works), "");
}

TEST_P(DecodingCall, ThatAlwaysFailsHasItsOutcomeAndItsWords) {
    Script().failing[GetParam().name] = always;
    EXPECT_EQ(Decode(GetParam().always), GetParam().alwaysWords);
    EXPECT_EQ(CallsOf(GetParam().name), GetParam().tries);
    Script().failing.clear();
    EXPECT_EQ(Decode(Outcome::Works), "");
}

const FailingCall decodingCalls[] = {
    {"RawClipReader.GetBitstreamBound", Outcome::Fails, once + std::string(null), Outcome::Fails,
     twice + std::string(null)},
    {"RawClipReader.CreateReadJob 0", Outcome::Fails, once + std::string(null), Outcome::Fails,
     twice + std::string(null)},
    {"RawJob.SetUserData read", Outcome::Works, "", Outcome::Fails, null},
    {"RawJob.Submit read", Outcome::Fails, null, Outcome::Fails, null, 1},
    {"RawFrame.SetResourceFormat 16pl", Outcome::Fails, once, Outcome::Fails, twice},
    {"RawFrame.SetResolutionScale full", Outcome::Fails, once, Outcome::Fails, twice},
    {"RawFrame.QueryInterface RawFrameSize", Outcome::Fails, once, Outcome::Fails, twice},
    {"RawFrameSize.GetProcessedDimensions", Outcome::Fails, once, Outcome::Fails, twice},
    {"RawFrame.CloneFrameSettings", Outcome::Fails, once, Outcome::Fails, twice},
    {"RawClip.CloneClipSettings", Outcome::Fails, once, Outcome::Fails, twice},
    {"RawManualFlow.GetFrameStateSize", Outcome::Fails, once, Outcome::Fails, twice},
    {"RawClipSettings.GetLut", Outcome::Works, "", Outcome::Works, "", 1},
    {"RawManualFlow.FillFrameState", Outcome::Fails, once, Outcome::Fails, twice},
    {"RawManualFlow.GetDecodedSize", Outcome::Fails, once, Outcome::Fails, twice},
    {"RawManualFlow.CreateDecodeJob", Outcome::Fails, "Vrel (CreateDecodeJob) HRESULT = 0x0", Outcome::Fails,
     "Vrel (CreateDecodeJob) HRESULT = 0x80040002"},
    {"RawJob.SetUserData decode", Outcome::Works, once, Outcome::Fails,
     refused + std::string("Vrel (WaitForDecodeJob) HRESULT = 0x80004005"), 4},
    {"RawJob.Submit decode", Outcome::Works, once, Outcome::Fails,
     refused + std::string("Vrel (WaitForDecodeJob) HRESULT = 0x80004005"), 4},
    {"RawManualFlow.GetProcessedSize", Outcome::Fails, once, Outcome::Fails, twice},
    {"RawManualFlow.CreateProcessJob", Outcome::Fails, "Vrel (CreateCPUProcessJob) HRESULT = 0x0",
     Outcome::Fails, "Vrel (CreateCPUProcessJob) HRESULT = 0x80040002"},
    {"RawJob.SetUserData process", Outcome::Works, once, Outcome::Fails,
     refused + std::string("Vrel (WaitForCPUProcessJob) HRESULT = 0x80004005"), 4},
    {"RawJob.Submit process", Outcome::Works, once, Outcome::Fails,
     refused + std::string("Vrel (WaitForCPUProcessJob) HRESULT = 0x80004005"), 4},
};

INSTANTIATE_TEST_SUITE_P(All, DecodingCall, testing::ValuesIn(decodingCalls), NameOf<FailingCall>);

/// A call that succeeds and gives no object.
struct EmptyCall {
    std::string name;
    std::string words;
};

void PrintTo(const EmptyCall& call, std::ostream* out) { *out << call.name; }

class OpeningObject : public RawTest, public testing::WithParamInterface<EmptyCall> {};

TEST_P(OpeningObject, ThatIsMissingIsReported) {
    Script().givingNull = {GetParam().name};
    EXPECT_EQ(WordsOf([&] { EXPECT_FALSE(VrelDecoderContext().OpenClip("clip.vrel")); }), GetParam().words);
    EXPECT_EQ(CallsOf(GetParam().name), 1);
}

const EmptyCall emptyOpeningCalls[] = {
    {"RawFactory.CreateCodec", null + std::string(null)},
    {"RawCodec.QueryInterface RawConstants", null + std::string(null)},
    {"RawCodec.QueryInterface RawExtras", null + std::string(null)},
    {"RawCodec.QueryInterface RawPipelineSetup", null},
    {"RawCodec.QueryInterface RawManualFlow", null},
    {"RawCodec.OpenClip", null},
    {"RawClip.QueryInterface RawClipReader", null},
    {"RawClipReader.CreateReadJob 0", null},
    {"RawFrame.QueryInterface RawFrameSize", null},
    {"RawFrame.CloneFrameSettings", null},
    {"RawClip.CloneClipSettings", null},
};

INSTANTIATE_TEST_SUITE_P(All, OpeningObject, testing::ValuesIn(emptyOpeningCalls), NameOf<EmptyCall>);

class DecodingObject : public RawTest, public testing::WithParamInterface<EmptyCall> {};

TEST_P(DecodingObject, ThatIsMissingIsReported) {
    VrelDecoderContext context;
    ASSERT_TRUE(context.OpenClip("clip.vrel"));
    Script().givingNull = {GetParam().name};
    CxAlignedBuffer output;
    EXPECT_EQ(WordsOf([&] { EXPECT_FALSE(context.DecodeFrame(0, output)); }), GetParam().words);
    Script().givingNull.clear();
    EXPECT_TRUE(context.DecodeFrame(0, output));
}

const EmptyCall emptyDecodingCalls[] = {
    {"RawClipReader.CreateReadJob 0", null + std::string(null)},
    {"RawFrame.QueryInterface RawFrameSize", null},
    {"RawFrame.CloneFrameSettings", null},
    {"RawClip.CloneClipSettings", null},
    {"RawManualFlow.CreateDecodeJob", null},
    {"RawManualFlow.CreateProcessJob", null},
};

INSTANTIATE_TEST_SUITE_P(All, DecodingObject, testing::ValuesIn(emptyDecodingCalls), NameOf<EmptyCall>);

} // namespace
