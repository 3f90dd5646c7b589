#include "dnx/Packings.h"

#include "dnx/RgbRows.h"
#include "dnx/YCbCrRows.h"

namespace dnx {

namespace {

bool FindYCbCrPacking(const DNXUncompressedParameters& parameters, Packing& packing) {
    const bool bytes = parameters.componentLayout == dnxLayout8Bit;
    const bool alpha =
        parameters.sampleFormat == dnxSamplesCbYACrYA || parameters.sampleFormat == dnxSamplesCbYACrYACoded8;
    packing = {false, bytes ? 8 : 16, alpha};
    return (bytes || parameters.componentLayout == dnxLayout16BitHR) &&
           (alpha || parameters.sampleFormat == dnxSamplesCbYCrY);
}

bool FindRgbPacking(const DNXUncompressedParameters& parameters, Packing& packing) {
    packing = {true, 16, true};
    return (parameters.componentLayout == dnxLayout16Bit || parameters.componentLayout == dnxLayout16BitHR) &&
           (parameters.sampleFormat == dnxSamplesArgb || parameters.sampleFormat == dnxSamplesArgbCoded8);
}

LumaWeights WeightsOf(const AVFrame& frame) {
    return frame.colorspace == AVCOL_SPC_BT2020_NCL ? weightsBT2020 : weightsBT709;
}

} // namespace

bool FindPacking(const DNXUncompressedParameters& parameters, Packing& packing) {
    switch (parameters.colorFormat) {
    case dnxColorYCbCr: return FindYCbCrPacking(parameters, packing);
    case dnxColorRgb: return FindRgbPacking(parameters, packing);
    default: return false;
    }
}

uint64_t PictureBytes(const Packing& packing, uint32_t width, uint32_t height) {
    const uint32_t samples = (packing.rgb ? 3 : 2) + (packing.alpha ? 1 : 0);
    return uint64_t{samples} * static_cast<uint32_t>(packing.depth / 8) * width * height;
}

bool Converts(const Packing& packing, const PlaneFormat& planes) {
    return packing.rgb || planes.color == PlaneColor::YCbCr422;
}

void PackRows(const AVFrame& frame, const PlaneFormat& planes, RowBand band, const Packing& packing,
              uint8_t* output) {
    if (packing.rgb)
        WriteRgb(frame, planes, band, WeightsOf(frame), output);
    else
        WritePairs(frame, planes, band, packing, output);
}

void UnpackRows(const uint8_t* input, const Packing& packing, const PlaneFormat& planes, RowBand band,
                AVFrame& frame) {
    if (packing.rgb)
        ReadRgb(input, planes, band, frame);
    else
        ReadPairs(input, packing.depth, planes, band, frame);
}

} // namespace dnx
