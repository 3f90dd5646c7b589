// Gathers the levels of a plane into coding order and lists those that are not zero, as `PrxWalkPlane` does.
// For inclusion once for each instruction set, as Highway does it.

#if defined(CORVEX_PRORES_PRX_PLANE_WALK_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef CORVEX_PRORES_PRX_PLANE_WALK_INL_H
#undef CORVEX_PRORES_PRX_PLANE_WALK_INL_H
#else
#define CORVEX_PRORES_PRX_PLANE_WALK_INL_H
#endif

#include "prores/encoder/PrxPlaneWalk.h"

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

HWY_BEFORE_NAMESPACE();
namespace prx_plane_walk {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// Fewest blocks that are gathered in vectors.
inline constexpr uint32_t minBlocks = 8;

/// Most levels of a vector, 8 of each 128 bits.
inline constexpr size_t maxLanes = 32;

/// A plane's levels in coding order, the DC values first, and zeros behind them.
struct OrderedLevels {
    alignas(64) uint16_t values[64 * 32 + maxLanes];
};

/// 8 values of each of several blocks, `Stride` values apart, in each 128 bits.
template <size_t Stride, class D>
HWY_INLINE hn::Vec<D> LoadStrided(D d, const uint16_t* from) {
    if constexpr (hn::MaxLanes(D()) == 8) {
        return hn::LoadU(d, from);
    } else {
        const hn::Half<D> half;
        return hn::Combine(d, LoadStrided<Stride>(half, from + hn::MaxLanes(half) / 8 * Stride),
                           LoadStrided<Stride>(half, from));
    }
}

/// Transposes 8 by 8 values in each 128 bits.
template <class D, class V = hn::Vec<D>>
HWY_INLINE void Transpose(D d, V (&v)[8]) {
    const hn::RepartitionToWide<D> d32;
    const hn::RepartitionToWide<decltype(d32)> d64;
    hn::Vec<decltype(d32)> pairs[8];
    for (size_t i = 0; i < 4; ++i) {
        const size_t at = 2 * i;
        pairs[at] = hn::BitCast(d32, hn::InterleaveLower(d, v[at], v[at + 1]));
        pairs[at + 1] = hn::BitCast(d32, hn::InterleaveUpper(d, v[at], v[at + 1]));
    }
    hn::Vec<decltype(d64)> quads[8];
    for (size_t i = 0; i < 2; ++i) {
        for (size_t upper = 0; upper < 2; ++upper) {
            const auto a = pairs[4 * i + upper];
            const auto b = pairs[4 * i + 2 + upper];
            quads[4 * i + 2 * upper] = hn::BitCast(d64, hn::InterleaveLower(d32, a, b));
            quads[4 * i + 2 * upper + 1] = hn::BitCast(d64, hn::InterleaveUpper(d32, a, b));
        }
    }
    for (size_t i = 0; i < 4; ++i) {
        v[2 * i] = hn::BitCast(d, hn::InterleaveLower(d64, quads[i], quads[4 + i]));
        v[2 * i + 1] = hn::BitCast(d, hn::InterleaveUpper(d64, quads[i], quads[4 + i]));
    }
}

/// Gathers as many blocks as a vector has lanes, from `Distance` values to the next.
template <size_t Distance, class D>
HWY_INLINE void OrderBlocks(D d, const uint16_t* from, const uint8_t* places, size_t blockCount,
                            uint16_t* to) {
    for (size_t y = 0; y < 8; ++y) {
        hn::Vec<D> v[8];
        for (size_t i = 0; i < 8; ++i)
            v[i] = LoadStrided<8 * Distance>(d, from + i * Distance + 8 * y);
        Transpose(d, v);
        for (size_t x = 0; x < 8; ++x)
            hn::StoreU(v[x], d, to + places[8 * y + x] * blockCount);
    }
}

/// Gathers all blocks in vectors of `D`, or of a part of its size for a plane that has fewer.
template <class D>
HWY_INLINE void OrderInVectors(D d, const PrxPlaneLevels& plane, const uint8_t* places, uint16_t* to) {
    if constexpr (hn::MaxLanes(D()) > minBlocks) {
        if (plane.blockCount < hn::MaxLanes(d)) {
            OrderInVectors(hn::Half<D>(), plane, places, to);
            return;
        }
    }
    for (size_t block = 0; block < plane.blockCount; block += hn::MaxLanes(d)) {
        const uint16_t* from = plane.levels + block * plane.blockDistance;
        if (plane.blockDistance == 64) {
            OrderBlocks<64>(d, from, places, plane.blockCount, to + block);
        } else {
            OrderBlocks<128>(d, from, places, plane.blockCount, to + block);
        }
    }
}

HWY_INLINE void OrderOneByOne(const PrxPlaneLevels& plane, const uint8_t* places, uint16_t* to) {
    for (size_t block = 0; block < plane.blockCount; ++block) {
        for (size_t i = 0; i < 64; ++i)
            to[places[i] * plane.blockCount + block] = plane.levels[block * plane.blockDistance + i];
    }
}

HWY_INLINE void OrderPlane(const PrxPlaneLevels& plane, OrderedLevels* ordered) {
    const hn::CappedTag<uint16_t, maxLanes> d;
    const uint8_t* places = PrxCodingPlaces(plane.interlaced);
    if (plane.blockCount >= minBlocks) {
        OrderInVectors(d, plane, places, ordered->values);
    } else {
        OrderOneByOne(plane, places, ordered->values);
    }
    hn::StoreU(hn::Zero(d), d, ordered->values + size_t{64} * plane.blockCount);
}

// 16-bit lanes are moved together best in vectors of this size.
#if HWY_TARGET == HWY_AVX3_DL
using DPacked = hn::CappedTag<uint16_t, maxLanes>;
#elif HWY_TARGET == HWY_AVX3
using DPacked = hn::CappedTag<uint16_t, 16>;
#else
using DPacked = hn::CappedTag<uint16_t, 8>;
#endif

/// Lists the AC levels that are not zero.
HWY_INLINE void ListLevels(const OrderedLevels& ordered, size_t blockCount, PrxLevelList* list) {
    const DPacked d;
    const uint16_t* from = ordered.values + blockCount;
    const auto magnitude = hn::Set(d, uint16_t{0xFFFE});
    const auto step = hn::Set(d, static_cast<uint16_t>(hn::MaxLanes(d)));
    auto positions = hn::Iota(d, 0);
    size_t listed = 0;
    for (size_t i = 0; i < 63 * blockCount; i += hn::MaxLanes(d)) {
        const auto levels = hn::LoadU(d, from + i);
        const auto live = hn::Ne(hn::And(levels, magnitude), hn::Zero(d));
        hn::StoreU(hn::Compress(levels, live), d, &list->Level(static_cast<ptrdiff_t>(listed)));
        hn::StoreU(hn::Compress(positions, live), d, &list->Position(static_cast<ptrdiff_t>(listed)));
        listed += hn::CountTrue(d, live);
        positions = hn::Add(positions, step);
    }
    list->count = listed;
}

} // namespace HWY_NAMESPACE
} // namespace prx_plane_walk
HWY_AFTER_NAMESPACE();

#endif

#endif
