#include "host/TagList.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace {

constexpr Tag integerTag = 0x10010003;
constexpr Tag doubleTag = 0x200000c9;
constexpr Tag textTag = 0x30000015;
constexpr Tag repeatedTag = 0x38000064;
constexpr Tag pointerTag = 0x60010000;
constexpr Tag idTag = 0x80030000;

std::vector<std::string> Texts(const TagList& list, Tag tag) {
    std::vector<std::string> texts;
    for (const TagItem* item = list.Find(tag); item != nullptr; item = list.FindNext(item)) {
        texts.emplace_back(item->Text());
    }
    return texts;
}

TEST(TagList, AnEmptyListGivesTheDefaults) {
    const TagList list;
    int target = 0;
    EXPECT_EQ(list.Find(integerTag), nullptr);
    EXPECT_FALSE(list.FindQuery(integerTag));
    EXPECT_EQ(list.GetLong(integerTag, -7), -7);
    EXPECT_EQ(list.GetDouble(doubleTag, -2e9), -2e9);
    EXPECT_EQ(list.GetPtr(pointerTag, &target), &target);
    EXPECT_STREQ(list.GetString(textTag, "none"), "none");
}

TEST(TagList, AnArrayEndsAtItsZeroTag) {
    const TagItem array[] = {{integerTag, TagItem::FromInt(-3)},
                             {doubleTag, TagItem::FromDouble(0.25)},
                             {0, 99},
                             {textTag, TagItem::FromPtr("behind the end")}};
    const TagList list(array, false);
    EXPECT_EQ(list.Items().size(), 2u);
    EXPECT_EQ(list.GetLong(integerTag, 0), -3);
    EXPECT_EQ(list.GetDouble(doubleTag, 0), 0.25);
    EXPECT_FALSE(list.FindQuery(textTag));
}

TEST(TagList, ANullArrayIsAnEmptyList) {
    TagList list(nullptr, false);
    list.Set(static_cast<const TagItem*>(nullptr), nullptr);
    list.SetTags(nullptr, false);
    EXPECT_TRUE(list.Items().empty());
}

TEST(TagList, ArrayPairsKeepTheirOrderAndRepetitions) {
    const TagItem array[] = {{repeatedTag, TagItem::FromPtr(".avi")},
                             {textTag, TagItem::FromPtr("class")},
                             {repeatedTag, TagItem::FromPtr(".mov")},
                             {repeatedTag, TagItem::FromPtr(".mp4")},
                             {0, 0}};
    const TagList list(array, false);
    EXPECT_EQ(Texts(list, repeatedTag), std::vector<std::string>({".avi", ".mov", ".mp4"}));
    EXPECT_EQ(list.Items()[1].tag, textTag);
}

TEST(TagList, FindNextOfTheLastPairIsNull) {
    TagList list;
    list.Set(integerTag, 1, false);
    EXPECT_EQ(list.FindNext(list.Find(integerTag)), nullptr);
}

TEST(TagList, FindNextOfNothingIsNull) {
    TagList list;
    EXPECT_EQ(list.FindNext(nullptr), nullptr);
    list.Set(integerTag, 1, false);
    EXPECT_EQ(list.FindNext(list.Find(doubleTag)), nullptr);
}

TEST(TagList, StringsSurviveTheirSource) {
    TagList list;
    {
        std::string text = "text long enough to live on the heap, in two places";
        const TagItem array[] = {{textTag, TagItem::FromPtr(text.c_str())}, {0, 0}};
        list = TagList(array, false);
        list.Add(repeatedTag, text.c_str());
        text.assign(text.size(), 'x');
    }
    EXPECT_STREQ(list.GetString(textTag, ""), "text long enough to live on the heap, in two places");
    EXPECT_STREQ(list.GetString(repeatedTag, ""), "text long enough to live on the heap, in two places");
}

TEST(TagList, StringsOfACopySurviveTheOriginal) {
    TagList copy;
    {
        TagList list;
        list.Add(textTag, "kept");
        copy = list;
        list.Set(textTag, CxID("replaced", true), false);
    }
    EXPECT_STREQ(copy.GetString(textTag, ""), "kept");
}

TEST(TagList, NullTextCountsAsEmpty) {
    const TagItem array[] = {{textTag, 0}, {0, 0}};
    TagList list(array, false);
    list.Add(repeatedTag, static_cast<const char*>(nullptr));
    EXPECT_STREQ(list.GetString(textTag, "none"), "");
    EXPECT_STREQ(list.GetString(repeatedTag, "none"), "");
}

TEST(TagList, GetLongOfADoubleTruncates) {
    TagList list;
    list.Set(doubleTag, 2.9, false);
    EXPECT_EQ(list.GetLong(doubleTag, 0), 2);
    list.Set(doubleTag, -2.9, false);
    EXPECT_EQ(list.GetLong(doubleTag, 0), -2);
}

TEST(TagList, GetLongOfADoubleStaysInTheRangeOfTheResult) {
    TagList list;
    list.Set(doubleTag, 1e300, false);
    EXPECT_EQ(list.GetLong(doubleTag, 0), std::numeric_limits<int64_t>::max());
    list.Set(doubleTag, -HUGE_VAL, false);
    EXPECT_EQ(list.GetLong(doubleTag, 0), std::numeric_limits<int64_t>::min());
    list.Set(doubleTag, -9223372036854775808.0, false);
    EXPECT_EQ(list.GetLong(doubleTag, 0), std::numeric_limits<int64_t>::min());
    list.Set(doubleTag, std::nan(""), false);
    EXPECT_EQ(list.GetLong(doubleTag, 5), 0);
}

TEST(TagList, GetDoubleOfAnIntegerConverts) {
    TagList list;
    list.Set(integerTag, -12, false);
    EXPECT_EQ(list.GetDouble(integerTag, 0.5), -12.0);
}

TEST(TagList, NumbersAreConvertedToTheKindOfTheTagTheyAreSetUnder) {
    TagList list;
    list.Set(doubleTag, 3, false);
    list.Set(integerTag, 3.75, false);
    EXPECT_EQ(list.GetDouble(doubleTag, 0), 3.0);
    EXPECT_EQ(list.GetLong(integerTag, 0), 3);
}

template <typename Number>
constexpr bool canBeSet = requires(TagList list, Number number) {
    list.Set(integerTag, number, false);
};

template <typename Number>
void ExpectLimitsAreKept() {
    TagList list;
    for (const Number limit : {std::numeric_limits<Number>::min(), std::numeric_limits<Number>::max()}) {
        list.Set(integerTag, limit, false);
        EXPECT_EQ(list.GetLong(integerTag, 0), static_cast<int64_t>(limit));
        list.Set(doubleTag, limit, false);
        EXPECT_EQ(list.GetDouble(doubleTag, 0), static_cast<double>(limit));
    }
}

TEST(TagList, IntegersOfEverySizeKeepTheirValue) {
    ExpectLimitsAreKept<int8_t>();
    ExpectLimitsAreKept<uint16_t>();
    ExpectLimitsAreKept<int>();
    ExpectLimitsAreKept<uint32_t>();
    ExpectLimitsAreKept<int64_t>();
    EXPECT_FALSE(canBeSet<uint64_t>);
}

TEST(TagList, FractionsOfEverySizeKeepTheirValue) {
    TagList list;
    list.Set(doubleTag, 23.976, false);
    EXPECT_EQ(list.GetDouble(doubleTag, 0), 23.976);
    list.Set(doubleTag, 0.1f, false);
    EXPECT_EQ(list.GetDouble(doubleTag, 0), static_cast<double>(0.1f));
    EXPECT_FALSE(canBeSet<long double>);
}

TEST(TagList, AValueThatDoesNotFitTheTagsKindIsNotStored) {
    TagList list;
    int target = 0;
    list.Set(textTag, 5, false);
    list.Set(pointerTag, 1.0, false);
    list.SetPtr(textTag, &target);
    list.SetPtr(integerTag, &target);
    list.Add(pointerTag, "text");
    list.Set(integerTag, CxID("id", true), false);
    EXPECT_TRUE(list.Items().empty());
}

TEST(TagList, ReadingATagAsAnotherKindGivesTheDefault) {
    TagList list;
    int target = 0;
    list.Set(integerTag, 5, false);
    list.SetPtr(pointerTag, &target);
    list.Add(textTag, "text");
    EXPECT_EQ(list.GetLong(pointerTag, -1), -1);
    EXPECT_EQ(list.GetLong(textTag, -1), -1);
    EXPECT_EQ(list.GetDouble(textTag, -1), -1.0);
    EXPECT_EQ(list.GetPtr(integerTag, nullptr), nullptr);
    EXPECT_EQ(list.GetPtr(textTag, nullptr), nullptr);
    EXPECT_EQ(list.GetString(pointerTag, nullptr), nullptr);
    EXPECT_EQ(list.GetString(integerTag, nullptr), nullptr);
}

TEST(TagList, PointersAreNotOwned) {
    int target = 3;
    TagList list;
    list.SetPtr(pointerTag, &target);
    EXPECT_EQ(list.GetPtr(pointerTag, nullptr), &target);
    list.SetPtr(pointerTag, nullptr);
    EXPECT_EQ(list.GetPtr(pointerTag, &target), nullptr);
}

bool Function(int number) { return number == 5; }

TEST(TagList, AFunctionKeepsItsAddress) {
    const TagItem array[] = {{pointerTag, TagItem::FromPtr(Function)}, {0, 0}};
    const TagList list(array, false);
    const auto function = reinterpret_cast<bool (*)(int)>(list.GetPtr(pointerTag, nullptr));
    EXPECT_TRUE(function(5));
}

TEST(TagList, SetReplacesTheFirstPairAndAppendsWhatIsNotThere) {
    TagList list;
    list.Set(integerTag, 1, false);
    list.Set(textTag, CxID("a", true), false);
    list.Set(integerTag, 2, false);
    list.Set(textTag, CxID("b", true), false);
    EXPECT_EQ(list.Items().size(), 2u);
    EXPECT_EQ(list.GetLong(integerTag, 0), 2);
    EXPECT_STREQ(list.GetString(textTag, ""), "b");
}

TEST(TagList, AddRepeatsATag) {
    TagList list;
    list.Add(repeatedTag, "one");
    list.Add(repeatedTag, CxID("two", true));
    EXPECT_EQ(Texts(list, repeatedTag), std::vector<std::string>({"one", "two"}));
    EXPECT_STREQ(list.GetString(repeatedTag, ""), "one");
}

TEST(TagList, IdentifierTagsHoldTheirText) {
    TagList list;
    list.Set(idTag, CxID("ComboID", true), false);
    EXPECT_STREQ(list.GetString(idTag, ""), "ComboID");
}

TEST(TagList, SettingAnArrayReplacesTagsAndAppendsRepeatableOnes) {
    TagList list;
    list.Set(integerTag, 1, false);
    list.Add(repeatedTag, "one");
    const TagItem array[] = {{integerTag, TagItem::FromInt(2)},
                             {repeatedTag, TagItem::FromPtr("two")},
                             {textTag, TagItem::FromPtr("text")},
                             {0, 0}};
    list.Set(array, nullptr);
    EXPECT_EQ(list.Items().size(), 4u);
    EXPECT_EQ(list.GetLong(integerTag, 0), 2);
    EXPECT_EQ(Texts(list, repeatedTag), std::vector<std::string>({"one", "two"}));
    EXPECT_STREQ(list.GetString(textTag, ""), "text");
}

TEST(TagList, SetTagsTakesOverAnotherList) {
    TagList source;
    source.Set(integerTag, 2, false);
    source.Add(textTag, "text");
    TagList list;
    list.Set(integerTag, 1, false);
    list.SetTags(&source, false);
    EXPECT_EQ(list.GetLong(integerTag, 0), 2);
    EXPECT_STREQ(list.GetString(textTag, ""), "text");
}

TEST(TagList, SetTagsAppendsRepeatablePairs) {
    TagList source;
    source.Add(repeatedTag, "two");
    TagList list;
    list.Add(repeatedTag, "one");
    list.SetTags(&source, false);
    list.SetTags(&source, false);
    EXPECT_EQ(Texts(list, repeatedTag), std::vector<std::string>({"one", "two", "two"}));
}

TEST(TagList, SetOfOneTagReplacesTheFirstPairAlsoOfARepeatableTag) {
    TagList list;
    list.Add(repeatedTag, "one");
    list.Add(repeatedTag, "two");
    list.Set(repeatedTag, CxID("three", true), false);
    EXPECT_EQ(Texts(list, repeatedTag), std::vector<std::string>({"three", "two"}));
}

TEST(TagList, DeleteRemovesAllPairsOfATagAndKeepsTheRestInOrder) {
    TagList list;
    list.Add(repeatedTag, "one");
    list.Set(integerTag, 1, false);
    list.Add(repeatedTag, "two");
    list.Add(textTag, "text");
    list.Add(repeatedTag, "three");
    list.Delete(repeatedTag);
    EXPECT_FALSE(list.FindQuery(repeatedTag));
    ASSERT_EQ(list.Items().size(), 2u);
    EXPECT_EQ(list.Items()[0].tag, integerTag);
    EXPECT_STREQ(list.Items()[1].Text(), "text");
}

TEST(TagList, DeleteOfATagThatIsNotThereChangesNothing) {
    TagList list;
    list.Set(integerTag, 1, false);
    list.Delete(doubleTag);
    EXPECT_EQ(list.GetLong(integerTag, 0), 1);
}

TEST(TagList, ADeletedTagMayBeAddedAgain) {
    TagList list;
    list.Add(repeatedTag, "old");
    list.Delete(repeatedTag);
    list.Add(repeatedTag, "new");
    EXPECT_EQ(Texts(list, repeatedTag), std::vector<std::string>({"new"}));
}

TEST(TagList, AListMayBeTheSourceOfItsOwnTags) {
    TagList list;
    list.Set(integerTag, 1, false);
    list.Add(repeatedTag, "one");
    list.SetTags(&list, false);
    EXPECT_EQ(list.GetLong(integerTag, 0), 1);
    EXPECT_EQ(Texts(list, repeatedTag), std::vector<std::string>({"one", "one"}));
}

TEST(TagList, IntegersKeepAll64BitsOfAnArray) {
    const TagItem array[] = {{integerTag, TagItem::FromInt(std::numeric_limits<int64_t>::min())}, {0, 0}};
    EXPECT_EQ(TagList(array, false).GetLong(integerTag, 0), std::numeric_limits<int64_t>::min());
}

} // namespace
