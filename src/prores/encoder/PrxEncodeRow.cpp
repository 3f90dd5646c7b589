#include "prores/encoder/PrxEncodeRow.h"

#include "prores/PrxFormats.h"
#include "prores/encoder/PrxEncodeSlice.h"

#include <algorithm>

namespace {

/// Bytes of a macroblock's row of pixels.
ptrdiff_t MbBytes(uint32_t pixelFormat) { return ptrdiff_t{16} * PrxGetGroupSize(pixelFormat).bytesPerGroup; }

void CodeAlpha(const PrxEncodeRowJob& job, PrxSlice& slice) {
    const PrxPictureSource& source = job.picture->source;
    slice.alphaSize = 0;
    slice.alphaOpaque = true;
    if (job.picture->alphaCoder.code == nullptr) return;
    const auto width = static_cast<int32_t>(16 * slice.MbCount());
    const int32_t columns = std::min(width, source.width - static_cast<int32_t>(16 * slice.mbX));
    const PrxAlphaArea area{.pixels = job.rows + slice.mbX * MbBytes(source.pixelFormat),
                            .rowBytes = source.rowBytes,
                            .columns = columns,
                            .extraColumns = width - columns,
                            .rows = job.rowCount};
    slice.alphaSize =
        job.picture->alphaCoder.code(area, slice.alphaData, slice.alphaCapacity, &slice.alphaOpaque);
}

/// Fills the slice's coefficients from the prepared rows.
void Transform(const PrxEncodePicture& picture, const PrxStrip& strip, const PrxSlice& slice) {
    const ptrdiff_t mbBytes = MbBytes(strip.pixelFormat);
    for (uint32_t i = 0; i < slice.MbCount(); ++i) {
        const uint32_t mbX = slice.mbX + i;
        const int32_t columns = std::min(16, strip.width - static_cast<int32_t>(16 * mbX));
        int16_t* blocks = slice.coefficients + size_t{64} * picture.blocksPerMb * i;
        picture.convert({strip.rows + mbX * mbBytes, strip.rowBytes, strip.rowCount, columns, blocks},
                        picture.colorMatrix);
        picture.transform(blocks, static_cast<int32_t>(picture.blocksPerMb));
    }
}

/// Makes coefficients and alpha of the row's slices, and counts what they take. Alpha comes first: it is that
/// of the caller's own pixels.
bool MeasureRow(const PrxEncodeRowJob& job, PrxEncodeContext& context) {
    const PrxEncodePicture& picture = *job.picture;
    const PrxPictureSource& source = picture.source;
    for (PrxSlice& slice : job.slices)
        CodeAlpha(job, slice);
    if (picture.preparer.UsesBuffer() && !context.rows.EnsureWidth(source.width)) return false;
    const PrxStrip given{job.rows, source.rowBytes, source.pixelFormat, source.width, job.rowCount};
    const PrxStrip strip = PrxPrepareRows(picture.preparer, given, picture.colorMatrix, context.rows);
    for (PrxSlice& slice : job.slices) {
        Transform(picture, strip, slice);
        if (!PrxEncodeSlice(picture, slice, context)) return false;
    }
    return true;
}

bool WriteRow(const PrxEncodeRowJob& job, PrxEncodeContext& context) {
    for (PrxSlice& slice : job.slices) {
        if (!PrxEncodeSlice(*job.picture, slice, context)) return false;
    }
    return true;
}

} // namespace

void PrxEncodeRow(PrxEncodeRowJob* job, PrxEncodeContext* context) {
    const bool measures = job->picture->pass == PrxCodingPass::Measure;
    job->outOfMemory = !(measures ? MeasureRow(*job, *context) : WriteRow(*job, *context));
}
