#include "TimeCode.h"

#include <gtest/gtest.h>

namespace {

uint32_t After(const char* text, Rational rate, int64_t frames) {
    const std::optional<TimeCode> code = TimeCode::Parse(text, rate);
    return code ? code->PackedAfter(frames) : 0xFFFFFFFF;
}

} // namespace

TEST(TimeCode, KeepsTheFirstFramesCode) { EXPECT_EQ(After("01:02:03:04", {25, 1}, 0), 0x01020304U); }

TEST(TimeCode, CarriesIntoSecondsMinutesAndHours) {
    EXPECT_EQ(After("00:59:59:23", {24, 1}, 1), 0x01000000U);
}

TEST(TimeCode, CountsTheNominalRateOfRatesOver1001) {
    EXPECT_EQ(After("00:00:00:00", {24000, 1001}, 24), 0x00000100U);
}

TEST(TimeCode, WrapsAtMidnight) { EXPECT_EQ(After("23:59:59:24", {25, 1}, 1), 0x00000000U); }

TEST(TimeCode, LeavesOutTwoNumbersAMinuteWithDropFrame) {
    EXPECT_EQ(After("00:00:59;29", {30000, 1001}, 1), 0x00010042U);
    EXPECT_EQ(After("00:01:00;02", {30000, 1001}, 0), 0x00010042U);
}

TEST(TimeCode, LeavesOutNothingInEveryTenthMinute) {
    EXPECT_EQ(After("00:09:59;29", {30000, 1001}, 1), 0x00100040U);
}

TEST(TimeCode, CountsTwentyFourHoursOfDropFrameAsADay) {
    EXPECT_EQ(After("00:00:00;00", {30000, 1001}, 2589408), 0x00000040U);
    EXPECT_EQ(After("00:00:00;00", {30000, 1001}, 2589407), 0x23595969U);
}

TEST(TimeCode, CountsEveryFrameOfADropFrameDayAsAPlainModelDoes) {
    const std::optional<TimeCode> code = TimeCode::Parse("00:00:00;00", {30000, 1001});
    ASSERT_TRUE(code);
    const auto decimal = [](int value) { return static_cast<uint32_t>(value / 10 * 16 + value % 10); };
    int64_t count = 0;
    for (int minute = 0; minute < 24 * 60; ++minute) {
        for (int frame = minute % 10 == 0 ? 0 : 2; frame < 1800; frame += 1, ++count) {
            const uint32_t expected = decimal(minute / 60) << 24 | decimal(minute % 60) << 16 |
                                      decimal(frame / 30) << 8 | decimal(frame % 30) | 0x40;
            ASSERT_EQ(code->PackedAfter(count), expected) << "frame " << count;
        }
    }
}

TEST(TimeCode, RefusesWhatIsNoTimeCode) {
    for (const char* text : {"", "01:02:03", "01:02:03:25", "aa:bb:cc:dd", "1:02:03:040"})
        EXPECT_FALSE(TimeCode::Parse(text, {25, 1})) << text;
    EXPECT_FALSE(TimeCode::Parse("00:00:00;00", {25, 1}));
    EXPECT_FALSE(TimeCode::Parse("00:00:00:00", {60, 1}));
    EXPECT_FALSE(TimeCode::Parse("00:00:00:00", {0, 1}));
}
