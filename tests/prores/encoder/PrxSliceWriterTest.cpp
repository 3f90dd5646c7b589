#include "prores/encoder/PrxSliceWriter.h"

#include "prores/PrxBufferPiece.h"
#include "prores/PrxSliceHeader.h"
#include "prores/encoder/PlaneCodeModel.h"
#include "support/GuardedBytes.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace {

constexpr PrxPlaneBudgets noBudgets = {0, 0, 0};

/// A slice of random levels.
struct Slice {
    PrxSliceInput input;
    std::array<plane::Plane, 3> planes;
    std::vector<uint16_t> levels;
};

/// Puts the chroma planes into one run, their blocks in turn.
std::vector<uint16_t> MergedLevels(const std::array<plane::Plane, 3>& planes) {
    std::vector<uint16_t> levels = planes[0].levels;
    for (size_t block = 0; block < planes[1].blockCount; ++block) {
        for (const size_t chroma : {1u, 2u}) {
            const auto from = planes[chroma].levels.begin() + static_cast<ptrdiff_t>(64 * block);
            levels.insert(levels.end(), from, from + 64);
        }
    }
    return levels;
}

Slice MakeSlice(std::mt19937& random, uint32_t log2Width, uint32_t blocksPerMb, int32_t headerSize,
                const plane::Filling& filling) {
    const bool interlaced = random() % 2 != 0;
    const uint32_t chromaBlocks = (blocksPerMb - 4) / 2 << log2Width;
    Slice slice;
    slice.planes = {plane::MakePlane(random, 4U << log2Width, 64, interlaced, filling),
                    plane::MakePlane(random, chromaBlocks, 64, interlaced, filling),
                    plane::MakePlane(random, chromaBlocks, 64, interlaced, filling)};
    slice.levels = MergedLevels(slice.planes);
    slice.input = {.levels = slice.levels.data(),
                   .quantIndex = 1 + static_cast<uint32_t>(random() % 224),
                   .headerSize = headerSize,
                   .alphaSize = headerSize == 8 ? 1000 : 0,
                   .log2Width = log2Width,
                   .blocksPerMb = blocksPerMb,
                   .interlaced = interlaced};
    return slice;
}

struct Written {
    PrxSliceOutcome outcome;
    stream::Bytes bytes;
};

Written Write(const Slice& slice, int32_t limit, const PrxPlaneBudgets& budgets, size_t capacity) {
    const GuardedBytes data(capacity, GuardedBytes::Guard::Behind);
    Written written;
    written.outcome = PrxWriteSlice(PrxSelectPlaneCoder(), slice.input, data.data(),
                                    static_cast<uint32_t>(capacity), limit, budgets);
    written.bytes.assign(data.begin(), data.begin() + written.outcome.sliceSize);
    return written;
}

Written Write(const Slice& slice, int32_t limit = 0, const PrxPlaneBudgets& budgets = noBudgets) {
    return Write(slice, limit, budgets, PrxSliceCapacity(slice.input.log2Width, slice.input.blocksPerMb));
}

/// The bytes of one plane.
stream::Bytes PlaneBytes(const Slice& slice, const Written& written, size_t plane) {
    auto from = written.bytes.begin() + slice.input.headerSize;
    for (size_t i = 0; i < plane; ++i)
        from += written.outcome.planeSize[i];
    return {from, from + written.outcome.planeSize[plane]};
}

void ForEachShape(
    const std::function<void(uint32_t log2Width, uint32_t blocksPerMb, int32_t headerSize)>& test) {
    for (uint32_t log2Width = 0; log2Width < 4; ++log2Width) {
        for (const uint32_t blocksPerMb : {8u, 12u}) {
            for (const int32_t headerSize : {6, 8})
                test(log2Width, blocksPerMb, headerSize);
        }
    }
}

} // namespace

TEST(PrxSliceWriter, PlanesAreThoseOfTheModelForEveryShape) {
    std::mt19937 random = MakeRandom();
    ForEachShape([&](uint32_t log2Width, uint32_t blocksPerMb, int32_t headerSize) {
        for (const plane::Filling& filling : plane::AllFillings()) {
            const Slice slice = MakeSlice(random, log2Width, blocksPerMb, headerSize, filling);
            const Written written = Write(slice);
            for (size_t i = 0; i < 3; ++i) {
                const plane::Coded expected = plane::CodePlane(slice.planes[i], 20000);
                EXPECT_EQ(PlaneBytes(slice, written, i), expected.bytes);
                EXPECT_EQ(written.outcome.planes[i], expected.statistics);
            }
        }
    });
}

TEST(PrxSliceWriter, CountsWhatItWrites) {
    std::mt19937 random = MakeRandom();
    ForEachShape([&](uint32_t log2Width, uint32_t blocksPerMb, int32_t headerSize) {
        for (const plane::Filling& filling : plane::AllFillings()) {
            const Slice slice = MakeSlice(random, log2Width, blocksPerMb, headerSize, filling);
            const PrxSliceOutcome counted = PrxCountSlice(PrxSelectPlaneCoder(), slice.input);
            const PrxSliceOutcome written = Write(slice).outcome;
            EXPECT_EQ(counted.planes, written.planes);
            EXPECT_EQ(counted.planeSize, written.planeSize);
            EXPECT_EQ(counted.sliceSize, written.sliceSize);
        }
    });
}

TEST(PrxSliceWriter, ADecoderFindsTheHeaderThatWasWritten) {
    std::mt19937 random = MakeRandom();
    ForEachShape([&](uint32_t log2Width, uint32_t blocksPerMb, int32_t headerSize) {
        const Slice slice = MakeSlice(random, log2Width, blocksPerMb, headerSize, plane::AllFillings()[2]);
        const Written written = Write(slice);
        const auto size = static_cast<uint32_t>(written.bytes.size());
        const PrxBufferPiece piece = {written.bytes.data(), size, nullptr};
        PrxSliceHeader header;
        ASSERT_EQ(PrxReadSliceHeader(piece, size, headerSize == 8, &header),
                  static_cast<uint32_t>(headerSize));
        EXPECT_EQ(header.quantiser, PrxQuantiserOf(slice.input.quantIndex));
        EXPECT_EQ(static_cast<int32_t>(header.lumaSize), written.outcome.planeSize[0]);
        EXPECT_EQ(static_cast<int32_t>(header.cbSize), written.outcome.planeSize[1]);
        EXPECT_EQ(static_cast<int32_t>(header.crSize), written.outcome.planeSize[2]);
        EXPECT_EQ(header.alphaSize, 0u);
    });
}

TEST(PrxSliceWriter, BehindAHeaderOf6BytesLumaStartsAtByte6) {
    std::mt19937 random = MakeRandom();
    const Slice slice = MakeSlice(random, 0, 8, 6, plane::AllFillings()[2]);
    const Written written = Write(slice);
    const auto sizes = written.outcome.planeSize;
    EXPECT_EQ(written.bytes[0], 6 * 8);
    EXPECT_EQ(written.bytes[1], slice.input.quantIndex);
    EXPECT_EQ(written.bytes[2] * 256 + written.bytes[3], sizes[0]);
    EXPECT_EQ(written.bytes[4] * 256 + written.bytes[5], sizes[1]);
    const stream::Bytes luma = plane::CodePlane(slice.planes[0], 20000).bytes;
    EXPECT_TRUE(std::equal(luma.begin(), luma.end(), written.bytes.begin() + 6));
    EXPECT_EQ(written.outcome.sliceSize, 6 + sizes[0] + sizes[1] + sizes[2]);
}

TEST(PrxSliceWriter, AHeaderOf8BytesHasTheSizeOfCr) {
    std::mt19937 random = MakeRandom();
    const Written written = Write(MakeSlice(random, 3, 12, 8, plane::AllFillings()[3]));
    EXPECT_EQ(written.bytes[0], 8 * 8);
    EXPECT_EQ(written.bytes[6] * 256 + written.bytes[7], written.outcome.planeSize[2]);
}

TEST(PrxSliceWriter, APlaneMayTakeWhatTheOneBeforeItLeft) {
    std::mt19937 random = MakeRandom();
    ForEachShape([&](uint32_t log2Width, uint32_t blocksPerMb, int32_t headerSize) {
        for (int32_t round = 0; round < 20; ++round) {
            const plane::Filling& filling = plane::AllFillings()[random() % plane::AllFillings().size()];
            const Slice slice = MakeSlice(random, log2Width, blocksPerMb, headerSize, filling);
            const auto whole = static_cast<uint32_t>(Write(slice).outcome.sliceSize);
            PrxPlaneBudgets budgets;
            for (int32_t& budget : budgets)
                budget = static_cast<int32_t>(random() % (whole / 2 + 1));
            const Written written = Write(slice, budgets[0] + budgets[1] + budgets[2] + 1, budgets);
            int32_t budget = 0;
            for (size_t i = 0; i < 3; ++i) {
                budget += budgets[i];
                const plane::Coded expected = plane::CodePlane(slice.planes[i], static_cast<size_t>(budget));
                ASSERT_EQ(PlaneBytes(slice, written, i), expected.bytes);
                ASSERT_EQ(written.outcome.planes[i], expected.statistics);
                budget -= written.outcome.planeSize[i];
            }
        }
    });
}

TEST(PrxSliceWriter, BudgetsOf0LeaveTheHeaderAlone) {
    std::mt19937 random = MakeRandom();
    const Written written = Write(MakeSlice(random, 3, 8, 6, plane::AllFillings()[3]), 1, noBudgets);
    EXPECT_EQ(written.outcome.sliceSize, 6);
    EXPECT_TRUE(std::ranges::equal(std::span(written.bytes).subspan(2), stream::Bytes{0, 0, 0, 0}));
}

TEST(PrxDefaultBudgets, GiveLumaHalfOfTheRoomLess6BytesAndChromaAQuarterEach) {
    EXPECT_EQ(PrxDefaultBudgets(0, 6), (PrxPlaneBudgets{32761, 16383, 16383}));
    EXPECT_EQ(PrxDefaultBudgets(0, 8), (PrxPlaneBudgets{32760, 16383, 16383}));
    EXPECT_EQ(PrxDefaultBudgets(1, 8), (PrxPlaneBudgets{32760, 16383, 16383}));
    EXPECT_EQ(PrxDefaultBudgets(6144, 8), (PrxPlaneBudgets{29688, 14847, 14847}));
}

TEST(PrxDefaultBudgets, KeepSliceAndAlphaWithin16Bits) {
    for (const int32_t headerSize : {6, 8}) {
        for (int32_t alphaSize = 0; alphaSize < 60000; ++alphaSize) {
            const PrxPlaneBudgets budgets = PrxDefaultBudgets(alphaSize, headerSize);
            const int32_t size = headerSize + budgets[0] + budgets[1] + budgets[2] + alphaSize;
            ASSERT_LE(size, 65535);
            ASSERT_GE(size, 65535 - 3);
        }
    }
}

TEST(PrxDefaultBudgets, AreBeyondTheLargestPlaneOfAnySlice) {
    // Each plane of a 4:4:4 slice has a third of its blocks. The most alpha is 3 bytes for each of its
    // pixels.
    const PrxPlaneBudgets least = PrxDefaultBudgets(3 * 128 * 16, 8);
    EXPECT_GT(least[1], static_cast<int32_t>(PrxSliceCapacity(3, 12)) / 3);
}

TEST(PrxSliceWriter, WithoutALimitBudgetsDoNotCount) {
    std::mt19937 random = MakeRandom();
    const Slice slice = MakeSlice(random, 2, 8, 6, plane::AllFillings()[3]);
    EXPECT_EQ(Write(slice, 0, noBudgets).bytes, Write(slice, -5, noBudgets).bytes);
    EXPECT_GT(Write(slice, 0, noBudgets).outcome.sliceSize, 100);
}

TEST(PrxSliceWriter, TheCapacityHoldsTheLargestLevelsAndIsThenNoLimit) {
    std::mt19937 random = MakeRandom();
    ForEachShape([&](uint32_t log2Width, uint32_t blocksPerMb, int32_t headerSize) {
        for (const plane::Filling& filling :
             {plane::Filling{1.0, 32767, 32767, false}, plane::Filling{1.0, 32767, 32767, true},
              plane::Filling{0.1, 32767, 32767, false}}) {
            const Slice slice = MakeSlice(random, log2Width, blocksPerMb, headerSize, filling);
            EXPECT_EQ(Write(slice).bytes, Write(slice, 0, noBudgets, 65541).bytes);
        }
    });
}

TEST(PrxSliceWriter, NoByteBehindASmallerCapacityIsTouched) {
    std::mt19937 random = MakeRandom();
    const Slice slice = MakeSlice(random, 1, 12, 8, plane::AllFillings().back());
    const auto whole = static_cast<size_t>(Write(slice).outcome.sliceSize);
    for (size_t capacity = 8; capacity < whole; capacity += 61) {
        for (const PrxPlaneBudgets& budgets : {PrxPlaneBudgets{30000, 0, 0}, PrxPlaneBudgets{-1, -1, -1}}) {
            const Written written = Write(slice, 1, budgets, capacity);
            EXPECT_LE(static_cast<size_t>(written.outcome.sliceSize), capacity);
            EXPECT_EQ(PlaneBytes(slice, written, 0),
                      plane::CodePlane(slice.planes[0], std::min<size_t>(capacity - 8, 30000)).bytes);
        }
    }
}
