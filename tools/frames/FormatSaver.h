#pragma once

#include "host/Image.h"
#include "host/ImageFormat.h"
#include "host/Operator.h"
#include "media/AvErrorWords.h"
#include "media/OutputFile.h"
#include "media/Rational.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

/// Values for the controls that FFmpeg's host format adds to a saver tool; those without one keep their
/// defaults.
struct SaveControls {
    std::string container;
    std::string encoder;             ///< label
    Rational frameRate;              ///< frames a second; the control keeps thousandths
    std::optional<double> dataRate;  ///< kilobytes a second
    std::optional<double> keyFrames; ///< frames from one key frame to the next
    std::string options;             ///< `key=value`, with separators between them
};

/// Saves a movie through FFmpeg's host format, on the road that the host goes: the controls are set by their
/// ids, and the format's operations do the rest. The file grows as PATH.part and takes its name in `Finish`.
/// Every failure throws `ToolError`; after one, only destruction is of use. One thread at a time, and one
/// object.
class FormatSaver {
public:
    /// Creates PATH.part and sets the controls.
    /// @throw ToolError  `Usage`: unknown container or encoder; `CannotWrite`; `Unsupported`: without FFmpeg
    FormatSaver(const std::string& path, const SaveControls& controls);
    /// Without a `Finish` that returned, removes PATH.part and leaves PATH as it was.
    ~FormatSaver();
    FormatSaver(const FormatSaver&) = delete;
    FormatSaver& operator=(const FormatSaver&) = delete;

    /// Frames a second of the file.
    double FrameRate() const;
    /// Saves the next frame. The first one tells size, aspect, fields and time code of the movie.
    /// @throw ToolError  `Unsupported` if the encoder refuses what the first frame tells, `JobFailed` if it
    ///                   can't encode the frame
    void Save(Image* image);
    /// Ends the file, and gives it its name if it holds all that was saved.
    /// @throw ToolError  `CannotWrite` if the disk is full; `Unsupported` if the container takes no such
    ///                   stream; `JobFailed` if frames are missing in the file
    void Finish();

private:
    void Set(const SaveControls& controls);
    void Set(const char* id, const Parameter& value);
    void Begin(Image* image);
    void CheckWritten();

    OutputFile file_;
    AvErrorWords words_;
    std::unique_ptr<ImageFormat> format_; ///< writes `file_`, and so goes before it
    Operator tool_;
    int64_t frames_ = 0; ///< saved so far
};
