#include "rawsdk/FrameState.h"

#include "rawsdk/Calls.h"
#include "rawsdk/clip/ClipFormat.h"
#include "rawsdk/clip/FrameRecord.h"
#include "rawsdk/picture/Samples.h"

#include <cstring>
#include <type_traits>

namespace rawsdk {

namespace {

constexpr uint64_t mark = 0x45544154534d5246;

/// A state as it stands in the caller's memory.
struct Stored {
    uint64_t mark;
    FrameState state;
    uint32_t crc;
};
static_assert(std::is_trivially_copyable_v<Stored> && sizeof(Stored) == 72, "no padding");

uint32_t CrcOf(const FrameState& state) {
    return Crc32({reinterpret_cast<const uint8_t*>(&state), sizeof(state)});
}

uint64_t SampleBytes(const FrameState& state) {
    return uint64_t{state.width} * state.height * sizeof(uint16_t);
}

} // namespace

static_assert(mostPixels * 4 * sizeof(uint16_t) <= INT32_MAX, "sizes of buffers are told in 32 bits");

uint32_t FrameState::Bytes() { return sizeof(Stored); }

void FrameState::Store(void* state) const {
    const Stored stored = {mark, *this, CrcOf(*this)};
    std::memcpy(state, &stored, sizeof(stored));
}

FrameState FrameState::Load(const void* state) {
    RequireArgument(state != nullptr);
    Stored stored;
    std::memcpy(&stored, state, sizeof(stored));
    RequireArgument(stored.mark == mark && stored.crc == CrcOf(stored.state));
    RequireArgument(IsPictureSize(stored.state.width, stored.state.height) &&
                    stored.state.recordSize >= FrameRecord::leastBytes);
    return stored.state;
}

uint32_t DecodedBytes(const FrameState& state) {
    return static_cast<uint32_t>(SampleBytes(state) + PlanarBytes(state.width, state.height));
}

uint32_t ProcessedBytes(const FrameState& state) {
    return static_cast<uint32_t>(PlanarBytes(state.width, state.height));
}

} // namespace rawsdk
