// Joins the codes of vectors and hands them to a writer in batches. For inclusion once for each instruction
// set, as Highway does it.

#if defined(CORVEX_PRORES_PRX_CODE_BATCH_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef CORVEX_PRORES_PRX_CODE_BATCH_INL_H
#undef CORVEX_PRORES_PRX_CODE_BATCH_INL_H
#else
#define CORVEX_PRORES_PRX_CODE_BATCH_INL_H
#endif

#include "prores/encoder/PrxBitWriter.h"
#include "prores/encoder/PrxCodeGroups-inl.h"

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

HWY_BEFORE_NAMESPACE();
namespace prx_code_batch {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using prx_code_groups::HWY_NAMESPACE::D16;
using prx_code_groups::HWY_NAMESPACE::DI16;
using prx_code_groups::HWY_NAMESPACE::Group;
using prx_code_groups::HWY_NAMESPACE::groupSize;
using prx_code_groups::HWY_NAMESPACE::V16;

using D32 = hn::RepartitionToWide<D16>;
using D64 = hn::RepartitionToWide<D32>;
using V32 = hn::Vec<D32>;
using V64 = hn::Vec<D64>;

/// Codes and their lengths.
template <class V>
struct Codes {
    V bits;
    V length;
};

/// The even lanes, widened, and the odd ones.
HWY_INLINE V32 Even(V16 v) { return hn::And(hn::BitCast(D32(), v), hn::Set(D32(), 0xFFFF)); }
HWY_INLINE V32 Odd(V16 v) { return hn::ShiftRight<16>(hn::BitCast(D32(), v)); }
HWY_INLINE V64 Even(V32 v) { return hn::And(hn::BitCast(D64(), v), hn::Set(D64(), 0xFFFFFFFF)); }
HWY_INLINE V64 Odd(V32 v) { return hn::ShiftRight<32>(hn::BitCast(D64(), v)); }

/// Each code of `first` and then that of `last`.
template <class V>
HWY_INLINE Codes<V> Join(const Codes<V>& first, const Codes<V>& last) {
    return {hn::Or(hn::Shl(first.bits, last.length), last.bits), hn::Add(first.length, last.length)};
}

/// Codes on their way to a writer, which gets none from elsewhere before `Flush`.
class CodeBatch {
    static constexpr uint32_t longestCode = PrxBitWriter::longestAppended / 2;

public:
    HWY_INLINE explicit CodeBatch(PrxBitWriter& writer) : writer_(writer) {}

    /// Bits that no group passes whose codes are as short as `Add` needs them.
    static constexpr size_t mostBits = groupSize * longestCode;

    /// Whether all codes are as short as `Add` needs them: two make one that a writer can append.
    static HWY_INLINE bool Takes(const Group& group) {
        const DI16 d;
        const auto length = hn::BitCast(d, Lengths(group));
        return hn::AllFalse(d, hn::Gt(length, hn::Set(d, int16_t{longestCode})));
    }

    /// Bits of a group that it takes.
    static HWY_INLINE size_t BitsOf(const Group& group) {
        const hn::Repartition<uint8_t, D16> d;
        return hn::GetLane(hn::SumOfLanes(D64(), hn::SumsOf8(hn::BitCast(d, Lengths(group)))));
    }

    /// Whether a group of `bits` can be added now, under the writer's budget and before the next `Flush`.
    HWY_INLINE bool HasRoom(size_t bits) const {
        return waitingBits_ + bits <= writer_.RoomToAppend() && count_ <= capacity - groupSize / 2;
    }

    /// Adds a group that it takes and has room for. `bits` are no less than the group's own.
    HWY_INLINE void Add(const Group& group, size_t bits) {
        const V16 lengths = Lengths(group);
        const Codes<V32> even = {
            hn::Or(hn::Shl(Even(group.firstBits), Even(group.lastLength)), Even(group.lastBits)),
            Even(lengths)};
        const Codes<V32> odd = {
            hn::Or(hn::Shl(Odd(group.firstBits), Odd(group.lastLength)), Odd(group.lastBits)), Odd(lengths)};
        AddPairs(Join<V64>({Even(even.bits), Even(even.length)}, {Even(odd.bits), Even(odd.length)}),
                 Join<V64>({Odd(even.bits), Odd(even.length)}, {Odd(odd.bits), Odd(odd.length)}));
        waitingBits_ += bits;
    }

    /// Hands the codes to the writer. Not inlined, so that they go through memory: that is faster than to
    /// take them from vectors one by one.
    HWY_NOINLINE void Flush() {
        writer_.AppendCodes(bits_, lengths_, count_);
        count_ = 0;
        waitingBits_ = 0;
    }

private:
    static constexpr size_t capacity = 1024;

    static HWY_INLINE V16 Lengths(const Group& group) { return hn::Add(group.firstLength, group.lastLength); }

    HWY_INLINE void AddPairs(const Codes<V64>& even, const Codes<V64>& odd) {
        const D64 d;
        const hn::RebindToSigned<D64> di;
        const Codes<V64> quads = Join(even, odd);
        const auto longest = hn::Set(di, int64_t{PrxBitWriter::longestAppended});
        if (hn::AllFalse(di, hn::Gt(hn::BitCast(di, quads.length), longest))) {
            hn::StoreU(quads.bits, d, bits_ + count_);
            hn::StoreU(quads.length, d, lengths_ + count_);
            count_ += groupSize / 4;
        } else {
            hn::StoreInterleaved2(even.bits, odd.bits, d, bits_ + count_);
            hn::StoreInterleaved2(even.length, odd.length, d, lengths_ + count_);
            count_ += groupSize / 2;
        }
    }

    PrxBitWriter& writer_;
    size_t count_ = 0;
    size_t waitingBits_ = 0;
    alignas(64) uint64_t bits_[capacity];
    alignas(64) uint64_t lengths_[capacity];
};

} // namespace HWY_NAMESPACE
} // namespace prx_code_batch
HWY_AFTER_NAMESPACE();

#endif

#endif
