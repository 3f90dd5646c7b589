#pragma once

#include "frames/FrameInput.h"

/// The pictures of an image sequence.
class SequenceInput : public FrameInput {
public:
    /// @throw ToolError  if the sequence is not there, has a hole that is not to be filled, or its first file
    ///                   can't be read
    SequenceInput(const std::string& name, MissingFrames missing);

    /// @throw ToolError  also if the file's size differs from that of the first one
    HostImage Read(int64_t index, ImageDataKind kind) override;

private:
    HostImage ReadFile(const std::string& path) const;

    ImageSequence sequence_;
};
