#pragma once

#include <cstdint>

/// A picture reduced by 2^hShift across and 2^vShift down.
struct Reduction {
    int32_t hShift;
    int32_t vShift;
};

/// All that the decoding modes make.
inline constexpr Reduction reductions[] = {{0, 0}, {0, 1}, {1, 0}, {1, 1}, {1, 2},
                                           {2, 1}, {2, 2}, {2, 3}, {3, 2}, {3, 3}};
