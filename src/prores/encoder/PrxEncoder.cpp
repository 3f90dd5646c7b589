#include "prores/encoder/PrxEncoder.h"

#include "prores/PrxColorCoefficients.h"
#include "prores/PrxFields.h"
#include "prores/PrxFormats.h"
#include "prores/PrxOutOfMemory.h"
#include "prores/PrxSizes.h"
#include "prores/encoder/PrxAlphaCoder.h"
#include "prores/encoder/PrxFrameWriter.h"
#include "prores/encoder/PrxInputConverter.h"
#include "prores/encoder/PrxQuantMatrices.h"

#include <cstdlib>

namespace {

constexpr int32_t wrongArgument = -50;
constexpr int32_t tooLarge = -3;
constexpr int32_t largestSide = 65535;

constexpr const PrxPoolClient& poolClient = prxPoolClientFor<PrxEncodeRowJob, PrxEncodeContext, PrxEncodeRow>;

/// The most bytes that the frame can take. A codec type of neither family has no alpha by its name, but gets
/// it all the same, and with it the room.
int64_t NeededCapacity(const PrxEncodeSettings& settings, const PrxPixelBuffer& pixels,
                       int32_t chromaFormat) {
    const bool hasAlpha = settings.hasAlpha != 0;
    const bool isUnnamed = !PrxIs444Codec(settings.codecType) && chromaFormat == prxChroma444;
    const int64_t alphaSize = hasAlpha && isUnnamed ? 3 * PrxCountPixels(pixels.width, pixels.height) : 0;
    return PrxGetFrameSizeBound(settings.codecType, hasAlpha, pixels.width, pixels.height) + alphaSize;
}

/// Whether the rows are as far apart as the pixels of one take. Rows that overlap are no picture: workers
/// would low-pass the chroma of one while others read it. A single row has no next one, and rows of `v210`
/// that are too short aren't read.
bool RowsHaveRoom(const PrxPixelBuffer& pixels) {
    if (pixels.height == 1 || pixels.pixelFormat == prxFormatV210) return true;
    const int64_t stored = PrxIs422Format(pixels.pixelFormat) ? (pixels.width + 1) / 2 * 2 : pixels.width;
    return std::abs(int64_t{pixels.rowBytes}) >= stored * PrxGetGroupSize(pixels.pixelFormat).bytesPerGroup;
}

int32_t CheckRequest(const PrxEncodeRequest& request, int32_t chromaFormat) {
    const PrxPixelBuffer& pixels = request.pixels;
    if (pixels.baseAddress == nullptr) return wrongArgument;
    if (PrxGetConverter(pixels.pixelFormat, chromaFormat) == nullptr) return wrongArgument;
    if (pixels.width < 1 || pixels.height < 1) return wrongArgument;
    const auto capacity = static_cast<int64_t>(request.output.size());
    if (capacity < NeededCapacity(request.settings, pixels, chromaFormat)) return wrongArgument;
    if (pixels.width > largestSide || pixels.height > largestSide) return tooLarge;
    return RowsHaveRoom(pixels) ? 0 : wrongArgument;
}

/// The target of the whole frame.
PrxRateTarget FrameTarget(const PrxEncodeRequest& request, int32_t chromaFormat, int32_t colorMatrix) {
    const PrxPixelBuffer& pixels = request.pixels;
    const PrxProfile profile = PrxGetProfile(request.settings.codecType);
    const int64_t high = PrxGetTargetSize(request.settings.codecType,
                                          PrxCountPixels(pixels.width, pixels.height), pixels.pixelFormat);
    return {.startQuantIndex = profile.startQuantIndex,
            .matrixIndex = profile.matrixIndex,
            .targetHigh = static_cast<int32_t>(high),
            .targetLow = static_cast<int32_t>(high * 8 / 9),
            .chromaFormat = chromaFormat,
            .colorMatrix = colorMatrix};
}

/// The target of each of `pictureCount` pictures. The reserve is for the zeros at the frame's end.
PrxRateTarget PictureTarget(const PrxRateTarget& frame, int32_t pictureCount) {
    constexpr int32_t reserve = 50;
    PrxRateTarget picture = frame;
    picture.targetHigh =
        (frame.targetHigh - static_cast<int32_t>(prxFirstPictureOffset) - reserve) / pictureCount;
    picture.targetLow =
        (frame.targetLow - static_cast<int32_t>(prxFirstPictureOffset) - reserve) / pictureCount;
    return picture;
}

PrxPictureSource SourceOf(const PrxPixelBuffer& pixels, const PrxFieldPlan& plan) {
    const ptrdiff_t rowBytes = pixels.rowBytes;
    const bool fromSecondRow = plan.bottom && plan.height > 0;
    return {.rows = pixels.baseAddress + (fromSecondRow ? rowBytes : 0),
            .rowBytes = plan.interleaved ? 2 * rowBytes : rowBytes,
            .pixelFormat = pixels.pixelFormat,
            .width = pixels.width,
            .height = plan.height,
            .isField = plan.interleaved};
}

} // namespace

PrxEncoder::PrxEncoder(int32_t workerCount, PrxThreadStartHook threadStartHook, PrxThreadStarter startThread)
    : threadStartHook_(threadStartHook),
      pool_(PrxThreadPool::create(PrxWorkersFor(workerCount), &threadStartHook_, poolClient, startThread)) {
    if (pool_ == nullptr) throw PrxOutOfMemory();
}

int32_t PrxEncoder::EncodeFrame(const PrxEncodeRequest& request, PrxEncodedFrame* frame) {
    const PrxEncodeSettings& settings = request.settings;
    const PrxPixelBuffer& pixels = request.pixels;
    const int32_t chromaFormat = PrxGetChromaFormat(settings.codecType, pixels.pixelFormat);
    const int32_t failure = CheckRequest(request, chromaFormat);
    if (failure != 0) return failure;
    const int32_t colorMatrix = PrxColorMatrixFor(options.colorMatrix, static_cast<uint32_t>(pixels.height));
    const PrxRateTarget target = FrameTarget(request, chromaFormat, colorMatrix);
    const bool hasAlpha = settings.hasAlpha != 0 && chromaFormat == prxChroma444;
    const PrxAlphaCoder alphaCoder = PrxChooseAlphaCoder(hasAlpha, pixels.pixelFormat);
    *frame = EncodePictures(request, target, alphaCoder);
    PrxWriteFrameHeader(HeaderOf(request, target, alphaCoder),
                        {options.aspectRatioCode, options.frameRateCode}, static_cast<uint32_t>(frame->size),
                        request.output.data());
    return 0;
}

PrxEncodedFrame PrxEncoder::EncodePictures(const PrxEncodeRequest& request, const PrxRateTarget& frameTarget,
                                           const PrxAlphaCoder& alphaCoder) {
    constexpr int32_t allFields = 1;
    const int32_t mode = request.settings.interlaceMode;
    // Any other mode is progressive, whatever the header then says. Kept.
    const int32_t knownMode = mode == 1 || mode == 2 ? mode : 0;
    PrxFieldPlans plans;
    const int32_t count = PrxPlanFields(knownMode, allFields, request.pixels.height, &plans);
    const PrxRateTarget target = PictureTarget(frameTarget, count);
    size_t used = prxFirstPictureOffset;
    bool allOpaque = true;
    for (const PrxFieldPlan& plan : std::span(plans.data(), static_cast<size_t>(count))) {
        const PrxCodedPicture coded = picture_.Encode(*pool_, SourceOf(request.pixels, plan), target,
                                                      alphaCoder, request.output.subspan(used));
        used += coded.size;
        allOpaque &= coded.allOpaque;
    }
    return {static_cast<int32_t>(PrxAddStuffing(request.output, used)), allOpaque};
}

PrxFrameHeader PrxEncoder::HeaderOf(const PrxEncodeRequest& request, const PrxRateTarget& target,
                                    const PrxAlphaCoder& alphaCoder) const {
    return {.headerSize = prxFrameHeaderSize,
            .width = static_cast<uint32_t>(request.pixels.width),
            .height = static_cast<uint32_t>(request.pixels.height),
            .chromaFormat = static_cast<uint8_t>(target.chromaFormat),
            .interlaceMode = static_cast<uint8_t>(request.settings.interlaceMode & 3),
            .colorPrimaries = static_cast<uint8_t>(options.colorPrimaries),
            .transferCharacteristic = static_cast<uint8_t>(options.transferFunction),
            .matrixCoefficients = static_cast<uint8_t>(target.colorMatrix),
            .sourcePixelFormat = PrxSourceFormatCode(request.pixels.pixelFormat),
            .alphaType = static_cast<uint8_t>(alphaCoder.alphaType),
            .loadLumaMatrix = true,
            .loadChromaMatrix = true,
            .lumaMatrix = PrxLumaWeights(target.matrixIndex),
            .chromaMatrix = PrxChromaWeights(target.matrixIndex)};
}
