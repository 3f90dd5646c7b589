#include "mediafoundation/Sample.h"

#include "mediafoundation/MemoryBuffer.h"

#include <algorithm>
#include <limits>

namespace mediafoundation {

namespace {

HRESULT Give(const std::optional<LONGLONG>& held, LONGLONG* value, HRESULT missing) {
    if (value == nullptr) return E_POINTER;
    if (!held.has_value()) return missing;
    *value = *held;
    return S_OK;
}

} // namespace

HRESULT Sample::GetSampleFlags(DWORD* flags) {
    if (flags == nullptr) return E_POINTER;
    *flags = flags_;
    return S_OK;
}

HRESULT Sample::SetSampleFlags(DWORD flags) {
    flags_ = flags;
    return S_OK;
}

HRESULT Sample::GetSampleTime(LONGLONG* time) { return Give(time_, time, MF_E_NO_SAMPLE_TIMESTAMP); }

HRESULT Sample::SetSampleTime(LONGLONG time) {
    time_ = time;
    return S_OK;
}

HRESULT Sample::GetSampleDuration(LONGLONG* duration) {
    return Give(duration_, duration, MF_E_NO_SAMPLE_DURATION);
}

HRESULT Sample::SetSampleDuration(LONGLONG duration) {
    duration_ = duration;
    return S_OK;
}

HRESULT Sample::GetBufferCount(DWORD* count) {
    if (count == nullptr) return E_POINTER;
    *count = static_cast<DWORD>(buffers_.size());
    return S_OK;
}

HRESULT Sample::GetBufferByIndex(DWORD index, IMFMediaBuffer** buffer) {
    if (buffer == nullptr) return E_POINTER;
    if (index >= buffers_.size()) return wrongIndex;
    *buffer = Hold(buffers_[index].get()).release();
    return S_OK;
}

HRESULT Sample::ConvertToContiguousBuffer(IMFMediaBuffer** buffer) {
    if (buffer == nullptr) return E_POINTER;
    if (buffers_.empty()) return unexpected;
    if (buffers_.size() == 1) return GetBufferByIndex(0, buffer);
    return Guarded([&] {
        DWORD length = 0;
        if (const HRESULT result = GetTotalLength(&length); FAILED(result)) return result;
        Held<IMFMediaBuffer> whole = Make<MemoryBuffer>(length);
        if (const HRESULT result = CopyToBuffer(whole.get()); FAILED(result)) return result;
        buffers_.resize(1);
        buffers_.front() = std::move(whole);
        return GetBufferByIndex(0, buffer);
    });
}

HRESULT Sample::AddBuffer(IMFMediaBuffer* buffer) {
    if (buffer == nullptr) return E_POINTER;
    return Guarded([&] {
        buffers_.push_back(Hold(buffer));
        return S_OK;
    });
}

HRESULT Sample::RemoveBufferByIndex(DWORD index) {
    if (index >= buffers_.size()) return wrongIndex;
    buffers_.erase(buffers_.begin() + index);
    return S_OK;
}

HRESULT Sample::RemoveAllBuffers() {
    buffers_.clear();
    return S_OK;
}

HRESULT Sample::GetTotalLength(DWORD* length) {
    if (length == nullptr) return E_POINTER;
    uint64_t total = 0;
    for (const Held<IMFMediaBuffer>& buffer : buffers_) {
        DWORD part = 0;
        if (const HRESULT result = buffer->GetCurrentLength(&part); FAILED(result)) return result;
        total += part;
    }
    if (total > std::numeric_limits<DWORD>::max()) return E_OUTOFMEMORY;
    *length = static_cast<DWORD>(total);
    return S_OK;
}

HRESULT Sample::CopyToBuffer(IMFMediaBuffer* buffer) {
    if (buffer == nullptr) return E_POINTER;
    DWORD at = 0;
    {
        const BufferLock copy(*buffer);
        if (copy.bytes == nullptr) return E_FAIL;
        for (const Held<IMFMediaBuffer>& source : buffers_) {
            const BufferLock part(*source);
            if (part.bytes == nullptr) return E_FAIL;
            if (part.length > copy.capacity - at) return MF_E_BUFFERTOOSMALL;
            std::copy_n(part.bytes, part.length, copy.bytes + at);
            at += part.length;
        }
    }
    return buffer->SetCurrentLength(at);
}

} // namespace mediafoundation
