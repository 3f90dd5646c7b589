#include "host/ScriptVal.h"
#include "host/Image.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

namespace {

using Keys = std::vector<std::string>;

ScriptVal Table() {
    ScriptVal value;
    value.Set(ScriptVal_Table, nullptr);
    return value;
}

TEST(ScriptVal, ANewValueIsNil) {
    const ScriptVal value;
    EXPECT_EQ(value.Type(), ScriptVal_Nil);
    EXPECT_FALSE(value.IsTable());
    EXPECT_STREQ(value.ToString("none"), "none");
}

TEST(ScriptVal, Type4WithANullValueMakesAnEmptyTable) {
    ScriptVal value;
    value = "text";
    value.Set(static_cast<ScriptValType>(4), nullptr);
    EXPECT_TRUE(value.IsTable());
    EXPECT_EQ(value.Keys(), Keys());
}

TEST(ScriptVal, SetReadsWhatTheTypeSays) {
    const bool truth = true;
    const double number = 2.5;
    ScriptVal value;
    value.Set(ScriptVal_Boolean, &truth);
    EXPECT_EQ(value.Type(), ScriptVal_Boolean);
    EXPECT_TRUE(value.ToBoolean(false));
    value.Set(ScriptVal_Number, &number);
    EXPECT_EQ(value.Type(), ScriptVal_Number);
    EXPECT_EQ(value.ToNumber(0), 2.5);
    value.Set(ScriptVal_String, "word");
    EXPECT_EQ(value.Type(), ScriptVal_String);
    EXPECT_STREQ(value.ToString(""), "word");
    value.Set(ScriptVal_Nil, nullptr);
    EXPECT_EQ(value.Type(), ScriptVal_Nil);
}

TEST(ScriptVal, SetWithNullGivesTheEmptyValueOfEachType) {
    ScriptVal value;
    value.Set(ScriptVal_Boolean, nullptr);
    EXPECT_FALSE(value.ToBoolean(true));
    value.Set(ScriptVal_Number, nullptr);
    EXPECT_EQ(value.ToNumber(1), 0.0);
    value.Set(ScriptVal_String, nullptr);
    EXPECT_STREQ(value.ToString("none"), "");
}

TEST(ScriptVal, ReadingAValueOfAnotherTypeGivesTheDefault) {
    ScriptVal value = Table();
    EXPECT_STREQ(value.ToString("none"), "none");
    EXPECT_EQ(value.ToNumber(7), 7.0);
    EXPECT_TRUE(value.ToBoolean(true));
    EXPECT_EQ(value.ToString(nullptr), nullptr);
}

TEST(ScriptVal, AssignedTextIsCopied) {
    char text[] = "before";
    ScriptVal value;
    value = text;
    text[0] = 'X';
    EXPECT_STREQ(value.ToString(""), "before");
}

TEST(ScriptVal, AssignedNullTextIsNil) {
    ScriptVal value;
    value = "text";
    value = static_cast<const char*>(nullptr);
    EXPECT_EQ(value.Type(), ScriptVal_Nil);
}

TEST(ScriptVal, AnAssignedIdentifierIsItsText) {
    ScriptVal value;
    value = CxID("interned", true);
    EXPECT_STREQ(value.ToString(""), "interned");
}

TEST(ScriptVal, FindKeyCreatesTheEntryAndFindsItAgain) {
    ScriptVal value = Table();
    EXPECT_EQ(value.FindKey("a").Type(), ScriptVal_Nil);
    value.FindKey("a") = "1";
    EXPECT_STREQ(value.FindKey("a").ToString(""), "1");
    EXPECT_EQ(value.Keys(), Keys({"a"}));
}

TEST(ScriptVal, FindKeyOnAValueThatIsNoTableMakesItOne) {
    ScriptVal value;
    value = "text";
    value.FindKey("key") = "1";
    EXPECT_TRUE(value.IsTable());
    EXPECT_EQ(value.Keys(), Keys({"key"}));
}

TEST(ScriptVal, NumbersAreNotAssigned) {
    EXPECT_FALSE((std::is_assignable_v<ScriptVal&, int>));
    EXPECT_FALSE((std::is_assignable_v<ScriptVal&, double>));
    EXPECT_FALSE((std::is_assignable_v<ScriptVal&, bool>));
}

TEST(ScriptVal, FindKeyConstCreatesNothing) {
    const ScriptVal value = Table();
    EXPECT_EQ(value.FindKeyConst("a").Type(), ScriptVal_Nil);
    EXPECT_EQ(value.Keys(), Keys());
    EXPECT_EQ(ScriptVal().FindKeyConst("a").Type(), ScriptVal_Nil);
}

TEST(ScriptVal, KeysStandInTheOrderOfInsertion) {
    ScriptVal value = Table();
    for (const char* key : {"z", "a", "m", "a"})
        value.FindKey(key) = key;
    EXPECT_EQ(value.Keys(), Keys({"z", "a", "m"}));
}

TEST(ScriptVal, AnEntryStaysInPlaceWhileOthersAreAdded) {
    ScriptVal value = Table();
    ScriptVal& first = value.FindKey("first");
    for (int i = 0; i < 1000; ++i)
        value.FindKey(std::to_string(i).c_str()) = "x";
    first = "kept";
    EXPECT_STREQ(value.FindKeyConst("first").ToString(""), "kept");
}

TEST(ScriptVal, ACopyHasTablesOfItsOwn) {
    ScriptVal value = Table();
    value.FindKey("inner").Set(ScriptVal_Table, nullptr);
    value.FindKey("inner").FindKey("key") = "old";
    const ScriptVal copy(value);
    ScriptVal assigned;
    assigned = value;
    value.FindKey("inner").FindKey("key") = "new";
    EXPECT_STREQ(copy.FindKeyConst("inner").FindKeyConst("key").ToString(""), "old");
    EXPECT_STREQ(assigned.FindKeyConst("inner").FindKeyConst("key").ToString(""), "old");
}

TEST(ScriptVal, SetOfATableCopiesTheGivenTable) {
    ScriptVal source = Table();
    source.FindKey("key") = "text";
    ScriptVal value;
    value.Set(ScriptVal_Table, &source);
    source.FindKey("key") = "changed";
    EXPECT_STREQ(value.FindKeyConst("key").ToString(""), "text");
}

TEST(ScriptVal, SetOfATableFromAValueThatIsNoneGivesAnEmptyTable) {
    ScriptVal text;
    text = "text";
    ScriptVal value;
    value.Set(ScriptVal_Table, &text);
    EXPECT_TRUE(value.IsTable());
    EXPECT_EQ(value.Keys(), Keys());
}

TEST(ScriptVal, AValueMayBeReplacedByOneOfItsOwnEntries) {
    ScriptVal value = Table();
    value.FindKey("inner").Set(ScriptVal_Table, nullptr);
    value.FindKey("inner").FindKey("key") = "text";
    value = value.FindKey("inner");
    EXPECT_EQ(value.Keys(), Keys({"key"}));
    value = value.FindKey("key").ToString("");
    EXPECT_STREQ(value.ToString("none"), "text");
}

TEST(ScriptVal, AMovedEntryMayReplaceTheTableThatHeldIt) {
    ScriptVal value = Table();
    value.FindKey("inner") = "text";
    value = std::move(value.FindKey("inner"));
    EXPECT_STREQ(value.ToString("none"), "text");
}

TEST(ScriptVal, ASelfAssignmentKeepsTheValue) {
    ScriptVal value = Table();
    value.FindKey("key") = "text";
    const ScriptVal& same = value;
    value = same;
    EXPECT_STREQ(value.FindKeyConst("key").ToString(""), "text");
}

/// The steps by which every writer of metadata adds an entry.
void WriteMetadata(Image& image, const char* key, const char* text) {
    if (!image.ImageInfo.IsTable()) image.ImageInfo.Set(ScriptVal_Table, nullptr);
    ScriptVal& metadata = image.ImageInfo.FindKey("Metadata");
    if (!metadata.IsTable()) metadata.Set(ScriptVal_Table, nullptr);
    metadata.FindKey(key) = text;
}

const char* Metadata(const Image& image, const char* key) {
    return image.ImageInfo.FindKeyConst("Metadata").FindKeyConst(key).ToString("none");
}

class ScriptValMetadata : public testing::Test {
protected:
    ~ScriptValMetadata() override { Image::Free(image); }

    Image* image = Image::Allocate(1, 1, ImageData_RGBA8);
};

TEST_F(ScriptValMetadata, TheStepsMakeBothTablesOfANewImage) {
    WriteMetadata(*image, "Compression", "v210");
    WriteMetadata(*image, "FrameFormat", "Progressive");
    EXPECT_STREQ(Metadata(*image, "Compression"), "v210");
    EXPECT_STREQ(Metadata(*image, "FrameFormat"), "Progressive");
}

TEST_F(ScriptValMetadata, TheStepsReplaceAValueThatIsNoTable) {
    image->ImageInfo = "not a table";
    WriteMetadata(*image, "Compression", "v210");
    EXPECT_STREQ(Metadata(*image, "Compression"), "v210");
    image->ImageInfo.FindKey("Metadata") = "not a table";
    WriteMetadata(*image, "Compression", "r210");
    EXPECT_STREQ(Metadata(*image, "Compression"), "r210");
}

TEST_F(ScriptValMetadata, TheStepsKeepWhatIsThere) {
    image->ImageInfo.Set(ScriptVal_Table, nullptr);
    image->ImageInfo.FindKey("Other") = "kept";
    WriteMetadata(*image, "A", "1");
    WriteMetadata(*image, "A", "2");
    EXPECT_STREQ(image->ImageInfo.FindKeyConst("Other").ToString(""), "kept");
    EXPECT_STREQ(Metadata(*image, "A"), "2");
    EXPECT_EQ(image->ImageInfo.FindKeyConst("Metadata").Keys(), Keys({"A"}));
}

} // namespace
