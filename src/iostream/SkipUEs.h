#pragma once

#include "iostream/BitBuffer.h"

namespace IOStream {

/// Passes over `count` ue(v) or se(v) values. Throws as `BitBuffer::ReadUE`.
inline void SkipUEs(BitBuffer& reader, uint32_t count) {
    for (; count > 0; --count)
        reader.ReadUE();
}

} // namespace IOStream
