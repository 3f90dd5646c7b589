// Vectors that hold one or more rows of an 8 by 8 block of samples: 16 bytes of the vector for each row. For
// inclusion once for each instruction set, as Highway does it.

#if defined(CORVEX_PRORES_PRX_BLOCK_ROWS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef CORVEX_PRORES_PRX_BLOCK_ROWS_INL_H
#undef CORVEX_PRORES_PRX_BLOCK_ROWS_INL_H
#else
#define CORVEX_PRORES_PRX_BLOCK_ROWS_INL_H
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

HWY_BEFORE_NAMESPACE();
namespace prx_block_rows {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// Rows of a vector: 1, 2 or 4.
#if HWY_HAVE_SCALABLE
inline constexpr size_t rowCount = 1;
#else
inline constexpr size_t rowCount = HWY_LANES(int16_t) / 8 < 4 ? HWY_LANES(int16_t) / 8 : 4;
#endif

using DRows = hn::FixedTag<uint8_t, 16 * rowCount>;

/// 16 bytes for each row of a vector of `D`, from addresses that are `stride` bytes apart. No more than
/// `count` rows, at least 1, are read; the last of them stands for those that the vector has beyond.
template <class D>
HWY_INLINE hn::Vec<D> LoadRows(D d, const uint8_t* in, ptrdiff_t stride, ptrdiff_t count) {
    constexpr ptrdiff_t upper = hn::MaxLanes(d) / 32;
    if constexpr (upper == 0) {
        return hn::LoadU(d, in);
    } else {
        const hn::Half<D> half;
        const ptrdiff_t skipped = HWY_MIN(upper, count - 1);
        return hn::Combine(d, LoadRows(half, in + skipped * stride, stride, count - skipped),
                           LoadRows(half, in, stride, count));
    }
}

/// Bytes of a cache line, and of a row that `StoreRows` stores.
inline constexpr size_t lineBytes = 64;

/// Stores a vector, past the caches if `Streams`: only whole lines gain by that.
template <bool Streams, class D>
HWY_INLINE void StoreVector(D d, hn::Vec<D> v, uint8_t* out) {
    if constexpr (Streams) {
        hn::Stream(v, d, out);
    } else {
        hn::StoreU(v, d, out);
    }
}

/// For each row 64 bytes, 16 of each vector one behind the other, to addresses that are `stride` bytes apart.
/// With `Streams` the addresses must be those of cache lines.
template <bool Streams, class D, class V = hn::Vec<D>>
HWY_INLINE void StoreRows(D d, V v0, V v1, V v2, V v3, uint8_t* out, ptrdiff_t stride) {
    constexpr size_t size = hn::MaxLanes(d);
    if constexpr (size == 16) {
        StoreVector<Streams>(d, v0, out);
        StoreVector<Streams>(d, v1, out + size);
        StoreVector<Streams>(d, v2, out + 2 * size);
        StoreVector<Streams>(d, v3, out + 3 * size);
    } else if constexpr (size == 32) {
        StoreVector<Streams>(d, hn::ConcatLowerLower(d, v1, v0), out);
        StoreVector<Streams>(d, hn::ConcatLowerLower(d, v3, v2), out + size);
        StoreVector<Streams>(d, hn::ConcatUpperUpper(d, v1, v0), out + stride);
        StoreVector<Streams>(d, hn::ConcatUpperUpper(d, v3, v2), out + stride + size);
    } else {
        const V even01 = hn::OddEvenBlocks(hn::SwapAdjacentBlocks(v1), v0);
        const V even23 = hn::OddEvenBlocks(hn::SwapAdjacentBlocks(v3), v2);
        const V odd01 = hn::OddEvenBlocks(v1, hn::SwapAdjacentBlocks(v0));
        const V odd23 = hn::OddEvenBlocks(v3, hn::SwapAdjacentBlocks(v2));
        StoreVector<Streams>(d, hn::ConcatLowerLower(d, even23, even01), out);
        StoreVector<Streams>(d, hn::ConcatLowerLower(d, odd23, odd01), out + stride);
        StoreVector<Streams>(d, hn::ConcatUpperUpper(d, even23, even01), out + 2 * stride);
        StoreVector<Streams>(d, hn::ConcatUpperUpper(d, odd23, odd01), out + 3 * stride);
    }
}

} // namespace HWY_NAMESPACE
} // namespace prx_block_rows
HWY_AFTER_NAMESPACE();

#endif
#endif
