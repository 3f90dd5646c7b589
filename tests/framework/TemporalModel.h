#pragma once

#include "framework/CxAVTypes.h"
#include "framework/ScriptedTrack.h"

#include <deque>
#include <map>

/// Says which calls a temporal decoder makes for a row of requests to a scripted track, and when it releases
/// which frame. Written against the rules alone; shares the track and its library with the test's back-end,
/// and nothing with the decoder.
class TemporalModel {
public:
    explicit TemporalModel(const ScriptedTrack& scripted) : track(scripted), library(scripted) {}

    /// A request for a frame.
    CxAVError Request(int32_t frame);
    /// The end of the decoder.
    void End();

    TemporalCalls calls;  ///< since they were last taken away
    bool converts = true; ///< whether a frame can be converted
    size_t cacheHits = 0; ///< requests that were met with no decoding
    size_t restarts = 0;  ///< requests that began at a key sample
    size_t keptAside = 0; ///< frames that no cache took
    size_t evictions = 0; ///< frames that left a full cache
    size_t keptGoing = 0; ///< requests that went on from where the decoder stood

private:
    /// What came of one sample.
    struct Output {
        CxAVError status;
        int64_t frame; ///< serial number, if the status is 0
        int64_t time;
    };

    void Add(const char* name, int64_t number = 0) { calls.push_back({name, number}); }
    int64_t Ask(const char* name, int32_t sample, int64_t answer);
    bool MustRestart(int32_t frame, int32_t sample, int32_t next, int32_t key);
    CxAVError Decode(int32_t next, int64_t target, int64_t limit);
    Output Take(int32_t sample, bool isDrained, int64_t target);
    CxAVError Show(int64_t frame);
    void Store(int64_t time, int64_t frame);
    void SetAside(int64_t frame);
    void EmptyCache();
    void EmptyAside();

    const ScriptedTrack& track;
    ScriptedLibrary library;
    std::map<int64_t, int64_t> cache; ///< serial numbers by time
    std::deque<int64_t> aside;        ///< serial numbers, the oldest first
    int64_t lastSample = -1;
    int64_t lastFrame = -1;
    int64_t framesMade = 0;
};
