// One of the lanes that PrxSliceEntropyLanes.cpp reads side by side.

#pragma once

#include "prores/PrxBitReader.h"
#include "prores/PrxCodeBooks.h"
#include "prores/PrxCodeReader.h"
#include "prores/PrxCoefficientPlaces.h"
#include "prores/PrxRunLevelContext.h"
#include "prores/PrxRunLevelTable.h"
#include "prores/PrxSliceEntropy.h"

#include <hwy/highway.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>

/// The short codes of runs and levels, by their place in a context.
namespace prx_ac_codes {

inline constexpr auto runs = PrxMakeShortCodes(prx_context::runBooks);
inline constexpr auto levels = PrxMakeShortCodes(prx_context::levelBooks);

/// Whether short codes keep what `PrxShortCode::maxZeros` promises.
constexpr bool AreShort() {
    uint32_t longest = 0;
    for (const PrxShortCodes& codes : levels) {
        const PrxShortCode code = codes[PrxShortCode::maxZeros];
        const uint32_t valueBits = code.length - PrxShortCode::maxZeros;
        if ((int64_t{1} << valueBits) + code.offset > prxMaxLevel) return false;
        longest = std::max<uint32_t>(longest, code.length);
    }
    for (const PrxShortCodes& codes : runs)
        longest = std::max<uint32_t>(longest, codes[PrxShortCode::maxZeros].length);
    return 2 * longest + 1 <= PrxBitReader::refilledBits;
}
static_assert(AreShort());

} // namespace prx_ac_codes

/// The AC part of one component, to be read a few coefficients at a time.
class PrxAcLane {
public:
    static_assert(PrxRunLevelEntry::maxSkip < prxPlacesBehind);

    // A short code may give a run that is larger than a stream may have it. From the first AC position of the
    // most blocks that have places, such a run leads beyond the last one, which ends the lane as it has to.
    static_assert(64 * 32 - 32 <= prxMaxRun + 1);

    /// Entries of the table that a refill lasts for.
    static constexpr int stepsPerRefill = 4;
    static_assert(stepsPerRefill * PrxRunLevelTable::prefixBits <= PrxBitReader::refilledBits);

    HWY_INLINE PrxAcLane(const PrxBitReader& reader, const PrxSliceComponent& component,
                         const uint16_t* places, uint32_t coefLimit, const PrxRunLevelTable& table)
        : reader_(reader), entries_(table.Entries(prx_context::first)),
          place_(places + (size_t{1} << component.log2BlockCount)),
          end_(places + (size_t{coefLimit} << component.log2BlockCount)),
          coefficients_(component.coefficients) {}

    HWY_INLINE bool Done() const { return end_ == nullptr; }
    HWY_INLINE void Refill() { reader_.Refill(); }

    /// Reads what one entry of the table holds. With the result false, that was nothing, and one coefficient
    /// was read instead, or the lane is done.
    HWY_INLINE bool Advance(const PrxRunLevelTable& table) {
        if (HWY_LIKELY(Step(table))) return true;
        ReadOne(table);
        return false;
    }

private:
    struct CoefficientRead {
        PrxBitReader reader;
        std::optional<PrxCoefficient> coefficient;
    };

    static HWY_NOINLINE CoefficientRead ReadLongCoefficient(PrxBitReader reader, uint32_t context) {
        const auto coefficient =
            PrxReadCoefficient(reader, prx_context::RunBook(context), prx_context::LevelBook(context));
        return {reader, coefficient};
    }

    /// Reads what one entry of the table holds, at most `prefixBits` bits. False if that is nothing or goes
    /// beyond the last position.
    HWY_INLINE bool Step(const PrxRunLevelTable& table) {
        // An entry is found only where there is a one among its bits, so the stream has not ended there.
        const PrxRunLevelEntry entry = entries_[reader_.Bits() >> (64 - PrxRunLevelTable::prefixBits)];
        const uint16_t* last = place_ + entry.LastSkip(); // less than `prxPlacesBehind` beyond the end
        if (HWY_UNLIKELY(last >= end_ || entry.Empty())) return false;
        const uint16_t* first = place_ + entry.FirstSkip();
        reader_.Skip(entry.Length());
        entries_ = table.Entries(entry.NextContext());
        coefficients_[*last] = static_cast<int16_t>(entry.LastLevel());
        coefficients_[*first] = static_cast<int16_t>(entry.FirstLevel());
        place_ = last + 1;
        return true;
    }

    /// Reads one coefficient; the lane is done if there is none.
    HWY_INLINE void ReadOne(const PrxRunLevelTable& table) {
        reader_.Refill();
        const uint32_t context = table.ContextOf(entries_);
        const PrxBitReader start = reader_;
        if (HWY_LIKELY(ReadShort(context, table))) return;
        reader_ = start;
        ReadLong(context, table);
    }

    /// Reads a coefficient of short codes; false if they are not.
    HWY_INLINE bool ReadShort(uint32_t context, const PrxRunLevelTable& table) {
        const uint32_t runZeros = reader_.LeadingZeros();
        if (HWY_UNLIKELY(runZeros > PrxShortCode::maxZeros)) return false;
        const PrxShortCodes& runCodes = prx_ac_codes::runs[context / prx_context::levelBooks.size()];
        const uint64_t run = runCodes[runZeros].Read(reader_);

        const uint32_t levelZeros = reader_.LeadingZeros();
        if (HWY_UNLIKELY(levelZeros > PrxShortCode::maxZeros)) return false;
        const PrxShortCodes& levelCodes = prx_ac_codes::levels[context % prx_context::levelBooks.size()];
        const auto magnitude = static_cast<int64_t>(levelCodes[levelZeros].Read(reader_) + 1);
        const int64_t sign = -static_cast<int64_t>(reader_.Read(1));
        Store(run, magnitude, (magnitude ^ sign) - sign, table);
        return true;
    }

    HWY_INLINE void ReadLong(uint32_t context, const PrxRunLevelTable& table) {
        if (reader_.Ended()) return End();
        const CoefficientRead read = ReadLongCoefficient(reader_, context);
        reader_ = read.reader;
        if (!read.coefficient) return End();
        const auto [run, level] = *read.coefficient;
        Store(run, std::abs(level), level, table);
    }

    HWY_INLINE void Store(uint64_t run, int64_t magnitude, int64_t level, const PrxRunLevelTable& table) {
        if (static_cast<ptrdiff_t>(run) >= end_ - place_) return End();
        coefficients_[place_[run]] = static_cast<int16_t>(level);
        place_ += run + 1;
        entries_ = table.Entries(prx_context::After(run, static_cast<uint64_t>(magnitude)));
    }

    HWY_INLINE void End() { end_ = nullptr; }

    PrxBitReader reader_;
    const PrxRunLevelEntry* entries_; ///< of the context
    const uint16_t* place_;           ///< of the position behind the last coefficient
    const uint16_t* end_;             ///< behind the last position; null when the lane is done
    int16_t* coefficients_;
};
