#include "rawsdk/picture/Processing.h"

#include "standins/rawsdk/picture/Pictures.h"

#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace rawsdk;

constexpr uint32_t width = 19;
constexpr uint32_t height = 7;

OwnedPicture RandomColors(std::mt19937& random) {
    OwnedPicture colors(width, height);
    std::ranges::generate(colors.words, [&] { return random() % (mostColor + 1); });
    return colors;
}

OwnedPicture Processed(OwnedPicture& colors, const ClipSettings& clip,
                       std::shared_ptr<const ColorTable> table = nullptr) {
    OwnedPicture output(width, height);
    Processing(ToneOf(clip, {}), std::move(table)).Process(colors.Planes(), output.Planes(), 0, height);
    return output;
}

TEST(Processing, PutsEachChannelThroughItsCurve) {
    std::mt19937 random = MakeRandom();
    OwnedPicture colors = RandomColors(random);
    const FrameSettings frame = {3200, 20, 0.5f, 400};
    const ToneParameters tone = ToneOf({}, frame);
    OwnedPicture output(width, height);
    Processing(tone, nullptr).Process(colors.Planes(), output.Planes(), 0, height);
    for (size_t plane = 0; plane < 3; ++plane) {
        const ToneCurve curve(tone, plane);
        for (uint32_t y = 0; y < height; ++y)
            for (uint32_t x = 0; x < width; ++x)
                ASSERT_EQ(output.At(plane, x, y), curve(colors.At(plane, x, y)));
    }
}

TEST(Processing, WithoutSaturationIsGrey) {
    std::mt19937 random = MakeRandom();
    OwnedPicture colors = RandomColors(random);
    OwnedPicture plain = Processed(colors, {});
    ClipSettings clip;
    clip.saturation = 0;
    OwnedPicture grey = Processed(colors, clip);
    for (uint32_t x = 0; x < width; ++x) {
        const double luma =
            0.2126 * plain.At(0, x, 3) + 0.7152 * plain.At(1, x, 3) + 0.0722 * plain.At(2, x, 3);
        for (size_t plane = 0; plane < 3; ++plane)
            EXPECT_NEAR(grey.At(plane, x, 3), luma, 1);
    }
}

TEST(Processing, WithMoreSaturationGoesFurtherFromGreyAndIsLimited) {
    OwnedPicture colors(width, height);
    std::ranges::fill(colors.words, 20000);
    std::fill_n(colors.Planes().Row(0, 0), width, 40000);
    std::fill_n(colors.Planes().Row(2, 0), width, 0);
    ClipSettings clip;
    clip.gamma = gammaLinear;
    clip.saturation = 4;
    OwnedPicture output = Processed(colors, clip);
    EXPECT_EQ(output.At(0, 0, 0), 65535);
    EXPECT_EQ(output.At(2, 0, 0), 0);
    EXPECT_NEAR(output.At(1, 0, 1), 20000 * 65535.0 / mostColor, 2);
}

TEST(Processing, AppliesTheTableLast) {
    std::mt19937 random = MakeRandom();
    OwnedPicture colors = RandomColors(random);
    auto table = std::make_shared<ColorTable>();
    table->size = 2;
    for (int i = 0; i < 8; ++i)
        table->colors.push_back({static_cast<float>(i >> 2), static_cast<float>(i & 1), 1});
    OwnedPicture plain = Processed(colors, {});
    OwnedPicture output = Processed(colors, {}, table);
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x) {
            ASSERT_NEAR(output.At(0, x, y), plain.At(2, x, y), 1);
            ASSERT_NEAR(output.At(1, x, y), plain.At(0, x, y), 1);
            ASSERT_EQ(output.At(2, x, y), 65535);
        }
}

TEST(Processing, WritesTheRowsThatItIsAskedFor) {
    std::mt19937 random = MakeRandom();
    OwnedPicture colors = RandomColors(random);
    OwnedPicture output(width, height);
    Processing(ToneOf({}, {}), nullptr).Process(colors.Planes(), output.Planes(), 2, 3);
    OwnedPicture whole = Processed(colors, {});
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x)
            ASSERT_EQ(output.At(1, x, y), y >= 2 && y < 5 ? whole.At(1, x, y) : 0);
}

} // namespace
