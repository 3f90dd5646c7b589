// Random streams, read one by one and side by side, against the model.

#include "prores/ScanReductions.h"
#include "prores/SliceEntropyFixture.h"
#include "prores/StreamCoefficients.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <random>
#include <span>
#include <vector>

namespace {

constexpr int rounds = 40; ///< for each reduction

stream::Bytes CodedStream(std::mt19937& random, uint32_t log2BlockCount, bool interlaced) {
    const auto source =
        random() % 4 == 0 ? stream::ExtremePicture(random()) : stream::NaturalPicture(random());
    std::vector<stream::Block> blocks;
    for (int x = 0; blocks.size() < size_t{1} << log2BlockCount; ++x) {
        for (const stream::Block& block : source(0, x, 0).luma)
            blocks.push_back(block);
    }
    blocks.resize(size_t{1} << log2BlockCount);
    return stream::CodeComponent(blocks, stream::ScanOrder(interlaced));
}

/// Bytes in which ones have a likelihood of 1 in `oneIn`.
stream::Bytes Garbage(std::mt19937& random, uint32_t oneIn) {
    stream::Bytes bytes(random() % 400);
    for (uint8_t& byte : bytes) {
        for (int bit = 0; bit < 8; ++bit)
            byte = static_cast<uint8_t>(byte << 1 | (random() % oneIn == 0));
    }
    return bytes;
}

void FlipBits(stream::Bytes& bytes, std::mt19937& random) {
    for (uint32_t i = random() % 8; i > 0 && !bytes.empty(); --i)
        bytes[random() % bytes.size()] ^= static_cast<uint8_t>(1 << random() % 8);
}

/// A whole, a cut, a damaged or a meaningless stream.
stream::Bytes AnyStream(std::mt19937& random, uint32_t log2BlockCount, bool interlaced) {
    if (random() % 4 == 0) return Garbage(random, 2 + random() % 12);
    stream::Bytes bytes = CodedStream(random, log2BlockCount, interlaced);
    if (random() % 2 == 0) bytes.resize(random() % (bytes.size() + 1));
    if (random() % 2 == 0) FlipBits(bytes, random);
    return bytes;
}

/// One or more slices.
struct Slice {
    std::vector<stream::Bytes> streams;
    std::vector<ComponentShape> shapes;
    PrxCoefficientOrder order;
};

Slice AnySlice(std::mt19937& random, const ScanReduction& reduction) {
    const auto log2Chroma = static_cast<uint32_t>(random() % 6);
    const uint32_t log2Luma = std::min(log2Chroma + static_cast<uint32_t>(random() % 2), 5u);
    const uint32_t log2Block = reduction.Log2Block();
    Slice slice;
    slice.shapes = {{{log2Luma, log2Block}, {log2Chroma, log2Block + 1}, {log2Chroma, log2Block + 1}}};
    for (const ComponentShape& shape : slice.shapes)
        slice.streams.push_back(AnyStream(random, shape.log2BlockCount, reduction.interlaced));
    slice.order = {reduction.Scan(), 1 + static_cast<uint32_t>(random() % (1u << log2Block))};
    if (random() % 2 == 0) slice.order.coefLimit = 1u << log2Block;
    return slice;
}

/// The components of a slice as a decode lays them out in one array: luma, then Cb and Cr by turns.
std::array<PrxSliceComponent, 3> ComponentsIn(int16_t* coefficients, const Slice& slice) {
    const auto &luma = slice.shapes[0], &cb = slice.shapes[1], &cr = slice.shapes[2];
    int16_t* chroma = coefficients + luma.Coefficients();
    const size_t block = size_t{1} << luma.log2BlockSize;
    const auto& streams = slice.streams;
    return {{{streams[0].data(), streams[0].size(), coefficients, luma.log2BlockCount, luma.log2BlockSize},
             {streams[1].data(), streams[1].size(), chroma, cb.log2BlockCount, cb.log2BlockSize},
             {streams[2].data(), streams[2].size(), chroma + block, cr.log2BlockCount, cr.log2BlockSize}}};
}

/// Values of that array. The blocks of Cb and Cr stand twice as far apart, so one shape covers both.
size_t CoefficientsOf(const Slice& slice) {
    return slice.shapes[0].Coefficients() + slice.shapes[1].Coefficients();
}

template <class Check>
void ForManySlices(const Check& check) {
    std::mt19937 random = MakeRandom();
    for (const ScanReduction& reduction : scanReductions) {
        for (int round = 0; round < rounds; ++round)
            check(AnySlice(random, reduction), bothGuards[round % 2]);
    }
}

} // namespace

TEST(PrxSliceEntropyLanes, AComponentAloneIsReadAsTheModelReadsIt) {
    ForManySlices([](const Slice& slice, GuardedBytes::Guard guard) {
        for (size_t i = 0; i < 3; ++i) {
            ASSERT_EQ(DecodeAlone(slice.streams[i], slice.shapes[i], slice.order, guard),
                      DecodeByModel(slice.streams[i], slice.shapes[i], slice.order));
        }
    });
}

TEST(PrxSliceEntropyLanes, ComponentsSideBySideAreReadAsTheModelReadsThem) {
    ForManySlices([](const Slice& slice, GuardedBytes::Guard guard) {
        const auto decoded = DecodeTogether(slice.streams, slice.shapes, slice.order, guard);
        for (size_t i = 0; i < 3; ++i)
            ASSERT_EQ(decoded[i], DecodeByModel(slice.streams[i], slice.shapes[i], slice.order)) << i;
    });
}

TEST(PrxSliceEntropyLanes, CbAndCrShareOneArrayByTurns) {
    ForManySlices([](const Slice& slice, GuardedBytes::Guard guard) {
        std::vector<int16_t> expected(CoefficientsOf(slice));
        for (const PrxSliceComponent& component : ComponentsIn(expected.data(), slice))
            model::DecodeComponent(component, slice.order);

        GuardedBytes bytes(2 * expected.size(), guard);
        auto* coefficients = reinterpret_cast<int16_t*>(bytes.data());
        PrxDecodeSliceComponents(ComponentsIn(coefficients, slice), slice.order);
        ASSERT_TRUE(std::ranges::equal(expected, std::span(coefficients, expected.size())));
    });
}

TEST(PrxSliceEntropyLanes, AnyComponentMayEndFirst) {
    std::mt19937 random = MakeRandom();
    const ComponentShape shape = {3, 6};
    const stream::Bytes whole = CodedStream(random, 3, false);
    for (size_t i = 0; i < 27; ++i) {
        const std::array<size_t, 3> thirds = {i % 3, i / 3 % 3, i / 9};
        std::vector<stream::Bytes> streams(3, whole);
        for (size_t k = 0; k < 3; ++k)
            streams[k].resize(whole.size() * thirds[k] / 2);
        const auto decoded = DecodeTogether(streams, {shape, shape, shape}, FullOrder());
        for (size_t k = 0; k < 3; ++k)
            ASSERT_EQ(decoded[k], DecodeByModel(streams[k], shape, FullOrder())) << i;
    }
}

TEST(PrxSliceEntropyLanes, AnyNumberOfComponentsIsReadAsTheModelReadsThem) {
    std::mt19937 random = MakeRandom();
    for (size_t round = 0; round < 200; ++round) {
        std::vector<stream::Bytes> streams;
        std::vector<ComponentShape> shapes(round % (prxComponentsAtOnce + 1));
        for (ComponentShape& shape : shapes) {
            shape.log2BlockCount = random() % 6;
            streams.push_back(AnyStream(random, shape.log2BlockCount, false));
        }
        const auto decoded = DecodeTogether(streams, shapes, FullOrder());
        for (size_t i = 0; i < shapes.size(); ++i)
            ASSERT_EQ(decoded[i], DecodeByModel(streams[i], shapes[i], FullOrder())) << i;
    }
}
