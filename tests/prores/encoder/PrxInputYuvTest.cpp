#include "prores/encoder/PrxInputYuv.h"

#include "prores/RoundingModes.h"
#include "prores/encoder/InputConversion.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using input_model::Format;
using input_model::FormatOf;
using input_model::PackedPixels;
using input_model::Pixels;

/// Luma, Cb and Cr of a stream of 4:4:4 from pixels that all have the value `value` in all channels.
struct Samples {
    int16_t luma;
    int16_t cb;
    int16_t cr;
    bool operator==(const Samples&) const = default;
};
Samples ConvertOne(uint32_t pixelFormat, double value) {
    const Format& format = FormatOf(pixelFormat);
    const int32_t chromaFormat = format.packed ? prxChroma422 : prxChroma444;
    Pixels pixels;
    pixels.Fill([value] { return value; });
    const auto blocks = Convert(PrxGetScalarYuvConverter(pixelFormat, chromaFormat),
                                PackedPixels(format, pixels, {}), chromaFormat);
    return {blocks[0], blocks[64 * 4], blocks[64 * 5]};
}

} // namespace

TEST(PrxInputYuv, EachFormatGivesTheSamplesOfItsLayout) {
    std::mt19937 random = MakeRandom();
    for (const Format& format : input_model::Formats()) {
        for (const auto& fill : input_model::Fills(format, random)) {
            for (const int32_t chromaFormat : StreamsOf(format)) {
                Pixels pixels;
                pixels.Fill(fill);
                const auto convert = PrxGetScalarYuvConverter(format.pixelFormat, chromaFormat);
                ASSERT_NE(convert, nullptr);
                for (const bool upwards : {false, true})
                    ASSERT_EQ(
                        Convert(convert, PackedPixels(format, pixels, {16, 16, 0, upwards}), chromaFormat),
                        BlocksOf(format, pixels, chromaFormat, 16, 16))
                        << format.name << " to " << chromaFormat;
            }
        }
    }
}

TEST(PrxInputYuv, AFullColourSourceOf422TakesTheChromaOfEvenPixels) {
    Pixels pixels;
    pixels.Fill([odd = true]() mutable { return (odd = !odd) ? 200.0 : 0.0; });
    const auto blocks = Convert(PrxGetScalarYuvConverter(prxFormatY408, prxChroma422),
                                PackedPixels(FormatOf(prxFormatY408), pixels, {}), prxChroma422);
    for (size_t i = 64 * 4; i < blocks.size(); ++i)
        ASSERT_EQ(blocks[i], -2048);
}

TEST(PrxInputYuv, BytesAreScaledAroundTheirMiddle) {
    for (const uint32_t format : {prxFormat2vuy, prxFormatYuvs, prxFormatY408, prxFormatV408}) {
        EXPECT_EQ(ConvertOne(format, 0), (Samples{-2048, -2048, -2048}));
        EXPECT_EQ(ConvertOne(format, 128), (Samples{0, 0, 0}));
        EXPECT_EQ(ConvertOne(format, 255), (Samples{2032, 2032, 2032}));
    }
}

TEST(PrxInputYuv, R408LumaOf255Is127Times16) {
    EXPECT_EQ(ConvertOne(prxFormatR408, 255), (Samples{127 * 16, 127 * 16, 127 * 16}));
    EXPECT_EQ(ConvertOne(prxFormatR408, 240).luma, 127 * 16);
    EXPECT_EQ(ConvertOne(prxFormatR408, 239).luma, 127 * 16);
    EXPECT_EQ(ConvertOne(prxFormatR408, 238).luma, 126 * 16);
}

TEST(PrxInputYuv, R408LumaOf0IsVideoBlack) {
    EXPECT_EQ(ConvertOne(prxFormatR408, 0), (Samples{-112 * 16, -2048, -2048}));
}

TEST(PrxInputYuv, WordsOf65535SaturateAt2047) {
    EXPECT_EQ(ConvertOne(prxFormatV216, 65535), (Samples{2047, 2047, 2047}));
    EXPECT_EQ(ConvertOne(prxFormatY416, 65535), (Samples{2047, 2047, 2047}));
}

TEST(PrxInputYuv, WordsAreRoundedTo12BitsWithHalvesUp) {
    EXPECT_EQ(ConvertOne(prxFormatV216, 32768 + 7).luma, 0);
    EXPECT_EQ(ConvertOne(prxFormatV216, 32768 + 8).luma, 1);
    EXPECT_EQ(ConvertOne(prxFormatY416, 32768 - 8).luma, 0);
    EXPECT_EQ(ConvertOne(prxFormatY416, 32768 - 9).luma, -1);
    EXPECT_EQ(ConvertOne(prxFormatY416, 0).luma, -2048);
}

TEST(PrxInputYuv, FloatsAreRoundedToNearestWithHalvesToEven) {
    EXPECT_EQ(ConvertOne(prxFormatR4fl, 1.0 / 32).luma, 128 - 1792); // 127.5
    EXPECT_EQ(ConvertOne(prxFormatR4fl, 3.0 / 32).luma, 382 - 1792); // 382.5
    EXPECT_EQ(ConvertOne(prxFormatR4fl, 1.0 / 32).cb, 128 - 2048);
    EXPECT_EQ(ConvertOne(prxFormatR4fl, 3.0 / 32).cr, 382 - 2048);
}

TEST(PrxInputYuv, FloatsAreLimited) {
    EXPECT_EQ(ConvertOne(prxFormatR4fl, 1e30), (Samples{2032, 2032, 2032}));
    EXPECT_EQ(ConvertOne(prxFormatR4fl, -1e30), (Samples{-2048, -2048, -2048}));
    EXPECT_EQ(ConvertOne(prxFormatR4fl, std::numeric_limits<float>::infinity()), (Samples{2032, 2032, 2032}));
}

TEST(PrxInputYuv, AFloatThatIsNoNumberCountsAs0) {
    EXPECT_EQ(ConvertOne(prxFormatR4fl, NAN), (Samples{-1792, -2048, -2048}));
    EXPECT_EQ(ConvertOne(prxFormatR4fl, NAN), ConvertOne(prxFormatR4fl, 0));
}

TEST(PrxInputYuv, DecodedFloatsComeBackAsTheirSamples) {
    for (int32_t sample = -2048; sample <= 2032; ++sample) {
        // As the decoder writes samples of 13 bits.
        const float scale = 1.0F / 8160.0F;
        EXPECT_EQ(ConvertOne(prxFormatR4fl, static_cast<float>(2 * sample + 3584) * scale).luma, sample);
        EXPECT_EQ(ConvertOne(prxFormatR4fl, static_cast<float>(2 * sample + 4096) * scale).cb, sample);
    }
}

TEST(PrxInputYuv, FloatsDoNotDependOnTheRoundingModeOfTheThread) {
    std::mt19937 random = MakeRandom();
    const Format& format = FormatOf(prxFormatR4fl);
    Pixels pixels;
    pixels.Fill(input_model::Fills(format, random)[1]);
    const PackedPixels packed(format, pixels, {});
    const auto convert = PrxGetScalarYuvConverter(prxFormatR4fl, prxChroma444);
    ExpectInAnyRoundingMode([&] { return Convert(convert, packed, prxChroma444); },
                            BlocksOf(format, pixels, prxChroma444, 16, 16));
}
