#include "mediafoundation/Encoder.h"

#include <algorithm>

namespace mediafoundation {

namespace {

bool IsSizeCoded(uint32_t length) {
    constexpr uint32_t least = 16;
    constexpr uint32_t most = 16384;
    return length >= least && length <= most && length % 2 == 0;
}

// What OpenH264 takes for another one, or doesn't look at.
bool IsCoded(const EncoderSettings& settings) {
    constexpr uint32_t profiles[] = {PRO_BASELINE, PRO_MAIN, PRO_HIGH};
    return IsSizeCoded(settings.width) && IsSizeCoded(settings.height) && settings.bitRate <= INT32_MAX &&
           std::ranges::find(profiles, settings.profile) != std::end(profiles);
}

} // namespace

Held<MediaType> Encoder::AvailableType(Side side, DWORD index) {
    if (side == Side::Output) return index == 0 ? Make<MediaType>(MFVideoFormat_H264) : nullptr;
    if (index >= PictureFormats().size()) return nullptr;
    Held<MediaType> type = Make<MediaType>(PictureFormats()[index].subtype);
    SetPair(*type, MF_MT_FRAME_SIZE, {settings_.width, settings_.height});
    SetPair(*type, MF_MT_FRAME_RATE, frameRate_);
    type->SetUINT32(MF_MT_INTERLACE_MODE, MFVideoInterlace_Progressive);
    return type;
}

HRESULT Encoder::PrepareFor(Side side, IMFMediaType& type) {
    return side == Side::Output ? PrepareForOutput(type) : PrepareForInput(type);
}

HRESULT Encoder::PrepareForOutput(IMFMediaType& type) {
    EncoderSettings settings;
    if (!ReadSettings(type, settings)) return MF_E_INVALIDMEDIATYPE;
    std::unique_ptr<PictureEncoder> encoder = PictureEncoder::Create(settings);
    if (encoder == nullptr) return MF_E_INVALIDMEDIATYPE;
    const std::vector<uint8_t> sets = encoder->ParameterSets();
    if (sets.empty()) return E_FAIL;
    const HRESULT result =
        type.SetBlob(MF_MT_MPEG_SEQUENCE_HEADER, sets.data(), static_cast<UINT32>(sets.size()));
    if (FAILED(result)) return result;
    settings_ = settings;
    frameRate_ = PairOf(type, MF_MT_FRAME_RATE);
    encoder_ = std::move(encoder);
    Flush();
    return S_OK;
}

/// False for a type that can't be encoded.
bool Encoder::ReadSettings(IMFMediaType& type, EncoderSettings& settings) const {
    constexpr UINT32 byQuality = 3;
    constexpr UINT32 defaultQuality = 70;
    constexpr UINT32 defaultEffort = 50;
    constexpr UINT32 defaultKeyDistance = 30;
    const NumberPair size = PairOf(type, MF_MT_FRAME_SIZE);
    const NumberPair rate = PairOf(type, MF_MT_FRAME_RATE);
    const UINT32 structure = NumberOf(type, MF_MT_INTERLACE_MODE, MFVideoInterlace_Progressive);
    const bool isByQuality = Property(rateControlMode, 0) == byQuality;
    settings.width = size.first;
    settings.height = size.second;
    settings.bitRate = isByQuality ? 0 : NumberOf(type, MF_MT_AVG_BITRATE, 0);
    settings.quality = Property(commonQuality, defaultQuality);
    settings.effort = Property(qualityVsSpeed, defaultEffort);
    settings.keyDistance =
        Property(groupSize, NumberOf(type, MF_MT_MAX_KEYFRAME_SPACING, defaultKeyDistance));
    settings.profile = NumberOf(type, MF_MT_MPEG2_PROFILE, PRO_BASELINE);
    if (VideoSubtypeOf(type) != MFVideoFormat_H264 || structure != MFVideoInterlace_Progressive) return false;
    if (rate.first == 0 || rate.second == 0) return false;
    settings.frameRate = static_cast<float>(rate.first) / static_cast<float>(rate.second);
    return (isByQuality || settings.bitRate != 0) && IsCoded(settings);
}

HRESULT Encoder::PrepareForInput(IMFMediaType& type) {
    const PictureFormat* format = FindPictureFormat(VideoSubtypeOf(type));
    const NumberPair size = PairOf(type, MF_MT_FRAME_SIZE);
    const NumberPair ownSize = {settings_.width, settings_.height};
    if (format == nullptr || (size != NumberPair{} && size != ownSize)) return MF_E_INVALIDMEDIATYPE;
    if (NumberOf(type, MF_MT_INTERLACE_MODE, MFVideoInterlace_Progressive) != MFVideoInterlace_Progressive)
        return MF_E_INVALIDMEDIATYPE;
    format_ = format;
    return S_OK;
}

HRESULT Encoder::Take(IMFSample& sample) {
    return ReadSample(sample, [&](std::span<const uint8_t> bytes) {
        if (bytes.size() != format_->Bytes(settings_.width, settings_.height)) return E_INVALIDARG;
        Picture picture(settings_.width, settings_.height);
        format_->unpack(bytes.data(), picture);
        stream_ = encoder_->Encode(picture, isKey_);
        timing_ = TimingOf(sample);
        return stream_.empty() ? E_FAIL : S_OK;
    });
}

HRESULT Encoder::Give(IMFSample& sample) {
    const HRESULT result = FillSample(sample, static_cast<DWORD>(stream_.size()),
                                      [&](uint8_t* bytes) { std::ranges::copy(stream_, bytes); });
    if (FAILED(result)) return result;
    SetTiming(sample, timing_);
    sample.SetUINT32(MFSampleExtension_CleanPoint, isKey_ ? 1 : 0);
    stream_.clear();
    return S_OK;
}

/// Those of the access unit that waits, or of a picture that isn't compressed: hardly any takes as many.
DWORD Encoder::OutputBytes() const {
    constexpr DWORD headers = 4096;
    if (HasOutput()) return static_cast<DWORD>(stream_.size());
    return settings_.width * settings_.height / 2 * 3 + headers;
}

} // namespace mediafoundation
