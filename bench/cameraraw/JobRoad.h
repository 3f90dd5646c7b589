#pragma once

#include "cameraraw/RavenlightRawAPI.h"
#include "cameraraw/RawPointer.h"

#include <cstdint>
#include <semaphore>
#include <string>
#include <vector>

/// The SDK's three jobs of a frame run back to back, in buffers that stay: the least that a frame costs.
class JobRoad final : public IRavenlightRawCallback {
public:
    /// Throws std::runtime_error.
    explicit JobRoad(const std::string& path);
    JobRoad(const JobRoad&) = delete;
    JobRoad& operator=(const JobRoad&) = delete;
    virtual ~JobRoad();

    /// Reads, decodes and processes a frame.
    bool Decode(uint64_t frame);

    HRESULT QueryInterface(REFIID, void**) override { return E_FAIL; }
    ULONG AddRef() override { return 1; }
    ULONG Release() override { return 1; }
    void ReadFinished(RawJob* job, HRESULT result, IUnknown* product) override;
    void DecodeFinished(RawJob* job, HRESULT result) override;
    void ProcessFinished(RawJob* job, HRESULT result, IUnknown* product) override;
    void Progress(RawJob*, float) override {}
    void LastFinished(RawJob*, HRESULT) override {}
    void JobStarted(RawJob*) override {}
    void QueueIdle() override {}
    void JobWarning(RawJob*, HRESULT) override {}

private:
    bool Run(RawJob* job);
    bool Prepare();

    RawPointer<RawCodec> codec_;
    RawPointer<RawManualFlow> flow_;
    RawPointer<RawClip> clip_;
    RawPointer<RawClipReader> reader_;
    RawPointer<RawClipSettings> settings_;
    std::vector<uint8_t> bitstream_;
    std::vector<uint8_t> state_;
    std::vector<uint8_t> decoded_;
    std::vector<uint8_t> processed_;
    RawPointer<IUnknown> product_; ///< of the last job
    HRESULT result_ = E_FAIL;      ///< of the last job
    std::binary_semaphore finished_{0};
};
