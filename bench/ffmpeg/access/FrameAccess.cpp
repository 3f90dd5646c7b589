// Loads frames of a movie by number and tells what each took: reads one number a line from standard input,
// and writes a line with the milliseconds and the number of seeks.

#include "../HostMovie.h"
#include "../SeekCount.h"

#include <chrono>
#include <cstdio>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: frame_access MOVIE\n", stderr);
        return 2;
    }
    HostMovie movie(argv[1], ImageData_RGBA8);
    int64_t& seeks = CountSeeks();
    std::printf("%d frames\n", movie.FrameCount());
    std::fflush(stdout);
    for (uint32_t frame; std::scanf("%u", &frame) == 1;) {
        seeks = 0;
        const auto begin = std::chrono::steady_clock::now();
        const bool loaded = movie.Load(frame);
        const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - begin;
        if (!loaded) return 1;
        std::printf("%.3f %lld\n", taken.count(), static_cast<long long>(seeks));
        std::fflush(stdout);
    }
    return 0;
}
