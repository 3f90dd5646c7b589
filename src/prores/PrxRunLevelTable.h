#pragma once

#include "prores/PrxRunLevelContext.h"

#include <array>
#include <cstddef>
#include <cstdint>

/// What the next bits of a component's AC part hold: one or two whole coefficients, each a run, a level and
/// a sign, or none that could be told from so few bits.
class PrxRunLevelEntry {
public:
    /// Largest sum of runs and largest level of an entry.
    static constexpr uint32_t maxSkip = 31;
    static constexpr int32_t maxLevel = 15;

    constexpr PrxRunLevelEntry() = default;

    /// A coefficient `skip` positions on, which takes `length` bits and leads to the context `next`.
    constexpr PrxRunLevelEntry(uint32_t length, uint32_t next, uint32_t skip, int32_t level)
        : packed_(length | next << 6 | skip << 12 | skip << 17 | static_cast<uint32_t>(level) << 27) {}

    /// The same with a second coefficient behind it.
    constexpr PrxRunLevelEntry(uint32_t length, uint32_t next, const PrxRunLevelEntry& first,
                               uint32_t lastSkip, int32_t lastLevel)
        : packed_(length | next << 6 | first.FirstSkip() << 12 | lastSkip << 17 |
                  (static_cast<uint32_t>(lastLevel) & 31) << 22 | (first.packed_ & 0xF8000000)) {}

    /// No coefficient: to be read code word by code word.
    constexpr bool Empty() const { return packed_ == 0; }

    /// Bits in all, in the low 6 bits; more stands above.
    constexpr uint32_t Length() const { return packed_; }

    /// Context after the last coefficient.
    constexpr uint32_t NextContext() const { return packed_ >> 6 & 63; }

    /// How many positions on the coefficients stand. An entry with one coefficient gives its position twice.
    constexpr uint32_t FirstSkip() const { return packed_ >> 12 & 31; }
    constexpr uint32_t LastSkip() const { return packed_ >> 17 & 31; }

    /// Levels with their signs. An entry with one coefficient gives a last level of 0, so who stores it first
    /// needs no test.
    constexpr int32_t FirstLevel() const { return static_cast<int32_t>(packed_) >> 27; }
    constexpr int32_t LastLevel() const { return static_cast<int32_t>(packed_ << 5) >> 27; }

private:
    uint32_t packed_ = 0;
};

/// The joint table of runs and levels, indexed by context and next bits of the stream.
class PrxRunLevelTable {
public:
    /// Bits of the stream that index the table.
    static constexpr uint32_t prefixBits = 11;

    /// The table; built at first use, from any thread.
    static const PrxRunLevelTable& Get();

    /// The entries of `context`, by prefix.
    const PrxRunLevelEntry* Entries(uint32_t context) const {
        return entries_.data() + (size_t{context} << prefixBits);
    }
    /// The context of what `Entries` gave.
    uint32_t ContextOf(const PrxRunLevelEntry* entries) const {
        return static_cast<uint32_t>((entries - entries_.data()) >> prefixBits);
    }

private:
    PrxRunLevelTable();

    std::array<PrxRunLevelEntry, size_t{prx_context::count} << prefixBits> entries_;
};
