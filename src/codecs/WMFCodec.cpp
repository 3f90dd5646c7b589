#include "codecs/WMFCodec.h"

#include "codecs/WMFAvcHeaders.h"
#include "codecs/WMFConfigRecords.h"
#include "codecs/WMFLibrary.h"
#include "codecs/WMFMediaTypes.h"
#include "codecs/WMFTransform.h"
#include "framework/CatchAll.h"

namespace CxWMF {

CxAbstractCodecFactory* g_WMFFactory = nullptr;

namespace {

constexpr uint32_t avcCode = FourCC("avc1");
constexpr uint32_t avcIntraCode = FourCC("avci");
constexpr uint32_t hevcCode = FourCC("hevc");

} // namespace

WMFCodec::WMFCodec(CxAVOperation op, const CxAbstractCodecFactory* maker)
    : CxAbstractTemporalDecoder(op, maker), streamFourCC(avcCode),
      transform(std::make_unique<WMFTransform>()) {
    settings.fieldOrder = 1;
    settings.value7 = settings.value8 = 1;
    settings.value9 = settings.value10 = settings.value11 = 1;
    constexpr DWORD flags = COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE;
    startedCOM = LoadMediaFoundation() && SUCCEEDED(MediaFoundation().CoInitializeEx(nullptr, flags));
}

WMFCodec::~WMFCodec() {
    transform->End();
    ReleaseFrameCache();
    // A start that failed, as in a thread with another kind of apartment, is not to be ended.
    if (startedCOM) MediaFoundation().CoUninitialize();
}

bool WMFCodec::FillCodecInfo(std::set<uint32_t>& decoderFourCCs, std::vector<CxEncoderInfo>& encoders,
                             std::string& name) {
    if (!LoadMediaFoundation()) return false;
    decoderFourCCs.insert({avcCode, avcIntraCode});
    CxEncoderInfo encoder;
    encoder.fourCC = avcCode;
    encoder.name = "H.264";
    constexpr uint32_t flagOfH264 = 4;
    encoder.flags = flagOfH264;
    encoders.push_back(encoder);
    name = "DXVA";
    return true;
}

CxAVError WMFCodec::GetLastError() { return lastError; }

bool WMFCodec::GetReserved() { return true; }

// The pictures are YUY2, whose bytes stand in another order than those of this code. Kept, both ways.
uint32_t WMFCodec::GetPixelFormat() { return FourCC("uyvy"); }

int32_t WMFCodec::GetStreamKind() {
    switch (streamFourCC) {
    case avcCode:
    case hevcCode: return 2;
    case FourCC("avcI"):
    case avcIntraCode: return 1;
    default: return 0;
    }
}

void WMFCodec::Flush() { FlushTransform(); }

void WMFCodec::FlushTransform() {
    if (transform->IsFound()) transform->Tell(MFT_MESSAGE_COMMAND_FLUSH);
}

CxAVError WMFCodec::Open() {
    if (dataSource == nullptr) return lastError = CxAV_INVALID_STATE;
    return lastError = CatchAll(CxAV_FAILED, [&] { return OpenSource(*dataSource); });
}

CxAVError WMFCodec::OpenSource(CxAbstractDataSource& source) {
    transform->End();
    lastSample = lastFrame = -1;
    ClearCachedFrames();
    extraData.clear();
    lastError = CxAV_OK;
    frameWidth = static_cast<uint16_t>(source.GetWidth());
    frameHeight = static_cast<uint16_t>(source.GetHeight());
    streamFourCC = source.GetFourCC();
    if (SetupTransform() != CxAV_OK) return CxAV_INVALID_STATE;
    PrepareExtraData(source);
    return MakeTransform();
}

CxAVError WMFCodec::SetupTransform() {
    const bool isDecoded = streamFourCC == avcCode || streamFourCC == avcIntraCode;
    transform->inputSubtype = transform->outputSubtype = {};
    if (operation == CxAV_ENCODE && streamFourCC == avcCode) {
        transform->inputSubtype = MFVideoFormat_YUY2;
        transform->outputSubtype = MFVideoFormat_H264;
        lastError = MakeTransform();
    } else if (operation == CxAV_DECODE && isDecoded) {
        transform->inputSubtype = MFVideoFormat_H264;
        transform->outputSubtype = MFVideoFormat_YUY2;
    }
    return lastError;
}

void WMFCodec::PrepareExtraData(CxAbstractDataSource& source) {
    const std::vector<uint8_t>* const own = source.GetCodecPrivateData();
    if (own == nullptr || own->empty()) {
        // Whatever the code: "avc1" gets the header of AVC-Intra too. Kept.
        const std::span<const uint8_t> header = AvcHeader(source.GetWidth());
        extraData.assign(header.begin(), header.end());
    } else if (streamFourCC == avcCode || streamFourCC == avcIntraCode) {
        extraData = AnnexBFromAvcRecord(*own);
    } else if (streamFourCC == hevcCode) {
        extraData = AnnexBFromHevcRecord(*own);
    }
}

/// Makes the transform that the subtypes ask for. After a failure there is none.
CxAVError WMFCodec::MakeTransform() {
    transform->End();
    // Parameter sets throw where memory is short.
    const CxAVError result = CatchAll(CxAV_FAILED, [&] { return StartTransform(); });
    if (result != CxAV_OK) transform->Drop();
    return result;
}

CxAVError WMFCodec::StartTransform() {
    if (!LoadMediaFoundation()) return CxAV_UNSUPPORTED;
    const bool isEncoder = operation == CxAV_ENCODE;
    if (FAILED(transform->Find(isEncoder ? MFT_CATEGORY_VIDEO_ENCODER : MFT_CATEGORY_VIDEO_DECODER)))
        return CxAV_UNSUPPORTED;
    if (FAILED(transform->AskForStreams())) return CxAV_FAILED;
    const CxAVError result = isEncoder ? SetEncoderTypes() : SetDecoderTypes();
    if (result != CxAV_OK) return result;
    if (FAILED(transform->Begin())) return CxAV_FAILED;
    return isEncoder || extraData.empty() ? CxAV_OK : FeedExtraData();
}

CxAVError WMFCodec::SetDecoderTypes() {
    WMFPointer<IMFMediaType> type;
    if (FAILED(transform->FindType(WMFSide::Input, type))) return CxAV_FAILED;
    DescribeDecoderInput(*type, {frameWidth, frameHeight});
    if (FAILED(transform->SetType(WMFSide::Input, *type))) return CxAV_INVALID_STATE;

    if (FAILED(transform->FindType(WMFSide::Output, type))) return CxAV_FAILED;
    DescribeDecoderOutput(*type);
    if (const WMFPointer<ICodecAPI> properties = transform->Properties()) SetDecoderProperties(*properties);
    if (FAILED(transform->SetType(WMFSide::Output, *type))) return CxAV_INVALID_STATE;
    return CxAV_OK;
}

CxAVError WMFCodec::SetEncoderTypes() {
    WMFPointer<IMFMediaType> type;
    if (FAILED(transform->FindType(WMFSide::Output, type))) return CxAV_FAILED;
    DescribeEncoderOutput(*type, settings, {frameWidth, frameHeight});
    if (const WMFPointer<ICodecAPI> properties = transform->Properties())
        SetEncoderProperties(*properties, settings);
    if (FAILED(transform->SetType(WMFSide::Output, *type))) return CxAV_INVALID_STATE;
    extraData = SequenceHeader(*type);

    if (FAILED(transform->FindType(WMFSide::Input, type))) return CxAV_FAILED;
    DescribeEncoderInput(*type, settings);
    if (FAILED(transform->SetType(WMFSide::Input, *type))) return CxAV_INVALID_STATE;
    return CxAV_OK;
}

} // namespace CxWMF
