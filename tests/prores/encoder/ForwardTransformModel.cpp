#include "prores/encoder/ForwardTransformModel.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <numbers>

namespace {

using Eight = std::array<int64_t, 8>;

int64_t Saturate(int64_t v) { return std::clamp<int64_t>(v, -32768, 32767); }
int64_t Wrap32(int64_t v) { return (v & 0x7FFFFFFF) - (v & 0x80000000); }
int64_t AddS(int64_t a, int64_t b) { return Saturate(a + b); }
int64_t SubS(int64_t a, int64_t b) { return Saturate(a - b); }
int64_t High(int64_t a, int64_t k) { return (a * k) >> 16; }

Eight ModelColumn(const Eight& x) {
    const int64_t tan1 = 13036, tan2 = 27146, tan3 = -21746, cos4 = 23170;
    Eight t;
    for (size_t i = 0; i < 4; ++i) {
        t[i] = AddS(x[i], x[7 - i]);
        t[7 - i] = SubS(x[i], x[7 - i]);
    }
    Eight y;
    y[0] = AddS(AddS(t[0], t[3]), AddS(t[1], t[2]));
    y[4] = SubS(AddS(t[0], t[3]), AddS(t[1], t[2]));
    y[2] = AddS(SubS(t[0], t[3]), High(SubS(t[1], t[2]), tan2));
    y[6] = SubS(High(SubS(t[0], t[3]), tan2), SubS(t[1], t[2]));
    const int64_t plus = High(AddS(AddS(t[6], t[6]), AddS(t[5], t[5])), cos4);
    const int64_t minus = High(SubS(AddS(t[6], t[6]), AddS(t[5], t[5])), cos4);
    const int64_t a = AddS(t[7], plus), b = SubS(t[7], plus);
    const int64_t c = AddS(t[4], minus), d = SubS(t[4], minus);
    y[1] = AddS(a, High(c, tan1));
    y[7] = SubS(High(a, tan1), c);
    y[3] = SubS(b, AddS(High(d, tan3), d));
    y[5] = AddS(AddS(High(b, tan3), b), d);
    return y;
}

const int64_t rowTables[4][32] = {
    {16384, 16385,  22725,  19266, -8867, -21407, -22725, -12873, 16384,  16383, 12873,
     4520,  21407,  8867,   19266, -4520, 16384,  -16385, 12873,  -22725, 21407, -8867,
     19266, -22725, -16384, 16383, 4520,  19266,  8867,   -21407, 4520,   -12873},
    {22725, 22725,  31521,  26722, -12299, -29692, -31521, -17855, 22725,  22725, 17855,
     6270,  29692,  12299,  26722, -6270,  22725,  -22725, 17855,  -31521, 29692, -12299,
     26722, -31521, -22725, 22725, 6270,   26722,  12299,  -29692, 6270,   -17855},
    {21407, 21407,  29692,  25172, -11585, -27969, -29692, -16819, 21407,  21407, 16819,
     5906,  27969,  11585,  25172, -5906,  21407,  -21407, 16819,  -29692, 27969, -11585,
     25172, -29692, -21407, 21407, 5906,   25172,  11585,  -27969, 5906,   -16819},
    {19266, 19266,  26722,  22654, -10426, -25172, -26722, -15137, 19266,  19266, 15137,
     5315,  25172,  10426,  22654, -5315,  19266,  -19266, 15137,  -26722, 25172, -10426,
     22654, -26722, -19266, 19266, 5315,   22654,  10426,  -25172, 5315,   -15137},
};

Eight ModelRow(const Eight& x, size_t row) {
    const size_t tableOfRow[] = {0, 1, 2, 3, 0, 3, 2, 1};
    const int64_t firstRounding[] = {131072, 330955, 216699, 28439, 131072, 79581, 216699, 149153};
    const int64_t a[] = {AddS(x[0], x[7]), AddS(x[1], x[6]), AddS(x[2], x[5]), AddS(x[3], x[4])};
    const int64_t b[] = {SubS(x[0], x[7]), SubS(x[1], x[6]), SubS(x[2], x[5]), SubS(x[3], x[4])};
    const Eight outer = {a[0], a[1], b[0], b[1], a[2], a[3], b[2], b[3]};
    const Eight inner = {a[2], a[3], b[2], b[3], a[0], a[1], b[0], b[1]};
    const int64_t* table = rowTables[tableOfRow[row]];
    Eight y;
    for (size_t i = 0; i < 8; ++i) {
        const int64_t* first = table + (i < 4 ? 0 : 16) + i % 4 * 2;
        const int64_t* second = first + 8;
        const size_t k = i % 4 * 2;
        const int64_t sum = outer[k] * first[0] + outer[k + 1] * first[1] + inner[k] * second[0] +
                            inner[k + 1] * second[1] + (i == 0 ? firstRounding[row] : 131072);
        y[i] = Saturate(Wrap32(sum) >> 18);
    }
    return y;
}

/// The orthonormal basis function `k` at point `i`.
double Basis(size_t k, size_t i) {
    const double angle = static_cast<double>((2 * i + 1) * k) * std::numbers::pi / 16;
    return (k == 0 ? std::sqrt(0.125) : 0.5) * std::cos(angle);
}

std::array<double, 64> MakeBasisTable() {
    std::array<double, 64> table;
    for (size_t i = 0; i < 64; ++i)
        table[i] = Basis(i / 8, i % 8);
    return table;
}

} // namespace

TestBlock ModelForwardDct(const TestBlock& block) {
    TestBlock result = {};
    if (std::ranges::count(block, block[0]) == 64) {
        result[0] = static_cast<int16_t>((4 * block[0]) & 0xFFFF);
        return result;
    }
    std::array<Eight, 8> rows;
    for (size_t x = 0; x < 8; ++x) {
        Eight column;
        for (size_t y = 0; y < 8; ++y)
            column[y] = block[8 * y + x];
        column = ModelColumn(column);
        for (size_t y = 0; y < 8; ++y)
            rows[y][x] = column[y];
    }
    for (size_t y = 0; y < 8; ++y) {
        const Eight row = ModelRow(rows[y], y);
        for (size_t x = 0; x < 8; ++x)
            result[8 * y + x] = static_cast<int16_t>(row[x]);
    }
    return result;
}

std::array<double, 64> ExactForwardDct(const TestBlock& block) {
    static const std::array<double, 64> basis = MakeBasisTable();
    std::array<double, 64> columns = {}, result = {};
    for (size_t i = 0; i < 64; ++i)
        for (size_t k = 0; k < 8; ++k)
            columns[8 * k + i % 8] += basis[8 * k + i / 8] * block[i];
    for (size_t i = 0; i < 64; ++i)
        for (size_t k = 0; k < 8; ++k)
            result[i / 8 * 8 + k] += 0.5 * basis[8 * k + i % 8] * columns[i];
    return result;
}

namespace {

int32_t Uniform(std::mt19937& random, int32_t low, int32_t high) {
    return std::uniform_int_distribution<int32_t>(low, high)(random);
}

/// A gradient with grain.
TestBlock MakePicture(std::mt19937& random) {
    const int32_t base = Uniform(random, -1500, 1500);
    const int32_t across = Uniform(random, -60, 60), down = Uniform(random, -60, 60);
    const int32_t grain = Uniform(random, 1, 100);
    TestBlock block;
    for (int32_t i = 0; i < 64; ++i) {
        const int32_t sample = base + across * (i % 8 - 4) + down * (i / 8 - 4);
        block[static_cast<size_t>(i)] =
            static_cast<int16_t>(std::clamp(sample + Uniform(random, -grain, grain), -2048, 2047));
    }
    return block;
}

int16_t MakeSample(std::mt19937& random, Samples kind) {
    const bool high = random() % 2 == 0;
    switch (kind) {
    case Samples::Noise: return static_cast<int16_t>(Uniform(random, -2048, 2047));
    case Samples::Extremes: return high ? 2047 : -2048;
    case Samples::WideExtremes: return high ? INT16_MAX : INT16_MIN;
    default: return static_cast<int16_t>(Uniform(random, INT16_MIN, INT16_MAX));
    }
}

} // namespace

TestBlock MakeSamples(std::mt19937& random, Samples kind) {
    if (kind == Samples::Picture) return MakePicture(random);
    TestBlock block;
    for (int16_t& sample : block)
        sample = MakeSample(random, kind);
    if (kind == Samples::Flat || kind == Samples::NearlyFlat) block.fill(block[0]);
    if (kind == Samples::NearlyFlat) block[random() % 64] ^= 1;
    return block;
}

std::vector<int16_t> MakeMixedBlocks(std::mt19937& random, int32_t count) {
    std::vector<int16_t> blocks;
    for (int32_t i = 0; i < count; ++i) {
        const TestBlock block = MakeSamples(random, sampleKinds[random() % std::size(sampleKinds)]);
        blocks.insert(blocks.end(), block.begin(), block.end());
    }
    return blocks;
}
