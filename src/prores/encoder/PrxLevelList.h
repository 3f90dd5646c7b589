#pragma once

#include "prores/PrxCodeBooks.h"

#include <cstddef>
#include <cstdint>

/// The AC levels of a plane that are not zero, in coding order.
class PrxLevelList {
public:
    /// Most levels: 63 of each of 32 blocks.
    static constexpr size_t capacity = 63 * 32;

    /// Values behind the last level that a vector may touch.
    static constexpr size_t padding = 32;

    /// An empty list. In front of it stands what goes for the coefficient before the first one.
    PrxLevelList() {
        Level(-1) = prxFirstLevel * 2;
        Position(-1) = static_cast<uint16_t>(-1);
        Position(-2) = static_cast<uint16_t>(Position(-1) - 1 - prxFirstRun);
    }

    size_t count = 0;

    /// The `i`-th level as the quantiser left it, and its place in coding order, from 0 on.
    uint16_t& Level(ptrdiff_t i) { return levels_[i + lead]; }
    uint16_t& Position(ptrdiff_t i) { return positions_[i + lead]; }
    const uint16_t& Level(ptrdiff_t i) const { return levels_[i + lead]; }
    const uint16_t& Position(ptrdiff_t i) const { return positions_[i + lead]; }

    uint32_t Magnitude(ptrdiff_t i) const { return Level(i) >> 1; }

    /// Zeros between a level, from -1 on, and the one before it.
    uint32_t Run(ptrdiff_t i) const { return static_cast<uint16_t>(Position(i) - Position(i - 1) - 1); }

private:
    static constexpr ptrdiff_t lead = 32;

    // Not initialised: a list is made for each plane, and what is not written is not read, or not used.
    alignas(64) uint16_t levels_[lead + capacity + padding];
    alignas(64) uint16_t positions_[lead + capacity + padding];
};
