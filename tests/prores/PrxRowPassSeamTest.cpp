#include "prores/PrxRowPassSeam.h"

#include "prores/PrxFormats.h"
#include "prores/PrxWriters.h"

#include "prores/MacroblockFixture.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <cfenv>

namespace {

/// Rows of pixels of four samples, each unlike all others, in memory that ends with the last row.
template <typename Sample>
class Rows {
public:
    Rows(int32_t width, int32_t rows)
        : width_(width), rows_(rows), stride_((width + 15) / 16 * 16 * pixelBytes),
          memory_(static_cast<size_t>(stride_) * static_cast<size_t>(rows), GuardedBytes::Guard::Behind) {
        for (size_t i = 0; i < memory_.size() / sizeof(Sample); ++i) {
            const auto sample = static_cast<Sample>((i * 40503) % 65521);
            std::memcpy(memory_.data() + i * sizeof(Sample), &sample, sizeof(sample));
        }
    }

    Sample At(int32_t x, int32_t y, int32_t component) const {
        Sample sample;
        std::memcpy(&sample, memory_.data() + Offset(x, y, component), sizeof(sample));
        return sample;
    }
    void Set(int32_t x, int32_t y, int32_t component, Sample sample) {
        std::memcpy(memory_.data() + Offset(x, y, component), &sample, sizeof(sample));
    }
    std::vector<uint8_t> Bytes() const { return {memory_.begin(), memory_.end()}; }

    /// Finishes the stretch `firstPixel` to `endPixel`.
    void Finish(int32_t firstPixel, int32_t endPixel) {
        const uint32_t format = sizeof(Sample) == 2 ? prxFormatY416 : prxFormatR4fl;
        const PrxRowPass pass = PrxSelectSeamPass(format);
        pass({nullptr, 0, nullptr, 0, memory_.data(), stride_, stride_, width_, firstPixel, endPixel, rows_},
             {0, 0, 1});
    }

private:
    static constexpr int32_t pixelBytes = 4 * sizeof(Sample);
    size_t Offset(int32_t x, int32_t y, int32_t component) const {
        return static_cast<size_t>(y * stride_ + x * pixelBytes) +
               static_cast<size_t>(component) * sizeof(Sample);
    }

    int32_t width_;
    int32_t rows_;
    int32_t stride_;
    GuardedBytes memory_;
};

double Mean(uint16_t left, uint16_t right) { return std::floor((left + right) / 2.0 + 0.5); }
double Mean(float left, float right) { return static_cast<float>(double{left} + right) / 2; }

/// The bytes of `rows` after the chroma of the pixel before each of `successors` was made the mean of its
/// neighbours'.
template <typename Sample>
std::vector<uint8_t> Filtered(Rows<Sample>& rows, int32_t rowCount, const std::vector<int32_t>& successors) {
    for (int32_t y = 0; y < rowCount; ++y)
        for (const int32_t x : successors)
            for (const int32_t chroma : {2, 3})
                rows.Set(x - 1, y, chroma,
                         static_cast<Sample>(Mean(rows.At(x - 2, y, chroma), rows.At(x, y, chroma))));
    return rows.Bytes();
}

template <typename Sample>
class PrxRowPassSeamOf : public testing::Test {};
using Samples = testing::Types<uint16_t, float>;
TYPED_TEST_SUITE(PrxRowPassSeamOf, Samples);

/// Compares a row that was finished with one whose seams before `successors` were filtered by the model.
template <typename Sample>
void ExpectSeams(int32_t width, int32_t firstPixel, int32_t endPixel,
                 const std::vector<int32_t>& successors) {
    constexpr int32_t rowCount = 3;
    Rows<Sample> finished(width, rowCount);
    finished.Finish(firstPixel, endPixel);
    Rows<Sample> expected(width, rowCount);
    EXPECT_EQ(finished.Bytes(), Filtered(expected, rowCount, successors));
}

TYPED_TEST(PrxRowPassSeamOf, GivesPixel15OfEachMacroblockTheMeanOfItsNeighboursChroma) {
    ExpectSeams<TypeParam>(64, 0, 64, {16, 32, 48});
}

TYPED_TEST(PrxRowPassSeamOf, LeavesTheLastMacroblockAsWrittenWhenTheWidthIsAMultipleOf16) {
    ExpectSeams<TypeParam>(16, 0, 16, {});
}

TYPED_TEST(PrxRowPassSeamOf, LeavesTheLastMacroblockAsWrittenWhenTheWidthIsNotAMultipleOf16) {
    ExpectSeams<TypeParam>(33, 0, 33, {16, 32});
    ExpectSeams<TypeParam>(31, 0, 31, {16});
    ExpectSeams<TypeParam>(1, 0, 1, {});
}

TYPED_TEST(PrxRowPassSeamOf, TakesWhatTheTargetHoldsBehindTheStretch) {
    ExpectSeams<TypeParam>(64, 0, 32, {16, 32});
}

TYPED_TEST(PrxRowPassSeamOf, LeavesAlonePixel15BeforeTheStretch) { ExpectSeams<TypeParam>(64, 32, 64, {48}); }

TYPED_TEST(PrxRowPassSeamOf, FinishesAStretchBetweenRefusedSlices) {
    ExpectSeams<TypeParam>(17, 0, 16, {16});
    ExpectSeams<TypeParam>(64, 16, 32, {32});
}

TEST(PrxRowPassSeam, RoundsTheMeanOfWordsUp) {
    Rows<uint16_t> rows(32, 1);
    rows.Set(14, 0, 2, 1);
    rows.Set(16, 0, 2, 2);
    rows.Set(14, 0, 3, 65535);
    rows.Set(16, 0, 3, 65534);
    rows.Finish(0, 32);
    EXPECT_EQ(rows.At(15, 0, 2), 2);
    EXPECT_EQ(rows.At(15, 0, 3), 65535);
}

TEST(PrxRowPassSeam, RoundsFloatsToNearestInAnyMode) {
    std::fesetround(FE_UPWARD);
    Rows<float> rows(32, 1);
    rows.Set(14, 0, 2, 1.0F);
    rows.Set(16, 0, 2, 0x1p-30F);
    rows.Finish(0, 32);
    const int mode = std::fegetround();
    std::fesetround(FE_TONEAREST);
    EXPECT_EQ(rows.At(15, 0, 2), 0.5F);
    EXPECT_EQ(mode, FE_UPWARD);
}

TEST(PrxRowPassSeam, CompletesTheFilterOfTheWriters) {
    std::mt19937 random = MakeRandom();
    TestMacroblock left(prxChroma422);
    TestMacroblock right(prxChroma422);
    left.Fill(SampleFills(random)[0]);
    right.Fill(SampleFills(random)[0]);
    Rows<uint16_t> rows(32, 16);
    const WriterCall call = {.rowBytes = 128};
    for (TestMacroblock* macroblock : {&left, &right}) {
        const std::vector<uint8_t> pixels =
            RunWriter(PrxSelect16BitWriter(prxFormatY416, prxChroma422, false), *macroblock, call);
        for (int32_t i = 0; i < 16 * 16 * 4; ++i) {
            uint16_t word;
            std::memcpy(&word, pixels.data() + 2 * i, sizeof(word));
            rows.Set((macroblock == &left ? 0 : 16) + i / 4 % 16, i / 64, i % 4, word);
        }
    }
    rows.Finish(0, 32);
    for (int32_t y = 0; y < 16; ++y)
        for (int32_t x = 1; x < 31; x += 2)
            for (const int32_t chroma : {2, 3})
                EXPECT_EQ(rows.At(x, y, chroma), Mean(rows.At(x - 1, y, chroma), rows.At(x + 1, y, chroma)))
                    << x << ", " << y;
}

TEST(PrxRowPassSeam, IsForY416AndR4flOnly) {
    EXPECT_EQ(PrxSelectSeamPass(prxFormatV216), nullptr);
    EXPECT_EQ(PrxSelectSeamPass(prxFormatV408), nullptr);
    EXPECT_EQ(PrxSelectSeamPass(prxFormatBgra), nullptr);
}

} // namespace
