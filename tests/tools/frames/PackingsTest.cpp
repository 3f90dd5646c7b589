#include "frames/Packings.h"

#include "framework/CxAVTypes.h"

#include <gtest/gtest.h>

TEST(Packings, KnowWhichOfThemHaveAlpha) {
    for (const uint32_t code : {uint32_t{32}, FourCC("BGRA"), FourCC("b64a"), FourCC("v408"), FourCC("raw ")})
        EXPECT_TRUE(PackingHasAlpha(code) && CarriesAlpha(code)) << code;
    for (const uint32_t code : {uint32_t{24}, FourCC("r210"), FourCC("v210"), FourCC("2vuy"), FourCC("v216")})
        EXPECT_FALSE(PackingHasAlpha(code) || CarriesAlpha(code)) << code;
}

TEST(Packings, KnowWhichOfThemNeedAMatrix) {
    for (const uint32_t code : {uint32_t{24}, uint32_t{32}, FourCC("BGRA"), FourCC("b64a"), FourCC("r210")})
        EXPECT_TRUE(PackingIsRgb(code)) << code;
    for (const uint32_t code : {FourCC("v210"), FourCC("2vuy"), FourCC("v216"), FourCC("v408")})
        EXPECT_FALSE(PackingIsRgb(code)) << code;
}
