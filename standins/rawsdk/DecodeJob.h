#pragma once

#include "rawsdk/FrameState.h"
#include "rawsdk/Job.h"
#include "rawsdk/clip/FrameRecord.h"
#include "rawsdk/picture/Samples.h"

namespace rawsdk {

/// Decompresses the samples of a frame, strip by strip, and interpolates the colours that they lack.
class DecodeJob final : public Job {
public:
    /// @param bitstream  `state.recordSize` bytes
    /// @param decoded    `DecodedBytes` bytes, aligned for words
    DecodeJob(std::shared_ptr<JobQueue> queue, const FrameState& state, const uint8_t* bitstream,
              uint16_t* decoded);

    size_t Stages() const override { return 3; }
    uint32_t Parts(size_t stage) const override;

    /// The planes behind the samples.
    static PlanarPicture ColorsOf(const FrameState& state, uint16_t* decoded);

protected:
    void Run(size_t stage, uint32_t part) override;
    void Tell(IRavenlightRawCallback& callback, HRESULT result) override;

private:
    void ReadRecord();
    void Decompress(uint32_t strip) const;
    void Interpolate(uint32_t strip) const;

    FrameState state_;
    const uint8_t* bitstream_;
    uint16_t* decoded_;
    FrameRecord record_;
};

} // namespace rawsdk
