#include "dnx/YCbCrRows.h"

#include "dnx/CodeScale.h"

namespace dnx {

namespace {

/// Rows of pairs in memory. `Word` is the type of a sample there.
template <typename Word, bool hasAlpha>
struct PairRow {
    static constexpr int depth = 8 * sizeof(Word);
    static constexpr size_t half = hasAlpha ? 3 : 2; ///< samples of one pixel
    static constexpr uint32_t opaque = (1u << depth) - 1;
    static constexpr size_t Bytes(size_t width) { return width * half * sizeof(Word); }

    static void StorePixel(uint8_t* row, size_t pixel, uint32_t chroma, uint32_t luma) {
        StoreSample<Word>(row, pixel * half, chroma);
        StoreSample<Word>(row, pixel * half + 1, luma);
        if constexpr (hasAlpha) StoreSample<Word>(row, pixel * half + 2, opaque);
    }
    static uint32_t Chroma(const uint8_t* row, size_t pixel) { return LoadSample<Word>(row, pixel * half); }
    static uint32_t Luma(const uint8_t* row, size_t pixel) { return LoadSample<Word>(row, pixel * half + 1); }
};

template <typename Pairs, typename Sample>
void WriteRow(const Planes<Sample>& planes, size_t row, CodeScale scale, uint8_t* __restrict output) {
    const Sample* const luma = planes.Row(0, row);
    const Sample* const cb = planes.Row(1, row);
    const Sample* const cr = planes.Row(2, row);
    const size_t pairs = planes.Width() / 2;
    for (size_t pair = 0; pair < pairs; ++pair) {
        Pairs::StorePixel(output, 2 * pair, scale(cb[pair]), scale(luma[2 * pair]));
        Pairs::StorePixel(output, 2 * pair + 1, scale(cr[pair]), scale(luma[2 * pair + 1]));
    }
    if (planes.Width() % 2 != 0)
        Pairs::StorePixel(output, 2 * pairs, scale(cb[pairs]), scale(luma[2 * pairs]));
}

template <typename Pairs, typename Sample>
void ReadRow(const uint8_t* input, size_t row, CodeScale scale, const Planes<Sample>& planes) {
    const auto code = [scale](uint32_t sample) { return static_cast<Sample>(scale(sample)); };
    Sample* const luma = planes.Row(0, row);
    Sample* const cb = planes.Row(1, row);
    Sample* const cr = planes.Row(2, row);
    const size_t pairs = planes.Width() / 2;
    for (size_t pair = 0; pair < pairs; ++pair) {
        cb[pair] = code(Pairs::Chroma(input, 2 * pair));
        luma[2 * pair] = code(Pairs::Luma(input, 2 * pair));
        cr[pair] = code(Pairs::Chroma(input, 2 * pair + 1));
        luma[2 * pair + 1] = code(Pairs::Luma(input, 2 * pair + 1));
    }
    if (planes.Width() % 2 == 0) return;
    constexpr uint32_t noColor = 1u << (Pairs::depth - 1);
    cb[pairs] = code(Pairs::Chroma(input, 2 * pairs));
    luma[2 * pairs] = code(Pairs::Luma(input, 2 * pairs));
    cr[pairs] = pairs > 0 ? cr[pairs - 1] : code(noColor);
}

template <typename Pairs, typename Sample>
void WritePicture(const AVFrame& frame, const PlaneFormat& format, RowBand band, uint8_t* output) {
    const Planes<Sample> planes(frame);
    const CodeScale scale(format.depth, Pairs::depth);
    for (size_t row = band.first; row < band.end; ++row)
        WriteRow<Pairs>(planes, row, scale, output + row * Pairs::Bytes(planes.Width()));
}

template <typename Pairs, typename Sample>
void ReadPicture(const uint8_t* input, const PlaneFormat& format, RowBand band, AVFrame& frame) {
    const Planes<Sample> planes(frame);
    const CodeScale scale(Pairs::depth, format.depth);
    for (size_t row = band.first; row < band.end; ++row)
        ReadRow<Pairs>(input + row * Pairs::Bytes(planes.Width()), row, scale, planes);
}

template <typename Sample>
void WriteLayout(const AVFrame& frame, const PlaneFormat& format, RowBand band, const Packing& packing,
                 uint8_t* output) {
    if (packing.depth == 8 && packing.alpha)
        WritePicture<PairRow<uint8_t, true>, Sample>(frame, format, band, output);
    else if (packing.depth == 8)
        WritePicture<PairRow<uint8_t, false>, Sample>(frame, format, band, output);
    else if (packing.alpha)
        WritePicture<PairRow<uint16_t, true>, Sample>(frame, format, band, output);
    else
        WritePicture<PairRow<uint16_t, false>, Sample>(frame, format, band, output);
}

template <typename Sample>
void ReadDepth(const uint8_t* input, int depth, const PlaneFormat& format, RowBand band, AVFrame& frame) {
    if (depth == 8)
        ReadPicture<PairRow<uint8_t, false>, Sample>(input, format, band, frame);
    else
        ReadPicture<PairRow<uint16_t, false>, Sample>(input, format, band, frame);
}

} // namespace

void WritePairs(const AVFrame& frame, const PlaneFormat& planes, RowBand band, const Packing& packing,
                uint8_t* output) {
    if (planes.depth == 8)
        WriteLayout<uint8_t>(frame, planes, band, packing, output);
    else
        WriteLayout<uint16_t>(frame, planes, band, packing, output);
}

void ReadPairs(const uint8_t* input, int depth, const PlaneFormat& planes, RowBand band, AVFrame& frame) {
    if (planes.depth == 8)
        ReadDepth<uint8_t>(input, depth, planes, band, frame);
    else
        ReadDepth<uint16_t>(input, depth, planes, band, frame);
}

} // namespace dnx
