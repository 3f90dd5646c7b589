#include "prores/PrxSliceEntropy.h"

#include "prores/SliceEntropyFixture.h"
#include "prores/StreamCoefficients.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace {

using Values = std::vector<int16_t>;

/// A DC value of 0 in each of `blockCount` blocks.
stream::BitWriter ZeroDcs(uint32_t blockCount) {
    stream::BitWriter bits;
    stream::PutFirstDc(bits, 0);
    int previousDelta = 3;
    for (uint32_t block = 1; block < blockCount; ++block) {
        stream::PutDcDelta(bits, 0, previousDelta);
        previousDelta = 0;
    }
    return bits;
}

/// The code of an AC coefficient that follows a run of `previousRun` and a level of `previousLevel`.
void PutCoefficient(stream::BitWriter& bits, uint32_t run, uint32_t level, bool negative, int previousRun = 4,
                    int previousLevel = 2) {
    stream::PutCode(bits, stream::RunBook(previousRun), run);
    stream::PutCode(bits, stream::LevelBook(previousLevel), level - 1);
    bits.Put(negative, 1);
}

/// Where the `n`-th coefficient in coding order stands.
size_t Place(size_t n, const ComponentShape& shape) {
    const size_t block = n & ((size_t{1} << shape.log2BlockCount) - 1);
    return (block << shape.log2BlockSize) + PrxScanTable(false, 0)[n >> shape.log2BlockCount];
}

std::vector<stream::Block> BlocksOf(const stream::MacroblockSource& source, uint32_t blockCount) {
    std::vector<stream::Block> blocks;
    for (int x = 0; blocks.size() < blockCount; ++x) {
        for (const stream::Block& block : source(0, x, 0).luma)
            blocks.push_back(block);
    }
    blocks.resize(blockCount);
    return blocks;
}

void ExpectWhatWasWritten(const stream::MacroblockSource& source) {
    for (const bool interlaced : {false, true}) {
        for (uint32_t log2Count = 0; log2Count <= 5; ++log2Count) {
            const auto blocks = BlocksOf(source, 1u << log2Count);
            const stream::Bytes bytes = stream::CodeComponent(blocks, stream::ScanOrder(interlaced));
            const Values decoded = Decode(bytes, {log2Count, 6}, FullOrder(interlaced));
            for (size_t block = 0; block < blocks.size(); ++block) {
                EXPECT_TRUE(
                    std::equal(blocks[block].begin(), blocks[block].end(), decoded.begin() + block * 64))
                    << block << " of " << blocks.size();
            }
        }
    }
}

} // namespace

TEST(PrxSliceEntropy, ReadsWhatAWriterCoded) { ExpectWhatWasWritten(stream::NaturalPicture(MakeRandom()())); }

TEST(PrxSliceEntropy, ReadsTheLargestValuesAndTheLongestRuns) {
    ExpectWhatWasWritten(stream::ExtremePicture(MakeRandom()()));
}

TEST(PrxSliceEntropy, ChromaBlocksStandTwiceAsFarApart) {
    const auto blocks = BlocksOf(stream::NaturalPicture(1), 4);
    const Values decoded = Decode(stream::CodeComponent(blocks, stream::ScanOrder(false)), {2, 7});
    for (size_t block = 0; block < 4; ++block) {
        EXPECT_TRUE(std::equal(blocks[block].begin(), blocks[block].end(), decoded.begin() + block * 128));
        EXPECT_TRUE(std::all_of(decoded.begin() + block * 128 + 64, decoded.begin() + block * 128 + 128,
                                [](int16_t value) { return value == 0; }));
    }
}

TEST(PrxSliceEntropy, AComponentOfNoBytesLeavesAllAt0) {
    EXPECT_EQ(Decode({}, {3, 6}), Values(512));
    const PrxSliceComponent none = {nullptr, 0, nullptr, 0, 6};
    PrxDecodeSliceComponent(none, FullOrder());
    PrxDecodeSliceComponents({&none, 1}, FullOrder());
}

TEST(PrxSliceEntropy, ReadsComponentsOfOneToNineBytes) {
    std::mt19937 random = MakeRandom();
    for (uint32_t value = 0; value < 256; ++value)
        Decode({static_cast<uint8_t>(value)}, {1, 6});
    for (size_t size = 2; size <= 9; ++size) {
        for (int i = 0; i < 500; ++i) {
            stream::Bytes bytes(size);
            std::ranges::generate(bytes, [&random] { return static_cast<uint8_t>(random()); });
            Decode(bytes, {static_cast<uint32_t>(i % 3), 6});
        }
    }
}

TEST(PrxSliceEntropy, AComponentThatEndsInItsDcPartLeavesLaterDcsAt0) {
    stream::BitWriter bits;
    stream::PutFirstDc(bits, 100);
    stream::PutDcDelta(bits, 5, 3);
    Values expected(256);
    expected[0] = 100;
    expected[64] = 105;
    EXPECT_EQ(Decode(bits.Data(), {2, 6}), expected);
}

TEST(PrxSliceEntropy, ThirtyTwoZerosEndTheDcPartThoughOnesFollow) {
    stream::BitWriter bits;
    stream::PutFirstDc(bits, -3);
    bits.Put(0, 32);
    bits.Put(~uint64_t{0}, 64);
    Values expected(128);
    expected[0] = -3;
    EXPECT_EQ(Decode(bits.Data(), {1, 6}), expected);
}

TEST(PrxSliceEntropy, ThirtyOneZerosAreACode) {
    stream::BitWriter bits;
    bits.Put(0, 31);
    bits.Put(0x1555555555, 37); // a code of 37 bits behind the zeros: code book 0xB8
    bits.Put(1, 1);
    const uint64_t code = 0x1555555555 - (1 << 6) + (1 << 5);
    EXPECT_EQ(Decode(bits.Data(), {0, 6})[0], static_cast<int16_t>(~(code >> 1)));
}

TEST(PrxSliceEntropy, DcValuesWrapTo16BitsAndTheDeltaDoesNot) {
    stream::BitWriter bits;
    stream::PutFirstDc(bits, 32767);
    stream::PutDcDelta(bits, 65536, 3);
    stream::PutDcDelta(bits, 1, 65536);
    const Values decoded = Decode(bits.Data(), {2, 6});
    EXPECT_EQ(decoded[64], 32767);
    EXPECT_EQ(decoded[128], -32768);
}

TEST(PrxSliceEntropy, ADeltaInACodeOfMoreThan32BitsIsReadWhole) {
    for (uint32_t more = 0; more <= 13; ++more) {
        const auto delta = static_cast<int>(0xabcd1234 >> (16 - more));
        stream::BitWriter bits;
        stream::PutFirstDc(bits, 0);
        stream::PutDcDelta(bits, 0, 3);
        const size_t start = bits.Count();
        stream::PutDcDelta(bits, delta, 0);
        ASSERT_EQ(bits.Count() - start, 33 + 2 * more);
        stream::PutDcDelta(bits, 2, delta);
        const Values decoded = Decode(bits.Data(), {2, 6});
        EXPECT_EQ(decoded[128], static_cast<int16_t>(delta)) << more;
        EXPECT_EQ(decoded[192], static_cast<int16_t>(delta + 2)) << more;
    }
}

TEST(PrxSliceEntropy, ThirtyTwoZerosEndTheAcPartBeforeARun) {
    stream::BitWriter bits = ZeroDcs(1);
    PutCoefficient(bits, 0, 1, false);
    bits.Put(0, 32);
    PutCoefficient(bits, 0, 1, false, 0, 1);
    Values expected(64);
    expected[1] = 1;
    EXPECT_EQ(Decode(bits.Data(), {0, 6}), expected);
}

TEST(PrxSliceEntropy, ThirtyTwoZerosEndTheAcPartBetweenRunAndLevel) {
    stream::BitWriter bits = ZeroDcs(1);
    stream::PutCode(bits, stream::RunBook(4), 0);
    bits.Put(0, 32);
    bits.Put(~uint64_t{0}, 64);
    EXPECT_EQ(Decode(bits.Data(), {0, 6}), Values(64));
}

TEST(PrxSliceEntropy, NoEndIsSoughtBeforeASign) {
    for (const uint32_t level : {1u, 3u, 9000u}) {
        stream::BitWriter bits = ZeroDcs(1);
        PutCoefficient(bits, 0, level, false); // the sign and all that follows is 0
        bits.Put(0, 64);
        Values expected(64);
        expected[1] = static_cast<int16_t>(level);
        EXPECT_EQ(Decode(bits.Data(), {0, 6}), expected);
    }
}

TEST(PrxSliceEntropy, AMissingSignIsPositive) {
    for (uint32_t level = 1; level < 300; ++level) {
        stream::BitWriter bits = ZeroDcs(1);
        stream::PutCode(bits, stream::RunBook(4), 0);
        stream::PutCode(bits, stream::LevelBook(2), level - 1);
        if (bits.Count() % 8 != 0) continue;
        EXPECT_EQ(Decode(bits.Data(), {0, 6})[1], static_cast<int16_t>(level));
    }
}

TEST(PrxSliceEntropy, ALevelOf16383IsTakenAnd16384Stops) {
    for (const uint32_t level : {16383u, 16384u}) {
        stream::BitWriter bits = ZeroDcs(1);
        PutCoefficient(bits, 0, level, true);
        PutCoefficient(bits, 0, 5, false, 0, static_cast<int>(level));
        const Values decoded = Decode(bits.Data(), {0, 6});
        EXPECT_EQ(decoded[1], level == 16383 ? -16383 : 0);
        EXPECT_EQ(decoded[8], level == 16383 ? 5 : 0);
    }
}

TEST(PrxSliceEntropy, ARunOf2015IsTakenAnd2016Stops) {
    // In 64 blocks, more than a slice has, both positions lie inside.
    for (const uint32_t log2Count : {5u, 6u}) {
        const ComponentShape shape = {log2Count, 6};
        for (const uint32_t run : {2015u, 2016u}) {
            stream::BitWriter bits = ZeroDcs(1u << log2Count);
            PutCoefficient(bits, run, 7, false);
            Values expected(shape.Coefficients());
            if (run == 2015) expected[Place((1u << log2Count) + run, shape)] = 7;
            EXPECT_EQ(Decode(bits.Data(), shape), expected) << log2Count << " " << run;
        }
    }
}

TEST(PrxSliceEntropy, APositionBehindTheLastCoefficientStops) {
    const ComponentShape shape = {1, 6};
    for (const uint32_t run : {125u, 126u, 127u, 2015u}) {
        stream::BitWriter bits = ZeroDcs(2);
        PutCoefficient(bits, run, 3, false);
        PutCoefficient(bits, 0, 4, false, static_cast<int>(run), 3);
        Values expected(128);
        if (run == 125) {
            expected[Place(127, shape)] = 3;
        }
        EXPECT_EQ(Decode(bits.Data(), shape), expected) << run;
    }
}

TEST(PrxSliceEntropy, CodesOfImmenseRunsAndLevelsStop) {
    for (const uint32_t zeros : {20u, 28u, 31u}) {
        stream::BitWriter run = ZeroDcs(1);
        PutCoefficient(run, 0, 6, false);
        run.Put(0, zeros);
        run.Put(~uint64_t{0}, 64);
        stream::BitWriter level = ZeroDcs(1);
        PutCoefficient(level, 0, 6, false);
        stream::PutCode(level, stream::RunBook(0), 0);
        level.Put(0, zeros);
        level.Put(~uint64_t{0}, 64);
        Values expected(64);
        expected[1] = 6;
        EXPECT_EQ(Decode(run.Data(), {0, 6}), expected);
        EXPECT_EQ(Decode(level.Data(), {0, 6}), expected);
    }
}

TEST(PrxSliceEntropy, AtCoefLimit1DecodingStopsAtTheFirstAcValue) {
    stream::BitWriter bits;
    stream::PutFirstDc(bits, 10);
    int previousDelta = 3;
    for (int block = 1; block < 8; ++block) {
        stream::PutDcDelta(bits, block, previousDelta);
        previousDelta = block;
    }
    PutCoefficient(bits, 0, 1, false);
    const PrxCoefficientOrder order = {PrxScanTable(false, 3), 1};
    EXPECT_EQ(Decode(bits.Data(), {3, 0}, order), (Values{10, 11, 13, 16, 20, 25, 31, 38}));
}

TEST(PrxSliceEntropy, TheLimitFallsOnAFrequencyBoundary) {
    const auto blocks = BlocksOf(stream::ExtremePicture(3), 8);
    const stream::Bytes bytes = stream::CodeComponent(blocks, stream::ScanOrder(false));
    for (uint32_t limit = 1; limit <= 64; ++limit) {
        const Values decoded = Decode(bytes, {3, 6}, {PrxScanTable(false, 0), limit});
        for (size_t n = 0; n < 64; ++n) {
            const size_t position = PrxScanTable(false, 0)[n];
            for (size_t block = 0; block < 8; ++block)
                ASSERT_EQ(decoded[block * 64 + position], n < limit ? blocks[block][position] : 0) << limit;
        }
    }
}

TEST(PrxSliceEntropy, AScanOfAnotherHandGivesTheSame) {
    const std::vector<uint8_t> scan(stream::ScanOrder(true).begin(), stream::ScanOrder(true).end());
    const auto blocks = BlocksOf(stream::NaturalPicture(9), 4);
    const stream::Bytes bytes = stream::CodeComponent(blocks, stream::ScanOrder(true));
    EXPECT_EQ(Decode(bytes, {2, 6}, {scan, 64}), Decode(bytes, {2, 6}, FullOrder(true)));
}
