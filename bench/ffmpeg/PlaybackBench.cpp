// Playback, frame after frame into an image, beside FFmpeg's decoder and libswscale with as many threads.

#include "HostMovie.h"
#include "MovieMaterial.h"
#include "PeerMovie.h"
#include "SeekCount.h"

#include <benchmark/benchmark.h>

namespace {

struct Depth {
    const char* name;
    ImageDataKind kind;
    AVPixelFormat peer;
};
constexpr Depth depths[] = {{"image8", ImageData_RGBA8, AV_PIX_FMT_RGBA},
                            {"image16", ImageData_RGBA16, AV_PIX_FMT_RGBA64LE}};

void Ours(benchmark::State& state, const BenchMovie& movie, const Depth& depth) {
    HostMovie host(PathOf(movie), depth.kind);
    const int64_t& seeks = CountSeeks();
    int64_t passes = 0;
    uint32_t frame = 0;
    for (auto _ : state) {
        passes += frame == 0;
        if (!host.Load(frame)) state.SkipWithError("a frame is missing");
        frame = (frame + 1) % benchMovieFrames;
    }
    // One seek for each time that the movie starts anew, and none within.
    if (seeks != passes) state.SkipWithError("playback seeks");
}

void Peer(benchmark::State& state, const BenchMovie& movie, const Depth& depth) {
    PeerMovie peer(PathOf(movie), depth.peer);
    for (auto _ : state)
        peer.Next();
}

bool RegisterAll() {
    for (const BenchMovie& movie : benchMovies) {
        for (const Depth& depth : depths) {
            const std::string name = std::string("ffmpeg/play_") + movie.name + "_to_" + depth.name;
            benchmark::RegisterBenchmark((name + "/ours").c_str(), Ours, movie, depth)
                ->UseRealTime()
                ->MinTime(1.5);
            benchmark::RegisterBenchmark((name + "/ffmpeg_swscale").c_str(), Peer, movie, depth)
                ->UseRealTime()
                ->MinTime(1.5);
        }
    }
    return true;
}

const bool registered = RegisterAll();

} // namespace
