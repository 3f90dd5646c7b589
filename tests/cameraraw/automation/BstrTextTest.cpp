#include "cameraraw/automation/BstrText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(BstrText, TakesATextThereAndBack) {
    for (const char* text : {"", "clip", "Gr\u00fc\u00dfe \u20ac \U0001F3A5"})
        EXPECT_EQ(BstrHolder(text).Text(), text);
}

TEST(BstrText, KeepsZerosInTheMidst) {
    const std::string text("a\0b", 3);
    EXPECT_EQ(BstrHolder(text).Text(), text);
}

TEST(BstrText, OfAnEmptyTextIsAStringThatIsNotNull) { EXPECT_NE(BstrHolder("").Get(), nullptr); }

TEST(BstrText, OfNullIsEmpty) { EXPECT_EQ(TextOfBstr(nullptr), ""); }

TEST(BstrText, MarksHalfSurrogates) {
    const BSTR string = SysAllocStringLen(std::u16string(1, 0xD800).data(), 1);
    EXPECT_EQ(TextOfBstr(string), "\uFFFD");
    SysFreeString(string);
}

TEST(BstrHolder, FreesTheStringThatItHeldBeforeItReceivesAnother) {
    BstrHolder holder("first");
    *holder.Receive() = BstrOfText("second");
    EXPECT_EQ(holder.Text(), "second");
    EXPECT_EQ(*holder.Receive(), nullptr);
    EXPECT_EQ(holder.Get(), nullptr);
}

} // namespace
