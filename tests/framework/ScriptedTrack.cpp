#include "framework/ScriptedTrack.h"

#include <algorithm>

void ScriptedTrack::Append(int64_t time, bool leads) {
    const std::pair<int64_t, int32_t> place(time, Count());
    shown.insert(std::upper_bound(shown.begin(), shown.end(), place), place);
    samples.push_back({time, key, leads, time});
}

void ScriptedTrack::AppendBetween(int64_t time, int32_t before, int32_t after, int64_t frameTime,
                                  bool leads) {
    if (after - before < 2) return;
    const int32_t middle = (before + after) / 2;
    Append(time + middle * frameTime, leads);
    AppendBetween(time, before, middle, frameTime, leads);
    AppendBetween(time, middle, after, frameTime, leads);
}

void ScriptedTrack::AppendGroup(int32_t length, int32_t distance, bool isOpen, int64_t gap,
                                int64_t frameTime) {
    const int64_t start = end + gap;
    key = Count();
    int32_t last = isOpen ? std::min(distance, length) - 1 : 0;
    Append(start + last * frameTime, false);
    AppendBetween(start, -1, last, frameTime, true);
    while (last < length - 1) {
        const int32_t next = std::min(last + distance, length - 1);
        Append(start + next * frameTime, false);
        AppendBetween(start, last, next, frameTime, false);
        last = next;
    }
    end = start + length * frameTime;
}

int64_t ScriptedTrack::TimeOf(int32_t sample) const {
    if (sample < 0) return -1;
    if (sample < Count()) return samples[static_cast<size_t>(sample)].time;
    return end + 40 * (int64_t{sample} - Count());
}

int32_t ScriptedTrack::SampleOf(int32_t frame) const {
    return frame >= 0 && frame < Count() ? shown[static_cast<size_t>(frame)].second : -1;
}

int32_t ScriptedTrack::FrameAt(int64_t time) const {
    const auto after = std::upper_bound(shown.begin(), shown.end(), std::pair(time, Count()));
    return static_cast<int32_t>(after - shown.begin()) - 1;
}

int32_t ScriptedTrack::KeyOf(int32_t sample) const {
    return sample >= 0 && sample < Count() ? samples[static_cast<size_t>(sample)].key : 0;
}

ScriptedTrack RandomTrack(std::mt19937& random) {
    const auto upTo = [&random](int32_t most) {
        return std::uniform_int_distribution<int32_t>(0, most)(random);
    };
    ScriptedTrack track;
    for (int32_t groups = 1 + upTo(7); groups > 0; --groups) {
        const int32_t length = upTo(3) == 0 ? 1 + upTo(80) : 1 + upTo(15);
        const int64_t gap = upTo(2) == 0 ? upTo(2000) : 0;
        track.AppendGroup(length, 1 << upTo(3), groups % 2 == upTo(1), gap);
    }
    track.delay = static_cast<size_t>(upTo(5));
    track.burst = static_cast<size_t>(upTo(1) * upTo(4));
    track.handsOver = upTo(1) == 1;
    for (int32_t failures = upTo(3) / 2; failures > 0; --failures)
        track.failing.insert(upTo(track.Count() - 1));
    // In broken streams times are negative, taken, or of no sample.
    for (int32_t faults = upTo(1) * upTo(track.Count() / 3); faults > 0; --faults) {
        const auto place = static_cast<size_t>(upTo(track.Count() - 1));
        const int64_t times[] = {-1 - upTo(5), track.TimeOf(upTo(track.Count() - 1)),
                                 track.samples[place].time + 1};
        track.samples[place].toldTime = times[upTo(2)];
    }
    return track;
}

bool ScriptedLibrary::Feed(int32_t sample) {
    if (track.failing.contains(sample)) return false;
    if (!startedAt) startedAt = sample;
    const ScriptedTrack::Sample& content = track.samples[static_cast<size_t>(sample)];
    const bool isBroken = content.leads && *startedAt >= content.key;
    if (!isBroken) held.insert({content.time, content.toldTime});
    return true;
}

std::optional<int64_t> ScriptedLibrary::Next(bool isDrained) {
    if (held.size() > track.delay + track.burst) isBursting = true;
    if (held.size() <= track.delay) isBursting = false;
    if (held.empty() || (!isBursting && !isDrained)) return std::nullopt;
    const int64_t time = held.begin()->second;
    held.erase(held.begin());
    return time;
}

void ScriptedLibrary::Flush() {
    held.clear();
    startedAt.reset();
    isBursting = false;
}
