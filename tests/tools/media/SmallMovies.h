#pragma once

#include "MediaFiles.h"
#include "media/MovieTrackWriter.h"
#include "pixel/PixelConvert.h"

#include <string>
#include <vector>

// Small movies of the writer's tests.

/// Frames of every movie.
constexpr int frameCount = 5;

/// A progressive movie of 23.976 frames a second without tags.
inline MovieTrackSettings Settings(const std::string& path, uint32_t fourCC, int width = 62,
                                   int height = 47) {
    MovieTrackSettings settings;
    settings.path = path;
    settings.fourCC = fourCC;
    settings.width = width;
    settings.height = height;
    settings.frameRate = {24000, 1001};
    return settings;
}

/// Bytes that differ from frame to frame and from byte to byte; with v210 and r210 the padding too.
inline std::vector<uint8_t> Frame(int index, size_t size) {
    std::vector<uint8_t> bytes(size);
    for (size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<uint8_t>(i * 7 + i / 251 + index * 31);
    return bytes;
}

/// Bytes of a frame with the rows that encoders give.
inline size_t FrameSize(const MovieTrackSettings& settings) {
    return static_cast<size_t>(PixelConvert::CalcRowBytes(settings.fourCC, settings.width)) * settings.height;
}

/// Writes a whole movie and gives its frames.
inline std::vector<std::vector<uint8_t>> WriteMovie(const MovieTrackSettings& settings) {
    std::vector<std::vector<uint8_t>> frames;
    MovieTrackWriter writer(settings);
    for (int i = 0; i < frameCount; ++i) {
        frames.push_back(Frame(i, FrameSize(settings)));
        writer.WriteFrame(frames.back().data(), frames.back().size());
    }
    writer.Finish();
    return frames;
}
