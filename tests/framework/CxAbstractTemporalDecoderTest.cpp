#include "framework/CxAbstractTemporalDecoder.h"

#include "framework/AllocatorSpy.h"
#include "framework/ScriptedDecoder.h"
#include "support/HeapSpy.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using Numbers = std::vector<int64_t>;

constexpr int32_t lastNumber = std::numeric_limits<int32_t>::max();

/// Three groups of 20 frames, 40 ms each, that refer to frames before them only; nothing is held back.
ScriptedTrack SimpleTrack() {
    ScriptedTrack track;
    for (int group = 0; group < 3; ++group)
        track.AppendGroup(20, 1, false);
    return track;
}

class CxAbstractTemporalDecoderTest : public testing::Test {
protected:
    void SetUp() override { decoder->SetDataSource(&source); }
    void TearDown() override {
        decoder.reset();
        EXPECT_EQ(log.Released(1), log.frames.size());
    }

    CxAVError Decode(int32_t frame) {
        log.calls.clear();
        return decoder->GetDecodedFrame(frame, image);
    }
    /// Lets the library give one frame for each sample, at the time that `time` says.
    void GiveFramesAt(std::function<int64_t(int32_t sample)> time) {
        decoder->onDecode = [this, time](int32_t sample, ScriptedFrame*& frame, CxDecodeRequest& request) {
            request.frameTime = time(sample);
            frame = log.NewFrame(request.frameTime);
            return CxAV_OK;
        };
    }

    ScriptedLog log;
    ScriptedTrack track = SimpleTrack();
    ScriptedSource source{track, log};
    std::unique_ptr<ScriptedDecoder> decoder = std::make_unique<ScriptedDecoder>(track, log);
    Image* image = nullptr;
};

TEST_F(CxAbstractTemporalDecoderTest, TheFirstRequestRestartsAtTheKeySampleWithAFlushOfAFreshDecoder) {
    EXPECT_EQ(Decode(0), CxAV_OK);
    EXPECT_EQ(log.Of("Flush").size(), 1u);
    EXPECT_EQ(log.Of("DecodeSample"), Numbers{0});
    EXPECT_EQ(decoder->LastSample(), 0);
    EXPECT_EQ(decoder->LastFrame(), 0);
}

TEST_F(CxAbstractTemporalDecoderTest, ARepeatedRequestIsServedByTheCacheAndDoesNotMoveTheDecoder) {
    Decode(4);
    const ScriptedFrame* const shown = decoder->converted;
    EXPECT_EQ(Decode(4), CxAV_OK);
    EXPECT_EQ(decoder->converted, shown);
    EXPECT_TRUE(log.Of("DecodeSample").empty());
    EXPECT_TRUE(log.Of("ReadSample").empty());
    EXPECT_EQ(decoder->LastSample(), 4);
    EXPECT_EQ(decoder->LastFrame(), 4);
}

TEST_F(CxAbstractTemporalDecoderTest, ARequestForTheLastFrameItselfThatWasEvictedRestarts) {
    Decode(22);
    decoder->ClearCachedFrames();
    EXPECT_EQ(Decode(22), CxAV_OK);
    EXPECT_EQ(log.Of("Flush").size(), 1u);
    EXPECT_EQ(log.Of("DecodeSample"), (Numbers{20, 21, 22}));
}

TEST_F(CxAbstractTemporalDecoderTest, TheLimitOfTheLastFrameIsAskedForPastTheEndOfTheTrack) {
    EXPECT_EQ(Decode(59), CxAV_OK);
    EXPECT_EQ(log.Of("GetSampleTime")[1], 59 + 32);
}

TEST_F(CxAbstractTemporalDecoderTest, ReadsPastTheEndDrainTheDecoderUntilTheFrameComes) {
    track.delay = 3;
    EXPECT_EQ(Decode(59), CxAV_OK);
    const Numbers read = log.Of("ReadSample");
    EXPECT_EQ(Numbers(read.end() - 4, read.end()), (Numbers{59, 60, 61, 62}));
    const Numbers decoded = log.Of("DecodeSample");
    EXPECT_EQ(Numbers(decoded.end() - 4, decoded.end()), (Numbers{59, -1, -1, -1}));
    EXPECT_EQ(decoder->LastSample(), 62);
    EXPECT_EQ(decoder->LastFrame(), 59);
}

TEST_F(CxAbstractTemporalDecoderTest, ADecoderThatIsDrainedInVainNeedsMoreDataAndIsFreshAgain) {
    decoder->onDecode = [](int32_t, ScriptedFrame*&, CxDecodeRequest&) { return CxAV_NEED_MORE_DATA; };
    EXPECT_EQ(Decode(59), CxAV_NEED_MORE_DATA);
    EXPECT_EQ(log.Of("DecodeSample").back(), -1);
    EXPECT_EQ(log.Of("Flush").size(), 2u);
    EXPECT_EQ(decoder->LastSample(), -1);
    EXPECT_EQ(decoder->LastFrame(), -1);
}

TEST_F(CxAbstractTemporalDecoderTest, FramesWhoseTimesNeverMatchEndWithAFailureAtTheLimit) {
    GiveFramesAt([](int32_t sample) { return sample * 40 + 1; });
    EXPECT_EQ(Decode(0), CxAV_FAILED);
    // The limit is the time of sample 32; the frame that is past it is neither cached nor released yet.
    EXPECT_EQ(log.Of("DecodeSample").back(), 32);
    EXPECT_EQ(log.Of("Cache").size(), 32u);
    EXPECT_TRUE(log.Of("Release").empty());
    EXPECT_EQ(decoder->LastSample(), 32);
    EXPECT_EQ(Decode(0), CxAV_FAILED);
    EXPECT_EQ(log.Of("Release").size(), 33u);
}

TEST_F(CxAbstractTemporalDecoderTest, FramesWhoseTimesNeverMatchNeedMoreDataAtTheEndOfTheData) {
    decoder->onDecode = [this](int32_t sample, ScriptedFrame*& frame, CxDecodeRequest& request) {
        if (sample < 0) return CxAV_NEED_MORE_DATA;
        request.frameTime = 1;
        frame = log.NewFrame(1);
        return CxAV_OK;
    };
    EXPECT_EQ(Decode(50), CxAV_NEED_MORE_DATA);
    EXPECT_EQ(log.Of("DecodeSample").back(), -1);
    EXPECT_EQ(decoder->LastSample(), -1);
}

TEST_F(CxAbstractTemporalDecoderTest, ADecoderThatAlwaysWantsMoreIsGivenUpPastTheLimit) {
    decoder->onDecode = [](int32_t, ScriptedFrame*&, CxDecodeRequest&) { return CxAV_NEED_MORE_DATA; };
    EXPECT_EQ(Decode(0), CxAV_NEED_MORE_DATA);
    EXPECT_EQ(log.Of("DecodeSample").back(), 33);
    EXPECT_EQ(decoder->LastSample(), -1);
}

TEST_F(CxAbstractTemporalDecoderTest, ASourceWithoutAnEndIsGivenUpAtTheHighestSampleNumber) {
    source.isEndless = true;
    source.sampleTime = [](int32_t) { return 0; };
    source.sampleOfEveryFrame = lastNumber - 2;
    source.keyOfEverySample = lastNumber - 2;
    decoder->onDecode = [](int32_t, ScriptedFrame*&, CxDecodeRequest&) { return CxAV_NEED_MORE_DATA; };
    EXPECT_EQ(Decode(0), CxAV_NEED_MORE_DATA);
    EXPECT_EQ(log.Of("ReadSample"), (Numbers{lastNumber - 2, lastNumber - 1, lastNumber}));
    EXPECT_EQ(decoder->LastSample(), -1);
    // The time 32 samples on is asked for in 32-bit arithmetic.
    EXPECT_EQ(log.Of("GetSampleTime")[1], int64_t{lastNumber - 2} + 32 - (int64_t{1} << 32));
}

TEST_F(CxAbstractTemporalDecoderTest, FramesWithoutAnEndAreGivenUpAtTheHighestSampleNumber) {
    source.isEndless = true;
    source.sampleTime = [](int32_t) { return 100; };
    source.sampleOfEveryFrame = lastNumber;
    source.keyOfEverySample = lastNumber - 50;
    GiveFramesAt([](int32_t) { return 7; });
    EXPECT_EQ(Decode(0), CxAV_NEED_MORE_DATA);
    EXPECT_EQ(log.Of("ReadSample").size(), 51u);
    EXPECT_EQ(log.Of("Flush").size(), 2u);
}

TEST_F(CxAbstractTemporalDecoderTest, WithoutACacheNothingIsFoundNorTaken) {
    decoder->ReleaseFrameCache();
    decoder->ReleaseFrameCache();
    ScriptedFrame* found = nullptr;
    ScriptedFrame* const mine = log.NewFrame(40);
    decoder->CacheDecodedFrame(40, mine);
    EXPECT_FALSE(decoder->FindCachedFrame(40, found));
    EXPECT_EQ(found, nullptr);
    decoder->ClearCachedFrames();
    EXPECT_EQ(mine->releases, 0);
    decoder->ReleaseDecodedFrame(found = mine);
}

TEST_F(CxAbstractTemporalDecoderTest, ARequestAfterTheCacheWasReleasedIsAgainstTheRulesAndHarmless) {
    Decode(3);
    decoder->ReleaseFrameCache();
    EXPECT_EQ(Decode(2), CxAV_OK);
    EXPECT_EQ(decoder->converted->time, 80);
    EXPECT_EQ(Decode(40), CxAV_OK);
    EXPECT_EQ(log.Of("Release").size(), 3u);
    decoder->ReleaseFrameCache();
    EXPECT_EQ(log.Released(1), log.frames.size());
}

TEST_F(CxAbstractTemporalDecoderTest, WithoutASourceOrForAFrameThatItLacksTheStateIsInvalid) {
    EXPECT_EQ(Decode(60), CxAV_INVALID_STATE);
    EXPECT_EQ(Decode(-1), CxAV_INVALID_STATE);
    EXPECT_TRUE(log.calls.empty());
    decoder->getDataSource() = nullptr;
    EXPECT_EQ(Decode(0), CxAV_INVALID_STATE);
}

TEST_F(CxAbstractTemporalDecoderTest, AFrameThatCannotBeConvertedStaysCached) {
    decoder->converts = false;
    EXPECT_EQ(Decode(5), CxAV_FAILED);
    EXPECT_EQ(Decode(5), CxAV_FAILED);
    EXPECT_TRUE(log.Of("DecodeSample").empty());
    decoder->converts = true;
    EXPECT_EQ(Decode(5), CxAV_OK);
}

TEST_F(CxAbstractTemporalDecoderTest, AnErrorOfTheDecoderIsReturnedAndThePositionsStay) {
    track.failing = {7};
    Decode(3);
    EXPECT_EQ(Decode(10), CxAV_READ_FAILED);
    EXPECT_EQ(decoder->LastSample(), 6);
    EXPECT_EQ(decoder->LastFrame(), 6);
    EXPECT_EQ(Decode(10), CxAV_READ_FAILED);
    EXPECT_EQ(log.Of("DecodeSample"), Numbers{7});
}

TEST_F(CxAbstractTemporalDecoderTest, AJumpForwardWithinAGroupGoesOnAndOneIntoAnotherRestartsThere) {
    Decode(3);
    EXPECT_EQ(Decode(9), CxAV_OK);
    EXPECT_EQ(log.Of("DecodeSample"), (Numbers{4, 5, 6, 7, 8, 9}));
    EXPECT_TRUE(log.Of("Flush").empty());
    EXPECT_EQ(Decode(45), CxAV_OK);
    EXPECT_EQ(log.Of("DecodeSample"), (Numbers{40, 41, 42, 43, 44, 45}));
    EXPECT_EQ(log.Of("Flush").size(), 1u);
}

TEST_F(CxAbstractTemporalDecoderTest, AStepBackOutOfTheCacheRestartsAndFillsTheCacheOnTheWay) {
    Decode(25);
    EXPECT_EQ(Decode(19), CxAV_OK);
    EXPECT_EQ(log.Of("DecodeSample").size(), 20u);
    for (int32_t frame = 18; frame >= 0; --frame) {
        EXPECT_EQ(Decode(frame), CxAV_OK);
        EXPECT_TRUE(log.Of("DecodeSample").empty()) << frame;
    }
}

TEST_F(CxAbstractTemporalDecoderTest, ANegativeKeySampleIsTakenAsTheFirst) {
    source.keyOfEverySample = -4;
    EXPECT_EQ(Decode(1), CxAV_OK);
    EXPECT_EQ(log.Of("DecodeSample"), (Numbers{0, 1}));
}

TEST_F(CxAbstractTemporalDecoderTest, TheCacheIsClearedDirectlyAtARestart) {
    Decode(1);
    Decode(0);
    Decode(45);
    EXPECT_TRUE(log.Of("ClearCachedFrames").empty());
    EXPECT_EQ(log.Of("Release"), (Numbers{0, 1}));
}

TEST_F(CxAbstractTemporalDecoderTest, TheRequestHoldsTheTimesOfTheSampleAndTheTarget) {
    std::vector<CxDecodeRequest> requests;
    decoder->onDecode = [&requests](int32_t, ScriptedFrame*&, CxDecodeRequest& request) {
        requests.push_back(request);
        return requests.size() == 2 ? CxAV_UNSUPPORTED : CxAV_NEED_MORE_DATA;
    };
    EXPECT_EQ(Decode(23), CxAV_UNSUPPORTED);
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(requests[1].decodeTime, 21 * 40 - 1000);
    EXPECT_EQ(requests[1].sampleTime, 21 * 40);
    EXPECT_EQ(requests[1].targetTime, 23 * 40);
}

TEST_F(CxAbstractTemporalDecoderTest, ASampleIsNeverLargerThanTheBufferThatItLiesIn) {
    source.toldSize = 1000;
    // The back-end expects the four bytes of the buffer.
    EXPECT_EQ(Decode(0), CxAV_OK);
}

TEST_F(CxAbstractTemporalDecoderTest, AFrameOfATimeThatIsTakenIsConvertedAndReleasedWithTheNextRestart) {
    // Every second frame has the time of the one before.
    GiveFramesAt([](int32_t sample) { return sample == 5 ? 200 : sample / 2 * 80; });
    EXPECT_EQ(Decode(5), CxAV_OK);
    EXPECT_EQ(decoder->converted->number, 5);
    EXPECT_TRUE(log.Of("Release").empty());
    EXPECT_EQ(Decode(44), CxAV_OK);
    // Cached frames in the order of their times, then those kept aside.
    EXPECT_EQ(log.Of("Release"), (Numbers{0, 2, 4, 5, 1, 3}));
}

TEST_F(CxAbstractTemporalDecoderTest, AFrameThatTheCacheHasNoMemoryForIsConvertedAndNotLost) {
    GiveFramesAt([](int32_t sample) { return sample * 40; });
    Decode(0);
    std::optional<HeapSpy> empty;
    decoder->onDecode = [this, &empty](int32_t, ScriptedFrame*& frame, CxDecodeRequest& request) {
        request.frameTime = 40;
        frame = log.NewFrame(40);
        // Two calls more are written down.
        log.calls.reserve(log.calls.size() + 8);
        empty.emplace(0);
        return CxAV_OK;
    };
    log.calls.clear();
    const CxAVError result = decoder->GetDecodedFrame(1, image);
    const bool ranOut = empty->RanOut();
    empty.reset();
    EXPECT_TRUE(ranOut);
    EXPECT_EQ(result, CxAV_OK);
    EXPECT_EQ(decoder->converted->number, 1);
    EXPECT_EQ(log.Released(0), 2u);
    decoder->ClearCachedFrames();
    EXPECT_EQ(log.Released(1), 2u);
}

TEST_F(CxAbstractTemporalDecoderTest, FramesWithoutAPlaceInTheCacheDoNotFillTheMemory) {
    decoder->onDecode = [this](int32_t sample, ScriptedFrame*& frame, CxDecodeRequest& request) {
        if (sample < 0) return CxAV_NEED_MORE_DATA;
        request.frameTime = 1;
        frame = log.NewFrame(1);
        EXPECT_LE(log.Released(0), 1 + 32 + 1u);
        return CxAV_OK;
    };
    source.keyOfEverySample = 0;
    EXPECT_EQ(Decode(59), CxAV_NEED_MORE_DATA);
    EXPECT_EQ(log.frames.size(), 60u);
    // The frame that the cache took stays there.
    EXPECT_EQ(log.Released(0), 1u);
}

TEST_F(CxAbstractTemporalDecoderTest, FramesThatTheBackEndHandsToTheCacheHaveAnOwnerToo) {
    ScriptedFrame* const first = log.NewFrame(40);
    ScriptedFrame* const second = log.NewFrame(40);
    decoder->CacheDecodedFrame(40, first);
    decoder->CacheDecodedFrame(40, second);
    ScriptedFrame* found = nullptr;
    EXPECT_TRUE(decoder->FindCachedFrame(40, found));
    EXPECT_EQ(found, first);
    EXPECT_EQ(log.Released(0), 2u);
    decoder->ClearCachedFrames();
    EXPECT_EQ(log.Released(1), 2u);
}

TEST_F(CxAbstractTemporalDecoderTest, WithoutMemoryForTheSampleBufferASourceMayStillGiveItsOwn) {
    AllocatorSpy::fails = true;
    bool wasAsked = false;
    decoder->onDecode = [&wasAsked](int32_t, ScriptedFrame*&, CxDecodeRequest&) {
        wasAsked = true;
        return CxAV_FAILED;
    };
    struct OwnMemory : ScriptedSource {
        using ScriptedSource::ScriptedSource;
        uint8_t* ReadSample(int32_t, uint8_t* buffer, int32_t& size) override {
            EXPECT_EQ(buffer, nullptr);
            EXPECT_EQ(size, 0);
            size = sizeof bytes;
            return bytes;
        }
        uint8_t bytes[4] = {};
    };
    OwnMemory own(track, log);
    decoder->SetDataSource(&own);
    EXPECT_EQ(Decode(0), CxAV_FAILED);
    AllocatorSpy::Reset();
    EXPECT_TRUE(wasAsked);
}

} // namespace
