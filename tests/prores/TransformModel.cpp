#include "prores/TransformModel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string>

namespace {

int64_t Saturate(int64_t v) { return std::clamp<int64_t>(v, -32768, 32767); }

/// Values of `v` in so many bits.
int64_t Wrap16(int64_t v) { return (v & 0x7FFF) - (v & 0x8000); }
int64_t Wrap32(int64_t v) { return (v & 0x7FFFFFFF) - (v & 0x80000000); }

struct Row {
    char rowClass;
    int64_t rounder;
};

std::vector<Row> RowsOf(int32_t height) {
    if (height == 8)
        return {{0, 8192}, {1, 23212}, {2, 18081}, {3, 13635}, {0, 8192}, {3, 3637}, {2, 4096}, {1, 2988}};
    if (height == 4) return {{0, 0}, {2, 18081}, {0, 8192}, {2, 4096}};
    return {{0, 0}, {0, 8192}};
}

/// The row pass: what each result takes of each value of the row.
const std::vector<std::string>& RowMatrix(int32_t width) {
    static const std::vector<std::string> eight = {
        "+S+D+B+E+S+F+C+G", "+S+E+C-G-S-D-B-F", "+S+F-C-D-S+G+B+E", "+S+G-B-F+S+E-C-D",
        "+S-G-B+F+S-E-C+D", "+S-F-C+D-S-G+B-E", "+S-E+C+G-S+D-B+F", "+S-D+B-E+S-F+C-G",
    };
    static const std::vector<std::string> four = {"+S+B+S+C", "+S+C-S-B", "+S-C-S+B", "+S-B+S-C"};
    static const std::vector<std::string> two = {"+S+S", "+S-S"};
    return width == 8 ? eight : width == 4 ? four : two;
}

int64_t Factor(char rowClass, char letter) {
    static const int64_t factors[4][7] = {{16384, 21407, 8867, 22725, 19266, 12873, 4520},
                                          {22725, 29692, 12299, 31521, 26722, 17855, 6270},
                                          {21407, 27969, 11585, 29692, 25172, 16819, 5906},
                                          {19266, 25172, 10426, 26722, 22654, 15137, 5315}};
    return factors[static_cast<size_t>(rowClass)][std::string("SBCDEFG").find(letter)];
}

std::vector<int64_t> ModelRow(const std::vector<int64_t>& x, const Row& row) {
    std::vector<int64_t> results;
    for (const std::string& terms : RowMatrix(static_cast<int32_t>(x.size()))) {
        int64_t sum = row.rounder;
        for (size_t i = 0; i < x.size(); ++i)
            sum += (terms[2 * i] == '+' ? 1 : -1) * Factor(row.rowClass, terms[2 * i + 1]) * x[i];
        results.push_back(Saturate(Wrap32(sum) >> 14));
    }
    return results;
}

int64_t AddS(int64_t a, int64_t b) { return Saturate(a + b); }
int64_t SubS(int64_t a, int64_t b) { return Saturate(a - b); }
int64_t High(int64_t a, int64_t k) { return (a * k) >> 16; }

std::vector<int64_t> ModelColumn8(const std::vector<int64_t>& r) {
    const int64_t tan1 = 13036, tan2 = 27146, tan3 = -21746, cos4 = -19195;
    const int64_t u0 = AddS(r[1], High(r[7], tan1));
    const int64_t u1 = SubS(High(r[1], tan1), r[7]);
    const int64_t w3 = AddS(High(r[3], tan3), r[3]);
    const int64_t w5 = AddS(High(r[5], tan3), r[5]);
    const int64_t u2 = AddS(w5, r[3]);
    const int64_t u3 = SubS(r[5], w3);
    const int64_t p0 = AddS(u0, u2), p1 = SubS(u0, u2), p2 = AddS(u1, u3), p3 = SubS(u1, u3);
    int64_t q0 = AddS(p1, p3), q1 = SubS(p1, p3);
    q0 = AddS(High(q0, cos4), q0);
    q1 = AddS(High(q1, cos4), q1);
    const int64_t g0 = AddS(r[2], High(r[6], tan2));
    const int64_t g1 = SubS(High(r[2], tan2), r[6]);
    const int64_t e0 = AddS(r[0], r[4]), e1 = SubS(r[0], r[4]);
    const int64_t f0 = AddS(e0, g0), f3 = SubS(e0, g0), f1 = AddS(e1, g1), f2 = SubS(e1, g1);
    return {AddS(f0, p0), AddS(f1, q0), AddS(f2, q1), AddS(f3, p2),
            SubS(f3, p2), SubS(f2, q1), SubS(f1, q0), SubS(f0, p0)};
}

std::vector<int64_t> ModelColumn4(const std::vector<int64_t>& r, int64_t half) {
    const int64_t o0 = AddS(r[1], High(r[3], 27146));
    const int64_t o1 = SubS(High(r[1], 27146), r[3]);
    const int64_t e0 = AddS(AddS(r[0], half), r[2]);
    const int64_t e1 = SubS(AddS(r[0], half), r[2]);
    return {AddS(e0, o0), AddS(e1, o1), SubS(e1, o1), SubS(e0, o0)};
}

std::vector<int64_t> ModelColumn(const std::vector<int64_t>& r, int32_t x, int32_t depth) {
    const int64_t shift = 14 - depth;
    const int64_t half = (int64_t{1} << shift) >> 1;
    std::vector<int64_t> column;
    if (r.size() == 8) {
        column = ModelColumn8(r);
        for (size_t y = 0; y < 8; ++y)
            column[y] = AddS(column[y], (static_cast<size_t>(x) + y) % 2 == 1 ? half - 1 : half);
    } else if (r.size() == 4) {
        column = ModelColumn4(r, half);
    } else {
        column = {AddS(AddS(r[0], half), r[1]), SubS(AddS(r[0], half), r[1])};
    }
    for (int64_t& sample : column)
        sample >>= shift;
    return column;
}

std::vector<int16_t> ModelFixedPoint(BlockSize size, const std::vector<int64_t>& x, int32_t depth) {
    const auto width = static_cast<size_t>(size.width());
    const auto height = static_cast<size_t>(size.height());
    std::vector<std::vector<int64_t>> rows;
    for (size_t y = 0; y < height; ++y) {
        const auto first = x.begin() + static_cast<ptrdiff_t>(y * width);
        rows.push_back(ModelRow({first, first + size.width()}, RowsOf(size.height())[y]));
    }
    std::vector<int16_t> samples(width * height);
    for (size_t i = 0; i < width; ++i) {
        std::vector<int64_t> column;
        for (const std::vector<int64_t>& row : rows)
            column.push_back(row[i]);
        column = ModelColumn(column, static_cast<int32_t>(i), depth);
        for (size_t y = 0; y < height; ++y)
            samples[y * width + i] = static_cast<int16_t>(column[y]);
    }
    return samples;
}

std::vector<int16_t> ModelButterflies(const std::vector<int64_t>& x, int32_t depth) {
    const int64_t shift = 26 - depth;
    const int64_t half = (int64_t{1} << shift) >> 1;
    const auto sample = [&](int64_t sum) {
        return static_cast<int16_t>(Saturate((4096 * sum + half) >> shift));
    };
    return {sample(x[0] + x[1] + x[2] + x[3]), sample(x[0] - x[1] + x[2] - x[3]),
            sample(x[0] + x[1] - x[2] - x[3]), sample(x[0] - x[1] - x[2] + x[3])};
}

/// Nearest integer, ties to even, in its low 16 bits.
int16_t RoundToEven(double v) {
    const double below = std::floor(v);
    const double part = v - below;
    const auto integer = static_cast<int64_t>(below);
    const bool up = part > 0.5 || (part == 0.5 && integer % 2 != 0);
    return static_cast<int16_t>(Wrap16(integer + (up ? 1 : 0)));
}

std::vector<int16_t> ModelDoubles(const std::vector<int64_t>& x, int32_t depth) {
    const double pi = 3.14159265358979323846;
    const auto x0 = static_cast<double>(x[0]);
    if (x.size() == 1) return {RoundToEven(x0 * std::pow(2.0, depth - 14))};
    const auto x1 = static_cast<double>(x[1]);
    const double c4 = std::cos(pi / 4);
    const double q =
        std::cos(pi / 16) + std::cos(3 * pi / 16) + std::cos(5 * pi / 16) + std::cos(7 * pi / 16);
    const double scale = std::pow(2.0, depth - 18);
    return {RoundToEven((32 * c4 * c4 * x0 + 8 * c4 * q * x1) * scale),
            RoundToEven((32 * c4 * c4 * x0 - 8 * c4 * q * x1) * scale)};
}

} // namespace

std::vector<int16_t> ModelTransform(BlockSize size, std::span<const int16_t> coefficients, int32_t depth,
                                    std::span<const int16_t> quantTable) {
    const bool wide = size.values() <= 2;
    std::vector<int64_t> x;
    for (int32_t i = 0; i < size.values(); ++i) {
        const int32_t position = i / size.width() * 8 + i % size.width();
        const int64_t product =
            int64_t{coefficients[static_cast<size_t>(i)]} * quantTable[static_cast<size_t>(position)];
        x.push_back((wide ? product : Wrap16(product)) >> 1);
    }
    if (wide) return ModelDoubles(x, depth);
    if (size.values() == 4) return ModelButterflies(x, depth);
    return ModelFixedPoint(size, x, depth);
}

namespace {

int16_t AnyValue(std::mt19937& random) { return static_cast<int16_t>(random() & 0xFFFF); }

/// A coefficient of a real stream: seldom other than 0 away from the first.
int16_t SparseValue(std::mt19937& random, int32_t x, int32_t y) {
    if (x == 0 && y == 0) return static_cast<int16_t>(static_cast<int32_t>(random() % 4000) - 2000);
    if (random() % static_cast<uint32_t>(1 + x + y) != 0) return 0;
    return static_cast<int16_t>(static_cast<int32_t>(random() % 41) - 20);
}

int16_t MakeCoefficient(std::mt19937& random, BlockSize size, int32_t index, Filling filling) {
    const int32_t x = index % size.width();
    const int32_t y = index / size.width() % size.height();
    switch (filling) {
    case Filling::Sparse: return SparseValue(random, x, y);
    case Filling::Dense: return static_cast<int16_t>(static_cast<int32_t>(random() % 1001) - 500);
    case Filling::Anything: return AnyValue(random);
    case Filling::LowerHalfZero: return 2 * y < size.height() ? AnyValue(random) : int16_t{0};
    case Filling::Minimum: return INT16_MIN;
    case Filling::Maximum: return INT16_MAX;
    case Filling::Alternating: return index % 2 == 0 ? INT16_MIN : INT16_MAX;
    }
    return 0;
}

} // namespace

std::vector<int16_t> MakeCoefficients(std::mt19937& random, BlockSize size, int32_t count, Filling filling) {
    std::vector<int16_t> values(static_cast<size_t>(count * size.values()));
    for (size_t i = 0; i < values.size(); ++i)
        values[i] = MakeCoefficient(random, size, static_cast<int32_t>(i), filling);
    return values;
}

std::vector<int16_t> MakeQuantTable(std::mt19937& random, Filling filling) {
    const bool ofStream = filling == Filling::Sparse || filling == Filling::Dense;
    std::vector<int16_t> table(64);
    for (int16_t& entry : table)
        entry = ofStream ? static_cast<int16_t>(1 + random() % 64) : AnyValue(random);
    return table;
}
