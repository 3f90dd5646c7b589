#include "prores/PrxWriters.h"

#include "prores/MacroblockFixture.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <cfenv>

namespace {

using Floats = std::vector<float>;

Floats FloatsOf(const std::vector<uint8_t>& bytes) {
    Floats floats(bytes.size() / sizeof(float));
    std::memcpy(floats.data(), bytes.data(), bytes.size());
    return floats;
}

Floats Write(TestMacroblock& macroblock, const Floats& alpha = {}) {
    const bool hasAlpha = !alpha.empty();
    WriterCall call = {.rowBytes = 256, .alphaRowBytes = hasAlpha ? size_t{64} : 0};
    call.alpha.resize(alpha.size() * sizeof(float));
    if (hasAlpha) std::memcpy(call.alpha.data(), alpha.data(), call.alpha.size());
    const PrxMacroblockWriter writer =
        PrxSelectScalarFloatWriter(prxFormatR4fl, macroblock.ChromaFormat(), hasAlpha);
    return FloatsOf(RunWriter(writer, macroblock, call));
}

/// A product with the single-precision 1/8160, exact in double precision and rounded once.
float Product(int32_t value) {
    const float factor = 1.0F / 8160.0F;
    return static_cast<float>(double{factor} * value);
}
float LumaOf(int16_t sample) { return Product(std::clamp<int32_t>(sample, -4096, 4064) + 3584); }
float ChromaOf(int16_t sample) { return Product(std::clamp<int32_t>(sample, -4096, 4064) + 4096); }

/// The mean, of which the sum is rounded; pixel 15 has no right neighbour and takes its left one's value.
float Filtered(const std::function<int16_t(int32_t)>& sample, int32_t x) {
    if (x % 2 == 0 || x == 15) return ChromaOf(sample(x / 2));
    const double sum = double{ChromaOf(sample(x / 2))} + ChromaOf(sample(x / 2 + 1));
    return static_cast<float>(sum) / 2;
}

TestMacroblock RandomMacroblock(int32_t chromaFormat) {
    std::mt19937 random = MakeRandom();
    TestMacroblock macroblock(chromaFormat);
    macroblock.Fill(SampleFills(random)[0]);
    return macroblock;
}

TEST(PrxWritersFloat, MultiplyBySinglePrecision1Over8160) {
    TestMacroblock macroblock = RandomMacroblock(prxChroma444);
    const Floats floats = Write(macroblock);
    for (int32_t y = 0; y < 16; ++y) {
        for (int32_t x = 0; x < 16; ++x) {
            const size_t pixel = static_cast<size_t>(16 * y + x) * 4;
            EXPECT_EQ(floats[pixel], 1.0F);
            EXPECT_EQ(floats[pixel + 1], LumaOf(macroblock.Luma(x, y)));
            EXPECT_EQ(floats[pixel + 2], ChromaOf(macroblock.Cb(x, y)));
            EXPECT_EQ(floats[pixel + 3], ChromaOf(macroblock.Cr(x, y)));
        }
    }
}

TEST(PrxWritersFloat, WriteLuma4064AsTheProductOf7648) {
    TestMacroblock macroblock(prxChroma444);
    macroblock.Luma(0, 0) = 4064;
    macroblock.Luma(1, 0) = 4065;
    const Floats floats = Write(macroblock);
    EXPECT_EQ(floats[1], 7648 * (1.0F / 8160.0F));
    EXPECT_EQ(floats[5], floats[1]) << "larger samples are limited";
    EXPECT_NEAR(floats[1], 7648.0 / 8160.0, 1e-7);
}

TEST(PrxWritersFloat, WriteLumaBlackAs0AndLessBelow0) {
    TestMacroblock macroblock(prxChroma444);
    macroblock.Luma(0, 0) = -3584;
    macroblock.Luma(1, 0) = INT16_MIN;
    const Floats floats = Write(macroblock);
    EXPECT_EQ(floats[1], 0.0F);
    EXPECT_EQ(floats[5], Product(-512));
}

TEST(PrxWritersFloat, WriteChromaFrom0To1) {
    TestMacroblock macroblock(prxChroma444);
    macroblock.Cb(0, 0) = -4096;
    macroblock.Cr(0, 0) = 4064;
    macroblock.Cb(1, 0) = INT16_MIN;
    macroblock.Cr(1, 0) = INT16_MAX;
    const Floats floats = Write(macroblock);
    EXPECT_EQ(floats[2], 0.0F);
    EXPECT_EQ(floats[3], 1.0F);
    EXPECT_EQ(floats[6], 0.0F);
    EXPECT_EQ(floats[7], 1.0F);
}

TEST(PrxWritersFloat, GiveOddPixelsTheMeanOfFinishedChromaOfA422Stream) {
    TestMacroblock macroblock = RandomMacroblock(prxChroma422);
    const Floats floats = Write(macroblock);
    for (int32_t y = 0; y < 16; ++y) {
        for (int32_t x = 0; x < 16; ++x) {
            const size_t pixel = static_cast<size_t>(16 * y + x) * 4;
            const auto cb = [&](int32_t chromaX) { return macroblock.Cb(chromaX, y); };
            const auto cr = [&](int32_t chromaX) { return macroblock.Cr(chromaX, y); };
            EXPECT_EQ(floats[pixel + 1], LumaOf(macroblock.Luma(x, y)));
            EXPECT_EQ(floats[pixel + 2], Filtered(cb, x)) << x << ", " << y;
            EXPECT_EQ(floats[pixel + 3], Filtered(cr, x)) << x << ", " << y;
        }
    }
}

TEST(PrxWritersFloat, LeavePixel15WithTheChromaOfPixel14OfA422Stream) {
    TestMacroblock macroblock = RandomMacroblock(prxChroma422);
    const Floats floats = Write(macroblock);
    for (size_t y = 0; y < 16; ++y) {
        const size_t pixel15 = (16 * y + 15) * 4;
        EXPECT_EQ(floats[pixel15 + 2], floats[pixel15 - 2]);
        EXPECT_EQ(floats[pixel15 + 3], floats[pixel15 - 1]);
    }
}

TEST(PrxWritersFloat, TakeAlphaAsItStands) {
    std::mt19937 random = MakeRandom();
    Floats alpha(256);
    for (float& sample : alpha)
        sample = std::uniform_real_distribution<float>(-1, 2)(random);
    for (const int32_t chromaFormat : {prxChroma422, prxChroma444}) {
        TestMacroblock macroblock(chromaFormat);
        const Floats floats = Write(macroblock, alpha);
        for (size_t i = 0; i < alpha.size(); ++i)
            EXPECT_EQ(floats[4 * i], alpha[i]);
    }
}

TEST(PrxWritersFloat, RoundToNearestInAnyModeAndLeaveTheModeAlone) {
    TestMacroblock macroblock = RandomMacroblock(prxChroma422);
    const WriterCall call = {.rowBytes = 256};
    for (const auto select : {PrxSelectScalarFloatWriter, PrxSelectFloatWriter}) {
        const PrxMacroblockWriter writer = select(prxFormatR4fl, prxChroma422, false);
        const std::vector<uint8_t> expected = RunWriter(writer, macroblock, call);
        for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
            std::fesetround(mode);
            const std::vector<uint8_t> bytes = RunWriter(writer, macroblock, call);
            const int modeAfter = std::fegetround();
            std::fesetround(FE_TONEAREST);
            EXPECT_EQ(bytes, expected) << mode;
            EXPECT_EQ(modeAfter, mode);
        }
    }
}

TEST(PrxWritersFloat, HaveNoWriterForOtherFormatsAndStreams) {
    for (const auto select : {PrxSelectScalarFloatWriter, PrxSelectFloatWriter}) {
        EXPECT_EQ(select(prxFormatY416, prxChroma444, false), nullptr);
        EXPECT_EQ(select(prxFormatR4fl, 0, false), nullptr);
    }
}

} // namespace
