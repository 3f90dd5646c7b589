#pragma once

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixfmt.h>
}

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>

namespace dnx {

enum class PlaneColor : uint8_t { YCbCr422, YCbCr444, Rgb };

/// A kind of planes that the codec takes or gives.
struct PlaneFormat {
    AVPixelFormat format;
    int depth; ///< bits of a sample: bytes for 8, otherwise little-endian words
    PlaneColor color;
};

inline constexpr PlaneFormat planeFormats[] = {
    {AV_PIX_FMT_YUV422P, 8, PlaneColor::YCbCr422},      {AV_PIX_FMT_YUV422P10LE, 10, PlaneColor::YCbCr422},
    {AV_PIX_FMT_YUV422P12LE, 12, PlaneColor::YCbCr422}, {AV_PIX_FMT_YUV444P10LE, 10, PlaneColor::YCbCr444},
    {AV_PIX_FMT_YUV444P12LE, 12, PlaneColor::YCbCr444}, {AV_PIX_FMT_GBRP10LE, 10, PlaneColor::Rgb},
    {AV_PIX_FMT_GBRP12LE, 12, PlaneColor::Rgb},
};

/// The format of a frame's planes, or null if it is none of these.
inline const PlaneFormat* FindPlaneFormat(int format) {
    const auto row = std::ranges::find(planeFormats, format, &PlaneFormat::format);
    return row != std::end(planeFormats) ? row : nullptr;
}

/// Rows of a picture from `first` to before `end`.
struct RowBand {
    size_t first;
    size_t end;
};

/// The planes of one frame, by rows. `Sample` is uint8_t for planes of 8 bits and uint16_t for deeper ones.
/// The frame must outlive it.
template <typename Sample>
class Planes {
public:
    explicit Planes(const AVFrame& frame) : frame_(frame) {}

    size_t Width() const { return static_cast<size_t>(frame_.width); }
    Sample* Row(int plane, size_t row) const {
        const ptrdiff_t offset = static_cast<ptrdiff_t>(row) * frame_.linesize[plane];
        return reinterpret_cast<Sample*>(frame_.data[plane] + offset);
    }

private:
    const AVFrame& frame_;
};

} // namespace dnx
