#include "rawsdk/picture/Demosaic.h"

#include "standins/rawsdk/picture/Pictures.h"

#include "support/GuardedBytes.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace rawsdk;
using Samples = std::vector<uint16_t>;

size_t PlaneAt(uint32_t x, uint32_t y) { return (x & 1) + (y & 1); }

OwnedPicture Interpolated(const Samples& samples, uint32_t width, uint32_t height) {
    OwnedPicture picture(width, height);
    Demosaic(samples.data(), picture.Planes(), 0, height);
    return picture;
}

Samples RandomSamples(size_t count, std::mt19937& random) {
    Samples samples(count);
    std::ranges::generate(samples, [&] { return random() & 0xFFF; });
    return samples;
}

/// Samples of planes a x + b y + c.
struct Ramp {
    int a, b, c;
    int At(uint32_t x, uint32_t y) const { return a * static_cast<int>(x) + b * static_cast<int>(y) + c; }
};

/// The method's four filters as they are published, in eighths, about the sample in their middle.
using Filter = double[5][5];
constexpr Filter greenFilter = {
    {0, 0, -1, 0, 0}, {0, 0, 2, 0, 0}, {-1, 2, 4, 2, -1}, {0, 0, 2, 0, 0}, {0, 0, -1, 0, 0}};
constexpr Filter sidesFilter = {
    {0, 0, 0.5, 0, 0}, {0, -1, 0, -1, 0}, {-1, 4, 5, 4, -1}, {0, -1, 0, -1, 0}, {0, 0, 0.5, 0, 0}};
constexpr Filter endsFilter = {
    {0, 0, -1, 0, 0}, {0, -1, 4, -1, 0}, {0.5, 0, 5, 0, 0.5}, {0, -1, 4, -1, 0}, {0, 0, -1, 0, 0}};
constexpr Filter cornersFilter = {
    {0, 0, -1.5, 0, 0}, {0, 2, 0, 2, 0}, {-1.5, 0, 6, 0, -1.5}, {0, 2, 0, 2, 0}, {0, 0, -1.5, 0, 0}};
constexpr Filter sampleFilter = {
    {0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}, {0, 0, 8, 0, 0}, {0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}};

const Filter& FilterFor(size_t plane, uint32_t x, uint32_t y) {
    const size_t own = PlaneAt(x, y);
    if (plane == own) return sampleFilter;
    if (plane == 1) return greenFilter;
    if (own != 1) return cornersFilter;
    // The rows of red are the even ones.
    return (plane == 0) == ((y & 1) == 0) ? sidesFilter : endsFilter;
}

/// A sample of the picture, or one outside of it that goes on as those of its colour do.
double SampleAt(const Samples& samples, int width, int height, int x, int y) {
    const auto at = [&](int column, int row) { return SampleAt(samples, width, height, column, row); };
    if (x < 0) return 2 * at(x + 2, y) - at(x + 4, y);
    if (x >= width) return 2 * at(x - 2, y) - at(x - 4, y);
    if (y < 0) return 2 * at(x, y + 2) - at(x, y + 4);
    if (y >= height) return 2 * at(x, y - 2) - at(x, y - 4);
    return samples[static_cast<size_t>(y * width + x)];
}

double Model(const Samples& samples, int width, int height, size_t plane, int x, int y) {
    const Filter& filter = FilterFor(plane, static_cast<uint32_t>(x), static_cast<uint32_t>(y));
    double sum = 0;
    for (int dy = -2; dy <= 2; ++dy)
        for (int dx = -2; dx <= 2; ++dx)
            sum += filter[dy + 2][dx + 2] * SampleAt(samples, width, height, x + dx, y + dy);
    return std::clamp(sum / 8 * stepsPerSample, 0.0, static_cast<double>(mostColor));
}

TEST(Demosaic, IsThePublishedMethodAtEverySize) {
    std::mt19937 random = MakeRandom();
    for (uint32_t width = 4; width < 12; ++width)
        for (uint32_t height = 4; height < 12; ++height) {
            const Samples samples = RandomSamples(width * height, random);
            OwnedPicture picture = Interpolated(samples, width, height);
            for (size_t plane = 0; plane < 3; ++plane)
                for (uint32_t y = 0; y < height; ++y)
                    for (uint32_t x = 0; x < width; ++x)
                        ASSERT_EQ(picture.At(plane, x, y),
                                  Model(samples, static_cast<int>(width), static_cast<int>(height), plane,
                                        static_cast<int>(x), static_cast<int>(y)))
                            << width << "x" << height << " plane " << plane << " at " << x << ", " << y;
        }
}

TEST(Demosaic, GivesPlanesWithoutCurvatureExactly) {
    const Ramp ramps[] = {{11, 3, 100}, {-5, 20, 600}, {7, -9, 900}};
    const uint32_t width = 30;
    const uint32_t height = 20;
    Samples samples;
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x)
            samples.push_back(static_cast<uint16_t>(ramps[PlaneAt(x, y)].At(x, y)));
    OwnedPicture picture = Interpolated(samples, width, height);
    for (size_t plane = 0; plane < 3; ++plane)
        for (uint32_t y = 0; y < height; ++y)
            for (uint32_t x = 0; x < width; ++x)
                ASSERT_EQ(picture.At(plane, x, y), ramps[plane].At(x, y) * static_cast<int>(stepsPerSample))
                    << plane << " at " << x << ", " << y;
}

TEST(Demosaic, GivesOneColorEverywhere) {
    Samples samples;
    for (uint32_t y = 0; y < 9; ++y)
        for (uint32_t x = 0; x < 7; ++x)
            samples.push_back(static_cast<uint16_t>(1000 * (PlaneAt(x, y) + 1)));
    OwnedPicture picture = Interpolated(samples, 7, 9);
    for (size_t plane = 0; plane < 3; ++plane)
        for (uint32_t y = 0; y < 9; ++y)
            for (uint32_t x = 0; x < 7; ++x)
                ASSERT_EQ(picture.At(plane, x, y), 1000 * (plane + 1) * stepsPerSample);
}

TEST(Demosaic, LimitsWhatOvershoots) {
    Samples samples(8 * 8, 0);
    for (size_t i = 0; i < samples.size(); i += 2)
        samples[i] = 4095;
    const OwnedPicture picture = Interpolated(samples, 8, 8);
    EXPECT_EQ(*std::ranges::max_element(picture.words), mostColor);
    EXPECT_EQ(*std::ranges::min_element(picture.words), 0);
}

TEST(Demosaic, GivesTheSameInWhateverPartsItIsDone) {
    std::mt19937 random = MakeRandom();
    const Samples samples = RandomSamples(33 * 41, random);
    const OwnedPicture whole = Interpolated(samples, 33, 41);
    for (const uint32_t rows : {1u, 2u, 3u, 7u, 40u}) {
        OwnedPicture parts(33, 41);
        for (uint32_t first = 0; first < 41; first += rows)
            Demosaic(samples.data(), parts.Planes(), first, std::min(rows, 41 - first));
        ASSERT_EQ(parts.words, whole.words) << rows;
    }
}

TEST(Demosaic, TouchesNoByteOutside) {
    for (const uint32_t width : {4u, 5u, 31u, 64u}) {
        const uint32_t height = 6;
        for (const auto guard : {GuardedBytes::Guard::Behind, GuardedBytes::Guard::Before}) {
            const GuardedBytes samples(size_t{width} * height * 2, guard);
            const GuardedBytes planes(size_t{width} * height * 6, guard);
            const PlanarPicture picture = {reinterpret_cast<uint16_t*>(planes.data()), width, height};
            Demosaic(reinterpret_cast<const uint16_t*>(samples.data()), picture, 0, height);
            EXPECT_EQ(*picture.Row(2, height - 1), 0);
        }
    }
}

} // namespace
