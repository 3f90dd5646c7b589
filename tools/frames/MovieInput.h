#pragma once

#include "frames/FrameInput.h"

/// The frames of a movie's video track.
class MovieInput : public FrameInput {
public:
    /// @throw ToolError  if the file can't be opened or nothing decodes its track
    MovieInput(const std::string& path, DecodeRoad road);

    HostImage Read(int64_t index, ImageDataKind kind) override;

private:
    std::unique_ptr<MovieTrackSource> source_;
    std::unique_ptr<FrameDecoder> decoder_; ///< reads `source_`
};
