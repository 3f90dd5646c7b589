#include "prores/encoder/PrxRateTarget.h"

#include "prores/PrxFormats.h"

PrxProfile PrxGetProfile(uint32_t codecType) {
    switch (codecType) {
    case prxCodecApco: return {8, 4};
    case prxCodecApcs: return {3, 3};
    case prxCodecApcn: return {2, 2};
    case prxCodecApch: return {1, 1};
    case prxCodecAp4h: return {1, 1};
    default: return {1, 0}; // `ap4x`, and codec types that are none
    }
}
