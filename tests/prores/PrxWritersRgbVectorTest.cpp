#include "prores/PrxWritersRgbVector.h"

#include "RgbMacroblock.h"
#include "RoundingModes.h"
#include "prores/PrxWriters.h"
#include "prores/WriterComparison.h"
#include "support/TestSupport.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>

namespace {

using Check = std::function<void(PrxMacroblockWriter vector, PrxMacroblockWriter scalar, uint32_t format,
                                 int32_t matrix, bool hasAlpha)>;

/// Each writer of each instruction set of this machine, beside its scalar twin.
void ForEachVectorWriter(const Check& check) {
    ASSERT_FALSE(VectorTargets().empty()) << "no vector instruction set was dispatched";
    for (const int64_t target : VectorTargets()) {
        SCOPED_TRACE(hwy::TargetName(target));
        const ForcedTarget forced(target);
        for (const uint32_t format : rgbFormats) {
            for (const bool hasAlpha : {false, HasAlphaModel(format)}) {
                const auto vector = PrxSelectVectorRgbWriter(format, prxChroma444, hasAlpha);
                const auto scalar = PrxSelectScalarRgbWriter(format, prxChroma444, hasAlpha);
                ASSERT_NE(vector, nullptr);
                for (const int32_t matrix : colorMatrices) {
                    SCOPED_TRACE(RgbCaseName(format, matrix, hasAlpha));
                    check(vector, scalar, format, matrix, hasAlpha);
                }
            }
        }
    }
}

} // namespace

TEST(RgbWritersVector, EqualTheScalarForm) {
    std::mt19937 random = MakeRandom();
    for (const auto& source : SampleSources(random)) {
        for (int32_t round = 0; round < 20; ++round) {
            RgbMacroblock macroblock;
            macroblock.Fill(random, source);
            ForEachVectorWriter([&](PrxMacroblockWriter vector, PrxMacroblockWriter scalar, uint32_t format,
                                    int32_t matrix, bool hasAlpha) {
                ASSERT_EQ(macroblock.Write(vector, format, matrix, hasAlpha),
                          macroblock.Write(scalar, format, matrix, hasAlpha));
            });
        }
    }
}

TEST(RgbWritersVector, EqualTheScalarFormAtEachNumberOfRowsWithinBounds) {
    constexpr WriterFormat formats[] = {
        {prxFormatArgb, 64, 0},  {prxFormatArgb, 64, 16}, {prxFormatBgra, 64, 0},
        {prxFormatBgra, 64, 16}, {prxFormatB64a, 128, 0}, {prxFormatB64a, 128, 32},
        {prxFormatR10k, 64, 0},  {prxFormatR210, 64, 0},  {prxFormatN302, 64, 0}};
    CompareWriters(formats, PrxSelectVectorRgbWriter, PrxSelectScalarRgbWriter, {prxChroma444});
}

TEST(RgbWritersVector, RoundToNearestInAnyModeOfTheCallerAndKeepIt) {
    std::mt19937 random = MakeRandom();
    RgbMacroblock macroblock;
    macroblock.Fill(random, SampleSources(random)[0]);
    ForEachVectorWriter(
        [&](PrxMacroblockWriter vector, PrxMacroblockWriter, uint32_t format, int32_t matrix, bool hasAlpha) {
            ExpectInAnyRoundingMode([&] { return macroblock.Write(vector, format, matrix, hasAlpha); },
                                    macroblock.Expected(format, matrix, hasAlpha));
        });
}

TEST(RgbWritersVector, AreTheWritersChosen) {
    ForEachVectorWriter(
        [](PrxMacroblockWriter vector, PrxMacroblockWriter scalar, uint32_t format, int32_t, bool hasAlpha) {
            EXPECT_NE(vector, scalar);
            EXPECT_EQ(PrxSelectRgbWriter(format, prxChroma444, hasAlpha), vector);
        });
}
