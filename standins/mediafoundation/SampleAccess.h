#pragma once

#include "mediafoundation/MemoryBuffer.h"
#include "mediafoundation/Results.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>

namespace mediafoundation {

// Transforms read and fill samples, and the buffers in them, that may be another library's.

/// When a sample is shown, and for how long, as far as it says so; in 100 ns.
struct SampleTiming {
    std::optional<LONGLONG> time;
    std::optional<LONGLONG> duration;
};

inline SampleTiming TimingOf(IMFSample& sample) {
    SampleTiming timing;
    LONGLONG value = 0;
    if (SUCCEEDED(sample.GetSampleTime(&value))) timing.time = value;
    if (SUCCEEDED(sample.GetSampleDuration(&value))) timing.duration = value;
    return timing;
}

inline void SetTiming(IMFSample& sample, const SampleTiming& timing) {
    if (timing.time.has_value()) sample.SetSampleTime(*timing.time);
    if (timing.duration.has_value()) sample.SetSampleDuration(*timing.duration);
}

/// Calls `read` with the bytes of a sample and gives its result, or that of a failure before it.
template <typename Function>
HRESULT ReadSample(IMFSample& sample, Function read) {
    IMFMediaBuffer* found = nullptr;
    if (const HRESULT result = sample.ConvertToContiguousBuffer(&found); FAILED(result)) return result;
    const Held<IMFMediaBuffer> buffer(found);
    const BufferLock lock(*buffer);
    if (lock.bytes == nullptr) return E_FAIL;
    return read(std::span<const uint8_t>(lock.bytes, std::min(lock.length, lock.capacity)));
}

/// Calls `write` with the memory of a sample's first buffer, which then counts `size` bytes.
/// @return MF_E_BUFFERTOOSMALL if it is smaller, and nothing is written
template <typename Function>
HRESULT FillSample(IMFSample& sample, DWORD size, Function write) {
    IMFMediaBuffer* found = nullptr;
    if (const HRESULT result = sample.GetBufferByIndex(0, &found); FAILED(result)) return result;
    const Held<IMFMediaBuffer> buffer(found);
    {
        const BufferLock lock(*buffer);
        if (lock.bytes == nullptr) return E_FAIL;
        if (lock.capacity < size) return MF_E_BUFFERTOOSMALL;
        write(lock.bytes);
    }
    return buffer->SetCurrentLength(size);
}

} // namespace mediafoundation
