#pragma once

#include "codecs/MediaFoundation.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

using Bytes = std::vector<uint8_t>;

/// The functions of the library under test, which is loaded on first use and stays.
struct MFLibrary {
    decltype(&::MFTEnumEx) EnumTransforms;
    decltype(&::MFCreateMemoryBuffer) CreateMemoryBuffer;
    decltype(&::MFCreateSample) CreateSample;
    decltype(&::CoInitializeEx) CoInitializeEx;
    decltype(&::CoUninitialize) CoUninitialize;
    decltype(&::CoTaskMemFree) CoTaskMemFree;
    HRESULT (*DllCanUnloadNow)();
};
const MFLibrary& MF();
/// Whether no object of the library lives.
inline bool IsLibraryUnused() { return MF().DllCanUnloadNow() == S_OK; }

struct ReleaseReference {
    template <typename Interface>
    void operator()(Interface* object) const {
        object->Release();
    }
};
template <typename Interface>
using Ptr = std::unique_ptr<Interface, ReleaseReference>;

/// Starts COM on this thread for as long as it lives.
struct ComThread {
    ComThread() { MF().CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE); }
    ~ComThread() { MF().CoUninitialize(); }
    ComThread(const ComThread&) = delete;
    ComThread& operator=(const ComThread&) = delete;
};

/// A subtype by its four characters.
GUID Subtype(const char (&code)[5]);

/// A number or two of them, as attributes hold them.
constexpr uint64_t PairOf(uint32_t first, uint32_t second) { return uint64_t{first} << 32 | second; }
/// The value of an attribute, if there is one of this type.
std::optional<uint32_t> NumberOf(IMFAttributes& attributes, REFGUID key);
std::optional<uint64_t> PairOf(IMFAttributes& attributes, REFGUID key);
Bytes BlobOf(IMFAttributes& attributes, REFGUID key);
GUID SubtypeOf(IMFMediaType& type);

/// Bytes with a time in 100 ns, as they go into a transform and come out of it.
struct TimedBytes {
    Bytes bytes;
    std::optional<int64_t> time;
    std::optional<int64_t> duration;
    bool isCleanPoint = false;
};

Ptr<IMFMediaBuffer> NewBuffer(DWORD capacity);
Ptr<IMFSample> NewSample();
Ptr<IMFSample> SampleOf(const TimedBytes& timed);
TimedBytes ContentOf(IMFSample& sample);

/// The transforms of a category for two types.
std::vector<Ptr<IMFActivate>> FindTransforms(REFGUID category, UINT32 flags,
                                             const MFT_REGISTER_TYPE_INFO* input,
                                             const MFT_REGISTER_TYPE_INFO* output);
/// The decoder or the encoder of H.264.
Ptr<IMFTransform> NewTransform(REFGUID category);
/// A type that a transform offers; null if it doesn't.
Ptr<IMFMediaType> InputTypeOf(IMFTransform& transform, REFGUID subtype);
Ptr<IMFMediaType> OutputTypeOf(IMFTransform& transform, REFGUID subtype);
/// All subtypes that a transform offers for its output, or its input.
std::vector<GUID> OutputSubtypesOf(IMFTransform& transform);
std::vector<GUID> InputSubtypesOf(IMFTransform& transform);

HRESULT Feed(IMFTransform& transform, const TimedBytes& timed);
/// Bytes that an output sample needs.
DWORD OutputBytesOf(IMFTransform& transform);
/// Takes one output sample into a buffer of as many bytes as it needs.
HRESULT TakeOne(IMFTransform& transform, TimedBytes& output);
/// Takes all output until the transform wants more input.
std::vector<TimedBytes> TakeAll(IMFTransform& transform);
HRESULT Tell(IMFTransform& transform, MFT_MESSAGE_TYPE message);
