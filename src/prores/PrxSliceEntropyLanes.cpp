#include "prores/PrxCodeReader.h"
#include "prores/PrxCoefficientPlaces.h"
#include "prores/PrxDcPrediction.h"
#include "prores/PrxRunLevelTable.h"
#include "prores/PrxSliceEntropy.h"

#include <hwy/base.h>

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <utility>

// The components of a slice side by side. Where a code word starts is known only when the one before it has
// been decoded, so that one stream alone leaves most of the processor idle. A lane is one stream; the loops
// advance several lanes in turn. All of a lane has to stay in registers: its functions are inlined, and what
// is rare and long takes and returns its reader by value.

namespace {

// ---------------------------------------------------------------------------------------------------------
// DC values.

constexpr PrxShortCodes firstDcCodes = PrxMakeShortCodes(prxFirstDcBook);
constexpr auto dcCodes = PrxMakeShortCodes(prxDcBooks);

struct CodeRead {
    PrxBitReader reader;
    uint64_t code;
};

HWY_NOINLINE CodeRead ReadLongCode(PrxBitReader reader, uint32_t book) {
    const uint64_t code = PrxReadCode(reader, book);
    return {reader, code};
}

class DcLane {
public:
    HWY_INLINE explicit DcLane(const PrxSliceComponent& component)
        : reader_(component.data, component.size), next_(component.coefficients),
          stride_(size_t{1} << component.log2BlockSize), blocksLeft_(1u << component.log2BlockCount) {
        uint64_t code;
        if (Read(firstDcCodes, prxFirstDcBook, &code)) Store(prediction_.First(code));
    }

    HWY_INLINE bool Done() const { return blocksLeft_ == 0; }

    /// Reads the DC value of the next block; the lane is done if there is none.
    HWY_INLINE void Advance() {
        uint64_t code;
        const uint32_t choice = prediction_.BookChoice();
        if (Read(dcCodes[choice], prxDcBooks[choice], &code)) Store(prediction_.Next(code));
    }

    const PrxBitReader& Reader() const { return reader_; }

private:
    /// Reads a code word. False, and the lane is done, if the stream has ended.
    HWY_INLINE bool Read(const PrxShortCodes& codes, uint32_t book, uint64_t* code) {
        const uint32_t zeros = reader_.LeadingZeros();
        if (HWY_LIKELY(zeros <= PrxShortCode::maxZeros)) {
            *code = codes[zeros].Read(reader_);
            reader_.Refill();
            return true;
        }
        if (reader_.Ended()) {
            blocksLeft_ = 0;
            return false;
        }
        const CodeRead read = ReadLongCode(reader_, book);
        reader_ = read.reader;
        *code = read.code;
        return true;
    }

    HWY_INLINE void Store(int16_t dc) {
        *next_ = dc;
        next_ += stride_;
        --blocksLeft_;
    }

    PrxBitReader reader_;
    PrxDcPrediction prediction_;
    int16_t* next_; ///< of the block to be read
    size_t stride_;
    uint32_t blocksLeft_;
};

// ---------------------------------------------------------------------------------------------------------
// AC values.

constexpr auto runCodes = PrxMakeShortCodes(prx_context::runBooks);
constexpr auto levelCodes = PrxMakeShortCodes(prx_context::levelBooks);

/// Whether short codes keep what `PrxShortCode::maxZeros` promises.
constexpr bool ShortCodesAreShort() {
    uint32_t longest = 0;
    for (const PrxShortCodes& codes : levelCodes) {
        const PrxShortCode code = codes[PrxShortCode::maxZeros];
        const uint32_t valueBits = code.length - PrxShortCode::maxZeros;
        if ((int64_t{1} << valueBits) + code.offset > prxMaxLevel) return false;
        longest = std::max<uint32_t>(longest, code.length);
    }
    for (const PrxShortCodes& codes : runCodes)
        longest = std::max<uint32_t>(longest, codes[PrxShortCode::maxZeros].length);
    return 2 * longest + 1 <= PrxBitReader::refilledBits;
}
static_assert(ShortCodesAreShort());

struct CoefficientRead {
    PrxBitReader reader;
    std::optional<PrxCoefficient> coefficient;
};

HWY_NOINLINE CoefficientRead ReadLongCoefficient(PrxBitReader reader, uint32_t context) {
    const auto coefficient =
        PrxReadCoefficient(reader, prx_context::RunBook(context), prx_context::LevelBook(context));
    return {reader, coefficient};
}

class AcLane {
public:
    static_assert(PrxRunLevelEntry::maxSkip < prxPlacesBehind);

    /// Entries of the table that a refill lasts for.
    static constexpr int stepsPerRefill = 4;
    static_assert(stepsPerRefill * PrxRunLevelTable::prefixBits <= PrxBitReader::refilledBits);

    HWY_INLINE AcLane(const PrxBitReader& reader, const PrxSliceComponent& component, const uint16_t* places,
                      uint32_t coefLimit, const PrxRunLevelTable& table)
        : reader_(reader), entries_(table.Entries(prx_context::first)),
          place_(places + (size_t{1} << component.log2BlockCount)),
          end_(places + (size_t{coefLimit} << component.log2BlockCount)),
          coefficients_(component.coefficients) {}

    HWY_INLINE bool Done() const { return end_ == nullptr; }
    HWY_INLINE void Refill() { reader_.Refill(); }

    /// Reads what one entry of the table holds, at most `prefixBits` bits. False if that is nothing or goes
    /// beyond the last position.
    HWY_INLINE bool Step(const PrxRunLevelTable& table) {
        // An entry is found only where there is a one among its bits, so the stream has not ended there.
        const PrxRunLevelEntry entry = entries_[reader_.Bits() >> (64 - PrxRunLevelTable::prefixBits)];
        const uint16_t* last = place_ + entry.LastSkip(); // at most `prxPlacesBehind` beyond the end
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

    /// A step or, with the result false, one coefficient.
    HWY_INLINE bool Advance(const PrxRunLevelTable& table) {
        if (HWY_LIKELY(Step(table))) return true;
        ReadOne(table);
        return false;
    }

private:
    /// Reads a coefficient of short codes; false if they are not.
    HWY_INLINE bool ReadShort(uint32_t context, const PrxRunLevelTable& table) {
        const uint32_t runZeros = reader_.LeadingZeros();
        if (HWY_UNLIKELY(runZeros > PrxShortCode::maxZeros)) return false;
        const uint64_t run = runCodes[context / prx_context::levelBooks.size()][runZeros].Read(reader_);

        const uint32_t levelZeros = reader_.LeadingZeros();
        if (HWY_UNLIKELY(levelZeros > PrxShortCode::maxZeros)) return false;
        const PrxShortCodes& codes = levelCodes[context % prx_context::levelBooks.size()];
        const auto magnitude = static_cast<int64_t>(codes[levelZeros].Read(reader_) + 1);
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

/// Reads all lanes side by side until one of them is done.
template <class... Lanes>
HWY_INLINE void DecodeDc(Lanes&... lanes) {
    while (!(lanes.Done() || ...))
        (lanes.Advance(), ...);
}

template <class... Lanes>
HWY_INLINE void DecodeAc(const PrxRunLevelTable& table, Lanes&... lanes) {
    while (!(lanes.Done() || ...)) {
        (lanes.Refill(), ...);
        for (int step = 0; step < AcLane::stepsPerRefill && (lanes.Advance(table) && ...); ++step) {
        }
    }
}

const uint16_t* PlacesOf(const PrxSliceComponent& component, const PrxCoefficientOrder& order) {
    return PrxCoefficientPlaces(order.scan, component.log2BlockCount, component.log2BlockSize);
}

} // namespace

void PrxDecodeSliceComponents(const PrxSliceComponent& luma, const PrxSliceComponent& cb,
                              const PrxSliceComponent& cr, const PrxCoefficientOrder& order) {
    assert(order.coefLimit >= 1 && order.coefLimit <= order.scan.size());
    const uint16_t* lumaPlaces = PlacesOf(luma, order);
    const uint16_t* cbPlaces = PlacesOf(cb, order);
    const uint16_t* crPlaces = PlacesOf(cr, order);
    if (lumaPlaces == nullptr || cbPlaces == nullptr || crPlaces == nullptr) {
        for (const PrxSliceComponent* component : {&luma, &cb, &cr})
            PrxDecodeSliceComponent(*component, order);
        return;
    }

    DcLane lumaDc(luma);
    DcLane cbDc(cb);
    DcLane crDc(cr);
    DecodeDc(lumaDc, cbDc, crDc);
    DecodeDc(lumaDc);
    DecodeDc(cbDc);
    DecodeDc(crDc);

    const PrxRunLevelTable& table = PrxRunLevelTable::Get();
    AcLane a(lumaDc.Reader(), luma, lumaPlaces, order.coefLimit, table);
    AcLane b(cbDc.Reader(), cb, cbPlaces, order.coefLimit, table);
    AcLane c(crDc.Reader(), cr, crPlaces, order.coefLimit, table);
    DecodeAc(table, a, b, c);
    if (a.Done()) std::swap(a, c);
    if (b.Done()) std::swap(b, c);
    DecodeAc(table, a, b);
    if (a.Done()) std::swap(a, b);
    DecodeAc(table, a);
}
