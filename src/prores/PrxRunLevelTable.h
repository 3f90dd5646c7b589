#pragma once

#include "prores/PrxRunLevelContext.h"

#include <array>
#include <cstddef>
#include <cstdint>

/// What the next bits of a component's AC part hold: up to two levels with the runs before them, of which the
/// first run may have been read already, and the last level may be missing yet. Or nothing that could be told
/// from so few bits.
class PrxRunLevelEntry {
public:
    /// Largest sum of steps, and the largest magnitudes of levels.
    static constexpr uint32_t maxStep = 31;
    static constexpr int32_t maxFirstLevel = 15;
    static constexpr int32_t maxLastLevel = 7;

    /// Where the next context stands in `Next`.
    static constexpr uint32_t contextShift = 11;

    constexpr PrxRunLevelEntry() = default;

    /// A level `step` positions on, or with a level of 0 a run that leads to there. It takes `length` bits
    /// and leads to the context `next`.
    constexpr PrxRunLevelEntry(uint32_t length, uint32_t next, uint32_t step, int32_t level)
        : packed_(length | step << 6 | next << contextShift | step << 18 |
                  static_cast<uint32_t>(level) << 27) {}

    /// The same with another level, or run, behind it.
    constexpr PrxRunLevelEntry(uint32_t length, uint32_t next, const PrxRunLevelEntry& first,
                               uint32_t lastStep, int32_t lastLevel)
        : packed_(length | first.FirstStep() << 6 | next << contextShift | lastStep << 18 |
                  (static_cast<uint32_t>(lastLevel) & 15) << 23 | (first.packed_ & 0xF8000000)) {}

    /// Nothing: to be read code word by code word.
    constexpr bool Empty() const { return packed_ == 0; }

    /// Bits in all, in the low 6 bits; more stands above.
    constexpr uint32_t Length() const { return packed_; }

    /// The context after all, from bit `contextShift` on; no other bit is set.
    constexpr uint32_t Next() const { return packed_ & 127u << contextShift; }

    /// How far the levels are from where the last level, or run, stood. One level gives its step twice.
    constexpr uint32_t FirstStep() const { return packed_ >> 6 & 31; }
    constexpr uint32_t LastStep() const { return packed_ >> 18 & 31; }

    /// Levels with their signs. What is missing is 0, so who stores the last level before the first one, over
    /// zeros, needs no test.
    constexpr int32_t FirstLevel() const { return static_cast<int32_t>(packed_) >> 27; }
    constexpr int32_t LastLevel() const { return static_cast<int32_t>(packed_ << 5) >> 28; }

private:
    uint32_t packed_ = 0;
};

/// The joint table of runs and levels, indexed by context and next bits of the stream.
class PrxRunLevelTable {
public:
    /// Bits of the stream that index the table.
    static constexpr uint32_t prefixBits = 11;
    static_assert(prefixBits == PrxRunLevelEntry::contextShift, "the next context is a part of the index");

    /// The table; built at first use, from any thread.
    static const PrxRunLevelTable& Get();

    /// The entry for `prefix` in a context that is given as `PrxRunLevelEntry::Next` gives it.
    const PrxRunLevelEntry& Entry(uint32_t shiftedContext, uint64_t prefix) const {
        return entries_[shiftedContext + prefix];
    }

private:
    PrxRunLevelTable();

    std::array<PrxRunLevelEntry, size_t{prx_context::count} << prefixBits> entries_;
};
