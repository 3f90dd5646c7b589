#pragma once

#include "rawsdk/clip/ClipFormat.h"
#include "rawsdk/clip/FrameRecord.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string_view>

namespace rawsdk {

/// A clip open for reading. Any thread, any number of them at a time.
class ClipFile {
public:
    /// @throw Failure  if the file can't be opened or is no sound clip
    explicit ClipFile(const std::filesystem::path& path);
    ~ClipFile();
    ClipFile(const ClipFile&) = delete;
    ClipFile& operator=(const ClipFile&) = delete;

    const ClipProperties& Clip() const { return directory_.clip; }
    uint64_t FrameCount() const { return directory_.frames.size(); }
    /// @param frame  below `FrameCount`
    uint32_t Timecode(uint64_t frame) const { return directory_.frames[frame].timecode; }
    /// Bytes of the largest frame.
    uint32_t BitstreamBound() const;

    /// The table of a mode of `ClipSettings`, or null if the clip has none. That beside the clip is read when
    /// the clip is opened, and left out if it is damaged.
    std::shared_ptr<const ColorTable> Table(std::string_view lutMode) const;

    /// Reads a frame into the first bytes of a buffer.
    /// @throw Failure  if there is no such frame, the buffer is too small, or the frame is damaged
    FrameRecord Read(uint64_t frame, std::span<uint8_t> buffer) const;

private:
    int file_;
    ClipDirectory directory_;
    std::shared_ptr<const ColorTable> embedded_;
    std::shared_ptr<const ColorTable> sidecar_;
};

} // namespace rawsdk
