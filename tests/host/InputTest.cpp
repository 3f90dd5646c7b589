#include "host/Input.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

/// Tags of a control that holds values of a type, and further ones.
TagList ControlTags(const char* dataType, std::vector<TagItem> more = {}) {
    more.insert(more.begin(), {InputTag_DataType, TagItem::FromPtr(dataType)});
    more.push_back({0, 0});
    return TagList(more.data(), false);
}

TagList SliderTags() {
    return ControlTags(CLSID_DataType_Number, {{InputTag_Lowest, TagItem::FromDouble(0.0)},
                                               {InputTag_Highest, TagItem::FromDouble(64.0)},
                                               {InputTag_Default, TagItem::FromDouble(1.5)}});
}

TagList ComboTags() {
    return ControlTags(CLSID_DataType_CxID, {{InputTag_EntryText, TagItem::FromPtr("QuickTime")},
                                             {InputTag_EntryId, TagItem::FromPtr("QuickTime")},
                                             {InputTag_DefaultEntry, TagItem::FromPtr("Matroska")}});
}

template <typename Class>
const Class* Held(const Input& control, double time = CxTime_None) {
    return dynamic_cast<const Class*>(control.GetValue(time));
}

std::vector<std::string> EntryTexts(const Input& control) {
    std::vector<std::string> texts;
    const TagList& tags = control.Tags();
    for (const TagItem* item = tags.Find(InputTag_EntryText); item != nullptr; item = tags.FindNext(item))
        texts.emplace_back(item->Text());
    return texts;
}

TEST(Input, ANumberControlStartsWithTheDefaultInItsTags) {
    const Input control("Key Frames", "KeyFrames", SliderTags());
    ASSERT_NE(Held<NumberParameter>(control), nullptr);
    EXPECT_EQ(Held<NumberParameter>(control)->Number(), 1.5);
}

TEST(Input, ANumberControlWithoutADefaultStartsWithZero) {
    const Input control("Key Frames", "KeyFrames", ControlTags(CLSID_DataType_Number));
    ASSERT_NE(Held<NumberParameter>(control), nullptr);
    EXPECT_EQ(Held<NumberParameter>(control)->Number(), 0.0);
}

TEST(Input, AComboStartsWithItsDefaultEntryAlsoIfNoEntryIsThat) {
    const Input control("Container", "Container", ComboTags());
    EXPECT_TRUE(control.GetID(0.0) == "Matroska");
}

TEST(Input, AComboWithoutADefaultStartsWithTheEmptyId) {
    const Input control("Encoder", "EncoderProfile", ControlTags(CLSID_DataType_CxID));
    ASSERT_NE(Held<IDParameter>(control), nullptr);
    EXPECT_TRUE(control.GetID(0.0).IsEmpty());
}

TEST(Input, ATextControlStartsEmpty) {
    const Input control("Encoder Options", "Options", ControlTags(CLSID_DataType_Text));
    ASSERT_NE(Held<TextParameter>(control), nullptr);
    EXPECT_EQ(Held<TextParameter>(control)->Text(), "");
}

TEST(Input, AControlOfAnUnknownTypeHoldsNoValueAndTakesNone) {
    Input control("Gradient", "Gradient", ControlTags("DataType_Gradient"));
    EXPECT_EQ(control.GetValue(0.0), nullptr);
    EXPECT_FALSE(control.SetSource(NumberParameter(1.0), 0.0, 0, 0));
    EXPECT_EQ(control.GetValue(0.0), nullptr);
}

TEST(Input, LabelAndIdAreThoseGiven) {
    const Input control("Frame Rate (fps)", "FrameRateFps", SliderTags());
    EXPECT_STREQ(control.Label(), "Frame Rate (fps)");
    EXPECT_TRUE(control.Id() == "FrameRateFps");
    EXPECT_EQ(control.Nest(), nullptr);
}

TEST(Input, NullForLabelAndIdCountsAsEmpty) {
    const Input control(nullptr, nullptr, SliderTags());
    EXPECT_TRUE(control.Label().IsEmpty());
    EXPECT_TRUE(control.Id().IsEmpty());
}

TEST(Input, SetSourceKeepsACopyOfTheValue) {
    Input control("Encoder Options", "Options", ControlTags(CLSID_DataType_Text));
    {
        const TextParameter options("crf=18,");
        EXPECT_TRUE(control.SetSource(options, 0.0, 0, 0));
    }
    EXPECT_EQ(Held<TextParameter>(control)->Text(), "crf=18,");
}

TEST(Input, SetSourceTakesTheValueThatTheControlHolds) {
    Input control("Container", "Container", ComboTags());
    EXPECT_TRUE(control.SetSource(*control.GetValue(0.0), 0.0, 0, 0));
    EXPECT_TRUE(control.GetID(0.0) == "Matroska");
}

TEST(Input, TheValueSetLastCountsAtEveryTime) {
    Input control("Key Frames", "KeyFrames", SliderTags());
    EXPECT_TRUE(control.SetSource(NumberParameter(10.0), 100.0, 0, 0));
    EXPECT_TRUE(control.SetSource(NumberParameter(20.0), 50.0, 0, 0));
    for (const double time : {CxTime_None, 0.0, 50.0, 100.0})
        EXPECT_EQ(Held<NumberParameter>(control, time)->Number(), 20.0);
}

TEST(Input, AValueOfAnotherClassIsRefusedAndTheOldOneKept) {
    Input control("Container", "Container", ComboTags());
    EXPECT_FALSE(control.SetSource(TextParameter("QuickTime"), 0.0, 0, 0));
    EXPECT_FALSE(control.SetSource(NumberParameter(1.0), 0.0, 0, 0));
    EXPECT_TRUE(control.GetID(0.0) == "Matroska");
}

TEST(Input, ANumberOutsideTheRangeIsKeptAsItIs) {
    Input control("Key Frames", "KeyFrames", SliderTags());
    EXPECT_TRUE(control.SetSource(NumberParameter(1000.0), 0.0, 0, 0));
    EXPECT_EQ(Held<NumberParameter>(control)->Number(), 1000.0);
    EXPECT_TRUE(control.SetSource(NumberParameter(-1.0), 0.0, 0, 0));
    EXPECT_EQ(Held<NumberParameter>(control)->Number(), -1.0);
}

TEST(Input, AControlThatHoldsANumberHasTheEmptyId) {
    EXPECT_TRUE(Input("Key Frames", "KeyFrames", SliderTags()).GetID(0.0).IsEmpty());
}

TEST(Input, AttributesAreTheControlsTags) {
    Input control("Encoder", "EncoderProfile", ComboTags());
    EXPECT_EQ(control.GetAttr(InputTag_NoChoice, -1), -1);
    for (const int noChoice : {1, 0}) {
        TagList attributes;
        attributes.Set(InputTag_NoChoice, noChoice, false);
        EXPECT_TRUE(control.SetAttrsTagList(attributes));
        EXPECT_EQ(control.GetAttr(InputTag_NoChoice, -1), noChoice);
        EXPECT_EQ(control.Tags().GetLong(InputTag_NoChoice, -1), noChoice);
    }
}

TEST(Input, AnEmptyListSetsNoAttribute) {
    Input control("Encoder", "EncoderProfile", ComboTags());
    EXPECT_FALSE(control.SetAttrsTagList(TagList()));
    EXPECT_EQ(control.Tags().Items().size(), ComboTags().Items().size());
}

TEST(Input, ANumberAmongTheTagsIsAnAttributeOfItsKind) {
    Input control("Key Frames", "KeyFrames", SliderTags());
    EXPECT_EQ(control.GetAttr(InputTag_Highest, -1.0), 64.0);
}

TEST(Input, TextAmongTheTagsIsNoAttribute) {
    Input control("Container", "Container", ComboTags());
    const char* text = nullptr;
    EXPECT_FALSE(control.CopyAttr(InputTag_EntryText, &text));
    EXPECT_EQ(text, nullptr);
}

TEST(Input, TheEntriesOfAComboAreReplacedThroughItsTags) {
    Input control("Encoder", "EncoderProfile", ComboTags());
    control.Tags().Delete(InputTag_EntryText);
    for (const char* const encoder : {"FFV1", "HEVC [Main]"})
        control.Tags().Add(InputTag_EntryText, encoder);
    EXPECT_EQ(EntryTexts(control), (std::vector<std::string>{"FFV1", "HEVC [Main]"}));
    EXPECT_TRUE(control.GetID(0.0) == "Matroska") << "the value stays";
}

TEST(Input, TheObjectSizeIsThatOfTheClass) { EXPECT_EQ(Input().ObjectSize(), sizeof(Input)); }

} // namespace
