#include "prores/PrxWriters.h"

#include "RgbMacroblock.h"
#include "RgbModel.h"
#include "RoundingModes.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using Select = PrxMacroblockWriter (*)(uint32_t, int32_t, bool);
constexpr Select selections[] = {&PrxSelectRgbWriter, &PrxSelectScalarRgbWriter};

using Check = std::function<void(PrxMacroblockWriter, uint32_t format, int32_t matrix, bool hasAlpha)>;

/// Each writer, in both forms, with each matrix.
void ForEachWriter(const Check& check) {
    for (const Select select : selections) {
        for (const uint32_t format : rgbFormats) {
            for (const bool hasAlpha : {false, true}) {
                if (hasAlpha && !HasAlphaModel(format)) continue;
                for (const int32_t matrix : colorMatrices) {
                    SCOPED_TRACE(RgbCaseName(format, matrix, hasAlpha));
                    const PrxMacroblockWriter writer = select(format, prxChroma444, hasAlpha);
                    ASSERT_NE(writer, nullptr);
                    check(writer, format, matrix, hasAlpha);
                }
            }
        }
    }
}

/// Codes of the first pixel if all have these samples.
std::array<int32_t, 3> CodesFor(PrxMacroblockWriter writer, uint32_t format, int32_t matrix, bool hasAlpha,
                                const std::array<int32_t, 3>& samples) {
    RgbMacroblock macroblock;
    macroblock.SetPixel(0, 0, samples[0], samples[1], samples[2]);
    return CodesOf(format, macroblock.Write(writer, format, matrix, hasAlpha).data());
}

} // namespace

TEST(RgbWriters, GiveTheBytesOfTheModel) {
    std::mt19937 random = MakeRandom();
    for (const auto& source : SampleSources(random)) {
        RgbMacroblock macroblock;
        macroblock.Fill(random, source);
        ForEachWriter([&](PrxMacroblockWriter writer, uint32_t format, int32_t matrix, bool hasAlpha) {
            EXPECT_EQ(macroblock.Write(writer, format, matrix, hasAlpha),
                      macroblock.Expected(format, matrix, hasAlpha));
        });
    }
}

TEST(RgbWriters, StayWithinOneCodeOfDoublePrecision) {
    std::mt19937 random = MakeRandom();
    double worst = 0;
    for (const auto& source : SampleSources(random)) {
        RgbMacroblock macroblock;
        macroblock.Fill(random, source);
        ForEachWriter([&](PrxMacroblockWriter writer, uint32_t format, int32_t matrix, bool hasAlpha) {
            const auto pixels = macroblock.Write(writer, format, matrix, hasAlpha);
            const int32_t outMax = OutMaxModel(format);
            for (int32_t i = 0; i < 256; ++i) {
                const RgbModel exact = ExactRgb(macroblock.Ycbcr(i % 16, i / 16), matrix, outMax, 32);
                const auto codes =
                    CodesOf(format, pixels.data() + static_cast<size_t>(i) * PixelBytesModel(format));
                for (size_t c = 0; c < 3; ++c)
                    worst = std::max(worst, std::fabs(codes[c] - std::clamp(exact[c], 0.0, double(outMax))));
            }
        });
    }
    EXPECT_LE(worst, 1.0);
    EXPECT_GE(worst, 0.49) << "codes are integers";
}

TEST(RgbWriters, BlackGivesZero) {
    ForEachWriter([](PrxMacroblockWriter writer, uint32_t format, int32_t matrix, bool hasAlpha) {
        EXPECT_EQ(CodesFor(writer, format, matrix, hasAlpha, {-3584, 0, 0}),
                  (std::array<int32_t, 3>{0, 0, 0}));
    });
}

TEST(RgbWriters, WhiteGivesTheLargestCode) {
    ForEachWriter([](PrxMacroblockWriter writer, uint32_t format, int32_t matrix, bool hasAlpha) {
        const int32_t outMax = OutMaxModel(format);
        EXPECT_EQ(CodesFor(writer, format, matrix, hasAlpha, {3424, 0, 0}),
                  (std::array<int32_t, 3>{outMax, outMax, outMax}));
    });
}

TEST(RgbWriters, LumaAboveWhiteIsLimitedTo65535InB64a) {
    for (const Select select : selections) {
        for (const int32_t luma : {3425, 4095, 32767}) {
            EXPECT_EQ(
                CodesFor(select(prxFormatB64a, prxChroma444, false), prxFormatB64a, 1, false, {luma, 0, 0}),
                (std::array<int32_t, 3>{65535, 65535, 65535}));
        }
    }
}

TEST(RgbWriters, BlueOfBt2020InBgraUsesItsSinglePrecisionFactor) {
    const float factor = static_cast<float>(1.8814 * 255 / (224 * 32));
    for (const Select select : selections) {
        const PrxMacroblockWriter writer = select(prxFormatBgra, prxChroma444, false);
        for (int32_t cb = 0; cb <= 3584; ++cb) {
            const auto codes = CodesFor(writer, prxFormatBgra, 9, false, {-3584, cb, 0});
            ASSERT_EQ(codes[2],
                      std::min(NearestEvenModel(ProductModel(factor, static_cast<float>(cb))), 255));
        }
    }
}

TEST(RgbWriters, AlphaIsOpaqueWithoutSamples) {
    for (const Select select : selections) {
        const RgbMacroblock macroblock;
        const auto alphaBytes = [&](uint32_t format) {
            return macroblock.Write(select(format, prxChroma444, false), format, 1, false);
        };
        EXPECT_EQ(alphaBytes(prxFormatArgb)[0], 255);
        EXPECT_EQ(alphaBytes(prxFormatBgra)[3], 255);
        EXPECT_EQ(alphaBytes(prxFormatB64a)[0], 255);
        EXPECT_EQ(alphaBytes(prxFormatB64a)[1], 255);
    }
}

TEST(RgbWriters, StoreTheRowsAskedForAndNothingElse) {
    std::mt19937 random = MakeRandom();
    RgbMacroblock macroblock;
    macroblock.Fill(random, SampleSources(random)[0]);
    ForEachWriter([&](PrxMacroblockWriter writer, uint32_t format, int32_t matrix, bool hasAlpha) {
        WriterCall call = macroblock.Call(format, matrix, hasAlpha);
        call.gap = 13;
        const auto expected = macroblock.Expected(format, matrix, hasAlpha);
        for (const int32_t rows : {1, 7, 8, 9, 16}) {
            call.rows = rows;
            const auto pixels = macroblock.Write(writer, call);
            for (int32_t row = 0; row < rows; ++row) {
                const auto stored = pixels.begin() + row * static_cast<ptrdiff_t>(call.rowBytes + call.gap);
                const auto end = stored + static_cast<ptrdiff_t>(call.rowBytes);
                ASSERT_TRUE(
                    std::equal(stored, end, expected.begin() + row * static_cast<ptrdiff_t>(call.rowBytes)));
                if (row + 1 == rows) break;
                ASSERT_TRUE(std::all_of(end, end + static_cast<ptrdiff_t>(call.gap),
                                        [](uint8_t byte) { return byte == 0x5A; }));
            }
        }
    });
}

TEST(RgbWriters, StoreTheFullSizeWhateverTheShifts) {
    std::mt19937 random = MakeRandom();
    RgbMacroblock macroblock;
    macroblock.Fill(random, SampleSources(random)[0]);
    ForEachWriter([&](PrxMacroblockWriter writer, uint32_t format, int32_t matrix, bool hasAlpha) {
        WriterCall call = macroblock.Call(format, matrix, hasAlpha);
        for (const int32_t shift : {1, 2, 3}) {
            call.setup = {shift, shift, matrix};
            EXPECT_EQ(macroblock.Write(writer, call), macroblock.Expected(format, matrix, hasAlpha));
        }
    });
}

TEST(RgbWriters, RoundToNearestInAnyModeOfTheCallerAndKeepIt) {
    std::mt19937 random = MakeRandom();
    RgbMacroblock macroblock;
    macroblock.Fill(random, SampleSources(random)[0]);
    ForEachWriter([&](PrxMacroblockWriter writer, uint32_t format, int32_t matrix, bool hasAlpha) {
        ExpectInAnyRoundingMode([&] { return macroblock.Write(writer, format, matrix, hasAlpha); },
                                macroblock.Expected(format, matrix, hasAlpha));
    });
}

TEST(RgbWriters, ThereIsNoneFor422) {
    for (const Select select : selections) {
        for (const uint32_t format : rgbFormats)
            EXPECT_EQ(select(format, prxChroma422, false), nullptr);
    }
}

TEST(RgbWriters, ThereIsNoneForOtherFormats) {
    for (const Select select : selections) {
        for (const uint32_t format : {prxFormatL302, prxFormatV216, prxFormatY416, prxFormat2vuy})
            EXPECT_EQ(select(format, prxChroma444, false), nullptr);
    }
}
