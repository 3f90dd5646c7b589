#include "media/FrameTable.h"

#include <algorithm>
#include <numeric>

namespace {

constexpr int64_t tickLimit = int64_t{1} << 60;
constexpr int64_t frameTickLimit = int64_t{1} << 28;

bool IsAbsurd(int64_t ticks) { return ticks < -tickLimit || ticks > tickLimit; }

void DropAbsurdTimes(std::vector<SampleEntry>& samples) {
    for (SampleEntry& sample : samples) {
        if (IsAbsurd(sample.presentation)) sample.presentation = noTime;
        if (IsAbsurd(sample.decode)) sample.decode = noTime;
        if (IsAbsurd(sample.duration) || sample.duration < 0) sample.duration = 0;
    }
}

void CompleteDecodeTimes(std::vector<SampleEntry>& samples, int64_t frameTicks) {
    int64_t earliest = INT64_MAX;
    for (auto sample = samples.rbegin(); sample != samples.rend(); ++sample) {
        if (sample->decode != noTime)
            earliest = std::min(earliest, sample->decode);
        else if (sample->presentation != noTime)
            earliest = std::min(earliest, sample->presentation);
        if (sample->decode == noTime && earliest != INT64_MAX) sample->decode = earliest;
    }
    int64_t next = 0;
    for (SampleEntry& sample : samples) {
        if (sample.decode == noTime) sample.decode = next;
        next = sample.decode + frameTicks;
    }
}

/// Indexes of the samples, first presented first.
std::vector<size_t> PictureOrder(const std::vector<SampleEntry>& samples) {
    std::vector<int32_t> sequence(samples.size());
    int32_t current = 0;
    for (size_t i = 0; i < samples.size(); ++i)
        sequence[i] = current += samples[i].startsSequence ? 1 : 0;
    std::vector<size_t> order(samples.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) {
        if (sequence[a] != sequence[b]) return sequence[a] < sequence[b];
        return samples[a].pictureOrder < samples[b].pictureOrder;
    });
    return order;
}

void DealTimesInPictureOrder(std::vector<SampleEntry>& samples) {
    std::vector<int64_t> times;
    times.reserve(samples.size());
    for (const SampleEntry& sample : samples)
        times.push_back(sample.decode);
    std::sort(times.begin(), times.end());
    const std::vector<size_t> order = PictureOrder(samples);
    int64_t delay = 0;
    for (size_t rank = 0; rank < order.size(); ++rank) {
        delay = std::max(delay, samples[order[rank]].decode - times[rank]);
    }
    for (size_t rank = 0; rank < order.size(); ++rank) {
        samples[order[rank]].presentation = times[rank] + delay;
    }
}

/// A picture that others refer to is shown when the next such is decoded; those between are shown at once.
void DelayReferencePictures(std::vector<SampleEntry>& samples, int64_t frameTicks) {
    int64_t next = samples.back().decode + frameTicks;
    for (auto sample = samples.rbegin(); sample != samples.rend(); ++sample) {
        if (sample->presentation != noTime) continue;
        sample->presentation = next;
        next = sample->decode;
    }
}

} // namespace

void CompleteTimes(std::vector<SampleEntry>& samples, int64_t frameTicks) {
    frameTicks = std::clamp<int64_t>(frameTicks, 1, frameTickLimit);
    DropAbsurdTimes(samples);
    CompleteDecodeTimes(samples, frameTicks);
    const auto missing = std::count_if(samples.begin(), samples.end(), [](const SampleEntry& sample) {
        return sample.presentation == noTime;
    });
    if (missing == 0) return;
    const bool ordered = samples.front().hasPictureOrder;
    if (ordered && static_cast<size_t>(missing) == samples.size()) return DealTimesInPictureOrder(samples);
    if (!ordered && static_cast<size_t>(missing) < samples.size()) {
        return DelayReferencePictures(samples, frameTicks);
    }
    for (SampleEntry& sample : samples) {
        if (sample.presentation == noTime) sample.presentation = sample.decode;
    }
}
