#include "codecs/WMFMediaTypes.h"

#include "codecs/WMFPointer.h"
#include "framework/CxAVTypes.h"

#include <algorithm>

namespace CxWMF {

namespace {

void Set(IMFMediaType& type, REFGUID key, UINT32 value) {
    Twice([&] { return type.SetUINT32(key, value); });
}

/// Sets a size or a ratio.
void Set(IMFMediaType& type, REFGUID key, uint32_t first, uint32_t second) {
    Twice([&] { return type.SetUINT64(key, uint64_t{first} << 32 | second); });
}

void Set(ICodecAPI& properties, REFGUID property, uint32_t number) {
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_UI4;
    value.ulVal = number;
    properties.SetValue(&property, &value);
    VariantClear(&value);
}

void SetFrameRate(IMFMediaType& type, const CxVideoSettings& settings) {
    Set(type, MF_MT_FRAME_RATE, settings.timeScale, settings.frameDuration);
}

bool HasKeyFrameDistance(const CxVideoSettings& settings) {
    return static_cast<int32_t>(settings.gopSize) > 0;
}

void SetFieldOrder(IMFMediaType& type, uint32_t fieldOrder) {
    switch (fieldOrder) {
    case 1: Set(type, MF_MT_INTERLACE_MODE, MFVideoInterlace_Progressive); break;
    case 2: Set(type, MF_MT_INTERLACE_MODE, MFVideoInterlace_FieldInterleavedUpperFirst); break;
    case 3: Set(type, MF_MT_INTERLACE_MODE, MFVideoInterlace_FieldInterleavedLowerFirst); break;
    default: break;
    }
}

// Properties by the platform's names: AVDecVideoAcceleration_H264, AVEncCommonRateControlMode,
// AVEncCommonQuality, AVEncMPVFrameFieldMode, AVEncMPVGOPSize, AVEncVideoOutputColorNominalRange and
// AVEncCommonQualityVsSpeed.
constexpr GUID acceleration = {0xf7db8a2f, 0x4f48, 0x4ee8, {0xae, 0x31, 0x8b, 0x6e, 0xbe, 0x55, 0x8a, 0xe2}};
constexpr GUID rateControlMode = {
    0x1c0608e9, 0x370c, 0x4710, {0x8a, 0x58, 0xcb, 0x61, 0x81, 0xc4, 0x24, 0x23}};
constexpr GUID commonQuality = {0xfcbf57a3, 0x7ea5, 0x4b0c, {0x96, 0x44, 0x69, 0xb4, 0x0c, 0x39, 0xc3, 0x91}};
constexpr GUID frameFieldMode = {
    0xacb5de96, 0x7b93, 0x4c2f, {0x88, 0x25, 0xb0, 0x29, 0x5f, 0xa9, 0x3b, 0xf4}};
constexpr GUID keyFrameDistance = {
    0x95f31b26, 0x95a4, 0x41aa, {0x93, 0x03, 0x24, 0x6a, 0x7f, 0xc6, 0xee, 0xf1}};
constexpr GUID nominalRange = {0x972835ed, 0x87b5, 0x4e95, {0x95, 0x00, 0xc7, 0x39, 0x58, 0x56, 0x6e, 0x54}};
constexpr GUID qualityVsSpeed = {
    0x98332df8, 0x03cd, 0x476b, {0x89, 0xfa, 0x3f, 0x9e, 0x44, 0x2d, 0xec, 0x9f}};

} // namespace

void DescribeDecoderInput(IMFMediaType& type, WMFSize size) {
    Set(type, MF_MT_FRAME_SIZE, size.width, size.height);
    Set(type, MF_MT_INTERLACE_MODE, MFVideoInterlace_MixedInterlaceOrProgressive);
    Set(type, MF_MT_PIXEL_ASPECT_RATIO, 1, 1);
}

void DescribeDecoderOutput(IMFMediaType& type) {
    Set(type, MF_MT_INTERLACE_MODE, MFVideoInterlace_Progressive);
}

void DescribeEncoderInput(IMFMediaType& type, const CxVideoSettings& settings) {
    SetFrameRate(type, settings);
    Set(type, MF_MT_INTERLACE_MODE, MFVideoInterlace_Progressive);
}

void DescribeEncoderOutput(IMFMediaType& type, const CxVideoSettings& settings, WMFSize size) {
    constexpr UINT32 mainProfile = 77;
    Set(type, MF_MT_AVG_BITRATE, settings.bitRate);
    SetFrameRate(type, settings);
    Set(type, MF_MT_FRAME_SIZE, size.width, size.height);
    if (HasKeyFrameDistance(settings)) Set(type, MF_MT_MAX_KEYFRAME_SPACING, settings.gopSize);
    SetFieldOrder(type, settings.fieldOrder);
    Set(type, MF_MT_MPEG2_PROFILE, mainProfile);
}

void SetDecoderProperties(ICodecAPI& properties) { Set(properties, acceleration, 1); }

void SetEncoderProperties(ICodecAPI& properties, const CxVideoSettings& settings) {
    constexpr uint32_t byQuality = 3;
    constexpr uint32_t best = 100;
    constexpr uint32_t fields = 0;
    constexpr uint32_t progressive = 1;
    if (settings.bitRate == 0) {
        Set(properties, rateControlMode, byQuality);
        Set(properties, commonQuality, std::min(settings.quality, best));
    }
    if (settings.fieldOrder != progressive) Set(properties, frameFieldMode, fields);
    if (HasKeyFrameDistance(settings)) Set(properties, keyFrameDistance, settings.gopSize);
    Set(properties, nominalRange, 1);
    Set(properties, qualityVsSpeed, settings.quality != 0 ? settings.quality : best);
}

std::vector<uint8_t> SequenceHeader(IMFMediaType& type) {
    // A stream's parameter sets; no encoder has that many.
    constexpr UINT32 mostBytes = 1 << 20;
    UINT32 size = 0;
    const HRESULT sized = Twice([&] { return type.GetBlobSize(MF_MT_MPEG_SEQUENCE_HEADER, &size); });
    if (FAILED(sized) || size == 0 || size > mostBytes) return {};
    std::vector<uint8_t> header(size);
    UINT32 written = 0;
    const HRESULT read =
        Twice([&] { return type.GetBlob(MF_MT_MPEG_SEQUENCE_HEADER, header.data(), size, &written); });
    header.resize(SUCCEEDED(read) ? std::min(written, size) : 0);
    return header;
}

} // namespace CxWMF
