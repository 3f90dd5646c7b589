#include "prores/PrxInverseTransform.h"

#include "prores/PrxFixedPoint.h"
#include "prores/PrxInverseTransformSmall.h"
#include "prores/PrxInverseTransformVector.h"
#include "prores/PrxTransformTables.h"

#include <array>

namespace {

/// A row of dequantised coefficients, wide enough for all that is summed up of it.
template <int32_t Size>
using WideLine = std::array<int64_t, Size>;

/// A row of the row pass's results, or a column of them.
template <int32_t Size>
using Line = std::array<int16_t, Size>;

/// A sum as the row pass leaves it: it wraps at 32 bits, and only then is shifted and saturated. Kept.
int16_t RowResult(int64_t sum) { return PrxSaturate16(static_cast<int32_t>(sum) >> prxRowShift); }

Line<8> TransformRow(const WideLine<8>& x, const PrxTransformRow& row) {
    const auto [s, b, c, d, e, f, g] = prxRowClasses[row.rowClass];
    const int64_t a0 = s * x[0] + b * x[2] + s * x[4] + c * x[6] + row.rounder;
    const int64_t a1 = s * x[0] + c * x[2] - s * x[4] - b * x[6] + row.rounder;
    const int64_t a2 = s * x[0] - c * x[2] - s * x[4] + b * x[6] + row.rounder;
    const int64_t a3 = s * x[0] - b * x[2] + s * x[4] - c * x[6] + row.rounder;
    const int64_t b0 = d * x[1] + e * x[3] + f * x[5] + g * x[7];
    const int64_t b1 = e * x[1] - g * x[3] - d * x[5] - f * x[7];
    const int64_t b2 = f * x[1] - d * x[3] + g * x[5] + e * x[7];
    const int64_t b3 = g * x[1] - f * x[3] + e * x[5] - d * x[7];
    return {RowResult(a0 + b0), RowResult(a1 + b1), RowResult(a2 + b2), RowResult(a3 + b3),
            RowResult(a3 - b3), RowResult(a2 - b2), RowResult(a1 - b1), RowResult(a0 - b0)};
}

Line<4> TransformRow(const WideLine<4>& x, const PrxTransformRow& row) {
    const PrxRowClass& k = prxRowClasses[row.rowClass];
    const int64_t e0 = k.s * x[0] + k.s * x[2] + row.rounder;
    const int64_t e1 = k.s * x[0] - k.s * x[2] + row.rounder;
    const int64_t o0 = k.b * x[1] + k.c * x[3];
    const int64_t o1 = k.c * x[1] - k.b * x[3];
    return {RowResult(e0 + o0), RowResult(e1 + o1), RowResult(e1 - o1), RowResult(e0 - o0)};
}

Line<2> TransformRow(const WideLine<2>& x, const PrxTransformRow& row) {
    const int64_t s = prxRowClasses[row.rowClass].s;
    const int64_t even = s * x[0] + row.rounder;
    const int64_t odd = s * x[1];
    return {RowResult(even + odd), RowResult(even - odd)};
}

/// `a` times `k` + 1, for the factors that are stored less 1.
int16_t MulHighPlus(int16_t a, int16_t k) { return PrxSaturatedAdd(PrxMulHigh(a, k), a); }

constexpr auto Add = PrxSaturatedAdd;
constexpr auto Sub = PrxSaturatedSub;

/// The column pass of 8 rows, up to its final rounding.
Line<8> TransformColumn(const Line<8>& r) {
    const int16_t u0 = Add(r[1], PrxMulHigh(r[7], prxTan1));
    const int16_t u1 = Sub(PrxMulHigh(r[1], prxTan1), r[7]);
    const int16_t u2 = Add(MulHighPlus(r[5], prxTan3), r[3]);
    const int16_t u3 = Sub(r[5], MulHighPlus(r[3], prxTan3));
    const int16_t p0 = Add(u0, u2);
    const int16_t p1 = Sub(u0, u2);
    const int16_t p2 = Add(u1, u3);
    const int16_t p3 = Sub(u1, u3);
    const int16_t q0 = MulHighPlus(Add(p1, p3), prxCos4);
    const int16_t q1 = MulHighPlus(Sub(p1, p3), prxCos4);
    const int16_t g0 = Add(r[2], PrxMulHigh(r[6], prxTan2));
    const int16_t g1 = Sub(PrxMulHigh(r[2], prxTan2), r[6]);
    const int16_t e0 = Add(r[0], r[4]);
    const int16_t e1 = Sub(r[0], r[4]);
    const int16_t f0 = Add(e0, g0);
    const int16_t f1 = Add(e1, g1);
    const int16_t f2 = Sub(e1, g1);
    const int16_t f3 = Sub(e0, g0);
    return {Add(f0, p0), Add(f1, q0), Add(f2, q1), Add(f3, p2),
            Sub(f3, p2), Sub(f2, q1), Sub(f1, q0), Sub(f0, p0)};
}

/// Blocks of 8 rows round by a fixed checkerboard: exact halves go up where x + y is even, and down
/// elsewhere. Kept.
Line<8> RoundColumn(Line<8> r, int32_t x, int32_t depth) {
    for (int32_t y = 0; y < 8; ++y) {
        const int32_t half = PrxSampleHalf(depth) - ((x + y) & 1);
        r[y] = Add(r[y], static_cast<int16_t>(half));
    }
    return r;
}

Line<8> FinishColumn(const Line<8>& r, int32_t x, int32_t depth) {
    return RoundColumn(TransformColumn(r), x, depth);
}

/// Blocks of 4 and 2 rows add the half to their first row before all else, in all columns alike. Kept.
Line<4> FinishColumn(const Line<4>& r, int32_t /*x*/, int32_t depth) {
    const int16_t first = Add(r[0], static_cast<int16_t>(PrxSampleHalf(depth)));
    const int16_t o0 = Add(r[1], PrxMulHigh(r[3], prxTan2));
    const int16_t o1 = Sub(PrxMulHigh(r[1], prxTan2), r[3]);
    const int16_t e0 = Add(first, r[2]);
    const int16_t e1 = Sub(first, r[2]);
    return {Add(e0, o0), Add(e1, o1), Sub(e1, o1), Sub(e0, o0)};
}

Line<2> FinishColumn(const Line<2>& r, int32_t /*x*/, int32_t depth) {
    const int16_t first = Add(r[0], static_cast<int16_t>(PrxSampleHalf(depth)));
    return {Add(first, r[1]), Sub(first, r[1])};
}

template <int32_t Width, int32_t Height>
void TransformBlock(const int16_t* coefficients, int16_t* samples, int32_t depth, const int16_t* quantTable) {
    std::array<Line<Width>, Height> rows;
    for (int32_t y = 0; y < Height; ++y) {
        WideLine<Width> row;
        for (int32_t x = 0; x < Width; ++x)
            row[x] = PrxDequantise(coefficients[y * Width + x], quantTable[y * 8 + x]);
        rows[y] = TransformRow(row, prxTransformRows<Height>[y]);
    }
    for (int32_t x = 0; x < Width; ++x) {
        Line<Height> column;
        for (int32_t y = 0; y < Height; ++y)
            column[y] = rows[y][x];
        column = FinishColumn(column, x, depth);
        for (int32_t y = 0; y < Height; ++y)
            samples[y * Width + x] = static_cast<int16_t>(column[y] >> PrxSampleShift(depth));
    }
}

template <int32_t Width, int32_t Height>
void TransformBlocks(const int16_t* coefficients, int16_t* samples, int32_t blockCount, int32_t depth,
                     const int16_t* quantTable) {
    constexpr int32_t size = Width * Height;
    for (int32_t block = 0; block < blockCount; ++block)
        TransformBlock<Width, Height>(coefficients + block * size, samples + block * size, depth, quantTable);
}

/// By `hShift`, then by `vShift`. Pairs that no mode makes have none.
constexpr PrxInverseTransform scalarTransforms[4][4] = {
    {TransformBlocks<8, 8>, TransformBlocks<8, 4>, nullptr, nullptr},
    {TransformBlocks<4, 8>, TransformBlocks<4, 4>, TransformBlocks<4, 2>, nullptr},
    {nullptr, TransformBlocks<2, 4>, PrxInverseTransform2x2, PrxInverseTransform2x1},
    {nullptr, nullptr, PrxInverseTransform1x2, PrxInverseTransform1x1},
};

} // namespace

PrxInverseTransform PrxScalarInverseTransform(int32_t hShift, int32_t vShift) {
    if (hShift < 0 || hShift > 3 || vShift < 0 || vShift > 3) return nullptr;
    return scalarTransforms[hShift][vShift];
}

PrxInverseTransform PrxSelectInverseTransform(int32_t hShift, int32_t vShift) {
    const PrxInverseTransform vector = PrxVectorInverseTransform(hShift, vShift);
    return vector != nullptr ? vector : PrxScalarInverseTransform(hShift, vShift);
}
