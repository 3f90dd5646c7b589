#include "prores/encoder/PrxInputEdges.h"

#include "prores/PrxFormats.h"

#include <cstring>

namespace {

/// A 4:4:4 row for a 4:2:2 stream has its chroma filtered in even pixels only: where its last pixel is an odd
/// one, chroma that was not filtered is repeated. Kept.
void ExtendRow(uint8_t* row, int32_t columns, ptrdiff_t pixelBytes) {
    for (int32_t x = columns; x < 16; ++x)
        std::memcpy(row + x * pixelBytes, row + (columns - 1) * pixelBytes, static_cast<size_t>(pixelBytes));
}

/// Extends a row of packed 4:2:2, where each pixel holds its luma, and Cb if even or Cr if odd. The chroma of
/// both comes from the last pair, whose odd pixel need not be inside the picture.
void ExtendPackedRow(uint8_t* row, int32_t columns, ptrdiff_t pixelBytes, bool lumaFirst) {
    const ptrdiff_t sampleBytes = pixelBytes / 2;
    const ptrdiff_t luma = lumaFirst ? 0 : sampleBytes;
    const ptrdiff_t chroma = sampleBytes - luma;
    const int32_t lastPair = (columns - 1) / 2 * 2;
    for (int32_t x = columns; x < 16; ++x) {
        uint8_t* pixel = row + x * pixelBytes;
        std::memcpy(pixel + luma, row + (columns - 1) * pixelBytes + luma, static_cast<size_t>(sampleBytes));
        if (x > lastPair + 1)
            std::memcpy(pixel + chroma, row + (lastPair + x % 2) * pixelBytes + chroma,
                        static_cast<size_t>(sampleBytes));
    }
}

} // namespace

ptrdiff_t PrxExtendMacroblock(const PrxInputMacroblock& macroblock, uint32_t pixelFormat,
                              PrxWholeMacroblock& copy) {
    const auto pixelBytes = static_cast<ptrdiff_t>(PrxGetGroupSize(pixelFormat).bytesPerGroup);
    const bool packed = PrxIs422Format(pixelFormat);
    const int32_t stored = packed ? (macroblock.columns + 1) / 2 * 2 : macroblock.columns;
    const ptrdiff_t rowBytes = 16 * pixelBytes;
    for (int32_t y = 0; y < macroblock.rows; ++y) {
        uint8_t* row = copy.data() + y * rowBytes;
        std::memcpy(row, macroblock.source + y * macroblock.rowBytes,
                    static_cast<size_t>(stored * pixelBytes));
        if (packed) {
            ExtendPackedRow(row, macroblock.columns, pixelBytes, pixelFormat == prxFormatYuvs);
        } else {
            ExtendRow(row, macroblock.columns, pixelBytes);
        }
    }
    for (int32_t y = macroblock.rows; y < 16; ++y)
        std::memcpy(copy.data() + y * rowBytes, copy.data() + (y - 1) * rowBytes,
                    static_cast<size_t>(rowBytes));
    return rowBytes;
}
