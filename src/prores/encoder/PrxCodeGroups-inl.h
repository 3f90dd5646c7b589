// The code words of a plane, as many at once as a vector has lanes. For inclusion once for each instruction
// set, as Highway does it.

#if defined(CORVEX_PRORES_PRX_CODE_GROUPS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef CORVEX_PRORES_PRX_CODE_GROUPS_INL_H
#undef CORVEX_PRORES_PRX_CODE_GROUPS_INL_H
#else
#define CORVEX_PRORES_PRX_CODE_GROUPS_INL_H
#endif

#include "prores/encoder/PrxCodeWords-inl.h"
#include "prores/encoder/PrxPlaneWalk-inl.h"

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

HWY_BEFORE_NAMESPACE();
namespace prx_code_groups {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using prx_code_words::HWY_NAMESPACE::CodeWords;
using prx_code_words::HWY_NAMESPACE::CodeWordsOf;
using prx_plane_walk::HWY_NAMESPACE::OrderedLevels;

using D16 = hn::CappedTag<uint16_t, PrxLevelList::padding>;
using DI16 = hn::RebindToSigned<D16>;
using V16 = hn::Vec<D16>;
using VI16 = hn::Vec<DI16>;

inline constexpr size_t groupSize = hn::MaxLanes(D16());

/// A vector of codes, each in two parts that follow each other. In a lane that stands for nothing all is 0.
struct Group {
    V16 firstBits;
    V16 firstLength;
    V16 lastBits;
    V16 lastLength;
};

/// The levels of a list from `from` on: the run, and the magnitude with the sign.
HWY_INLINE Group LevelGroup(const PrxLevelList& list, size_t from) {
    const D16 d;
    const auto i = static_cast<ptrdiff_t>(from);
    const V16 one = hn::Set(d, uint16_t{1});
    const V16 level = hn::LoadU(d, &list.Level(i));
    const V16 magnitude = hn::ShiftRight<1>(level);
    const V16 magnitudeBefore = hn::ShiftRight<1>(hn::LoadU(d, &list.Level(i - 1)));
    const V16 before = hn::LoadU(d, &list.Position(i - 1));
    const V16 run = hn::Sub(hn::Sub(hn::LoadU(d, &list.Position(i)), before), one);
    const V16 runBefore = hn::Sub(hn::Sub(before, hn::LoadU(d, &list.Position(i - 2))), one);

    const CodeWords<V16> runs = CodeWordsOf(d, prxRunBookTables, run, runBefore);
    const CodeWords<V16> levels =
        CodeWordsOf(d, prxLevelBookTables, hn::Sub(magnitude, one), magnitudeBefore);
    const V16 withSign = hn::Or(hn::Add(levels.bits, levels.bits), hn::And(level, one));
    const auto live = hn::FirstN(d, list.count - from);
    return {hn::IfThenElseZero(live, runs.bits), hn::IfThenElseZero(live, runs.length),
            hn::IfThenElseZero(live, withSign), hn::IfThenElseZero(live, hn::Add(levels.length, one))};
}

/// The DC values of a plane.
class DcValues {
public:
    HWY_INLINE DcValues(const OrderedLevels& ordered, size_t blockCount) : count_(blockCount) {
        const D16 d;
        const DI16 di;
        V16 largest = hn::Zero(d);
        for (size_t i = 0; i < blockCount; i += groupSize) {
            const V16 level = hn::LoadU(d, ordered.values + i);
            const V16 magnitude = hn::ShiftRight<1>(level);
            const VI16 negative = hn::Neg(hn::BitCast(di, hn::And(level, hn::Set(d, uint16_t{1}))));
            hn::StoreU(hn::Sub(hn::Xor(hn::BitCast(di, magnitude), negative), negative), di,
                       &values_[lead + i]);
            largest = hn::Max(largest, hn::IfThenElseZero(hn::FirstN(d, blockCount - i), magnitude));
        }
        fits_ = hn::AllFalse(di, hn::Gt(hn::BitCast(di, largest), hn::Set(di, largestMagnitude)));
        values_[lead - 1] = static_cast<int16_t>(values_[lead] - static_cast<int16_t>(prxFirstDcDelta));
    }

    /// Whether differences, and their codes, are all in the range of `Differences`.
    bool Fit() const { return fits_; }

    /// How many of the values that `Differences` takes are not equal to the one before.
    HWY_INLINE int32_t CountChanges(size_t from) const {
        const DI16 d;
        const VI16 live = hn::IfThenElseZero(hn::FirstN(d, count_ - from), DifferenceAt(from));
        return static_cast<int32_t>(hn::CountTrue(d, hn::Ne(live, hn::Zero(d))));
    }

    /// The differences to the value before, from block `from` on, 1 or more.
    HWY_INLINE Group Differences(size_t from) const {
        const D16 d;
        const VI16 difference = DifferenceAt(from);
        const VI16 previous = DifferenceAt(from - 1);
        const VI16 flip = hn::ShiftRight<15>(previous);
        const VI16 turned = hn::Sub(hn::Xor(difference, flip), flip);
        const VI16 folded = hn::Xor(hn::Add(turned, turned), hn::ShiftRight<15>(turned));
        const CodeWords<V16> words =
            CodeWordsOf(d, prxDcBookTables, hn::BitCast(d, folded), hn::BitCast(d, hn::Abs(previous)));
        const auto live = hn::FirstN(d, count_ - from);
        return {hn::Zero(d), hn::Zero(d), hn::IfThenElseZero(live, words.bits),
                hn::IfThenElseZero(live, words.length)};
    }

private:
    HWY_INLINE VI16 DifferenceAt(size_t from) const {
        const DI16 d;
        return hn::Sub(hn::LoadU(d, &values_[lead + from]), hn::LoadU(d, &values_[lead + from - 1]));
    }

    static constexpr size_t lead = 32;
    static constexpr int16_t largestMagnitude = 8000; ///< so that folded differences stay below 32768

    alignas(64) int16_t values_[lead + 32 + PrxLevelList::padding] = {};
    size_t count_;
    bool fits_;
};

} // namespace HWY_NAMESPACE
} // namespace prx_code_groups
HWY_AFTER_NAMESPACE();

#endif

#endif
