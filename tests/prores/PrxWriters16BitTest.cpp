#include "prores/PrxWriters.h"

#include "prores/MacroblockFixture.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

namespace {

using Words = std::vector<uint16_t>;

size_t RowBytes(uint32_t format) { return format == prxFormatY416 ? 128 : 64; }

Words WordsOf(const std::vector<uint8_t>& bytes) {
    Words words;
    for (size_t i = 0; i < bytes.size(); i += 2)
        words.push_back(static_cast<uint16_t>(bytes[i] | bytes[i + 1] << 8));
    return words;
}

std::vector<uint8_t> BytesOf(const Words& words) {
    std::vector<uint8_t> bytes;
    for (const uint16_t word : words) {
        bytes.push_back(static_cast<uint8_t>(word & 0xFF));
        bytes.push_back(static_cast<uint8_t>(word >> 8));
    }
    return bytes;
}

Words Write(uint32_t format, TestMacroblock& macroblock, const Words& alpha = {}) {
    const bool hasAlpha = !alpha.empty();
    const PrxMacroblockWriter writer =
        PrxSelectScalar16BitWriter(format, macroblock.ChromaFormat(), hasAlpha);
    WriterCall call = {.rowBytes = RowBytes(format), .alphaRowBytes = hasAlpha ? size_t{32} : 0};
    call.alpha = BytesOf(alpha);
    return WordsOf(RunWriter(writer, macroblock, call));
}

/// The words of a sample limited to `lowest`..`highest` and multiplied by `step`.
struct Model {
    double lowest;
    double highest;
    double step;
    uint16_t operator()(int16_t sample) const {
        return static_cast<uint16_t>(32768 + step * std::clamp<double>(sample, lowest, highest));
    }
};
constexpr Model wide = {-4096, 4095, 8};
constexpr Model narrow = {-508, 507, 64};

Words Expected422(TestMacroblock& macroblock, const Model& model) {
    const int32_t chromaStep = macroblock.ChromaWidth() / 8;
    Words words;
    for (int32_t y = 0; y < 16; ++y) {
        for (int32_t pair = 0; pair < 8; ++pair) {
            words.push_back(model(macroblock.Cb(pair * chromaStep, y)));
            words.push_back(model(macroblock.Luma(2 * pair, y)));
            words.push_back(model(macroblock.Cr(pair * chromaStep, y)));
            words.push_back(model(macroblock.Luma(2 * pair + 1, y)));
        }
    }
    return words;
}

TestMacroblock RandomMacroblock(int32_t chromaFormat, int32_t lowest, int32_t highest) {
    std::mt19937 random = MakeRandom();
    TestMacroblock macroblock(chromaFormat);
    macroblock.Fill([&] {
        return static_cast<int16_t>(std::uniform_int_distribution<int32_t>(lowest, highest)(random));
    });
    return macroblock;
}

TEST(PrxWriters16Bit, V216InterleavesCbYCrYOfA422Stream) {
    TestMacroblock macroblock = RandomMacroblock(prxChroma422, -5000, 5000);
    EXPECT_EQ(Write(prxFormatV216, macroblock), Expected422(macroblock, wide));
}

TEST(PrxWriters16Bit, V216TakesTheChromaOfEvenPixelsOfA444Stream) {
    TestMacroblock macroblock = RandomMacroblock(prxChroma444, -5000, 5000);
    EXPECT_EQ(Write(prxFormatV216, macroblock), Expected422(macroblock, wide));
}

TEST(PrxWriters16Bit, W216LimitsSamplesToTheCodesOf10Bits) {
    for (const int32_t chromaFormat : {prxChroma422, prxChroma444}) {
        TestMacroblock macroblock = RandomMacroblock(chromaFormat, -520, 520);
        EXPECT_EQ(Write(prxFormatW216, macroblock), Expected422(macroblock, narrow));
    }
}

TEST(PrxWriters16Bit, W216Writes507AsFEC0AndMinus508As0100) {
    TestMacroblock macroblock(prxChroma422);
    macroblock.Luma(0, 0) = 507;
    macroblock.Luma(1, 0) = 508;
    macroblock.Cb(0, 0) = -508;
    macroblock.Cr(0, 0) = -509;
    const Words words = Write(prxFormatW216, macroblock);
    EXPECT_EQ(words[1], 0xFEC0);
    EXPECT_EQ(words[3], 0xFEC0);
    EXPECT_EQ(words[0], 0x0100);
    EXPECT_EQ(words[2], 0x0100);
}

TEST(PrxWriters16Bit, Y416Writes4095As65528) {
    TestMacroblock macroblock(prxChroma444);
    macroblock.Luma(0, 0) = 4095;
    macroblock.Cb(0, 0) = 4096;
    macroblock.Cr(0, 0) = INT16_MAX;
    EXPECT_EQ(Write(prxFormatY416, macroblock)[1], 65528);
    EXPECT_EQ(Write(prxFormatY416, macroblock)[2], 65528);
    EXPECT_EQ(Write(prxFormatY416, macroblock)[3], 65528);
}

TEST(PrxWriters16Bit, Y416WritesMinus4096AndLessAs0) {
    TestMacroblock macroblock(prxChroma444);
    macroblock.Luma(0, 0) = -4096;
    macroblock.Cb(0, 0) = -4097;
    macroblock.Cr(0, 0) = INT16_MIN;
    const Words words = Write(prxFormatY416, macroblock);
    EXPECT_EQ(words[1], 0);
    EXPECT_EQ(words[2], 0);
    EXPECT_EQ(words[3], 0);
}

TEST(PrxWriters16Bit, Y416TakesEachPixelsOwnChromaOfA444Stream) {
    TestMacroblock macroblock = RandomMacroblock(prxChroma444, -5000, 5000);
    Words expected;
    for (int32_t y = 0; y < 16; ++y)
        for (int32_t x = 0; x < 16; ++x)
            expected.insert(expected.end(), {0xFFFF, wide(macroblock.Luma(x, y)), wide(macroblock.Cb(x, y)),
                                             wide(macroblock.Cr(x, y))});
    EXPECT_EQ(Write(prxFormatY416, macroblock), expected);
}

/// The mean rounded up, of words; pixel 15 has no right neighbour and takes its left one's word.
uint16_t Filtered(const std::function<uint16_t(int32_t)>& word, int32_t x) {
    if (x % 2 == 0 || x == 15) return word(x / 2);
    return static_cast<uint16_t>(std::floor((word(x / 2) + word(x / 2 + 1)) / 2.0 + 0.5));
}

TEST(PrxWriters16Bit, Y416GivesOddPixelsTheMeanOfFinishedChromaOfA422Stream) {
    TestMacroblock macroblock = RandomMacroblock(prxChroma422, -5000, 5000);
    const Words words = Write(prxFormatY416, macroblock);
    for (int32_t y = 0; y < 16; ++y) {
        for (int32_t x = 0; x < 16; ++x) {
            const size_t pixel = static_cast<size_t>(16 * y + x) * 4;
            const auto cb = [&](int32_t chromaX) { return wide(macroblock.Cb(chromaX, y)); };
            const auto cr = [&](int32_t chromaX) { return wide(macroblock.Cr(chromaX, y)); };
            EXPECT_EQ(words[pixel], 0xFFFF);
            EXPECT_EQ(words[pixel + 1], wide(macroblock.Luma(x, y)));
            EXPECT_EQ(words[pixel + 2], Filtered(cb, x)) << x << ", " << y;
            EXPECT_EQ(words[pixel + 3], Filtered(cr, x)) << x << ", " << y;
        }
    }
}

TEST(PrxWriters16Bit, Y416LeavesPixel15WithTheChromaOfPixel14OfA422Stream) {
    TestMacroblock macroblock(prxChroma422);
    macroblock.Cb(7, 3) = 100;
    macroblock.Cr(7, 3) = -100;
    const Words words = Write(prxFormatY416, macroblock);
    const size_t pixel15 = (16 * 3 + 15) * 4;
    EXPECT_EQ(words[pixel15 + 2], 32768 + 800);
    EXPECT_EQ(words[pixel15 + 3], 32768 - 800);
}

TEST(PrxWriters16Bit, Y416TakesAlphaAsItStands) {
    std::mt19937 random = MakeRandom();
    Words alpha(256);
    for (uint16_t& sample : alpha)
        sample = static_cast<uint16_t>(random());
    for (const int32_t chromaFormat : {prxChroma422, prxChroma444}) {
        TestMacroblock macroblock(chromaFormat);
        const Words words = Write(prxFormatY416, macroblock, alpha);
        for (size_t i = 0; i < alpha.size(); ++i)
            EXPECT_EQ(words[4 * i], alpha[i]);
    }
}

TEST(PrxWriters16Bit, StoreExactlyTheRowsAskedFor) {
    const TestMacroblock macroblock(prxChroma422);
    for (const uint32_t format : {prxFormatV216, prxFormatW216, prxFormatY416}) {
        const WriterCall call = {.rows = 3, .rowBytes = RowBytes(format), .gap = 5};
        const std::vector<uint8_t> bytes =
            RunWriter(PrxSelectScalar16BitWriter(format, prxChroma422, false), macroblock, call);
        for (size_t i = 0; i < bytes.size(); ++i) {
            const bool isGap = i % (call.rowBytes + call.gap) >= call.rowBytes;
            EXPECT_EQ(bytes[i] == 0x5A, isGap) << i;
        }
    }
}

TEST(PrxWriters16Bit, HaveNoWriterForOtherFormatsAndStreams) {
    for (const auto select : {PrxSelectScalar16BitWriter, PrxSelect16BitWriter}) {
        EXPECT_EQ(select(prxFormat2vuy, prxChroma422, false), nullptr);
        EXPECT_EQ(select(prxFormatR4fl, prxChroma444, true), nullptr);
        EXPECT_EQ(select(prxFormatV216, 0, false), nullptr);
        EXPECT_EQ(select(prxFormatY416, 1, true), nullptr);
    }
}

} // namespace
