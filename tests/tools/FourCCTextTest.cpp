#include "FourCCText.h"

#include "framework/CxAVTypes.h"

#include <gtest/gtest.h>

TEST(FourCCText, GivesTheFourCharacters) {
    EXPECT_EQ(FourCCText(FourCC("v210")), "v210");
    EXPECT_EQ(FourCCText(FourCC("raw ")), "raw ");
}

TEST(FourCCText, GivesOtherCodesAsANumber) {
    EXPECT_EQ(FourCCText(24), "24");
    EXPECT_EQ(FourCCText(0), "0");
    EXPECT_EQ(FourCCText(FourCC("ab\nc")), "1633815139");
}
