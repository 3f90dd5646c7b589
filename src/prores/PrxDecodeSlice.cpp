#include "prores/PrxDecodeSlice.h"

#include "prores/PrxSliceHeader.h"

#include <array>
#include <bit>
#include <cassert>
#include <cstring>
#include <span>

namespace {

constexpr uint32_t mostMacroblocks = 8;
constexpr uint32_t mostBlocksPerMb = 12;
constexpr uint32_t blockArea = 64;
constexpr uint32_t lumaBlocksPerMb = 4;

/// A slice's coded stretches in one block of memory.
struct SliceBytes {
    const uint8_t* luma;
    const uint8_t* cb;
    const uint8_t* cr;
    const uint8_t* alpha;
};

/// A slice on its way from bytes to pixels.
struct SliceWork {
    PrxSliceHeader header;
    SliceBytes bytes;
    std::array<PrxSliceComponent, 3> components;

    /// Luma blocks, then chroma blocks, Cb and Cr by turns.
    alignas(64) int16_t coefficients[mostMacroblocks * mostBlocksPerMb * blockArea];
};

/// The header's check made sure that all stretches are inside the slice. `gathered` takes a slice that
/// doesn't lie in one piece of the input.
SliceBytes FindStretches(const PrxSliceJob& slice, const PrxSliceHeader& header, uint8_t* gathered) {
    const bool inOnePiece = slice.data.size >= slice.size;
    if (!inOnePiece) PrxCopyBytes(slice.data, slice.size, gathered);
    SliceBytes bytes;
    bytes.luma = (inOnePiece ? slice.data.data : gathered) + header.headerSize;
    bytes.cb = bytes.luma + header.lumaSize;
    bytes.cr = bytes.cb + header.cbSize;
    bytes.alpha = bytes.cr + header.crSize;
    return bytes;
}

/// Clears the coefficients of a slice and places luma, Cb and Cr among them.
void PlaceComponents(const PrxSliceJob& slice, SliceWork* work) {
    const PrxPictureContext& picture = *slice.picture;
    const uint32_t log2Block = picture.Log2Block();
    const uint32_t log2Luma = std::countr_zero(slice.mbCount * lumaBlocksPerMb);
    const uint32_t log2Chroma = std::countr_zero(slice.mbCount * picture.chromaBlocksPerMb / 2);
    int16_t* luma = work->coefficients;
    int16_t* cb = luma + (size_t{1} << (log2Luma + log2Block));
    int16_t* cr = cb + (size_t{1} << log2Block);
    int16_t* end = cb + (size_t{2} << (log2Chroma + log2Block));
    std::memset(luma, 0, static_cast<size_t>(end - luma) * sizeof(int16_t));
    work->components = {{{work->bytes.luma, work->header.lumaSize, luma, log2Luma, log2Block},
                         {work->bytes.cb, work->header.cbSize, cb, log2Chroma, log2Block + 1},
                         {work->bytes.cr, work->header.crSize, cr, log2Chroma, log2Block + 1}}};
}

/// Reads the header of a slice and prepares its decoding. False if it is refused.
bool OpenSlice(const PrxSliceJob& slice, uint8_t* gathered, SliceWork* work) {
    if (PrxReadSliceHeader(slice.data, slice.size, slice.picture->streamHasAlpha, &work->header) == 0)
        return false;
    work->bytes = FindStretches(slice, work->header, gathered);
    PlaceComponents(slice, work);
    return true;
}

/// Reads the coefficients of up to `prxSlicesAtOnce` slices.
void ReadCoefficients(std::span<const SliceWork* const> works, const PrxCoefficientOrder& order) {
    std::array<PrxSliceComponent, prxComponentsAtOnce> components;
    size_t count = 0;
    for (size_t component = 0; component < 3; ++component) // luma, the longest, first
        for (const SliceWork* work : works)
            components[count++] = work->components[component];
    PrxDecodeSliceComponents({components.data(), count}, order);
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

void WriteMacroblocks(const PrxSliceJob& slice, const int16_t* coefficients, const PrxSliceState& state) {
    const PrxPictureContext& picture = *slice.picture;
    const uint32_t log2Block = picture.Log2Block();
    const size_t lumaStep = size_t{lumaBlocksPerMb} << log2Block;
    const size_t chromaStep = size_t{picture.chromaBlocksPerMb} << log2Block;
    const auto write = picture.WriterOverruns() ? WriteThroughTile : WriteDirectly;
    alignas(64) int16_t samples[mostBlocksPerMb * blockArea];
    // A writer for full size reads whole blocks, also where the transform made less.
    if (picture.WriterOverruns()) std::memset(samples, 0, sizeof samples);
    PrxMacroblock macroblock{samples, slice.alpha, slice.alphaStride, slice.dst, slice.dstStride, slice.rows};
    const int16_t* luma = coefficients;
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

/// Makes pixels of the coefficients that were read.
PrxSliceResult FinishSlice(const PrxSliceJob& slice, const SliceWork& work, PrxSliceState* state) {
    const PrxPictureContext& picture = *slice.picture;
    bool opaque = !picture.streamHasAlpha;
    if (slice.alpha != nullptr) {
        opaque =
            picture.alphaDecoder(work.bytes.alpha, work.header.alphaSize, slice.alpha, slice.alphaStride,
                                 static_cast<int32_t>(16 * slice.mbCount), slice.rows << picture.VShift());
    }
    PrxUpdateQuantTables(*state, picture.lumaMatrix, picture.chromaMatrix, work.header.quantiser);
    WriteMacroblocks(slice, work.coefficients, *state);
    return opaque ? PrxSliceResult::opaque : PrxSliceResult::decoded;
}

} // namespace

void PrxDecodeSlices(std::span<const PrxSliceJob> slices, PrxWorkerContext* context,
                     PrxSliceResult* results) {
    assert(slices.size() <= prxSlicesAtOnce);
    SliceWork works[prxSlicesAtOnce];
    const SliceWork* opened[prxSlicesAtOnce];
    size_t openedCount = 0;
    for (size_t i = 0; i < slices.size(); ++i) {
        const bool accepted = OpenSlice(slices[i], context->gathered[i], &works[i]);
        results[i] = accepted ? PrxSliceResult::decoded : PrxSliceResult::refused;
        if (accepted) opened[openedCount++] = &works[i];
    }
    ReadCoefficients({opened, openedCount}, slices[0].picture->order);
    for (size_t i = 0; i < slices.size(); ++i) {
        if (results[i] != PrxSliceResult::refused)
            results[i] = FinishSlice(slices[i], works[i], &context->sliceState);
    }
}
