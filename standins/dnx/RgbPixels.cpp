#include "dnx/RgbPixels.h"

#include "dnx/RgbWords.h"

namespace dnx {

void SpreadChroma(const uint16_t* codes, float scale, size_t first, size_t width, float* chroma) {
    const auto difference = [=](size_t pair) { return static_cast<float>(codes[pair]) * scale - noChroma; };
    const size_t last = (width - 1) / 2;
    for (size_t pair = first; pair < last; ++pair) {
        chroma[2 * pair] = difference(pair);
        chroma[2 * pair + 1] = (difference(pair) + difference(pair + 1)) * 0.5f;
    }
    for (size_t x = 2 * last; x < width; ++x)
        chroma[x] = difference(last);
}

void StoreRgbPixels(const YCbCrRow& row, const VideoMatrix& matrix, size_t first, size_t width,
                    uint8_t* output) {
    for (size_t x = first; x < width; ++x) {
        const float y = static_cast<float>(row.luma[x]) * row.scale;
        StorePixel(output, x, RoundToWord(y + matrix.redFromCr * row.cr[x]),
                   RoundToWord(y + matrix.greenFromCb * row.cb[x] + matrix.greenFromCr * row.cr[x]),
                   RoundToWord(y + matrix.blueFromCb * row.cb[x]));
    }
}

} // namespace dnx
