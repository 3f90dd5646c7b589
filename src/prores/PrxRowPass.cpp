#include "prores/PrxRowPass.h"

#include "prores/PrxFormats.h"
#include "prores/PrxRowPassRgb.h"
#include "prores/PrxRowPassSeam.h"
#include "prores/PrxRowPassV210.h"

PrxRowPass PrxSelectRowPass(uint32_t pixelFormat, int32_t chromaFormat, bool hasAlpha) {
    if (pixelFormat == prxFormatV210) return PrxSelectV210RowPass();
    if (chromaFormat != prxChroma422) return nullptr;
    const PrxRowPass seamPass = PrxSelectSeamPass(pixelFormat);
    return seamPass != nullptr ? seamPass : PrxSelectRgbRowPass(pixelFormat, hasAlpha);
}
