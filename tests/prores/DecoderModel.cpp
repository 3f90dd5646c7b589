#include "prores/DecoderModel.h"

#include "prores/PrxAlphaDecoder.h"
#include "prores/PrxFormats.h"
#include "prores/PrxInverseTransform.h"
#include "prores/PrxOutputConverter.h"
#include "prores/PrxRowPassRgb.h"
#include "prores/PrxRowPassSeam.h"
#include "prores/PrxRowPassV210.h"
#include "prores/PrxScan.h"
#include "prores/PrxSliceHeader.h"
#include "prores/PrxWriters.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace {

using stream::Block;
using stream::FrameSpec;
using stream::SlicePlace;

/// What the model holds of one picture.
struct ModelPicture {
    const FrameSpec* spec;
    PrxOutputTarget target; ///< that of the picture: every second row for a field among two
    int32_t picture;        ///< in coded order
    PrxWriterSetup setup;
    PrxOutputConverter converter;
    PrxMacroblockWriter writer;
    PrxRowPass rowPass;
    PrxAlphaDecoder alphaDecoder;
    int32_t alphaSampleSize;
    int32_t coefLimit;

    int32_t MbRows() const { return 16 >> setup.vShift; }
    int32_t MbWidth() const { return (spec->width + 15) / 16; }
};

/// Pixels of a macroblock row, and its alpha.
struct ModelRow {
    std::vector<uint8_t> pixels;
    std::vector<uint8_t> alpha;
    int32_t rows;
    ptrdiff_t stride;
    ptrdiff_t alphaStride;
};

PrxMacroblockWriter ReferenceWriter(uint32_t format, int32_t chromaFormat, bool hasAlpha) {
    if (const auto writer = PrxSelectScalar8BitWriter(format, chromaFormat, hasAlpha)) return writer;
    if (const auto writer = PrxSelectScalar16BitWriter(format, chromaFormat, hasAlpha)) return writer;
    if (const auto writer = PrxSelectScalarFloatWriter(format, chromaFormat, hasAlpha)) return writer;
    return PrxSelectScalarRgbWriter(format, chromaFormat, hasAlpha);
}

PrxRowPass ReferenceRowPass(uint32_t format, int32_t chromaFormat, bool hasAlpha) {
    if (format == prxFormatV210) return PrxScalarV210RowPass;
    if (chromaFormat != prxChroma422) return nullptr;
    const PrxRowPass seamPass = PrxSelectSeamPass(format);
    return seamPass != nullptr ? seamPass : PrxSelectScalarRgbRowPass(format, hasAlpha);
}

/// Transforms one block, cut to its reduced size, to the end of `samples`.
void AppendBlock(const ModelPicture& picture, const Block& block, const std::array<int16_t, 64>& table,
                 std::vector<int16_t>* samples) {
    const bool interlaced = picture.spec->interlaceMode != 0;
    const stream::Scan& full = stream::ScanOrder(interlaced);
    const auto reduced = PrxScanTable(interlaced, picture.setup.hShift);
    std::array<int16_t, 64> kept{};
    for (int32_t i = 0; i < picture.coefLimit; ++i)
        kept[reduced[static_cast<size_t>(i)]] = block[full[static_cast<size_t>(i)]];
    std::array<int16_t, 64> out{};
    PrxScalarInverseTransform(picture.setup.hShift, picture.setup.vShift)(
        kept.data(), out.data(), 1, PrxGetPrecisionClass(picture.converter.intermediateFormat), table.data());
    const int32_t area = 64 >> (picture.setup.hShift + picture.setup.vShift);
    samples->insert(samples->end(), out.begin(), out.begin() + area);
}

std::vector<int16_t> Samples(const ModelPicture& picture, const SlicePlace& place, int32_t mbX) {
    const FrameSpec& spec = *picture.spec;
    const int32_t quantiser = PrxQuantiserOf(static_cast<uint32_t>(spec.quantIndex(place)));
    stream::QuantMatrix four;
    four.fill(4);
    const stream::QuantMatrix luma = spec.lumaMatrix.value_or(four);
    const stream::QuantMatrix chroma = spec.chromaMatrix.value_or(luma);
    std::array<int16_t, 64> lumaTable;
    std::array<int16_t, 64> chromaTable;
    for (size_t i = 0; i < 64; ++i) {
        lumaTable[i] = static_cast<int16_t>(luma[i] * quantiser);
        chromaTable[i] = static_cast<int16_t>(chroma[i] * quantiser);
    }
    const stream::Macroblock macroblock = spec.coefficients(place.picture, mbX, place.mbY);
    std::vector<int16_t> samples;
    for (const Block& block : macroblock.luma)
        AppendBlock(picture, block, lumaTable, &samples);
    for (size_t i = 0; i < (spec.chromaFormat == 3 ? 4U : 2U); ++i) {
        AppendBlock(picture, macroblock.cb[i], chromaTable, &samples);
        AppendBlock(picture, macroblock.cr[i], chromaTable, &samples);
    }
    samples.resize(12 * 64);
    return samples;
}

/// Puts a macroblock's alpha into the row's, through the stream's own code.
void PutAlpha(const ModelPicture& picture, int32_t mbX, int32_t mbY, ModelRow* row) {
    const FrameSpec& spec = *picture.spec;
    const int32_t lineStep = spec.interlaceMode == 0 ? 1 : 2;
    const int32_t firstLine = stream::IsBottomField(spec, picture.picture) ? 1 : 0;
    const int depth = spec.alphaType == 1 ? 8 : 16;
    std::vector<uint16_t> samples;
    for (int32_t y = 16 * mbY; y < 16 * (mbY + 1); ++y) {
        for (int32_t x = 16 * mbX; x < 16 * (mbX + 1); ++x)
            samples.push_back(spec.alpha ? spec.alpha(x, y * lineStep + firstLine)
                                         : static_cast<uint16_t>((1 << depth) - 1));
    }
    const stream::Bytes coded = stream::CodeAlpha(samples, depth);
    picture.alphaDecoder(coded.data(), coded.size(),
                         row->alpha.data() + ptrdiff_t{16} * mbX * picture.alphaSampleSize, row->alphaStride,
                         16, 16);
}

/// Decodes a slice's macroblocks to their row.
void DecodeSlice(const ModelPicture& picture, const SlicePlace& place, ModelRow* row) {
    for (int32_t mbX = place.mbX; mbX < place.mbX + place.mbCount; ++mbX) {
        const std::vector<int16_t> samples = Samples(picture, place, mbX);
        PrxMacroblock macroblock{
            samples.data(),   nullptr,
            row->alphaStride, row->pixels.data() + ptrdiff_t{mbX} * picture.converter.mbBytes,
            row->stride,      row->rows};
        if (picture.alphaDecoder != nullptr) {
            PutAlpha(picture, mbX, place.mbY, row);
            macroblock.alpha = row->alpha.data() + ptrdiff_t{16} * mbX * picture.alphaSampleSize;
        }
        picture.writer(macroblock, picture.setup);
    }
}

/// Brings a finished row to the target.
void FinishRow(const ModelPicture& picture, const ModelRow& row, uint8_t* dst) {
    if (picture.converter.direct) {
        for (int32_t y = 0; y < row.rows; ++y)
            std::copy_n(row.pixels.data() + y * row.stride, row.stride,
                        dst + ptrdiff_t{y} * picture.target.rowBytes);
    }
    if (picture.rowPass == nullptr) return;
    const bool direct = picture.converter.direct;
    const int32_t width = picture.spec->width >> picture.setup.hShift;
    picture.rowPass({direct ? nullptr : row.pixels.data(), row.stride,
                     direct || row.alpha.empty() ? nullptr : row.alpha.data(), row.alphaStride, dst,
                     picture.target.rowBytes, picture.target.rowBytes, width, 0, width, row.rows},
                    picture.setup);
}

void DecodePicture(const ModelPicture& picture) {
    const int32_t lines = stream::PictureHeight(*picture.spec, picture.picture) >> picture.setup.vShift;
    const int32_t outLines = std::min(lines, picture.target.height);
    const std::vector<SlicePlace> slices = stream::SlicesOf(*picture.spec, picture.picture);
    for (int32_t line = 0; line < outLines; line += picture.MbRows()) {
        ModelRow row;
        row.rows = std::min(picture.MbRows(), outLines - line);
        row.stride = ptrdiff_t{picture.MbWidth()} * picture.converter.mbBytes;
        row.pixels.resize(static_cast<size_t>(row.stride * 16));
        row.alphaStride = ptrdiff_t{16} * picture.MbWidth() * picture.alphaSampleSize;
        row.alpha.resize(static_cast<size_t>(row.alphaStride * 16));
        for (const SlicePlace& place : slices) {
            if (place.mbY == line / picture.MbRows()) DecodeSlice(picture, place, &row);
        }
        FinishRow(picture, row, picture.target.baseAddress + ptrdiff_t{line} * picture.target.rowBytes);
    }
}

/// The pictures that a mode decodes, in coded order.
std::vector<int32_t> PicturesOf(const FrameSpec& spec, int32_t mode) {
    if (spec.interlaceMode == 0) return {0};
    const int32_t top = spec.interlaceMode == 1 ? 0 : 1;
    switch (mode) {
    case 1: return {0, 1};
    case 3: return {top};
    case 4: return {1 - top};
    default: return {0};
    }
}

/// Every second line of the frame's buffer, from the field's first one on.
void TakeFieldLines(bool bottom, PrxOutputTarget* target) {
    if (bottom) target->baseAddress += target->rowBytes;
    target->height = (target->height + (bottom ? 0 : 1)) / 2;
    target->rowBytes *= 2;
}

int32_t ColorMatrixOf(const FrameSpec& spec) {
    const int32_t matrix = spec.matrixCoefficients;
    if (matrix == 1 || matrix == 6 || matrix == 9) return matrix;
    return spec.height < 720 ? 6 : 1;
}

} // namespace

ModelReduction ReductionOf(int32_t mode) {
    switch (mode) {
    case 1: return {0, 0};
    case 6:
    case 7: return {1, 1};
    case 8: return {1, 2};
    case 9: return {2, 2};
    case 10: return {2, 3};
    case 11: return {3, 3};
    default: return {0, 1};
    }
}

void ModelDecode(const FrameSpec& spec, const PrxOutputTarget& target, int32_t mode, bool ignoreAlpha) {
    ModelReduction reduction = ReductionOf(mode);
    const bool interlaced = spec.interlaceMode != 0;
    if (interlaced && mode != 1) --reduction.vShift;
    ModelPicture picture{};
    picture.spec = &spec;
    picture.setup = {reduction.hShift, reduction.vShift, ColorMatrixOf(spec)};
    picture.coefLimit = (64 >> (reduction.hShift + reduction.vShift)) / (mode == 7 ? 4 : 1);
    if (!ignoreAlpha)
        picture.alphaDecoder =
            PrxSelectAlphaDecoder(static_cast<uint32_t>(spec.alphaType), target.pixelFormat);
    const bool hasAlpha = picture.alphaDecoder != nullptr;
    picture.alphaSampleSize = hasAlpha ? static_cast<int32_t>(PrxGetAlphaSampleSize(target.pixelFormat)) : 0;
    PrxSelectConverter(&picture.converter, target.pixelFormat, spec.chromaFormat, reduction.hShift,
                       reduction.vShift, hasAlpha);
    picture.writer = ReferenceWriter(picture.converter.intermediateFormat, spec.chromaFormat, hasAlpha);
    picture.rowPass = ReferenceRowPass(target.pixelFormat, spec.chromaFormat, hasAlpha);
    for (const int32_t index : PicturesOf(spec, mode)) {
        picture.picture = index;
        picture.target = target;
        if (interlaced && mode == 1) TakeFieldLines(stream::IsBottomField(spec, index), &picture.target);
        DecodePicture(picture);
    }
}
