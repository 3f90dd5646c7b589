#pragma once

#include "host/Image.h"
#include "media/MovieTrackSource.h"

#include <memory>
#include <string>
#include <utility>

/// Which way a movie's frames are decoded.
enum class DecodeRoad {
    Auto,     ///< registry, then host formats, then a packing that is read straight from the sample
    Registry, ///< a codec of the registry
    Format,   ///< a host format that claims the file's extension
};

/// Turns samples of an open movie into images. One thread at a time.
class FrameDecoder {
public:
    /// The matrix by which Y'CbCr becomes RGB.
    enum class Matrix { OfTrack, Bt709 };

    FrameDecoder(std::string backEnd, Matrix matrix) : backEnd_(std::move(backEnd)), matrix_(matrix) {}
    virtual ~FrameDecoder() = default;

    /// Decodes a frame into `image`, which has the movie's size.
    /// @throw ToolError  if the frame can't be had; nothing is known of the pixels then
    virtual void Decode(int32_t frame, Image* image) = 0;

    /// Name of what decodes, for people.
    const std::string& BackEnd() const { return backEnd_; }
    /// Of the track as far as the back-end knows it, or BT.709 whatever the track says.
    Matrix MatrixUsed() const { return matrix_; }

private:
    std::string backEnd_;
    Matrix matrix_;
};

/// Opens a decoder for the movie by the road asked for.
/// @param source  outlives the decoder
/// @throw ToolError  `Unsupported` if the road leads nowhere
std::unique_ptr<FrameDecoder> OpenFrameDecoder(MovieTrackSource& source, DecodeRoad road);
