#include "ffmpeg/FrameRows.h"

#include "ffmpeg/FFmpegBinding.h"
#include "pixel/PixelCursor.h"
#include "pixel/RowConverters.h"
#include "pixel/RowConvertersVector.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace CxFFMPEG {

namespace {

static_assert(std::endian::native == std::endian::little, "words are taken as they stand in memory");

/// Words of a pixel. The step from one pixel to the next is the format's own: the quotient of line size and
/// width is another one in narrow frames, whose lines are filled up.
int64_t ChannelsOf(const AVFrame& frame) { return frame.format == AV_PIX_FMT_RGBA64LE ? 4 : 3; }

/// The frame's row that belongs to row `row` of an image.
const uint8_t* RowOf(const AVFrame& frame, int row) {
    return frame.data[0] + int64_t{frame.height - 1 - row} * frame.linesize[0];
}

int32_t CommonWidth(const AVFrame& frame, const Image& image) { return std::min(image.Width, frame.width); }

// The functions below are for `Image::DoMultiProcess`: (image, `AVFrame*`, image row).

/// Through the image's accessor, whatever it does.
void SetRow(Image* image, void* context, int row) {
    const AVFrame& frame = *static_cast<const AVFrame*>(context);
    const uint8_t* in = RowOf(frame, row);
    const int64_t pixelBytes = ChannelsOf(frame) * int64_t{sizeof(uint16_t)};
    PixelCursor cursor(image, row);
    for (int32_t x = 0, width = CommonWidth(frame, *image); x < width; ++x, cursor.Step(), in += pixelBytes) {
        constexpr uint16_t opaque = 65535;
        std::array<uint16_t, 4> words = {0, 0, 0, opaque};
        std::memcpy(words.data(), in, static_cast<size_t>(pixelBytes));
        cursor.Set(Pixel{words[0], words[1], words[2], words[3]});
    }
}

/// The bytes as they are.
void CopyRow(Image* image, void* context, int row) {
    const AVFrame& frame = *static_cast<const AVFrame*>(context);
    const int64_t bytes = int64_t{CommonWidth(frame, *image)} * image->PixelStride;
    std::memcpy(image->RowAddress(row), RowOf(frame, row), static_cast<size_t>(bytes));
}

/// Whether the image's pixels stand in memory as those of `AV_PIX_FMT_RGBA64LE` do.
bool HasWordPixels(const Image& image) {
    return image.HasPlainPixels() && image.DataFormat->Kind == ImageData_RGBA16;
}

bool RunRows(Image& image, Image::RowFunction function, const AVFrame& frame, int32_t rows) {
    return image.DoMultiProcess(function, const_cast<AVFrame*>(&frame), rows, nullptr, false);
}

/// With the row converter of pixels without alpha, which takes images of the frame's size.
bool RunConverter(Image& image, Image::RowFunction converter, const AVFrame& frame) {
    RowContext context = {rowMarkerWithAlpha, frame.linesize[0], frame.data[0]};
    return image.DoMultiProcess(converter, &context, image.Height, nullptr, false);
}

} // namespace

AVPixelFormat WordFormatOf(const AVFrame& frame) {
    const AVPixFmtDescriptor* const format =
        FFmpeg().av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    if (format == nullptr) return AV_PIX_FMT_NONE;
    // The bit is looked for in the frame's flags, where it says something else, and not in the descriptor's,
    // where it is that of alpha. Kept.
    const bool hasFlag = (frame.flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
    // Formats of an even number of components are those with alpha.
    return format->nb_components % 2 == 0 || hasFlag ? AV_PIX_FMT_RGBA64LE : AV_PIX_FMT_RGB48LE;
}

bool WriteFrameRows(const AVFrame& frame, Image& image) {
    const int32_t rows = std::min(image.Height, frame.height);
    if (rows <= 0 || CommonWidth(frame, image) <= 0) return true;
    if (frame.format == AV_PIX_FMT_RGBA64LE)
        return RunRows(image, HasWordPixels(image) ? CopyRow : SetRow, frame, rows);
    const bool isAsLarge = image.Width == frame.width && image.Height == frame.height;
    const Image::RowFunction converter = isAsLarge ? VectorRowReader(RowPacking::L48r, image) : nullptr;
    return converter != nullptr ? RunConverter(image, converter, frame) : RunRows(image, SetRow, frame, rows);
}

} // namespace CxFFMPEG
