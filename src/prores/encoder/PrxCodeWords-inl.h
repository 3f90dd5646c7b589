// Code words in vectors, as `PrxCodeWordOf` makes them. For inclusion once for each instruction set, as
// Highway does it.

#if defined(CORVEX_PRORES_PRX_CODE_WORDS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef CORVEX_PRORES_PRX_CODE_WORDS_INL_H
#undef CORVEX_PRORES_PRX_CODE_WORDS_INL_H
#else
#define CORVEX_PRORES_PRX_CODE_WORDS_INL_H
#endif

#include "prores/encoder/PrxBookTables.h"

#include <hwy/highway.h>

#include <cstdint>

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

HWY_BEFORE_NAMESPACE();
namespace prx_code_words {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

template <class V>
struct CodeWords {
    V bits;
    V length;
};

/// Exponents of the lanes as floats: the count of their bits plus `exponentBias`; 0 for 0.
inline constexpr int32_t exponentBias = 126;

template <class D>
HWY_INLINE hn::Vec<D> Exponents(D d, hn::Vec<D> v) {
    const hn::RepartitionToWide<D> d32;
    const hn::RebindToSigned<decltype(d32)> di32;
    const hn::RebindToFloat<decltype(d32)> df;
    const auto pairs = hn::BitCast(d32, v);
    const auto even = hn::BitCast(di32, hn::And(pairs, hn::Set(d32, 0xFFFF)));
    const auto odd = hn::BitCast(di32, hn::ShiftRight<16>(pairs));
    const auto evenBits = hn::BitCast(d32, hn::ConvertTo(df, even));
    const auto oddBits = hn::BitCast(d32, hn::ConvertTo(df, odd));
    const auto upper = hn::And(hn::ShiftRight<7>(oddBits), hn::Set(d32, 0xFFFF0000));
    return hn::BitCast(d, hn::Or(hn::ShiftRight<23>(evenBits), upper));
}

/// Looks up lanes below 16 in a table of bytes; lanes that have bit 7 give 0.
template <class D>
HWY_INLINE hn::Vec<D> LookUp(D d, const PrxBookTables::Table& table, hn::Vec<D> index) {
    const hn::Repartition<uint8_t, D> bytes;
    const auto lowBytes = hn::Or(index, hn::Set(d, uint16_t{0x8000}));
    return hn::BitCast(d,
                       hn::TableLookupBytesOr0(hn::Load(bytes, table.data()), hn::BitCast(bytes, lowBytes)));
}

/// Code words of `values`, which are below 32768, each by what was coded before it.
template <class D>
HWY_INLINE CodeWords<hn::Vec<D>> CodeWordsOf(D d, const PrxBookTables& books, hn::Vec<D> values,
                                             hn::Vec<D> previous) {
    const auto index = hn::Min(previous, hn::Set(d, uint16_t{15}));
    const auto addendBias = hn::Set(d, static_cast<uint16_t>(PrxBookTables::addendBias));
    const auto lengthBias = hn::Set(d, static_cast<uint16_t>(PrxBookTables::lengthBias + 2 * exponentBias));
    const auto bits = hn::Sub(hn::Add(values, LookUp(d, books.addend, index)), addendBias);
    const auto exponents = Exponents(d, bits);
    const auto length =
        hn::Sub(hn::Add(hn::Add(exponents, exponents), LookUp(d, books.length, index)), lengthBias);

    const auto inRow = hn::Min(values, hn::Set(d, static_cast<uint16_t>(PrxBookTables::rowSize - 1)));
    const auto first = hn::Add(LookUp(d, books.row, index), inRow);
    const auto firstLength = LookUp(d, books.firstLength, first);
    const auto isFirst = hn::Ne(firstLength, hn::Zero(d));
    return {hn::IfThenElse(isFirst, LookUp(d, books.firstNumber, first), bits),
            hn::IfThenElse(isFirst, firstLength, length)};
}

} // namespace HWY_NAMESPACE
} // namespace prx_code_words
HWY_AFTER_NAMESPACE();

#endif

#endif
