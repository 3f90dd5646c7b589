#include "prores/encoder/PrxRowPreparation.h"

#include "prores/PrxFormats.h"
#include "prores/encoder/PrxChromaLowPass.h"
#include "prores/encoder/PrxInputRgb.h"
#include "prores/encoder/PrxV210Unpack.h"
#include "support/GuardedBytes.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

/// A strip of random bytes with nothing around it.
class StripMemory {
public:
    StripMemory(uint32_t pixelFormat, int32_t width, int32_t rowCount, std::mt19937& random)
        : stride_(RowSize(pixelFormat, width)),
          memory_(static_cast<size_t>(rowCount * stride_), GuardedBytes::Guard::Behind),
          strip_{memory_.data(), stride_, pixelFormat, width, rowCount} {
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
    static ptrdiff_t RowSize(uint32_t pixelFormat, int32_t width) {
        if (pixelFormat == prxFormatV210) return (width + 5) / 6 * 16;
        const bool pairs = PrxIs422Format(pixelFormat);
        return (pairs ? (width + 1) / 2 * 2 : width) *
               static_cast<ptrdiff_t>(PrxGetGroupSize(pixelFormat).bytesPerGroup);
    }

    ptrdiff_t stride_;
    GuardedBytes memory_;
    PrxStrip strip_;
};

PrxStrip Prepare(const PrxStrip& strip, int32_t chromaFormat, PrxRowBuffer& buffer) {
    EXPECT_TRUE(buffer.EnsureWidth(strip.width));
    return PrxPrepareRows(strip, chromaFormat, 1, buffer);
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

TEST(PrxRowPreparation, RgbOf422BecomesV216InTheRowBuffer) {
    std::mt19937 random = MakeRandom();
    for (const uint32_t format : {prxFormatArgb, prxFormatB64a, prxFormatR10k, prxFormatR210}) {
        const StripMemory memory(format, 19, 3, random);
        const auto before = memory.Bytes();
        PrxRowBuffer buffer;
        const PrxStrip prepared = Prepare(memory.Upwards(), prxChroma422, buffer);
        EXPECT_EQ(prepared.rows, buffer.Row(0));
        EXPECT_EQ(prepared.pixelFormat, uint32_t{prxFormatV216});
        for (int32_t row = 0; row < 3; ++row) {
            std::vector<uint8_t> expected(4 * 20);
            PrxGetRgbRowConverter(format)(memory.Upwards().rows + row * memory.Upwards().rowBytes, 19, 1,
                                          expected.data());
            EXPECT_EQ(std::memcmp(buffer.Row(row), expected.data(), expected.size()), 0);
        }
        EXPECT_EQ(memory.Bytes(), before);
    }
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
        const PrxStrip prepared = PrxPrepareRows(memory.Upwards(), chromaFormat, 1, untouched);
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
