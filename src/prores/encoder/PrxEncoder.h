#pragma once

#include "prores/Prx.h"
#include "prores/PrxThreadPool.h"
#include "prores/PrxThreads.h"
#include "prores/encoder/PrxPictureEncoder.h"

#include <cstddef>
#include <cstdint>
#include <span>

/// What `PrxSetEncoderOption` sets: codes that go into the frame header (SMPTE RDD 36, 6.1.1). They hold
/// until they are changed.
struct PrxEncoderOptions {
    int32_t aspectRatioCode = 0;  ///< 0 to 3; 0: unknown
    int32_t frameRateCode = 0;    ///< 0 to 8; 0: unknown
    int32_t colorPrimaries = 2;   ///< 0 or more, of which the stream has the low 8 bits; 2: not told
    int32_t transferFunction = 2; ///< likewise
    int32_t colorMatrix = 2;      ///< kept if it is 1, 6 or 9; else 6 stands for it below 720 lines, then 1
};

/// A frame to encode, and where to. Nothing is owned.
struct PrxEncodeRequest {
    PrxEncodeSettings settings;
    PrxPixelBuffer pixels;
    std::span<uint8_t> output;
};

/// What came of a frame.
struct PrxEncodedFrame {
    int32_t size;   ///< bytes
    bool allOpaque; ///< every sample of alpha is at full value, or none was coded
};

/// Encodes frames on worker threads of its own, one frame at a time. Used by one thread at a time.
class PrxEncoder {
public:
    /// Starts `workerCount` workers, at most `prxMaxWorkers`; 0 or less means one for each usable processor.
    /// Each calls `threadStartHook`, if it isn't null, before its first job. Throws `std::bad_alloc` if they
    /// can't start. Each worker is made by `startThread`.
    PrxEncoder(int32_t workerCount, PrxThreadStartHook threadStartHook,
               PrxThreadStarter startThread = PrxStartThread);

    PrxEncoder(const PrxEncoder&) = delete;
    PrxEncoder& operator=(const PrxEncoder&) = delete;

    /// Encodes a frame and returns 0, or a failure as `PrxEncodeFrame` does; then nothing has been written,
    /// and `*frame` is as it was. Throws `std::bad_alloc` if there is no memory for a larger frame than
    /// before; what the output holds is then undefined. The encoder stays usable in any case.
    int32_t EncodeFrame(const PrxEncodeRequest& request, PrxEncodedFrame* frame);

    PrxEncoderOptions options; ///< for the frames to come

private:
    PrxEncodedFrame EncodePictures(const PrxEncodeRequest& request, const PrxRateTarget& frameTarget,
                                   const PrxAlphaCoder& alphaCoder);
    PrxFrameHeader HeaderOf(const PrxEncodeRequest& request, const PrxRateTarget& target,
                            const PrxAlphaCoder& alphaCoder) const;

    PrxPictureEncoder picture_;
    PrxThreadStartHook threadStartHook_; ///< read by each worker as it starts
    PrxThreadPoolPtr pool_;
};
