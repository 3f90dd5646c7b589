// The table of samples and frames, from entries made by hand.

#include "media/FrameTable.h"

#include <gtest/gtest.h>

#include <set>

namespace {

constexpr Rational millisecondTicks{1, 1000};

SampleEntry At(int64_t presentation, int64_t decode, bool isKey = false) {
    SampleEntry entry;
    entry.presentation = presentation;
    entry.decode = decode;
    entry.isKey = isKey;
    return entry;
}

/// I P B B at 40 ms, with the first decode time 40 ms before the first presentation.
std::vector<SampleEntry> ReorderedEntries() {
    return {At(80, 40, true), At(200, 80), At(120, 120), At(160, 160)};
}

TEST(FrameTable, FramesStandInPresentationOrder) {
    const FrameTable table(ReorderedEntries(), millisecondTicks, 40);
    ASSERT_EQ(table.FrameCount(), 4);
    EXPECT_EQ(table.SampleForFrame(0), 0);
    EXPECT_EQ(table.SampleForFrame(1), 2);
    EXPECT_EQ(table.SampleForFrame(2), 3);
    EXPECT_EQ(table.SampleForFrame(3), 1);
}

TEST(FrameTable, PositiveTimesStayAsTheyAre) {
    const FrameTable table(ReorderedEntries(), millisecondTicks, 40);
    EXPECT_EQ(table.SampleTime(1), 200);
    EXPECT_EQ(table.DecodeTime(1), 80);
}

TEST(FrameTable, TimesMoveUpTogetherSoThatTheEarliestIsOne) {
    const FrameTable table({At(0, -80, true), At(120, -40), At(40, 0), At(80, 40)}, millisecondTicks, 40);
    EXPECT_EQ(table.DecodeTime(0), 1);
    EXPECT_EQ(table.SampleTime(0), 81);
    EXPECT_EQ(table.SampleTime(1), 201);
}

TEST(FrameTable, AHiddenSampleIsNoFrame) {
    std::vector<SampleEntry> entries = ReorderedEntries();
    entries[2].isShown = false;
    const FrameTable table(entries, millisecondTicks, 40);
    EXPECT_EQ(table.SampleCount(), 4);
    EXPECT_EQ(table.FrameCount(), 3);
    EXPECT_EQ(table.SampleForFrame(1), 3);
    EXPECT_EQ(table.FrameForTime(table.SampleTime(2)), -1);
}

TEST(FrameTable, FramesOutsideTheTrackHaveNoSample) {
    const FrameTable table(ReorderedEntries(), millisecondTicks, 40);
    EXPECT_EQ(table.SampleForFrame(-1), -1);
    EXPECT_EQ(table.SampleForFrame(4), -1);
}

TEST(FrameTable, TimesAreRoundedToTheNearestMillisecond) {
    const FrameTable table({At(1001, 1001), At(2002, 2002), At(3003, 3003)}, {1, 24000}, 1001);
    EXPECT_EQ(table.SampleTime(0), 42);  // 41.708
    EXPECT_EQ(table.SampleTime(1), 83);  // 83.417
    EXPECT_EQ(table.SampleTime(2), 125); // 125.125
}

TEST(FrameTable, EveryFrameHasATimeOfItsOwnAtTenThousandFramesASecond) {
    std::vector<SampleEntry> entries;
    for (int i = 0; i < 500; ++i)
        entries.push_back(At(i, i, true));
    const FrameTable table(entries, {1, 10000}, 1);
    int64_t previous = 0;
    for (int32_t frame = 0; frame < 500; ++frame) {
        const int64_t time = table.SampleTime(table.SampleForFrame(frame));
        ASSERT_GT(time, previous);
        ASSERT_EQ(table.FrameForTime(time), frame);
        previous = time;
    }
}

TEST(FrameTable, SamplesWithTheSameTimeKeepDecodeOrder) {
    const FrameTable table({At(40, 40), At(40, 80), At(40, 120)}, millisecondTicks, 40);
    EXPECT_EQ(table.SampleForFrame(2), 2);
    EXPECT_EQ(table.SampleTime(0), 40);
    EXPECT_EQ(table.SampleTime(2), 42);
}

TEST(FrameTable, ATimeBetweenFramesIsNoFrame) {
    const FrameTable table(ReorderedEntries(), millisecondTicks, 40);
    EXPECT_EQ(table.FrameForTime(121), -1);
    EXPECT_EQ(table.FrameForTime(INT64_MIN), -1);
    EXPECT_EQ(table.FrameForTime(INT64_MAX), -1);
}

TEST(FrameTable, TimesPastTheEndRiseAndAreLaterThanEverySample) {
    const FrameTable table(ReorderedEntries(), millisecondTicks, 40);
    int64_t previous = 200; // the latest, of sample 1
    for (int32_t sample = 4; sample < 4 + 32; ++sample) {
        ASSERT_GT(table.SampleTime(sample), previous);
        previous = table.SampleTime(sample);
    }
    EXPECT_EQ(table.SampleTime(4), 240);
}

TEST(FrameTable, NegativeIndexesAreAnswered) {
    const FrameTable table(ReorderedEntries(), millisecondTicks, 40);
    EXPECT_EQ(table.SampleTime(-1), -1);
    EXPECT_EQ(table.DecodeTime(-1), -1);
    EXPECT_EQ(table.KeySample(-1), 0);
}

TEST(FrameTable, TheKeySampleIsTheLastOneAtOrBefore) {
    const FrameTable table({At(1, 1), At(2, 2, true), At(3, 3), At(4, 4, true)}, millisecondTicks, 1);
    EXPECT_EQ(table.KeySample(0), 0); // none before
    EXPECT_EQ(table.KeySample(1), 1);
    EXPECT_EQ(table.KeySample(2), 1);
    EXPECT_EQ(table.KeySample(3), 3);
    EXPECT_EQ(table.KeySample(40), 3);
}

TEST(FrameTable, ASamplePresentedBeforeItsKeySampleHasTheKeySampleBeforeThat) {
    const FrameTable table({At(1, 1, true), At(2, 2), At(5, 3, true), At(3, 4), At(4, 5), At(6, 6)},
                           millisecondTicks, 1);
    EXPECT_EQ(table.KeySample(2), 2);
    EXPECT_EQ(table.KeySample(3), 0);
    EXPECT_EQ(table.KeySample(4), 0);
    EXPECT_EQ(table.KeySample(5), 2);
}

TEST(FrameTable, AnEmptyTableAnswersEverything) {
    const FrameTable table;
    EXPECT_EQ(table.FrameCount(), 0);
    EXPECT_EQ(table.SampleForFrame(0), -1);
    EXPECT_EQ(table.FrameForTime(0), -1);
    EXPECT_EQ(table.KeySample(0), 0);
    EXPECT_EQ(table.SampleTime(1), 2);
}

TEST(FrameTable, TimesAtTheEndsOfTheRangeDoNotOverflow) {
    std::vector<SampleEntry> entries{At(INT64_MAX, INT64_MIN), At(INT64_MIN + 1, INT64_MAX), At(5, 5)};
    CompleteTimes(entries, INT64_MAX);
    const FrameTable table(entries, {INT32_MAX, 1}, INT64_MAX);
    EXPECT_LT(table.SampleTime(table.SampleForFrame(0)), table.SampleTime(table.SampleForFrame(1)));
    EXPECT_LT(table.SampleTime(table.SampleForFrame(2)), table.SampleTime(INT32_MAX));
}

} // namespace
