#pragma once

// What the H.264 back-end uses of Media Foundation and COM. On Windows these are the platform's own
// declarations. Elsewhere a library that stands in for the platform's implements the ones below, which have
// the platform's names, values, virtual operations in their order and layouts for 64-bit processors;
// scripts/check-windows holds both against each other.

#ifdef _WIN32

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <mfapi.h>
#include <mferror.h>
#include <mfidl.h>
#include <mfobjects.h>
#include <mftransform.h>
#include <oleauto.h>
#include <strmif.h>

/// Names under which the host is asked for the libraries of Media Foundation and of COM.
inline constexpr const char* mediaFoundationLibraryName = "mfplat.dll";
inline constexpr const char* comLibraryName = "ole32.dll";

#else

#include "codecs/MediaFoundationIdentifiers.h"

/// Names under which the host is asked for the libraries of Media Foundation and of COM, which are one here.
inline constexpr const char* mediaFoundationLibraryName = "mfplat.dll";
inline constexpr const char* comLibraryName = mediaFoundationLibraryName;

// Sizes are bytes, times 100 ns. Strings are UTF-16. As everywhere in COM, an object that is handed out
// through a pointer carries a reference for the caller, and one that is handed in gets none.

/// The base of every object. Any thread may count references.
struct IUnknown {
    virtual HRESULT QueryInterface(REFIID interfaceId, void** object) = 0;
    virtual ULONG AddRef() = 0;
    virtual ULONG Release() = 0;
};

// Only passed on, as pointers or references.
struct IMFCollection;
struct IMFMediaEvent;
struct IStream;
struct PROPVARIANT;
using REFPROPVARIANT = const PROPVARIANT&;

enum MF_ATTRIBUTE_TYPE : int32_t {
    MF_ATTRIBUTE_UINT32 = 19,
    MF_ATTRIBUTE_UINT64 = 21,
    MF_ATTRIBUTE_DOUBLE = 5,
    MF_ATTRIBUTE_GUID = 72,
    MF_ATTRIBUTE_STRING = 31,
    MF_ATTRIBUTE_BLOB = 4113,
    MF_ATTRIBUTE_IUNKNOWN = 13,
};

enum MF_ATTRIBUTES_MATCH_TYPE : int32_t {
    MF_ATTRIBUTES_MATCH_OUR_ITEMS = 0,
    MF_ATTRIBUTES_MATCH_THEIR_ITEMS = 1,
    MF_ATTRIBUTES_MATCH_ALL_ITEMS = 2,
    MF_ATTRIBUTES_MATCH_INTERSECTION = 3,
    MF_ATTRIBUTES_MATCH_SMALLER = 4,
};

/// Values by key. A key that is missing answers MF_E_ATTRIBUTENOTFOUND.
struct IMFAttributes : IUnknown {
    virtual HRESULT GetItem(REFGUID key, PROPVARIANT* value) = 0;
    virtual HRESULT GetItemType(REFGUID key, MF_ATTRIBUTE_TYPE* type) = 0;
    virtual HRESULT CompareItem(REFGUID key, REFPROPVARIANT value, BOOL* isEqual) = 0;
    virtual HRESULT Compare(IMFAttributes* theirs, MF_ATTRIBUTES_MATCH_TYPE type, BOOL* isEqual) = 0;
    virtual HRESULT GetUINT32(REFGUID key, UINT32* value) = 0;
    virtual HRESULT GetUINT64(REFGUID key, UINT64* value) = 0;
    virtual HRESULT GetDouble(REFGUID key, double* value) = 0;
    virtual HRESULT GetGUID(REFGUID key, GUID* value) = 0;
    virtual HRESULT GetStringLength(REFGUID key, UINT32* length) = 0;
    virtual HRESULT GetString(REFGUID key, LPWSTR value, UINT32 capacity, UINT32* length) = 0;
    virtual HRESULT GetAllocatedString(REFGUID key, LPWSTR* value, UINT32* length) = 0;
    virtual HRESULT GetBlobSize(REFGUID key, UINT32* size) = 0;
    /// @param written  receives the blob's size; may be null
    virtual HRESULT GetBlob(REFGUID key, UINT8* bytes, UINT32 capacity, UINT32* written) = 0;
    virtual HRESULT GetAllocatedBlob(REFGUID key, UINT8** bytes, UINT32* size) = 0;
    virtual HRESULT GetUnknown(REFGUID key, REFIID interfaceId, void** object) = 0;
    virtual HRESULT SetItem(REFGUID key, REFPROPVARIANT value) = 0;
    virtual HRESULT DeleteItem(REFGUID key) = 0;
    virtual HRESULT DeleteAllItems() = 0;
    virtual HRESULT SetUINT32(REFGUID key, UINT32 value) = 0;
    /// Two numbers, as of a size or a ratio, stand in the upper and the lower half.
    virtual HRESULT SetUINT64(REFGUID key, UINT64 value) = 0;
    virtual HRESULT SetDouble(REFGUID key, double value) = 0;
    virtual HRESULT SetGUID(REFGUID key, REFGUID value) = 0;
    virtual HRESULT SetString(REFGUID key, LPCWSTR value) = 0;
    virtual HRESULT SetBlob(REFGUID key, const UINT8* bytes, UINT32 size) = 0;
    virtual HRESULT SetUnknown(REFGUID key, IUnknown* object) = 0;
    virtual HRESULT LockStore() = 0;
    virtual HRESULT UnlockStore() = 0;
    virtual HRESULT GetCount(UINT32* count) = 0;
    virtual HRESULT GetItemByIndex(UINT32 index, GUID* key, PROPVARIANT* value) = 0;
    virtual HRESULT CopyAllItems(IMFAttributes* destination) = 0;
};

/// A form of data on one side of a transform.
struct IMFMediaType : IMFAttributes {
    virtual HRESULT GetMajorType(GUID* type) = 0;
    virtual HRESULT IsCompressedFormat(BOOL* isCompressed) = 0;
    virtual HRESULT IsEqual(IMFMediaType* other, DWORD* flags) = 0;
    virtual HRESULT GetRepresentation(GUID representation, void** value) = 0;
    virtual HRESULT FreeRepresentation(GUID representation, void* value) = 0;
};

/// A block of memory.
struct IMFMediaBuffer : IUnknown {
    /// @param capacity, length  may be null
    virtual HRESULT Lock(BYTE** bytes, DWORD* capacity, DWORD* length) = 0;
    virtual HRESULT Unlock() = 0;
    virtual HRESULT GetCurrentLength(DWORD* length) = 0;
    virtual HRESULT SetCurrentLength(DWORD length) = 0;
    virtual HRESULT GetMaxLength(DWORD* capacity) = 0;
};

/// Buffers with a time.
struct IMFSample : IMFAttributes {
    virtual HRESULT GetSampleFlags(DWORD* flags) = 0;
    virtual HRESULT SetSampleFlags(DWORD flags) = 0;
    virtual HRESULT GetSampleTime(LONGLONG* time) = 0;
    virtual HRESULT SetSampleTime(LONGLONG time) = 0;
    virtual HRESULT GetSampleDuration(LONGLONG* duration) = 0;
    virtual HRESULT SetSampleDuration(LONGLONG duration) = 0;
    virtual HRESULT GetBufferCount(DWORD* count) = 0;
    virtual HRESULT GetBufferByIndex(DWORD index, IMFMediaBuffer** buffer) = 0;
    /// Gives the one buffer, or makes one of all. The buffers may be replaced by it.
    virtual HRESULT ConvertToContiguousBuffer(IMFMediaBuffer** buffer) = 0;
    virtual HRESULT AddBuffer(IMFMediaBuffer* buffer) = 0;
    virtual HRESULT RemoveBufferByIndex(DWORD index) = 0;
    virtual HRESULT RemoveAllBuffers() = 0;
    virtual HRESULT GetTotalLength(DWORD* length) = 0;
    virtual HRESULT CopyToBuffer(IMFMediaBuffer* buffer) = 0;
};

/// An object that is not made yet.
struct IMFActivate : IMFAttributes {
    virtual HRESULT ActivateObject(REFIID interfaceId, void** object) = 0;
    virtual HRESULT ShutdownObject() = 0;
    virtual HRESULT DetachObject() = 0;
};

enum MFT_MESSAGE_TYPE : uint32_t {
    MFT_MESSAGE_COMMAND_FLUSH = 0,
    MFT_MESSAGE_COMMAND_DRAIN = 1,
    MFT_MESSAGE_SET_D3D_MANAGER = 2,
    MFT_MESSAGE_NOTIFY_BEGIN_STREAMING = 0x10000000,
    MFT_MESSAGE_NOTIFY_END_STREAMING = 0x10000001,
    MFT_MESSAGE_NOTIFY_END_OF_STREAM = 0x10000002,
    MFT_MESSAGE_NOTIFY_START_OF_STREAM = 0x10000003,
};

struct MFT_INPUT_STREAM_INFO {
    LONGLONG hnsMaxLatency;
    DWORD dwFlags;
    DWORD cbSize;
    DWORD cbMaxLookahead;
    DWORD cbAlignment;
};

struct MFT_OUTPUT_STREAM_INFO {
    DWORD dwFlags;
    DWORD cbSize; ///< bytes that an output buffer has at least
    DWORD cbAlignment;
};

struct MFT_OUTPUT_DATA_BUFFER {
    DWORD dwStreamID;
    IMFSample* pSample; ///< the caller's, to be filled
    DWORD dwStatus;
    IMFCollection* pEvents; ///< null, or the caller's to release
};

struct MFT_REGISTER_TYPE_INFO {
    GUID guidMajorType;
    GUID guidSubtype;
};

/// A decoder or encoder. One thread at a time.
struct IMFTransform : IUnknown {
    virtual HRESULT GetStreamLimits(DWORD* leastInputs, DWORD* mostInputs, DWORD* leastOutputs,
                                    DWORD* mostOutputs) = 0;
    virtual HRESULT GetStreamCount(DWORD* inputs, DWORD* outputs) = 0;
    /// E_NOTIMPL: streams are numbered from 0.
    virtual HRESULT GetStreamIDs(DWORD inputCapacity, DWORD* inputs, DWORD outputCapacity,
                                 DWORD* outputs) = 0;
    virtual HRESULT GetInputStreamInfo(DWORD stream, MFT_INPUT_STREAM_INFO* information) = 0;
    virtual HRESULT GetOutputStreamInfo(DWORD stream, MFT_OUTPUT_STREAM_INFO* information) = 0;
    virtual HRESULT GetAttributes(IMFAttributes** attributes) = 0;
    virtual HRESULT GetInputStreamAttributes(DWORD stream, IMFAttributes** attributes) = 0;
    virtual HRESULT GetOutputStreamAttributes(DWORD stream, IMFAttributes** attributes) = 0;
    virtual HRESULT DeleteInputStream(DWORD stream) = 0;
    virtual HRESULT AddInputStreams(DWORD count, DWORD* streams) = 0;
    /// MF_E_NO_MORE_TYPES past the last one. The type is a copy, whose attributes may be set.
    virtual HRESULT GetInputAvailableType(DWORD stream, DWORD index, IMFMediaType** type) = 0;
    virtual HRESULT GetOutputAvailableType(DWORD stream, DWORD index, IMFMediaType** type) = 0;
    virtual HRESULT SetInputType(DWORD stream, IMFMediaType* type, DWORD flags) = 0;
    virtual HRESULT SetOutputType(DWORD stream, IMFMediaType* type, DWORD flags) = 0;
    virtual HRESULT GetInputCurrentType(DWORD stream, IMFMediaType** type) = 0;
    virtual HRESULT GetOutputCurrentType(DWORD stream, IMFMediaType** type) = 0;
    virtual HRESULT GetInputStatus(DWORD stream, DWORD* flags) = 0;
    virtual HRESULT GetOutputStatus(DWORD* flags) = 0;
    virtual HRESULT SetOutputBounds(LONGLONG lower, LONGLONG upper) = 0;
    virtual HRESULT ProcessEvent(DWORD stream, IMFMediaEvent* event) = 0;
    virtual HRESULT ProcessMessage(MFT_MESSAGE_TYPE message, ULONG_PTR parameter) = 0;
    /// MF_E_NOTACCEPTING: output is to be taken first. The sample may be kept.
    virtual HRESULT ProcessInput(DWORD stream, IMFSample* sample, DWORD flags) = 0;
    /// MF_E_TRANSFORM_NEED_MORE_INPUT: there is none; MF_E_TRANSFORM_STREAM_CHANGE: the output type is to be
    /// set again first.
    virtual HRESULT ProcessOutput(DWORD flags, DWORD count, MFT_OUTPUT_DATA_BUFFER* outputs,
                                  DWORD* status) = 0;
};

/// Properties of a decoder or encoder, an interface of the same object as its `IMFTransform`.
struct ICodecAPI : IUnknown {
    virtual HRESULT IsSupported(const GUID* property) = 0;
    virtual HRESULT IsModifiable(const GUID* property) = 0;
    virtual HRESULT GetParameterRange(const GUID* property, VARIANT* least, VARIANT* most, VARIANT* step) = 0;
    virtual HRESULT GetParameterValues(const GUID* property, VARIANT** values, ULONG* count) = 0;
    virtual HRESULT GetDefaultValue(const GUID* property, VARIANT* value) = 0;
    virtual HRESULT GetValue(const GUID* property, VARIANT* value) = 0;
    virtual HRESULT SetValue(const GUID* property, VARIANT* value) = 0;
    virtual HRESULT RegisterForEvent(const GUID* property, LONG_PTR userData) = 0;
    virtual HRESULT UnregisterForEvent(const GUID* property) = 0;
    virtual HRESULT SetAllDefaults() = 0;
    virtual HRESULT SetValueWithNotify(const GUID* property, VARIANT* value, GUID** changed,
                                       ULONG* changedCount) = 0;
    virtual HRESULT SetAllDefaultsWithNotify(GUID** changed, ULONG* changedCount) = 0;
    virtual HRESULT GetAllSettings(IStream* stream) = 0;
    virtual HRESULT SetAllSettings(IStream* stream) = 0;
    virtual HRESULT SetAllSettingsWithNotify(IStream* stream, GUID** changed, ULONG* changedCount) = 0;
};

// The functions of the libraries, which are found at run time.
extern "C" {
/// Lists the transforms of a category that take and give the types.
/// @param activates  receives an array of `count` objects; the objects are the caller's to release and the
///                   array, if any, to free with `CoTaskMemFree`
HRESULT MFTEnumEx(GUID category, UINT32 flags, const MFT_REGISTER_TYPE_INFO* input,
                  const MFT_REGISTER_TYPE_INFO* output, IMFActivate*** activates, UINT32* count);
HRESULT MFCreateMemoryBuffer(DWORD capacity, IMFMediaBuffer** buffer);
HRESULT MFCreateSample(IMFSample** sample);
/// Starts COM on this thread; each success is ended by one `CoUninitialize` on the same thread.
HRESULT CoInitializeEx(void* reserved, DWORD flags);
void CoUninitialize();
void CoTaskMemFree(void* memory);
}

#endif
