#pragma once

#include "codecs/WMFPointer.h"

#include <cstdint>
#include <span>

// Samples and their memory. To be used once `LoadMediaFoundation` has returned true.

namespace CxWMF {

/// The bytes of a buffer, locked as long as this lives. It must not outlive the buffer.
class WMFBufferLock {
public:
    explicit WMFBufferLock(IMFMediaBuffer& buffer);
    WMFBufferLock(const WMFBufferLock&) = delete;
    WMFBufferLock& operator=(const WMFBufferLock&) = delete;
    ~WMFBufferLock();

    /// All bytes that there is room for; none if the buffer can't be locked.
    std::span<uint8_t> Room() const { return room; }
    /// Those that are filled.
    std::span<uint8_t> Content() const { return room.first(length); }

private:
    IMFMediaBuffer& buffer;
    std::span<uint8_t> room;
    size_t length = 0; ///< at most the size of `room`
    bool isLocked = false;
};

/// Makes a buffer of at least `capacity` bytes; none that is larger than a sample may be is made.
HRESULT NewBuffer(uint64_t capacity, WMFPointer<IMFMediaBuffer>& buffer);

/// Makes a sample of a buffer whose first `length` bytes are filled.
HRESULT NewInputSample(IMFMediaBuffer& buffer, DWORD length, WMFPointer<IMFSample>& sample);

/// A sample for output, and its buffer, which is dropped after it.
struct WMFOutputSample {
    WMFPointer<IMFMediaBuffer> buffer;
    WMFPointer<IMFSample> sample;
};

/// Makes a sample with an empty buffer of at least `capacity` bytes.
HRESULT NewOutputSample(DWORD capacity, WMFOutputSample& output);

/// What a sample holds, in one buffer; null if it holds nothing, or the buffer can't be had.
WMFPointer<IMFMediaBuffer> ContentOf(IMFSample& sample);

} // namespace CxWMF
