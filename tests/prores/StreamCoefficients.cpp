#include "prores/StreamCoefficients.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <random>

namespace stream {

namespace {

constexpr Scan progressiveScan = {0,  1,  8,  9,  2,  3,  10, 11, 16, 17, 24, 25, 18, 19, 26, 27,
                                  4,  5,  12, 20, 13, 6,  7,  14, 21, 28, 29, 22, 15, 23, 30, 31,
                                  32, 33, 40, 48, 41, 34, 35, 42, 49, 56, 57, 50, 43, 36, 37, 44,
                                  51, 58, 59, 52, 45, 38, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};
constexpr Scan interlacedScan = {0,  8,  1,  9,  16, 24, 17, 25, 2,  10, 3,  11, 18, 26, 19, 27,
                                 32, 40, 33, 34, 41, 48, 56, 49, 42, 35, 43, 50, 57, 58, 51, 59,
                                 4,  12, 5,  6,  13, 20, 28, 21, 14, 7,  15, 22, 29, 36, 44, 37,
                                 30, 23, 31, 38, 45, 52, 60, 53, 46, 39, 47, 54, 61, 62, 55, 63};

void PutAcCoefficients(BitWriter& bits, std::span<const Block> blocks, const Scan& scan) {
    int previousRun = 4;
    int previousLevel = 2;
    int run = 0;
    for (size_t frequency = 1; frequency < scan.size(); ++frequency) {
        for (const Block& block : blocks) {
            const int value = block[scan[frequency]];
            if (value == 0) {
                ++run;
                continue;
            }
            const int level = std::abs(value);
            PutCode(bits, RunBook(previousRun), static_cast<uint32_t>(run));
            PutCode(bits, LevelBook(previousLevel), static_cast<uint32_t>(level - 1));
            bits.Put(value < 0, 1);
            previousRun = run;
            previousLevel = level;
            run = 0;
        }
    }
}

void PutAlphaDelta(BitWriter& bits, int delta, int depth) {
    const int shortBits = depth == 8 ? 4 : 7;
    const int shortCode = 2 * (std::abs(delta) - 1) + (delta < 0 ? 1 : 0);
    if (delta != 0 && shortCode < 1 << shortBits) {
        bits.Put(0, 1);
        bits.Put(static_cast<uint64_t>(shortCode), static_cast<uint32_t>(shortBits));
    } else {
        bits.Put(1, 1);
        bits.Put(static_cast<uint64_t>(delta), static_cast<uint32_t>(depth));
    }
}

void PutAlphaRun(BitWriter& bits, size_t count) {
    if (count == 1) {
        bits.Put(1, 1);
    } else if (count <= 16) {
        bits.Put(count - 1, 5);
    } else {
        bits.Put(count - 1, 16);
    }
}

std::mt19937 RandomOfPlace(uint32_t seed, int picture, int x, int y) {
    std::seed_seq mixed{seed, static_cast<uint32_t>(picture), static_cast<uint32_t>(x),
                        static_cast<uint32_t>(y)};
    return std::mt19937(mixed);
}

template <typename MakeBlock>
Macroblock MakeMacroblock(const MakeBlock& makeBlock) {
    Macroblock result;
    std::ranges::generate(result.luma, makeBlock);
    std::ranges::generate(result.cb, makeBlock);
    std::ranges::generate(result.cr, makeBlock);
    return result;
}

Block NaturalBlock(std::mt19937& random, double meanDc) {
    std::normal_distribution<double> normal;
    Block block{};
    block[0] = static_cast<int16_t>(std::lround(meanDc + 12 * normal(random)));
    for (size_t i = 1; i < block.size(); ++i) {
        const double frequency = static_cast<double>(i / 8 + i % 8);
        block[i] = static_cast<int16_t>(std::lround(20 * std::exp(-0.45 * frequency) * normal(random)));
    }
    return block;
}

Block ExtremeBlock(std::mt19937& random) {
    constexpr std::array<int16_t, 8> acValues = {0, 0, 0, 1, -1, 16383, -16383, 400};
    constexpr std::array<int16_t, 6> dcValues = {0, 1, -1, 32767, -32768, 2000};
    const uint32_t thinning = random() % 4; // blocks with everything, and blocks with next to nothing
    Block block{};
    block[0] = dcValues[random() % dcValues.size()];
    for (size_t i = 1; i < block.size(); ++i) {
        block[i] = random() % (1U << 2 * thinning) == 0 ? acValues[random() % acValues.size()] : int16_t{0};
    }
    return block;
}

} // namespace

const Scan& ScanOrder(bool interlaced) { return interlaced ? interlacedScan : progressiveScan; }

uint8_t DcBook(int previousDelta) {
    constexpr std::array<uint8_t, 4> books = {0x04, 0x28, 0x4d, 0x70};
    return books[static_cast<size_t>(std::min(std::abs(previousDelta), 3))];
}

uint8_t RunBook(int previousRun) {
    constexpr std::array<uint8_t, 16> books = {0x06, 0x06, 0x05, 0x05, 0x04, 0x29, 0x29, 0x29,
                                               0x29, 0x28, 0x28, 0x28, 0x28, 0x28, 0x28, 0x4c};
    return books[static_cast<size_t>(std::min(previousRun, 15))];
}

uint8_t LevelBook(int previousLevel) {
    constexpr std::array<uint8_t, 10> books = {0x04, 0x0a, 0x05, 0x06, 0x04, 0x28, 0x28, 0x28, 0x28, 0x4c};
    return books[static_cast<size_t>(std::min(previousLevel, 9))];
}

void PutFirstDc(BitWriter& bits, int dc) {
    PutCode(bits, firstDcBook, static_cast<uint32_t>(dc >= 0 ? 2 * dc : -2 * dc - 1));
}

void PutDcDelta(BitWriter& bits, int delta, int previousDelta) {
    const bool sameSign = (delta < 0) == (previousDelta < 0);
    const int code = 2 * std::abs(delta) - (sameSign || delta == 0 ? 0 : 1);
    PutCode(bits, DcBook(previousDelta), static_cast<uint32_t>(code));
}

Bytes CodeComponent(std::span<const Block> blocks, const Scan& scan) {
    BitWriter bits;
    PutFirstDc(bits, blocks[0][0]);
    int previousDelta = 3;
    for (size_t i = 1; i < blocks.size(); ++i) {
        const int delta = blocks[i][0] - blocks[i - 1][0];
        PutDcDelta(bits, delta, previousDelta);
        previousDelta = delta;
    }
    PutAcCoefficients(bits, blocks, scan);
    return bits.Data();
}

Bytes CodeAlpha(std::span<const uint16_t> samples, int depth) {
    constexpr size_t longestRun = 2048;
    BitWriter bits;
    int previous = (1 << depth) - 1;
    for (size_t at = 0; at < samples.size();) {
        const uint16_t value = samples[at];
        size_t count = 1;
        while (count < longestRun && at + count < samples.size() && samples[at + count] == value) {
            ++count;
        }
        PutAlphaDelta(bits, value - previous, depth);
        PutAlphaRun(bits, count);
        previous = value;
        at += count;
    }
    return bits.Data();
}

MacroblockSource FlatColour(int lumaDc, int cbDc, int crDc) {
    Macroblock macroblock;
    for (size_t i = 0; i < macroblock.luma.size(); ++i) {
        macroblock.luma[i][0] = static_cast<int16_t>(lumaDc);
        macroblock.cb[i][0] = static_cast<int16_t>(cbDc);
        macroblock.cr[i][0] = static_cast<int16_t>(crDc);
    }
    return [macroblock](int, int, int) { return macroblock; };
}

MacroblockSource NaturalPicture(uint32_t seed) {
    return [seed](int picture, int x, int y) {
        std::mt19937 random = RandomOfPlace(seed, picture, x, y);
        const double meanDc = 120 * std::sin(0.13 * x + seed % 7) * std::cos(0.17 * y);
        return MakeMacroblock([&] { return NaturalBlock(random, meanDc); });
    };
}

MacroblockSource ExtremePicture(uint32_t seed) {
    return [seed](int picture, int x, int y) {
        std::mt19937 random = RandomOfPlace(seed, picture, x, y);
        return MakeMacroblock([&] { return ExtremeBlock(random); });
    };
}

} // namespace stream
