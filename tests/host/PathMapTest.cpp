#include "host/Platform.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

class PathMap : public testing::Test {
protected:
    ~PathMap() override {
        for (const std::string& name : names_)
            SetPathMap(name.c_str(), nullptr);
    }

    void Define(const char* name, const char* path) {
        names_.emplace_back(name);
        SetPathMap(name, path);
    }

    static std::string Mapped(const char* path) {
        CxString text(path);
        return MapPath(text) ? text.c_str() : "no map";
    }

private:
    std::vector<std::string> names_;
};

TEST_F(PathMap, AMapAtTheStartIsReplaced) {
    Define("TestMap:", "/opt/test");
    EXPECT_EQ(Mapped("TestMap:/ffmpeg"), "/opt/test/ffmpeg");
}

TEST_F(PathMap, TheMapAloneGivesItsPath) {
    Define("TestMap:", "/opt/test");
    EXPECT_EQ(Mapped("TestMap:"), "/opt/test");
}

TEST_F(PathMap, AnUnknownMapLeavesThePathAsItIs) {
    CxString path("Unknown:/dir");
    EXPECT_FALSE(MapPath(path));
    EXPECT_STREQ(path, "Unknown:/dir");
    CxString empty;
    EXPECT_FALSE(MapPath(empty));
}

TEST_F(PathMap, AMapWithinAPathIsNoMap) {
    Define("TestMap:", "/opt/test");
    EXPECT_EQ(Mapped("/dir/TestMap:/ffmpeg"), "no map");
}

TEST_F(PathMap, TheLongestNameApplies) {
    Define("TestMap:/ffmpeg", "/usr/ffmpeg");
    Define("TestMap:", "/opt/test");
    Define("TestMap:/ffmpeg/bin", "/bin");
    EXPECT_EQ(Mapped("TestMap:/ffmpeg/lib"), "/usr/ffmpeg/lib");
    EXPECT_EQ(Mapped("TestMap:/ffmpeg"), "/usr/ffmpeg");
    EXPECT_EQ(Mapped("TestMap:/ffmpeg/bin/x"), "/bin/x");
}

TEST_F(PathMap, ANameEndsWhereAPathComponentEnds) {
    Define("TestMap:/ff", "/short");
    Define("TestMap:", "/opt/test");
    EXPECT_EQ(Mapped("TestMap:/ffmpeg"), "/opt/test/ffmpeg");
}

TEST_F(PathMap, TheJointHasExactlyOneSeparator) {
    Define("TestMap:", "/opt/test/");
    EXPECT_EQ(Mapped("TestMap:/dir"), "/opt/test/dir");
    EXPECT_EQ(Mapped("TestMap:dir"), "/opt/test/dir");
    Define("TestMap:", "/opt/test");
    EXPECT_EQ(Mapped("TestMap:dir"), "/opt/test/dir");
}

TEST_F(PathMap, ABackslashIsNoSeparator) {
    Define("TestMap:", "/opt/test");
    EXPECT_EQ(Mapped("TestMap:\\dir"), "/opt/test/\\dir");
    Define("Named", "/opt/named");
    EXPECT_EQ(Mapped("Named\\dir"), "no map");
    EXPECT_EQ(Mapped("Named/dir"), "/opt/named/dir");
}

TEST_F(PathMap, AMapToNothingLeavesTheRestAsItIs) {
    Define("TestMap:", "");
    EXPECT_EQ(Mapped("TestMap:dir/file"), "dir/file");
    EXPECT_EQ(Mapped("TestMap:/dir"), "/dir");
    EXPECT_EQ(Mapped("TestMap:"), "");
}

TEST_F(PathMap, NamesAreComparedWithoutCase) {
    Define("TestMap:", "/opt/test");
    EXPECT_EQ(Mapped("testMAP:/Dir"), "/opt/test/Dir");
}

TEST_F(PathMap, ANewDefinitionReplacesTheOldAndNullRemovesIt) {
    Define("TestMap:", "/one");
    Define("TESTMAP:", "/two");
    EXPECT_EQ(Mapped("TestMap:/x"), "/two/x");
    SetPathMap("testmap:", nullptr);
    EXPECT_EQ(Mapped("TestMap:/x"), "no map");
}

TEST_F(PathMap, AMapIsAppliedOnce) {
    Define("TestMap:", "TestMap:/deeper");
    EXPECT_EQ(Mapped("TestMap:/x"), "TestMap:/deeper/x");
}

TEST_F(PathMap, AnEmptyNameNeverApplies) {
    Define("", "/opt");
    SetPathMap(nullptr, "/opt");
    EXPECT_EQ(Mapped("/dir"), "no map");
}

TEST_F(PathMap, MapsMayBeSetWhileOthersAreUsed) {
    Define("TestMap:", "/opt/test");
    Define("Changing:", "/a");
    std::jthread writer([] {
        for (int i = 0; i < 2000; ++i)
            SetPathMap("Changing:", i % 2 == 0 ? "/b" : nullptr);
    });
    for (int i = 0; i < 2000; ++i)
        ASSERT_EQ(Mapped("TestMap:/x"), "/opt/test/x");
}

} // namespace
