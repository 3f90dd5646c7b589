#pragma once

#include <cstdint>
#include <span>

/// Positions of a block's coefficients in coding order (SMPTE RDD 36), as offsets in a block stored row
/// by row at its reduced width, 8 >> `hShift`. For `hShift` above 0 the scan holds those coefficients only
/// that a reduced decode keeps.
std::span<const uint8_t> PrxScanTable(bool interlaced, int32_t hShift);
