// Vectors on the way from rows of pixels to the blocks of a macroblock. For inclusion once for each
// instruction set, as Highway does it.

#if defined(CORVEX_PRORES_PRX_INPUT_ROWS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef CORVEX_PRORES_PRX_INPUT_ROWS_INL_H
#undef CORVEX_PRORES_PRX_INPUT_ROWS_INL_H
#else
#define CORVEX_PRORES_PRX_INPUT_ROWS_INL_H
#endif

#include <hwy/highway.h>

#include "prores/PrxBlockRows-inl.h"

#include <array>
#include <cstddef>
#include <cstdint>

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

HWY_BEFORE_NAMESPACE();
namespace prx_input_rows {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
namespace rows = prx_block_rows::HWY_NAMESPACE;

// A vector holds 16 bytes of one or more rows, each row in a block of its own that no operation leaves.
using DByte = rows::DRows;
using DWord = hn::Repartition<uint16_t, DByte>;
using DPair = hn::Repartition<uint32_t, DByte>;
using DQuad = hn::Repartition<uint64_t, DByte>;
using DSample = hn::Repartition<int16_t, DByte>;
using DInt = hn::Repartition<int32_t, DByte>;
using DFloat = hn::Repartition<float, DByte>;
using VByte = hn::Vec<DByte>;
using VWord = hn::Vec<DWord>;
using VPair = hn::Vec<DPair>;
using VSample = hn::Vec<DSample>;
using VInt = hn::Vec<DInt>;
using VFloat = hn::Vec<DFloat>;

/// Rows of a vector.
inline constexpr int32_t rowCount = static_cast<int32_t>(rows::rowCount);

/// The 16 bytes at `source` of each row.
HWY_INLINE VByte Load(const uint8_t* source, ptrdiff_t rowBytes) {
    return rows::LoadRows(DByte(), source, rowBytes, rowCount);
}

using Shuffle = std::array<uint8_t, 16>;

/// The shuffle of bytes that moves whole words.
constexpr Shuffle WordShuffle(const std::array<uint8_t, 8>& words) {
    Shuffle shuffle = {};
    for (size_t i = 0; i < shuffle.size(); ++i)
        shuffle[i] = static_cast<uint8_t>(2 * words[i / 2] + i % 2);
    return shuffle;
}

HWY_INLINE VByte ShuffleBytes(VByte v, const Shuffle& shuffle) {
    return hn::TableLookupBytes(v, hn::LoadDup128(DByte(), shuffle.data()));
}
HWY_INLINE VWord ShuffleWords(VWord v, const Shuffle& shuffle) {
    return hn::BitCast(DWord(), ShuffleBytes(hn::BitCast(DByte(), v), shuffle));
}

/// The lower halves, or the upper ones, of each row of two vectors, one behind the other.
template <class V>
HWY_INLINE VWord LowerHalves(V first, V second) {
    const DQuad d;
    return hn::BitCast(DWord(), hn::InterleaveLower(d, hn::BitCast(d, first), hn::BitCast(d, second)));
}
template <class V>
HWY_INLINE VWord UpperHalves(V first, V second) {
    const DQuad d;
    return hn::BitCast(DWord(), hn::InterleaveUpper(d, hn::BitCast(d, first), hn::BitCast(d, second)));
}

/// The elements of 32 bits of each row's lower halves, or of its upper ones, in turn.
template <class V>
HWY_INLINE VWord LowerPairs(V first, V second) {
    const DPair d;
    return hn::BitCast(DWord(), hn::InterleaveLower(d, hn::BitCast(d, first), hn::BitCast(d, second)));
}
template <class V>
HWY_INLINE VWord UpperPairs(V first, V second) {
    const DPair d;
    return hn::BitCast(DWord(), hn::InterleaveUpper(d, hn::BitCast(d, first), hn::BitCast(d, second)));
}

/// Where the blocks of the rows of a macroblock's half stand, counted in samples from its left luma block.
/// The lower half's stand `halfSamples` behind those of the upper one.
enum BlockPlace : ptrdiff_t {
    leftLuma = 0,
    rightLuma = 64,
    leftCb = 256,
    leftCr = 320,
    rightCb = 512,
    rightCr = 576,
};
inline constexpr ptrdiff_t halfSamples = 128;

/// Stores samples at their rows of the left luma block, moved to the block that is meant.
HWY_INLINE void Store(VSample samples, BlockPlace place, int16_t* rowsOfHalf) {
    hn::StoreU(samples, DSample(), rowsOfHalf + place);
}

/// Has `conversion` convert the rows of each vector of a macroblock.
template <class Conversion>
HWY_INLINE void ForEachVector(const Conversion& conversion, const uint8_t* source, ptrdiff_t rowBytes,
                              int16_t* blocks) {
    for (int32_t y = 0; y < 16; y += rowCount)
        conversion.Convert(source + y * rowBytes, rowBytes, blocks + y / 8 * halfSamples + 8 * (y % 8));
}

} // namespace HWY_NAMESPACE
} // namespace prx_input_rows
HWY_AFTER_NAMESPACE();

#endif
#endif
