#include "codecs/DNXCodec.h"

#include "codecs/DNXLibrary.h"
#include "codecs/DNXMetadata.h"
#include "codecs/DNXParameters.h"
#include "codecs/DNXTables.h"
#include "codecs/PictureBuffer.h"
#include "codecs/SampleBlobs.h"
#include "framework/CatchAll.h"
#include "host/Image.h"
#include "pixel/PixelConvert.h"

#include <algorithm>
#include <cstdio>

CxAbstractCodecFactory* g_DNXFactory = nullptr;

namespace {

/// The line numbers by which those who read the messages know the calls. They stay when lines move.
enum ReportedLine {
    lineOfCreateEncoder = 241,
    lineOfEncodeFrame = 258,
    lineOfGetInfo = 309,
    lineOfCreateDecoder = 381,
    lineOfDecodeFrame = 389,
};

void SayVersion() {
    int32_t major = 0;
    int32_t minor = 0;
    int32_t patch = 0;
    int32_t build = 0;
    char letter = 0;
    DNX().GetVersion(&major, &minor, &patch, &build, &letter);
    std::printf("DNX SDK API version %d.%d.%d-%d-%c\n", major, minor, patch, build, letter);
}

} // namespace

bool DNXCodec::FillCodecInfo(std::set<uint32_t>& decoderFourCCs, std::vector<CxEncoderInfo>& encoders,
                             std::string& name) {
    if (!LoadDNX()) return false;
    encoders.insert(encoders.end(), DNXCatalogue().begin(), DNXCatalogue().end());
    if (decoderFourCCs.empty()) decoderFourCCs = {dnxHDCode, dnxHRCode};
    if (DNX().Initialize() != 0) {
        std::printf("Warning: Failed to initialise DNXCodec\n");
        return false;
    }
    SayVersion();
    name = "Avid DNX";
    return true;
}

void DNXCodec::Shutdown() { DNX().Finalize(); }

void DNXCodec::DecoderDeleter::operator()(void* handle) const { DNX().DeleteDecoder(handle); }

void DNXCodec::EncoderDeleter::operator()(void* handle) const { DNX().DeleteEncoder(handle); }

CxAVError DNXCodec::Open() {
    if (dataSource == nullptr) return CxAV_INVALID_STATE;
    width = dataSource->GetWidth();
    height = dataSource->GetHeight();
    return CxAV_OK;
}

bool DNXCodec::Succeeded(int32_t result, int line) {
    lastResult = result;
    if (result == 0) return true;
    char text[dnxErrorTextSize] = {};
    DNX().GetErrorString(result, text);
    text[dnxErrorTextSize - 1] = '\0';
    std::fprintf(stderr, "Error: %s - %s:%d\n", text, "DNXCodec", line);
    return false;
}

bool DNXCodec::ProvideDecoder(const DNXFrameInformation& information,
                              const DNXUncompressedParameters& uncompressed) {
    if (decoder) return true;
    const DNXDecodeOperation operation = DecodeOperation(HasAlpha(information));
    void* made = nullptr;
    if (!Succeeded(DNX().CreateDecoder(&information, &uncompressed, &operation, &made), lineOfCreateDecoder))
        return false;
    decoder.reset(made);
    return true;
}

CxAVError DNXCodec::DecodeSample(int32_t frame, Image*& image) {
    int32_t size = 0;
    const uint8_t* const data = ReadSample(*this, frame, size);
    if (data == nullptr || size < 0) return CxAV_FAILED;
    const auto dataSize = static_cast<uint32_t>(size);

    DNXFrameInformation information = {};
    information.size = sizeof(information);
    int32_t frameType = 0;
    if (!Succeeded(DNX().GetInfoFromCompressedFrame(data, dataSize, &information, &frameType), lineOfGetInfo))
        return CxAV_FAILED;

    const DNXPicture picture = PictureToDecode(information, frameType);
    const int32_t rowBytes = PixelConvert::CalcRowBytes(picture.packing, static_cast<uint32_t>(image->Width));
    if (!ProvideDecoder(information, picture.parameters)) return CxAV_FAILED;

    // The image's row size with the track's height: an image of another width gets a buffer that doesn't fit
    // the library's picture. Kept.
    const int64_t pictureSize = int64_t{height} * rowBytes;
    if (!EnsurePicture(workBuffer, pictureSize)) return CxAV_FAILED;
    const auto capacity = static_cast<uint32_t>(workBuffer.capacity);
    if (!Succeeded(DNX().DecodeFrame(decoder.get(), data, workBuffer.data, dataSize, capacity),
                   lineOfDecodeFrame))
        return CxAV_FAILED;

    if (!ConvertToImage(static_cast<uint8_t*>(workBuffer.data), static_cast<int32_t>(pictureSize), rowBytes,
                        picture.packing, image))
        return CxAV_FAILED;
    WriteDNXMetadata(information, *image);
    return CxAV_OK;
}

CxAVError DNXCodec::GetDecodedFrame(int32_t frame, Image*& image) {
    if (dataSource == nullptr || image == nullptr) return CxAV_INVALID_STATE;
    return CatchAll(CxAV_FAILED, [&] { return LoadDNX() ? DecodeSample(frame, image) : CxAV_UNSUPPORTED; });
}

bool DNXCodec::ProvideEncoder(const DNXCompressedParameters& compressed,
                              const DNXUncompressedParameters& uncompressed) {
    if (encoder) return true;
    const DNXEncodeOperation operation = EncodeOperation();
    void* made = nullptr;
    if (!Succeeded(DNX().CreateEncoder(&compressed, &uncompressed, &operation, &made), lineOfCreateEncoder))
        return false;
    encoder.reset(made);
    return true;
}

CxAVError DNXCodec::EncodeImage(Image*& image, CxEncodedFrame& frame) {
    const DNXCompressedParameters compressed = ParametersToEncode(image->Width, image->Height, frame);
    const DNXPicture picture = PictureToEncode(compressed, frame.fieldOrder);
    if (!ProvideEncoder(compressed, picture.parameters)) return CxAV_FAILED;

    const int32_t rowBytes = PixelConvert::CalcRowBytes(picture.packing, static_cast<uint32_t>(image->Width));
    const int64_t pictureSize = int64_t{image->Height} * rowBytes;
    if (!EnsurePicture(workBuffer, pictureSize)) return CxAV_FAILED;
    const uint32_t size = DNX().GetCompressedBufferSize(&compressed);
    auto* pixels = static_cast<uint8_t*>(workBuffer.data);
    if (!PixelConvert::ImageToBlob(image, static_cast<int32_t>(picture.packing), rowBytes, pixels, false))
        return CxAV_FAILED;

    constexpr int outputAlignment = 32;
    auto* const output = static_cast<uint8_t*>(Platform::AllocMemAligned(size, outputAlignment));
    if (output == nullptr) return CxAV_FAILED;
    // The caller's from here on: a frame that fails doesn't free it. Kept.
    frame.data = output;
    frame.size = size;
    uint32_t written = 0;
    if (!Succeeded(DNX().EncodeFrame(encoder.get(), pixels, output, static_cast<uint32_t>(pictureSize), size,
                                     &written),
                   lineOfEncodeFrame))
        return CxAV_FAILED;
    frame.size = std::min(written, size);
    return CxAV_OK;
}

CxAVError DNXCodec::EncodeFrame(Image*& image, CxEncodedFrame& frame) {
    constexpr int32_t leastWidth = 240;
    constexpr int32_t leastHeight = 120;
    if (image == nullptr || image->Height < leastHeight || image->Width < leastWidth)
        return CxAV_INVALID_STATE;
    return CatchAll(CxAV_FAILED, [&] { return LoadDNX() ? EncodeImage(image, frame) : CxAV_UNSUPPORTED; });
}
