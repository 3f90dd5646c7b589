// Any bytes as configuration records and as byte streams of parameter sets, to the Media Foundation
// back-end's conversions between the two.

#include "codecs/wmf/ConversionCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CheckRecords({data, data + size});
    return 0;
}
