#include "prores/encoder/PrxForwardTransform.h"

#include "prores/PrxFixedPoint.h"
#include "prores/encoder/PrxForwardTables.h"
#include "prores/encoder/PrxForwardTransformVector.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace {

/// A row or a column of a block.
using Line = std::array<int16_t, 8>;

constexpr auto Add = PrxSaturatedAdd;
constexpr auto Sub = PrxSaturatedSub;
constexpr auto MulHigh = PrxMulHigh;

/// Transforms a column. Each result is larger than its frequency by a factor that the row pass divides by,
/// and on average too small by what the products lose: they are cut off, not rounded. Sums of samples of more
/// than 12 bits saturate. Kept.
Line TransformColumn(const Line& x) {
    const int16_t t0 = Add(x[0], x[7]), t7 = Sub(x[0], x[7]);
    const int16_t t1 = Add(x[1], x[6]), t6 = Sub(x[1], x[6]);
    const int16_t t2 = Add(x[2], x[5]), t5 = Sub(x[2], x[5]);
    const int16_t t3 = Add(x[3], x[4]), t4 = Sub(x[3], x[4]);

    const int16_t e0 = Add(t0, t3), e3 = Sub(t0, t3);
    const int16_t e1 = Add(t1, t2), e2 = Sub(t1, t2);

    // Doubled, since the high half of a product with a factor of 15 bits is half of what it stands for.
    const int16_t t5Twice = Add(t5, t5), t6Twice = Add(t6, t6);
    const int16_t sum = MulHigh(Add(t6Twice, t5Twice), prxForwardCos4);
    const int16_t difference = MulHigh(Sub(t6Twice, t5Twice), prxForwardCos4);
    const int16_t o0 = Add(t7, sum), o1 = Sub(t7, sum);
    const int16_t o2 = Add(t4, difference), o3 = Sub(t4, difference);

    // The factor of 3 pi/16 is stored less 1.
    const int16_t o1Turned = Add(MulHigh(o1, prxTan3), o1);
    const int16_t o3Turned = Add(MulHigh(o3, prxTan3), o3);
    return {Add(e0, e1),
            Add(o0, MulHigh(o2, prxTan1)),
            Add(e3, MulHigh(e2, prxTan2)),
            Sub(o1, o3Turned),
            Sub(e0, e1),
            Add(o1Turned, o3),
            Sub(MulHigh(e3, prxTan2), e2),
            Sub(MulHigh(o0, prxTan1), o2)};
}

/// A sum as the row pass leaves it: it wraps at 32 bits, and only then is shifted and saturated.
int16_t RowResult(int64_t sum) { return PrxSaturate16(static_cast<int32_t>(sum) >> prxForwardRowShift); }

Line TransformRow(const Line& x, size_t y) {
    const PrxForwardGroups& groups = prxForwardGroups[prxTransformRows<8>[y].rowClass];
    const Line pairs = {Add(x[0], x[7]), Add(x[1], x[6]), Sub(x[0], x[7]), Sub(x[1], x[6]),
                        Add(x[2], x[5]), Add(x[3], x[4]), Sub(x[2], x[5]), Sub(x[3], x[4])};
    Line results;
    for (size_t i = 0; i < results.size(); ++i) {
        const size_t group = i / 4 * 2;
        int64_t sum = i == 0 ? prxForwardFirstRounders[y] : prxForwardHalf;
        for (size_t k = i % 4 * 2; k < i % 4 * 2 + 2; ++k)
            sum += pairs[k] * groups[group][k] + int64_t{pairs[(k + 4) % 8]} * groups[group + 1][k];
        results[i] = RowResult(sum);
    }
    return results;
}

/// For blocks of equal samples, whose zeros the row rounders would spoil. Four times a sample of more than 14
/// bits wraps around. Kept.
void SetFlat(int16_t* block) {
    block[0] = static_cast<int16_t>(4 * block[0]);
    std::fill(block + 1, block + 64, int16_t{0});
}

bool IsFlat(const int16_t* block) { return std::equal(block + 1, block + 64, block); }

} // namespace

void PrxForwardDct(int16_t* block) {
    if (IsFlat(block)) {
        SetFlat(block);
        return;
    }
    for (size_t x = 0; x < 8; ++x) {
        Line column;
        for (size_t y = 0; y < 8; ++y)
            column[y] = block[8 * y + x];
        column = TransformColumn(column);
        for (size_t y = 0; y < 8; ++y)
            block[8 * y + x] = column[y];
    }
    for (size_t y = 0; y < 8; ++y) {
        Line row;
        std::copy_n(block + 8 * y, 8, row.begin());
        row = TransformRow(row, y);
        std::copy(row.begin(), row.end(), block + 8 * y);
    }
}

void PrxScalarForwardTransform(int16_t* blocks, int32_t blockCount) {
    for (int32_t block = 0; block < blockCount; ++block)
        PrxForwardDct(blocks + 64 * block);
}

PrxForwardTransform PrxSelectForwardTransform() {
    const PrxForwardTransform vector = PrxVectorForwardTransform();
    return vector != nullptr ? vector : PrxScalarForwardTransform;
}
