// The exported functions: they look at pointers, and keep exceptions inside.

#include "mediafoundation/Activate.h"
#include "mediafoundation/Apartment.h"
#include "mediafoundation/Decoder.h"
#include "mediafoundation/Encoder.h"
#include "mediafoundation/MemoryBuffer.h"
#include "mediafoundation/PictureFormats.h"
#include "mediafoundation/Sample.h"

#include <cstdlib>

namespace {

using namespace mediafoundation;

template <typename Class>
Held<IMFTransform> MakeTransform() {
    return Make<Class>();
}

bool IsCompressed(const MFT_REGISTER_TYPE_INFO& type) {
    return type.guidMajorType == MFMediaType_Video && type.guidSubtype == MFVideoFormat_H264;
}

bool IsUncompressed(const MFT_REGISTER_TYPE_INFO& type) {
    return type.guidMajorType == MFMediaType_Video && FindPictureFormat(type.guidSubtype) != nullptr;
}

/// What makes the one transform of a category that takes and gives the types, of which null is any. Null if
/// there is none.
Activate::Maker FindMaker(REFGUID category, const MFT_REGISTER_TYPE_INFO* input,
                          const MFT_REGISTER_TYPE_INFO* output) {
    const bool decodes = category == MFT_CATEGORY_VIDEO_DECODER;
    const bool encodes = category == MFT_CATEGORY_VIDEO_ENCODER;
    const MFT_REGISTER_TYPE_INFO* compressed = decodes ? input : output;
    const MFT_REGISTER_TYPE_INFO* uncompressed = decodes ? output : input;
    if (!decodes && !encodes) return nullptr;
    if (compressed != nullptr && !IsCompressed(*compressed)) return nullptr;
    if (uncompressed != nullptr && !IsUncompressed(*uncompressed)) return nullptr;
    return decodes ? MakeTransform<Decoder> : MakeTransform<Encoder>;
}

} // namespace

#pragma GCC visibility push(default)

HRESULT MFTEnumEx(GUID category, UINT32 flags, const MFT_REGISTER_TYPE_INFO* input,
                  const MFT_REGISTER_TYPE_INFO* output, IMFActivate*** activates, UINT32* count) {
    if (activates == nullptr || count == nullptr) return E_POINTER;
    *activates = nullptr;
    *count = 0;
    // No kind at all stands for the synchronous one.
    constexpr UINT32 kinds = MFT_ENUM_FLAG_SYNCMFT | MFT_ENUM_FLAG_ASYNCMFT | MFT_ENUM_FLAG_HARDWARE;
    const bool isWanted = (flags & MFT_ENUM_FLAG_SYNCMFT) != 0 || (flags & kinds) == 0;
    const Activate::Maker maker = isWanted ? FindMaker(category, input, output) : nullptr;
    if (maker == nullptr) return S_OK;
    return Guarded([&] {
        Held<IMFActivate> activate = Make<Activate>(maker);
        auto* const list = static_cast<IMFActivate**>(std::malloc(sizeof(IMFActivate*)));
        if (list == nullptr) return E_OUTOFMEMORY;
        list[0] = activate.release();
        *activates = list;
        *count = 1;
        return S_OK;
    });
}

HRESULT MFCreateMemoryBuffer(DWORD capacity, IMFMediaBuffer** buffer) {
    if (buffer == nullptr) return E_POINTER;
    *buffer = nullptr;
    return Guarded([&] {
        *buffer = Make<MemoryBuffer>(capacity).release();
        return S_OK;
    });
}

HRESULT MFCreateSample(IMFSample** sample) {
    if (sample == nullptr) return E_POINTER;
    *sample = nullptr;
    return Guarded([&] {
        *sample = Make<Sample>().release();
        return S_OK;
    });
}

HRESULT CoInitializeEx(void* /*reserved*/, DWORD flags) { return EnterApartment(flags); }

void CoUninitialize() { LeaveApartment(); }

void CoTaskMemFree(void* memory) { std::free(memory); }

/// S_OK if no object of the library lives, otherwise S_FALSE.
extern "C" HRESULT DllCanUnloadNow() { return liveObjects == 0 ? S_OK : S_FALSE; }

#pragma GCC visibility pop
