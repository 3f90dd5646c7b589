#pragma once

#include "codecs/UncompressedTestSupport.h"
#include "codecs/WMFCodec.h"
#include "codecs/wmf/scripted/ScriptedMediaFoundation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <utility>
#include <vector>

using Calls = std::vector<std::string>;

/// Ticks of Media Foundation in a millisecond.
inline constexpr int64_t ticks = 10000;

/// A test that starts with a script of its own, at whose end nothing of the library may be left.
class WMFTest : public testing::Test {
protected:
    WMFTest() { Script() = MFScript(); }
    ~WMFTest() override {
        EXPECT_EQ(Script().objects, 0);
        EXPECT_EQ(Script().started, 0);
        EXPECT_EQ(Script().arrays, 0);
    }

    /// The calls since the last time that were asked for.
    static Calls AllCalls() { return std::exchange(Script().calls, {}); }
    /// The same without those that make, fill and read samples.
    static Calls TransformCalls() {
        static const std::set<std::string> others = {
            "MFCreateMemoryBuffer", "MFCreateSample",    "Lock",      "Unlock",
            "SetCurrentLength",     "GetCurrentLength",  "AddBuffer", "ConvertToContiguousBuffer",
            "GetSampleTime",        "GetSampleDuration", "Release"};
        Calls calls = AllCalls();
        std::erase_if(
            calls, [](const std::string& call) { return others.contains(call.substr(0, call.find(' '))); });
        return calls;
    }
};

/// A track of H.264. Every `keyDistance`-th sample is a key sample.
class WMFTrack : public MemoryTrackSource {
public:
    WMFTrack(uint32_t code, int32_t frameWidth, std::vector<Bytes> content)
        : MemoryTrackSource(code, frameWidth, 2, std::move(content)) {}

    const std::vector<uint8_t>* GetCodecPrivateData() override { return hasRecord ? &record : nullptr; }
    int32_t GetKeySample(int32_t sample) override { return sample - sample % keyDistance; }
    int32_t GetFieldOrder() override { return fieldOrder; }

    Bytes record;
    bool hasRecord = true; ///< null is given if not
    int32_t keyDistance = 1;
    int32_t fieldOrder = 1;
};

/// A configuration record of one sequence and one picture parameter set, and the same as a byte stream.
inline const Bytes smallRecord = {1, 0x4d, 0, 30, 0xff, 0xe1, 0, 4, 0x67, 0x4d, 0, 30, 1, 0, 2, 0x68, 0xee};
inline const Bytes smallHeader = {0, 0, 0, 1, 0x67, 0x4d, 0, 30, 0, 0, 0, 1, 0x68, 0xee};

/// A track of 16 by 2 pixels, whose samples are a length and one byte, their number.
inline WMFTrack H264Track(size_t samples) {
    std::vector<Bytes> content;
    for (size_t i = 0; i < samples; ++i)
        content.push_back({0, 0, 0, 1, static_cast<uint8_t>(i)});
    WMFTrack track(FourCC("avc1"), 16, std::move(content));
    track.record = smallRecord;
    return track;
}

/// A picture of 16 by 2 pixels that the decoder gives for a time in milliseconds.
inline MFOutput PictureAt(int64_t time, uint8_t luma = 16) {
    Bytes bytes;
    // What the code "uyvy" has first: chroma, luma, chroma, luma.
    for (int i = 0; i < 16 * 2 / 2; ++i)
        bytes.insert(bytes.end(), {128, luma, 128, luma});
    return {.time = time * ticks, .duration = 40 * ticks, .bytes = bytes};
}

inline MFOutput StreamChange() { return {.result = MF_E_TRANSFORM_STREAM_CHANGE}; }
