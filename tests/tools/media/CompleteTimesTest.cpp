// Times that containers leave out.

#include "media/FrameTable.h"

#include <gtest/gtest.h>

namespace {

std::vector<SampleEntry> Entries(const std::vector<std::pair<int64_t, int64_t>>& times) {
    std::vector<SampleEntry> entries(times.size());
    for (size_t i = 0; i < times.size(); ++i) {
        entries[i].presentation = times[i].first;
        entries[i].decode = times[i].second;
    }
    return entries;
}

std::vector<int64_t> Presentation(const std::vector<SampleEntry>& entries) {
    std::vector<int64_t> times;
    for (const SampleEntry& entry : entries)
        times.push_back(entry.presentation);
    return times;
}

std::vector<int64_t> Decode(const std::vector<SampleEntry>& entries) {
    std::vector<int64_t> times;
    for (const SampleEntry& entry : entries)
        times.push_back(entry.decode);
    return times;
}

TEST(CompleteTimes, WholeTimesStay) {
    auto entries = Entries({{2, 0}, {5, 1}, {3, 2}});
    CompleteTimes(entries, 1);
    EXPECT_EQ(Presentation(entries), (std::vector<int64_t>{2, 5, 3}));
    EXPECT_EQ(Decode(entries), (std::vector<int64_t>{0, 1, 2}));
}

TEST(CompleteTimes, WithoutAnyTimeSamplesFollowOneAnother) {
    auto entries = Entries({{noTime, noTime}, {noTime, noTime}, {noTime, noTime}});
    CompleteTimes(entries, 40);
    EXPECT_EQ(Presentation(entries), (std::vector<int64_t>{0, 40, 80}));
    EXPECT_EQ(Decode(entries), (std::vector<int64_t>{0, 40, 80}));
}

TEST(CompleteTimes, AMissingDecodeTimeIsTheEarliestTimeToCome) {
    auto entries = Entries({{10, noTime}, {40, noTime}, {20, noTime}, {30, 25}});
    CompleteTimes(entries, 10);
    EXPECT_EQ(Decode(entries), (std::vector<int64_t>{10, 20, 20, 25}));
}

TEST(CompleteTimes, ReferencePicturesWaitForTheNextOne) {
    // I P B B P B B as containers without presentation times give them.
    auto entries = Entries({{noTime, 0}, {noTime, 1}, {2, 2}, {3, 3}, {noTime, 4}, {5, 5}, {6, 6}});
    CompleteTimes(entries, 1);
    EXPECT_EQ(Presentation(entries), (std::vector<int64_t>{1, 4, 2, 3, 7, 5, 6}));
}

TEST(CompleteTimes, PictureOrderDealsOutTheDecodeTimes) {
    auto entries = Entries({{noTime, 0}, {noTime, 1}, {noTime, 2}, {noTime, 3}, {noTime, 4}, {noTime, 5}});
    const int32_t order[] = {0, 6, 2, 4, 0, 2}; // a second sequence starts at the fifth
    for (size_t i = 0; i < entries.size(); ++i) {
        entries[i].hasPictureOrder = true;
        entries[i].pictureOrder = order[i];
        entries[i].startsSequence = i == 0 || i == 4;
    }
    CompleteTimes(entries, 1);
    EXPECT_EQ(Presentation(entries), (std::vector<int64_t>{1, 4, 2, 3, 5, 6}));
}

TEST(CompleteTimes, NoTrackIsNoTrouble) {
    std::vector<SampleEntry> none;
    CompleteTimes(none, 1);
    EXPECT_TRUE(none.empty());
}

} // namespace
