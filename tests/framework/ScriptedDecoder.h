#pragma once

#include "framework/CxAbstractTemporalDecoder.h"
#include "framework/ScriptedTrack.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <optional>
#include <vector>

/// A decoded frame. It stays in memory after its release, so that a second release is seen.
struct ScriptedFrame {
    int64_t number;   ///< serial number
    int64_t time;     ///< what the decoder told
    int releases = 0; ///< 1 in the end
};

/// What the decoder and the source write down, and all frames that ever came out.
struct ScriptedLog {
    TemporalCalls calls;
    std::deque<ScriptedFrame> frames;

    void Add(const char* name, int64_t number = 0) { calls.push_back({name, number}); }
    ScriptedFrame* NewFrame(int64_t time) {
        frames.push_back({static_cast<int64_t>(frames.size()), time});
        return &frames.back();
    }
    /// Frames that were released exactly `times` times.
    size_t Released(int times) const {
        size_t count = 0;
        for (const ScriptedFrame& frame : frames)
            count += frame.releases == times ? 1 : 0;
        return count;
    }
    /// The calls of the given name, in order.
    std::vector<int64_t> Of(std::string_view name) const {
        std::vector<int64_t> numbers;
        for (const TemporalCall& call : calls)
            if (name == call.name) numbers.push_back(call.number);
        return numbers;
    }
};

/// The source of a scripted track. A sample's bytes are its number.
class ScriptedSource : public CxAbstractDataSource {
public:
    ScriptedSource(const ScriptedTrack& scripted, ScriptedLog& written) : track(scripted), log(written) {}

    int32_t GetWidth() override { return 16; }
    int32_t GetHeight() override { return 16; }
    int64_t GetSampleTime(int32_t sample) override {
        log.Add("GetSampleTime", sample);
        return sampleTime ? sampleTime(sample) : track.TimeOf(sample);
    }
    int32_t GetSampleCount() override {
        log.Add("GetSampleCount");
        return track.Count();
    }
    int32_t GetMaxSampleSize() override { return sizeof(int32_t); }
    uint8_t* ReadSample(int32_t sample, uint8_t* buffer, int32_t& size) override {
        log.Add("ReadSample", sample);
        EXPECT_EQ(size, static_cast<int32_t>(sizeof sample));
        if (!isEndless && (sample < 0 || sample >= track.Count())) return nullptr;
        size = toldSize;
        std::copy_n(reinterpret_cast<const uint8_t*>(&sample), sizeof sample, buffer);
        return buffer;
    }
    const std::vector<uint8_t>* GetCodecPrivateData() override { return &privateData; }
    uint32_t GetFourCC() override { return FourCC("test"); }
    int32_t GetSampleForFrame(int32_t frame) override {
        log.Add("GetSampleForFrame", frame);
        return sampleOfEveryFrame ? *sampleOfEveryFrame : track.SampleOf(frame);
    }
    int32_t GetFieldOrder() override { return 1; }
    int32_t GetColorRange() override { return 1; }
    int32_t GetColorMatrix() override { return 1; }
    int32_t GetColorPrimaries() override { return 1; }
    int32_t GetReserved() override { return 0; }
    int32_t GetKeySample(int32_t sample) override {
        log.Add("GetKeySample", sample);
        return keyOfEverySample ? *keyOfEverySample : track.KeyOf(sample);
    }
    int64_t GetDecodeTime(int32_t sample) override {
        log.Add("GetDecodeTime", sample);
        return int64_t{sample} * 40 - 1000;
    }
    int32_t GetFrameForTime(int64_t time) override {
        log.Add("GetFrameForTime", time);
        return track.FrameAt(time);
    }

    const ScriptedTrack& track;
    ScriptedLog& log;
    bool isEndless = false; ///< there is a sample at every number
    std::function<int64_t(int32_t)> sampleTime;
    std::optional<int32_t> sampleOfEveryFrame;
    std::optional<int32_t> keyOfEverySample;
    int32_t toldSize = sizeof(int32_t);

private:
    std::vector<uint8_t> privateData;
};

/// A back-end that writes down what is asked of it. What it does with a sample can be replaced.
class ScriptedDecoder : public CxAbstractTemporalDecoder<ScriptedFrame> {
public:
    using Base = CxAbstractTemporalDecoder<ScriptedFrame>;

    ScriptedDecoder(const ScriptedTrack& scripted, ScriptedLog& written)
        : Base(CxAV_DECODE, nullptr), track(scripted), log(written), library(scripted) {}
    ScriptedDecoder(const ScriptedDecoder& other) = default;
    ScriptedDecoder(ScriptedDecoder&& other) = default;
    ScriptedDecoder& operator=(const ScriptedDecoder& other) {
        Base::operator=(other);
        return *this;
    }
    ScriptedDecoder& operator=(ScriptedDecoder&& other) {
        Base::operator=(std::move(other));
        return *this;
    }
    ~ScriptedDecoder() override {
        if (releasesItsCache) ReleaseFrameCache();
    }

    void Flush() override {
        log.get().Add("Flush");
        library.Flush();
    }
    int32_t GetWidth() override { return 16; }
    int32_t GetHeight() override { return 16; }
    CxAVError Open() override { return CxAV_OK; }

    void ReleaseDecodedFrame(ScriptedFrame*& frame) override {
        log.get().Add("Release", frame->number);
        ++frame->releases;
        frame = nullptr;
    }
    CxAVError DecodeSample(uint8_t* data, int32_t size, ScriptedFrame*& frame,
                           CxDecodeRequest& request) override {
        EXPECT_EQ(frame, nullptr);
        EXPECT_EQ(request.frameTime, 0);
        EXPECT_EQ(request.reserved, 0);
        const int32_t sample = data != nullptr ? SampleIn(data) : -1;
        EXPECT_EQ(size, data != nullptr ? static_cast<int32_t>(sizeof sample) : 0);
        log.get().Add("DecodeSample", sample);
        if (onDecode) return onDecode(sample, frame, request);
        if (sample >= 0 && !library.Feed(sample)) return CxAV_READ_FAILED;
        return track.get().handsOver ? TakeAll(sample < 0, frame, request)
                                     : TakeOne(sample < 0, frame, request);
    }
    bool ConvertFrameToImage(ScriptedFrame* frame, Image*&) override {
        log.get().Add("Convert", frame->number);
        EXPECT_EQ(frame->releases, 0);
        converted = frame;
        return converts;
    }
    void CacheDecodedFrame(int64_t time, ScriptedFrame* frame) override {
        log.get().Add("Cache", time);
        Base::CacheDecodedFrame(time, frame);
    }
    bool FindCachedFrame(int64_t time, ScriptedFrame*& frame) override {
        log.get().Add("Find", time);
        return Base::FindCachedFrame(time, frame);
    }
    void ClearCachedFrames() override {
        log.get().Add("ClearCachedFrames");
        Base::ClearCachedFrames();
    }

    int64_t LastSample() const { return lastSample; }
    int64_t LastFrame() const { return lastFrame; }
    bool HasAShareOfACache() const { return frameCache != nullptr; }

    /// Stands for the library and the way in which its frames are taken.
    std::function<CxAVError(int32_t sample, ScriptedFrame*& frame, CxDecodeRequest& request)> onDecode;
    bool converts = true;
    bool releasesItsCache = true;
    const ScriptedFrame* converted = nullptr; ///< the last one

private:
    static int32_t SampleIn(const uint8_t* data) {
        int32_t sample = 0;
        std::copy_n(data, sizeof sample, reinterpret_cast<uint8_t*>(&sample));
        return sample;
    }
    CxAVError TakeOne(bool isDrained, ScriptedFrame*& frame, CxDecodeRequest& request) {
        const std::optional<int64_t> time = library.Next(isDrained);
        if (!time) return CxAV_NEED_MORE_DATA;
        frame = log.get().NewFrame(*time);
        request.frameTime = *time;
        return CxAV_OK;
    }
    CxAVError TakeAll(bool isDrained, ScriptedFrame*& frame, CxDecodeRequest& request) {
        while (const std::optional<int64_t> time = library.Next(isDrained)) {
            ScriptedFrame* const next = log.get().NewFrame(*time);
            if (*time == request.targetTime && frame == nullptr) {
                frame = next;
                request.frameTime = *time;
            } else {
                CacheDecodedFrame(*time, next);
            }
        }
        return frame != nullptr ? CxAV_OK : CxAV_NEED_MORE_DATA;
    }

    std::reference_wrapper<const ScriptedTrack> track;
    std::reference_wrapper<ScriptedLog> log;
    ScriptedLibrary library;
};
