#pragma once

#include "media/AvHandles.h"
#include "media/OutputFile.h"

#include <string>

/// The way of FFmpeg's muxers into an `OutputFile`.
class OutputStream {
public:
    /// @throw ToolError  `CannotWrite`
    explicit OutputStream(const std::string& path);
    ~OutputStream();
    OutputStream(const OutputStream&) = delete;
    OutputStream& operator=(const OutputStream&) = delete;

    /// Owned by this object.
    AVIOContext* Io() { return io; }
    /// Tells of a failure, the disk's own error before FFmpeg's.
    /// @param result  of the FFmpeg call that was made
    /// @throw ToolError  `CannotWrite` if the disk has failed or `result` is negative
    void Check(int result) const;
    /// Writes what is buffered and names the file.
    /// @throw ToolError  `CannotWrite`
    void Commit();

private:
    OutputFile file;
    AVIOContext* io = nullptr;
};
