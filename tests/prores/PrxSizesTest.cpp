#include "prores/PrxSizes.h"

#include "prores/Prx.h"
#include "prores/PrxFormats.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace {

constexpr int32_t largest = std::numeric_limits<int32_t>::max();
constexpr int32_t smallest = std::numeric_limits<int32_t>::min();

int32_t MaxFrameSize(uint32_t codecType, bool hasAlpha, int32_t width, int32_t height) {
    int32_t size = -1;
    PrxGetMaxFrameSize(codecType, hasAlpha, width, height, &size, nullptr);
    return size;
}

int32_t TargetFrameSize(uint32_t codecType, bool hasAlpha, int32_t width, int32_t height) {
    int32_t size = -1;
    PrxGetMaxFrameSize(codecType, hasAlpha, width, height, nullptr, &size);
    return size;
}

} // namespace

TEST(PrxBytesPerRow, OnePixelOfB64aTakesAWholeMacroblock) {
    EXPECT_EQ(PrxGetBytesPerRow(1, prxFormatB64a, 0), 128U);
    EXPECT_EQ(PrxGetBytesPerRow(1, prxFormatB64a, 2), 64U);
}

TEST(PrxBytesPerRow, V210TakesGroupsOf48PixelsAtEveryQuality) {
    for (const int32_t quality : {0, 1, 2}) {
        EXPECT_EQ(PrxGetBytesPerRow(1, prxFormatV210, quality), 128U);
        EXPECT_EQ(PrxGetBytesPerRow(48, prxFormatV210, quality), 128U);
        EXPECT_EQ(PrxGetBytesPerRow(49, prxFormatV210, quality), 256U);
        EXPECT_EQ(PrxGetBytesPerRow(1920, prxFormatV210, quality), 5120U);
    }
}

TEST(PrxBytesPerRow, EachFormatCountsItsOwnPixelSize) {
    const std::vector<std::pair<uint32_t, uint32_t>> rows = {
        {prxFormat2vuy, 2},  {prxFormatYuvs, 2}, {prxFormatV216, 4}, {prxFormatW216, 4},
        {prxFormatV408, 4},  {prxFormatR408, 4}, {prxFormatY408, 4}, {prxFormatY416, 8},
        {prxFormatR4fl, 16}, {prxFormatArgb, 4}, {prxFormatBgra, 4}, {prxFormatB64a, 8},
        {prxFormatR10k, 4},  {prxFormatR210, 4}, {prxFormatN302, 4}, {prxFormatL302, 4},
    };
    for (const auto& [pixelFormat, pixelSize] : rows) {
        EXPECT_EQ(PrxGetBytesPerRow(1921, pixelFormat, 0), 1936 * pixelSize) << pixelFormat;
        EXPECT_EQ(PrxGetBytesPerRow(1921, pixelFormat, 2), 968 * pixelSize) << pixelFormat;
    }
}

TEST(PrxBytesPerRow, Quality1KeepsTheFullWidth) {
    for (const uint32_t width : {1U, 16U, 17U, 720U, 1998U}) {
        EXPECT_EQ(PrxGetBytesPerRow(width, prxFormat2vuy, 1), PrxGetBytesPerRow(width, prxFormat2vuy, 0));
    }
}

TEST(PrxBytesPerRow, IsAMultipleOf16Bytes) {
    // 8 pixels of 2 bytes, and 24 of them.
    EXPECT_EQ(PrxGetBytesPerRow(16, prxFormat2vuy, 2), 16U);
    EXPECT_EQ(PrxGetBytesPerRow(40, prxFormat2vuy, 2), 48U);
    for (uint32_t width = 1; width < 300; ++width) {
        for (const int32_t quality : {0, 1, 2}) {
            EXPECT_EQ(PrxGetBytesPerRow(width, prxFormat2vuy, quality) % 16, 0U);
        }
    }
}

TEST(PrxBytesPerRow, AnUnknownFormatOrNoWidthTakesNothing) {
    EXPECT_EQ(PrxGetBytesPerRow(1920, 0x61626364, 0), 0U);
    EXPECT_EQ(PrxGetBytesPerRow(0, prxFormatB64a, 0), 0U);
    EXPECT_EQ(PrxGetBytesPerRow(0, prxFormatV210, 0), 0U);
}

TEST(PrxBytesPerRow, ASizeBeyond32BitsIsTheLargestMultipleOf16) {
    constexpr uint32_t widest = std::numeric_limits<uint32_t>::max();
    EXPECT_EQ(PrxGetBytesPerRow((1U << 29) - 16, prxFormatB64a, 0), 0xffffff80U);
    EXPECT_EQ(PrxGetBytesPerRow((1U << 29) - 15, prxFormatB64a, 0), 0xfffffff0U);
    EXPECT_EQ(PrxGetBytesPerRow(1U << 29, prxFormatB64a, 0), 0xfffffff0U);
    EXPECT_EQ(PrxGetBytesPerRow(1U << 29, prxFormatB64a, 2), 1U << 31);
    EXPECT_EQ(PrxGetBytesPerRow(widest, prxFormatV210, 0), 0xfffffff0U);
    EXPECT_EQ(PrxGetBytesPerRow(widest, prxFormatR4fl, 0), 0xfffffff0U);
    EXPECT_EQ(PrxGetBytesPerRow(widest, 0, 0), 0U);
}

TEST(PrxBytesPerRow, TheEncoderOnlyFormatHasARowSize) {
    EXPECT_EQ(PrxGetBytesPerRow(1920, prxFormatYuvs, 0), 3840U);
}

TEST(PrxMaxFrameSize, TheBaseChangesRightBehind349920Pixels) {
    EXPECT_EQ(MaxFrameSize(prxCodecApch, false, 349920, 1), 0x48000);
    EXPECT_EQ(MaxFrameSize(prxCodecApch, false, 349921, 1), 0x54000);
}

TEST(PrxMaxFrameSize, EachSizeClassEndsWhereTheNextBegins) {
    const std::vector<std::pair<int32_t, int32_t>> bases = {
        {414720, 0x54000}, {414721, 0x6c000},  {691200, 0x6c000},  {691201, 0x7e000},  {921600, 0x7e000},
        {921601, 0xd8000}, {1555200, 0xd8000}, {1555201, 0xfc000}, {2073600, 0xfc000}, {2073601, 0x120000},
    };
    for (const auto& [pixels, base] : bases) {
        EXPECT_EQ(MaxFrameSize(prxCodecApch, false, pixels, 1), base) << pixels;
    }
}

TEST(PrxMaxFrameSize, AboveTheLastClassTheBaseIsHalfTheNumberOfPixels) {
    // `ap4x` takes 9 / 4 of the base, and so is the first to show the growth by a whole step of the result.
    EXPECT_EQ(MaxFrameSize(prxCodecAp4x, false, 0x23ffff, 1), 2654208);
    EXPECT_EQ(MaxFrameSize(prxCodecAp4x, false, 0x240000, 1), 2654208);
    EXPECT_EQ(MaxFrameSize(prxCodecAp4x, false, 0x240001, 1), 2654208);
    EXPECT_EQ(MaxFrameSize(prxCodecAp4x, false, 0x240e39, 1), 2654208);
    EXPECT_EQ(MaxFrameSize(prxCodecAp4x, false, 0x240e3a, 1), 2658304);
    EXPECT_EQ(MaxFrameSize(prxCodecApch, false, 0x242000, 1), 0x121000);
    EXPECT_EQ(MaxFrameSize(prxCodecApch, false, 3840, 2160), 4145152);
}

TEST(PrxMaxFrameSize, EachCodecTakesItsShareOfTheBase) {
    EXPECT_EQ(MaxFrameSize(prxCodecApch, false, 1920, 1080), 1032192);
    EXPECT_EQ(MaxFrameSize(prxCodecApcn, false, 1920, 1080), 688128);
    EXPECT_EQ(MaxFrameSize(prxCodecApcs, false, 1920, 1080), 479232);
    EXPECT_EQ(MaxFrameSize(prxCodecApco, false, 1920, 1080), 212992);
    EXPECT_EQ(MaxFrameSize(prxCodecAp4h, false, 1920, 1080), 1548288);
    EXPECT_EQ(MaxFrameSize(prxCodecAp4x, false, 1920, 1080), 2322432);
    EXPECT_EQ(MaxFrameSize(0, false, 1920, 1080), 1032192);
}

TEST(PrxMaxFrameSize, TheLow12BitsOfTheBoundAreCleared) {
    // 294912 * 13 / 28 is 136923 and 294912 * 13 / 63 is 60854.
    EXPECT_EQ(MaxFrameSize(prxCodecApcs, false, 720, 486), 135168);
    EXPECT_EQ(MaxFrameSize(prxCodecApco, false, 720, 486), 57344);
}

TEST(PrxMaxFrameSize, AlphaAddsThreeBytesForEachPixelOfThe4444Codecs) {
    EXPECT_EQ(MaxFrameSize(prxCodecAp4h, true, 1920, 1080), 1548288 + 6220800);
    EXPECT_EQ(MaxFrameSize(prxCodecAp4x, true, 1920, 1080), 2322432 + 6220800);
    EXPECT_EQ(MaxFrameSize(prxCodecApch, true, 1920, 1080), 1032192);
    EXPECT_EQ(MaxFrameSize(0, true, 1920, 1080), 1032192);
}

TEST(PrxMaxFrameSize, AnyValueButZeroMeansAlpha) {
    for (const uint8_t hasAlpha : {1, 2, 255}) {
        int32_t size = -1;
        PrxGetMaxFrameSize(prxCodecAp4h, hasAlpha, 1920, 1080, &size, nullptr);
        EXPECT_EQ(size, 1548288 + 6220800);
    }
}

TEST(PrxMaxFrameSize, TheTargetIsEightNinthsOfTheBoundWithoutAlpha) {
    EXPECT_EQ(TargetFrameSize(prxCodecApch, false, 1920, 1080), 917504);
    EXPECT_EQ(TargetFrameSize(prxCodecAp4h, false, 1920, 1080), 1376256);
    EXPECT_EQ(TargetFrameSize(prxCodecAp4h, true, 1920, 1080), 1376256);
    // 135168 * 8 / 9 is 120149.3.
    EXPECT_EQ(TargetFrameSize(prxCodecApcs, false, 720, 486), 120149);
}

TEST(PrxMaxFrameSize, TheTargetWrapsForBoundsFrom2ToThe28Up) {
    EXPECT_EQ(MaxFrameSize(prxCodecApch, false, 8192, 65535), (1 << 28) - 4096);
    EXPECT_EQ(TargetFrameSize(prxCodecApch, false, 8192, 65535), 238605653);
    EXPECT_EQ(MaxFrameSize(prxCodecApch, false, 8192, 65536), 1 << 28);
    EXPECT_EQ(TargetFrameSize(prxCodecApch, false, 8192, 65536), -238609294);
    EXPECT_EQ(TargetFrameSize(prxCodecApch, false, 16384, 65536), 0);
}

TEST(PrxMaxFrameSize, TheLargestPictureOfAStreamIsCountedExactly) {
    // 65535 * 65535 / 2 is 2147418112.
    EXPECT_EQ(MaxFrameSize(prxCodecApch, false, 65535, 65535), 2147418112);
    EXPECT_EQ(PrxGetFrameSizeBound(prxCodecAp4x, true, 65535, 65535), 4831690752 + 12884508675);
}

TEST(PrxMaxFrameSize, PicturesOfMoreThan2ToThe40PixelsCountAsThatMany) {
    EXPECT_EQ(PrxCountPixels(1 << 20, 1 << 20), int64_t{1} << 40);
    EXPECT_EQ(PrxCountPixels(largest, largest), int64_t{1} << 40);
    EXPECT_EQ(TargetFrameSize(prxCodecApco, false, largest, largest),
              TargetFrameSize(prxCodecApco, false, 1 << 20, 1 << 20));
}

TEST(PrxMaxFrameSize, ABoundBeyond32BitsIsTheLargestNumber) {
    EXPECT_EQ(MaxFrameSize(prxCodecAp4x, true, 65535, 65535), largest);
    EXPECT_EQ(MaxFrameSize(prxCodecApco, false, largest, largest), largest);
}

TEST(PrxMaxFrameSize, ANegativeSideIsAPictureWithoutPixels) {
    EXPECT_EQ(MaxFrameSize(prxCodecAp4h, true, -1920, 1080), 0x48000 * 3 / 2);
    EXPECT_EQ(MaxFrameSize(prxCodecApch, false, smallest, smallest), 0x48000);
    EXPECT_EQ(MaxFrameSize(prxCodecApch, false, largest, smallest), 0x48000);
}

TEST(PrxMaxFrameSize, EitherPointerMayBeNull) {
    int32_t bound = -1;
    int32_t target = -1;
    PrxGetMaxFrameSize(prxCodecApch, 0, 1920, 1080, nullptr, nullptr);
    PrxGetMaxFrameSize(prxCodecApch, 0, 1920, 1080, &bound, nullptr);
    PrxGetMaxFrameSize(prxCodecApch, 0, 1920, 1080, nullptr, &target);
    EXPECT_EQ(bound, 1032192);
    EXPECT_EQ(target, 917504);
}

TEST(PrxTargetSize, A422InputLowersTheBoundOfThe4444Codecs) {
    constexpr int64_t pixels = 1920 * 1080;
    for (const uint32_t format : {prxFormat2vuy, prxFormatYuvs, prxFormatV210, prxFormatV216}) {
        EXPECT_EQ(PrxGetTargetSize(prxCodecAp4h, pixels, format), 1032192);
        EXPECT_EQ(PrxGetTargetSize(prxCodecAp4x, pixels, format), 1548288);
        EXPECT_EQ(PrxGetTargetSize(prxCodecApcn, pixels, format), 688128);
    }
    EXPECT_EQ(PrxGetTargetSize(prxCodecAp4h, pixels, prxFormatB64a), 1548288);
    EXPECT_EQ(PrxGetTargetSize(prxCodecAp4h, pixels, prxFormatW216), 1548288);
}

TEST(PrxChromaFormat, IsThatOfACodecOfThe422Family) {
    for (const uint32_t codec : {prxCodecApch, prxCodecApcn, prxCodecApcs, prxCodecApco}) {
        EXPECT_EQ(PrxGetChromaFormat(codec, prxFormatB64a), 2);
        EXPECT_EQ(PrxGetChromaFormat(codec, 0), 2);
    }
}

TEST(PrxChromaFormat, IsThatOfA422InputForOtherCodecs) {
    for (const uint32_t format : {prxFormat2vuy, prxFormatYuvs, prxFormatV210, prxFormatV216}) {
        EXPECT_EQ(PrxGetChromaFormat(prxCodecAp4h, format), 2);
        EXPECT_EQ(PrxGetChromaFormat(0, format), 2);
    }
}

TEST(PrxChromaFormat, Is444OtherwiseAlsoForTheRowIntermediate) {
    EXPECT_EQ(PrxGetChromaFormat(prxCodecAp4h, prxFormatB64a), 3);
    EXPECT_EQ(PrxGetChromaFormat(prxCodecAp4x, prxFormatW216), 3);
    EXPECT_EQ(PrxGetChromaFormat(0, 0), 3);
}
