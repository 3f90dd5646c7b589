#pragma once

#include "mediafoundation/Object.h"

#include <cstdlib>
#include <memory>

namespace mediafoundation {

/// A block of memory, all zeros at first. It may be locked as often as one likes: its bytes stay in place.
class MemoryBuffer final : public Object<IMFMediaBuffer> {
public:
    /// Throws std::bad_alloc.
    explicit MemoryBuffer(DWORD capacity);

    HRESULT Lock(BYTE** bytes, DWORD* capacity, DWORD* length) override;
    HRESULT Unlock() override { return S_OK; }
    HRESULT GetCurrentLength(DWORD* length) override;
    HRESULT SetCurrentLength(DWORD length) override;
    HRESULT GetMaxLength(DWORD* capacity) override;

private:
    struct FreeMemory {
        void operator()(BYTE* bytes) const { std::free(bytes); }
    };

    std::unique_ptr<BYTE, FreeMemory> bytes_;
    DWORD capacity_;
    DWORD length_ = 0;
};

/// The bytes of a buffer for as long as this object lives. Buffers may be another library's.
class BufferLock {
public:
    explicit BufferLock(IMFMediaBuffer& buffer);
    BufferLock(const BufferLock&) = delete;
    BufferLock& operator=(const BufferLock&) = delete;
    ~BufferLock();

    BYTE* bytes = nullptr; ///< null if it could not be locked
    DWORD capacity = 0;
    DWORD length = 0;

private:
    IMFMediaBuffer& buffer_;
};

} // namespace mediafoundation
