#pragma once

#include "prores/PrxThreadPool.h"
#include "prores/encoder/PrxEncodePicture.h"
#include "prores/encoder/PrxEncodeRow.h"
#include "prores/encoder/PrxPictureSlices.h"
#include "prores/encoder/PrxRateTarget.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// What came of a picture.
struct PrxCodedPicture {
    size_t size;    ///< bytes
    bool allOpaque; ///< every sample of alpha is at full value, or none was coded
};

/// Encodes pictures within a target of bytes: a picture is transformed and measured once, and the scale that
/// brings it down to its target is predicted from what was measured. Only if its slices then still take too
/// much does each get a budget, at which it is cut. Used by one thread at a time.
///
/// From picture to picture it keeps the memory of the largest yet: two bytes for each coefficient, alpha, and
/// the slices with their bytes.
class PrxPictureEncoder {
public:
    /// Encodes `source` (SMPTE RDD 36, 5.2) to the start of `output`, and returns when all is written. The
    /// jobs are run by `pool`, whose jobs are `PrxEncodeRowJob`. There must be a converter from the source's
    /// format to `target.chromaFormat`, and `output` must take `target.targetHigh` bytes, and with alpha 3
    /// more for each pixel. Throws `std::bad_alloc` if there is no memory for more than before; what `output`
    /// holds is then undefined, and the encoder stays usable.
    PrxCodedPicture Encode(PrxThreadPool& pool, const PrxPictureSource& source, const PrxRateTarget& target,
                           const PrxAlphaCoder& alphaCoder, std::span<uint8_t> output);

private:
    void Prepare(const PrxPictureSource& source, const PrxRateTarget& target,
                 const PrxAlphaCoder& alphaCoder);
    void MakeJobs(uint32_t mbHeight);
    void Run(PrxThreadPool& pool, PrxCodingPass pass);
    void Code(PrxThreadPool& pool, const PrxRateTarget& target);

    PrxEncodePicture picture_ = {}; ///< the one under way
    size_t mbCount_ = 0;            ///< its macroblocks
    PrxPictureSlices slices_;
    std::vector<PrxEncodeRowJob> jobs_;
};
