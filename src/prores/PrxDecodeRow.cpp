#include "prores/PrxDecodeRow.h"

#include "prores/PrxDecodeSlice.h"

#include <hwy/cache_control.h>

#include <algorithm>
#include <array>
#include <bitset>
#include <cstring>

namespace {

constexpr uint32_t mostMacroblocks = 4096; // of a row of 65535 pixels
constexpr uint32_t mostSliceMacroblocks = 8;
constexpr size_t rowsPerMb = 16;
using MacroblockSet = std::bitset<mostMacroblocks>;

/// Where the slices of a row write.
struct RowSpace {
    uint8_t* dst;
    ptrdiff_t dstStride;
    uint8_t* alpha; ///< null: alpha isn't decoded
    ptrdiff_t alphaStride;
};

/// Bytes between the rows of a buffer that takes `rowBytes`: an odd number of cache lines, so that the rows
/// of a macroblock don't compete for the same few lines of the cache.
size_t BufferStride(size_t rowBytes) { return (rowBytes + 63) / 64 * 64 | 64; }

/// Finds the memory for a row. Returns false if there is none.
bool PrepareSpace(const PrxRowJob& job, PrxWorkerContext* context, RowSpace* space) {
    const PrxPictureContext& picture = *job.picture;
    const size_t mbWidth = picture.layout.mbWidth;
    const bool direct = picture.converter.direct;
    *space = {job.outRow, picture.rowBytes, nullptr, 0};
    if (!direct) {
        const size_t stride = BufferStride(mbWidth * picture.converter.mbBytes);
        space->dst = context->rowBuffer.Reserve(stride * rowsPerMb);
        space->dstStride = static_cast<ptrdiff_t>(stride);
        if (space->dst == nullptr) return false;
    }
    if (picture.alphaDecoder != nullptr) {
        // On a direct route the writers have done with a slice's alpha when the next slice's is decoded.
        const size_t mbAlphaBytes = picture.MbAlphaBytes();
        const size_t stride =
            direct ? mostSliceMacroblocks * mbAlphaBytes : BufferStride(mbWidth * mbAlphaBytes);
        space->alpha = context->alphaBuffer.Reserve(stride * rowsPerMb);
        space->alphaStride = static_cast<ptrdiff_t>(stride);
        if (space->alpha == nullptr) return false;
    }
    return true;
}

/// Makes the columns of a refused slice in the row's buffers black and clear: pixels of good slices may be
/// packed with those, and the pass over a reduced row, whose alpha is of full size, reads alpha of other
/// columns.
void ClearColumns(const PrxSliceJob& slice) {
    static constexpr uint8_t blackPair[] = {0x00, 0x80, 0x00, 0x10, 0x00, 0x80, 0x00, 0x10};
    const PrxPictureContext& picture = *slice.picture;
    const size_t bytes = size_t{slice.mbCount} * picture.converter.mbBytes;
    for (int32_t row = 0; row < slice.rows; ++row) {
        uint8_t* dst = slice.dst + row * slice.dstStride;
        for (size_t i = 0; i < bytes; i += sizeof(blackPair)) {
            std::memcpy(dst + i, blackPair, sizeof(blackPair));
        }
        if (slice.alpha == nullptr) continue;
        std::memset(slice.alpha + row * slice.alphaStride, 0, size_t{slice.mbCount} * picture.MbAlphaBytes());
    }
}

/// Walks along the slices of a row.
class SliceWalk {
public:
    SliceWalk(const PrxRowJob& job, const RowSpace& space)
        : layout_(job.picture->layout), table_(PrxAdvance(layout_.sliceTable, job.tableOffset)),
          bytesLeft_(job.dataSize), direct_(job.picture->converter.direct) {
        slice_.picture = job.picture;
        slice_.data = PrxAdvance(layout_.sliceTable, job.dataOffset);
        slice_.rows = job.rows;
        slice_.dst = space.dst;
        slice_.dstStride = space.dstStride;
        slice_.alpha = space.alpha;
        slice_.alphaStride = space.alphaStride;
        Measure();
    }

    bool AtEnd() const { return firstMb_ == layout_.mbWidth; }
    const PrxSliceJob& Slice() const { return slice_; }

    void Next() {
        slice_.data = PrxAdvance(slice_.data, slice_.size);
        bytesLeft_ -= slice_.size;
        slice_.dst += ptrdiff_t{slice_.mbCount} * slice_.picture->converter.mbBytes;
        if (slice_.alpha != nullptr && !direct_) {
            slice_.alpha += ptrdiff_t{slice_.mbCount} * slice_.picture->MbAlphaBytes();
        }
        table_ = PrxAdvance(table_, 2);
        firstMb_ += slice_.mbCount;
        if (!AtEnd()) Measure();
    }

private:
    /// Takes the measures of the slice at the cursors. Its size is cut to what the row has left.
    void Measure() {
        slice_.mbCount = PrxNextSliceWidth(layout_.sliceMbWidth, layout_.mbWidth - firstMb_);
        slice_.size = static_cast<uint32_t>(std::min<uint64_t>(PrxRead16At(table_, 0), bytesLeft_));
        if (direct_) slice_.alphaStride = ptrdiff_t{slice_.mbCount} * slice_.picture->MbAlphaBytes();
    }

    const PrxPictureLayout& layout_;
    PrxBufferPiece table_;
    PrxSliceJob slice_;
    uint64_t bytesLeft_;
    uint32_t firstMb_ = 0;
    bool direct_;
};

/// Takes note of what became of a slice whose first macroblock is `firstMb`.
void NoteResult(const PrxSliceJob& slice, PrxSliceResult result, uint32_t firstMb, PrxRowJob* job,
                MacroblockSet* decoded) {
    if (result != PrxSliceResult::opaque) job->allOk = false;
    if (result == PrxSliceResult::refused) {
        if (!job->picture->converter.direct) ClearColumns(slice);
        return;
    }
    for (uint32_t i = 0; i < slice.mbCount; ++i)
        decoded->set(firstMb + i);
}

/// Decodes the slices of a row. Returns the macroblocks that were decoded.
MacroblockSet DecodeSlices(PrxRowJob* job, const RowSpace& space, PrxWorkerContext* context) {
    MacroblockSet decoded;
    job->allOk = true;
    uint32_t firstMb = 0;
    for (SliceWalk walk(*job, space); !walk.AtEnd();) {
        std::array<PrxSliceJob, prxSlicesAtOnce> slices;
        std::array<PrxSliceResult, prxSlicesAtOnce> results;
        size_t count = 0;
        for (; count < slices.size() && !walk.AtEnd(); walk.Next())
            slices[count++] = walk.Slice();
        PrxDecodeSlices({slices.data(), count}, context, results.data());
        for (size_t i = 0; i < count; firstMb += slices[i++].mbCount)
            NoteResult(slices[i], results[i], firstMb, job, &decoded);
    }
    return decoded;
}

/// Ends a row on each of its stretches of decoded macroblocks.
void FinishStretches(const PrxRowJob& job, const RowSpace& space, const MacroblockSet& decoded) {
    const PrxPictureContext& picture = *job.picture;
    const bool direct = picture.converter.direct;
    const auto mbWidth = static_cast<int32_t>(picture.layout.mbWidth);
    const int32_t mbPixels = 16 >> picture.HShift();
    PrxRowPassJob pass{direct ? nullptr : space.dst,
                       direct ? 0 : space.dstStride,
                       direct ? nullptr : space.alpha,
                       direct ? 0 : space.alphaStride,
                       job.outRow,
                       picture.rowBytes,
                       picture.target.rowBytes,
                       picture.width >> picture.HShift(),
                       0,
                       0,
                       job.rows};
    for (int32_t first = 0, end = 0; first < mbWidth; first = end + 1) {
        for (end = first; end < mbWidth && decoded[static_cast<size_t>(end)];)
            ++end;
        pass.firstPixel = first * mbPixels;
        pass.endPixel = std::min(end * mbPixels, pass.width);
        if (pass.firstPixel < pass.endPixel) picture.converter.rowPass(pass, picture.writerSetup);
    }
}

void ResampleRows(const PrxRowJob& job) {
    const PrxPictureContext& picture = *job.picture;
    picture.target.widthResampler({job.outRow, picture.width >> picture.HShift(), picture.rowBytes,
                                   job.outRow, picture.target.width, picture.rowBytes, job.rows});
}

/// Writes what is decoded of a row.
void WriteRow(PrxRowJob* job, PrxWorkerContext* context) {
    RowSpace space;
    if (!PrepareSpace(*job, context, &space)) {
        job->outOfMemory = true;
        return;
    }
    context->sliceState.cachedQuantiser = 0; // the tables may be those of another picture's matrices
    const MacroblockSet decoded = DecodeSlices(job, space, context);
    if (job->picture->converter.rowPass != nullptr) FinishStretches(*job, space, decoded);
    // Stores past the caches are to be seen by whoever is told that the row is done.
    if (job->picture->writerSetup.streams) hwy::FlushStream();
}

} // namespace

void PrxDecodeRow(PrxRowJob* job, PrxWorkerContext* context) {
    if (job->rows == 0) return;
    if (job->dataSize != 0) WriteRow(job, context); // else there are none but empty slices
    if (job->picture->target.widthResampler != nullptr && !job->outOfMemory) ResampleRows(*job);
}
