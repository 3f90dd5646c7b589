#pragma once

#include "framework/CxAbstractAVCodec.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

/// A track whose samples stand in memory, each in a block of exactly its size, so that a read past a sample's
/// end is seen. Every sample is a key sample and frame n is sample n, of 40 ms.
class MemoryTrackSource : public CxAbstractDataSource {
public:
    using Sample = std::vector<uint8_t>;

    /// Where `ReadSample` leaves the bytes.
    enum class Delivery { OwnMemory, CallersBuffer };

    MemoryTrackSource(uint32_t code, int32_t frameWidth, int32_t frameHeight, std::vector<Sample> content,
                      Delivery where = Delivery::OwnMemory)
        : fourCC(code), width(frameWidth), height(frameHeight), samples(std::move(content)), delivery(where) {
        for (Sample& sample : samples)
            sample.shrink_to_fit();
    }

    int32_t GetWidth() override { return width; }
    int32_t GetHeight() override { return height; }
    int64_t GetSampleTime(int32_t sample) override { return int64_t{sample} * 40; }
    int32_t GetSampleCount() override { return static_cast<int32_t>(samples.size()); }
    int32_t GetMaxSampleSize() override {
        ++maxSampleSizeCalls;
        size_t largest = 0;
        for (const Sample& sample : samples)
            largest = std::max(largest, sample.size());
        return maxSampleSize >= 0 ? maxSampleSize : static_cast<int32_t>(largest);
    }
    uint8_t* ReadSample(int32_t sample, uint8_t* buffer, int32_t& size) override {
        lastSampleRead = sample;
        if (sample < 0 || sample >= GetSampleCount()) return nullptr;
        Sample& bytes = samples[static_cast<size_t>(sample)];
        const int32_t capacity = size;
        size = static_cast<int32_t>(bytes.size());
        if (delivery == Delivery::OwnMemory) return bytes.data() != nullptr ? bytes.data() : &emptySample;
        if (buffer == nullptr || capacity < 0) return nullptr;
        // A sample that does not fit is cut, and its true size told.
        std::copy_n(bytes.data(), std::min(size, capacity), buffer);
        return buffer;
    }
    const std::vector<uint8_t>* GetCodecPrivateData() override { return &privateData; }
    uint32_t GetFourCC() override { return fourCC; }
    int32_t GetSampleForFrame(int32_t frame) override { return frame < GetSampleCount() ? frame : -1; }
    int32_t GetFieldOrder() override { return 1; }
    int32_t GetColorRange() override { return 1; }
    int32_t GetColorMatrix() override { return 1; }
    int32_t GetColorPrimaries() override { return 1; }
    int32_t GetReserved() override { return 0; }
    int32_t GetKeySample(int32_t sample) override { return sample; }
    int64_t GetDecodeTime(int32_t sample) override { return GetSampleTime(sample); }
    int32_t GetFrameForTime(int64_t time) override { return static_cast<int32_t>(time / 40); }

    uint32_t fourCC;
    int32_t width;
    int32_t height;
    std::vector<Sample> samples;
    Delivery delivery;
    int32_t maxSampleSize = -1; ///< overrides the size of the largest sample if not negative
    int32_t maxSampleSizeCalls = 0;
    int32_t lastSampleRead = -1;

private:
    std::vector<uint8_t> privateData;
    uint8_t emptySample = 0;
};
