// Each RGB packing between a blob and an image of 1920x1080, on one thread, beside a memcpy of the blob's
// bytes in the same run.

#include "framework/CxAVTypes.h"
#include "host/Image.h"
#include "pixel/PixelConvert.h"

#include <benchmark/benchmark.h>
#include <tbb/global_control.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr int32_t width = 1920;
constexpr int32_t height = 1080;

struct Format {
    const char* name;
    uint32_t fourCC;
    int32_t bytesPerPixel;
};

constexpr Format formats[] = {
    {"b64a", FourCC("b64a"), 8},
    {"l64r", FourCC("l64r"), 8},
    {"a48r", FourCC("a48r"), 8},
    {"b48r", FourCC("b48r"), 6},
    {"l48r", FourCC("l48r"), 6},
    {"r214", FourCC("r214"), 6},
    {"r210", FourCC("r210"), 4},
    {"24", 24, 3},
    {"32", 32, 4},
    {"BGRA", FourCC("BGRA"), 4},
    {"RGBA", FourCC("RGBA"), 4},
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

/// An image, and a blob of the same pixels.
class Pixels {
public:
    Pixels(const Format& format, ImageDataKind kind)
        : format_(format), image_(Image::Allocate(width, height, kind)), blob_(Size()) {
        for (size_t i = 0; i < blob_.size(); ++i)
            blob_[i] = static_cast<uint8_t>(i * 2654435761u >> 13);
        ToImage();
    }
    ~Pixels() { Image::Free(image_); }

    bool ToImage() {
        return PixelConvert::BlobToImage(blob_.data(), static_cast<uint32_t>(RowBytes()), format_.fourCC,
                                         image_);
    }
    bool ToBlob() {
        uint8_t* blob = blob_.data();
        return PixelConvert::ImageToBlob(image_, static_cast<int32_t>(format_.fourCC), RowBytes(), blob,
                                         false);
    }
    size_t Size() const { return size_t{height} * static_cast<size_t>(RowBytes()); }

private:
    int32_t RowBytes() const { return width * format_.bytesPerPixel; }

    Format format_;
    Image* image_;
    std::vector<uint8_t> blob_;
};

void CountBytes(benchmark::State& state, size_t bytes) {
    state.SetBytesProcessed(static_cast<int64_t>(bytes) * static_cast<int64_t>(state.iterations()));
}

void Convert(benchmark::State& state, const Format& format, ImageDataKind kind,
             bool (Pixels::*conversion)()) {
    const tbb::global_control oneThread(tbb::global_control::max_allowed_parallelism, 1);
    Pixels pixels(format, kind);
    for (auto _ : state) {
        if (!(pixels.*conversion)()) state.SkipWithError("the conversion failed");
        benchmark::ClobberMemory();
    }
    CountBytes(state, pixels.Size());
}

void Copy(benchmark::State& state, const Format& format) {
    std::vector<uint8_t> from(size_t{width} * height * static_cast<size_t>(format.bytesPerPixel), 1);
    std::vector<uint8_t> to(from.size());
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), from.size());
        benchmark::ClobberMemory();
    }
    CountBytes(state, from.size());
}

bool RegisterAll() {
    for (const Format& format : formats) {
        for (const Depth& depth : depths) {
            const std::string packing = format.name;
            const std::string image = depth.name;
            const auto add = [&](const std::string& what, bool (Pixels::*conversion)()) {
                benchmark::RegisterBenchmark(("pixel/" + what + "/ours").c_str(), Convert, format, depth.kind,
                                             conversion);
                benchmark::RegisterBenchmark(("pixel/" + what + "/memcpy").c_str(), Copy, format);
            };
            add(packing + "_to_" + image, &Pixels::ToImage);
            add(image + "_to_" + packing, &Pixels::ToBlob);
        }
    }
    return true;
}

const bool registered = RegisterAll();

} // namespace
