#include "rawsdk/clip/StripCodec.h"

#include "rawsdk/clip/Failure.h"

#include "support/GuardedBytes.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace rawsdk;
using Samples = std::vector<uint16_t>;

Samples RandomSamples(size_t count, std::mt19937& random) {
    Samples samples(count);
    std::ranges::generate(samples, [&] { return random() & 0xFFF; });
    return samples;
}

Samples RoundTrip(const Samples& samples, uint32_t width) {
    Samples decompressed(samples.size(), 0xFFFF);
    DecompressStrip(CompressStrip(samples, width), decompressed, width);
    return decompressed;
}

TEST(StripCodec, GivesBackEverySample) {
    std::mt19937 random = MakeRandom();
    for (uint32_t width = 1; width < 40; ++width) {
        const Samples samples = RandomSamples(width * 7, random);
        ASSERT_EQ(RoundTrip(samples, width), samples) << width;
    }
}

TEST(StripCodec, GivesBackEveryDifferenceOfTwoSamples) {
    Samples samples;
    for (int difference = -4095; difference <= 4095; ++difference) {
        const int first = difference < 0 ? 4095 : 0;
        samples.insert(samples.end(),
                       {static_cast<uint16_t>(first), 0, static_cast<uint16_t>(first + difference), 4095});
    }
    EXPECT_EQ(RoundTrip(samples, 4), samples);
}

TEST(StripCodec, LosesWhatIsAboveTwelveBits) { EXPECT_EQ(RoundTrip({0xF123}, 1), Samples{0x123}); }

TEST(StripCodec, MakesSmoothSamplesMuchSmaller) {
    Samples samples(64 * 1000);
    for (size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<uint16_t>(i % 1000 * 4);
    EXPECT_LT(CompressStrip(samples, 1000).size(), samples.size() / 10);
}

TEST(StripCodec, RefusesDataOfAnotherNumberOfSamples) {
    std::mt19937 random = MakeRandom();
    const std::vector<uint8_t> data = CompressStrip(RandomSamples(64, random), 8);
    Samples fewer(56);
    Samples more(72);
    EXPECT_THROW(DecompressStrip(data, fewer, 8), Failure);
    EXPECT_THROW(DecompressStrip(data, more, 8), Failure);
}

TEST(StripCodec, RefusesDataThatAreCutOff) {
    std::mt19937 random = MakeRandom();
    const std::vector<uint8_t> data = CompressStrip(RandomSamples(64, random), 8);
    Samples samples(64);
    for (size_t size = 0; size < data.size(); ++size)
        ASSERT_THROW(DecompressStrip({data.data(), size}, samples, 8), Failure) << size;
}

TEST(StripCodec, RefusesDataWithAnyByteChanged) {
    std::mt19937 random = MakeRandom();
    const Samples samples = RandomSamples(64, random);
    const std::vector<uint8_t> data = CompressStrip(samples, 8);
    Samples decompressed(64);
    for (size_t i = 0; i < data.size(); ++i) {
        std::vector<uint8_t> damaged = data;
        damaged[i] ^= 1u << random() % 8;
        try {
            DecompressStrip(damaged, decompressed, 8);
        } catch (const Failure&) {
            continue;
        }
        // Some bits of the data mean nothing.
        ASSERT_EQ(decompressed, samples) << i;
    }
}

TEST(StripCodec, WritesAndReadsNoByteOutside) {
    std::mt19937 random = MakeRandom();
    const Samples samples = RandomSamples(5 * 31, random);
    const std::vector<uint8_t> data = CompressStrip(samples, 31);
    const GuardedBytes input(data.size(), GuardedBytes::Guard::Behind);
    std::ranges::copy(data, input.begin());
    const GuardedBytes output(samples.size() * 2, GuardedBytes::Guard::Behind);
    const std::span words(reinterpret_cast<uint16_t*>(output.data()), samples.size());
    DecompressStrip({input.data(), input.size()}, words, 31);
    EXPECT_TRUE(std::ranges::equal(words, samples));
}

TEST(StripCodec, DividesEveryHeightIntoStrips) {
    for (const uint32_t height : {1u, 63u, 64u, 65u, 128u, 1080u, 16384u}) {
        uint32_t rows = 0;
        for (uint32_t strip = 0; strip < StripsOf(height); ++strip) {
            EXPECT_GT(RowsOfStrip(height, strip), 0u);
            EXPECT_LE(RowsOfStrip(height, strip), stripRows);
            rows += RowsOfStrip(height, strip);
        }
        EXPECT_EQ(rows, height);
    }
}

} // namespace
