#pragma once

#include "rawsdk/picture/ToneCurve.h"

#include <cstdint>

namespace rawsdk {

/// What a frame state says: how a frame that was read is to be decoded and processed.
struct FrameState {
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t recordSize = 0; ///< of the frame in the reader's buffer
    uint32_t recordCrc = 0;
    ToneParameters tone{};

    /// Bytes of the caller's that a frame state takes.
    static uint32_t Bytes();
    /// Writes it into the caller's memory, at any address.
    void Store(void* state) const;
    /// @throw Failure  `E_INVALIDARG` if what is there was not stored so
    static FrameState Load(const void* state);
};

/// Bytes that decoding writes: the samples, and behind them the interpolated planes.
uint32_t DecodedBytes(const FrameState& state);
/// Bytes that processing writes.
uint32_t ProcessedBytes(const FrameState& state);

} // namespace rawsdk
