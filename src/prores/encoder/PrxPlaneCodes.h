#pragma once

#include "prores/encoder/PrxLevelList.h"
#include "prores/encoder/PrxPlaneCoder.h"

/// The codes of a plane one by one, for any `Writer` that has `WriteBits` and `Bits` of `PrxBitWriter`.

/// Counts bits in place of writing them.
class PrxBitCounter {
public:
    bool WriteBits(uint64_t, uint32_t length) {
        bits_ += length;
        return true;
    }
    uint64_t Bits() const { return bits_; }

private:
    uint64_t bits_ = 0;
};

/// Codes the first DC value. Returns whether it fitted. Sets `dcChanges` and `dcBits`.
template <class Writer>
bool PrxCodeFirstDc(const PrxPlaneLevels& plane, Writer& writer, PrxPlaneStatistics* statistics);

/// Codes the later DC values, of the blocks `from` (1 or more) to before `to`. Returns whether all fitted.
/// Adds to `dcChanges` and `dcBits`.
template <class Writer>
bool PrxCodeDcDifferences(const PrxPlaneLevels& plane, uint32_t from, uint32_t to, Writer& writer,
                          PrxPlaneStatistics* statistics);

/// Codes the levels from `from` to before `to`. Returns the first one that did not fit, or `to`. Adds to
/// `runBits`.
template <class Writer>
size_t PrxCodeLevels(const PrxLevelList& list, size_t from, size_t to, Writer& writer,
                     PrxPlaneStatistics* statistics);

extern template bool PrxCodeFirstDc(const PrxPlaneLevels&, PrxBitCounter&, PrxPlaneStatistics*);
extern template bool PrxCodeFirstDc(const PrxPlaneLevels&, PrxBitWriter&, PrxPlaneStatistics*);
extern template bool PrxCodeDcDifferences(const PrxPlaneLevels&, uint32_t, uint32_t, PrxBitCounter&,
                                          PrxPlaneStatistics*);
extern template bool PrxCodeDcDifferences(const PrxPlaneLevels&, uint32_t, uint32_t, PrxBitWriter&,
                                          PrxPlaneStatistics*);
extern template size_t PrxCodeLevels(const PrxLevelList&, size_t, size_t, PrxBitCounter&,
                                     PrxPlaneStatistics*);
extern template size_t PrxCodeLevels(const PrxLevelList&, size_t, size_t, PrxBitWriter&, PrxPlaneStatistics*);
