#include "mediafoundation/MediaType.h"

namespace mediafoundation {

MediaType::MediaType(REFGUID subtype) {
    const bool isMade =
        SUCCEEDED(SetGUID(MF_MT_MAJOR_TYPE, MFMediaType_Video)) && SUCCEEDED(SetGUID(MF_MT_SUBTYPE, subtype));
    if (!isMade) throw std::bad_alloc();
}

HRESULT MediaType::IsCompressedFormat(BOOL* isCompressed) {
    if (isCompressed == nullptr) return E_POINTER;
    GUID subtype = {};
    const HRESULT result = GetGUID(MF_MT_SUBTYPE, &subtype);
    if (SUCCEEDED(result)) *isCompressed = subtype == MFVideoFormat_H264 ? 1 : 0;
    return result;
}

NumberPair PairOf(IMFAttributes& attributes, REFGUID key) {
    UINT64 value = 0;
    if (FAILED(attributes.GetUINT64(key, &value))) return {};
    return {static_cast<UINT32>(value >> 32), static_cast<UINT32>(value)};
}

HRESULT SetPair(IMFAttributes& attributes, REFGUID key, NumberPair pair) {
    return attributes.SetUINT64(key, UINT64{pair.first} << 32 | pair.second);
}

UINT32 NumberOf(IMFAttributes& attributes, REFGUID key, UINT32 otherwise) {
    UINT32 value = 0;
    return SUCCEEDED(attributes.GetUINT32(key, &value)) ? value : otherwise;
}

GUID VideoSubtypeOf(IMFMediaType& type) {
    GUID majorType = {};
    GUID subtype = {};
    const bool isVideo = SUCCEEDED(type.GetMajorType(&majorType)) && majorType == MFMediaType_Video &&
                         SUCCEEDED(type.GetGUID(MF_MT_SUBTYPE, &subtype));
    return isVideo ? subtype : GUID{};
}

} // namespace mediafoundation
