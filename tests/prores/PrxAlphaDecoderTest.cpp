#include "prores/PrxAlphaDecoder.h"

#include "prores/PrxFormats.h"
#include "prores/RoundingModes.h"
#include "prores/SliceEntropyModel.h"
#include "prores/StreamCoefficients.h"
#include "support/GuardedBytes.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

namespace {

using Values = std::vector<uint16_t>;

constexpr std::array<uint32_t, 8> formatsWithAlpha = {prxFormatArgb, prxFormatBgra, prxFormatR408,
                                                      prxFormatY408, prxFormatV408, prxFormatB64a,
                                                      prxFormatY416, prxFormatR4fl};

uint32_t AlphaType(int depth) { return depth == 8 ? 1 : 2; }
uint16_t Maximum(int depth) { return static_cast<uint16_t>((1 << depth) - 1); }

/// The values of an alpha stream, read bit by bit.
Values ModelValues(const stream::Bytes& bytes, int depth, size_t count) {
    model::BitSource bits(bytes);
    Values values;
    uint16_t alpha = Maximum(depth);
    while (values.size() < count) {
        int64_t delta = 0;
        if (bits.Read(1) != 0) {
            delta = static_cast<int64_t>(bits.Read(static_cast<uint32_t>(depth)));
        } else {
            const auto code = static_cast<int64_t>(bits.Read(depth == 8 ? 4 : 7));
            delta = code % 2 == 0 ? code / 2 + 1 : -(code / 2 + 1);
        }
        alpha = static_cast<uint16_t>((alpha + delta) & Maximum(depth));
        size_t run = 1;
        if (bits.Read(1) == 0) {
            run = bits.Read(4);
            if (run == 0) run = bits.Read(11);
            ++run;
        }
        values.insert(values.end(), run, alpha);
    }
    values.resize(count);
    return values;
}

/// The ones that all values have in common.
uint16_t CommonOnes(const Values& values, int depth) {
    uint16_t ones = Maximum(depth);
    for (const uint16_t value : values)
        ones &= value;
    return ones;
}

/// The sample of a value as a number. Integers of 8 bits come from 16 bits by rounding 2^-24 fractions.
double ModelSample(uint16_t value, int depth, uint32_t pixelFormat) {
    const double share = static_cast<double>(value) / Maximum(depth);
    switch (pixelFormat) {
    case prxFormatV408:
        if (depth == 8) return std::round(16 + value * 219.0 / 255);
        return std::floor((value * 56065.0 + 0x800000) / (1 << 24)) + 16;
    case prxFormatB64a:
    case prxFormatY416: return depth == 8 ? value * 257 : value;
    case prxFormatR4fl: return static_cast<float>(value * (1.0 / Maximum(depth)));
    default: return depth == 8 ? value : std::round(share * 255);
    }
}

/// Where samples go: rows `stride` bytes apart, the last one ending at a page that may not be touched.
class Area {
public:
    Area(uint32_t pixelFormat, int32_t width, int32_t rows, size_t gap = 0)
        : format_(pixelFormat), size_(PrxGetAlphaSampleSize(pixelFormat)), width_(static_cast<size_t>(width)),
          rows_(static_cast<size_t>(rows)), stride_((width_ + gap) * size_),
          bytes_(rows_ * stride_ - gap * size_, GuardedBytes::Guard::Behind) {
        std::ranges::fill(bytes_, gapByte);
    }

    bool Decode(const stream::Bytes& stream, int depth) {
        GuardedBytes data(stream.size(), GuardedBytes::Guard::Behind);
        std::ranges::copy(stream, data.data());
        const PrxAlphaDecoder decoder = PrxSelectAlphaDecoder(AlphaType(depth), format_);
        return decoder(data.data(), data.size(), bytes_.data(), static_cast<ptrdiff_t>(stride_),
                       static_cast<int32_t>(width_), static_cast<int32_t>(rows_));
    }

    std::vector<double> Samples() const {
        std::vector<double> samples;
        for (size_t row = 0; row < rows_; ++row) {
            for (size_t x = 0; x < width_; ++x)
                samples.push_back(SampleAt(bytes_.data() + row * stride_ + x * size_));
        }
        return samples;
    }

    bool GapsAreUntouched() const {
        for (size_t row = 0; row + 1 < rows_; ++row) {
            const uint8_t* next = bytes_.data() + (row + 1) * stride_;
            const uint8_t* end = bytes_.data() + row * stride_ + width_ * size_;
            if (!std::all_of(end, next, [](uint8_t b) { return b == gapByte; })) return false;
        }
        return true;
    }

private:
    static constexpr uint8_t gapByte = 0x5a;

    double SampleAt(const uint8_t* bytes) const {
        if (size_ == 1) return *bytes;
        if (size_ == 2) return As<uint16_t>(bytes);
        return As<float>(bytes);
    }
    template <class Sample>
    static Sample As(const uint8_t* bytes) {
        Sample sample;
        std::memcpy(&sample, bytes, sizeof sample);
        return sample;
    }

    uint32_t format_;
    size_t size_;
    size_t width_;
    size_t rows_;
    size_t stride_;
    GuardedBytes bytes_;
};

std::vector<double> SamplesOf(const Values& values, int depth, uint32_t pixelFormat) {
    std::vector<double> samples;
    for (const uint16_t value : values)
        samples.push_back(ModelSample(value, depth, pixelFormat));
    return samples;
}

Values AllValues(int depth) {
    Values values;
    for (uint32_t value = 0; value <= Maximum(depth); ++value)
        values.push_back(static_cast<uint16_t>(value * 5 & Maximum(depth)));
    return values;
}

Values RandomRuns(std::mt19937& random, int depth, size_t count) {
    Values values;
    while (values.size() < count)
        values.insert(values.end(), 1 + random() % (random() % 40 + 1),
                      static_cast<uint16_t>(random() & Maximum(depth)));
    values.resize(count);
    return values;
}

template <class Check>
void ForEachDecoder(const Check& check) {
    for (const int depth : {8, 16}) {
        for (const uint32_t pixelFormat : formatsWithAlpha)
            check(depth, pixelFormat);
    }
}

} // namespace

TEST(PrxAlphaDecoder, EveryValueBecomesItsSample) {
    ForEachDecoder([](int depth, uint32_t pixelFormat) {
        const Values values = AllValues(depth);
        Area area(pixelFormat, static_cast<int32_t>(values.size()) / 16, 16);
        EXPECT_FALSE(area.Decode(stream::CodeAlpha(values, depth), depth));
        EXPECT_EQ(area.Samples(), SamplesOf(values, depth, pixelFormat)) << depth << " " << pixelFormat;
    });
}

TEST(PrxAlphaDecoder, RoundsFloatsToNearestInAnyMode) {
    for (const int depth : {8, 16}) {
        const Values values = AllValues(depth);
        const stream::Bytes bytes = stream::CodeAlpha(values, depth);
        const auto samples = [&] {
            Area area(prxFormatR4fl, static_cast<int32_t>(values.size()) / 16, 16);
            area.Decode(bytes, depth);
            return area.Samples();
        };
        ExpectInAnyRoundingMode(samples, SamplesOf(values, depth, prxFormatR4fl));
    }
}

TEST(PrxAlphaDecoder, RunsGoOnAcrossRowEnds) {
    std::mt19937 random = MakeRandom();
    ForEachDecoder([&random](int depth, uint32_t pixelFormat) {
        for (const size_t gap : {0, 1, 16}) {
            const Values values = RandomRuns(random, depth, 48 * 16);
            Area area(pixelFormat, 48, 16, gap);
            area.Decode(stream::CodeAlpha(values, depth), depth);
            EXPECT_EQ(area.Samples(), SamplesOf(values, depth, pixelFormat)) << depth << " " << gap;
            EXPECT_TRUE(area.GapsAreUntouched());
        }
    });
}

TEST(PrxAlphaDecoder, ARunIsCutAtTheEndOfTheArea) {
    for (const size_t gap : {0, 4}) {
        const Values values(2048, 77);
        Area area(prxFormatB64a, 16, 3, gap);
        area.Decode(stream::CodeAlpha(values, 16), 16);
        EXPECT_EQ(area.Samples(), std::vector<double>(48, 77));
        EXPECT_TRUE(area.GapsAreUntouched());
    }
}

TEST(PrxAlphaDecoder, IsOpaqueIfEverySampleHasTheLargestValue) {
    ForEachDecoder([](int depth, uint32_t pixelFormat) {
        const Values opaque(128 * 16, Maximum(depth));
        EXPECT_TRUE(Area(pixelFormat, 128, 16).Decode(stream::CodeAlpha(opaque, depth), depth));
        for (const size_t place : {size_t{0}, size_t{700}, opaque.size() - 1}) {
            Values values = opaque;
            values[place] = static_cast<uint16_t>(Maximum(depth) - 1);
            EXPECT_FALSE(Area(pixelFormat, 128, 16).Decode(stream::CodeAlpha(values, depth), depth)) << place;
        }
    });
}

TEST(PrxAlphaDecoder, AnySingleBitThatIsMissingTakesOpacityAway) {
    ForEachDecoder([](int depth, uint32_t pixelFormat) {
        for (int bit = 0; bit < depth; ++bit) {
            Values values(16 * 2, Maximum(depth));
            values[20] = static_cast<uint16_t>(Maximum(depth) ^ 1 << bit);
            EXPECT_FALSE(Area(pixelFormat, 16, 2).Decode(stream::CodeAlpha(values, depth), depth)) << bit;
        }
    });
}

TEST(PrxAlphaDecoder, ValuesBehindTheAreaDoNotCountForOpacity) {
    Values values(33, Maximum(8));
    values[32] = 3;
    EXPECT_TRUE(Area(prxFormatArgb, 16, 2).Decode(stream::CodeAlpha(values, 8), 8));
}

TEST(PrxAlphaDecoder, DeltasWrapAround) {
    const Values values = {Maximum(16), 0, Maximum(16), 1, 65530, 4};
    Area area(prxFormatY416, 6, 1);
    area.Decode(stream::CodeAlpha(values, 16), 16);
    EXPECT_EQ(area.Samples(), SamplesOf(values, 16, prxFormatY416));
}

TEST(PrxAlphaDecoder, MissingBitsReadAs0AndFillTheArea) {
    // A delta of +1 for one sample takes 21 (or 24) bits of 0.
    Area area8(prxFormatArgb, 4, 2);
    EXPECT_FALSE(area8.Decode({}, 8));
    EXPECT_EQ(area8.Samples(), (std::vector<double>{0, 1, 2, 3, 4, 5, 6, 7}));
    Area area16(prxFormatB64a, 4, 2, 3);
    EXPECT_FALSE(area16.Decode({}, 16));
    EXPECT_EQ(area16.Samples(), (std::vector<double>{0, 1, 2, 3, 4, 5, 6, 7}));
}

TEST(PrxAlphaDecoder, ReadsAnyBytesAsTheModelReadsThem) {
    std::mt19937 random = MakeRandom();
    for (int round = 0; round < 40; ++round) {
        stream::Bytes bytes(random() % 300);
        std::ranges::generate(bytes, [&random] { return static_cast<uint8_t>(random()); });
        ForEachDecoder([&bytes, round](int depth, uint32_t pixelFormat) {
            Area area(pixelFormat, 32, 16, static_cast<size_t>(round % 2));
            const Values values = ModelValues(bytes, depth, 512);
            ASSERT_EQ(area.Decode(bytes, depth), CommonOnes(values, depth) == Maximum(depth));
            ASSERT_EQ(area.Samples(), SamplesOf(values, depth, pixelFormat));
            ASSERT_TRUE(area.GapsAreUntouched());
        });
    }
}

TEST(PrxAlphaDecoder, AnAreaWithoutRowsIsLeftAlone) {
    const PrxAlphaDecoder decoder = PrxSelectAlphaDecoder(1, prxFormatArgb);
    EXPECT_TRUE(decoder(nullptr, 0, nullptr, 16, 16, 0));
}

TEST(PrxAlphaDecoder, ThereIsNoneForAnotherAlphaType) {
    for (const uint32_t alphaType : {0u, 3u, 15u}) {
        for (const uint32_t pixelFormat : formatsWithAlpha)
            EXPECT_EQ(PrxSelectAlphaDecoder(alphaType, pixelFormat), nullptr);
    }
}

TEST(PrxAlphaDecoder, ThereIsOneExactlyForTheFormatsWithAlpha) {
    for (const uint32_t pixelFormat :
         {prxFormat2vuy, prxFormatYuvs, prxFormatV210, prxFormatV216, prxFormatW216, prxFormatV408,
          prxFormatR408, prxFormatY408, prxFormatY416, prxFormatR4fl, prxFormatArgb, prxFormatBgra,
          prxFormatB64a, prxFormatR10k, prxFormatR210, prxFormatN302, prxFormatL302}) {
        for (const uint32_t alphaType : {1u, 2u}) {
            const bool hasAlpha = PrxGetAlphaSampleSize(pixelFormat) != 0;
            EXPECT_EQ(PrxSelectAlphaDecoder(alphaType, pixelFormat) != nullptr, hasAlpha) << pixelFormat;
        }
    }
}
