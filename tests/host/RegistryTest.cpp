#include "host/Registry.h"

#include "FakeFormat.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>

namespace {

std::atomic<int> inits = 0;
int cleanups = 0;
bool initResult = true;

bool CountInit(Registry* registry) {
    ++inits;
    return Object::RegInit(registry) && initResult;
}

void CountCleanup(Registry* registry) {
    ++cleanups;
    Object::RegCleanup(registry);
}

/// Announces a format class as a module does.
struct Announcement {
    Announcement(const char* className, std::vector<TagItem> more) : classId(className, true) {
        scriptInfo.SetTypeInfo(typeid(FakeFormat), typeid(ImageFormat));
        std::vector<TagItem> array = {{RegTag_Init, TagItem::FromPtr(CountInit)},
                                      {RegTag_Cleanup, TagItem::FromPtr(CountCleanup)},
                                      {RegTag_ScriptInfo, TagItem::FromPtr(&scriptInfo)},
                                      {RegTag_ClassName, TagItem::FromPtr(className)}};
        array.insert(array.end(), more.begin(), more.end());
        array.push_back({0, 0});
        registry._Init(ClassRegistry, classId, TagList(array.data(), false));
    }

    CxID classId;
    ScriptInfo scriptInfo{1, classId, "", ""};
    Registry registry;
};

const TagItem parentTag = {RegTag_ParentClass, TagItem::FromPtr(&ImageFormat::ClassID)};
const TagItem createTag = {RegTag_Create, TagItem::FromPtr(FakeFormat::Create)};

TagItem Extension(const char* extension) { return {RegTag_Extension, TagItem::FromPtr(extension)}; }
TagItem Priority(int priority) { return {RegTag_Priority, TagItem::FromInt(priority)}; }

class RegistryList : public testing::Test {
protected:
    RegistryList() {
        inits = 0;
        cleanups = 0;
        initResult = true;
        FakeFormat::calls.clear();
    }

    static bool IsListed(const Registry& registry) {
        return std::ranges::count(Registry::Formats(), &registry) != 0;
    }
};

TEST_F(RegistryList, ADescriptionIsReadFromTheTags) {
    const Announcement made("FakeFormat", {parentTag,
                                           createTag,
                                           {RegTag_CanLoad, TagItem::FromInt(1)},
                                           {RegTag_CanSave, TagItem::FromInt(0)},
                                           {RegTag_DisplayName, TagItem::FromPtr("Fake pictures")},
                                           Extension(".fake"),
                                           Extension(".fke"),
                                           Priority(-120)});
    EXPECT_STREQ(made.registry.ClassId(), "FakeFormat");
    EXPECT_STREQ(made.registry.ClassName(), "FakeFormat");
    EXPECT_STREQ(made.registry.DisplayName(), "Fake pictures");
    EXPECT_EQ(made.registry.Extensions(), std::vector<std::string>({".fake", ".fke"}));
    EXPECT_EQ(made.registry.Priority(), -120);
    EXPECT_TRUE(made.registry.CanLoad());
    EXPECT_FALSE(made.registry.CanSave());
    EXPECT_TRUE(made.registry.IsImageFormat());
    EXPECT_EQ(made.registry.Script(), &made.scriptInfo);
}

TEST_F(RegistryList, ADescriptionWithoutTagsIsEmpty) {
    const Announcement made("Bare", {});
    EXPECT_STREQ(made.registry.DisplayName(), "");
    EXPECT_TRUE(made.registry.Extensions().empty());
    EXPECT_EQ(made.registry.Priority(), 0);
    EXPECT_FALSE(made.registry.CanLoad());
    EXPECT_FALSE(made.registry.CanSave());
}

TEST_F(RegistryList, FormatsAreListedInTheOrderOfRegistrationUntilTheyEnd) {
    const size_t before = Registry::Formats().size();
    const Announcement first("First", {parentTag});
    {
        const Announcement second("Second", {parentTag});
        const std::vector<Registry*> formats = Registry::Formats();
        ASSERT_EQ(formats.size(), before + 2);
        EXPECT_EQ(formats[before], &first.registry);
        EXPECT_EQ(formats[before + 1], &second.registry);
    }
    EXPECT_EQ(Registry::Formats().size(), before + 1);
}

TEST_F(RegistryList, AClassOfAnotherParentIsNoFormat) {
    const CxID otherParent("ImageFormat", true);
    const Announcement made("Other", {{RegTag_ParentClass, TagItem::FromPtr(&otherParent)}});
    EXPECT_FALSE(made.registry.IsImageFormat());
    EXPECT_FALSE(IsListed(made.registry));
}

TEST_F(RegistryList, ARegistryThatWasNotInitialisedIsNotListed) {
    const Registry registry;
    EXPECT_FALSE(IsListed(registry));
}

TEST_F(RegistryList, FormatsOfAnExtensionComeByPriorityAndThenByRegistration) {
    const Announcement fallback("Fallback", {parentTag, Extension(".t1"), Priority(-120)});
    const Announcement plain("Plain", {parentTag, Extension(".t0"), Extension(".t1")});
    const Announcement alsoPlain("AlsoPlain", {parentTag, Extension(".T1")});
    const Announcement first("First", {parentTag, Extension(".t1"), Priority(10)});
    const Announcement other("Other", {parentTag, Extension(".t2"), Priority(99)});
    const std::vector<const Registry*> expected = {&first.registry, &plain.registry, &alsoPlain.registry,
                                                   &fallback.registry};
    const std::vector<Registry*> found = Registry::FormatsForExtension(".t1");
    EXPECT_EQ(std::vector<const Registry*>(found.begin(), found.end()), expected);
}

TEST_F(RegistryList, ExtensionsAreComparedWithoutCaseAndWhole) {
    const Announcement made("FakeFormat", {parentTag, Extension(".t1")});
    EXPECT_TRUE(made.registry.HasExtension(".T1"));
    EXPECT_FALSE(made.registry.HasExtension(".t"));
    EXPECT_FALSE(made.registry.HasExtension("t1"));
    EXPECT_TRUE(Registry::FormatsForExtension(".unclaimed").empty());
    EXPECT_TRUE(Registry::FormatsForExtension(nullptr).empty());
}

TEST_F(RegistryList, TheCreatorMakesAWorkingFormatObject) {
    Announcement made("FakeFormat", {parentTag, createTag});
    const std::unique_ptr<Object> object = made.registry.Create(ScriptVal(), TagList());
    auto* const format = dynamic_cast<ImageFormat*>(object.get());
    ASSERT_NE(format, nullptr);
    EXPECT_EQ(format->GetRegistry(), &made.registry);
    format->width = format->height = 2;
    Image* image = nullptr;
    TagList tags;
    EXPECT_TRUE(format->LoadFrameTagList(0, image, tags));
    Image::Free(image);
}

TEST_F(RegistryList, WithoutACreatorThereIsNoObject) {
    Announcement made("FakeFormat", {parentTag});
    EXPECT_EQ(made.registry.Create(ScriptVal(), TagList()), nullptr);
    EXPECT_EQ(inits, 0);
}

TEST_F(RegistryList, TheInitFunctionRunsOnceBeforeTheFirstObject) {
    Announcement made("FakeFormat", {parentTag, createTag});
    EXPECT_EQ(inits, 0);
    made.registry.Create(ScriptVal(), TagList());
    made.registry.Create(ScriptVal(), TagList());
    EXPECT_TRUE(made.registry.Start());
    EXPECT_EQ(inits, 1);
}

TEST_F(RegistryList, AClassWhoseInitFunctionFailsStaysListedAndMakesNoObjects) {
    initResult = false;
    Announcement made("FakeFormat", {parentTag, createTag});
    EXPECT_FALSE(made.registry.Start());
    initResult = true;
    EXPECT_EQ(made.registry.Create(ScriptVal(), TagList()), nullptr);
    EXPECT_EQ(inits, 1);
    EXPECT_TRUE(FakeFormat::calls.empty());
    EXPECT_TRUE(IsListed(made.registry));
}

TEST_F(RegistryList, AClassWithoutAnInitFunctionStarts) {
    Registry registry;
    const TagItem array[] = {createTag, parentTag, {0, 0}};
    registry._Init(ClassRegistry, CxID("NoInit", true), TagList(array, false));
    EXPECT_TRUE(registry.Start());
    EXPECT_NE(registry.Create(ScriptVal(), TagList()), nullptr);
}

TEST_F(RegistryList, TheCleanUpRunsOnceAtTheEndOfAStartedClass) {
    {
        Announcement made("FakeFormat", {parentTag});
        made.registry.Start();
        EXPECT_EQ(cleanups, 0);
    }
    EXPECT_EQ(cleanups, 1);
}

TEST_F(RegistryList, AClassThatWasNeverStartedIsNotCleanedUp) {
    { const Announcement made("FakeFormat", {parentTag}); }
    EXPECT_EQ(cleanups, 0);
}

TEST_F(RegistryList, AClassWhoseInitFunctionFailedIsCleanedUp) {
    initResult = false;
    {
        Announcement made("FakeFormat", {parentTag});
        made.registry.Start();
    }
    EXPECT_EQ(cleanups, 1);
}

TEST_F(RegistryList, AClassWithoutAnInitFunctionIsNotCleanedUp) {
    {
        Registry registry;
        const TagItem array[] = {{RegTag_Cleanup, TagItem::FromPtr(CountCleanup)}, parentTag, {0, 0}};
        registry._Init(ClassRegistry, CxID("NoInit", true), TagList(array, false));
        EXPECT_TRUE(registry.Start());
    }
    EXPECT_EQ(cleanups, 0);
}

TEST_F(RegistryList, AnInitFunctionThatThrowsLeavesItsClassUnstarted) {
    const auto init = +[](Registry*) -> bool { throw std::runtime_error("no licence"); };
    Registry registry;
    const TagItem array[] = {{RegTag_Init, TagItem::FromPtr(init)}, createTag, {0, 0}};
    registry._Init(ClassRegistry, CxID("Throwing", true), TagList(array, false));
    EXPECT_THROW(registry.Start(), std::runtime_error);
    EXPECT_FALSE(registry.Start());
    EXPECT_EQ(registry.Create(ScriptVal(), TagList()), nullptr);
}

/// An init function that already wants an object of its class.
bool InitByCreating(Registry* registry) {
    ++inits;
    return !registry->Start() && registry->Create(ScriptVal(), TagList()) == nullptr;
}

TEST_F(RegistryList, AnInitFunctionFindsItsOwnClassUnstarted) {
    Registry registry;
    const TagItem array[] = {{RegTag_Init, TagItem::FromPtr(InitByCreating)}, createTag, {0, 0}};
    registry._Init(ClassRegistry, CxID("Impatient", true), TagList(array, false));
    EXPECT_TRUE(registry.Start());
    EXPECT_EQ(inits, 1);
    EXPECT_NE(registry.Create(ScriptVal(), TagList()), nullptr);
}

TEST_F(RegistryList, ThreadsThatStartAClassAtOnceRunItsInitFunctionOnce) {
    Announcement made("FakeFormat", {parentTag});
    std::atomic<int> started = 0;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 8; ++i)
            threads.emplace_back([&] { started += made.registry.Start() ? 1 : 0; });
    }
    EXPECT_EQ(started, 8);
    EXPECT_EQ(inits, 1);
}

} // namespace
