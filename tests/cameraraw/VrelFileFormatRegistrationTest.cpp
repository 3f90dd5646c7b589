// How the format class is announced to the host.

#include "cameraraw/FormatTestSupport.h"
#include "host/Registry.h"
#include "support/HeapSpy.h"

namespace {

/// The announcement of the class; null if there is not exactly one.
Registry* Announced() {
    const std::vector<Registry*> found = Registry::FormatsForExtension(".vrel");
    return found.size() == 1 ? found.front() : nullptr;
}

class VrelFileFormatRegistration : public RawTest {
protected:
    void SetUp() override { ASSERT_NE(registry, nullptr); }

    Registry* const registry = Announced();
};

TEST_F(VrelFileFormatRegistration, ItHasItsNamesItsExtensionAndItsPriority) {
    EXPECT_STREQ(registry->ClassId(), "VrelFileFormat");
    EXPECT_STREQ(registry->ClassName(), "VrelFileFormat");
    EXPECT_STREQ(registry->DisplayName(), "Ravenlight Raw");
    EXPECT_EQ(registry->Extensions(), std::vector<std::string>{".vrel"});
    EXPECT_EQ(registry->Priority(), -10);
    EXPECT_STREQ(registry->Tags().GetString(RegTag_BuildText, ""), "Built: Sep 29 2022");
    EXPECT_TRUE(registry->IsImageFormat());
}

TEST_F(VrelFileFormatRegistration, ItLoadsAndDoesNotSave) {
    EXPECT_TRUE(registry->CanLoad());
    EXPECT_FALSE(registry->CanSave());
    const std::vector<std::pair<Tag, int64_t>> tags = {
        {0x10000000, 0x180000}, {0x10000064, 1}, {0x10000065, 0}, {0x10000066, 1},
        {0x1000006f, 1},        {0x10000070, 0}, {0x10000069, 0}, {0x100000ca, 1}};
    for (const auto& [tag, value] : tags)
        EXPECT_EQ(registry->Tags().GetLong(tag, -7), value) << std::hex << tag;
}

TEST_F(VrelFileFormatRegistration, ItBringsAllItsTagsAndNoOthers) {
    std::vector<Tag> tags;
    for (const TagItem& item : registry->Tags().Items())
        tags.push_back(item.tag);
    const std::vector<Tag> expected = {0x60000001, 0x60000002, 0x10000000, 0x30000008, 0x60000010,
                                       0x60000005, 0x30000015, 0x60000000, 0x10000064, 0x10000065,
                                       0x10000066, 0x1000006f, 0x10000070, 0x10000069, 0x100000ca,
                                       0x30000064, 0x38000064, 0x10000016};
    EXPECT_EQ(tags, expected);
}

TEST_F(VrelFileFormatRegistration, ItIsDescribedToScripts) {
    const ScriptInfo* const script = registry->Script();
    ASSERT_NE(script, nullptr);
    EXPECT_EQ(script->Version(), 1);
    EXPECT_STREQ(script->ClassName(), "VrelFileFormat");
    EXPECT_EQ(*script->Type(), typeid(VrelFileFormat));
    EXPECT_EQ(*script->ParentType(), typeid(ImageFormat));
}

TEST_F(VrelFileFormatRegistration, TheHostMatchesTheExtensionInAnyCase) {
    EXPECT_EQ(Registry::FormatsForExtension(".VREL"), std::vector<Registry*>{registry});
    EXPECT_TRUE(Registry::FormatsForExtension(".vre").empty());
}

TEST_F(VrelFileFormatRegistration, ItMakesObjectsThatKnowItAlsoWithoutTheSdk) {
    Script().hasFactory = false;
    EXPECT_TRUE(registry->Start());
    const std::unique_ptr<Object> object = registry->Create(ScriptVal(), TagList());
    ASSERT_NE(dynamic_cast<VrelFileFormat*>(object.get()), nullptr);
    EXPECT_EQ(object->GetRegistry(), registry);
    EXPECT_TRUE(TakeCalls().empty()) << "the SDK is for clips";
}

TEST_F(VrelFileFormatRegistration, WithoutMemoryItMakesNoObjectAndThrowsNothing) {
    const ScriptVal value;
    const TagList tags;
    const HeapSpy heap(0);
    EXPECT_EQ(registry->Create(value, tags), nullptr);
    EXPECT_TRUE(heap.RanOut());
}

TEST_F(VrelFileFormatRegistration, AHostFindsAndLoadsAClipByItsExtension) {
    const std::unique_ptr<Object> object = registry->Create(ScriptVal(), TagList());
    auto* const format = dynamic_cast<ImageFormat*>(object.get());
    ASSERT_NE(format, nullptr);
    TagList tags;
    ASSERT_TRUE(format->LoadHeaderTagList(CxID(CLSID_DataType_Image, true), "clip.vrel", tags));
    Image* image = nullptr;
    ASSERT_TRUE(format->LoadFrameTagList(1, image, tags));
    EXPECT_EQ(PixelAtTop(*image, 0, 0).R, ScriptedSample(1, 0, 0));
    Image::Free(image);
}

} // namespace
