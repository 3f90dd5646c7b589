// Asks for frames of a movie in random order, for runs under a memory checker:
//
//   ffmpeg_random_access MOVIE registry|format ACCESSES
//
// MOVIE is the name of a movie of the accuracy tests, which is made then, or the path of such a movie. The
// order is the same in every run. Exit status: 0 if every frame is right, 1 if one is wrong, 2 for wrong
// usage, 3 if the movie can't be opened.

#include "ffmpeg/accuracy/MovieList.h"
#include "ffmpeg/accuracy/MovieRoad.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <random>
#include <stdexcept>
#include <string>

namespace {

enum Status { Right = 0, Wrong = 1, Usage = 2, NotOpened = 3 };

struct Movie {
    std::string path;
    int frameCount = 0; ///< 0: as many as the road tells of
    int firstNumber = 0;
};

Movie OpenMovie(const std::string& nameOrPath, const Workspace& workspace) {
    if (nameOrPath.find('/') != std::string::npos) return {nameOrPath};
    const NumberedMovie movie = FindMovie(nameOrPath);
    return {MakeMovie(movie, workspace), movie.ShownCount(), movie.firstNumber};
}

int CountWrong(MovieRoad& road, const Movie& movie, int accesses) {
    const int frameCount = movie.frameCount > 0 ? movie.frameCount : road.FrameCount();
    std::mt19937 random(1);
    std::uniform_int_distribution<int> anyFrame(0, frameCount - 1);
    int wrong = 0;
    for (int i = 0; i < accesses; ++i) {
        const int frame = anyFrame(random);
        const int number = road.NumberOf(frame);
        if (number == movie.firstNumber + frame) continue;
        std::fprintf(stderr, "frame %d gave %d\n", frame, number);
        ++wrong;
    }
    return wrong;
}

Status Run(const std::string& nameOrPath, bool isRegistry, int accesses) {
    const Workspace workspace;
    const Movie movie = OpenMovie(nameOrPath, workspace);
    const auto road = isRegistry ? OpenRegistryRoad(movie.path) : OpenFormatRoad(movie.path);
    if (road == nullptr || (movie.frameCount == 0 && road->FrameCount() < 1)) return NotOpened;
    const int wrong = CountWrong(*road, movie, accesses);
    std::printf("%d accesses, %d wrong\n", accesses, wrong);
    return wrong == 0 ? Right : Wrong;
}

} // namespace

int main(int count, char** arguments) {
    const std::string road = count == 4 ? arguments[2] : "";
    const int accesses = count == 4 ? std::atoi(arguments[3]) : 0;
    if (accesses < 1 || (road != "registry" && road != "format")) {
        std::fprintf(stderr, "usage: ffmpeg_random_access MOVIE registry|format ACCESSES\n");
        return Usage;
    }
    try {
        const Status status = Run(arguments[1], road == "registry", accesses);
        if (status == NotOpened) std::fprintf(stderr, "%s: not opened\n", arguments[1]);
        return status;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s: %s\n", arguments[1], failure.what());
        return NotOpened;
    }
}
