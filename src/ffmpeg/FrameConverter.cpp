#include "ffmpeg/FrameConverter.h"
#include "ffmpeg/EnumNumbers.h"

#include "ffmpeg/FrameColors.h"
#include "ffmpeg/FrameLayouts.h"
#include "ffmpeg/FramePointer.h"
#include "ffmpeg/FrameRows.h"
#include "ffmpeg/PlaneWriter.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace CxFFMPEG {

namespace {

bool IsAsLarge(const AVFrame& frame, const Image& image) {
    return frame.width == image.Width && frame.height == image.Height;
}

// ---------------------------------------------------------------------------------------------------------
// The host's conversion

/// The picture that the host is to convert.
struct HostPicture {
    const uint8_t* const* planes; ///< three, of which those count that the layout has
    int rowBytes;                 ///< of the first plane
    ColorLayout layout;
};

bool ConvertByHost(const HostPicture& picture, int32_t matrix, Image& image) {
    const auto plane = [&](size_t i) { return TagItem::FromPtr(const_cast<uint8_t*>(picture.planes[i])); };
    const TagItem items[] = {
        {ColorTag_Matrix, TagItem::FromInt(matrix)},
        {ColorTag_Layout, TagItem::FromInt(picture.layout)},
        {ColorTag_RowBytes, TagItem::FromInt(picture.rowBytes)},
        {ColorTag_Buffer, plane(0)},
        {ColorTag_Plane2, plane(1)},
        {ColorTag_Plane3, plane(2)},
        {0, 0},
    };
    return CxYUV2RGBTagList(&image, TagList(items, false));
}

/// Rows of words Y C to rows of words C Y: the host has no layout with luma first.
void SwapPairs(const AVFrame& frame, int64_t rowBytes, uint8_t* swapped) {
    for (int64_t y = 0; y < frame.height; ++y) {
        const uint8_t* const in = frame.data[0] + y * frame.linesize[0];
        uint8_t* const out = swapped + y * rowBytes;
        for (int64_t x = 0; x < rowBytes; x += 2) {
            out[x] = in[x + 1];
            out[x + 1] = in[x];
        }
    }
}

bool ConvertSwappedByHost(const AVFrame& frame, ColorLayout layout, Image& image) {
    if (frame.data[0] == nullptr) return false;
    // A row has whole pairs of pixels, unless it ends in the middle of the last one.
    const int64_t wholePairs = (int64_t{frame.width} + 1) / 2 * 4;
    const int64_t rowBytes = std::min<int64_t>(wholePairs, frame.linesize[0]) / 2 * 2;
    const auto swapped =
        std::make_unique_for_overwrite<uint8_t[]>(static_cast<size_t>(rowBytes * frame.height));
    SwapPairs(frame, rowBytes, swapped.get());
    const uint8_t* const planes[] = {swapped.get(), nullptr, nullptr};
    return ConvertByHost({planes, static_cast<int>(rowBytes), layout}, HostMatrixOf(frame), image);
}

bool ConvertByHost(const AVFrame& frame, ColorLayout layout, Image& image) {
    if (frame.format == AV_PIX_FMT_YUYV422) return ConvertSwappedByHost(frame, layout, image);
    return ConvertByHost({frame.data, frame.linesize[0], layout}, HostMatrixOf(frame), image);
}

// ---------------------------------------------------------------------------------------------------------
// libswscale's conversion

/// Whether there are pixels, in a format that FFmpeg knows, and their palette if it has one: libswscale takes
/// these for granted. It looks for the other planes itself.
bool HasPicture(const AVFrame& frame) {
    const AVPixFmtDescriptor* const format =
        FFmpeg().av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    if (format == nullptr || frame.width <= 0 || frame.height <= 0) return false;
    const bool hasPalette = (format->flags & AV_PIX_FMT_FLAG_PAL) != 0;
    return frame.data[0] != nullptr && (!hasPalette || frame.data[1] != nullptr);
}

/// Whether a format is R, G, B of at most 8 bits each.
bool HasRgbOfBytes(AVPixelFormat format) {
    const AVPixFmtDescriptor& descriptor = *FFmpeg().av_pix_fmt_desc_get(format);
    const auto* const end = descriptor.comp + descriptor.nb_components;
    return (descriptor.flags & AV_PIX_FMT_FLAG_RGB) != 0 &&
           std::all_of(descriptor.comp, end, [](const AVComponentDescriptor& c) { return c.depth <= 8; });
}

/// For `Image::DoMultiProcess`: (any image, words and bytes, row from the top).
void WriteByteRow(Image*, void* context, int row) {
    const auto& [words, bytes] = *static_cast<const std::pair<const AVFrame&, AVFrame&>*>(context);
    const auto* const in =
        reinterpret_cast<const uint16_t*>(words.data[0] + int64_t{row} * words.linesize[0]);
    uint8_t* const out = bytes.data[0] + int64_t{row} * bytes.linesize[0];
    // The nearest byte, for all words.
    for (int64_t i = 0, channels = int64_t{3} * words.width; i < channels; ++i)
        out[i] = static_cast<uint8_t>((in[i] * 255U + 32895) >> 16);
}

/// Words to the nearest bytes, on the host's threads.
bool WriteBytes(const AVFrame& words, AVFrame& bytes, Image& image) {
    std::pair<const AVFrame&, AVFrame&> rows(words, bytes);
    return image.DoMultiProcess(WriteByteRow, &rows, words.height, nullptr, false);
}

/// A frame with a picture of its own; null if there is no memory or no picture of this size.
FramePointer MakeFrame(int width, int height, AVPixelFormat format) {
    constexpr int alignment = 32;
    FramePointer frame(FFmpeg().av_frame_alloc());
    if (!frame) return nullptr;
    frame->format = format;
    frame->width = width;
    frame->height = height;
    const int bytes = FFmpeg().av_image_alloc(frame->data, frame->linesize, width, height, format, alignment);
    return bytes > 0 ? std::move(frame) : nullptr;
}

} // namespace

bool FrameConverter::IsDirect(const AVFrame& frame, const Image& image) {
    const FrameLayout* const layout = FindFrameLayout(frame);
    return layout != nullptr && IsAsLarge(frame, image) && layout->HasRowsOf(frame);
}

bool FrameConverter::ToImage(const AVFrame& frame, bool isFullRange, Image& image) {
    if (IsDirect(frame, image)) {
        const FrameLayout& layout = *FindFrameLayout(frame);
        return ConvertByHost(frame, isFullRange ? layout.full : layout.video, image);
    }

    const AVPixelFormat words = WordFormatOf(frame);
    if (words == AV_PIX_FMT_NONE || !HasPicture(frame)) return false;
    const FramePointer converted = MakeFrame(frame.width, frame.height, words);
    if (!converted || !scaler.Convert(frame, IsFullRange(frame, isFullRange), *converted)) return false;
    return WriteFrameRows(*converted, image);
}

AVFrame* FrameConverter::ForEncoder(const AVFrame& words, const AVCodecContext& encoder, Image& image) {
    FramePointer picture = MakeFrame(words.width, words.height, encoder.pix_fmt);
    if (!picture) return nullptr;
    picture->color_range = encoder.color_range;
    SetNumber(picture->color_primaries, NumberIn(encoder.color_primaries));
    SetNumber(picture->color_trc, NumberIn(encoder.color_trc));
    SetNumber(picture->colorspace, NumberIn(encoder.colorspace));
    return WriteWords(words, *picture, image) ? picture.release() : nullptr;
}

bool FrameConverter::WriteWords(const AVFrame& words, AVFrame& picture, Image& image) {
    const auto format = static_cast<AVPixelFormat>(picture.format);
    if (HasWritablePlanes(format)) return WritePlanes(words, picture, image);
    if (!HasRgbOfBytes(format)) return scaler.Convert(words, true, picture);
    // From bytes libswscale takes half the time.
    const FramePointer bytes = MakeFrame(words.width, words.height, AV_PIX_FMT_RGB24);
    return bytes && WriteBytes(words, *bytes, image) && scaler.Convert(*bytes, true, picture);
}

void ReleaseFrame(AVFrame*& frame) {
    if (frame == nullptr) return;
    if (frame->buf[0] == nullptr) FFmpeg().av_freep(&frame->data[0]);
    FFmpeg().av_frame_free(&frame);
}

} // namespace CxFFMPEG
