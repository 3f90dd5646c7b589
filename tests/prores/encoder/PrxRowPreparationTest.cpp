#include "prores/encoder/PrxRowPreparation.h"

#include "prores/PrxFormats.h"
#include "prores/encoder/EncodeFixture.h"
#include "prores/encoder/RgbInputModel.h"
#include "support/GuardedBytes.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace {

/// A strip with nothing behind it: of given bytes, or random ones.
class StripMemory {
public:
    StripMemory(uint32_t pixelFormat, int32_t width, int32_t rowCount, const std::vector<uint8_t>& bytes)
        : StripMemory(pixelFormat, width, rowCount) {
        std::ranges::copy(bytes, memory_.begin());
    }
    StripMemory(uint32_t pixelFormat, int32_t width, int32_t rowCount, std::mt19937& random)
        : StripMemory(pixelFormat, width, rowCount) {
        std::ranges::generate(memory_, [&] { return static_cast<uint8_t>(random()); });
    }

    /// The same rows, the first of them last in memory.
    PrxStrip Upwards() const {
        PrxStrip strip = strip_;
        strip.rows += (strip.rowCount - 1) * stride_;
        strip.rowBytes = -stride_;
        return strip;
    }
    const PrxStrip& Strip() const { return strip_; }
    std::vector<uint8_t> Bytes() const { return {memory_.begin(), memory_.end()}; }

private:
    StripMemory(uint32_t pixelFormat, int32_t width, int32_t rowCount)
        : stride_(RowSize(pixelFormat, width)),
          memory_(static_cast<size_t>(rowCount * stride_), GuardedBytes::Guard::Behind),
          strip_{memory_.data(), stride_, pixelFormat, width, rowCount} {}

    ptrdiff_t stride_;
    GuardedBytes memory_;
    PrxStrip strip_;
};

PrxRowPreparer ChooseFor(const PrxStrip& strip, int32_t chromaFormat) {
    return PrxChooseRowPreparer(strip.pixelFormat, chromaFormat, strip.width, strip.rowBytes);
}

PrxStrip Prepare(const PrxStrip& strip, int32_t chromaFormat, PrxRowBuffer& buffer, int32_t colorMatrix = 1) {
    EXPECT_TRUE(buffer.EnsureWidth(strip.width));
    return PrxPrepareRows(ChooseFor(strip, chromaFormat), strip, colorMatrix, buffer);
}

constexpr auto lowPassed = {prxFormatY408, prxFormatR408, prxFormatV408, prxFormatY416, prxFormatR4fl};

} // namespace

TEST(PrxRowPreparation, V210BecomesV216InTheRowBuffer) {
    std::mt19937 random = MakeRandom();
    const StripMemory memory(prxFormatV210, 20, 5, random);
    const auto before = memory.Bytes();
    PrxRowBuffer buffer;
    const PrxStrip prepared = Prepare(memory.Strip(), prxChroma422, buffer);
    EXPECT_EQ(prepared.rows, buffer.Row(0));
    EXPECT_EQ(prepared.rowBytes, buffer.RowBytes());
    EXPECT_EQ(prepared.pixelFormat, uint32_t{prxFormatV216});
    EXPECT_EQ(prepared.width, 20);
    EXPECT_EQ(prepared.rowCount, 5);
    for (int32_t row = 0; row < 5; ++row) {
        std::vector<uint8_t> expected(4 * 24);
        PrxUnpackV210Groups(before.data() + row * 64, expected.data(), 4);
        EXPECT_EQ(std::memcmp(buffer.Row(row), expected.data(), 4 * 20), 0);
    }
    EXPECT_EQ(memory.Bytes(), before);
}

TEST(PrxRowPreparation, RgbOf422BecomesV216ByItsMatrixInTheRowBuffer) {
    std::mt19937 random = MakeRandom();
    for (const uint32_t format : rgb_input_model::rowFormats) {
        for (const int32_t colorMatrix : colorMatrices) {
            const auto max = OutMaxModel(format);
            const auto pixels = rgb_input_model::RandomPixels(19 * 3, max, false, random);
            const StripMemory memory(format, 19, 3, rgb_input_model::Pack(format, pixels));
            const auto before = memory.Bytes();
            PrxRowBuffer buffer;
            const PrxStrip prepared = Prepare(memory.Strip(), prxChroma422, buffer, colorMatrix);
            EXPECT_EQ(prepared.rows, buffer.Row(0));
            EXPECT_EQ(prepared.pixelFormat, uint32_t{prxFormatV216});
            for (int32_t row = 0; row < 3; ++row) {
                const auto first = pixels.begin() + 19 * row;
                const auto expected = rgb_input_model::RowModel({first, first + 19}, colorMatrix, max);
                EXPECT_EQ(std::memcmp(buffer.Row(row), expected.data(), 2 * expected.size()), 0)
                    << RgbCaseName(format, colorMatrix, false);
            }
            EXPECT_EQ(memory.Bytes(), before);
        }
    }
}

TEST(PrxRowPreparation, V210RowsTooShortForTheirWidthBecomeBlack) {
    const GuardedBytes oneGroup(16, GuardedBytes::Guard::Behind);
    PrxRowBuffer buffer;
    Prepare({oneGroup.data(), 16, prxFormatV210, 7, 16}, prxChroma422, buffer);
    for (int32_t row = 0; row < 16; ++row) {
        std::array<uint16_t, 16> words;
        std::memcpy(words.data(), buffer.Row(row), sizeof(words));
        for (size_t i = 0; i < words.size(); ++i)
            EXPECT_EQ(words[i], i % 2 == 0 ? 0x8000 : 0x1000) << row;
    }
}

TEST(PrxRowPreparation, RowsOfAFieldAreAsShortAsThoseOfTheFrame) {
    // Every second row, of a frame whose rows are too short.
    const GuardedBytes oneGroup(16, GuardedBytes::Guard::Behind);
    const PrxRowPreparer preparer = PrxChooseRowPreparer(prxFormatV210, prxChroma422, 7, 16);
    PrxRowBuffer buffer;
    ASSERT_TRUE(buffer.EnsureWidth(7));
    PrxPrepareRows(preparer, {oneGroup.data(), 32, prxFormatV210, 7, 16}, 1, buffer);
    EXPECT_EQ(buffer.Row(15)[3], 0x10);
}

TEST(PrxRowPreparation, FullChromaOf422IsLowPassedInTheCallersOwnRows) {
    std::mt19937 random = MakeRandom();
    for (const uint32_t format : lowPassed) {
        const StripMemory memory(format, 21, 4, random);
        auto expected = memory.Bytes();
        for (ptrdiff_t row = 0; row < 4; ++row)
            PrxGetChromaLowPass(format)(expected.data() + row * memory.Strip().rowBytes, 21, 0);
        ASSERT_NE(memory.Bytes(), expected);
        PrxRowBuffer buffer;
        const PrxStrip prepared = Prepare(memory.Upwards(), prxChroma422, buffer);
        EXPECT_EQ(prepared.rows, memory.Upwards().rows);
        EXPECT_EQ(prepared.rowBytes, memory.Upwards().rowBytes);
        EXPECT_EQ(prepared.pixelFormat, format);
        EXPECT_EQ(memory.Bytes(), expected);
    }
}

TEST(PrxRowPreparation, AY408PictureOf422HasOtherChromaBytesAfterwards) {
    std::mt19937 random = MakeRandom();
    const StripMemory memory(prxFormatY408, 32, 16, random);
    const auto before = memory.Bytes();
    PrxRowBuffer buffer;
    Prepare(memory.Strip(), prxChroma422, buffer);
    const auto after = memory.Bytes();
    EXPECT_NE(after, before);
    for (size_t i = 0; i < after.size(); ++i) {
        const bool evenChroma = i / 4 % 2 == 0 && i % 4 >= 2;
        if (!evenChroma) {
            ASSERT_EQ(after[i], before[i]) << i;
        }
    }
}

TEST(PrxRowPreparation, AY408PictureOf444StaysAsItWas) {
    std::mt19937 random = MakeRandom();
    const StripMemory memory(prxFormatY408, 32, 16, random);
    const auto before = memory.Bytes();
    PrxRowBuffer buffer;
    Prepare(memory.Strip(), prxChroma444, buffer);
    EXPECT_EQ(memory.Bytes(), before);
}

TEST(PrxRowPreparation, WhatNeedsNoPreparationIsHandedThrough) {
    std::mt19937 random = MakeRandom();
    const auto expectSame = [&](uint32_t format, int32_t chromaFormat) {
        EXPECT_FALSE(PrxUsesRowBuffer(format, chromaFormat));
        const StripMemory memory(format, 18, 2, random);
        const auto before = memory.Bytes();
        PrxRowBuffer untouched;
        const PrxRowPreparer preparer = ChooseFor(memory.Upwards(), chromaFormat);
        EXPECT_FALSE(preparer.UsesBuffer());
        const PrxStrip prepared = PrxPrepareRows(preparer, memory.Upwards(), 1, untouched);
        EXPECT_EQ(prepared.rows, memory.Upwards().rows);
        EXPECT_EQ(prepared.rowBytes, memory.Upwards().rowBytes);
        EXPECT_EQ(prepared.pixelFormat, format);
        EXPECT_EQ(memory.Bytes(), before);
    };
    for (const uint32_t format : {prxFormat2vuy, prxFormatYuvs, prxFormatV216})
        expectSame(format, prxChroma422);
    for (const uint32_t format : lowPassed)
        expectSame(format, prxChroma444);
    for (const uint32_t format : {prxFormatArgb, prxFormatB64a, prxFormatR10k, prxFormatR210, prxFormatN302})
        expectSame(format, prxChroma444);
}

TEST(PrxRowPreparation, OnlyV210AndRgbOf422UseTheRowBuffer) {
    EXPECT_TRUE(PrxUsesRowBuffer(prxFormatV210, prxChroma422));
    for (const uint32_t format : {prxFormatArgb, prxFormatB64a, prxFormatR10k, prxFormatR210})
        EXPECT_TRUE(PrxUsesRowBuffer(format, prxChroma422));
    for (const uint32_t format : {prxFormatY408, prxFormatN302, prxFormatBgra, prxFormatL302})
        EXPECT_FALSE(PrxUsesRowBuffer(format, prxChroma422));
}
