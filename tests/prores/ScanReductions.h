#pragma once

#include "prores/PrxScan.h"

#include <array>
#include <cstdint>
#include <span>

/// The scan of a decode at full or reduced size, of a progressive frame or of a field.
struct ScanReduction {
    bool interlaced;
    int32_t hShift;
    int32_t vShift;

    uint32_t Log2Block() const { return static_cast<uint32_t>(6 - hShift - vShift); }
    std::span<const uint8_t> Scan() const { return PrxScanTable(interlaced, hShift); }
};

/// All that the modes make.
inline constexpr std::array<ScanReduction, 13> scanReductions = {{{false, 0, 0},
                                                                  {false, 0, 1},
                                                                  {false, 1, 1},
                                                                  {false, 1, 2},
                                                                  {false, 2, 2},
                                                                  {false, 2, 3},
                                                                  {false, 3, 3},
                                                                  {true, 0, 0},
                                                                  {true, 1, 0},
                                                                  {true, 1, 1},
                                                                  {true, 2, 1},
                                                                  {true, 2, 2},
                                                                  {true, 3, 2}}};
