// Any bytes as byte streams and length-prefixed samples of the Media Foundation back-end, held against slow
// models. Two bytes of options come first: the room that a sample has.

#include "codecs/wmf/ConversionCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    const size_t capacity = size_t{data[0]} << 8 | data[1];
    CheckAnnexB({data + 2, data + size}, capacity);
    return 0;
}
