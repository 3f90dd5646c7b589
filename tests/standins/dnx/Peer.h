#pragma once

#include "standins/dnx/DNXLibrary.h"

extern "C" {
#include <libavutil/pixfmt.h>
}

#include <array>
#include <cstdint>
#include <vector>

/// Three planes of samples, as FFmpeg's codec takes and gives them.
struct PeerPlanes {
    AVPixelFormat format = AV_PIX_FMT_NONE;
    size_t width = 0;
    size_t height = 0;
    bool topFieldFirst = false; ///< an interlaced frame whose top field was coded first
    std::array<std::vector<uint16_t>, 3> samples;

    size_t PlaneWidth(int plane) const { return samples[plane].size() / height; }
    uint16_t At(int plane, size_t x, size_t y) const { return samples[plane][y * PlaneWidth(plane) + x]; }
};

/// Samples in a row of a plane.
size_t PlaneWidthOf(AVPixelFormat format, size_t width, int plane);

/// Planes of a format whose samples a function of plane, column and row gives.
template <typename Sample>
PeerPlanes MakePlanes(AVPixelFormat format, size_t width, size_t height, Sample sample) {
    PeerPlanes planes;
    planes.format = format;
    planes.width = width;
    planes.height = height;
    for (int plane = 0; plane < 3; ++plane) {
        const size_t planeWidth = PlaneWidthOf(format, width, plane);
        std::vector<uint16_t>& samples = planes.samples[static_cast<size_t>(plane)];
        samples.resize(planeWidth * height);
        for (size_t y = 0; y < height; ++y)
            for (size_t x = 0; x < planeWidth; ++x)
                samples[y * planeWidth + x] = sample(plane, x, y);
    }
    return planes;
}

/// Encodes with FFmpeg's encoder: by profile if it isn't 0, otherwise by Mbit/s.
Bytes PeerEncode(const PeerPlanes& planes, int profile, int megabits = 0, bool interlaced = false);

/// Decodes with FFmpeg's decoder; no format if that fails.
PeerPlanes PeerDecode(const Bytes& frame);
