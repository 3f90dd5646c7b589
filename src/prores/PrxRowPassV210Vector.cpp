#include "prores/PrxRowPassV210Vector.h"

#include "prores/PrxRowPassV210.h"
#include "prores/PrxWordShuffle.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "prores/PrxRowPassV210Vector.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

#include "prores/PrxBlockRows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace prx_row_pass_v210 {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

// Without vectors there is nothing to gain on the scalar form.
PrxRowPass PickRowPass() { return nullptr; }

#else

namespace hn = hwy::HWY_NAMESPACE;
namespace rows = prx_block_rows::HWY_NAMESPACE;

using DBytes = rows::DRows;
using DWord32 = hn::Repartition<uint32_t, DBytes>;
using VBytes = hn::Vec<DBytes>;
using VWord32 = hn::Vec<DWord32>;

HWY_INLINE VWord32 Pick(VBytes words, const PrxWordShuffle& shuffle) {
    const DBytes d;
    return hn::BitCast(DWord32(), hn::TableLookupBytesOr0(words, hn::LoadDup128(d, shuffle.data())));
}

/// Packs one group in each 16 bytes, from its first and its last eight words.
HWY_INLINE VBytes PackGroups(VBytes first, VBytes last) {
    // The first two codes of each word, and the third.
    alignas(16) static constexpr PrxWordShuffle pairsOfFirst =
        PrxShuffleOfWords({0, 1, 3, 4, -1, -1, -1, -1});
    alignas(16) static constexpr PrxWordShuffle pairsOfLast = PrxShuffleOfWords({-1, -1, -1, -1, 2, 3, 5, 6});
    alignas(16) static constexpr PrxWordShuffle thirdsOfFirst =
        PrxShuffleOfWords({2, -1, 5, -1, -1, -1, -1, -1});
    alignas(16) static constexpr PrxWordShuffle thirdsOfLast =
        PrxShuffleOfWords({-1, -1, -1, -1, 4, -1, 7, -1});
    const DWord32 d;
    const VWord32 pairs = hn::Or(Pick(first, pairsOfFirst), Pick(last, pairsOfLast));
    const VWord32 thirds = hn::Or(Pick(first, thirdsOfFirst), Pick(last, thirdsOfLast));
    const VWord32 code0 = hn::And(hn::ShiftRight<6>(pairs), hn::Set(d, 0x3FF));
    const VWord32 code1 = hn::And(hn::ShiftRight<12>(pairs), hn::Set(d, 0x3FF << 10));
    const VWord32 code2 = hn::ShiftLeft<20>(hn::ShiftRight<6>(thirds));
    return hn::BitCast(DBytes(), hn::Or(hn::Or(code0, code1), code2));
}

void Pack(const uint8_t* pixels, uint8_t* groups, int32_t count) {
    constexpr auto step = static_cast<int32_t>(rows::rowCount);
    const DBytes d;
    int32_t done = 0;
    for (; done + step <= count; done += step) {
        const VBytes first = rows::LoadRows(d, pixels, 24, step);
        const VBytes last = rows::LoadRows(d, pixels + 8, 24, step);
        hn::StoreU(PackGroups(first, last), d, groups);
        pixels += 24 * step;
        groups += 16 * step;
    }
    PrxPackV210Groups(pixels, groups, count - done);
}

void RowPass(const PrxRowPassJob& job, const PrxWriterSetup&) { PrxRunV210RowPass(job, Pack); }

PrxRowPass PickRowPass() { return RowPass; }

#endif

} // namespace HWY_NAMESPACE
} // namespace prx_row_pass_v210
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace prx_row_pass_v210 {
namespace {
HWY_EXPORT(PickRowPass);
} // namespace
} // namespace prx_row_pass_v210

PrxRowPass PrxSelectVectorV210RowPass() {
    using namespace prx_row_pass_v210;
    return HWY_DYNAMIC_DISPATCH(PickRowPass)();
}
#endif
