#pragma once

#include "framework/CxAbstractAVCodec.h"

#include <cstdint>
#include <optional>
#include <ostream>
#include <random>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

/// One call, with the number that it was about: a frame, a sample, a time or the serial number of a decoded
/// frame.
struct TemporalCall {
    const char* name; ///< a literal
    int64_t number;

    bool operator==(const TemporalCall& other) const {
        return std::string_view(name) == other.name && number == other.number;
    }
};

inline void PrintTo(const TemporalCall& call, std::ostream* out) { *out << call.name << ' ' << call.number; }

using TemporalCalls = std::vector<TemporalCall>;

/// A track of long groups of pictures: what stands at each sample, and in what way its decoder behaves.
struct ScriptedTrack {
    struct Sample {
        int64_t time;     ///< presentation time in milliseconds, of its own for every sample
        int32_t key;      ///< the key sample of its group
        bool leads;       ///< shown before its key sample, and refers to the group before
        int64_t toldTime; ///< what the decoder says the frame's time is; `time` but in a broken stream
    };

    std::vector<Sample> samples; ///< in decode order
    size_t delay = 0;            ///< frames that the decoder holds back
    size_t burst = 0;            ///< frames above `delay` that gather before any comes out
    bool handsOver = false;      ///< the back-end caches the frames that were not asked for itself
    std::set<int32_t> failing;   ///< samples that the decoder refuses

    /// Appends a group of `length` frames at `frameTime` ms each, the first at least `gap` ms after the
    /// frames that are there. Between two frames that refer forwards only stand `distance` - 1 pyramids of B
    /// frames. An open group has as many of them before its key frame.
    void AppendGroup(int32_t length, int32_t distance, bool isOpen, int64_t gap = 0, int64_t frameTime = 40);

    int32_t Count() const { return static_cast<int32_t>(samples.size()); }
    /// Presentation time of a sample; past the end a time later than all.
    int64_t TimeOf(int32_t sample) const;
    /// The sample that carries a frame; -1 if there is none.
    int32_t SampleOf(int32_t frame) const;
    /// The number of the last frame at or before a time; -1 before the first.
    int32_t FrameAt(int64_t time) const;
    /// The key sample of a sample's group; 0 without one.
    int32_t KeyOf(int32_t sample) const;

private:
    void Append(int64_t time, bool leads);
    void AppendBetween(int64_t time, int32_t before, int32_t after, int64_t frameTime, bool leads);

    std::vector<std::pair<int64_t, int32_t>> shown; ///< times and samples, in order of presentation
    int64_t end = 0;                                ///< when the last frame ends
    int32_t key = 0;                                ///< of the group that is being appended
};

/// A track of one to eight random groups, open and closed, with gaps in time, for a decoder of random habits.
ScriptedTrack RandomTrack(std::mt19937& random);

/// The sequential decoder of a library: takes the samples of a track, gives times of frames.
class ScriptedLibrary {
public:
    explicit ScriptedLibrary(const ScriptedTrack& scripted) : track(scripted) {}

    /// Takes a sample; frames that refer to what was not decoded since the last flush are dropped.
    /// @return false if the sample is refused
    bool Feed(int32_t sample);
    /// The next frame, if one is due. A decoder that is drained holds none back.
    std::optional<int64_t> Next(bool isDrained);
    void Flush();

private:
    const ScriptedTrack& track;
    std::set<std::pair<int64_t, int64_t>> held; ///< time of presentation and time that is told
    std::optional<int32_t> startedAt;           ///< the first sample since the last flush
    bool isBursting = false;
};
