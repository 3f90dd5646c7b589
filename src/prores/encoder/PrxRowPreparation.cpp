#include "prores/encoder/PrxRowPreparation.h"

#include "prores/PrxFormats.h"

#include <cassert>

namespace {

/// Calls `prepare(row, index)` for each row of `strip`.
template <class Prepare>
void ForEachRow(const PrxStrip& strip, const Prepare& prepare) {
    for (int32_t row = 0; row < strip.rowCount; ++row)
        prepare(strip.rows + row * strip.rowBytes, row);
}

void FillBuffer(const PrxRowPreparer& preparer, const PrxStrip& strip, int32_t colorMatrix,
                const PrxRowBuffer& buffer) {
    if (preparer.unpack != nullptr) {
        const int32_t groups = PrxCountV210Groups(strip.width);
        ForEachRow(strip, [&](const uint8_t* pixels, int32_t row) {
            preparer.unpack(pixels, buffer.Row(row), groups);
        });
    } else {
        ForEachRow(strip, [&](const uint8_t* pixels, int32_t row) {
            preparer.convertRgb(pixels, strip.width, colorMatrix, buffer.Row(row));
        });
    }
}

} // namespace

bool PrxUsesRowBuffer(uint32_t pixelFormat, int32_t chromaFormat) {
    if (pixelFormat == prxFormatV210) return true;
    return chromaFormat == prxChroma422 && PrxGetRgbRowConverter(pixelFormat) != nullptr;
}

PrxRowPreparer PrxChooseRowPreparer(uint32_t pixelFormat, int32_t chromaFormat, int32_t width,
                                    ptrdiff_t rowBytes) {
    if (pixelFormat == prxFormatV210) return {PrxSelectV210UnpackerFor(width, rowBytes), nullptr, nullptr};
    if (chromaFormat != prxChroma422) return {};
    return {nullptr, PrxGetRgbRowConverter(pixelFormat), PrxGetChromaLowPass(pixelFormat)};
}

PrxStrip PrxPrepareRows(const PrxRowPreparer& preparer, const PrxStrip& strip, int32_t colorMatrix,
                        PrxRowBuffer& buffer) {
    if (preparer.UsesBuffer()) {
        assert(buffer.RowBytes() >= 4 * static_cast<ptrdiff_t>(strip.width) + 64);
        FillBuffer(preparer, strip, colorMatrix, buffer);
        return {buffer.Row(0), buffer.RowBytes(), prxFormatV216, strip.width, strip.rowCount};
    }
    if (preparer.lowPass != nullptr) {
        // The caller's pixels change by being encoded. Kept.
        ForEachRow(strip, [&](uint8_t* pixels, int32_t) { preparer.lowPass(pixels, strip.width, 0); });
    }
    return strip;
}
