#pragma once

#include "standins/dnx/Peer.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

// The matrix and the places of chroma in double precision: what pictures and planes mean to each other.
// Values count in words of video range, black 4096 and white 60160.

/// Sample `index` of a packed picture of words.
inline uint16_t WordAt(const Bytes& picture, size_t index) {
    uint16_t word = 0;
    std::memcpy(&word, picture.data() + 2 * index, sizeof(word));
    return word;
}

struct Weights {
    double red;
    double blue;
};
constexpr Weights bt709 = {0.2126, 0.0722};
constexpr Weights bt2020 = {0.2627, 0.0593};

struct RgbValue {
    double red, green, blue;
};
struct YCbCrValue {
    double y, cb, cr;
};

inline RgbValue ToRgb(YCbCrValue value, Weights weights) {
    const double y = (value.y - 4096) / 56064;
    const double cb = (value.cb - 32768) / 57344;
    const double cr = (value.cr - 32768) / 57344;
    const double red = y + 2 * (1 - weights.red) * cr;
    const double blue = y + 2 * (1 - weights.blue) * cb;
    const double green = (y - weights.red * red - weights.blue * blue) / (1 - weights.red - weights.blue);
    const auto word = [](double part) { return std::clamp(4096 + 56064 * part, 0.0, 65535.0); };
    return {word(red), word(green), word(blue)};
}

inline YCbCrValue ToYCbCr(RgbValue value) {
    const double y =
        bt709.red * value.red + (1 - bt709.red - bt709.blue) * value.green + bt709.blue * value.blue;
    return {y, 32768 + (value.blue - y) / 56064 / (2 * (1 - bt709.blue)) * 57344,
            32768 + (value.red - y) / 56064 / (2 * (1 - bt709.red)) * 57344};
}

/// The chroma of a pixel in planes of any sampling, in words: the sample that stands there, or the mean of
/// the two beside it.
inline double ChromaAt(const PeerPlanes& planes, int plane, size_t x, size_t y, double scale) {
    if (planes.PlaneWidth(plane) == planes.width) return planes.At(plane, x, y) * scale;
    const size_t last = planes.PlaneWidth(plane) - 1;
    const size_t next = std::min(x / 2 + x % 2, last);
    return (planes.At(plane, x / 2, y) + planes.At(plane, next, y)) * scale / 2;
}
