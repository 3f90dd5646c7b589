// Copies share the sample buffer and the cache, and no order in which they end leaks a frame, releases one
// twice or uses one that is gone.

#include "framework/AllocatorSpy.h"
#include "framework/ScriptedDecoder.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

namespace {

class TemporalDecoderCopies : public testing::Test {
protected:
    void SetUp() override {
        AllocatorSpy::Reset();
        track.AppendGroup(40, 1, false);
        first = std::make_unique<ScriptedDecoder>(track, log);
        first->SetDataSource(&source);
    }
    void TearDown() override {
        first.reset();
        EXPECT_EQ(log.Released(1), log.frames.size());
        EXPECT_EQ(AllocatorSpy::allocations, AllocatorSpy::frees);
    }

    CxAVError Decode(ScriptedDecoder& decoder, int32_t frame) {
        log.calls.clear();
        return decoder.GetDecodedFrame(frame, image);
    }
    /// Whether a request is met with no decoding.
    bool Hits(ScriptedDecoder& decoder, int32_t frame) {
        return Decode(decoder, frame) == CxAV_OK && log.Of("DecodeSample").empty();
    }

    ScriptedLog log;
    ScriptedTrack track;
    ScriptedSource source{track, log};
    std::unique_ptr<ScriptedDecoder> first;
    Image* image = nullptr;
};

TEST_F(TemporalDecoderCopies, ACopyHasTheSourceThePositionsTheBufferAndTheCache) {
    Decode(*first, 3);
    ScriptedDecoder copy(*first);
    EXPECT_EQ(copy.getDataSource(), &source);
    EXPECT_EQ(copy.GetName(), "Unknown");
    EXPECT_EQ(copy.LastSample(), 3);
    EXPECT_EQ(copy.LastFrame(), 3);
    EXPECT_EQ(copy.GetDataBuffer(), first->GetDataBuffer());
    EXPECT_EQ(copy.GetDataBufferSize(), first->GetDataBufferSize());
    EXPECT_TRUE(Hits(copy, 2));
}

TEST_F(TemporalDecoderCopies, WhatOneDecodesTheOtherFinds) {
    ScriptedDecoder copy(*first);
    Decode(copy, 3);
    EXPECT_TRUE(Hits(*first, 1));
    Decode(*first, 9);
    EXPECT_TRUE(Hits(copy, 8));
}

TEST_F(TemporalDecoderCopies, AMoveCopiesAndLeavesItsSourceAsItWas) {
    Decode(*first, 3);
    ScriptedDecoder moved(std::move(*first));
    EXPECT_TRUE(Hits(moved, 3));
    EXPECT_TRUE(Hits(*first, 2));
    EXPECT_EQ(first->LastSample(), 3);
    EXPECT_EQ(first->GetName(), "Unknown");
    EXPECT_NE(first->GetDataBuffer(), nullptr);
    EXPECT_EQ(first->GetDataBuffer(), moved.GetDataBuffer());
}

TEST_F(TemporalDecoderCopies, TheCopysEndLeavesTheFramesToTheFirst) {
    Decode(*first, 3);
    {
        ScriptedDecoder copy(*first);
        Decode(copy, 5);
    }
    EXPECT_EQ(log.Released(0), 6u);
    EXPECT_TRUE(Hits(*first, 5));
}

TEST_F(TemporalDecoderCopies, TheFirstsEndReleasesTheSharedFramesAndTheCopyWorksOnWithoutACache) {
    Decode(*first, 3);
    ScriptedDecoder copy(*first);
    first.reset();
    EXPECT_EQ(log.Released(1), 4u);
    ScriptedFrame* found = nullptr;
    EXPECT_FALSE(copy.FindCachedFrame(0, found));
    for (const int32_t frame : {3, 7, 2, 39}) {
        EXPECT_EQ(Decode(copy, frame), CxAV_OK) << frame;
        EXPECT_EQ(copy.converted->time, frame * 40);
        EXPECT_LE(log.Released(0), 32u);
    }
    copy.ReleaseFrameCache();
    EXPECT_EQ(log.Released(1), log.frames.size());
}

TEST_F(TemporalDecoderCopies, TheCopyOfOneThatIsGoneOwnsWhatItsBackEndHandsOver) {
    track.handsOver = true;
    track.delay = 3;
    ScriptedDecoder copy(*first);
    first.reset();
    for (const int32_t frame : {5, 30, 2})
        EXPECT_EQ(Decode(copy, frame), CxAV_OK) << frame;
}

TEST_F(TemporalDecoderCopies, AFrameKeptAsideTwiceIsReleasedOnce) {
    ScriptedFrame* const frame = log.NewFrame(-1);
    first->CacheDecodedFrame(-1, frame);
    first->CacheDecodedFrame(-1, frame);
}

TEST_F(TemporalDecoderCopies, ACopyOfACopyOutlivesBoth) {
    auto second = std::make_unique<ScriptedDecoder>(*first);
    ScriptedDecoder third(*second);
    Decode(third, 4);
    second.reset();
    EXPECT_TRUE(Hits(third, 4));
    first.reset();
    EXPECT_EQ(Decode(third, 4), CxAV_OK);
}

TEST_F(TemporalDecoderCopies, AFrameKeptAsideStaysWithTheOneThatDecodedIt) {
    first->CacheDecodedFrame(0, log.NewFrame(0));
    first->CacheDecodedFrame(0, log.NewFrame(0));
    {
        ScriptedDecoder copy(*first);
        copy.CacheDecodedFrame(0, log.NewFrame(0));
    }
    EXPECT_EQ(log.Of("Release"), std::vector<int64_t>{2});
}

TEST_F(TemporalDecoderCopies, AnAssignmentGivesUpTheOwnCacheForTheOtherOne) {
    ScriptedDecoder other(track, log);
    other.SetDataSource(&source);
    Decode(other, 1);
    Decode(*first, 3);
    ScriptedDecoder shares(other);
    other = *first;
    EXPECT_EQ(log.Released(1), 2u);
    EXPECT_EQ(other.LastSample(), 3);
    EXPECT_TRUE(Hits(other, 3));
    // The one that shared the cache that is gone works without.
    EXPECT_EQ(Decode(shares, 1), CxAV_OK);
    first.reset();
    EXPECT_EQ(Decode(other, 2), CxAV_OK);
}

TEST_F(TemporalDecoderCopies, AnAssignmentByMoveDoesTheSame) {
    ScriptedDecoder other(track, log);
    Decode(*first, 3);
    other = std::move(*first);
    EXPECT_TRUE(Hits(other, 3));
    EXPECT_TRUE(Hits(*first, 3));
}

TEST_F(TemporalDecoderCopies, AnAssignmentToItselfOrBetweenSharersKeepsTheCache) {
    Decode(*first, 3);
    ScriptedDecoder copy(*first);
    *first = copy;
    *first = *const_cast<const ScriptedDecoder*>(first.get());
    EXPECT_EQ(log.Released(1), 0u);
    EXPECT_TRUE(Hits(copy, 3));
    EXPECT_TRUE(Hits(*first, 3));
}

TEST_F(TemporalDecoderCopies, TheCacheReleasesThroughTheObjectThatMadeItAlsoWhenTheCopyWasTheLastToUseIt) {
    ScriptedDecoder copy(*first);
    Decode(copy, 35);
    copy.ReleaseFrameCache();
    EXPECT_FALSE(copy.HasAShareOfACache());
    EXPECT_EQ(log.Released(0), 32u);
    first->ReleaseFrameCache();
    EXPECT_EQ(log.Released(0), 0u);
}

TEST_F(TemporalDecoderCopies, TheSampleBufferIsFreedOnceByTheLastOwner) {
    first->GetDataBuffer();
    auto copy = std::make_unique<ScriptedDecoder>(*first);
    first.reset();
    EXPECT_EQ(AllocatorSpy::frees, 0);
    EXPECT_NE(copy->GetDataBuffer(), nullptr);
    EXPECT_EQ(AllocatorSpy::allocations, 1);
    copy.reset();
    EXPECT_EQ(AllocatorSpy::frees, 1);
}

TEST_F(TemporalDecoderCopies, ABackEndThatForgetsItsCacheLosesTheFramesAndNothingElseHappens) {
    auto forgetful = std::make_unique<ScriptedDecoder>(track, log);
    forgetful->SetDataSource(&source);
    forgetful->releasesItsCache = false;
    Decode(*forgetful, 1);
    log.calls.clear();
    ScriptedDecoder copy(*forgetful);
    forgetful.reset();
    EXPECT_FALSE(Hits(copy, 1));
    copy.ReleaseFrameCache();
    EXPECT_EQ(log.Released(0), 2u);
    for (ScriptedFrame& frame : log.frames)
        frame.releases = 1;
}

TEST_F(TemporalDecoderCopies, AllFourFormsAreThere) {
    using Decoder = CxAbstractTemporalDecoder<AVFrame>;
    static_assert(std::is_copy_assignable_v<Decoder> && std::is_move_assignable_v<Decoder>);
    EXPECT_TRUE((std::is_copy_constructible_v<ScriptedDecoder>));
    EXPECT_TRUE((std::is_move_constructible_v<ScriptedDecoder>));
}

} // namespace
