#include "codecs/ProResCodec.h"

#include "codecs/PictureBuffer.h"
#include "codecs/SampleBlobs.h"
#include "framework/CatchAll.h"
#include "framework/ImageMetadata.h"
#include "host/Edition.h"
#include "host/Image.h"
#include "pixel/PixelConvert.h"
#include "prores/PrxFormats.h"

#include <algorithm>
#include <cstdio>

CxAbstractCodecFactory* g_ProResFactory = nullptr;

namespace {

constexpr uint32_t workPacking = FourCC("b64a");
constexpr uint32_t carriesAlpha = 2; ///< of `CxEncoderInfo::flags`
constexpr uint32_t codesAlpha = 2;   ///< of `CxEncodedFrame::flags`

CxEncoderInfo Row(uint32_t fourCC, const char* name, uint32_t flags) {
    CxEncoderInfo row;
    row.fourCC = fourCC;
    row.codecId = fourCC;
    row.name = name;
    row.flags = flags;
    return row;
}

const std::vector<CxEncoderInfo>& Catalogue() {
    static const std::vector<CxEncoderInfo> rows = {
        Row(prxCodecApch, "Apple ProRes 422 HQ", 0),
        Row(prxCodecApcn, "Apple ProRes 422", 0),
        Row(prxCodecApcs, "Apple ProRes 422 LT", 0),
        Row(prxCodecApco, "Apple ProRes 422 Proxy", 0),
        Row(prxCodecAp4h, "Apple ProRes 4444", carriesAlpha),
        Row(prxCodecAp4x, "Apple ProRes 4444 XQ", carriesAlpha),
    };
    return rows;
}

/// Name of the scanning that a frame's flags tell, or null.
const char* FrameFormatName(const uint8_t* sample) {
    constexpr const char* names[] = {"Progressive", "Interlaced(TF)", "Interlaced(BF)", nullptr};
    // The flags of the ordinary frame form. The short form has its colour matrix at this place, and is named
    // by that. Kept.
    constexpr size_t frameFlags = 20;
    return names[sample[frameFlags] >> 2 & 3];
}

void WriteMetadata(uint32_t fourCC, const uint8_t* sample, Image& image) {
    ScriptVal& metadata = MetadataTable(image);
    const auto row = std::ranges::find(Catalogue(), fourCC, &CxEncoderInfo::fourCC);
    if (row != Catalogue().end()) metadata.FindKey("Compression") = row->name.c_str();
    if (const char* const name = FrameFormatName(sample)) metadata.FindKey("FrameFormat") = name;
}

PrxEncodeSettings SettingsOf(const CxEncodedFrame& frame) {
    constexpr uint32_t topFieldFirst = 2;
    constexpr uint32_t bottomFieldFirst = 3;
    const int32_t interlaceMode =
        frame.fieldOrder == topFieldFirst ? 1 : (frame.fieldOrder == bottomFieldFirst ? 2 : 0);
    return {frame.codecTag, interlaceMode, static_cast<uint8_t>((frame.flags & codesAlpha) != 0)};
}

/// Makes sure that `frame` has a buffer, and that its size is told. False if memory is short.
bool ProvideOutput(const PrxEncodeSettings& settings, const Image& image, CxEncodedFrame& frame) {
    if (frame.data != nullptr) return true;
    constexpr int outputAlignment = 32;
    int32_t maxSize = 0;
    PrxGetMaxFrameSize(settings.codecType, settings.hasAlpha, image.Width, image.Height, &maxSize, nullptr);
    frame.data = static_cast<uint8_t*>(Platform::AllocMemAligned(maxSize, outputAlignment));
    if (frame.data == nullptr) return false;
    frame.size = static_cast<uint32_t>(maxSize);
    return true;
}

} // namespace

bool ProResCodec::FillCodecInfo(std::set<uint32_t>& decoderFourCCs, std::vector<CxEncoderInfo>& encoders,
                                std::string& name) {
    if (!g_IsPalisade) encoders.insert(encoders.end(), Catalogue().begin(), Catalogue().end());
    if (decoderFourCCs.empty()) {
        for (const CxEncoderInfo& row : Catalogue())
            decoderFourCCs.insert(row.fourCC);
    }
    name = "Apple ProRes";
    return true;
}

CxAVError ProResCodec::Open() {
    if (dataSource == nullptr) return CxAV_INVALID_STATE;
    width = dataSource->GetWidth();
    height = dataSource->GetHeight();
    if (decoder) return CxAV_OK;
    decoder.reset(CatchAll<PrxDecoderRef>(nullptr, [] { return PrxCreateDecoder(0, nullptr); }));
    return decoder ? CxAV_OK : CxAV_FAILED;
}

bool ProResCodec::PrepareBuffer(int32_t pictureWidth, int32_t pictureHeight, PrxPixelBuffer& buffer) {
    const uint32_t rowBytes = PrxGetBytesPerRow(static_cast<uint32_t>(pictureWidth), workPacking, 0);
    if (!EnsurePicture(workBuffer, int64_t{pictureHeight} * rowBytes)) return false;
    buffer = {static_cast<uint8_t*>(workBuffer.data), static_cast<int32_t>(rowBytes), workPacking,
              pictureWidth, pictureHeight};
    return true;
}

CxAVError ProResCodec::DecodeSample(int32_t frame, Image*& image) {
    PrxPixelBuffer buffer = {};
    if (!PrepareBuffer(width, height, buffer)) return CxAV_FAILED;
    int32_t size = 0;
    const uint8_t* const sample = ReadSample(*this, frame, size);
    if (sample == nullptr) return CxAV_FAILED;
    if (PrxDecodeFrame(decoder.get(), sample, size, &buffer, 0, 0) <= 0) {
        std::fprintf(stderr, "Warning: ProResCodec decode failed\n");
        return CxAV_FAILED;
    }
    if (!ConvertToImage(buffer.baseAddress, buffer.height * buffer.rowBytes, buffer.rowBytes, workPacking,
                        image))
        return CxAV_FAILED;
    // A frame that decodes has 21 bytes at least, the flags among them.
    WriteMetadata(dataSource->GetFourCC(), sample, *image);
    return CxAV_OK;
}

CxAVError ProResCodec::GetDecodedFrame(int32_t frame, Image*& image) {
    if (dataSource == nullptr || !decoder) return CxAV_INVALID_STATE;
    return CatchAll(CxAV_FAILED, [&] { return DecodeSample(frame, image); });
}

CxAVError ProResCodec::SetEncoderSettings(CxVideoSettings& settings) {
    width = settings.width;
    height = settings.height;
    return CxAV_OK;
}

int32_t ProResCodec::GetTargetFrameSize(CxVideoSettings settings) {
    int32_t maxSize = 0;
    int32_t targetSize = 0;
    PrxGetMaxFrameSize(settings.fourCC, settings.hasAlpha, settings.width, settings.height, &maxSize,
                       &targetSize);
    return targetSize != 0 ? targetSize : maxSize;
}

CxAVError ProResCodec::EncodeImage(Image*& image, CxEncodedFrame& frame) {
    const PrxEncodeSettings settings = SettingsOf(frame);
    if (!ProvideOutput(settings, *image, frame)) return CxAV_FAILED;
    if (image->Width < 1 || image->Height < 1) return CxAV_FAILED;
    PrxPixelBuffer buffer = {};
    if (!PrepareBuffer(image->Width, image->Height, buffer)) return CxAV_INVALID_STATE;
    if (!PixelConvert::ImageToBlob(image, workPacking, buffer.rowBytes, buffer.baseAddress, false))
        return CxAV_INVALID_STATE;
    if (!encoder) encoder.reset(PrxCreateEncoder(0, nullptr));
    const auto capacity = static_cast<int32_t>(std::min<uint32_t>(frame.size, INT32_MAX));
    int32_t size = 0;
    if (PrxEncodeFrame(encoder.get(), &settings, &buffer, frame.data, capacity, &size, nullptr) != 0)
        return CxAV_FAILED;
    frame.size = static_cast<uint32_t>(size);
    return CxAV_OK;
}

CxAVError ProResCodec::EncodeFrame(Image*& image, CxEncodedFrame& frame) {
    if (image == nullptr) return CxAV_INVALID_STATE;
    return CatchAll(CxAV_FAILED, [&] { return EncodeImage(image, frame); });
}
