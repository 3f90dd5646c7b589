// A model of the rules says which calls the temporal decoder makes, to the source, the library and the cache,
// and the decoder makes exactly these.

#include "framework/ScriptedDecoder.h"
#include "framework/TemporalModel.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <numeric>

namespace {

/// A decoder of a track beside the model of it.
class ModelledDecoder {
public:
    explicit ModelledDecoder(const ScriptedTrack& track)
        : source(track, log), model(track), decoder(std::make_unique<ScriptedDecoder>(track, log)) {
        decoder->SetDataSource(&source);
    }

    /// Asks both for a frame.
    /// @return whether they did the same
    bool Request(int32_t frame, bool converts = true) {
        Image* image = nullptr;
        decoder->converts = model.converts = converts;
        decoder->converted = nullptr;
        const CxAVError result = decoder->GetDecodedFrame(frame, image);
        EXPECT_EQ(result, model.Request(frame)) << "frame " << frame;
        if (result == CxAV_OK) ExpectTheFrame(frame);
        return Compare() && result == CxAV_OK;
    }
    /// Ends both; every frame has been released once.
    void End() {
        decoder.reset();
        model.End();
        Compare();
        EXPECT_EQ(log.Released(1), log.frames.size());
    }

    ScriptedLog log;
    ScriptedSource source;
    TemporalModel model;
    std::vector<int64_t> samplesRead; ///< by all requests, in order

private:
    void ExpectTheFrame(int32_t frame) const {
        ASSERT_NE(decoder->converted, nullptr);
        EXPECT_EQ(decoder->converted->time, source.track.TimeOf(source.track.SampleOf(frame)));
    }
    bool Compare() {
        const bool isSame = log.calls == model.calls;
        EXPECT_EQ(log.calls, model.calls);
        const std::vector<int64_t> read = log.Of("ReadSample");
        samplesRead.insert(samplesRead.end(), read.begin(), read.end());
        log.calls.clear();
        model.calls.clear();
        return isSame;
    }

    std::unique_ptr<ScriptedDecoder> decoder;
};

/// Takes what goes to the standard error stream, which broken time stamps fill with warnings.
struct CapturedWarnings {
    CapturedWarnings() { testing::internal::CaptureStderr(); }
    ~CapturedWarnings() { testing::internal::GetCapturedStderr(); }
};

/// Frames in an order of its own kind: forward, backward, near each other, anywhere, beside the track.
std::vector<int32_t> RandomOrder(std::mt19937& random, int32_t frames) {
    const auto upTo = [&random](int32_t most) {
        return std::uniform_int_distribution<int32_t>(0, most)(random);
    };
    std::vector<int32_t> order;
    for (int32_t runs = 0; runs < 4; ++runs) {
        const int32_t step = upTo(4) - 2;
        int32_t frame = upTo(frames + 1) - 1;
        for (int32_t left = 1 + upTo(20); left > 0; --left) {
            order.push_back(frame);
            frame = step == 0 ? upTo(frames) : std::clamp(frame + step, -1, frames);
        }
    }
    return order;
}

/// All frames of a track, forward.
std::vector<int32_t> Forward(const ScriptedTrack& track) {
    std::vector<int32_t> order(static_cast<size_t>(track.Count()));
    std::iota(order.begin(), order.end(), 0);
    return order;
}

/// A track of closed groups with a pyramid in each.
ScriptedTrack PyramidTrack(int32_t groups, int32_t length) {
    ScriptedTrack track;
    for (; groups > 0; --groups)
        track.AppendGroup(length, 8, false);
    track.delay = 3;
    return track;
}

TEST(TemporalDecoderModel, RandomOrdersOverRandomGroupsMakeExactlyTheCallsThatTheRulesSay) {
    std::mt19937 random = MakeRandom();
    const CapturedWarnings quiet;
    size_t hits = 0, goings = 0, restarts = 0, asides = 0, evictions = 0;
    for (int round = 0; round < 60 && !testing::Test::HasFailure(); ++round) {
        const ScriptedTrack track = RandomTrack(random);
        ModelledDecoder both(track);
        for (const int32_t frame : RandomOrder(random, track.Count())) {
            both.Request(frame, random() % 16 != 0);
            if (testing::Test::HasFailure()) break;
        }
        both.End();
        hits += both.model.cacheHits;
        goings += both.model.keptGoing;
        restarts += both.model.restarts;
        asides += both.model.keptAside;
        evictions += both.model.evictions;
    }
    // The rounds between them took every road.
    for (const size_t count : {hits, goings, restarts, asides, evictions})
        EXPECT_GT(count, 20u);
}

TEST(TemporalDecoderModel, SequentialPlaybackFlushesOnceAndReadsEachSampleOnce) {
    const ScriptedTrack track = PyramidTrack(6, 25);
    ModelledDecoder both(track);
    for (const int32_t frame : Forward(track))
        ASSERT_TRUE(both.Request(frame)) << frame;
    EXPECT_EQ(both.model.restarts, 1u);
    // Three more drain the frames that the decoder holds back.
    std::vector<int64_t> once(static_cast<size_t>(track.Count() + 3));
    std::iota(once.begin(), once.end(), 0);
    EXPECT_EQ(both.samplesRead, once);
    both.End();
}

TEST(TemporalDecoderModel, PlaybackOverOpenGroupsAndGapsIsSequentialToo) {
    ScriptedTrack track;
    track.AppendGroup(12, 4, false, 480);
    track.AppendGroup(15, 4, true, 1000);
    track.AppendGroup(12, 1, true);
    track.AppendGroup(15, 8, true, 37, 33);
    track.delay = 3;
    ModelledDecoder both(track);
    for (const int32_t frame : Forward(track))
        ASSERT_TRUE(both.Request(frame)) << frame;
    EXPECT_EQ(both.model.restarts, 1u);
    both.End();
}

TEST(TemporalDecoderModel, EveryFrameOfClosedGroupsIsReachedFromEveryOther) {
    ScriptedTrack track = PyramidTrack(3, 9);
    for (const bool handsOver : {false, true}) {
        track.handsOver = handsOver;
        for (int32_t from = 0; from < track.Count(); ++from) {
            for (int32_t to = 0; to < track.Count(); ++to) {
                ModelledDecoder both(track);
                ASSERT_TRUE(both.Request(from)) << from;
                ASSERT_TRUE(both.Request(to)) << from << " to " << to;
            }
        }
    }
}

TEST(TemporalDecoderModel, SteppingBackThroughALongGroupDecodesItOnceForEverySpanThatTheCacheHolds) {
    const ScriptedTrack track = PyramidTrack(1, 250);
    ModelledDecoder both(track);
    std::vector<int32_t> order = Forward(track);
    std::reverse(order.begin(), order.end());
    for (const int32_t frame : order)
        ASSERT_TRUE(both.Request(frame)) << frame;
    EXPECT_EQ(both.model.restarts, (250u + 31u) / 32u);
    both.End();
}

} // namespace
