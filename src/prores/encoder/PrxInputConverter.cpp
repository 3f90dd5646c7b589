#include "prores/encoder/PrxInputConverter.h"

#include "prores/PrxFormats.h"
#include "prores/encoder/PrxInputRgb.h"
#include "prores/encoder/PrxInputYuv.h"
#include "prores/encoder/PrxInputYuvVector.h"
#include "prores/encoder/PrxRowPreparation.h"

namespace {

/// The format of the rows that the converter meets.
uint32_t PreparedFormat(uint32_t pixelFormat, int32_t chromaFormat) {
    return PrxUsesRowBuffer(pixelFormat, chromaFormat) ? uint32_t{prxFormatV216} : pixelFormat;
}

} // namespace

PrxConvertMacroblock PrxGetConverter(uint32_t pixelFormat, int32_t chromaFormat) {
    const uint32_t prepared = PreparedFormat(pixelFormat, chromaFormat);
    if (const auto vector = PrxGetVectorYuvConverter(prepared, chromaFormat)) return vector;
    if (const auto scalar = PrxGetScalarYuvConverter(prepared, chromaFormat)) return scalar;
    return chromaFormat == prxChroma444 ? PrxGetRgbConverter(prepared) : nullptr;
}

PrxConvertMacroblock PrxGetScalarConverter(uint32_t pixelFormat, int32_t chromaFormat) {
    const uint32_t prepared = PreparedFormat(pixelFormat, chromaFormat);
    if (const auto scalar = PrxGetScalarYuvConverter(prepared, chromaFormat)) return scalar;
    return chromaFormat == prxChroma444 ? PrxGetScalarRgbConverter(prepared) : nullptr;
}
