#pragma once

#include "media/Rational.h"

#include <cstdint>
#include <vector>

/// A time that a packet does not have.
constexpr int64_t noTime = INT64_MIN;

/// What is kept of one packet of a track. Times are in the track's own ticks.
struct SampleEntry {
    int64_t presentation = noTime;
    int64_t decode = noTime;
    int64_t duration = 0;  ///< 0 unknown
    int64_t position = -1; ///< byte of the file; -1 unknown
    int32_t size = 0;      ///< bytes
    bool isKey = false;
    bool isShown = true;          ///< false: an edit list hides it
    bool startsSequence = false;  ///< picture order starts anew here
    bool hasPictureOrder = false; ///< the bitstream tells the order of presentation
    int32_t pictureOrder = 0;     ///< rank within the sequence, with gaps
};

/// Gives every sample its presentation and decode time. Times beyond 2^60 ticks count as missing.
///
/// A missing decode time is the earliest time of this sample and all later ones, or follows the one before.
/// If no sample has a presentation time, the decode times are dealt out in picture order, delayed so that
/// none is presented before it is decoded. If some have (containers without them leave the parser of FFmpeg
/// to find those of pictures that are shown at once), the others wait for the decode time of the next such.
/// @param frameTicks  ticks of a frame where nothing else is known; 1 to 2^28
void CompleteTimes(std::vector<SampleEntry>& samples, int64_t frameTicks);

/// Samples in decode order and frames in presentation order, with their times in milliseconds as
/// `MovieTrackSource` describes them. All indexes are checked; -1 is what a missing one gives.
class FrameTable {
public:
    FrameTable() = default;
    /// @param entries   in decode order, with complete times
    /// @param timeBase  seconds of a tick
    FrameTable(std::vector<SampleEntry> entries, Rational timeBase, int64_t frameTicks);

    int32_t SampleCount() const { return static_cast<int32_t>(samples.size()); }
    int32_t FrameCount() const { return static_cast<int32_t>(frames.size()); }
    int32_t MaxSampleSize() const { return maxSampleSize; }
    /// A sample that is there.
    const SampleEntry& Sample(int32_t sample) const { return samples[sample].entry; }
    int64_t SampleTime(int32_t sample) const;
    int64_t DecodeTime(int32_t sample) const;
    int32_t SampleForFrame(int32_t frame) const;
    int32_t FrameForTime(int64_t time) const;
    /// The sample where a decoder begins for this one: the last key sample at or before it. One that is
    /// presented before that needs pictures before it too, and has the key sample before.
    int32_t KeySample(int32_t sample) const;

private:
    struct TimedSample {
        SampleEntry entry;
        int64_t time = 0;       ///< presentation, milliseconds
        int64_t decodeTime = 0; ///< milliseconds
        int32_t keySample = 0;
    };

    void SetTimes(const std::vector<int32_t>& presentationOrder, Rational timeBase);
    void SetKeySamples();

    std::vector<TimedSample> samples;
    std::vector<int32_t> frames; ///< sample of each frame
    int64_t lastTime = 0;        ///< latest time of a sample, milliseconds
    int64_t frameTime = 1;       ///< milliseconds of a frame, at least 1
    int32_t maxSampleSize = 0;
};
