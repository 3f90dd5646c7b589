#include "prores/encoder/PrxInputYuvVector.h"

#include "prores/RoundingModes.h"
#include "prores/encoder/InputConversion.h"
#include "prores/encoder/PrxInputYuv.h"
#include "support/TestSupport.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>

namespace {

using input_model::Format;
using input_model::PackedPixels;
using input_model::Pixels;

void CompareForms(const Format& format, int32_t chromaFormat, const Pixels& pixels) {
    const auto vector = PrxGetVectorYuvConverter(format.pixelFormat, chromaFormat);
    ASSERT_NE(vector, nullptr);
    const auto scalar = PrxGetScalarYuvConverter(format.pixelFormat, chromaFormat);
    for (const auto guard : {GuardedBytes::Guard::Behind, GuardedBytes::Guard::Before}) {
        for (const int32_t gap : {0, 64, 3}) {
            for (const bool upwards : {false, true}) {
                const PackedPixels packed(format, pixels, {16, 16, gap, upwards}, guard);
                ASSERT_EQ(Convert(vector, packed, chromaFormat), Convert(scalar, packed, chromaFormat))
                    << format.name << " to " << chromaFormat << ", gap " << gap;
            }
        }
    }
}

} // namespace

TEST(PrxInputYuvVector, GivesTheSamplesOfTheReferenceFormOnEveryInstructionSet) {
    std::mt19937 random = MakeRandom();
    ASSERT_FALSE(VectorTargets().empty());
    for (const int64_t target : VectorTargets()) {
        const ForcedTarget forced(target);
        for (const Format& format : input_model::Formats()) {
            for (const auto& fill : input_model::Fills(format, random)) {
                for (const int32_t chromaFormat : StreamsOf(format)) {
                    Pixels pixels;
                    pixels.Fill(fill);
                    CompareForms(format, chromaFormat, pixels);
                }
            }
        }
    }
}

TEST(PrxInputYuvVector, EveryWordGivesTheSampleOfTheReferenceForm) {
    const Format& format = input_model::FormatOf(prxFormatY416);
    for (const int64_t target : VectorTargets()) {
        const ForcedTarget forced(target);
        double next = 0;
        while (next < 65536) {
            Pixels pixels;
            pixels.Fill([&next] { return next++; });
            const PackedPixels packed(format, pixels, {});
            ASSERT_EQ(Convert(PrxGetVectorYuvConverter(prxFormatY416, prxChroma444), packed, prxChroma444),
                      BlocksOf(format, pixels, prxChroma444, 16, 16));
        }
    }
}

TEST(PrxInputYuvVector, FloatsDoNotDependOnTheRoundingModeOfTheThread) {
    std::mt19937 random = MakeRandom();
    const Format& format = input_model::FormatOf(prxFormatR4fl);
    Pixels pixels;
    pixels.Fill(input_model::Fills(format, random)[1]);
    const PackedPixels packed(format, pixels, {});
    for (const int64_t target : VectorTargets()) {
        const ForcedTarget forced(target);
        for (const int32_t chromaFormat : StreamsOf(format)) {
            const auto convert = PrxGetVectorYuvConverter(prxFormatR4fl, chromaFormat);
            ExpectInAnyRoundingMode([&] { return Convert(convert, packed, chromaFormat); },
                                    BlocksOf(format, pixels, chromaFormat, 16, 16));
        }
    }
}

TEST(PrxInputYuvVector, HasNoFormOfWhatTheReferenceFormLacks) {
    for (const uint32_t format : {prxFormatV210, prxFormatW216, prxFormatArgb, prxFormatBgra, prxFormatB64a,
                                  prxFormatR10k, prxFormatR210, prxFormatN302, prxFormatL302}) {
        EXPECT_EQ(PrxGetVectorYuvConverter(format, prxChroma422), nullptr);
        EXPECT_EQ(PrxGetVectorYuvConverter(format, prxChroma444), nullptr);
    }
    for (const uint32_t format : {prxFormat2vuy, prxFormatYuvs, prxFormatV216})
        EXPECT_EQ(PrxGetVectorYuvConverter(format, prxChroma444), nullptr);
    EXPECT_EQ(PrxGetVectorYuvConverter(prxFormatY408, 1), nullptr);
}
