#include "codecs/WMFSamples.h"

#include "codecs/WMFLibrary.h"

#include <algorithm>
#include <limits>

namespace CxWMF {

WMFBufferLock::WMFBufferLock(IMFMediaBuffer& locked) : buffer(locked) {
    BYTE* bytes = nullptr;
    DWORD capacity = 0;
    DWORD filled = 0;
    isLocked = SUCCEEDED(buffer.Lock(&bytes, &capacity, &filled));
    if (!isLocked || bytes == nullptr) return;
    room = {bytes, capacity};
    length = std::min(filled, capacity);
}

WMFBufferLock::~WMFBufferLock() {
    if (isLocked) buffer.Unlock();
}

HRESULT NewBuffer(uint64_t capacity, WMFPointer<IMFMediaBuffer>& buffer) {
    constexpr uint64_t mostBytes = std::numeric_limits<int32_t>::max();
    if (capacity > mostBytes) return E_OUTOFMEMORY;
    return Obtain(buffer, [&](IMFMediaBuffer** made) {
        return MediaFoundation().MFCreateMemoryBuffer(static_cast<DWORD>(capacity), made);
    });
}

HRESULT NewInputSample(IMFMediaBuffer& buffer, DWORD length, WMFPointer<IMFSample>& sample) {
    if (const HRESULT result = buffer.SetCurrentLength(length); FAILED(result)) return result;
    const HRESULT result = Obtain(sample, MediaFoundation().MFCreateSample);
    return FAILED(result) ? result : sample->AddBuffer(&buffer);
}

HRESULT NewOutputSample(DWORD capacity, WMFOutputSample& output) {
    if (const HRESULT result = Obtain(output.sample, MediaFoundation().MFCreateSample); FAILED(result))
        return result;
    const HRESULT result = NewBuffer(capacity, output.buffer);
    return FAILED(result) ? result : output.sample->AddBuffer(output.buffer.get());
}

WMFPointer<IMFMediaBuffer> ContentOf(IMFSample& sample) {
    WMFPointer<IMFMediaBuffer> buffer;
    const HRESULT result =
        Obtain(buffer, [&](IMFMediaBuffer** made) { return sample.ConvertToContiguousBuffer(made); });
    DWORD length = 0;
    const bool isFilled = SUCCEEDED(result) && SUCCEEDED(buffer->GetCurrentLength(&length)) && length != 0;
    if (!isFilled) buffer.reset();
    return buffer;
}

} // namespace CxWMF
