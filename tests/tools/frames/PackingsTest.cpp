#include "frames/Packings.h"

#include "framework/CxAVTypes.h"

#include <gtest/gtest.h>

namespace {

MovieTrackInfo Track(uint32_t fourCC, const std::string& pixelFormat = "") {
    MovieTrackInfo track;
    track.fourCC = fourCC;
    track.pixelFormat = pixelFormat;
    return track;
}

} // namespace

TEST(Packings, KnowWhichOfThemHaveAlpha) {
    for (const uint32_t code : {uint32_t{32}, FourCC("BGRA"), FourCC("b64a"), FourCC("v408"), FourCC("raw ")})
        EXPECT_TRUE(PackingHasAlpha(code) && CarriesAlpha(Track(code))) << code;
    for (const uint32_t code : {uint32_t{24}, FourCC("r210"), FourCC("v210"), FourCC("2vuy"), FourCC("v216")})
        EXPECT_FALSE(PackingHasAlpha(code) || CarriesAlpha(Track(code))) << code;
}

TEST(Packings, ATrackOfAnEncoderWithAlphaCarriesIt) {
    EXPECT_TRUE(CarriesAlpha(Track(FourCC("ap4h"), "yuv444p12le")));
    EXPECT_FALSE(CarriesAlpha(Track(FourCC("apch"), "yuv422p10le")));
}

TEST(Packings, ATrackThatFFmpegDecodesToPixelsWithAlphaCarriesIt) {
    for (const char* format : {"yuva420p", "bgra", "gbrap16le", "ya8", "pal8"})
        EXPECT_TRUE(CarriesAlpha(Track(FourCC("FFV1"), format))) << format;
    for (const char* format : {"yuv420p", "bgr0", "gray", "gbrp", "", "none"})
        EXPECT_FALSE(CarriesAlpha(Track(FourCC("FFV1"), format))) << format;
}

TEST(Packings, KnowWhichOfThemNeedAMatrix) {
    for (const uint32_t code : {uint32_t{24}, uint32_t{32}, FourCC("BGRA"), FourCC("b64a"), FourCC("r210")})
        EXPECT_TRUE(PackingIsRgb(code)) << code;
    for (const uint32_t code : {FourCC("v210"), FourCC("2vuy"), FourCC("v216"), FourCC("v408")})
        EXPECT_FALSE(PackingIsRgb(code)) << code;
}
