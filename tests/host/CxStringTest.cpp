#include "host/CxString.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

TEST(CxString, IsEmptyByDefaultAndFromNull) {
    EXPECT_TRUE(CxString().IsEmpty());
    EXPECT_TRUE(CxString(static_cast<const char*>(nullptr)).IsEmpty());
    EXPECT_TRUE(CxString(static_cast<const char16_t*>(nullptr)).IsEmpty());
    EXPECT_TRUE(CxString(static_cast<const uint16_t*>(nullptr)).IsEmpty());
    EXPECT_TRUE(CxString(nullptr).IsEmpty());
    EXPECT_STREQ(CxString(), "");
}

TEST(CxString, CopiesItsText) {
    char text[] = "text";
    const CxString string(text);
    const CxString copy(string);
    text[0] = 'X';
    EXPECT_STREQ(string, "text");
    EXPECT_STREQ(copy.c_str(), "text");
    EXPECT_EQ(string.Length(), 4);
}

TEST(CxString, AppendsTextAndItself) {
    CxString string("ab");
    string += "cd";
    string += string;
    EXPECT_STREQ(string, "abcdabcd");
}

TEST(CxString, RightGivesTheLastCharacters) {
    const CxString string("path/");
    EXPECT_STREQ(string.Right(1), "/");
    EXPECT_STREQ(string.Right(3), "th/");
    EXPECT_STREQ(string.Right(5), "path/");
}

TEST(CxString, RightOfMoreThanThereIsGivesAll) {
    EXPECT_STREQ(CxString("abc").Right(4), "abc");
    EXPECT_STREQ(CxString("abc").Right(2147483647), "abc");
    EXPECT_STREQ(CxString().Right(1), "");
}

TEST(CxString, RightOfZeroOrLessGivesNothing) {
    EXPECT_TRUE(CxString("abc").Right(0).IsEmpty());
    EXPECT_TRUE(CxString("abc").Right(-2147483647 - 1).IsEmpty());
}

TEST(CxString, ComparesByText) {
    const CxString string("a/");
    EXPECT_TRUE(string.Right(1) != "\\");
    EXPECT_FALSE(string.Right(1) != "/");
    EXPECT_TRUE(string == CxString("a/"));
    EXPECT_TRUE("a/" == string);
    EXPECT_TRUE(CxString() == static_cast<const char*>(nullptr));
}

TEST(CxString, Utf16BecomesUtf8OfOneToFourBytes) {
    EXPECT_STREQ(CxString(u"A\u00e9\u20ac\U0001F3A5"), "A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x8E\xA5");
    EXPECT_STREQ(CxString(u"\u007f\u0080\u07ff\u0800\uffff\U00010000\U0010ffff"),
                 "\x7f\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
}

TEST(CxString, Utf16MayComeAsPlainNumbers) {
    const uint16_t units[] = {'A', 0x20ac, 0xd83c, 0xdfa5, 0xdfa5, 0};
    EXPECT_STREQ(CxString(units), "A\xE2\x82\xAC\xF0\x9F\x8E\xA5\xEF\xBF\xBD");
}

TEST(CxString, IsNoCondition) { EXPECT_FALSE((std::is_constructible_v<bool, CxString>)); }

TEST(CxString, AnUnpairedSurrogateBecomesTheReplacementCharacter) {
    const char16_t leadAtEnd[] = {u'a', 0xd83c, 0};
    EXPECT_STREQ(CxString(leadAtEnd), "a\xEF\xBF\xBD");
    const char16_t trailAlone[] = {0xdfa5, u'b', 0};
    EXPECT_STREQ(CxString(trailAlone), "\xEF\xBF\xBD"
                                       "b");
    const char16_t leadBeforeLetter[] = {0xd83c, u'c', 0};
    EXPECT_STREQ(CxString(leadBeforeLetter), "\xEF\xBF\xBD"
                                             "c");
    const char16_t leadBeforePair[] = {0xd83c, 0xd83c, 0xdfa5, 0};
    EXPECT_STREQ(CxString(leadBeforePair), "\xEF\xBF\xBD\xF0\x9F\x8E\xA5");
}

} // namespace
