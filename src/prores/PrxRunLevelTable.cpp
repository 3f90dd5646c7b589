#include "prores/PrxRunLevelTable.h"

#include "prores/PrxCodePrefix.h"
#include "prores/PrxRunLevelContext.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace {

struct Coefficient {
    uint32_t run;
    int32_t level;
    uint32_t next; ///< context after it
};

std::optional<Coefficient> ReadCoefficient(PrxCodePrefix& prefix, uint32_t context) {
    const auto run = prefix.ReadCode(prx_context::RunBook(context));
    if (!run) return std::nullopt;
    const auto lessOne = prefix.ReadCode(prx_context::LevelBook(context));
    if (!lessOne) return std::nullopt;
    const auto negative = prefix.Read(1);
    if (!negative) return std::nullopt;
    const auto level = static_cast<int32_t>(*lessOne + 1);
    return Coefficient{*run, *negative != 0 ? -level : level, prx_context::After(*run, *lessOne + 1)};
}

bool Fits(const Coefficient& coefficient, uint32_t skip) {
    return skip <= PrxRunLevelEntry::maxSkip && coefficient.level >= -PrxRunLevelEntry::maxLevel &&
           coefficient.level <= PrxRunLevelEntry::maxLevel;
}

PrxRunLevelEntry MakeEntry(uint32_t context, uint32_t bits) {
    PrxCodePrefix prefix(bits, PrxRunLevelTable::prefixBits);
    const auto first = ReadCoefficient(prefix, context);
    if (!first || !Fits(*first, first->run)) return {};
    const PrxRunLevelEntry single(prefix.Used(), first->next, first->run, first->level);

    const auto last = ReadCoefficient(prefix, first->next);
    if (!last) return single;
    const uint32_t skip = first->run + 1 + last->run;
    return Fits(*last, skip) ? PrxRunLevelEntry(prefix.Used(), last->next, single, skip, last->level)
                             : single;
}

} // namespace

PrxRunLevelTable::PrxRunLevelTable() {
    for (uint32_t context = 0; context < prx_context::count; ++context) {
        for (uint32_t bits = 0; bits < 1u << prefixBits; ++bits)
            entries_[(size_t{context} << prefixBits) + bits] = MakeEntry(context, bits);
    }
}

const PrxRunLevelTable& PrxRunLevelTable::Get() {
    static const PrxRunLevelTable table;
    return table;
}
