#pragma once

#include "rawsdk/clip/ClipFormat.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <span>

namespace rawsdk {

/// Writes a clip, frame by frame. A file that is not finished is no clip.
class ClipWriter {
public:
    /// Begins the file, over one that is there.
    /// @throw Failure  `E_INVALIDARG` for a size that pictures may not have, `E_FAIL` if the file can't be
    ///                 written; so do the others
    ClipWriter(const std::filesystem::path& path, ClipProperties properties);

    /// Adds a frame.
    /// @param samples  12 bits each, rows without padding: R G in even rows, G B in odd ones
    /// @throw Failure  `E_INVALIDARG` also for another number of samples
    void Add(const FrameProperties& properties, std::span<const uint16_t> samples);

    /// Makes the file a clip.
    void Finish();

private:
    void Write(std::span<const uint8_t> bytes);

    std::ofstream file_;
    uint64_t position_ = 0;
    ClipDirectory directory_;
};

} // namespace rawsdk
