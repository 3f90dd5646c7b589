#pragma once

#include "ffmpeg/FrameConverter.h"
#include "pixel/PixelTestSupport.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <vector>

/// What FFmpeg's frames become, which the tests make by hand and by libavutil itself.

struct TestFrameDeleter {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
using TestFrame = std::unique_ptr<AVFrame, TestFrameDeleter>;

inline constexpr AVPixelFormat directFormats[] = {
    AV_PIX_FMT_YUV420P,  AV_PIX_FMT_YUYV422, AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUVJ420P,
    AV_PIX_FMT_YUVJ422P, AV_PIX_FMT_UYVY422, AV_PIX_FMT_NV12,    AV_PIX_FMT_YUV422P10LE,
};

/// A frame without a picture.
inline TestFrame MakeEmptyFrame(AVPixelFormat format, int width, int height) {
    TestFrame frame(av_frame_alloc());
    frame->format = format;
    frame->width = width;
    frame->height = height;
    return frame;
}

/// A frame with a picture of zeros, its lines as FFmpeg's decoders have them: those of all planes are filled
/// up to the same number of pixels.
inline TestFrame MakeTestFrame(AVPixelFormat format, int width, int height) {
    TestFrame frame = MakeEmptyFrame(format, width, height);
    const int lineWidth = (width + 63) / 64 * 64;
    const int size = av_image_get_buffer_size(format, lineWidth, height, 1);
    frame->buf[0] = av_buffer_allocz(static_cast<size_t>(size + AV_INPUT_BUFFER_PADDING_SIZE));
    if (frame->buf[0] == nullptr || av_image_fill_arrays(frame->data, frame->linesize, frame->buf[0]->data,
                                                         format, lineWidth, height, 1) < 0)
        std::abort();
    return frame;
}

/// Columns or rows of a component of a frame `size` pixels wide or high, of which 2^`shift` share a sample.
inline int SamplesOf(int size, int shift) { return (size + (1 << shift) - 1) >> shift; }

/// A code of component `component` for the pixel at column `x` and row `y`.
using CodeAt = std::function<uint16_t(int component, int x, int y)>;

/// Gives each sample of a frame of zeros the code of the first pixel that it belongs to.
inline void FillFrame(AVFrame& frame, const CodeAt& codeAt) {
    const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    for (int c = 0; c < format.nb_components; ++c) {
        const bool isChroma = (c == 1 || c == 2) && (format.flags & AV_PIX_FMT_FLAG_RGB) == 0;
        const int across = isChroma ? format.log2_chroma_w : 0;
        const int down = isChroma ? format.log2_chroma_h : 0;
        std::vector<uint16_t> line(static_cast<size_t>(SamplesOf(frame.width, across)));
        for (int y = 0; y < SamplesOf(frame.height, down); ++y) {
            for (size_t x = 0; x < line.size(); ++x)
                line[x] = codeAt(c, static_cast<int>(x) << across, y << down);
            av_write_image_line(line.data(), frame.data, frame.linesize, &format, 0, y, c,
                                static_cast<int>(line.size()));
        }
    }
}

/// Every byte of an image's pixels set to this.
inline void FillImage(Image& image, uint8_t value) {
    const size_t rowBytes = static_cast<size_t>(image.Width) * static_cast<size_t>(image.PixelStride);
    for (int32_t row = 0; row < image.Height; ++row)
        std::memset(image.RowTable[row], value, rowBytes);
}

/// The pixel at column `x` of row `y` from the top.
inline Pixel PixelAt(Image& image, int32_t x, int32_t y) {
    return GetPixelAt(image, x, image.Height - 1 - y);
}

/// Makes an image's accessors others than the host's with the same effect, so that nothing is known of its
/// pixels but what they do.
inline void HideAccessors(Image& image) {
    static Image::GetPixelFunction hostGetPixel;
    hostGetPixel = image.GetPixel;
    image.GetPixel = [](Pixel& pixel, const uint8_t* data, const uint8_t* aux, Image* self) {
        hostGetPixel(pixel, data, aux, self);
    };
}
