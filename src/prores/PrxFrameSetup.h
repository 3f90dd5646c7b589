#pragma once

#include "prores/PrxBufferPiece.h"
#include "prores/PrxPicture.h"

#include <array>
#include <cstdint>

/// A frame that passed all checks.
struct PrxFrameSetup {
    std::array<PrxPictureContext, 2> pictures; ///< in the order in which they are coded
    int32_t pictureCount;                      ///< pictures to decode: 1, or 2 for both fields
    bool streamHasAlpha;
    bool interlaced;
};

/// Reads the headers of the frame in `input` and prepares its decoding into `target` in `mode`. Returns the
/// frame's size, or the failure that `PrxDecoder::decodeFrame` is to return; `setup` is then in no defined
/// state. Writes nothing to the target.
int32_t PrxSetUpFrame(const PrxBufferPiece& input, const PrxOutputTarget& target, int32_t mode,
                      bool ignoreAlpha, PrxFrameSetup* setup);
