#pragma once

#include "ffmpeg/accuracy/NumberedPicture.h"
#include "tools/Workspace.h"

#include <ostream>
#include <string>

/// Pictures per second, as a fraction.
struct PictureRate {
    int num = 25;
    int den = 1;
};

/// A movie whose pictures carry their numbers, made by the `ffmpeg` program.
struct NumberedMovie {
    std::string name; ///< one word, for the names of tests
    std::string file; ///< with the container's extension
    PictureRate rate;
    /// Lines of the shell that make `file`. They have the variables `$make` (the program with its general
    /// options), `$pictures` (pictures with the numbers from 0 on, as its input) and `$sound` (a tone as long
    /// as these).
    std::string line;
    PictureSize size{};
    int pictureCount = 60;
    bool isInterlaced = false;
    int firstNumber = 0; ///< of the first picture that the file shows; all after it are shown too
    int toldCount = 0;   ///< frames that the container tells of, where these are not the shown ones; else 0

    int ShownCount() const { return pictureCount - firstNumber; }
    int ToldCount() const { return toldCount > 0 ? toldCount : ShownCount(); }
};

/// For the messages of tests.
inline void PrintTo(const NumberedMovie& movie, std::ostream* out) { *out << movie.name; }

/// Makes the movie's file in the workspace.
/// @return its path
/// @throw std::runtime_error  with what the program said
std::string MakeMovie(const NumberedMovie& movie, const Workspace& workspace);
