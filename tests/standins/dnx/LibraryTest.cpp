// What the library says of itself.

#include "standins/dnx/DNXLibrary.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <set>

namespace {

std::string ErrorText(int32_t error) {
    std::vector<char> text(dnxErrorTextSize, '#');
    DNX().GetErrorString(error, text.data());
    const size_t length = strnlen(text.data(), text.size());
    EXPECT_LT(length, text.size());
    return std::string(text.data(), length);
}

TEST(Library, InitialisesAsOftenAsItIsAsked) {
    for (int time = 0; time < 3; ++time) {
        EXPECT_EQ(DNX().Initialize(), noError);
        DNX().Finalize();
    }
    EXPECT_EQ(DNX().Initialize(), noError);
}

TEST(Library, TellsAVersionWithALetter) {
    int32_t numbers[4] = {-1, -1, -1, -1};
    char letter = 0;
    DNX().GetVersion(&numbers[0], &numbers[1], &numbers[2], &numbers[3], &letter);
    EXPECT_EQ(numbers[0], 1);
    for (const int32_t number : numbers)
        EXPECT_GE(number, 0);
    EXPECT_TRUE(std::isalpha(static_cast<unsigned char>(letter)));
}

TEST(Library, LeavesTheVersionAloneIfAnArgumentIsNull) {
    int32_t number = -1;
    char letter = '?';
    DNX().GetVersion(&number, &number, nullptr, &number, &letter);
    EXPECT_EQ(number, -1);
    EXPECT_EQ(letter, '?');
}

TEST(Library, HasATextOfItsOwnForEachError) {
    std::set<std::string> texts;
    for (int32_t error = constantLuminance; error <= noError; ++error)
        texts.insert(ErrorText(error));
    EXPECT_EQ(texts.size(), 18u);
    EXPECT_FALSE(texts.contains("Unknown error"));
    EXPECT_FALSE(texts.contains(""));
}

TEST(Library, HasATextForErrorsThatItDoesNotKnow) {
    EXPECT_EQ(ErrorText(1), "Unknown error");
    EXPECT_EQ(ErrorText(INT32_MIN), "Unknown error");
}

TEST(Library, WritesNoErrorTextToNull) { DNX().GetErrorString(noAlpha, nullptr); }

TEST(Library, TakesNullHandlesToDelete) {
    DNX().DeleteDecoder(nullptr);
    DNX().DeleteEncoder(nullptr);
}

} // namespace
