#pragma once

#include "host/Image.h"

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <random>
#include <string>

struct ImageDeleter {
    void operator()(Image* image) const { Image::Free(image); }
};
using ImagePtr = std::unique_ptr<Image, ImageDeleter>;

inline ImagePtr MakeImage(int32_t width, int32_t height, ImageDataKind kind = ImageData_RGBA16) {
    return ImagePtr(Image::Allocate(width, height, kind));
}

inline bool operator==(const Pixel& a, const Pixel& b) {
    return a.R == b.R && a.G == b.G && a.B == b.B && a.A == b.A;
}

inline void PrintTo(const Pixel& pixel, std::ostream* out) {
    *out << "(" << pixel.R << ", " << pixel.G << ", " << pixel.B << ", " << pixel.A << ")";
}

/// Random numbers from the seed in CORVEX_TEST_SEED, or from one of its own; the seed is printed.
inline std::mt19937 MakeRandom() {
    const char* given = std::getenv("CORVEX_TEST_SEED");
    const uint32_t seed = given != nullptr ? static_cast<uint32_t>(std::stoul(given))
                                           : static_cast<uint32_t>(std::random_device()());
    std::cout << "CORVEX_TEST_SEED=" << seed << std::endl;
    return std::mt19937(seed);
}
