#pragma once

#include "codecs/MediaFoundation.h"
#include "support/GuardedBytes.h"

#include <vector>

/// A buffer of another maker than the library under test, whose memory ends at a page that may not be
/// touched. It lives as long as its test, whatever references there are.
class GuardedBuffer : public IMFMediaBuffer {
public:
    explicit GuardedBuffer(size_t capacity) : bytes_(capacity, GuardedBytes::Guard::Behind) {}
    explicit GuardedBuffer(const std::vector<uint8_t>& content) : GuardedBuffer(content.size()) {
        std::copy(content.begin(), content.end(), bytes_.begin());
        length_ = static_cast<DWORD>(content.size());
    }

    HRESULT QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG AddRef() override { return ++references; }
    ULONG Release() override { return --references; }
    HRESULT Lock(BYTE** bytes, DWORD* capacity, DWORD* length) override {
        *bytes = bytes_.data();
        if (capacity != nullptr) *capacity = static_cast<DWORD>(bytes_.size());
        if (length != nullptr) *length = length_;
        ++locks;
        return S_OK;
    }
    HRESULT Unlock() override {
        --locks;
        return S_OK;
    }
    HRESULT GetCurrentLength(DWORD* length) override {
        *length = length_;
        return S_OK;
    }
    HRESULT SetCurrentLength(DWORD length) override {
        length_ = length;
        return S_OK;
    }
    HRESULT GetMaxLength(DWORD* capacity) override {
        *capacity = static_cast<DWORD>(bytes_.size());
        return S_OK;
    }

    int references = 1;
    int locks = 0; ///< that were not undone

private:
    GuardedBytes bytes_;
    DWORD length_ = 0;
};
