#pragma once

#include "prores/PrxCodeBooks.h"

#include <algorithm>
#include <cstdint>

/// The DC values of a component, each coded as the difference from the one before it. Only the values wrap
/// to 16 bits; the delta that chooses the next code book and sign is the one that was coded, however large.
/// Kept.
class PrxDcPrediction {
public:
    /// Value of the first block.
    int16_t First(uint64_t code) {
        dc_ = static_cast<int64_t>(code >> 1) ^ -static_cast<int64_t>(code & 1);
        return static_cast<int16_t>(dc_);
    }

    /// Entry of `prxDcBooks` for the next code.
    uint32_t BookChoice() const {
        return static_cast<uint32_t>(std::min<uint64_t>(magnitude_, prxDcBooks.size() - 1));
    }

    /// Value of a later block.
    int16_t Next(uint64_t code) {
        magnitude_ = (code + 1) >> 1;
        const int64_t flip = sign_ ^ -static_cast<int64_t>(code & 1);
        const int64_t delta = (static_cast<int64_t>(magnitude_) ^ flip) - flip;
        sign_ = delta >> 63; // a delta of 0 is positive
        dc_ += delta;
        return static_cast<int16_t>(dc_);
    }

private:
    uint64_t magnitude_ = prxFirstDcDelta; ///< of the last delta
    int64_t sign_ = 0;                     ///< of the last delta: -1 or 0
    int64_t dc_ = 0;                       ///< of which 16 bits count
};
