#include "prores/PrxRowPassRgb.h"

#include "RgbModel.h"
#include "RgbRow.h"
#include "RoundingModes.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

constexpr auto behind = GuardedBytes::Guard::Behind;

using Select = PrxRowPass (*)(uint32_t, bool);
constexpr Select selections[] = {&PrxSelectRgbRowPass, &PrxSelectScalarRgbRowPass};

using Check = std::function<void(PrxRowPass, uint32_t format, int32_t matrix, bool hasAlpha)>;

/// Each pass, in both forms, with each matrix.
void ForEachPass(const Check& check) {
    for (const Select select : selections) {
        for (const uint32_t format : rgbFormats) {
            for (const bool hasAlpha : {false, true}) {
                if (hasAlpha && !HasAlphaModel(format)) continue;
                for (const int32_t matrix : colorMatrices) {
                    SCOPED_TRACE(RgbCaseName(format, matrix, hasAlpha));
                    const PrxRowPass pass = select(format, hasAlpha);
                    ASSERT_NE(pass, nullptr);
                    check(pass, format, matrix, hasAlpha);
                }
            }
        }
    }
}

/// Codes of pixel `x`, the whole row being one stretch.
std::array<int32_t, 3> CodesAt(const RgbRows& rows, PrxRowPass pass, uint32_t format, int32_t matrix,
                               bool hasAlpha, int32_t x) {
    const auto pixels = rows.Convert(pass, format, matrix, hasAlpha, 0, rows.width());
    return CodesOf(format, pixels.data() + static_cast<size_t>(x) * PixelBytesModel(format));
}

} // namespace

TEST(RgbRowPass, GivesTheBytesOfTheModel) {
    std::mt19937 random = MakeRandom();
    for (const auto& source : WordSources(random)) {
        RgbRows rows(130, 2, behind);
        rows.Fill(random, source);
        ForEachPass([&](PrxRowPass pass, uint32_t format, int32_t matrix, bool hasAlpha) {
            EXPECT_EQ(rows.Convert(pass, format, matrix, hasAlpha, 0, 130),
                      rows.Expected(format, matrix, hasAlpha, 0, 130));
        });
    }
}

TEST(RgbRowPass, StaysWithinOneCodeOfDoublePrecision) {
    std::mt19937 random = MakeRandom();
    double worst = 0;
    for (const auto& source : WordSources(random)) {
        RgbRows rows(130, 1, behind);
        rows.Fill(random, source);
        ForEachPass([&](PrxRowPass pass, uint32_t format, int32_t matrix, bool hasAlpha) {
            const auto pixels = rows.Convert(pass, format, matrix, hasAlpha, 0, 130);
            const int32_t outMax = OutMaxModel(format);
            for (int32_t x = 0; x < 130; ++x) {
                const RgbModel exact = ExactRgb(rows.Ycbcr(x, 0, 130), matrix, outMax, 256);
                const auto codes =
                    CodesOf(format, pixels.data() + static_cast<size_t>(x) * PixelBytesModel(format));
                for (size_t c = 0; c < 3; ++c)
                    worst = std::max(worst, std::fabs(codes[c] - std::clamp(exact[c], 0.0, double(outMax))));
            }
        });
    }
    EXPECT_LE(worst, 1.0);
    EXPECT_GE(worst, 0.49) << "codes are integers";
}

TEST(RgbRowPass, BlackGivesZero) {
    RgbRows rows(2, 1, behind);
    rows.SetPair(0, {32768, 4096, 32768, 4096});
    ForEachPass([&](PrxRowPass pass, uint32_t format, int32_t matrix, bool hasAlpha) {
        EXPECT_EQ(CodesAt(rows, pass, format, matrix, hasAlpha, 0), (std::array<int32_t, 3>{0, 0, 0}));
        EXPECT_EQ(CodesAt(rows, pass, format, matrix, hasAlpha, 1), (std::array<int32_t, 3>{0, 0, 0}));
    });
}

TEST(RgbRowPass, WhiteGivesTheLargestCodeAndWhatIsAboveNoMore) {
    RgbRows rows(2, 1, behind);
    rows.SetPair(0, {32768, 3424 * 8 + 32768, 32768, 65535});
    ForEachPass([&](PrxRowPass pass, uint32_t format, int32_t matrix, bool hasAlpha) {
        const int32_t outMax = OutMaxModel(format);
        const std::array<int32_t, 3> white = {outMax, outMax, outMax};
        EXPECT_EQ(CodesAt(rows, pass, format, matrix, hasAlpha, 0), white);
        EXPECT_EQ(CodesAt(rows, pass, format, matrix, hasAlpha, 1), white);
    });
}

TEST(RgbRowPass, OddPixelsTakeTheMeanOfTwoPairs) {
    RgbRows rows(4, 1, behind);
    rows.SetPair(0, {32768, 32768, 32768 + 1001, 32768});
    rows.SetPair(1, {32768, 32768, 32768 + 4002, 32768});
    ForEachPass([&](PrxRowPass pass, uint32_t format, int32_t matrix, bool hasAlpha) {
        const int32_t outMax = OutMaxModel(format);
        const auto red = [&](double cr) { return CodesModel({28672, 0, cr}, matrix, outMax, 256)[0]; };
        EXPECT_EQ(CodesAt(rows, pass, format, matrix, hasAlpha, 0)[0], red(1001));
        EXPECT_EQ(CodesAt(rows, pass, format, matrix, hasAlpha, 1)[0], red(2501.5));
        EXPECT_EQ(CodesAt(rows, pass, format, matrix, hasAlpha, 2)[0], red(4002));
    });
}

TEST(RgbRowPass, LastPairOfTheRowIsItsOwnSuccessor) {
    std::mt19937 random = MakeRandom();
    RgbRows rows(18, 1, behind);
    rows.Fill(random, WordSources(random)[0]);
    rows.SetPair(8, {12345, 32768, 54321, 32768});
    ForEachPass([&](PrxRowPass pass, uint32_t format, int32_t matrix, bool hasAlpha) {
        EXPECT_EQ(CodesAt(rows, pass, format, matrix, hasAlpha, 17),
                  CodesAt(rows, pass, format, matrix, hasAlpha, 16));
    });
}

TEST(RgbRowPass, LastPairBeforeARefusedSliceIsItsOwnSuccessor) {
    std::mt19937 random = MakeRandom();
    RgbRows rows(64, 2, behind);
    rows.Fill(random, WordSources(random)[0]);
    rows.SetPair(15, {12345, 32768, 54321, 32768});
    ForEachPass([&](PrxRowPass pass, uint32_t format, int32_t matrix, bool hasAlpha) {
        const auto pixels = rows.Convert(pass, format, matrix, hasAlpha, 16, 32);
        const size_t bytes = PixelBytesModel(format);
        EXPECT_EQ(CodesOf(format, pixels.data() + 31 * bytes), CodesOf(format, pixels.data() + 30 * bytes));
        EXPECT_EQ(rows.Convert(pass, format, matrix, hasAlpha, 16, 32),
                  rows.Expected(format, matrix, hasAlpha, 16, 32));
    });
}

TEST(RgbRowPass, WritesTheStretchAndNothingElse) {
    std::mt19937 random = MakeRandom();
    RgbRows rows(75, 3, behind);
    rows.Fill(random, WordSources(random)[0]);
    ForEachPass([&](PrxRowPass pass, uint32_t format, int32_t matrix, bool hasAlpha) {
        for (const auto& [first, end] : {std::pair{0, 16}, {16, 48}, {32, 75}, {0, 75}, {64, 75}}) {
            EXPECT_EQ(rows.Convert(pass, format, matrix, hasAlpha, first, end, 5),
                      rows.Expected(format, matrix, hasAlpha, first, end, 5));
        }
    });
}

TEST(RgbRowPass, StoresOnlyTheFirstPixelOfTheLastPairOfAnOddWidth) {
    std::mt19937 random = MakeRandom();
    for (const int32_t width : {1, 3, 17, 33}) {
        RgbRows rows(width, 1, behind); // the target ends with its last pixel
        rows.Fill(random, WordSources(random)[0]);
        ForEachPass([&](PrxRowPass pass, uint32_t format, int32_t matrix, bool hasAlpha) {
            EXPECT_EQ(rows.Convert(pass, format, matrix, hasAlpha, 0, width),
                      rows.Expected(format, matrix, hasAlpha, 0, width));
        });
    }
}

TEST(RgbRowPass, LeavesTheTargetAloneForAnEmptyStretch) {
    const RgbRows rows(16, 1, behind);
    ForEachPass([&](PrxRowPass pass, uint32_t format, int32_t matrix, bool hasAlpha) {
        EXPECT_EQ(rows.Convert(pass, format, matrix, hasAlpha, 16, 16),
                  std::vector<uint8_t>(16 * PixelBytesModel(format), RgbRows::untouched));
    });
}

TEST(RgbRowPass, RoundsToNearestInAnyModeOfTheCallerAndKeepsIt) {
    std::mt19937 random = MakeRandom();
    RgbRows rows(99, 2, behind);
    rows.Fill(random, WordSources(random)[0]);
    ForEachPass([&](PrxRowPass pass, uint32_t format, int32_t matrix, bool hasAlpha) {
        ExpectInAnyRoundingMode([&] { return rows.Convert(pass, format, matrix, hasAlpha, 0, 99); },
                                rows.Expected(format, matrix, hasAlpha, 0, 99));
    });
}

TEST(RgbRowPass, FormatsWithoutAlphaIgnoreIt) {
    std::mt19937 random = MakeRandom();
    RgbRows rows(40, 1, behind);
    rows.Fill(random, WordSources(random)[0]);
    for (const Select select : selections) {
        for (const uint32_t format : {prxFormatR10k, prxFormatR210, prxFormatN302}) {
            EXPECT_EQ(rows.Convert(select(format, true), format, 1, true, 0, 40),
                      rows.Expected(format, 1, false, 0, 40));
        }
    }
}

TEST(RgbRowPass, ThereIsNoneForOtherFormats) {
    for (const Select select : selections) {
        for (const uint32_t format : {prxFormatL302, prxFormatV216, prxFormatY416, prxFormatV210})
            EXPECT_EQ(select(format, false), nullptr);
    }
}
