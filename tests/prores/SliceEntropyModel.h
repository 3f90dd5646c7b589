#pragma once

#include "prores/PrxSliceEntropy.h"
#include "prores/StreamBits.h"

#include <cstddef>
#include <cstdint>
#include <span>

/// A decoder of coefficients that reads bit by bit with numbers of 64 bits, written from SMPTE RDD 36 for
/// comparison; it shares nothing with the engine but the argument types.
namespace model {

/// The bits of a stream; behind them stand zeros.
class BitSource {
public:
    explicit BitSource(std::span<const uint8_t> bytes) : bytes_(bytes) {}

    bool Ended() const;              ///< the next 32 bits are 0
    uint64_t Read(uint32_t count);   ///< a number of `count` bits
    uint64_t ReadCode(uint8_t book); ///< a code word; the stream has not ended

private:
    bool BitAt(size_t position) const;

    std::span<const uint8_t> bytes_;
    size_t position_ = 0;
};

void DecodeComponent(const PrxSliceComponent& component, const PrxCoefficientOrder& order);

} // namespace model
