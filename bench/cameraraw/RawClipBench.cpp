// Frames of raw clips on the module's road, beside the SDK's three jobs run back to back.

#include "JobRoad.h"
#include "cameraraw/VrelFileFormat.h"
#include "support/RawClips.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>
#include <unistd.h>

namespace {

struct ClipSize {
    const char* name;
    uint32_t width;
    uint32_t height;
};
constexpr ClipSize sizes[] = {{"1080", 1920, 1080}, {"2160", 3840, 2160}};
constexpr uint32_t frames = 4;

/// A clip that is on the disk until the program ends.
class BenchClip {
public:
    explicit BenchClip(const ClipSize& size)
        : path_((std::filesystem::temp_directory_path() /
                 ("raw_bench_" + std::to_string(getpid()) + "_" + size.name + ".vrel"))
                    .string()) {
        WriteRawClip(path_, {.picture = {size.width, size.height}, .frames = frames});
    }
    ~BenchClip() { std::filesystem::remove(path_); }
    BenchClip(const BenchClip&) = delete;
    BenchClip& operator=(const BenchClip&) = delete;

    const std::string& Path() const { return path_; }

private:
    std::string path_;
};

const std::string& PathOf(const ClipSize& size) {
    static const BenchClip small(sizes[0]);
    static const BenchClip large(sizes[1]);
    return (size.width == sizes[0].width ? small : large).Path();
}

/// Frame after frame, from the start again at the end.
template <typename Decode>
void Play(benchmark::State& state, const Decode& decode) {
    uint32_t frame = 0;
    for (auto _ : state) {
        if (!decode(frame)) state.SkipWithError("a frame fails");
        frame = (frame + 1) % frames;
    }
}

void Jobs(benchmark::State& state, const ClipSize& size) {
    JobRoad road(PathOf(size));
    Play(state, [&](uint32_t frame) { return road.Decode(frame); });
}

/// As far as the module's own work goes: up to the planes.
void Decode(benchmark::State& state, const ClipSize& size) {
    VrelDecoderContext context;
    if (!context.OpenClip(PathOf(size).c_str())) state.SkipWithError("the clip doesn't open");
    Play(state, [&](uint32_t frame) {
        CxAlignedBuffer planes;
        return context.DecodeFrame(frame, planes);
    });
}

/// Up to the image, metadata included.
void Load(benchmark::State& state, const ClipSize& size) {
    VrelFileFormat format(nullptr, ScriptVal(), TagList());
    TagList tags;
    if (!format.LoadHeaderTagList(PathOf(size).c_str(), tags)) state.SkipWithError("the clip doesn't open");
    Image* image = Image::Allocate(format.width, format.height, ImageData_RGBA16);
    Play(state, [&](uint32_t frame) { return format.LoadFrameTagList(frame, image, tags); });
    Image::Free(image);
}

using Road = void(benchmark::State& state, const ClipSize& size);

void Register(const std::string& name, const ClipSize& size, Road* road) {
    benchmark::RegisterBenchmark(name.c_str(), road, size)->UseRealTime()->MinTime(1.0);
}

bool RegisterAll() {
    for (const ClipSize& size : sizes) {
        const std::string decode = std::string("raw/decode_") + size.name;
        Register(decode + "/ours", size, Decode);
        Register(decode + "/jobs", size, Jobs);
        const std::string load = std::string("raw/load_") + size.name;
        Register(load + "/ours", size, Load);
        Register(load + "/jobs", size, Jobs);
    }
    return true;
}

const bool registered = RegisterAll();

} // namespace
