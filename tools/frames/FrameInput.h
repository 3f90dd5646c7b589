#pragma once

#include "frames/FrameDecoder.h"
#include "images/HostImage.h"
#include "images/ImageSequence.h"
#include "media/MovieTrackInfo.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

/// What is known of the pictures of an input.
struct FrameTrack {
    std::string name; ///< of the file or sequence, as the user gave it
    int32_t width = 0;
    int32_t height = 0;
    int64_t firstNumber = 0; ///< 0 for movies, the first file's number for sequences
    int64_t frameCount = 0;
    bool hasAlpha = false;
    ImageDataKind kind = ImageData_RGBAFloat; ///< that loses nothing of the input
    std::string backEnd;                      ///< what reads the pictures
    bool isReadAsBt709 = false; ///< a movie's Y'CbCr has become RGB by BT.709, whatever its own matrix is
    std::optional<MovieTrackInfo> movie; ///< of a movie or clip
};

/// Pictures in presentation order, of a movie, a clip or an image sequence. One thread at a time.
class FrameInput {
public:
    virtual ~FrameInput() = default;

    const FrameTrack& Track() const { return track_; }

    /// Reads a picture into a new image of the track's size and of the kind given.
    /// @param index  0 to `frameCount` - 1
    /// @throw ToolError  naming the file and the frame
    virtual HostImage Read(int64_t index, ImageDataKind kind) = 0;

protected:
    FrameTrack track_;
};

/// How an input is opened.
struct FrameInputOptions {
    DecodeRoad road = DecodeRoad::Auto;                  ///< for movies
    MissingFrames missingFrames = MissingFrames::Refuse; ///< for image sequences
};

/// Opens what the name stands for: an image sequence if it has the extension of an image file, a clip if it
/// has one that a host format alone reads, else a movie.
/// @throw ToolError
std::unique_ptr<FrameInput> OpenFrameInput(const std::string& name, const FrameInputOptions& options);
