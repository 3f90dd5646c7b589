#include "prores/encoder/PrxAlphaCoder.h"

#include "prores/PrxAlphaDecoder.h"
#include "prores/PrxFormats.h"
#include "prores/RoundingModes.h"
#include "prores/SliceEntropyModel.h"
#include "support/GuardedBytes.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>

namespace {

struct Format {
    uint32_t fourCC;
    size_t pixelBytes;
    int depth;
    uint32_t decodedAs; ///< a format to which a decoder gives a stream's values as they are
};

constexpr Format formats[] = {{prxFormatArgb, 4, 8, prxFormatArgb},  {prxFormatR408, 4, 8, prxFormatArgb},
                              {prxFormatY408, 4, 8, prxFormatArgb},  {prxFormatV408, 4, 8, prxFormatArgb},
                              {prxFormatY416, 8, 16, prxFormatY416}, {prxFormatB64a, 8, 16, prxFormatY416},
                              {prxFormatR4fl, 16, 16, prxFormatY416}};

/// Stores `alpha`, a stream's value, in the bytes of a pixel.
void SetAlpha(const Format& format, uint8_t* pixel, int alpha) {
    const auto low = static_cast<uint8_t>(alpha);
    const auto high = static_cast<uint8_t>(alpha >> 8);
    const float asFloat = static_cast<float>(alpha) / 65535.0F;
    switch (format.fourCC) {
    case prxFormatV408: pixel[3] = low; return;
    case prxFormatY416: pixel[0] = low, pixel[1] = high; return;
    case prxFormatB64a: pixel[0] = high, pixel[1] = low; return;
    case prxFormatR4fl: std::memcpy(pixel, &asFloat, sizeof asFloat); return;
    default: pixel[0] = low;
    }
}

/// The alpha of a slice, row after row, and pixels that have it.
struct Picture {
    Picture(const Format& pictureFormat, int32_t pictureColumns, int32_t pictureRows, int32_t pictureExtra,
            std::vector<int> pictureAlpha)
        : format(pictureFormat), columns(pictureColumns), rows(pictureRows), extra(pictureExtra),
          alpha(std::move(pictureAlpha)),
          pixels(format.pixelBytes * alpha.size(), GuardedBytes::Guard::Behind) {
        std::minstd_rand noise(1);
        std::ranges::generate(pixels, [&] { return static_cast<uint8_t>(noise()); });
        for (size_t i = 0; i < alpha.size(); ++i)
            SetAlpha(format, pixels.data() + i * format.pixelBytes, alpha[i]);
    }

    PrxAlphaArea Area() const {
        const auto rowBytes = static_cast<ptrdiff_t>(format.pixelBytes) * columns;
        return {pixels.data(), rowBytes, columns, extra, rows};
    }

    /// The values of all columns of the slice.
    std::vector<int> Coded() const {
        std::vector<int> values;
        for (int32_t y = 0; y < rows; ++y) {
            const auto row = alpha.begin() + y * columns;
            values.insert(values.end(), row, row + columns);
            values.insert(values.end(), static_cast<size_t>(extra), row[columns - 1]);
        }
        return values;
    }

    Format format;
    int32_t columns;
    int32_t rows;
    int32_t extra;
    std::vector<int> alpha;
    GuardedBytes pixels;
};

struct Coded {
    stream::Bytes bytes;
    bool opaque;
};

Coded CodeArea(const PrxAlphaCoder& coder, const PrxAlphaArea& area, size_t capacity) {
    const GuardedBytes out(capacity, GuardedBytes::Guard::Behind);
    Coded coded;
    const uint32_t size = coder.code(area, out.data(), static_cast<uint32_t>(capacity), &coded.opaque);
    coded.bytes.assign(out.begin(), out.begin() + size);
    return coded;
}

/// Codes a picture into the bytes that its macroblocks have.
Coded Code(const Picture& picture) {
    const PrxAlphaCoder coder = PrxChooseAlphaCoder(true, picture.format.fourCC);
    const int32_t macroblocks = (picture.columns + picture.extra + 15) / 16;
    return CodeArea(coder, picture.Area(), static_cast<size_t>(macroblocks * coder.bufferUnits * 256));
}

/// Values that a stream has, by the rules of SMPTE RDD 36, 7.1.2.
std::vector<int> DecodeWithModel(const stream::Bytes& bytes, int depth, size_t count) {
    model::BitSource bits(bytes);
    std::vector<int> values;
    uint64_t alpha = (1U << depth) - 1;
    while (values.size() < count) {
        if (bits.Read(1) != 0) {
            alpha += bits.Read(static_cast<uint32_t>(depth));
        } else {
            const uint64_t magnitude = bits.Read(depth == 8 ? 3 : 6) + 1;
            alpha += bits.Read(1) != 0 ? -magnitude : magnitude;
        }
        alpha &= (1U << depth) - 1;
        uint64_t repeats = 0;
        if (bits.Read(1) == 0) {
            repeats = bits.Read(4);
            if (repeats == 0) repeats = bits.Read(11);
        }
        values.insert(values.end(), repeats + 1, static_cast<int>(alpha));
    }
    return values;
}

std::vector<int> DecodeWithEngine(const stream::Bytes& bytes, const Format& format, size_t count) {
    const PrxAlphaDecoder decoder = PrxSelectAlphaDecoder(format.depth == 8 ? 1 : 2, format.decodedAs);
    const auto width = static_cast<int32_t>(count);
    if (format.depth == 8) {
        std::vector<uint8_t> samples(count);
        decoder(bytes.data(), bytes.size(), samples.data(), width, width, 1);
        return {samples.begin(), samples.end()};
    }
    std::vector<uint16_t> samples(count);
    decoder(bytes.data(), bytes.size(), reinterpret_cast<uint8_t*>(samples.data()), 2 * width, width, 1);
    return {samples.begin(), samples.end()};
}

/// Values in stretches of a random length up to `longest`, that differ by up to `largestStep`.
std::vector<int> RandomAlpha(std::mt19937& random, const Format& format, size_t count, size_t longest,
                             int largestStep) {
    const int mask = (1 << format.depth) - 1;
    std::vector<int> values;
    int value = static_cast<int>(random()) & mask;
    while (values.size() < count) {
        values.insert(values.end(), std::min(1 + random() % longest, count - values.size()), value);
        value =
            (value + static_cast<int>(random() % static_cast<uint32_t>(2 * largestStep + 1)) - largestStep) &
            mask;
    }
    return values;
}

Coded CodeValues(const Format& format, const std::vector<int>& values) {
    return Code(Picture(format, static_cast<int32_t>(values.size()), 1, 0, values));
}

/// Codes the alpha of single floats, one for each row.
std::vector<int> CodeFloats(const std::vector<float>& floats) {
    std::vector<float> pixels;
    for (const float value : floats)
        pixels.insert(pixels.end(), {value, 0.0F, 0.0F, 0.0F});
    const PrxAlphaArea area = {reinterpret_cast<const uint8_t*>(pixels.data()), 0,
                               static_cast<int32_t>(floats.size()), 0, 1};
    const Coded coded = CodeArea(PrxChooseAlphaCoder(true, prxFormatR4fl), area, 768);
    return DecodeWithModel(coded.bytes, 16, floats.size());
}

} // namespace

TEST(PrxAlphaCoder, EachFormatHasItsDepthAndItsBufferSize) {
    for (const Format& format : formats) {
        const PrxAlphaCoder coder = PrxChooseAlphaCoder(true, format.fourCC);
        EXPECT_EQ(coder.alphaType, format.depth == 8 ? 1 : 2) << format.fourCC;
        EXPECT_EQ(coder.bufferUnits, format.depth == 8 ? 2 : 3) << format.fourCC;
        EXPECT_NE(coder.code, nullptr) << format.fourCC;
    }
}

TEST(PrxAlphaCoder, OtherFormatsHaveNoAlphaPlaneAndBgraIsOneOfThem) {
    for (const uint32_t fourCC : {uint32_t{prxFormatBgra}, uint32_t{prxFormat2vuy}, uint32_t{prxFormatYuvs},
                                  uint32_t{prxFormatV210}, uint32_t{prxFormatV216}, uint32_t{prxFormatR10k},
                                  uint32_t{prxFormatR210}, uint32_t{prxFormatN302}, 0u}) {
        const PrxAlphaCoder coder = PrxChooseAlphaCoder(true, fourCC);
        EXPECT_EQ(coder.alphaType, 0) << fourCC;
        EXPECT_EQ(coder.bufferUnits, 0) << fourCC;
        EXPECT_EQ(coder.code, nullptr) << fourCC;
    }
}

TEST(PrxAlphaCoder, WithoutAlphaNoFormatHasACoder) {
    for (const Format& format : formats)
        EXPECT_EQ(PrxChooseAlphaCoder(false, format.fourCC).alphaType, 0);
}

TEST(PrxAlphaCoder, DecodersReadBackTheValuesThatWereCoded) {
    std::mt19937 random = MakeRandom();
    for (const Format& format : formats) {
        for (int round = 0; round < 400; ++round) {
            const auto columns = static_cast<int32_t>(1 + random() % 128);
            const auto rows = static_cast<int32_t>(1 + random() % 16);
            const auto extra = std::min(static_cast<int32_t>(random() % 16), 128 - columns);
            const size_t longest = size_t{1} << random() % 12;
            const int largestStep = 1 << random() % 16;
            const auto count = static_cast<size_t>(columns * rows);
            const Picture picture(format, columns, rows, extra,
                                  RandomAlpha(random, format, count, longest, largestStep));
            const Coded coded = Code(picture);
            const std::vector<int> expected = picture.Coded();
            ASSERT_EQ(DecodeWithModel(coded.bytes, format.depth, expected.size()), expected) << format.fourCC;
            ASSERT_EQ(DecodeWithEngine(coded.bytes, format, expected.size()), expected) << format.fourCC;
            const int full = (1 << format.depth) - 1;
            ASSERT_EQ(coded.opaque, std::ranges::all_of(expected, [&](int v) { return v == full; }));
        }
    }
}

TEST(PrxAlphaCoder, FullAlphaOfASliceIsOneValueAndOneRun) {
    for (const Format& format : formats) {
        const Coded coded =
            Code(Picture(format, 128, 16, 0, std::vector<int>(2048, (1 << format.depth) - 1)));
        stream::BitWriter expected;
        expected.Put(1, 1);
        expected.Put(0, static_cast<uint32_t>(format.depth)); // the difference to -1, in as many bits
        expected.Put(2047, 16);
        EXPECT_EQ(coded.bytes, expected.Data()) << format.fourCC;
        EXPECT_TRUE(coded.opaque) << format.fourCC;
    }
}

TEST(PrxAlphaCoder, OneValueBelowFullIsNotOpaque) {
    for (const Format& format : formats) {
        const int full = (1 << format.depth) - 1;
        for (const size_t place : {0u, 77u, 2047u}) {
            std::vector<int> alpha(2048, full);
            alpha[place] = full - 1;
            EXPECT_FALSE(Code(Picture(format, 128, 16, 0, alpha)).opaque) << format.fourCC << " " << place;
        }
    }
}

TEST(PrxAlphaCoder, ARunOf32Takes16BitsWithALeadingZero) {
    const Coded coded = CodeValues(formats[0], std::vector<int>(33, 0));
    stream::BitWriter expected;
    expected.Put(0b00000, 5); // from -1 to 0: a step of 1 upwards
    expected.Put(32, 16);
    EXPECT_EQ(coded.bytes, expected.Data());
}

TEST(PrxAlphaCoder, RunsAreOf1Or5Or16Bits) {
    for (const auto& [repeats, bits] : {std::pair{0u, 1u}, {1u, 5u}, {15u, 5u}, {16u, 16u}, {127u, 16u}}) {
        const Coded coded = CodeValues(formats[0], std::vector<int>(repeats + 1, 0));
        stream::BitWriter expected;
        expected.Put(0, 5);
        expected.Put(repeats == 0 ? 1 : repeats, bits);
        EXPECT_EQ(coded.bytes, expected.Data()) << repeats;
    }
}

TEST(PrxAlphaCoder, SmallDifferencesOf8BitsTake5Bits) {
    stream::BitWriter expected;
    expected.Put(0x1'0A, 9); // 9 behind -1
    expected.Put(1, 1);
    expected.Put(0b0'111'0, 5); // 8 more
    expected.Put(1, 1);
    expected.Put(0b0'111'1, 5); // 8 less
    expected.Put(1, 1);
    expected.Put(0x1'09, 9); // 9 more
    expected.Put(1, 1);
    EXPECT_EQ(CodeValues(formats[0], {9, 17, 9, 18}).bytes, expected.Data());
}

TEST(PrxAlphaCoder, SmallDifferencesOf16BitsTake8Bits) {
    stream::BitWriter expected;
    expected.Put(0x1'0101, 17); // 256 behind -1
    expected.Put(1, 1);
    expected.Put(0b0'111111'0, 8); // 64 more
    expected.Put(1, 1);
    expected.Put(0b0'111111'1, 8); // 64 less
    expected.Put(1, 1);
    expected.Put(0x1'FFBF, 17); // 65 less
    expected.Put(1, 1);
    EXPECT_EQ(CodeValues(formats[4], {256, 320, 256, 191}).bytes, expected.Data());
}

TEST(PrxAlphaCoder, TheRunOfAValueGoesOnOverTheRightEdgeAndTheNextRow) {
    const Coded coded = Code(Picture(formats[0], 2, 2, 3, {5, 6, 6, 7}));
    EXPECT_EQ(DecodeWithModel(coded.bytes, 8, 10), (std::vector<int>{5, 6, 6, 6, 6, 6, 7, 7, 7, 7}));
    stream::BitWriter expected;
    expected.Put(0b0'101'0, 5); // 6 more than -1
    expected.Put(1, 1);
    expected.Put(0b0'000'0, 5);
    expected.Put(4, 5);
    expected.Put(0b0'000'0, 5);
    expected.Put(3, 5);
    EXPECT_EQ(coded.bytes, expected.Data());
}

TEST(PrxAlphaCoder, OnlyRowsInsideThePictureAreCoded) {
    const Picture picture(formats[0], 16, 16, 0, std::vector<int>(256, 255));
    PrxAlphaArea area = picture.Area();
    area.rows = 3;
    const Coded coded = CodeArea(PrxChooseAlphaCoder(true, prxFormatArgb), area, 512);
    stream::BitWriter expected;
    expected.Put(0x100, 9);
    expected.Put(47, 16);
    EXPECT_EQ(coded.bytes, expected.Data());
}

TEST(PrxAlphaCoder, RowsMayGoUpwardsInMemory) {
    const Picture picture(formats[5], 2, 2, 0, {1, 2, 3, 4});
    PrxAlphaArea area = picture.Area();
    area.pixels += area.rowBytes;
    area.rowBytes = -area.rowBytes;
    const Coded coded = CodeArea(PrxChooseAlphaCoder(true, prxFormatB64a), area, 768);
    EXPECT_EQ(DecodeWithModel(coded.bytes, 16, 4), (std::vector<int>{3, 4, 1, 2}));
}

TEST(PrxAlphaCoder, PixelsMayStandAtAnyAddress) {
    for (const Format& format : formats) {
        const Picture picture(format, 40, 2, 0, std::vector<int>(80, 3));
        std::vector<uint8_t> moved(picture.pixels.size() + 1);
        std::ranges::copy(picture.pixels, moved.begin() + 1);
        PrxAlphaArea area = picture.Area();
        area.pixels = moved.data() + 1;
        EXPECT_EQ(CodeArea(PrxChooseAlphaCoder(true, format.fourCC), area, 4000).bytes, Code(picture).bytes);
    }
}

TEST(PrxAlphaCoder, TheBufferHoldsTheWorstOfAlpha) {
    for (const Format& format : formats) {
        const int full = (1 << format.depth) - 1;
        std::vector<int> alternating(2048);
        for (size_t i = 0; i < alternating.size(); ++i)
            alternating[i] = i % 2 != 0 ? full / 2 : 0;
        const Coded coded = Code(Picture(format, 128, 16, 0, alternating));
        EXPECT_EQ(coded.bytes.size(),
                  (2048 * (format.depth + 2) - format.depth + (format.depth == 8 ? 4 : 7) + 7) / 8u)
            << format.fourCC;
        EXPECT_EQ(DecodeWithModel(coded.bytes, format.depth, 2048), alternating) << format.fourCC;
    }
}

TEST(PrxAlphaCoder, ASmallerCapacityIsNotPassed) {
    std::mt19937 random = MakeRandom();
    const Picture picture(formats[5], 128, 16, 0, RandomAlpha(random, formats[5], 2048, 3, 60000));
    const stream::Bytes whole = Code(picture).bytes;
    for (size_t capacity = 0; capacity < whole.size(); capacity += 37) {
        const Coded coded = CodeArea(PrxChooseAlphaCoder(true, prxFormatB64a), picture.Area(), capacity);
        ASSERT_LE(coded.bytes.size(), capacity);
        ASSERT_GE(coded.bytes.size() + 5, capacity); // no more than a value and its run is missing
    }
}

TEST(PrxAlphaCoder, FloatsAreLimitedAndRoundedToNearest) {
    const float step = 1.0F / 65535.0F;
    EXPECT_EQ(CodeFloats({0.0F, 1.0F, 0.5F, -1.0F, 2.0F, 100.49F * step, 100.51F * step}),
              (std::vector<int>{0, 65535, 32768, 0, 65535, 100, 101}));
}

TEST(PrxAlphaCoder, AFloatThatIsNotANumberCountsAs0) {
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    constexpr float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(CodeFloats({1.0F, nan, -nan, infinity, -infinity}), (std::vector<int>{65535, 0, 0, 65535, 0}));
}

TEST(PrxAlphaCoder, FloatsAreRoundedInSinglePrecision) {
    std::mt19937 random = MakeRandom();
    std::vector<float> floats(40);
    std::uniform_real_distribution<float> unit;
    for (int round = 0; round < 200; ++round) {
        std::ranges::generate(floats, [&] { return unit(random); });
        const std::vector<int> values = CodeFloats(floats);
        for (size_t i = 0; i < floats.size(); ++i) {
            // A product of 24 by 16 bits, and its sum, are exact in double precision before they are rounded.
            const auto product = static_cast<float>(static_cast<double>(floats[i]) * 65535.0);
            const auto sum = static_cast<float>(static_cast<double>(product) + 0.5);
            ASSERT_EQ(values[i], static_cast<int>(sum)) << floats[i];
        }
    }
}

TEST(PrxAlphaCoder, FloatsAreRoundedAlikeInEveryModeOfTheCaller) {
    std::vector<float> floats;
    for (int i = 0; i < 40; ++i)
        floats.push_back((static_cast<float>(i) * 1601.0F + 0.5F) / 65535.0F);
    const std::vector<int> expected = CodeFloats(floats);
    ExpectInAnyRoundingMode([&] { return CodeFloats(floats); }, expected);
}
