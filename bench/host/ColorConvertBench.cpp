// The host's colour conversion beside libswscale on the same pictures, 1920x1080, one thread each, and the
// gain of a second thread.

#include "host/ColorConvert.h"
#include "host/Image.h"

#include <benchmark/benchmark.h>
#include <tbb/global_control.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

extern "C" {
#include <libavutil/pixfmt.h>
#include <libswscale/swscale.h>
}

namespace {

constexpr int32_t width = 1920;
constexpr int32_t height = 1080;

/// One layout of ours, and what libswscale has for it.
struct Format {
    const char* name;
    ColorLayout layout;
    int32_t rowBytes;
    AVPixelFormat pixelFormat;
    std::vector<int> planeRowBytes; ///< of libswscale's picture
};

const std::vector<Format> formats = {
    // libswscale has no packed ten-bit 4:2:2: its planes hold the same samples.
    {"v210", ColorLayout_v210, width / 48 * 128, AV_PIX_FMT_YUV422P10LE, {2 * width, width, width}},
    {"2vuy", ColorLayout_2vuy, 2 * width, AV_PIX_FMT_UYVY422, {2 * width}},
    {"uyvy", ColorLayout_uyvy, 2 * width, AV_PIX_FMT_UYVY422, {2 * width}},
};

struct Depth {
    const char* name;
    ImageDataKind kind;
};
constexpr Depth depths[] = {
    {"image8", ImageData_RGBA8},
    {"image16", ImageData_RGBA16},
    {"half", ImageData_RGBAHalf},
    {"float", ImageData_RGBAFloat},
};

struct ImageDeleter {
    void operator()(Image* image) const { Image::Free(image); }
};

/// A buffer of random samples, in ten bits where they are wider than a byte.
std::vector<uint8_t> Samples(size_t size, bool tenBits) {
    std::vector<uint8_t> samples(size);
    for (size_t i = 0; i < size; ++i) {
        const uint32_t noise = static_cast<uint32_t>(i) * 2654435761u >> 21;
        samples[i] = static_cast<uint8_t>(tenBits && i % 2 == 1 ? noise & 3 : noise);
    }
    return samples;
}

/// An image and a YUV buffer, to be converted into each other.
class Picture {
public:
    Picture(const Format& format, ImageDataKind kind)
        : image_(Image::Allocate(width, height, kind)),
          buffer_(Samples(size_t{height} * static_cast<size_t>(format.rowBytes), false)),
          tags_(Tags(format)) {
        ToImage();
    }

    bool ToImage() { return CxYUV2RGBTagList(image_.get(), tags_); }
    bool ToBuffer() { return CxRGB2YUVTagList(image_.get(), tags_) != nullptr; }

private:
    TagList Tags(const Format& format) {
        const TagItem items[] = {
            {ColorTag_Width, TagItem::FromInt(width)},
            {ColorTag_Height, TagItem::FromInt(height)},
            {ColorTag_Buffer, TagItem::FromPtr(buffer_.data())},
            {ColorTag_Matrix, TagItem::FromInt(1)},
            {ColorTag_Layout, TagItem::FromInt(format.layout)},
            {ColorTag_RowBytes, TagItem::FromInt(format.rowBytes)},
            {0, 0},
        };
        return TagList(items, false);
    }

    std::unique_ptr<Image, ImageDeleter> image_;
    std::vector<uint8_t> buffer_;
    TagList tags_;
};

using Conversion = bool (Picture::*)();

void CountFrames(benchmark::State& state) {
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
}

void Ours(benchmark::State& state, const Format& format, ImageDataKind kind, Conversion conversion,
          size_t threads) {
    const tbb::global_control control(tbb::global_control::max_allowed_parallelism, threads);
    Picture picture(format, kind);
    for (auto _ : state) {
        if (!(picture.*conversion)()) state.SkipWithError("the conversion failed");
        benchmark::ClobberMemory();
    }
    CountFrames(state);
}

/// Planes of a libswscale picture.
struct Planes {
    explicit Planes(const std::vector<int>& rowBytes, bool tenBits) {
        for (size_t i = 0; i < rowBytes.size(); ++i) {
            memory[i] = Samples(static_cast<size_t>(rowBytes[i]) * height, tenBits);
            data[i] = memory[i].data();
            strides[i] = rowBytes[i];
        }
    }
    std::vector<uint8_t> memory[4];
    uint8_t* data[4] = {};
    int strides[4] = {};
};

void Swscale(benchmark::State& state, const Format& format, bool toRgb) {
    const AVPixelFormat rgb = AV_PIX_FMT_RGBA64LE;
    const AVPixelFormat from = toRgb ? format.pixelFormat : rgb;
    const AVPixelFormat to = toRgb ? rgb : format.pixelFormat;
    Planes yuv(format.planeRowBytes, format.pixelFormat == AV_PIX_FMT_YUV422P10LE);
    Planes pixels({8 * width}, false);
    Planes& source = toRgb ? yuv : pixels;
    Planes& target = toRgb ? pixels : yuv;
    SwsContext* const context =
        sws_getContext(width, height, from, width, height, to, SWS_BILINEAR, nullptr, nullptr, nullptr);
    if (context == nullptr) return state.SkipWithError("libswscale has no such conversion");
    for (auto _ : state) {
        if (sws_scale(context, source.data, source.strides, 0, height, target.data, target.strides) != height)
            state.SkipWithError("the conversion failed");
        benchmark::ClobberMemory();
    }
    CountFrames(state);
    sws_freeContext(context);
}

void RegisterPair(const Format& format, const Depth& depth, const std::string& what, bool toRgb) {
    const Conversion conversion = toRgb ? &Picture::ToImage : &Picture::ToBuffer;
    const std::string name = "color/" + what;
    benchmark::RegisterBenchmark((name + "/ours").c_str(), Ours, format, depth.kind, conversion, 1)
        ->UseRealTime();
    if (depth.kind != ImageData_RGBA16) return;
    benchmark::RegisterBenchmark((name + "/swscale").c_str(), Swscale, format, toRgb)->UseRealTime();
    benchmark::RegisterBenchmark((name + "/two_threads").c_str(), Ours, format, depth.kind, conversion, 2)
        ->UseRealTime();
}

bool RegisterAll() {
    for (const Format& format : formats) {
        for (const Depth& depth : depths) {
            RegisterPair(format, depth, std::string(format.name) + "_to_" + depth.name, true);
            RegisterPair(format, depth, std::string(depth.name) + "_to_" + format.name, false);
        }
    }
    return true;
}

const bool registered = RegisterAll();

} // namespace
