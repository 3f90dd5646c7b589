// A user of the ProRes engine alone.

#include "prores/Prx.h"

int main() {
    const PrxDecoderRef decoder = PrxCreateDecoder(1, nullptr);
    const int32_t result = PrxDecodeFrame(decoder, nullptr, 0, nullptr, 0, 0);
    PrxDeleteDecoder(decoder);
    return result == -50 ? 0 : 1;
}
