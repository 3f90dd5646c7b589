#include "prores/encoder/PrxRowPreparation.h"

#include "prores/PrxFormats.h"
#include "prores/encoder/PrxChromaLowPass.h"
#include "prores/encoder/PrxInputRgb.h"
#include "prores/encoder/PrxV210Unpack.h"

#include <cassert>

namespace {

void ConvertRgbRows(const PrxStrip& strip, PrxConvertRgbRow convert, int32_t colorMatrix,
                    const PrxRowBuffer& buffer) {
    for (int32_t row = 0; row < strip.rowCount; ++row)
        convert(strip.rows + row * strip.rowBytes, strip.width, colorMatrix, buffer.Row(row));
}

void LowPassRows(const PrxStrip& strip, PrxChromaLowPass lowPass) {
    for (int32_t row = 0; row < strip.rowCount; ++row)
        lowPass(strip.rows + row * strip.rowBytes, strip.width, 0);
}

} // namespace

bool PrxUsesRowBuffer(uint32_t pixelFormat, int32_t chromaFormat) {
    if (pixelFormat == prxFormatV210) return true;
    return chromaFormat == prxChroma422 && PrxGetRgbRowConverter(pixelFormat) != nullptr;
}

PrxStrip PrxPrepareRows(const PrxStrip& strip, int32_t chromaFormat, int32_t colorMatrix,
                        PrxRowBuffer& buffer) {
    if (PrxUsesRowBuffer(strip.pixelFormat, chromaFormat)) {
        assert(buffer.RowBytes() >= 4 * static_cast<ptrdiff_t>(strip.width) + 64);
        if (strip.pixelFormat == prxFormatV210) {
            PrxUnpackV210Rows(strip, buffer);
        } else {
            ConvertRgbRows(strip, PrxGetRgbRowConverter(strip.pixelFormat), colorMatrix, buffer);
        }
        return {buffer.Row(0), buffer.RowBytes(), prxFormatV216, strip.width, strip.rowCount};
    }
    if (chromaFormat == prxChroma422) {
        // The caller's pixels change by being encoded. Kept.
        if (const PrxChromaLowPass lowPass = PrxGetChromaLowPass(strip.pixelFormat))
            LowPassRows(strip, lowPass);
    }
    return strip;
}
