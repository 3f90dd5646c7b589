#include "prores/PrxRowPassRgbVector.h"

#include "RgbModel.h"
#include "RgbRow.h"
#include "RoundingModes.h"
#include "prores/PrxRowPassRgb.h"
#include "support/TestSupport.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>

namespace {

using Check =
    std::function<void(PrxRowPass vector, PrxRowPass scalar, uint32_t format, int32_t matrix, bool hasAlpha)>;

/// Each pass of each instruction set of this machine, beside its scalar twin.
void ForEachVectorPass(const Check& check) {
    ASSERT_FALSE(VectorTargets().empty()) << "no vector instruction set was dispatched";
    for (const int64_t target : VectorTargets()) {
        SCOPED_TRACE(hwy::TargetName(target));
        const ForcedTarget forced(target);
        for (const uint32_t format : rgbFormats) {
            for (const bool hasAlpha : {false, true}) {
                if (hasAlpha && !HasAlphaModel(format)) continue;
                const PrxRowPass vector = PrxSelectVectorRgbRowPass(format, hasAlpha);
                ASSERT_NE(vector, nullptr);
                for (const int32_t matrix : colorMatrices) {
                    SCOPED_TRACE(RgbCaseName(format, matrix, hasAlpha));
                    check(vector, PrxSelectScalarRgbRowPass(format, hasAlpha), format, matrix, hasAlpha);
                }
            }
        }
    }
}

} // namespace

TEST(RgbRowPassVector, EqualsTheScalarForm) {
    std::mt19937 random = MakeRandom();
    for (const auto& source : WordSources(random)) {
        RgbRows rows(2050, 4, GuardedBytes::Guard::Behind);
        rows.Fill(random, source);
        ForEachVectorPass(
            [&](PrxRowPass vector, PrxRowPass scalar, uint32_t format, int32_t matrix, bool hasAlpha) {
                ASSERT_EQ(rows.Convert(vector, format, matrix, hasAlpha, 0, 2050),
                          rows.Convert(scalar, format, matrix, hasAlpha, 0, 2050));
            });
    }
}

TEST(RgbRowPassVector, EqualsTheScalarFormAtEveryWidthWithinBounds) {
    std::mt19937 random = MakeRandom();
    for (const auto guard : {GuardedBytes::Guard::Behind, GuardedBytes::Guard::Before}) {
        for (int32_t width = 1; width <= 70; ++width) {
            RgbRows rows(width, 2, guard);
            rows.Fill(random, WordSources(random)[1]);
            SCOPED_TRACE("width " + std::to_string(width));
            ForEachVectorPass(
                [&](PrxRowPass vector, PrxRowPass scalar, uint32_t format, int32_t matrix, bool hasAlpha) {
                    ASSERT_EQ(rows.Convert(vector, format, matrix, hasAlpha, 0, width, 3),
                              rows.Convert(scalar, format, matrix, hasAlpha, 0, width, 3));
                });
        }
    }
}

TEST(RgbRowPassVector, EqualsTheScalarFormOnEveryStretch) {
    std::mt19937 random = MakeRandom();
    RgbRows rows(75, 2, GuardedBytes::Guard::Behind);
    rows.Fill(random, WordSources(random)[1]);
    for (int32_t first = 0; first < 75; first += 16) {
        for (int32_t end = first; end <= 80; end += 16) {
            const int32_t last = std::min(end, 75);
            ForEachVectorPass(
                [&](PrxRowPass vector, PrxRowPass scalar, uint32_t format, int32_t matrix, bool hasAlpha) {
                    ASSERT_EQ(rows.Convert(vector, format, matrix, hasAlpha, first, last),
                              rows.Convert(scalar, format, matrix, hasAlpha, first, last));
                });
        }
    }
}

TEST(RgbRowPassVector, RoundsToNearestInAnyModeOfTheCallerAndKeepsIt) {
    std::mt19937 random = MakeRandom();
    RgbRows rows(99, 2, GuardedBytes::Guard::Behind);
    rows.Fill(random, WordSources(random)[0]);
    ForEachVectorPass([&](PrxRowPass vector, PrxRowPass, uint32_t format, int32_t matrix, bool hasAlpha) {
        ExpectInAnyRoundingMode([&] { return rows.Convert(vector, format, matrix, hasAlpha, 0, 99); },
                                rows.Expected(format, matrix, hasAlpha, 0, 99));
    });
}

TEST(RgbRowPassVector, IsThePassChosen) {
    ForEachVectorPass([](PrxRowPass vector, PrxRowPass scalar, uint32_t format, int32_t, bool hasAlpha) {
        EXPECT_NE(vector, scalar);
        EXPECT_EQ(PrxSelectRgbRowPass(format, hasAlpha), vector);
    });
}
