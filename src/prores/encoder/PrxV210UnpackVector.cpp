#include "prores/encoder/PrxV210UnpackVector.h"

#include "prores/PrxWordShuffle.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "prores/encoder/PrxV210UnpackVector.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace prx_v210_unpack {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

// Without vectors there is nothing to gain on the scalar form.
PrxV210Unpacker PickUnpacker() { return nullptr; }

#else

namespace hn = hwy::HWY_NAMESPACE;

/// A group is a vector. Wider ones gain nothing: the groups would have to be stored one by one.
using DBytes = hn::FixedTag<uint8_t, 16>;
using DWord32 = hn::FixedTag<uint32_t, 4>;
using VBytes = hn::Vec<DBytes>;
using VWord32 = hn::Vec<DWord32>;

HWY_INLINE VBytes Pick(VWord32 words, const PrxWordShuffle& shuffle) {
    const DBytes d;
    return hn::TableLookupBytesOr0(hn::BitCast(d, words), hn::Load(d, shuffle.data()));
}

HWY_INLINE void UnpackGroup(const uint8_t* group, uint8_t* pixels) {
    // From the first two codes of each word, and from the third.
    alignas(16) static constexpr PrxWordShuffle firstOfPairs = PrxShuffleOfWords({0, 1, -1, 2, 3, -1, 4, 5});
    alignas(16) static constexpr PrxWordShuffle firstOfThirds =
        PrxShuffleOfWords({-1, -1, 0, -1, -1, 2, -1, -1});
    alignas(16) static constexpr PrxWordShuffle lastOfPairs =
        PrxShuffleOfWords({-1, 6, 7, -1, -1, -1, -1, -1});
    alignas(16) static constexpr PrxWordShuffle lastOfThirds =
        PrxShuffleOfWords({4, -1, -1, 6, -1, -1, -1, -1});
    const DWord32 d;
    const VWord32 packed = hn::BitCast(d, hn::LoadU(DBytes(), group));
    const VWord32 code0 = hn::And(hn::ShiftLeft<6>(packed), hn::Set(d, 0xFFC0));
    const VWord32 code1 = hn::And(hn::ShiftLeft<12>(packed), hn::Set(d, 0xFFC00000));
    const VWord32 thirds = hn::And(hn::ShiftRight<14>(packed), hn::Set(d, 0xFFC0));
    const VWord32 pairs = hn::Or(code0, code1);
    hn::StoreU(hn::Or(Pick(pairs, firstOfPairs), Pick(thirds, firstOfThirds)), DBytes(), pixels);
    hn::StoreU(hn::Or(Pick(pairs, lastOfPairs), Pick(thirds, lastOfThirds)), DBytes(), pixels + 16);
}

void Unpack(const uint8_t* groups, uint8_t* pixels, int32_t count) {
    for (int32_t group = 0; group < count; ++group)
        UnpackGroup(groups + 16 * static_cast<ptrdiff_t>(group), pixels + 24 * static_cast<ptrdiff_t>(group));
}

PrxV210Unpacker PickUnpacker() { return Unpack; }

#endif

} // namespace HWY_NAMESPACE
} // namespace prx_v210_unpack
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace prx_v210_unpack {
namespace {
HWY_EXPORT(PickUnpacker);
} // namespace
} // namespace prx_v210_unpack

PrxV210Unpacker PrxSelectVectorV210Unpacker() {
    using namespace prx_v210_unpack;
    return HWY_DYNAMIC_DISPATCH(PickUnpacker)();
}
#endif
