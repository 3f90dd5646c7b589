#include "prores/PrxScratchBuffer.h"

uint8_t* PrxScratchBuffer::Reserve(size_t size) {
    if (capacity_ < size) {
        bytes_.reset();
        bytes_.reset(static_cast<uint8_t*>(::operator new(size, alignment, std::nothrow)));
        capacity_ = bytes_ != nullptr ? size : 0;
    }
    return bytes_.get();
}
