// How the format class is announced to the host.

#include "ffmpeg/FFMPEGFileFormats.h"

#include "ffmpeg/StandIns.h"
#include "host/Registry.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using CxFFMPEG::FFMPEGFileFormats;

/// The announcement of the class; null if there is not exactly one.
Registry* Announced() {
    std::vector<Registry*> found = Registry::Formats();
    std::erase_if(found, [](const Registry* format) {
        return std::string(format->ClassName()) != "FFMPEGFileFormats";
    });
    return found.size() == 1 ? found.front() : nullptr;
}

class FFMPEGFileFormatsRegistration : public testing::Test {
protected:
    void SetUp() override { ASSERT_NE(registry, nullptr); }

    Registry* const registry = Announced();
};

TEST_F(FFMPEGFileFormatsRegistration, ItHasItsNamesAndItsPriority) {
    EXPECT_STREQ(registry->ClassId(), "FFMPEGFileFormats");
    EXPECT_STREQ(registry->DisplayName(), "FFMPEG Assorted formats");
    EXPECT_EQ(registry->Priority(), -120);
    EXPECT_STREQ(registry->Tags().GetString(RegTag_BuildText, ""), "Built: Sep 29 2022");
    EXPECT_TRUE(registry->IsImageFormat());
}

TEST_F(FFMPEGFileFormatsRegistration, ItsExtensionsStandInTheirOrder) {
    EXPECT_EQ(registry->Extensions(), (std::vector<std::string>{".avi", ".mov", ".mp4", ".mkv", ".flv",
                                                                ".gif", ".mts", ".m2ts", ".webm"}));
}

TEST_F(FFMPEGFileFormatsRegistration, ItLoadsAndSaves) {
    EXPECT_TRUE(registry->CanLoad());
    EXPECT_TRUE(registry->CanSave());
    const std::vector<std::pair<Tag, int64_t>> tags = {
        {0x10000000, 0x180000}, {0x10000064, 1}, {0x10000065, 1}, {0x10000066, 1}, {0x10000067, 1},
        {0x1000006f, 1},        {0x10000070, 1}, {0x10000071, 0}, {0x10000069, 0}};
    for (const auto& [tag, value] : tags)
        EXPECT_EQ(registry->Tags().GetLong(tag, -7), value) << std::hex << tag;
    EXPECT_FALSE(registry->Tags().FindQuery(0x100000ca));
}

TEST_F(FFMPEGFileFormatsRegistration, ItBringsAllItsTagsAndNoOthers) {
    std::vector<Tag> tags;
    for (const TagItem& item : registry->Tags().Items())
        tags.push_back(item.tag);
    const std::vector<Tag> expected = {0x60000001, 0x60000002, 0x10000000, 0x30000008, 0x60000010, 0x60000005,
                                       0x30000015, 0x60000000, 0x10000064, 0x10000065, 0x10000066, 0x10000067,
                                       0x1000006f, 0x10000070, 0x10000071, 0x10000069, 0x30000064, 0x38000064,
                                       0x38000064, 0x38000064, 0x38000064, 0x38000064, 0x38000064, 0x38000064,
                                       0x38000064, 0x38000064, 0x10000016};
    EXPECT_EQ(tags, expected);
}

TEST_F(FFMPEGFileFormatsRegistration, ItIsDescribedToScripts) {
    const ScriptInfo* const script = registry->Script();
    ASSERT_NE(script, nullptr);
    EXPECT_EQ(script->Version(), 1);
    EXPECT_STREQ(script->ClassName(), "FFMPEGFileFormats");
    EXPECT_EQ(script->Help(), "");
    EXPECT_EQ(script->Category(), "");
    ASSERT_NE(script->Type(), nullptr);
    EXPECT_EQ(*script->Type(), typeid(FFMPEGFileFormats));
    ASSERT_NE(script->ParentType(), nullptr);
    EXPECT_EQ(*script->ParentType(), typeid(ImageFormat));
}

TEST_F(FFMPEGFileFormatsRegistration, ItEndsAsItsBaseDoes) {
    EXPECT_EQ(registry->Tags().GetPtr(RegTag_Cleanup, nullptr), reinterpret_cast<void*>(&Object::RegCleanup));
}

TEST_F(FFMPEGFileFormatsRegistration, AnyOtherClassOfAnExtensionGoesFirst) {
    for (const char* const extension : {".mov", ".MKV", ".webm"}) {
        const std::vector<Registry*> formats = Registry::FormatsForExtension(extension);
        ASSERT_FALSE(formats.empty());
        EXPECT_EQ(formats.back(), registry);
    }
    EXPECT_TRUE(Registry::FormatsForExtension(".mpg").empty());
}

TEST_F(FFMPEGFileFormatsRegistration, ItMakesObjectsThatKnowIt) {
    EXPECT_TRUE(registry->Start());
    const std::unique_ptr<Object> object = registry->Create(ScriptVal(), TagList());
    ASSERT_NE(dynamic_cast<FFMPEGFileFormats*>(object.get()), nullptr);
    EXPECT_EQ(object->GetRegistry(), registry);
    EXPECT_EQ(object->ObjectSize(), sizeof(FFMPEGFileFormats));
}

/// What a process without FFmpeg finds. Words on standard error name what is wrong.
bool RunsWithoutFFmpeg() {
    const auto check = [](bool isRight, const char* what) {
        if (!isRight) std::fprintf(stderr, "%s\n", what);
        return isRight;
    };
    Registry* const registry = Announced();
    FFMPEGFileFormats format(nullptr, ScriptVal(), TagList());
    format.width = format.height = 4;
    TagList tags;
    Image* image = nullptr;
    bool isRight = check(!LoadFFmpeg(), "FFmpeg is there");
    isRight &= check(registry != nullptr && !registry->Start(), "the class is not listed, or started");
    isRight &= check(registry != nullptr && registry->Create(ScriptVal(), tags) == nullptr, "an object");
    isRight &= check(!format.OpenFile("/dev/null", tags), "a file opened");
    isRight &= check(!format.LoadHeaderTagList("/dev/null", tags), "a header loaded");
    isRight &= check(!format.LoadFrameTagList(0, image, tags), "a frame loaded");
    isRight &= check(format.CloseFile(), "closing failed");
    Image::Free(image);
    return isRight;
}

TEST(FFMPEGFileFormatsDeathTest, WithoutFFmpegTheClassIsListedAndRefusesEverything) {
    // In this style the process that exits is the program begun anew, which binds what the environment names.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const EnvironmentVariable nowhere("CORVEX_FFMPEG_DIR", "/no/such/directory");
    EXPECT_EXIT(std::exit(RunsWithoutFFmpeg() ? 0 : 1), testing::ExitedWithCode(0), "^$");
}

} // namespace
