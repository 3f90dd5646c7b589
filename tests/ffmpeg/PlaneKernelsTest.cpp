// Every instruction set gives the bits of the scalar form and touches the elements that it is given.

#include "ffmpeg/PlaneKernels.h"
#include "support/GuardedBytes.h"
#include "support/TestSupport.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <vector>

using namespace CxFFMPEG;

namespace {

constexpr int32_t mostCount = 70;

/// Elements right before a page that may not be touched.
template <typename Element>
class Guarded {
public:
    explicit Guarded(int32_t count)
        : bytes_(static_cast<size_t>(count) * sizeof(Element), GuardedBytes::Guard::Behind), count_(count) {}

    Element* data() { return reinterpret_cast<Element*>(bytes_.data()); }
    std::vector<Element> Values() { return {data(), data() + count_}; }
    void Fill(const std::function<Element()>& next) {
        for (int32_t i = 0; i < count_; ++i)
            data()[i] = next();
    }

private:
    GuardedBytes bytes_;
    int32_t count_;
};

/// BT.709 to 10 bits in video range.
constexpr PlaneMatrix matrix = {{0.002842F, 0.009561F, 0.000965F},
                                {-0.001567F, -0.005270F, 0.006837F},
                                {0.006837F, -0.006210F, -0.000627F},
                                64,
                                512};

/// Words at random, all black, all white, and both in turn.
std::vector<std::function<uint16_t()>> Fills(std::mt19937& random) {
    return {[&random] { return static_cast<uint16_t>(random()); }, [] { return uint16_t{0}; },
            [] { return uint16_t{65535}; }, [i = 0]() mutable { return static_cast<uint16_t>(-(i++ % 2)); }};
}

/// Runs a test with the kernels of each instruction set.
void ForEachTarget(const std::function<void(const PlaneKernels&)>& test) {
    const std::vector<int64_t> targets = VectorTargets();
    ASSERT_FALSE(targets.empty()) << "no vector instruction set was dispatched";
    for (const int64_t target : targets) {
        SCOPED_TRACE(hwy::TargetName(target));
        const ForcedTarget forced(target);
        ASSERT_NE(&VectorPlaneKernels(), &ScalarPlaneKernels());
        test(VectorPlaneKernels());
    }
}

std::vector<float> Split(const PlaneKernels& kernels, const uint16_t* words, int32_t count) {
    Guarded<float> luma(count), cb(count), cr(count);
    kernels.split(words, matrix, {luma.data(), cb.data(), cr.data()}, count);
    std::vector<float> all = luma.Values();
    for (Guarded<float>* const line : {&cb, &cr}) {
        const std::vector<float> values = line->Values();
        all.insert(all.end(), values.begin(), values.end());
    }
    return all;
}

template <typename Sample>
void ExpectSameSamples(PlaneKernels::Store<Sample> PlaneKernels::*store, float most, float limit) {
    std::mt19937 random = MakeRandom();
    std::uniform_real_distribution<float> value(0, limit);
    ForEachTarget([&](const PlaneKernels& kernels) {
        for (int32_t count = 0; count <= mostCount; ++count) {
            Guarded<float> line(count);
            line.Fill([&] { return value(random); });
            Guarded<Sample> samples(count), expected(count);
            (kernels.*store)(line.data(), most, samples.data(), count);
            (ScalarPlaneKernels().*store)(line.data(), most, expected.data(), count);
            ASSERT_EQ(samples.Values(), expected.Values()) << count;
        }
    });
}

} // namespace

TEST(PlaneKernels, SplittingGivesTheBitsOfTheScalarForm) {
    std::mt19937 random = MakeRandom();
    ForEachTarget([&](const PlaneKernels& kernels) {
        for (const auto& fill : Fills(random)) {
            for (int32_t count = 0; count <= mostCount; ++count) {
                Guarded<uint16_t> words(3 * count);
                words.Fill(fill);
                ASSERT_EQ(Split(kernels, words.data(), count),
                          Split(ScalarPlaneKernels(), words.data(), count))
                    << count;
            }
        }
    });
}

TEST(PlaneKernels, MeansHaveTheBitsOfTheScalarForm) {
    std::mt19937 random = MakeRandom();
    std::uniform_real_distribution<float> value(0, 1023);
    ForEachTarget([&](const PlaneKernels& kernels) {
        for (int32_t count = 0; count <= mostCount; ++count) {
            Guarded<float> line(count), expected(count), other(count);
            line.Fill([&] { return value(random); });
            other.Fill([&] { return value(random); });
            std::copy_n(line.data(), count, expected.data());
            kernels.mean(line.data(), other.data(), count);
            ScalarPlaneKernels().mean(expected.data(), other.data(), count);
            ASSERT_EQ(line.Values(), expected.Values()) << count;
        }
    });
}

TEST(PlaneKernels, HalvedLinesHaveTheBitsOfTheScalarForm) {
    std::mt19937 random = MakeRandom();
    std::uniform_real_distribution<float> value(0, 1023);
    ForEachTarget([&](const PlaneKernels& kernels) {
        for (int32_t count = 0; count <= mostCount; ++count) {
            Guarded<float> line(1 + 2 * count), halved(count), expected(count);
            line.Fill([&] { return value(random); });
            kernels.halve(line.data() + 1, halved.data(), count);
            ScalarPlaneKernels().halve(line.data() + 1, expected.data(), count);
            ASSERT_EQ(halved.Values(), expected.Values()) << count;
        }
    });
}

TEST(PlaneKernels, BytesAreThoseOfTheScalarForm) { ExpectSameSamples(&PlaneKernels::storeBytes, 255, 256); }

TEST(PlaneKernels, WordsAreThoseOfTheScalarForm) {
    ExpectSameSamples(&PlaneKernels::storeWords, 1023, 1024);
    ExpectSameSamples(&PlaneKernels::storeWords, 65535, 65536);
}

TEST(PlaneKernels, CodesAreRoundedToNearestAndLimited) {
    const float line[] = {0, 0.49F, 0.5F, 254.4F, 254.5F, 255.5F};
    uint8_t bytes[6] = {};
    ScalarPlaneKernels().storeBytes(line, 255, bytes, 6);
    EXPECT_EQ(std::vector<uint8_t>(bytes, bytes + 6), (std::vector<uint8_t>{0, 0, 1, 254, 255, 255}));
}

TEST(PlaneKernels, HalvingWeighsOneTwoOne) {
    const float line[] = {4, 8, 0, 16, 2};
    float halved[2] = {};
    ScalarPlaneKernels().halve(line + 1, halved, 2);
    EXPECT_EQ(halved[0], (4 + 2 * 8 + 0) / 4.F);
    EXPECT_EQ(halved[1], (0 + 2 * 16 + 2) / 4.F);
}
