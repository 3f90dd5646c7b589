#include "FrameList.h"

#include <gtest/gtest.h>

namespace {

using Numbers = std::vector<int64_t>;

std::optional<Numbers> Frames(const char* text, int64_t first, int64_t last) {
    const std::optional<FrameList> list = FrameList::Parse(text);
    return list ? list->Resolve(first, last) : std::nullopt;
}

} // namespace

TEST(FrameList, StandsForAllFramesByDefault) {
    EXPECT_EQ(FrameList().Resolve(1001, 1003), (Numbers{1001, 1002, 1003}));
}

TEST(FrameList, TakesSingleNumbersAndRanges) { EXPECT_EQ(Frames("0-2,7", 0, 9), (Numbers{0, 1, 2, 7})); }

TEST(FrameList, RunsAnOpenRangeToTheLastFrame) { EXPECT_EQ(Frames("7-", 0, 9), (Numbers{7, 8, 9})); }

TEST(FrameList, GivesEachFrameOnceInAscendingOrder) {
    EXPECT_EQ(Frames("5,1-3,2-4,5", 0, 9), (Numbers{1, 2, 3, 4, 5}));
}

TEST(FrameList, RefusesFramesThatTheInputDoesNotHave) {
    EXPECT_FALSE(Frames("10", 0, 9));
    EXPECT_FALSE(Frames("0", 1, 9));
    EXPECT_FALSE(Frames("10-", 0, 9));
    EXPECT_FALSE(Frames("0-9223372036854775807", 0, 9));
}

TEST(FrameList, RefusesTextThatIsNoList) {
    for (const char* text : {"", ",", "1,", "-", "-3", "3-1", "1--2", "a", "1 ,2", "1;2", "+1", "0x1",
                             "9223372036854775808", "1-2-3"})
        EXPECT_FALSE(FrameList::Parse(text)) << text;
}
