#include "prores/PrxFrameSetup.h"

#include "prores/PrxColorCoefficients.h"
#include "prores/PrxFields.h"
#include "prores/PrxFormats.h"
#include "prores/PrxScan.h"

#include <iterator>

namespace {

constexpr int32_t noWriter = -1;
constexpr int32_t damagedFrame = -2;
constexpr int32_t wrongMode = -3;
constexpr int32_t targetTooSmall = -4;

/// Reduction by 2 to these powers, by mode from 1 on; of an interlaced frame counted in lines of the frame.
struct Reduction {
    int32_t hShift;
    int32_t vShift;
};
constexpr Reduction reductions[] = {{0, 0}, {0, 1}, {0, 1}, {0, 1}, {0, 1}, {1, 1},
                                    {1, 1}, {1, 2}, {2, 2}, {2, 3}, {3, 3}};
constexpr int32_t modeCount = std::size(reductions);
constexpr int32_t fullSizeMode = 1;
constexpr int32_t quarterDetailMode = 7;

/// Reads the frame's size and header. Returns the size, or `damagedFrame`. `pictures` becomes the chain from
/// the first picture on.
int32_t ReadFrame(const PrxBufferPiece& input, PrxFrameHeader* header, PrxBufferPiece* pictures) {
    constexpr int32_t leastFrameSize = 21;
    const auto frameSize = static_cast<int32_t>(PrxRead32At(input, 0));
    if (frameSize < leastFrameSize || static_cast<uint64_t>(frameSize) > PrxTotalSize(input)) {
        return damagedFrame;
    }
    const PrxBufferPiece headerStart = PrxAdvance(input, PrxFrameHeaderOffset(input));
    const uint32_t headerSize = PrxParseFrameHeader(headerStart, header);
    if (headerSize == 0) return damagedFrame;
    *pictures = PrxAdvance(headerStart, headerSize);
    return frameSize;
}

/// Whether the target takes the reduced frame. Of an interlaced frame in a reduced mode that counts half of
/// the frame's lines, rounded down; a field with one line more loses its last one.
bool TargetTakes(const PrxOutputTarget& target, const PrxFrameHeader& header, const Reduction& reduction) {
    const PrxGroupSize group = PrxGetGroupSize(target.pixelFormat);
    int64_t needWidth = header.width >> reduction.hShift;
    if (target.widthResampler != nullptr) needWidth = needWidth * 4 / 3;
    const int64_t needHeight = header.height >> reduction.vShift;
    if (target.baseAddress == nullptr || target.width < needWidth || target.height < needHeight) return false;
    if (target.rowBytes < group.bytesPerGroup * needWidth / group.pixelsPerGroup) return false;

    // Writers store whole macroblocks, but for v210, which is written by pixel groups from a row buffer.
    if (target.pixelFormat == prxFormatV210) return true;
    const int64_t storedWidth = ((header.width + 15) & ~15U) >> reduction.hShift;
    return target.rowBytes >= group.bytesPerGroup * storedWidth / group.pixelsPerGroup;
}

/// Fills in what does not depend on the field. Returns whether there is a way from the stream to the target.
bool FillPicture(const PrxFrameHeader& header, const PrxOutputTarget& target, const Reduction& reduction,
                 int32_t coefLimit, bool ignoreAlpha, PrxPictureContext* picture) {
    const bool interlaced = header.interlaceMode != 0;
    picture->target = target;
    picture->width = static_cast<int32_t>(header.width);
    picture->writerSetup = {reduction.hShift, reduction.vShift,
                            PrxColorMatrixFor(header.matrixCoefficients, header.height)};
    picture->chromaBlocksPerMb = header.chromaFormat == prxChroma444 ? 8 : 4;
    picture->order = {PrxScanTable(interlaced, reduction.hShift), static_cast<uint32_t>(coefLimit)};
    picture->streamHasAlpha = header.alphaType != 0;
    picture->alphaDecoder =
        ignoreAlpha ? nullptr : PrxSelectAlphaDecoder(header.alphaType, target.pixelFormat);
    const bool decodesAlpha = picture->alphaDecoder != nullptr;
    picture->alphaSampleSize = decodesAlpha ? PrxGetAlphaSampleSize(target.pixelFormat) : 0;
    PrxSelectConverter(&picture->converter, target.pixelFormat, header.chromaFormat, reduction.hShift,
                       reduction.vShift, decodesAlpha);
    if (picture->converter.writer == nullptr) return false;
    picture->writerSetup.streams = picture->converter.direct && picture->converter.rowPass == nullptr &&
                                   target.widthResampler == nullptr;
    picture->idct = PrxSelectInverseTransform(reduction.hShift, reduction.vShift);
    picture->idctDepth = PrxGetPrecisionClass(picture->converter.intermediateFormat);
    picture->lumaMatrix = header.lumaMatrix;
    picture->chromaMatrix = header.chromaMatrix;
    return true;
}

/// Makes `picture` that of one field of the frame, or of the whole frame. Returns whether it can be laid out.
bool PlacePicture(const PrxFieldPlan& plan, const PrxBufferPiece& coded, PrxPictureContext* picture) {
    const PrxOutputTarget& target = picture->target;
    const int32_t lineStep = plan.interleaved ? 2 : 1;
    const int32_t firstLine = plan.interleaved && plan.bottom ? 1 : 0;
    picture->height = plan.height;
    picture->outBase = target.baseAddress + ptrdiff_t{target.rowBytes} * firstLine;
    picture->rowBytes = ptrdiff_t{target.rowBytes} * lineStep;
    picture->outHeight = (int64_t{target.height} + lineStep - 1 - firstLine) / lineStep;
    PrxInitPictureLayout(&picture->layout, coded, static_cast<uint32_t>(picture->width),
                         static_cast<uint32_t>(plan.height));
    return picture->layout.mbHeight != 0 && picture->layout.sliceCount != 0;
}

/// Places the pictures that `mode` decodes, whose common part is in the first one.
int32_t PlacePictures(const PrxFrameHeader& header, const PrxBufferPiece& coded, int32_t mode,
                      PrxFrameSetup* setup) {
    PrxFieldPlans plans;
    setup->pictureCount =
        PrxPlanFields(header.interlaceMode, mode, static_cast<int32_t>(header.height), &plans);
    if (setup->pictureCount == 0) return wrongMode;
    if (setup->pictureCount == 2) setup->pictures[1] = setup->pictures[0];
    for (int32_t i = 0; i < setup->pictureCount; ++i) {
        const PrxBufferPiece picture =
            plans[i].codedSecond ? PrxAdvance(coded, PrxGetPictureSize(coded)) : coded;
        if (!PlacePicture(plans[i], picture, &setup->pictures[i])) return damagedFrame;
    }
    return 0;
}

} // namespace

int32_t PrxSetUpFrame(const PrxBufferPiece& input, const PrxOutputTarget& target, int32_t mode,
                      bool ignoreAlpha, PrxFrameSetup* setup) {
    PrxFrameHeader header;
    PrxBufferPiece coded;
    const int32_t frameSize = ReadFrame(input, &header, &coded);
    if (frameSize < 0) return frameSize;
    if (mode < 1 || mode > modeCount) return wrongMode;
    Reduction reduction = reductions[mode - 1];
    if (!TargetTakes(target, header, reduction)) return targetTooSmall;

    setup->interlaced = header.interlaceMode != 0;
    setup->streamHasAlpha = header.alphaType != 0;
    if (setup->interlaced && mode != fullSizeMode)
        --reduction.vShift; // one field has half of the lines already
    const int32_t coefLimit =
        64 >> (reduction.hShift + reduction.vShift + (mode == quarterDetailMode ? 2 : 0));
    if (!FillPicture(header, target, reduction, coefLimit, ignoreAlpha, &setup->pictures[0])) return noWriter;
    const int32_t placed = PlacePictures(header, coded, mode, setup);
    return placed < 0 ? placed : frameSize;
}
