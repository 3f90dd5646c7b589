// What the camera maker's SDK is asked for, step by step, as the library that stands in for it records it.

#include "module/RawClipsSupport.h"

namespace {

class RawSdkCalls : public RawClips {};

using Calls = std::vector<std::string>;

Calls Joined(const std::vector<Calls>& parts) {
    Calls all;
    for (const Calls& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

/// An operation once for each thing that it is about.
Calls Each(const std::string& operation, const Calls& subjects) {
    Calls calls;
    for (const std::string& subject : subjects)
        calls.push_back(std::string(operation).append(" ").append(subject));
    return calls;
}

Calls IteratorCalls(const std::string& object, int entries) {
    Calls calls = {object + ".GetMetadataIterator"};
    for (int i = 0; i < entries; ++i)
        calls.insert(calls.end(), {"RawMetadataIterator.GetKey", "RawMetadataIterator.GetData",
                                   "RawMetadataIterator.Next"});
    return calls;
}

Calls ReadCalls(const std::string& frame) {
    return {"RawClipReader.GetBitstreamBound", "RawClipReader.CreateReadJob " + frame,
            "RawJob.SetUserData read", "RawJob.Submit read"};
}

const Calls codecCalls = Joined(
    {{"CreateRavenlightRawFactoryInstance", "RawFactory.CreateCodec"},
     Each("RawCodec.QueryInterface", {"RawConstants", "RawExtras"}),
     Each("RawConstants.GetFrameAttributeRange", {"wbkv", "wbtn", "expo"}),
     Each("RawConstants.GetClipAttributeRange", {"tcon", "tsat", "tmid", "thih", "tsha", "tblk", "twit"}),
     Each("RawConstants.GetAttributeList", {"gamt", "gamt", "gama", "gama"}),
     {"RawCodec.QueryInterface RawPipelineSetup", "RawPipelineSetup.SetPipelineOption 0",
      "RawPipelineSetup.SetPipeline cpub", "RawCodec.QueryInterface RawManualFlow cpub",
      "RawCodec.SetCallback"}});

Calls ClipCalls() {
    const Calls lutCalls = {"RawClipSettings.SetAttribute lutm", "RawClipSettings.SetAttribute lutm",
                            "RawClipSettings.GetLut"};
    return Joined(
        {{"RawCodec.OpenClip", "RawClip.QueryInterface RawClipReader", "RawClip.GetWidth",
          "RawClip.GetHeight", "RawClip.GetFrameCount", "RawClip.GetFrameRate", "RawClip.GetTimecode 0"},
         ReadCalls("0"),
         {"RawFrame.QueryInterface RawFrameSize", "RawFrameSize.GetProcessedDimensions",
          "RawFrame.CloneFrameSettings"},
         Each("RawFrameSettings.GetAttribute", {"wbkv", "wbtn", "expo", "fiso"}),
         {"RawClip.CloneClipSettings"},
         Each("RawClipSettings.GetAttribute", {"tcon", "tsat", "tmid", "thih", "tsha", "tblk", "twit", "tvbl",
                                               "hlry", "csgn", "gamt", "gama", "gain", "lutm"}),
         lutCalls,
         lutCalls,
         {"RawClipSettings.SetAttribute lutm", "RawClip.GetCameraType"},
         IteratorCalls("RawClip", 2),
         IteratorCalls("RawFrame", 1)});
}

const Calls frameCalls =
    Joined({ReadCalls("1"),
            IteratorCalls("RawFrame", 1),
            {"RawClip.GetTimecode 1"},
            ReadCalls("1"),
            {"RawFrame.SetResourceFormat 16pl", "RawFrame.SetResolutionScale full",
             "RawFrame.QueryInterface RawFrameSize", "RawFrameSize.GetProcessedDimensions",
             "RawFrame.CloneFrameSettings", "RawClip.CloneClipSettings", "RawManualFlow.GetFrameStateSize",
             "RawClipSettings.GetLut", "RawManualFlow.FillFrameState", "RawManualFlow.GetDecodedSize",
             "RawManualFlow.CreateDecodeJob", "RawJob.SetUserData decode", "RawJob.Submit decode",
             "RawManualFlow.GetProcessedSize", "RawManualFlow.CreateProcessJob", "RawJob.SetUserData process",
             "RawJob.Submit process"}});

TEST_F(RawSdkCalls, AreThoseOfOpeningLoadingReopeningAndClosing) {
    const std::string path = Write();
    const std::string other = Write({}, "other.vrel");
    rawsdk::Control& control = SdkControl();
    const auto callsOf = [&](const auto& operation) {
        control.Reset();
        control.RecordCalls();
        EXPECT_TRUE(operation());
        return control.Calls();
    };
    EXPECT_EQ(callsOf([&] { return Open(path); }), Joined({codecCalls, ClipCalls()}));
    EXPECT_EQ(callsOf([&] { return Load(1) != nullptr; }), frameCalls);
    EXPECT_EQ(callsOf([&] { return Open(path); }), Calls{}) << "it is open";
    EXPECT_EQ(callsOf([&] { return Open(other); }), Joined({{"RawClip.Released"}, ClipCalls()}));
    EXPECT_EQ(callsOf([&] { return format->CloseFile(); }),
              (Calls{"RawClip.Released", "RawCodec.SetCallback null", "RawCodec.Released"}));
}

} // namespace
