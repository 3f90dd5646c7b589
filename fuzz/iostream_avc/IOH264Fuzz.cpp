// Any bytes as H.264 streams, samples and configuration records, to every exported function and every parser.
// Two bytes of options come first: the length size, and the size of the pieces that a payload is fed with.

#include "iostream/ConversionCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    CheckH264({data + 2, data + size}, data[0] % 6, size_t{1} + data[1]);
    return 0;
}
