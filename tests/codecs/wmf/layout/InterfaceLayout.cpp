// What scripts/check-windows compares: this is compiled once against codecs/MediaFoundation.h's own
// declarations and once against the platform's, and its section "layout" must hold the same bytes.

#ifdef _WIN32
// Identifiers become constants, instead of objects of a library.
#include <windows.h>
#undef DEFINE_GUID
#define DEFINE_GUID(name, number1, number2, number3, ...)                                                    \
    inline constexpr GUID name = {number1, number2, number3, {__VA_ARGS__}}
// Two headers have this record, and only one of them has the identifier of the interface.
#define CodecAPIEventData CodecAPIEventDataOfStreams
#include <icodecapi.h>
#undef CodecAPIEventData
#endif

#include "codecs/MediaFoundation.h"

#include <cstddef>
#include <cstdint>

namespace {

#define KEEP [[gnu::section("layout"), gnu::used]] alignas(16) constinit const

// A pointer to a virtual operation holds its place in the vtable (Itanium C++ ABI, 2.3), on both platforms.
#define SLOT(type, operation) KEEP auto slot_##type##_##operation = &type::operation;
#define SIZE(type) KEEP uint64_t size_##type = sizeof(type);
#define PLACE(type, field) KEEP uint64_t place_##type##_##field = offsetof(type, field);
#define NUMBER(name) KEEP auto number_##name = static_cast<uint32_t>(name);
#define IDENTIFIER(name) KEEP GUID identifier_##name = name;

// clang-format off
SLOT(IUnknown, AddRef) SLOT(IUnknown, Release)

SLOT(IMFAttributes, GetItem) SLOT(IMFAttributes, GetItemType) SLOT(IMFAttributes, CompareItem)
SLOT(IMFAttributes, Compare) SLOT(IMFAttributes, GetUINT32) SLOT(IMFAttributes, GetUINT64)
SLOT(IMFAttributes, GetDouble) SLOT(IMFAttributes, GetGUID) SLOT(IMFAttributes, GetStringLength)
SLOT(IMFAttributes, GetString) SLOT(IMFAttributes, GetAllocatedString) SLOT(IMFAttributes, GetBlobSize)
SLOT(IMFAttributes, GetBlob) SLOT(IMFAttributes, GetAllocatedBlob) SLOT(IMFAttributes, GetUnknown)
SLOT(IMFAttributes, SetItem) SLOT(IMFAttributes, DeleteItem) SLOT(IMFAttributes, DeleteAllItems)
SLOT(IMFAttributes, SetUINT32) SLOT(IMFAttributes, SetUINT64) SLOT(IMFAttributes, SetDouble)
SLOT(IMFAttributes, SetGUID) SLOT(IMFAttributes, SetString) SLOT(IMFAttributes, SetBlob)
SLOT(IMFAttributes, SetUnknown) SLOT(IMFAttributes, LockStore) SLOT(IMFAttributes, UnlockStore)
SLOT(IMFAttributes, GetCount) SLOT(IMFAttributes, GetItemByIndex) SLOT(IMFAttributes, CopyAllItems)

SLOT(IMFMediaType, GetMajorType) SLOT(IMFMediaType, IsCompressedFormat) SLOT(IMFMediaType, IsEqual)
SLOT(IMFMediaType, GetRepresentation) SLOT(IMFMediaType, FreeRepresentation)

SLOT(IMFMediaBuffer, Lock) SLOT(IMFMediaBuffer, Unlock) SLOT(IMFMediaBuffer, GetCurrentLength)
SLOT(IMFMediaBuffer, SetCurrentLength) SLOT(IMFMediaBuffer, GetMaxLength)

SLOT(IMFSample, GetSampleFlags) SLOT(IMFSample, SetSampleFlags) SLOT(IMFSample, GetSampleTime)
SLOT(IMFSample, SetSampleTime) SLOT(IMFSample, GetSampleDuration) SLOT(IMFSample, SetSampleDuration)
SLOT(IMFSample, GetBufferCount) SLOT(IMFSample, GetBufferByIndex)
SLOT(IMFSample, ConvertToContiguousBuffer) SLOT(IMFSample, AddBuffer)
SLOT(IMFSample, RemoveBufferByIndex) SLOT(IMFSample, RemoveAllBuffers) SLOT(IMFSample, GetTotalLength)
SLOT(IMFSample, CopyToBuffer)

SLOT(IMFActivate, ActivateObject) SLOT(IMFActivate, ShutdownObject) SLOT(IMFActivate, DetachObject)

SLOT(IMFTransform, GetStreamLimits) SLOT(IMFTransform, GetStreamCount) SLOT(IMFTransform, GetStreamIDs)
SLOT(IMFTransform, GetInputStreamInfo) SLOT(IMFTransform, GetOutputStreamInfo)
SLOT(IMFTransform, GetAttributes) SLOT(IMFTransform, GetInputStreamAttributes)
SLOT(IMFTransform, GetOutputStreamAttributes) SLOT(IMFTransform, DeleteInputStream)
SLOT(IMFTransform, AddInputStreams) SLOT(IMFTransform, GetInputAvailableType)
SLOT(IMFTransform, GetOutputAvailableType) SLOT(IMFTransform, SetInputType)
SLOT(IMFTransform, SetOutputType) SLOT(IMFTransform, GetInputCurrentType)
SLOT(IMFTransform, GetOutputCurrentType) SLOT(IMFTransform, GetInputStatus)
SLOT(IMFTransform, GetOutputStatus) SLOT(IMFTransform, SetOutputBounds) SLOT(IMFTransform, ProcessEvent)
SLOT(IMFTransform, ProcessMessage) SLOT(IMFTransform, ProcessInput) SLOT(IMFTransform, ProcessOutput)

SLOT(ICodecAPI, IsSupported) SLOT(ICodecAPI, IsModifiable) SLOT(ICodecAPI, GetParameterRange)
SLOT(ICodecAPI, GetParameterValues) SLOT(ICodecAPI, GetDefaultValue) SLOT(ICodecAPI, GetValue)
SLOT(ICodecAPI, SetValue) SLOT(ICodecAPI, RegisterForEvent) SLOT(ICodecAPI, UnregisterForEvent)
SLOT(ICodecAPI, SetAllDefaults) SLOT(ICodecAPI, SetValueWithNotify)
SLOT(ICodecAPI, SetAllDefaultsWithNotify) SLOT(ICodecAPI, GetAllSettings)
SLOT(ICodecAPI, SetAllSettings) SLOT(ICodecAPI, SetAllSettingsWithNotify)

SIZE(BOOL) SIZE(BYTE) SIZE(DWORD) SIZE(HRESULT) SIZE(LONGLONG) SIZE(LONG_PTR) SIZE(UINT32) SIZE(UINT64)
SIZE(ULONG) SIZE(ULONG_PTR) SIZE(GUID) SIZE(VARIANT) SIZE(MF_ATTRIBUTE_TYPE)
SIZE(MF_ATTRIBUTES_MATCH_TYPE) SIZE(MFT_MESSAGE_TYPE) SIZE(MFT_INPUT_STREAM_INFO)
SIZE(MFT_OUTPUT_STREAM_INFO) SIZE(MFT_OUTPUT_DATA_BUFFER) SIZE(MFT_REGISTER_TYPE_INFO)
PLACE(GUID, Data4) PLACE(VARIANT, vt) PLACE(VARIANT, ulVal)
PLACE(MFT_INPUT_STREAM_INFO, cbAlignment) PLACE(MFT_OUTPUT_STREAM_INFO, cbSize)
PLACE(MFT_OUTPUT_DATA_BUFFER, pSample) PLACE(MFT_OUTPUT_DATA_BUFFER, dwStatus)
PLACE(MFT_OUTPUT_DATA_BUFFER, pEvents) PLACE(MFT_REGISTER_TYPE_INFO, guidSubtype)

NUMBER(S_OK) NUMBER(S_FALSE) NUMBER(E_NOTIMPL) NUMBER(E_NOINTERFACE) NUMBER(E_POINTER) NUMBER(E_FAIL)
NUMBER(E_OUTOFMEMORY) NUMBER(E_INVALIDARG) NUMBER(MF_E_BUFFERTOOSMALL) NUMBER(MF_E_INVALIDSTREAMNUMBER)
NUMBER(MF_E_INVALIDMEDIATYPE) NUMBER(MF_E_NOTACCEPTING) NUMBER(MF_E_NO_MORE_TYPES)
NUMBER(MF_E_NO_SAMPLE_TIMESTAMP) NUMBER(MF_E_NO_SAMPLE_DURATION) NUMBER(MF_E_ATTRIBUTENOTFOUND)
NUMBER(MF_E_TOPO_CODEC_NOT_FOUND) NUMBER(MF_E_TRANSFORM_TYPE_NOT_SET)
NUMBER(MF_E_TRANSFORM_STREAM_CHANGE) NUMBER(MF_E_TRANSFORM_NEED_MORE_INPUT)
NUMBER(VT_EMPTY) NUMBER(VT_UI4) NUMBER(COINIT_APARTMENTTHREADED) NUMBER(COINIT_DISABLE_OLE1DDE)
NUMBER(MFT_ENUM_FLAG_SYNCMFT) NUMBER(MFT_ENUM_FLAG_ASYNCMFT) NUMBER(MFT_ENUM_FLAG_HARDWARE)
NUMBER(MFT_ENUM_FLAG_FIELDOFUSE) NUMBER(MFT_ENUM_FLAG_LOCALMFT) NUMBER(MFT_ENUM_FLAG_TRANSCODE_ONLY)
NUMBER(MFT_ENUM_FLAG_SORTANDFILTER) NUMBER(MFT_INPUT_STATUS_ACCEPT_DATA)
NUMBER(MFT_OUTPUT_STATUS_SAMPLE_READY) NUMBER(MFT_OUTPUT_STREAM_WHOLE_SAMPLES)
NUMBER(MFT_OUTPUT_STREAM_SINGLE_SAMPLE_PER_BUFFER) NUMBER(MFT_OUTPUT_STREAM_FIXED_SAMPLE_SIZE)
NUMBER(MFT_OUTPUT_STREAM_PROVIDES_SAMPLES) NUMBER(MFT_MESSAGE_COMMAND_FLUSH)
NUMBER(MFT_MESSAGE_COMMAND_DRAIN) NUMBER(MFT_MESSAGE_SET_D3D_MANAGER)
NUMBER(MFT_MESSAGE_NOTIFY_BEGIN_STREAMING) NUMBER(MFT_MESSAGE_NOTIFY_END_STREAMING)
NUMBER(MFT_MESSAGE_NOTIFY_END_OF_STREAM) NUMBER(MFT_MESSAGE_NOTIFY_START_OF_STREAM)
NUMBER(MFVideoInterlace_Progressive) NUMBER(MFVideoInterlace_FieldInterleavedUpperFirst)
NUMBER(MFVideoInterlace_FieldInterleavedLowerFirst)
NUMBER(MFVideoInterlace_MixedInterlaceOrProgressive)
NUMBER(MF_ATTRIBUTE_UINT32) NUMBER(MF_ATTRIBUTE_UINT64) NUMBER(MF_ATTRIBUTE_DOUBLE)
NUMBER(MF_ATTRIBUTE_GUID) NUMBER(MF_ATTRIBUTE_STRING) NUMBER(MF_ATTRIBUTE_BLOB)
NUMBER(MF_ATTRIBUTE_IUNKNOWN)

IDENTIFIER(IID_IMFAttributes) IDENTIFIER(IID_IMFMediaType) IDENTIFIER(IID_IMFMediaBuffer)
IDENTIFIER(IID_IMFSample) IDENTIFIER(IID_IMFActivate) IDENTIFIER(IID_IMFTransform)
IDENTIFIER(IID_ICodecAPI) IDENTIFIER(MFT_CATEGORY_VIDEO_DECODER) IDENTIFIER(MFT_CATEGORY_VIDEO_ENCODER)
IDENTIFIER(MFMediaType_Video) IDENTIFIER(MFVideoFormat_H264) IDENTIFIER(MFVideoFormat_YUY2)
IDENTIFIER(MF_MT_MAJOR_TYPE) IDENTIFIER(MF_MT_SUBTYPE) IDENTIFIER(MF_MT_FRAME_SIZE)
IDENTIFIER(MF_MT_FRAME_RATE) IDENTIFIER(MF_MT_PIXEL_ASPECT_RATIO) IDENTIFIER(MF_MT_INTERLACE_MODE)
IDENTIFIER(MF_MT_AVG_BITRATE) IDENTIFIER(MF_MT_MAX_KEYFRAME_SPACING) IDENTIFIER(MF_MT_MPEG2_PROFILE)
IDENTIFIER(MF_MT_MPEG_SEQUENCE_HEADER) IDENTIFIER(MFSampleExtension_CleanPoint)
// clang-format on

} // namespace
