#pragma once

#include "framework/CxAbstractAVCodec.h"
#include "standins/mediafoundation/Peer.h"

#include <algorithm>

/// The units of a byte stream behind lengths of four bytes, as files hold them.
inline Bytes LengthPrefixed(const Bytes& stream) {
    const Bytes startCode = {0, 0, 1};
    Bytes sample;
    auto unit = std::search(stream.begin(), stream.end(), startCode.begin(), startCode.end());
    while (unit != stream.end()) {
        unit += 3;
        const auto next = std::search(unit, stream.end(), startCode.begin(), startCode.end());
        // A zero in front of a start code belongs to it.
        const auto end = next != stream.end() && next[-1] == 0 ? next - 1 : next;
        for (int shift = 24; shift >= 0; shift -= 8)
            sample.push_back(static_cast<uint8_t>((end - unit) >> shift));
        sample.insert(sample.end(), unit, end);
        unit = next;
    }
    return sample;
}

inline PeerStream LengthPrefixed(PeerStream stream) {
    for (TimedBytes& sample : stream.samples)
        sample.bytes = LengthPrefixed(sample.bytes);
    return stream;
}

/// A track whose first picture has the time 0. Frames are pictures in presentation
/// order.
class PeerTrackSource : public CxAbstractDataSource {
public:
    PeerTrackSource(PeerStream content, int32_t frameWidth, int32_t frameHeight)
        : stream(std::move(content)), width(frameWidth), height(frameHeight) {}

    int32_t GetWidth() override { return width; }
    int32_t GetHeight() override { return height; }
    int64_t GetSampleTime(int32_t sample) override {
        return IsSample(sample) ? Milliseconds(SampleAt(sample)) : int64_t{sample} * frameTime;
    }
    int32_t GetSampleCount() override { return static_cast<int32_t>(stream.samples.size()); }
    int32_t GetMaxSampleSize() override {
        size_t largest = 0;
        for (const TimedBytes& sample : stream.samples)
            largest = std::max(largest, sample.bytes.size());
        return static_cast<int32_t>(largest);
    }
    uint8_t* ReadSample(int32_t sample, uint8_t*, int32_t& size) override {
        if (!IsSample(sample)) return nullptr;
        ++reads;
        size = static_cast<int32_t>(SampleAt(sample).bytes.size());
        return SampleAt(sample).bytes.data();
    }
    const std::vector<uint8_t>* GetCodecPrivateData() override { return &stream.header; }
    uint32_t GetFourCC() override { return FourCC("avc1"); }
    int32_t GetSampleForFrame(int32_t frame) override {
        for (int32_t sample = 0; sample < GetSampleCount(); ++sample)
            if (GetSampleTime(sample) == frame * frameTime) return sample;
        return -1;
    }
    int32_t GetFieldOrder() override { return 1; }
    int32_t GetColorRange() override { return 1; }
    int32_t GetColorMatrix() override { return 1; }
    int32_t GetColorPrimaries() override { return 1; }
    int32_t GetReserved() override { return 0; }
    int32_t GetKeySample(int32_t sample) override {
        while (sample > 0 && !SampleAt(sample).isCleanPoint)
            --sample;
        return sample;
    }
    int64_t GetDecodeTime(int32_t sample) override { return sample * frameTime; }
    int32_t GetFrameForTime(int64_t time) override { return static_cast<int32_t>(time / frameTime); }

    int reads = 0; ///< of samples

private:
    static constexpr int64_t frameTime = 40;

    bool IsSample(int32_t sample) const {
        return sample >= 0 && static_cast<size_t>(sample) < stream.samples.size();
    }
    TimedBytes& SampleAt(int32_t sample) { return stream.samples[static_cast<size_t>(sample)]; }
    static int64_t Milliseconds(const TimedBytes& sample) { return (*sample.time - TimeOf(0)) / 10000; }

    PeerStream stream;
    int32_t width;
    int32_t height;
};
