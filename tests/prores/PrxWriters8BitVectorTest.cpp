// The vector form of each 8-bit writer gives the bytes of the reference form, for each instruction set of
// this machine, and touches nothing outside samples, alpha and the rows asked for.

#include "prores/PrxWriters8BitVector.h"

#include "EightBitWriters.h"
#include "prores/PrxWriters.h"
#include "support/TestSupport.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace {

using namespace eight_bit;

constexpr Reduction vectorReductions[] = {{0, 0}, {0, 1}, {1, 0}, {1, 1}, {1, 2}};

using Fill = std::function<void(std::span<int16_t>)>;

/// Both forms write `rows` rows of a macroblock.
void CompareForms(const WriterCase& c, int32_t rows, GuardedBytes::Guard guard, const Fill& fill,
                  std::mt19937& random) {
    GuardedMacroblock macroblock(c, rows, guard);
    fill(macroblock.samples());
    FillRandomly(macroblock.alpha(), random);
    const auto vector = PrxSelectVector8BitWriter(c.format, c.chromaFormat, c.hShift, c.hasAlpha);
    const auto scalar = PrxSelectScalar8BitWriter(c.format, c.chromaFormat, c.hasAlpha);
    ASSERT_NE(vector, nullptr) << testing::PrintToString(c);
    ASSERT_EQ(macroblock.Run(vector), macroblock.Run(scalar))
        << testing::PrintToString(c) << ", " << rows << " rows";
}

void CompareAtEachSize(const Fill& fill, std::mt19937& random) {
    for (const Reduction reduction : vectorReductions) {
        for (const WriterCase& c : CasesAt(reduction)) {
            for (int32_t rows = 1; rows <= c.Height(); ++rows) {
                for (const auto guard : {GuardedBytes::Guard::Behind, GuardedBytes::Guard::Before})
                    ASSERT_NO_FATAL_FAILURE(CompareForms(c, rows, guard, fill, random));
            }
        }
    }
}

void CompareOnEachTarget(const Fill& fill, std::mt19937& random) {
    const std::vector<int64_t> targets = VectorTargets();
    ASSERT_FALSE(targets.empty());
    for (const int64_t target : targets) {
        SCOPED_TRACE(hwy::TargetName(target));
        const ForcedTarget forced(target);
        ASSERT_NO_FATAL_FAILURE(CompareAtEachSize(fill, random));
    }
}

} // namespace

TEST(Writers8BitVector, RandomSamplesGiveTheBytesOfTheReferenceForm) {
    std::mt19937 random = MakeRandom();
    CompareOnEachTarget([&](std::span<int16_t> samples) { FillRandomly(samples, random); }, random);
}

TEST(Writers8BitVector, ExtremeSamplesGiveTheBytesOfTheReferenceForm) {
    std::mt19937 random = MakeRandom();
    for (const int16_t value : {std::numeric_limits<int16_t>::min(), std::numeric_limits<int16_t>::max()})
        CompareOnEachTarget([&](std::span<int16_t> samples) { std::ranges::fill(samples, value); }, random);
}

TEST(Writers8BitVector, AlternatingExtremesGiveTheBytesOfTheReferenceForm) {
    std::mt19937 random = MakeRandom();
    CompareOnEachTarget(
        [&](std::span<int16_t> samples) {
            int16_t next = std::numeric_limits<int16_t>::min();
            std::ranges::generate(samples, [&] { return next = static_cast<int16_t>(~next); });
        },
        random);
}

TEST(Writers8BitVector, TheSmallestBlocksHaveNoVectorForm) {
    for (const uint32_t format : {prxFormat2vuy, prxFormatR408, prxFormatY408})
        for (const int32_t hShift : {2, 3})
            EXPECT_EQ(PrxSelectVector8BitWriter(format, prxChroma422, hShift, false), nullptr);
}

TEST(Writers8BitVector, TheWritersChosenAreTheVectorFormsWhereThereAreSome) {
    for (const Reduction reduction : reductions) {
        for (const WriterCase& c : CasesAt(reduction)) {
            const auto chosen = PrxSelect8BitWriter(c.format, c.chromaFormat, c.hShift, c.vShift, c.hasAlpha);
            const bool isVector = c.WriterHShift() <= 1;
            EXPECT_EQ(chosen, isVector
                                  ? PrxSelectVector8BitWriter(c.format, c.chromaFormat, c.hShift, c.hasAlpha)
                                  : PrxSelectScalar8BitWriter(c.format, c.chromaFormat, c.hasAlpha))
                << testing::PrintToString(c);
        }
    }
}

TEST(Writers8BitVector, ThereIsNoWriterForOtherChromaFormatsOrPixelFormats) {
    for (const int32_t chromaFormat : {-1, 0, 1, 4})
        EXPECT_EQ(PrxSelectVector8BitWriter(prxFormat2vuy, chromaFormat, 0, false), nullptr);
    for (const uint32_t format : {prxFormatYuvs, prxFormatV216, prxFormatY416})
        EXPECT_EQ(PrxSelectVector8BitWriter(format, prxChroma444, 0, false), nullptr);
}
