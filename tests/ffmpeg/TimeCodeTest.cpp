#include "ffmpeg/TimeCode.h"

#include <gtest/gtest.h>

namespace {

using CxFFMPEG::TimeCode;

std::string Fields(const std::string& text) { return TimeCode::FromText(text).Text(); }

int64_t Count(const std::string& text, uint8_t framesPerSecond) {
    TimeCode code = TimeCode::FromText(text);
    code.framesPerSecond = framesPerSecond;
    return code.FrameCount();
}

std::string TextOf(uint32_t count, uint8_t framesPerSecond, bool dropFrame = false) {
    return TimeCode::FromFrameCount(count, {framesPerSecond, 1}, framesPerSecond, dropFrame).Text();
}

TEST(TimeCode, FieldsStandAtFixedPlacesWhateverTheSeparators) {
    EXPECT_EQ(Fields("01:02:03:04"), "01:02:03:04");
    EXPECT_EQ(Fields("01;02.03x04"), "01:02:03:04");
}

TEST(TimeCode, FramesAreReadOfElevenAndTwelveCharactersOnly) {
    EXPECT_EQ(Fields("01:02:03"), "01:02:03:00");
    EXPECT_EQ(Fields("01:02:03:"), "01:02:03:00");
    EXPECT_EQ(Fields("01:02:03:4"), "01:02:03:00");
    EXPECT_EQ(Fields("01:02:03:04"), "01:02:03:04");
    EXPECT_EQ(Fields("01:02:03:104"), "01:02:03:104");
    EXPECT_EQ(Fields("01:02:03:1045"), "01:02:03:00");
}

TEST(TimeCode, AShortTextGivesTheFieldsThatItHolds) {
    EXPECT_EQ(Fields(""), "00:00:00:00");
    EXPECT_EQ(Fields("7"), "00:00:00:00");
    EXPECT_EQ(Fields("07"), "07:00:00:00");
    EXPECT_EQ(Fields("07:08"), "07:08:00:00");
    EXPECT_EQ(Fields("07:08:0"), "07:08:00:00");
}

TEST(TimeCode, ACharacterThatIsNoDigitEndsTheNumber) {
    EXPECT_EQ(Fields("1x:02:03:04"), "01:02:03:04");
    EXPECT_EQ(Fields("x1:02:03:04"), "00:02:03:04");
    EXPECT_EQ(Fields("-1:02:03:04"), "00:02:03:04");
}

TEST(TimeCode, FieldsKeepTheirLowEightBits) { EXPECT_EQ(Fields("00:00:00:999"), "00:00:00:231"); }

TEST(TimeCode, AnHourAtTwentyFiveIsNinetyThousandFrames) {
    EXPECT_EQ(Count("01:00:00:00", 25), 90000);
    EXPECT_EQ(TextOf(90000, 25), "01:00:00:00");
}

TEST(TimeCode, AnHourCountedAtTwentyFourAndWrittenAtTwentyThreeMoves) {
    EXPECT_EQ(Count("01:00:00:00", 24), 86400);
    EXPECT_EQ(TextOf(86400, 23), "01:02:36:12");
}

TEST(TimeCode, ThreeDigitsOfFramesCountInFull) { EXPECT_EQ(Count("00:00:01:100", 24), 124); }

TEST(TimeCode, TheLargestCountKeepsItsHoursInEightBits) { EXPECT_EQ(TextOf(4294967295u, 24), "46:16:10:15"); }

TEST(TimeCode, ARateOfZeroCountsAsOne) {
    EXPECT_EQ(TextOf(3661, 0), "01:01:01:00");
    EXPECT_EQ(Count("01:01:01:05", 0), 3666);
}

TEST(TimeCode, DropFrameLeavesOutTwoNumbersAMinuteButTheTenth) {
    EXPECT_EQ(TextOf(1799, 30, true), "00:00:59:29");
    EXPECT_EQ(TextOf(1800, 30, true), "00:01:00:02");
    EXPECT_EQ(TextOf(17981, 30, true), "00:09:59:29");
    EXPECT_EQ(TextOf(17982, 30, true), "00:10:00:00");
}

TEST(TimeCode, DropFrameCountsBackToTheSameFrame) {
    for (uint32_t count = 0; count < 200000; count += 37) {
        const TimeCode code = TimeCode::FromFrameCount(count, {30000, 1001}, 30, true);
        ASSERT_EQ(code.FrameCount(), count) << code.Text();
    }
}

TEST(TimeCode, DropFrameTakesFourNumbersUpToSixtyAndEightAbove) {
    TimeCode code = TimeCode::FromText("00:01:00:04");
    code.dropFrame = true;
    code.framesPerSecond = 60;
    EXPECT_EQ(code.FrameCount(), 3600);
    code.framesPerSecond = 120;
    EXPECT_EQ(code.FrameCount(), 7204 - 8);
}

} // namespace
