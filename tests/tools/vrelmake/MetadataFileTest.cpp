#include "vrelmake/MetadataFile.h"

#include "media/ToolError.h"
#include "tools/Workspace.h"

#include "cameraraw/automation/BstrText.h"

#include <gtest/gtest.h>

namespace {

using rawsdk::Metadata;
using rawsdk::MetadataValue;

MetadataFile ReadText(const std::string& text) {
    const Workspace workspace;
    workspace.Write("m.json", text);
    return MetadataFile(workspace.Path("m.json"));
}

/// The value of an entry of the clip.
MetadataValue ValueOf(const std::string& json) {
    return ReadText("{\"clip\": {\"key\": " + json + "}}").Clip().at(0).value;
}

ExitStatus FailureOf(const std::string& text) {
    try {
        ReadText(text);
    } catch (const ToolError& error) {
        return error.status();
    }
    return ExitStatus::Done;
}

std::vector<std::u16string> KeysOf(const Metadata& metadata) {
    std::vector<std::u16string> keys;
    for (const rawsdk::MetadataEntry& entry : metadata)
        keys.push_back(entry.key);
    return keys;
}

TEST(MetadataFile, TakesTheTypeThatANumberNeeds) {
    EXPECT_EQ(ValueOf("-5").type, VT_I4);
    EXPECT_EQ(ValueOf("2147483647").type, VT_I4);
    EXPECT_EQ(ValueOf("2147483648").type, VT_UI4);
    EXPECT_EQ(ValueOf("4294967296").type, VT_I8);
    EXPECT_EQ(ValueOf("-2147483649").type, VT_I8);
    EXPECT_EQ(ValueOf("1.5").type, VT_R4);
    EXPECT_EQ(ValueOf("[1, 2]").type, VT_I4);
    EXPECT_EQ(ValueOf("[1, 2.5]").type, VT_R4);
    EXPECT_EQ(ValueOf("true").type, VT_BOOL);
}

TEST(MetadataFile, TakesTheTypeThatItIsTold) {
    const std::pair<const char*, VARTYPE> types[] = {
        {"i1", VT_I1},   {"ui1", VT_UI1}, {"i2", VT_I2},   {"ui2", VT_UI2}, {"i4", VT_I4},
        {"ui4", VT_UI4}, {"i8", VT_I8},   {"ui8", VT_UI8}, {"r4", VT_R4},   {"r8", VT_R8}};
    for (const auto& [name, type] : types) {
        const MetadataValue value = ValueOf(std::string("{\"type\": \"") + name + "\", \"value\": [7]}");
        EXPECT_EQ(value.type, type);
        ASSERT_EQ(value.bounds.size(), 1u);
        EXPECT_EQ(value.bounds[0].cElements, 1u);
    }
}

TEST(MetadataFile, KeepsTextsAndTheirCharacters) {
    VARIANT value = VariantOf(ValueOf("\"Gr\\u00fc\\u00dfe \\u20ac\""));
    EXPECT_EQ(TextOfBstr(value.bstrVal), "Gr\u00fc\u00dfe \u20ac");
    VariantClear(&value);
}

TEST(MetadataFile, KeepsTheOrderOfEntries) {
    const MetadataFile file = ReadText(R"({"clip": {"z": 1, "a": 2, "\u20ac": 3}})");
    EXPECT_EQ(KeysOf(file.Clip()), (std::vector<std::u16string>{u"z", u"a", u"\u20ac"}));
}

TEST(MetadataFile, GivesFramesTheirOwnEntriesBehindThoseOfEachFrame) {
    const MetadataFile file = ReadText(R"({"everyFrame": {"a": 1}, "frames": [{}, {"b": 2}]})");
    EXPECT_EQ(KeysOf(file.Frame(0)), (std::vector<std::u16string>{u"a"}));
    EXPECT_EQ(KeysOf(file.Frame(1)), (std::vector<std::u16string>{u"a", u"b"}));
    EXPECT_EQ(KeysOf(file.Frame(2)), (std::vector<std::u16string>{u"a"}));
    EXPECT_TRUE(file.Clip().empty());
}

TEST(MetadataFile, MayBeNone) {
    EXPECT_TRUE(MetadataFile().Clip().empty());
    EXPECT_TRUE(MetadataFile().Frame(0).empty());
}

TEST(MetadataFile, RefusesNumbersThatTheirTypesDoNotHold) {
    for (const char* value :
         {R"({"type": "ui1", "value": 256})", R"({"type": "ui1", "value": -1})",
          R"({"type": "i2", "value": [1, 32768]})", R"({"type": "i4", "value": 1.5})",
          R"({"type": "ui8", "value": -1})", R"({"type": "i8", "value": 9223372036854775808})",
          R"({"type": "i4", "value": "7"})", R"({"type": "r4", "value": "7"})"})
        EXPECT_EQ(FailureOf(std::string("{\"clip\": {\"key\": ") + value + "}}"), ExitStatus::Damaged)
            << value;
}

TEST(MetadataFile, RefusesWhatIsNoMetadata) {
    for (const char* text :
         {"", "{", "[]", R"({"clip": []})", R"({"clip": {"key": null}})", R"({"frames": {"a": 1}})",
          R"({"frames": [1]})", R"({"clip": {"key": {"type": "none", "value": 1}}})",
          R"({"clip": {"key": {"value": 1}}})", R"({"clip": {"key": ["text"]}})"})
        EXPECT_EQ(FailureOf(text), ExitStatus::Damaged) << text;
}

TEST(MetadataFile, SaysThatItIsNotThere) {
    try {
        MetadataFile("/none.json");
        ADD_FAILURE();
    } catch (const ToolError& error) {
        EXPECT_EQ(error.status(), ExitStatus::CannotOpen);
        EXPECT_EQ(error.file(), "/none.json");
    }
}

} // namespace
