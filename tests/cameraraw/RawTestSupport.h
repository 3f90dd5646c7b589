#pragma once

#include "cameraraw/RawLibrary.h"
#include "cameraraw/scripted/ScriptedRaw.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using Calls = std::vector<std::string>;

/// A test that starts with a script of its own, at whose end no object of the SDK lives.
class RawTest : public testing::Test {
protected:
    RawTest() { ResetScript(); }
    ~RawTest() override {
        JoinThreads();
        EXPECT_EQ(Script().objects, 0);
    }
};

/// What is written to the standard error stream while `call` runs.
template <typename Call>
std::string WordsOf(const Call& call) {
    testing::internal::CaptureStderr();
    call();
    return testing::internal::GetCapturedStderr();
}

/// How often a call was made.
inline int64_t CallsOf(const std::string& name) { return std::ranges::count(Script().calls, name); }

/// The calls since the script began, or since the last time, without the ends of objects.
inline Calls TakeCalls() {
    JoinThreads();
    Calls calls = std::move(Script().calls);
    Script().calls.clear();
    std::erase_if(calls, [](const std::string& call) { return call.starts_with('~'); });
    return calls;
}

/// Several sequences of calls, one after the other.
inline Calls Joined(const std::vector<Calls>& parts) {
    Calls all;
    for (const Calls& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

// What is asked of the SDK, step by step.

inline const Calls initializeCalls = {
    "CreateRavenlightRawFactoryInstance",       "RawFactory.CreateCodec",
    "RawCodec.QueryInterface RawConstants",     "RawCodec.QueryInterface RawExtras",
    "RawConstants.GetFrameAttributeRange wbkv", "RawConstants.GetFrameAttributeRange wbtn",
    "RawConstants.GetFrameAttributeRange expo", "RawConstants.GetClipAttributeRange tcon",
    "RawConstants.GetClipAttributeRange tsat",  "RawConstants.GetClipAttributeRange tmid",
    "RawConstants.GetClipAttributeRange thih",  "RawConstants.GetClipAttributeRange tsha",
    "RawConstants.GetClipAttributeRange tblk",  "RawConstants.GetClipAttributeRange twit",
    "RawConstants.GetAttributeList gamt count", "RawConstants.GetAttributeList gamt values",
    "RawConstants.GetAttributeList gama count", "RawConstants.GetAttributeList gama values"};

inline const Calls configureCalls = {
    "RawCodec.QueryInterface RawPipelineSetup", "RawPipelineSetup.SetPipelineOption 0",
    "RawPipelineSetup.SetPipeline cpub", "RawCodec.QueryInterface RawManualFlow", "RawCodec.SetCallback"};

inline const Calls factsCalls = {"RawCodec.OpenClip",     "RawClip.QueryInterface RawClipReader",
                                 "RawClip.GetWidth",      "RawClip.GetHeight",
                                 "RawClip.GetFrameCount", "RawClip.GetFrameRate",
                                 "RawClip.GetTimecode 0"};

inline Calls ReadCalls(int frame) {
    return {"RawClipReader.GetBitstreamBound", "RawClipReader.CreateReadJob " + std::to_string(frame),
            "RawJob.SetUserData read", "RawJob.Submit read"};
}

inline const Calls settingsCalls = {"RawFrame.QueryInterface RawFrameSize",
                                    "RawFrameSize.GetProcessedDimensions",
                                    "RawFrame.CloneFrameSettings",
                                    "RawFrameSettings.GetAttribute wbkv",
                                    "RawFrameSettings.GetAttribute wbtn",
                                    "RawFrameSettings.GetAttribute expo",
                                    "RawFrameSettings.GetAttribute fiso",
                                    "RawClip.CloneClipSettings",
                                    "RawClipSettings.GetAttribute tcon",
                                    "RawClipSettings.GetAttribute tsat",
                                    "RawClipSettings.GetAttribute tmid",
                                    "RawClipSettings.GetAttribute thih",
                                    "RawClipSettings.GetAttribute tsha",
                                    "RawClipSettings.GetAttribute tblk",
                                    "RawClipSettings.GetAttribute twit",
                                    "RawClipSettings.GetAttribute tvbl",
                                    "RawClipSettings.GetAttribute hlry",
                                    "RawClipSettings.GetAttribute csgn",
                                    "RawClipSettings.GetAttribute gamt",
                                    "RawClipSettings.GetAttribute gama",
                                    "RawClipSettings.GetAttribute gain",
                                    "RawClipSettings.GetAttribute lutm",
                                    "RawClipSettings.SetAttribute lutm=Disabled",
                                    "RawClipSettings.SetAttribute lutm=Embedded",
                                    "RawClipSettings.GetLut",
                                    "RawClipSettings.SetAttribute lutm=Disabled",
                                    "RawClipSettings.SetAttribute lutm=Sidecar",
                                    "RawClipSettings.GetLut",
                                    "RawClipSettings.SetAttribute lutm=Disabled",
                                    "RawClip.GetCameraType",
                                    "RawClip.GetMetadataIterator",
                                    "RawMetadataIterator.GetKey",
                                    "RawFrame.GetMetadataIterator",
                                    "RawMetadataIterator.GetKey"};

inline const Calls clipCalls = Joined({factsCalls, ReadCalls(0), settingsCalls});

inline Calls MetadataCalls(int frame) {
    return Joined({ReadCalls(frame),
                   {"RawFrame.GetMetadataIterator", "RawMetadataIterator.GetKey",
                    "RawClip.GetTimecode " + std::to_string(frame)}});
}

inline Calls DecodeCalls(int frame) {
    return Joined(
        {ReadCalls(frame),
         {"RawFrame.SetResourceFormat 16pl", "RawFrame.SetResolutionScale full",
          "RawFrame.QueryInterface RawFrameSize", "RawFrameSize.GetProcessedDimensions",
          "RawFrame.CloneFrameSettings", "RawClip.CloneClipSettings", "RawManualFlow.GetFrameStateSize",
          "RawClipSettings.GetLut", "RawManualFlow.FillFrameState", "RawManualFlow.GetDecodedSize",
          "RawManualFlow.CreateDecodeJob", "RawJob.SetUserData decode", "RawJob.Submit decode",
          "RawManualFlow.GetProcessedSize", "RawManualFlow.CreateProcessJob", "RawJob.SetUserData process",
          "RawJob.Submit process"}});
}
