#pragma once

#include "rawsdk/picture/Samples.h"

#include <cmath>
#include <cstdint>
#include <vector>

/// A picture that owns its planes.
struct OwnedPicture {
    OwnedPicture(uint32_t width, uint32_t height)
        : words(size_t{width} * height * 3), width(width), height(height) {}

    rawsdk::PlanarPicture Planes() { return {words.data(), width, height}; }
    uint16_t& At(size_t plane, uint32_t x, uint32_t y) { return Planes().Row(plane, y)[x]; }

    std::vector<uint16_t> words;
    uint32_t width;
    uint32_t height;
};

/// Fills a picture with 65535 times a function of the plane and of x and y from 0 to 1.
template <typename Function>
void Paint(OwnedPicture& picture, Function function) {
    for (size_t plane = 0; plane < 3; ++plane)
        for (uint32_t y = 0; y < picture.height; ++y)
            for (uint32_t x = 0; x < picture.width; ++x) {
                const double value = function(plane, x / (picture.width - 1.0), y / (picture.height - 1.0));
                picture.At(plane, x, y) = static_cast<uint16_t>(value * 65535 + 0.5);
            }
}

/// Greatest difference of two pictures of the same size, and the root of the mean square, in codes.
struct Difference {
    double greatest = 0;
    double typical = 0;
};
inline Difference Compare(const OwnedPicture& a, const OwnedPicture& b) {
    Difference difference;
    double squares = 0;
    for (size_t i = 0; i < a.words.size(); ++i) {
        const double apart = std::abs(double{static_cast<double>(a.words[i])} - b.words[i]);
        difference.greatest = std::max(difference.greatest, apart);
        squares += apart * apart;
    }
    difference.typical = std::sqrt(squares / static_cast<double>(a.words.size()));
    return difference;
}
