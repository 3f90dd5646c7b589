#include "MovieMaterial.h"

#include "support/CameraMaterial.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace {

namespace fs = std::filesystem;

constexpr int32_t width = 1920;
constexpr int32_t height = 1080;

void WritePlane(FILE* pipe, const std::vector<uint16_t>& samples, size_t step) {
    std::vector<uint16_t> plane;
    for (size_t i = 0; i < samples.size(); i += step)
        plane.push_back(samples[i]);
    if (std::fwrite(plane.data(), sizeof(uint16_t), plane.size(), pipe) != plane.size()) std::abort();
}

/// Runs ffmpeg once for all movies, and feeds it the pictures as 4:2:2 planes of ten bits.
void MakeMovies(const fs::path& directory) {
    fs::create_directories(directory);
    std::string command = "ffmpeg -v error -y -f rawvideo -pix_fmt yuv422p10le -s 1920x1080 -r 25 "
                          "-color_range tv -colorspace bt709 -i pipe:0";
    for (const BenchMovie& movie : benchMovies)
        command += std::string(" ") + movie.arguments + " " + (directory / movie.file).string();
    FILE* const pipe = popen(command.c_str(), "w");
    if (pipe == nullptr) std::abort();
    for (int i = 0; i < benchMovieFrames; ++i) {
        const CameraPicture picture = MakeCameraPicture(width, height, 4 * i);
        WritePlane(pipe, picture.luma, 1);
        WritePlane(pipe, picture.cb, 2);
        WritePlane(pipe, picture.cr, 2);
    }
    if (pclose(pipe) != 0) std::abort();
}

} // namespace

std::string PathOf(const BenchMovie& movie) {
    static const fs::path directory = [] {
        const fs::path kept = fs::temp_directory_path() / "corvex-bench-movies-2";
        if (!fs::exists(kept)) {
            const fs::path fresh = kept.string() + ".part";
            MakeMovies(fresh);
            fs::rename(fresh, kept);
        }
        return kept;
    }();
    return (directory / movie.file).string();
}
