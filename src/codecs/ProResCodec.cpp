#include "codecs/ProResCodec.h"

#include "codecs/SampleBlobs.h"
#include "framework/ImageMetadata.h"
#include "host/Edition.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

CxAbstractCodecFactory* g_ProResFactory = nullptr;

namespace {

constexpr uint32_t workPacking = FourCC("b64a");
constexpr uint32_t carriesAlpha = 2; ///< of `CxEncoderInfo::flags`

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
        Row(FourCC("apch"), "Apple ProRes 422 HQ", 0),
        Row(FourCC("apcn"), "Apple ProRes 422", 0),
        Row(FourCC("apcs"), "Apple ProRes 422 LT", 0),
        Row(FourCC("apco"), "Apple ProRes 422 Proxy", 0),
        Row(FourCC("ap4h"), "Apple ProRes 4444", carriesAlpha),
        Row(FourCC("ap4x"), "Apple ProRes 4444 XQ", carriesAlpha),
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
    try {
        decoder.reset(PrxCreateDecoder(0, nullptr));
    } catch (...) {
        return CxAV_FAILED;
    }
    return decoder ? CxAV_OK : CxAV_FAILED;
}

bool ProResCodec::PrepareBuffer(PrxPixelBuffer& buffer) {
    const uint32_t rowBytes = PrxGetBytesPerRow(static_cast<uint32_t>(width), workPacking, 0);
    const int64_t size = int64_t{height} * rowBytes;
    if (size <= 0 || size > INT32_MAX) return false;
    const int32_t capacity = workBuffer.capacity;
    if (!workBuffer.EnsureSize(static_cast<int32_t>(size))) return false;
    // So that a damaged slice never shows old memory.
    if (workBuffer.capacity != capacity) std::memset(workBuffer.data, 0, static_cast<size_t>(size));
    buffer = {static_cast<uint8_t*>(workBuffer.data), static_cast<int32_t>(rowBytes), workPacking, width,
              height};
    return true;
}

const uint8_t* ProResCodec::ReadSample(int32_t frame, int32_t& size) {
    uint8_t* const buffer = GetDataBuffer();
    const int32_t capacity = GetDataBufferSize();
    size = capacity;
    const uint8_t* const sample = dataSource->ReadSample(frame, buffer, size);
    size = LimitToBuffer(size, sample, buffer, capacity);
    return size != 0 ? sample : nullptr;
}

CxAVError ProResCodec::DecodeSample(int32_t frame, Image*& image) {
    PrxPixelBuffer buffer = {};
    if (!PrepareBuffer(buffer)) return CxAV_FAILED;
    int32_t size = 0;
    const uint8_t* const sample = ReadSample(frame, size);
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
    try {
        return DecodeSample(frame, image);
    } catch (...) {
        // The engine and the metadata table throw where memory is short.
        return CxAV_FAILED;
    }
}

CxAVError ProResCodec::EncodeFrame(Image*& /*image*/, CxEncodedFrame& /*frame*/) { return CxAV_UNSUPPORTED; }
