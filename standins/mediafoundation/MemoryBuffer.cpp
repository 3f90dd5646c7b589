#include "mediafoundation/MemoryBuffer.h"

#include <algorithm>
#include <new>

namespace mediafoundation {

MemoryBuffer::MemoryBuffer(DWORD capacity)
    : bytes_(static_cast<BYTE*>(std::calloc(std::max<DWORD>(capacity, 1), 1))), capacity_(capacity) {
    if (bytes_ == nullptr) throw std::bad_alloc();
}

HRESULT MemoryBuffer::Lock(BYTE** bytes, DWORD* capacity, DWORD* length) {
    if (bytes == nullptr) return E_POINTER;
    *bytes = bytes_.get();
    if (capacity != nullptr) *capacity = capacity_;
    if (length != nullptr) *length = length_;
    return S_OK;
}

HRESULT MemoryBuffer::GetCurrentLength(DWORD* length) {
    if (length == nullptr) return E_POINTER;
    *length = length_;
    return S_OK;
}

HRESULT MemoryBuffer::SetCurrentLength(DWORD length) {
    if (length > capacity_) return E_INVALIDARG;
    length_ = length;
    return S_OK;
}

HRESULT MemoryBuffer::GetMaxLength(DWORD* capacity) {
    if (capacity == nullptr) return E_POINTER;
    *capacity = capacity_;
    return S_OK;
}

BufferLock::BufferLock(IMFMediaBuffer& buffer) : buffer_(buffer) {
    if (FAILED(buffer_.Lock(&bytes, &capacity, &length))) bytes = nullptr;
}

BufferLock::~BufferLock() {
    if (bytes != nullptr) buffer_.Unlock();
}

} // namespace mediafoundation
