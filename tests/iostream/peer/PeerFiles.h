#pragma once

#include "tools/Workspace.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct AVFormatContext;

/// Files of a test, made and read by FFmpeg. All that fails throws `std::runtime_error`.

/// Runs a line of the shell in the directory.
/// @return what it wrote to its standard output
std::string RunInside(const Workspace& workspace, const std::string& line);

struct PeerInputCloser {
    void operator()(AVFormatContext* input) const;
};
using PeerInput = std::unique_ptr<AVFormatContext, PeerInputCloser>;

/// The file, looked through as far as FFmpeg needs to know its first stream.
PeerInput OpenByPeer(const std::string& path);

/// The configuration record that FFmpeg's MP4 muxer writes for the byte stream in the file.
std::vector<uint8_t> MuxedRecord(const Workspace& workspace, const std::string& streamName);
