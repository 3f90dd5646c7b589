#include "ffmpeg/accuracy/NumberedMovie.h"

#include <stdexcept>
#include <vector>

namespace {

void WritePictures(const NumberedMovie& movie, const Workspace& workspace) {
    std::vector<uint8_t> planes;
    for (int number = 0; number < movie.pictureCount; ++number)
        AppendPicture(number, movie.size, movie.isInterlaced, planes);
    workspace.Write("pictures.yuv", {planes.begin(), planes.end()});
}

std::string Variables(const NumberedMovie& movie) {
    const std::string size = std::to_string(movie.size.width) + "x" + std::to_string(movie.size.height);
    const std::string rate = std::to_string(movie.rate.num) + "/" + std::to_string(movie.rate.den);
    const double seconds = static_cast<double>(movie.pictureCount) * movie.rate.den / movie.rate.num;
    return "make='ffmpeg -nostdin -v error -y'\n"
           "pictures='-f rawvideo -pix_fmt yuv420p -s " +
           size + " -r " + rate +
           " -i pictures.yuv'\n"
           "sound='-f lavfi -i sine=r=48000:d=" +
           std::to_string(seconds) + "'\n";
}

} // namespace

std::string MakeMovie(const NumberedMovie& movie, const Workspace& workspace) {
    WritePictures(movie, workspace);
    const ProgramRun run = workspace.Shell("set -e\n" + Variables(movie) + movie.line);
    if (run.status != 0) throw std::runtime_error(movie.name + ": " + run.err);
    return workspace.Path(movie.file);
}
