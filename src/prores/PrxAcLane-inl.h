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

#include <cstddef>
#include <cstdint>

/// The AC part of one component, to be read a few coefficients at a time.
class PrxAcLane {
public:
    static_assert(PrxRunLevelEntry::maxStep < prxPlacesBehind);

    // A run that is larger than a stream may have it leads from the first AC position of the most blocks that
    // have places beyond the last one, which ends the lane as it has to.
    static_assert(64 * 32 - 32 <= prxMaxRun + 1);

    /// Entries of the table that a refill lasts for.
    static constexpr int stepsPerRefill = 5;
    static_assert(stepsPerRefill * PrxRunLevelTable::prefixBits <= PrxBitReader::refilledBits);

    /// A lane that is done.
    PrxAcLane() = default;

    HWY_INLINE PrxAcLane(const PrxBitReader& reader, const PrxSliceComponent& component,
                         const uint16_t* places, uint32_t coefLimit)
        : reader_(reader), place_(places + (size_t{1} << component.log2BlockCount) - 1),
          end_(places + (size_t{coefLimit} << component.log2BlockCount)),
          coefficients_(component.coefficients) {}

    HWY_INLINE bool Done() const { return end_ == nullptr; }
    HWY_INLINE void Refill() { reader_.Refill(); }

    /// Reads what one entry of the table holds. With the result false, that was nothing, and one run or level
    /// was read instead, or the lane is done.
    HWY_INLINE bool Advance(const PrxRunLevelTable& table) {
        if (HWY_LIKELY(Step(table))) return true;
        ReadOne();
        return false;
    }

private:
    static constexpr uint32_t contextShift = PrxRunLevelEntry::contextShift;
    static constexpr auto runCodes = PrxMakeShortCodes(prx_context::runBooks);
    static constexpr auto levelCodes = PrxMakeShortCodes(prx_context::levelBooks);

    struct CodeRead {
        PrxBitReader reader;
        uint64_t code;
    };

    static HWY_NOINLINE CodeRead ReadLongCode(PrxBitReader reader, uint32_t book) {
        const uint64_t code = PrxReadCode(reader, book);
        return {reader, code};
    }

    /// Reads what one entry of the table holds, at most `prefixBits` bits. False if that is nothing or goes
    /// beyond the last position.
    HWY_INLINE bool Step(const PrxRunLevelTable& table) {
        // An entry is found only where there is a one among the bits of each of its code words, so the stream
        // has not ended there.
        const PrxRunLevelEntry entry =
            table.Entry(context_, reader_.Bits() >> (64 - PrxRunLevelTable::prefixBits));
        const uint16_t* last = place_ + entry.LastStep(); // less than `prxPlacesBehind` beyond the end
        if (HWY_UNLIKELY(last >= end_ || entry.Empty())) return false;
        const uint16_t* first = place_ + entry.FirstStep();
        reader_.Skip(entry.Length());
        context_ = entry.Next();
        coefficients_[*last] = static_cast<int16_t>(entry.LastLevel());
        coefficients_[*first] = static_cast<int16_t>(entry.FirstLevel());
        place_ = last;
        return true;
    }

    /// Reads one run or level; the lane is done if there is none.
    HWY_INLINE void ReadOne() {
        reader_.Refill();
        const uint32_t context = context_ >> contextShift;
        if (prx_context::LevelComesNext(context)) {
            ReadLevel(context);
        } else {
            ReadRun(context);
        }
    }

    HWY_INLINE void ReadRun(uint32_t context) {
        uint64_t run;
        if (!ReadCode(runCodes[prx_context::RunPlace(context)], prx_context::RunBook(context), &run) ||
            static_cast<int64_t>(run) >= end_ - place_ - 1)
            return End();
        place_ += run + 1;
        context_ = prx_context::AfterRun(context, run) << contextShift;
    }

    HWY_INLINE void ReadLevel(uint32_t context) {
        uint64_t lessOne;
        if (!ReadCode(levelCodes[prx_context::LevelPlace(context)], prx_context::LevelBook(context),
                      &lessOne) ||
            lessOne >= prxMaxLevel)
            return End();
        const auto magnitude = static_cast<int64_t>(lessOne + 1);
        const int64_t sign = -static_cast<int64_t>(reader_.Read(1));
        coefficients_[*place_] = static_cast<int16_t>((magnitude ^ sign) - sign);
        context_ = prx_context::AfterLevel(context, static_cast<uint64_t>(magnitude)) << contextShift;
    }

    /// Reads a code word from a refilled reader, and leaves a valid bit. False if the stream has ended.
    HWY_INLINE bool ReadCode(const PrxShortCodes& codes, uint32_t book, uint64_t* code) {
        const uint32_t zeros = reader_.LeadingZeros();
        if (HWY_LIKELY(zeros <= PrxShortCode::maxZeros)) {
            *code = codes[zeros].Read(reader_);
            return true;
        }
        if (reader_.Ended()) return false;
        const CodeRead read = ReadLongCode(reader_, book);
        reader_ = read.reader;
        *code = read.code;
        return true;
    }

    HWY_INLINE void End() { end_ = nullptr; }

    PrxBitReader reader_;
    uint32_t context_ = prx_context::first << contextShift;
    const uint16_t* place_ = nullptr; ///< of the last coefficient, or where the last run led to
    const uint16_t* end_ = nullptr;   ///< behind the last position; null when the lane is done
    int16_t* coefficients_ = nullptr;
};
