#include "mediafoundation/PictureEncoder.h"

#include <algorithm>
#include <numeric>

namespace mediafoundation {

namespace {

/// From a quantiser at which pictures are still known to one at which a loss is hardly seen.
int QuantiserOf(uint32_t quality) {
    constexpr uint32_t coarsest = 40;
    constexpr uint32_t finest = 10;
    return static_cast<int>(coarsest - (coarsest - finest) * std::min(quality, 100u) / 100);
}

/// OpenH264 reckons with no lower one.
float FrameRateOf(const EncoderSettings& settings) { return std::max(settings.frameRate, 1.0F); }

ECOMPLEXITY_MODE ComplexityOf(uint32_t effort) {
    if (effort < 34) return LOW_COMPLEXITY;
    return effort < 67 ? MEDIUM_COMPLEXITY : HIGH_COMPLEXITY;
}

/// What goes for the picture as a whole and for its one layer.
void SetLayer(const SEncParamExt& parameters, const EncoderSettings& settings, SSpatialLayerConfig& layer) {
    layer.iVideoWidth = parameters.iPicWidth;
    layer.iVideoHeight = parameters.iPicHeight;
    layer.fFrameRate = parameters.fMaxFrameRate;
    layer.iSpatialBitrate = parameters.iTargetBitrate;
    layer.iMaxSpatialBitrate = UNSPECIFIED_BIT_RATE;
    layer.uiProfileIdc = static_cast<EProfileIdc>(settings.profile);
    layer.iDLayerQp = QuantiserOf(settings.quality);
    layer.sSliceArgument.uiSliceMode = SM_SINGLE_SLICE;
}

void SetParameters(const EncoderSettings& settings, SEncParamExt& parameters) {
    parameters.iPicWidth = static_cast<int>(settings.width);
    parameters.iPicHeight = static_cast<int>(settings.height);
    parameters.fMaxFrameRate = FrameRateOf(settings);
    parameters.iRCMode = settings.bitRate != 0 ? RC_BITRATE_MODE : RC_OFF_MODE;
    parameters.iTargetBitrate = static_cast<int>(settings.bitRate);
    parameters.iMaxBitrate = UNSPECIFIED_BIT_RATE;
    parameters.uiIntraPeriod = settings.keyDistance;
    parameters.iComplexityMode = ComplexityOf(settings.effort);
    parameters.iEntropyCodingModeFlag = settings.profile == PRO_BASELINE ? 0 : 1;
    // Each picture gives a sample, the parameter sets stay the same, key pictures come where they are due,
    // and the bytes are the same on every machine.
    parameters.bEnableFrameSkip = false;
    parameters.eSpsPpsIdStrategy = CONSTANT_ID;
    parameters.bEnableSceneChangeDetect = false;
    parameters.iMultipleThreadIdc = 1;
    SetLayer(parameters, settings, parameters.sSpatialLayers[0]);
}

/// Joins what OpenH264 gave, whose memory is its own until the next call.
std::vector<uint8_t> StreamOf(const SFrameBSInfo& frame) {
    std::vector<uint8_t> stream;
    for (int i = 0; i < frame.iLayerNum; ++i) {
        const SLayerBSInfo& layer = frame.sLayerInfo[i];
        const int size = std::accumulate(layer.pNalLengthInByte, layer.pNalLengthInByte + layer.iNalCount, 0);
        stream.insert(stream.end(), layer.pBsBuf, layer.pBsBuf + size);
    }
    return stream;
}

} // namespace

void PictureEncoder::DestroyEncoder::operator()(ISVCEncoder* encoder) const {
    encoder->Uninitialize();
    WelsDestroySVCEncoder(encoder);
}

std::unique_ptr<PictureEncoder> PictureEncoder::Create(const EncoderSettings& settings) {
    ISVCEncoder* made = nullptr;
    if (WelsCreateSVCEncoder(&made) != 0 || made == nullptr) return nullptr;
    EncoderPtr encoder(made);
    int silent = WELS_LOG_QUIET;
    encoder->SetOption(ENCODER_OPTION_TRACE_LEVEL, &silent);
    SEncParamExt parameters = {};
    if (encoder->GetDefaultParams(&parameters) != 0) return nullptr;
    SetParameters(settings, parameters);
    if (encoder->InitializeExt(&parameters) != 0) return nullptr;
    return std::unique_ptr<PictureEncoder>(new PictureEncoder(std::move(encoder), FrameRateOf(settings)));
}

std::vector<uint8_t> PictureEncoder::ParameterSets() {
    SFrameBSInfo frame = {};
    if (encoder_->EncodeParameterSets(&frame) != 0) return {};
    return StreamOf(frame);
}

std::vector<uint8_t> PictureEncoder::Encode(const Picture& picture, bool& isKey) {
    constexpr double millisecondsPerSecond = 1000;
    SSourcePicture source = {};
    source.iColorFormat = videoFormatI420;
    source.iPicWidth = static_cast<int>(picture.Width());
    source.iPicHeight = static_cast<int>(picture.Height());
    for (int plane = 0; plane < 3; ++plane) {
        source.iStride[plane] = static_cast<int>(picture.PlaneWidth(plane));
        // It is only read.
        source.pData[plane] = const_cast<uint8_t*>(picture.Row(plane, 0));
    }
    source.uiTimeStamp =
        static_cast<long long>(static_cast<double>(count_) * millisecondsPerSecond / frameRate_);
    SFrameBSInfo frame = {};
    if (encoder_->EncodeFrame(&source, &frame) != 0) return {};
    ++count_;
    isKey = frame.eFrameType == videoFrameTypeIDR;
    return StreamOf(frame);
}

} // namespace mediafoundation
