#include "codecs/UncompressedCodecs.h"

#include "codecs/SampleBlobs.h"
#include "framework/CatchAll.h"
#include "framework/SampleSize.h"
#include "host/Image.h"
#include "host/Platform.h"
#include "pixel/PixelConvert.h"

#include <array>

CxAbstractCodecFactory* g_UncompressedFactory = nullptr;

namespace {

/// Codes that are decoded and can't be chosen for encoding.
constexpr std::array decodeOnlyFourCCs = {FourCC("rgb "), FourCC("raw "), FourCC("yuv2"), FourCC("2Vuy"),
                                          FourCC("uyvy")};

const std::map<uint32_t, std::string>& FormatTable() {
    static const std::map<uint32_t, std::string> table = {
        {24, "Uncompressed RGB 8-bit"},
        {32, "Uncompressed ARGB 8-bit"},
        {FourCC("2vuy"), "Uncompressed YUV 422 8-bit"},
        {FourCC("BGRA"), "Uncompressed BGRA 8-bit"},
        // The one 16-bit name without a hyphen; files and scripts name it so. Kept.
        {FourCC("b64a"), "Uncompressed ARGB 16 bit"},
        {FourCC("r210"), "Uncompressed RGB 10-bit"},
        {FourCC("v210"), "Uncompressed YUV 422 10-bit"},
        {FourCC("v216"), "Uncompressed YUV 422 16-bit"},
    };
    return table;
}

/// The packing that `PixelConvert` knows for a code of the track. `yuv2` has none: such a track opens,
/// because the code is claimed, and no frame of it decodes. Kept.
uint32_t PackingOf(uint32_t fourCC) {
    switch (fourCC) {
    case FourCC("2Vuy"): return FourCC("2vuy");
    case FourCC("raw "): return 32;
    case FourCC("rgb "): return 24;
    default: return fourCC;
    }
}

/// The image in a new buffer, which the caller frees, or null.
uint8_t* ConvertToBlob(Image*& image, uint32_t packing, int32_t rowBytes) {
    uint8_t* blob = nullptr;
    const bool converted = CatchAll(false, [&] {
        return PixelConvert::ImageToBlob(image, static_cast<int32_t>(packing), rowBytes, blob, true);
    });
    // A failed conversion may leave its buffer behind.
    if (!converted && blob != nullptr) Platform::FreeMemAligned(blob);
    return converted ? blob : nullptr;
}

} // namespace

bool UncompressedCodecs::FillCodecInfo(std::set<uint32_t>& decoderFourCCs,
                                       std::vector<CxEncoderInfo>& encoders, std::string& name) {
    for (const auto& [code, title] : FormatTable()) {
        decoderFourCCs.insert(code);
        CxEncoderInfo& row = encoders.emplace_back();
        row.fourCC = code;
        row.codecId = FourCC("imco");
        row.name = title;
    }
    decoderFourCCs.insert(decodeOnlyFourCCs.begin(), decodeOnlyFourCCs.end());
    name = "Uncompressed";
    return true;
}

std::map<uint32_t, std::string> UncompressedCodecs::GetFormats() { return FormatTable(); }

void UncompressedCodecs::ReadTrack() {
    width = dataSource->GetWidth();
    height = dataSource->GetHeight();
    fourCC = dataSource->GetFourCC();
}

CxAVError UncompressedCodecs::Open() {
    if (dataSource == nullptr) return CxAV_INVALID_STATE;
    ReadTrack();
    return CxAV_OK;
}

CxAVError UncompressedCodecs::GetDecodedFrame(int32_t frame, Image*& image) {
    if (dataSource == nullptr || image == nullptr) return CxAV_INVALID_STATE;
    uint8_t* const buffer = GetDataBuffer();
    const int32_t capacity = GetDataBufferSize();
    // The source may describe another track by now.
    ReadTrack();
    const uint32_t packing = PackingOf(fourCC);

    int32_t size = capacity;
    uint8_t* const sample = dataSource->ReadSample(frame, buffer, size);
    if (sample == nullptr) return CxAV_READ_FAILED;
    size = LimitToBuffer(size, sample, buffer, capacity);

    const int32_t rowBytes = PixelConvert::CalcRowBytes(packing, static_cast<uint32_t>(width));
    return ConvertToImage(sample, size, rowBytes, packing, image) ? CxAV_OK : CxAV_FAILED;
}

CxAVError UncompressedCodecs::EncodeFrame(Image*& image, CxEncodedFrame& frame) {
    if (image == nullptr) return CxAV_INVALID_STATE;
    if (!FormatTable().contains(frame.codecTag)) return CxAV_UNSUPPORTED;
    const int32_t rowBytes = PixelConvert::CalcRowBytes(frame.codecTag, static_cast<uint32_t>(image->Width));
    const int64_t size = int64_t{rowBytes} * image->Height;
    if (size < 0 || size > UINT32_MAX) return CxAV_INVALID_STATE;
    uint8_t* const blob = ConvertToBlob(image, frame.codecTag, rowBytes);
    if (blob == nullptr) return CxAV_INVALID_STATE;
    // A new buffer each time: one that the caller put into the record is passed over. Kept.
    frame.data = blob;
    frame.size = static_cast<uint32_t>(size);
    return CxAV_OK;
}
