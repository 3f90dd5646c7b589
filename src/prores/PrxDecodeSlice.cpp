#include "prores/PrxDecodeSlice.h"

#include "prores/PrxSliceHeader.h"

#include <bit>
#include <cstring>

namespace {

constexpr uint32_t mostMacroblocks = 8;
constexpr uint32_t mostBlocksPerMb = 12;
constexpr uint32_t blockArea = 64;
constexpr uint32_t lumaBlocksPerMb = 4;

/// Coefficients of a slice: luma blocks, then chroma blocks, Cb and Cr by turns.
struct SliceCoefficients {
    alignas(64) int16_t values[mostMacroblocks * mostBlocksPerMb * blockArea];
};

/// A slice's coded stretches in one block of memory.
struct SliceBytes {
    const uint8_t* luma;
    const uint8_t* cb;
    const uint8_t* cr;
    const uint8_t* alpha;
};

/// The header's check made sure that all stretches are inside the slice.
SliceBytes FindStretches(const PrxSliceJob& slice, const PrxSliceHeader& header, PrxWorkerContext* context) {
    const bool inOnePiece = slice.data.size >= slice.size;
    if (!inOnePiece) PrxCopyBytes(slice.data, slice.size, context->gathered);
    SliceBytes bytes;
    bytes.luma = (inOnePiece ? slice.data.data : context->gathered) + header.headerSize;
    bytes.cb = bytes.luma + header.lumaSize;
    bytes.cr = bytes.cb + header.cbSize;
    bytes.alpha = bytes.cr + header.crSize;
    return bytes;
}

void ReadCoefficients(const PrxSliceJob& slice, const PrxSliceHeader& header, const SliceBytes& bytes,
                      SliceCoefficients* coefficients) {
    const PrxPictureContext& picture = *slice.picture;
    const uint32_t log2Block = picture.Log2Block();
    const uint32_t log2Luma = std::countr_zero(slice.mbCount * lumaBlocksPerMb);
    const uint32_t log2Chroma = std::countr_zero(slice.mbCount * picture.chromaBlocksPerMb / 2);
    int16_t* luma = coefficients->values;
    int16_t* cb = luma + (size_t{1} << (log2Luma + log2Block));
    int16_t* cr = cb + (size_t{1} << log2Block);
    int16_t* end = cb + (size_t{2} << (log2Chroma + log2Block));
    std::memset(luma, 0, static_cast<size_t>(end - luma) * sizeof(int16_t));
    PrxDecodeSliceComponents({bytes.luma, header.lumaSize, luma, log2Luma, log2Block},
                             {bytes.cb, header.cbSize, cb, log2Chroma, log2Block + 1},
                             {bytes.cr, header.crSize, cr, log2Chroma, log2Block + 1}, picture.order);
}

void WriteDirectly(const PrxMacroblock& macroblock, const PrxPictureContext& picture) {
    picture.converter.writer(macroblock, picture.writerSetup);
}

/// Has a writer that knows full size only store beside the picture, and copies what belongs to the reduced
/// macroblock. Such a picture means nothing, but nothing is written behind its rows.
void WriteThroughTile(const PrxMacroblock& macroblock, const PrxPictureContext& picture) {
    constexpr ptrdiff_t tileStride = 256; // 16 pixels of the largest format
    alignas(64) uint8_t tile[16 * tileStride];
    PrxMacroblock aside = macroblock;
    aside.dst = tile;
    aside.dstStride = tileStride;
    picture.converter.writer(aside, picture.writerSetup);
    for (int32_t row = 0; row < macroblock.rows; ++row) {
        std::memcpy(macroblock.dst + row * macroblock.dstStride, tile + row * tileStride,
                    picture.converter.mbBytes);
    }
}

void WriteMacroblocks(const PrxSliceJob& slice, const SliceCoefficients& coefficients,
                      const PrxSliceState& state) {
    const PrxPictureContext& picture = *slice.picture;
    const uint32_t log2Block = picture.Log2Block();
    const size_t lumaStep = size_t{lumaBlocksPerMb} << log2Block;
    const size_t chromaStep = size_t{picture.chromaBlocksPerMb} << log2Block;
    const auto write = picture.WriterOverruns() ? WriteThroughTile : WriteDirectly;
    alignas(64) int16_t samples[mostBlocksPerMb * blockArea];
    // A writer for full size reads whole blocks, also where the transform made less.
    if (picture.WriterOverruns()) std::memset(samples, 0, sizeof samples);
    PrxMacroblock macroblock{samples, slice.alpha, slice.alphaStride, slice.dst, slice.dstStride, slice.rows};
    const int16_t* luma = coefficients.values;
    const int16_t* chroma = luma + slice.mbCount * lumaStep;
    for (uint32_t mb = 0; mb < slice.mbCount; ++mb) {
        picture.idct(luma, samples, lumaBlocksPerMb, picture.idctDepth, state.lumaTable);
        picture.idct(chroma, samples + lumaStep, static_cast<int32_t>(picture.chromaBlocksPerMb),
                     picture.idctDepth, state.chromaTable);
        write(macroblock, picture);
        luma += lumaStep;
        chroma += chromaStep;
        macroblock.dst += picture.converter.mbBytes;
        if (macroblock.alpha != nullptr) macroblock.alpha += picture.MbAlphaBytes();
    }
}

} // namespace

PrxSliceResult PrxDecodeSlice(const PrxSliceJob& slice, PrxWorkerContext* context) {
    const PrxPictureContext& picture = *slice.picture;
    PrxSliceHeader header;
    if (PrxReadSliceHeader(slice.data, slice.size, picture.streamHasAlpha, &header) == 0) {
        return PrxSliceResult::refused;
    }
    PrxSliceState& state = context->sliceState;
    PrxUpdateQuantTables(state, picture.lumaMatrix, picture.chromaMatrix, header.quantiser);
    const SliceBytes bytes = FindStretches(slice, header, context);
    SliceCoefficients coefficients;
    ReadCoefficients(slice, header, bytes, &coefficients);
    bool opaque = !picture.streamHasAlpha;
    if (slice.alpha != nullptr) {
        opaque =
            picture.alphaDecoder(bytes.alpha, header.alphaSize, slice.alpha, slice.alphaStride,
                                 static_cast<int32_t>(16 * slice.mbCount), slice.rows << picture.VShift());
    }
    WriteMacroblocks(slice, coefficients, state);
    return opaque ? PrxSliceResult::opaque : PrxSliceResult::decoded;
}
