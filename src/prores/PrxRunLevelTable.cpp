#include "prores/PrxRunLevelTable.h"

#include "prores/PrxCodePrefix.h"
#include "prores/PrxRunLevelContext.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace {

/// Reads runs and levels from the prefix of an entry, as long as they are whole and fit the entry.
class Reader {
public:
    Reader(uint32_t context, uint32_t bits)
        : prefix_(bits, PrxRunLevelTable::prefixBits), context_(context) {}

    uint32_t Context() const { return context_; }
    uint32_t Step() const { return step_; }
    uint32_t Length() const { return length_; }

    bool ReadRun() {
        const auto run = prefix_.ReadCode(prx_context::RunBook(context_));
        if (!run || step_ + *run + 1 > PrxRunLevelEntry::maxStep) return false;
        step_ += *run + 1;
        return Arrive(prx_context::AfterRun(context_, *run));
    }

    /// Reads a level and its sign; 0 if it isn't whole, or larger than `maxLevel`.
    int32_t ReadLevel(int32_t maxLevel) {
        const auto lessOne = prefix_.ReadCode(prx_context::LevelBook(context_));
        if (!lessOne || *lessOne >= static_cast<uint32_t>(maxLevel)) return 0;
        const auto negative = prefix_.Read(1);
        if (!negative) return 0;
        const auto magnitude = static_cast<int32_t>(*lessOne + 1);
        Arrive(prx_context::AfterLevel(context_, *lessOne + 1));
        return *negative != 0 ? -magnitude : magnitude;
    }

private:
    bool Arrive(uint32_t context) {
        context_ = context;
        length_ = prefix_.Used();
        return true;
    }

    PrxCodePrefix prefix_;
    uint32_t context_;
    uint32_t step_ = 0;
    uint32_t length_ = 0;
};

PrxRunLevelEntry MakeEntry(uint32_t context, uint32_t bits) {
    Reader reader(context, bits);
    if (!prx_context::LevelComesNext(context) && !reader.ReadRun()) return {};
    const int32_t firstLevel = reader.ReadLevel(PrxRunLevelEntry::maxFirstLevel);
    if (reader.Length() == 0) return {};
    const PrxRunLevelEntry first(reader.Length(), reader.Context(), reader.Step(), firstLevel);
    if (firstLevel == 0 || !reader.ReadRun()) return first;
    const int32_t lastLevel = reader.ReadLevel(PrxRunLevelEntry::maxLastLevel);
    return {reader.Length(), reader.Context(), first, reader.Step(), lastLevel};
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
