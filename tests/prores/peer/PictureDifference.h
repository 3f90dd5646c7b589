#pragma once

#include "prores/peer/EnginePicture.h"
#include "prores/peer/PeerDecoder.h"

#include <algorithm>
#include <array>
#include <cmath>

/// How far the engine's picture of a frame is from the peer's.

/// The sum of squared differences of one component.
struct Difference {
    double squares = 0;
    size_t count = 0;

    void Add(double a, double b) {
        squares += (a - b) * (a - b);
        ++count;
    }
    double Psnr() const {
        constexpr double peak = 1023;
        return squares == 0 ? INFINITY : 10 * std::log10(peak * peak * static_cast<double>(count) / squares);
    }
};

using Differences = std::array<Difference, 3>; ///< luma, Cb, Cr

/// The peer's pictures leave the four lowest and highest codes of their depth alone; formats of the engine
/// that go beyond are cut likewise.
inline double Limited(double code, int depth) {
    const double step = std::ldexp(1.0, 10 - depth);
    return std::clamp(code, 4 * step, 1024 - 5 * step);
}

/// Adds what lies between the engine's picture and the peer's. Chroma of odd pixels counts if `oddChroma` is
/// set.
inline void AddDifferences(const EnginePicture& picture, const PeerFrame& peer, bool oddChroma,
                           Differences& sums) {
    for (int y = 0; y < peer.height; ++y) {
        for (int x = 0; x < peer.width; ++x) {
            const EnginePixel pixel = picture.At(x, y);
            const size_t compared = x % 2 == 0 || oddChroma ? 3 : 1;
            for (size_t i = 0; i < compared; ++i)
                sums[i].Add(Limited(pixel.components[i], peer.depth), peer.Code(i, x, y));
        }
    }
}

/// Pixels whose alpha, cut to the bits of the peer, is another than the peer's.
inline size_t CountAlphaDifferences(const EnginePicture& picture, const PeerFrame& peer) {
    size_t different = 0;
    for (int y = 0; y < peer.height; ++y)
        for (int x = 0; x < peer.width; ++x)
            different += picture.At(x, y).alpha >> (16 - peer.depth) != peer.Sample(3, x, y) ? 1 : 0;
    return different;
}
