// Binds FFmpeg in a process of its own and says on standard error what came of it. Each argument is a step:
//
//   load        calls LoadFFmpeg
//   together    calls it from several threads at once
//   starved     calls it with memory for no allocation, then for one, for two, until it doesn't throw
//   NAME=VALUE  sets an environment variable
//
// The host's path maps point nowhere, so that only the environment decides what is found.

#include "ffmpeg/FFmpegBinding.h"
#include "support/HeapSpy.h"

#include <array>
#include <barrier>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <thread>

namespace {

void Say(bool bound) { std::fprintf(stderr, bound ? "bound\n" : "failed\n"); }

void LoadTogether() {
    std::array<bool, 4> outcomes = {};
    std::array<std::thread, outcomes.size()> threads;
    std::barrier start(outcomes.size());
    for (size_t i = 0; i < threads.size(); ++i) {
        threads[i] = std::thread([&start, &outcome = outcomes[i]] {
            start.arrive_and_wait();
            outcome = LoadFFmpeg() && FFmpeg().avcodec_version() != 0;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (const bool outcome : outcomes)
        Say(outcome);
}

/// Whether a call with memory for so many allocations had an outcome. An exception has none.
bool LoadWith(int allocations) {
    try {
        const HeapSpy spy(allocations);
        Say(LoadFFmpeg());
        return true;
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "out of memory\n");
        return false;
    }
}

void LoadStarved() {
    for (int allocations = 0; !LoadWith(allocations);)
        ++allocations;
}

void Set(const std::string& assignment) {
    const size_t sign = assignment.find('=');
    setenv(assignment.substr(0, sign).c_str(), assignment.substr(sign + 1).c_str(), 1);
}

} // namespace

int main(int count, char** arguments) {
    for (const char* const directory : FFmpegSearchDirectories)
        SetPathMap(directory, "/nowhere");
    for (int i = 1; i < count; ++i) {
        const std::string step = arguments[i];
        if (step == "load") {
            Say(LoadFFmpeg());
        } else if (step == "together") {
            LoadTogether();
        } else if (step == "starved") {
            LoadStarved();
        } else {
            Set(step);
        }
    }
}
