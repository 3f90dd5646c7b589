#pragma once

#include "media/Rational.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// What a movie file with one video track is to be.
struct MovieTrackSettings {
    std::string path;    ///< ".mov", ".avi" or ".mkv" chooses the container
    uint32_t fourCC = 0; ///< code of the registry's encoder; 24 and 32 for plain RGB and ARGB
    int width = 0;       ///< pixels, 1 to 32767
    int height = 0;      ///< pixels, 1 to 32767
    Rational frameRate;  ///< frames per second, exact; above 0
    int fieldOrder = 1;  ///< 1 progressive, 2 top field first, 3 bottom field first
    bool alpha = false;  ///< the frames carry alpha
    int colorRange = 0;  ///< these four in FFmpeg's numbering; range 0, others 2: not told
    int colorMatrix = 2;
    int colorPrimaries = 2;
    int colorTransfer = 2;
    std::string timeCode;           ///< of the first frame, "hh:mm:ss:ff", ';' for drop frame; empty for none
    std::vector<uint8_t> extraData; ///< the codec's configuration record, as the container holds it
    Rational pixelAspect{1, 1};     ///< width to height of a pixel; 0/1 not told
};

/// Writes the compressed frames of one video track into a movie file.
///
/// The file grows as PATH.part beside its target and takes its name in `Finish`, when it is whole and on the
/// disk. Every failure throws `ToolError`; after one, only destruction is of use. One thread at a time.
class MovieTrackWriter {
public:
    /// Opens PATH.part and writes the header.
    /// @throw ToolError  `Unsupported`: container unknown or unfit for the code; `CannotWrite`; `Usage`: a
    /// size,
    ///                   rate or time code that can't be
    explicit MovieTrackWriter(const MovieTrackSettings& settings);
    /// Without a `Finish` that returned, removes PATH.part and leaves PATH as it was.
    ~MovieTrackWriter();
    MovieTrackWriter(const MovieTrackWriter&) = delete;
    MovieTrackWriter& operator=(const MovieTrackWriter&) = delete;

    /// Appends one frame, which lasts one frame period. Uncompressed codes are expected with rows
    /// of `PixelConvert::CalcRowBytes`. `data` is read before the call returns.
    /// @throw ToolError  `CannotWrite`; `JobFailed` for a frame of the wrong size
    void WriteFrame(const uint8_t* data, size_t size, bool keyFrame = true);
    /// Ends the file and gives it its name, in place of one that is there.
    /// @throw ToolError  `CannotWrite`
    void Finish();

private:
    struct State;
    std::unique_ptr<State> state;
};
