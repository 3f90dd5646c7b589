#pragma once

// The scalars, results and identifiers of codecs/MediaFoundation.h, which includes this file where the
// platform has none of its own.

#include <cstdint>

using BOOL = int32_t;
using BYTE = uint8_t;
using DWORD = uint32_t;
using HRESULT = int32_t;
using LONGLONG = int64_t;
using LONG_PTR = intptr_t;
using LPCWSTR = const char16_t*;
using LPWSTR = char16_t*;
using UINT32 = uint32_t;
using UINT64 = uint64_t;
using UINT8 = uint8_t;
using ULONG = uint32_t;
using ULONG_PTR = uintptr_t;

struct GUID {
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];

    friend bool operator==(const GUID&, const GUID&) = default;
};
using IID = GUID;
using REFGUID = const GUID&;
using REFIID = const GUID&;

/// A value of one of several kinds, of which only the one below is used.
struct VARIANT {
    uint16_t vt; ///< the kind
    uint16_t wReserved1;
    uint16_t wReserved2;
    uint16_t wReserved3;
    union {
        uint32_t ulVal;
        void* pointers[2];
    };
};

enum VARENUM : uint16_t { VT_EMPTY = 0, VT_UI4 = 19 };

static inline void VariantInit(VARIANT* value) { *value = {}; }
static inline HRESULT VariantClear(VARIANT* value) {
    *value = {};
    return 0;
}

constexpr bool SUCCEEDED(HRESULT result) { return result >= 0; }
constexpr bool FAILED(HRESULT result) { return result < 0; }

inline constexpr auto S_OK = HRESULT{0};
inline constexpr auto S_FALSE = HRESULT{1};
inline constexpr auto E_NOTIMPL = static_cast<HRESULT>(0x80004001);
inline constexpr auto E_NOINTERFACE = static_cast<HRESULT>(0x80004002);
inline constexpr auto E_POINTER = static_cast<HRESULT>(0x80004003);
inline constexpr auto E_FAIL = static_cast<HRESULT>(0x80004005);
inline constexpr auto E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000E);
inline constexpr auto E_INVALIDARG = static_cast<HRESULT>(0x80070057);
inline constexpr auto MF_E_BUFFERTOOSMALL = static_cast<HRESULT>(0xC00D36B1);
inline constexpr auto MF_E_INVALIDSTREAMNUMBER = static_cast<HRESULT>(0xC00D36B3);
inline constexpr auto MF_E_INVALIDMEDIATYPE = static_cast<HRESULT>(0xC00D36B4);
inline constexpr auto MF_E_NOTACCEPTING = static_cast<HRESULT>(0xC00D36B5);
inline constexpr auto MF_E_NO_MORE_TYPES = static_cast<HRESULT>(0xC00D36B9);
inline constexpr auto MF_E_NO_SAMPLE_TIMESTAMP = static_cast<HRESULT>(0xC00D36C8);
inline constexpr auto MF_E_NO_SAMPLE_DURATION = static_cast<HRESULT>(0xC00D36C9);
inline constexpr auto MF_E_ATTRIBUTENOTFOUND = static_cast<HRESULT>(0xC00D36E6);
inline constexpr auto MF_E_TOPO_CODEC_NOT_FOUND = static_cast<HRESULT>(0xC00D5212);
inline constexpr auto MF_E_TRANSFORM_TYPE_NOT_SET = static_cast<HRESULT>(0xC00D6D60);
inline constexpr auto MF_E_TRANSFORM_STREAM_CHANGE = static_cast<HRESULT>(0xC00D6D61);
inline constexpr auto MF_E_TRANSFORM_NEED_MORE_INPUT = static_cast<HRESULT>(0xC00D6D72);

/// Of `CoInitializeEx`.
enum COINIT : uint32_t { COINIT_APARTMENTTHREADED = 2, COINIT_DISABLE_OLE1DDE = 4 };

/// Of `MFTEnumEx`.
enum : uint32_t {
    MFT_ENUM_FLAG_SYNCMFT = 0x01,
    MFT_ENUM_FLAG_ASYNCMFT = 0x02,
    MFT_ENUM_FLAG_HARDWARE = 0x04,
    MFT_ENUM_FLAG_FIELDOFUSE = 0x08,
    MFT_ENUM_FLAG_LOCALMFT = 0x10,
    MFT_ENUM_FLAG_TRANSCODE_ONLY = 0x20,
    MFT_ENUM_FLAG_SORTANDFILTER = 0x40,
};

enum : uint32_t { MFT_INPUT_STATUS_ACCEPT_DATA = 1 };   ///< of `IMFTransform::GetInputStatus`
enum : uint32_t { MFT_OUTPUT_STATUS_SAMPLE_READY = 1 }; ///< of `IMFTransform::GetOutputStatus`

/// Of MFT_OUTPUT_STREAM_INFO.
enum : uint32_t {
    MFT_OUTPUT_STREAM_WHOLE_SAMPLES = 0x1,
    MFT_OUTPUT_STREAM_SINGLE_SAMPLE_PER_BUFFER = 0x2,
    MFT_OUTPUT_STREAM_FIXED_SAMPLE_SIZE = 0x4,
    MFT_OUTPUT_STREAM_PROVIDES_SAMPLES = 0x100,
};

/// Of MF_MT_INTERLACE_MODE.
enum MFVideoInterlaceMode : uint32_t {
    MFVideoInterlace_Progressive = 2,
    MFVideoInterlace_FieldInterleavedUpperFirst = 3,
    MFVideoInterlace_FieldInterleavedLowerFirst = 4,
    MFVideoInterlace_MixedInterlaceOrProgressive = 7,
};

// clang-format off
inline constexpr IID IID_IUnknown = {0x00000000, 0x0000, 0x0000, {0xc0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
inline constexpr IID IID_IMFAttributes = {0x2cd2d921, 0xc447, 0x44a7, {0xa1, 0x3c, 0x4a, 0xda, 0xbf, 0xc2, 0x47, 0xe3}};
inline constexpr IID IID_IMFMediaType = {0x44ae0fa8, 0xea31, 0x4109, {0x8d, 0x2e, 0x4c, 0xae, 0x49, 0x97, 0xc5, 0x55}};
inline constexpr IID IID_IMFMediaBuffer = {0x045fa593, 0x8799, 0x42b8, {0xbc, 0x8d, 0x89, 0x68, 0xc6, 0x45, 0x35, 0x07}};
inline constexpr IID IID_IMFSample = {0xc40a00f2, 0xb93a, 0x4d80, {0xae, 0x8c, 0x5a, 0x1c, 0x63, 0x4f, 0x58, 0xe4}};
inline constexpr IID IID_IMFActivate = {0x7fee9e9a, 0x4a89, 0x47a6, {0x89, 0x9c, 0xb6, 0xa5, 0x3a, 0x70, 0xfb, 0x67}};
inline constexpr IID IID_IMFTransform = {0xbf94c121, 0x5b05, 0x4e6f, {0x80, 0x00, 0xba, 0x59, 0x89, 0x61, 0x41, 0x4d}};
inline constexpr IID IID_ICodecAPI = {0x901db4c7, 0x31ce, 0x41a2, {0x85, 0xdc, 0x8f, 0xa0, 0xbf, 0x41, 0xb8, 0xda}};

inline constexpr GUID MFT_CATEGORY_VIDEO_DECODER = {0xd6c02d4b, 0x6833, 0x45b4, {0x97, 0x1a, 0x05, 0xa4, 0xb0, 0x4b, 0xab, 0x91}};
inline constexpr GUID MFT_CATEGORY_VIDEO_ENCODER = {0xf79eac7d, 0xe545, 0x4387, {0xbd, 0xee, 0xd6, 0x47, 0xd7, 0xbd, 0xe4, 0x2a}};

// A media subtype carries its four characters in the first number, the first character lowest.
inline constexpr GUID MFMediaType_Video = {0x73646976, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xaa, 0x00, 0x38, 0x9b, 0x71}};
inline constexpr GUID MFVideoFormat_H264 = {0x34363248, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xaa, 0x00, 0x38, 0x9b, 0x71}};
inline constexpr GUID MFVideoFormat_YUY2 = {0x32595559, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xaa, 0x00, 0x38, 0x9b, 0x71}};

inline constexpr GUID MF_MT_MAJOR_TYPE = {0x48eba18e, 0xf8c9, 0x4687, {0xbf, 0x11, 0x0a, 0x74, 0xc9, 0xf9, 0x6a, 0x8f}};
inline constexpr GUID MF_MT_SUBTYPE = {0xf7e34c9a, 0x42e8, 0x4714, {0xb7, 0x4b, 0xcb, 0x29, 0xd7, 0x2c, 0x35, 0xe5}};
inline constexpr GUID MF_MT_FRAME_SIZE = {0x1652c33d, 0xd6b2, 0x4012, {0xb8, 0x34, 0x72, 0x03, 0x08, 0x49, 0xa3, 0x7d}};
inline constexpr GUID MF_MT_FRAME_RATE = {0xc459a2e8, 0x3d2c, 0x4e44, {0xb1, 0x32, 0xfe, 0xe5, 0x15, 0x6c, 0x7b, 0xb0}};
inline constexpr GUID MF_MT_PIXEL_ASPECT_RATIO = {0xc6376a1e, 0x8d0a, 0x4027, {0xbe, 0x45, 0x6d, 0x9a, 0x0a, 0xd3, 0x9b, 0xb6}};
inline constexpr GUID MF_MT_INTERLACE_MODE = {0xe2724bb8, 0xe676, 0x4806, {0xb4, 0xb2, 0xa8, 0xd6, 0xef, 0xb4, 0x4c, 0xcd}};
inline constexpr GUID MF_MT_AVG_BITRATE = {0x20332624, 0xfb0d, 0x4d9e, {0xbd, 0x0d, 0xcb, 0xf6, 0x78, 0x6c, 0x10, 0x2e}};
inline constexpr GUID MF_MT_MAX_KEYFRAME_SPACING = {0xc16eb52b, 0x73a1, 0x476f, {0x8d, 0x62, 0x83, 0x9d, 0x6a, 0x02, 0x06, 0x52}};
inline constexpr GUID MF_MT_MPEG2_PROFILE = {0xad76a80b, 0x2d5c, 0x4e0b, {0xb3, 0x75, 0x64, 0xe5, 0x20, 0x13, 0x70, 0x36}};
inline constexpr GUID MF_MT_MPEG_SEQUENCE_HEADER = {0x3c036de7, 0x3ad0, 0x4c9e, {0x92, 0x16, 0xee, 0x6d, 0x6a, 0xc2, 0x1c, 0xb3}};

inline constexpr GUID MFSampleExtension_CleanPoint = {0x9cdf01d8, 0xa0f0, 0x43ba, {0xb0, 0x77, 0xea, 0xa0, 0x6c, 0xbd, 0x72, 0x8a}};
// clang-format on
