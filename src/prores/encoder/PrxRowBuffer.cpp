#include "prores/encoder/PrxRowBuffer.h"

bool PrxRowBuffer::EnsureWidth(int32_t width) {
    // The macroblock too many also keeps rows of a power of two from falling on the same lines of a cache.
    const ptrdiff_t macroblocks = (static_cast<ptrdiff_t>(width) + 15) / 16 + 1;
    rowBytes_ = macroblocks * 64;
    rows_ = memory_.Reserve(static_cast<size_t>(rowCount * rowBytes_));
    if (rows_ == nullptr) rowBytes_ = 0;
    return rows_ != nullptr;
}
