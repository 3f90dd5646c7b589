#include "rawsdk/DecodeJob.h"

#include "rawsdk/clip/StripCodec.h"
#include "rawsdk/picture/Demosaic.h"

#include <utility>

namespace rawsdk {

namespace {

constexpr size_t readingStage = 0;
constexpr size_t decompressionStage = 1;

} // namespace

DecodeJob::DecodeJob(std::shared_ptr<JobQueue> queue, const FrameState& state, const uint8_t* bitstream,
                     uint16_t* decoded)
    : Job("decode", "DecodeJob.Run", std::move(queue)), state_(state), bitstream_(bitstream),
      decoded_(decoded) {}

uint32_t DecodeJob::Parts(size_t stage) const { return stage == readingStage ? 1 : StripsOf(state_.height); }

PlanarPicture DecodeJob::ColorsOf(const FrameState& state, uint16_t* decoded) {
    return {decoded + size_t{state.width} * state.height, state.width, state.height};
}

void DecodeJob::Run(size_t stage, uint32_t part) {
    if (stage == readingStage)
        ReadRecord();
    else if (stage == decompressionStage)
        Decompress(part);
    else
        Interpolate(part);
}

void DecodeJob::Tell(IRavenlightRawCallback& callback, HRESULT result) {
    callback.DecodeFinished(this, result);
}

/// Reads what stands in front of the strips, which has to be of the frame for which the state was filled.
void DecodeJob::ReadRecord() {
    record_ = ReadFrame({bitstream_, state_.recordSize}, state_.height);
    Require(record_.crc == state_.recordCrc);
}

void DecodeJob::Decompress(uint32_t strip) const {
    const size_t first = size_t{strip} * stripRows * state_.width;
    const size_t count = size_t{RowsOfStrip(state_.height, strip)} * state_.width;
    DecompressStrip(record_.strips[strip], {decoded_ + first, count}, state_.width);
}

void DecodeJob::Interpolate(uint32_t strip) const {
    Demosaic(decoded_, ColorsOf(state_, decoded_), strip * stripRows, RowsOfStrip(state_.height, strip));
}

} // namespace rawsdk
