#include "media/FrameTable.h"

#include "media/AvHandles.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace {

// Keeps sums of a few times, and of 2^31 steps, inside 64 bits.
constexpr int64_t millisecondLimit = int64_t{1} << 60;
constexpr int64_t frameTimeLimit = int64_t{1} << 24;

int64_t Milliseconds(int64_t ticks, Rational timeBase) {
    const AVRational unit{static_cast<int>(timeBase.num), static_cast<int>(timeBase.den)};
    return std::clamp(av_rescale_q(ticks, unit, AVRational{1, 1000}), -millisecondLimit, millisecondLimit);
}

} // namespace

FrameTable::FrameTable(std::vector<SampleEntry> entries, Rational timeBase, int64_t frameTicks)
    : frameTime(std::clamp<int64_t>(Milliseconds(frameTicks, timeBase), 1, frameTimeLimit)) {
    samples.resize(entries.size());
    for (size_t i = 0; i < entries.size(); ++i) {
        samples[i].entry = entries[i];
        maxSampleSize = std::max(maxSampleSize, entries[i].size);
    }
    std::vector<int32_t> order(samples.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [this](int32_t a, int32_t b) {
        return samples[a].entry.presentation < samples[b].entry.presentation;
    });
    std::copy_if(order.begin(), order.end(), std::back_inserter(frames),
                 [this](int32_t sample) { return samples[sample].entry.isShown; });
    SetTimes(order, timeBase);
    SetKeySamples();
}

void FrameTable::SetTimes(const std::vector<int32_t>& presentationOrder, Rational timeBase) {
    if (samples.empty()) return;
    int64_t previous = INT64_MIN;
    for (const int32_t index : presentationOrder) {
        TimedSample& sample = samples[index];
        sample.time = Milliseconds(sample.entry.presentation, timeBase);
        if (sample.time <= previous) sample.time = previous + 1;
        previous = sample.time;
    }
    int64_t earliest = samples[presentationOrder.front()].time;
    for (TimedSample& sample : samples) {
        sample.decodeTime = Milliseconds(sample.entry.decode, timeBase);
        earliest = std::min(earliest, sample.decodeTime);
    }
    const int64_t shift = std::max<int64_t>(0, 1 - earliest);
    for (TimedSample& sample : samples) {
        sample.time += shift;
        sample.decodeTime += shift;
    }
    lastTime = previous + shift;
}

void FrameTable::SetKeySamples() {
    int32_t key = 0;
    int32_t keyBefore = 0;
    for (int32_t i = 0; i < SampleCount(); ++i) {
        if (samples[i].entry.isKey) keyBefore = std::exchange(key, i);
        const bool isLeading = samples[i].entry.presentation < samples[key].entry.presentation;
        samples[i].keySample = isLeading ? keyBefore : key;
    }
}

int64_t FrameTable::SampleTime(int32_t sample) const {
    if (sample < 0) return -1;
    if (sample < SampleCount()) return samples[sample].time;
    return lastTime + (int64_t{sample} - SampleCount() + 1) * frameTime;
}

int64_t FrameTable::DecodeTime(int32_t sample) const {
    if (sample < 0) return -1;
    return sample < SampleCount() ? samples[sample].decodeTime : SampleTime(sample);
}

int32_t FrameTable::SampleForFrame(int32_t frame) const {
    return frame >= 0 && frame < FrameCount() ? frames[frame] : -1;
}

int32_t FrameTable::FrameForTime(int64_t time) const {
    const auto found =
        std::lower_bound(frames.begin(), frames.end(), time,
                         [this](int32_t sample, int64_t t) { return samples[sample].time < t; });
    if (found == frames.end() || samples[*found].time != time) return -1;
    return static_cast<int32_t>(found - frames.begin());
}

int32_t FrameTable::KeySample(int32_t sample) const {
    if (sample < 0 || samples.empty()) return 0;
    return samples[std::min(sample, SampleCount() - 1)].keySample;
}
