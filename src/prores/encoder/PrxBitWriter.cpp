#include "prores/encoder/PrxBitWriter.h"

#include <algorithm>
#include <limits>

PrxBitWriter::PrxBitWriter(uint8_t* output, int64_t budget)
    : next_(output), end_(output + std::max<int64_t>(budget, 0)), begin_(output),
      limit_(budget < 0 ? std::numeric_limits<uint64_t>::max() : static_cast<uint64_t>(budget) * 8) {}

bool PrxBitWriter::Close() {
    Flush();
    return false;
}

uint32_t PrxBitWriter::Flush() {
    if (used_ > 0) *next_++ = static_cast<uint8_t>(accumulator_ >> 56);
    used_ = 0;
    accumulator_ = 0;
    end_ = next_;
    limit_ = bits_;
    return static_cast<uint32_t>((bits_ + 7) / 8);
}
