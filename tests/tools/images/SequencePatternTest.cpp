#include "images/SequencePattern.h"

#include "tools/Workspace.h"

#include <gtest/gtest.h>

using Numbers = std::vector<int64_t>;

TEST(SequencePattern, PadsAPercentField) {
    EXPECT_EQ(SequencePattern::Parse("a/name.%04d.exr")->PathOf(7), "a/name.0007.exr");
    EXPECT_EQ(SequencePattern::Parse("name%d.exr")->PathOf(7), "name7.exr");
}

TEST(SequencePattern, TakesOneDigitForEachMark) {
    EXPECT_EQ(SequencePattern::Parse("name.####.exr")->PathOf(12), "name.0012.exr");
    EXPECT_EQ(SequencePattern::Parse("name.@.exr")->PathOf(12), "name.12.exr");
    EXPECT_EQ(SequencePattern::Parse("name.@@@.exr")->PathOf(12), "name.012.exr");
}

TEST(SequencePattern, LetsNumbersGrowBeyondTheField) {
    EXPECT_EQ(SequencePattern::Parse("n.##.png")->PathOf(1234), "n.1234.png");
}

TEST(SequencePattern, IsNotFoundWithoutAFieldOrWithMoreThanOne) {
    for (const char* path : {"name.exr", "name.%s.exr", "name.%04.exr", "name.%", "%d/name.exr",
                             "name.%d.%d.exr", "name.#.@.exr", "name.%00d.exr", "name.%099d.exr", ""})
        EXPECT_FALSE(SequencePattern::Parse(path)) << path;
}

TEST(SequencePattern, ReadsTheNumberOfItsOwnFilesOnly) {
    const SequencePattern pattern = *SequencePattern::Parse("dir/name.####.exr");
    EXPECT_EQ(pattern.NumberIn("name.0012.exr"), 12);
    EXPECT_EQ(pattern.NumberIn("name.10012.exr"), 10012);
    for (const char* name : {"name.012.exr", "name.00012.exr", "name.00a2.exr", "name..exr", "other.0012.exr",
                             "name.0012.png", "name.0012.exr.part", "name.9999999999999999999.exr"})
        EXPECT_FALSE(pattern.NumberIn(name)) << name;
}

TEST(SequencePattern, FindsItsNumbersOnTheDiskInOrder) {
    const Workspace workspace;
    for (const char* name : {"n.0010.png", "n.0002.png", "n.10000.png", "n.3.png", "m.0001.png"})
        workspace.Write(name, "x");
    EXPECT_EQ(SequencePattern::Parse(workspace.Path("n.%04d.png"))->NumbersOnDisk(), (Numbers{2, 10, 10000}));
}

TEST(SequencePattern, FindsNothingInADirectoryThatIsNotThere) {
    EXPECT_TRUE(SequencePattern::Parse("/no/such/directory/n.%04d.png")->NumbersOnDisk().empty());
}

TEST(SequencePattern, TakesTheLastDigitsOfAFileNameForTheField) {
    const Workspace workspace;
    for (const char* name : {"v2_n.0009.png", "v2_n.0010.png"})
        workspace.Write(name, "x");
    const auto pattern = SequencePattern::OfFile(workspace.Path("v2_n.0009.png"));
    ASSERT_TRUE(pattern);
    EXPECT_EQ(pattern->NumbersOnDisk(), (Numbers{9, 10}));
}

TEST(SequencePattern, SeesUnpaddedNumbersOfDifferentLength) {
    const Workspace workspace;
    for (const char* name : {"n9.png", "n10.png", "n11.png"})
        workspace.Write(name, "x");
    EXPECT_EQ(SequencePattern::OfFile(workspace.Path("n10.png"))->NumbersOnDisk(), (Numbers{9, 10, 11}));
}

TEST(SequencePattern, SeesPaddingInTheNeighboursOfAFullNumber) {
    const Workspace workspace;
    for (const char* name : {"n.0999.png", "n.1000.png"})
        workspace.Write(name, "x");
    EXPECT_EQ(SequencePattern::OfFile(workspace.Path("n.1000.png"))->NumbersOnDisk(), (Numbers{999, 1000}));
}

TEST(SequencePattern, IsNotMadeOfAFileWithoutDigits) { EXPECT_FALSE(SequencePattern::OfFile("name.exr")); }

TEST(SequencePattern, DoesNotTakeDigitsOfTheExtensionForTheField) {
    EXPECT_FALSE(SequencePattern::OfFile("name.mp4"));
}
