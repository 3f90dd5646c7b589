#include "framework/TemporalModel.h"

#include <algorithm>

int64_t TemporalModel::Ask(const char* name, int32_t sample, int64_t answer) {
    Add(name, sample);
    return answer;
}

CxAVError TemporalModel::Request(int32_t frame) {
    if (frame < 0) return CxAV_INVALID_STATE;
    Add("GetSampleForFrame", frame);
    const int32_t sample = track.SampleOf(frame);
    if (sample < 0) return CxAV_INVALID_STATE;
    const int64_t target = Ask("GetSampleTime", sample, track.TimeOf(sample));
    const int64_t limit = Ask("GetSampleTime", sample + 32, track.TimeOf(sample + 32));
    Add("Find", target);
    if (const auto hit = cache.find(target); hit != cache.end()) {
        ++cacheHits;
        return Show(hit->second);
    }
    auto next = static_cast<int32_t>(lastSample + 1);
    Add("GetSampleCount");
    Add("GetKeySample", sample);
    const int32_t key = track.KeyOf(sample);
    if (MustRestart(frame, sample, next, key)) {
        ++restarts;
        next = key;
        lastSample = lastFrame = -1;
        EmptyCache();
        EmptyAside();
        Add("Flush");
        library.Flush();
    } else {
        ++keptGoing;
    }
    return Decode(next, target, limit);
}

bool TemporalModel::MustRestart(int32_t frame, int32_t sample, int32_t next, int32_t key) {
    const bool behind = lastFrame == -1 || frame <= lastFrame;
    const bool ahead = sample > lastFrame + 1 || next < sample;
    if (behind) return true;
    if (!ahead) return false;
    const int32_t entered = std::min(track.Count() - 1, next);
    Add("GetKeySample", entered);
    return key > track.KeyOf(entered);
}

CxAVError TemporalModel::Decode(int32_t next, int64_t target, int64_t limit) {
    while (true) {
        Add("GetDecodeTime", next);
        Add("GetSampleTime", next);
        Add("ReadSample", next);
        const bool isDrained = next >= track.Count();
        const Output output = Take(next, isDrained, target);
        if (output.status == CxAV_NEED_MORE_DATA) {
            if (isDrained || track.TimeOf(next) > limit) {
                lastSample = lastFrame = -1;
                EmptyAside();
                Add("Flush");
                library.Flush();
                return CxAV_NEED_MORE_DATA;
            }
            lastSample = next++;
            continue;
        }
        if (output.status != CxAV_OK) return output.status;
        lastSample = next++;
        Add("GetFrameForTime", output.time);
        lastFrame = track.FrameAt(output.time);
        if (output.time == target) {
            Store(output.time, output.frame);
            return Show(output.frame);
        }
        if (output.time >= limit) {
            SetAside(output.frame);
            return CxAV_FAILED;
        }
        Store(output.time, output.frame);
    }
}

TemporalModel::Output TemporalModel::Take(int32_t sample, bool isDrained, int64_t target) {
    Add("DecodeSample", isDrained ? -1 : sample);
    if (!isDrained && !library.Feed(sample)) return {CxAV_READ_FAILED, 0, 0};
    Output output = {CxAV_NEED_MORE_DATA, 0, 0};
    while (const auto time = library.Next(isDrained)) {
        const int64_t frame = framesMade++;
        const bool isGiven = output.status == CxAV_NEED_MORE_DATA && (!track.handsOver || *time == target);
        if (isGiven) {
            output = {CxAV_OK, frame, *time};
            if (!track.handsOver) break;
        } else {
            Store(*time, frame);
        }
    }
    return output;
}

CxAVError TemporalModel::Show(int64_t frame) {
    Add("Convert", frame);
    return converts ? CxAV_OK : CxAV_FAILED;
}

void TemporalModel::Store(int64_t time, int64_t frame) {
    Add("Cache", time);
    if (time < 0 || cache.contains(time)) {
        SetAside(frame);
        return;
    }
    if (cache.size() == 32) {
        ++evictions;
        Add("Release", cache.begin()->second);
        cache.erase(cache.begin());
    }
    cache[time] = frame;
}

void TemporalModel::SetAside(int64_t frame) {
    ++keptAside;
    if (aside.size() == 32) {
        Add("Release", aside.front());
        aside.pop_front();
    }
    aside.push_back(frame);
}

void TemporalModel::EmptyCache() {
    for (const auto& [time, frame] : cache)
        Add("Release", frame);
    cache.clear();
}

void TemporalModel::EmptyAside() {
    for (const int64_t frame : aside)
        Add("Release", frame);
    aside.clear();
}

void TemporalModel::End() {
    EmptyAside();
    EmptyCache();
}
