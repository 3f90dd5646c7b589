#include "prores/PrxScan.h"

#include <array>
#include <cassert>
#include <cstdint>
#include <span>

namespace {

constexpr std::array<uint8_t, 64> progressiveScan = {
    0,  1,  8,  9,  2,  3,  10, 11, 16, 17, 24, 25, 18, 19, 26, 27, 4,  5,  12, 20, 13, 6,
    7,  14, 21, 28, 29, 22, 15, 23, 30, 31, 32, 33, 40, 48, 41, 34, 35, 42, 49, 56, 57, 50,
    43, 36, 37, 44, 51, 58, 59, 52, 45, 38, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63,
};
constexpr std::array<uint8_t, 64> interlacedScan = {
    0,  8,  1,  9,  16, 24, 17, 25, 2,  10, 3,  11, 18, 26, 19, 27, 32, 40, 33, 34, 41, 48,
    56, 49, 42, 35, 43, 50, 57, 58, 51, 59, 4,  12, 5,  6,  13, 20, 28, 21, 14, 7,  15, 22,
    29, 36, 44, 37, 30, 23, 31, 38, 45, 52, 60, 53, 46, 39, 47, 54, 61, 62, 55, 63,
};

constexpr std::array<uint8_t, 16> progressiveScan4 = {0, 1, 4, 5, 2, 3, 6, 7, 8, 9, 12, 13, 10, 11, 14, 15};
constexpr std::array<uint8_t, 4> progressiveScan2 = {0, 1, 2, 3};
constexpr std::array<uint8_t, 1> progressiveScan1 = {0};

constexpr std::array<uint8_t, 32> interlacedScan4 = {
    0,  4,  1,  5,  8,  12, 9,  13, 2,  6,  3,  7,  10, 14, 11, 15,
    16, 20, 17, 18, 21, 24, 28, 25, 22, 19, 23, 26, 29, 30, 27, 31,
};
constexpr std::array<uint8_t, 8> interlacedScan2 = {0, 2, 1, 3, 4, 6, 5, 7};
constexpr std::array<uint8_t, 2> interlacedScan1 = {0, 1};

} // namespace

std::span<const uint8_t> PrxScanTable(bool interlaced, int32_t hShift) {
    assert(hShift >= 0 && hShift <= 3);
    switch (hShift) {
    case 0: return interlaced ? interlacedScan : progressiveScan;
    case 1: return interlaced ? std::span<const uint8_t>(interlacedScan4) : progressiveScan4;
    case 2: return interlaced ? std::span<const uint8_t>(interlacedScan2) : progressiveScan2;
    default: return interlaced ? std::span<const uint8_t>(interlacedScan1) : progressiveScan1;
    }
}
