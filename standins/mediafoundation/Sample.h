#pragma once

#include "mediafoundation/Attributes.h"

#include <optional>
#include <vector>

namespace mediafoundation {

/// Buffers with a time.
class Sample final : public Attributes<IMFSample> {
public:
    HRESULT GetSampleFlags(DWORD* flags) override;
    HRESULT SetSampleFlags(DWORD flags) override;
    HRESULT GetSampleTime(LONGLONG* time) override;
    HRESULT SetSampleTime(LONGLONG time) override;
    HRESULT GetSampleDuration(LONGLONG* duration) override;
    HRESULT SetSampleDuration(LONGLONG duration) override;
    HRESULT GetBufferCount(DWORD* count) override;
    HRESULT GetBufferByIndex(DWORD index, IMFMediaBuffer** buffer) override;
    HRESULT ConvertToContiguousBuffer(IMFMediaBuffer** buffer) override;
    HRESULT AddBuffer(IMFMediaBuffer* buffer) override;
    HRESULT RemoveBufferByIndex(DWORD index) override;
    HRESULT RemoveAllBuffers() override;
    HRESULT GetTotalLength(DWORD* length) override;
    HRESULT CopyToBuffer(IMFMediaBuffer* buffer) override;

private:
    DWORD flags_ = 0;
    std::optional<LONGLONG> time_;
    std::optional<LONGLONG> duration_;
    std::vector<Held<IMFMediaBuffer>> buffers_;
};

} // namespace mediafoundation
