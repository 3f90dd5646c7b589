#pragma once

#include "host/Image.h"

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <random>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

struct ImageDeleter {
    void operator()(Image* image) const { Image::Free(image); }
};
using ImagePtr = std::unique_ptr<Image, ImageDeleter>;

inline ImagePtr MakeImage(int32_t width, int32_t height, ImageDataKind kind = ImageData_RGBA16) {
    return ImagePtr(Image::Allocate(width, height, kind));
}

inline uint32_t BytesPerPixelOf(ImageDataKind kind) {
    switch (kind) {
    case ImageData_RGBA8: return 4;
    case ImageData_RGBA16:
    case ImageData_RGBAHalf: return 8;
    case ImageData_RGBAFloat: return 16;
    }
    return 0;
}

/// The bytes of an image's pixels, row 0 (the bottom row) first.
inline std::vector<uint8_t> PixelBytes(const Image& image, ImageDataKind kind) {
    std::vector<uint8_t> bytes;
    const size_t rowBytes = static_cast<size_t>(image.Width) * BytesPerPixelOf(kind);
    for (int32_t row = 0; row < image.Height; ++row)
        bytes.insert(bytes.end(), image.RowTable[row], image.RowTable[row] + rowBytes);
    return bytes;
}

inline Pixel GetPixelAt(Image& image, int32_t x, int32_t row) {
    Pixel pixel;
    image.GetPixel(pixel, image.RowTable[row] + int64_t{x} * image.PixelStride, nullptr, &image);
    return pixel;
}

inline void SetPixelAt(Image& image, int32_t x, int32_t row, const Pixel& pixel) {
    image.SetPixel(pixel, image.RowTable[row] + int64_t{x} * image.PixelStride, nullptr, &image);
}

inline void SetPixelAt(Image& image, int32_t x, int32_t row, const PixelFloat& pixel) {
    image.SetPixelFloat(pixel, image.RowTable[row] + int64_t{x} * image.PixelStride, nullptr, &image);
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

/// A block of memory that ends, or starts, at a page that may not be touched.
class GuardedBytes {
public:
    enum class Guard { Behind, Before };

    GuardedBytes(size_t size, Guard guard) : size_(size) {
        const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        const size_t pages = (size + page - 1) / page * page;
        mappedSize_ = pages + page;
        void* mapped = mmap(nullptr, mappedSize_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapped == MAP_FAILED) std::abort();
        mapped_ = static_cast<uint8_t*>(mapped);
        uint8_t* forbidden = guard == Guard::Behind ? mapped_ + pages : mapped_;
        if (mprotect(forbidden, page, PROT_NONE) != 0) std::abort();
        data_ = guard == Guard::Behind ? forbidden - size : forbidden + page;
    }
    ~GuardedBytes() { munmap(mapped_, mappedSize_); }
    GuardedBytes(const GuardedBytes&) = delete;
    GuardedBytes& operator=(const GuardedBytes&) = delete;

    uint8_t* data() const { return data_; }
    size_t size() const { return size_; }
    uint8_t* begin() const { return data_; }
    uint8_t* end() const { return data_ + size_; }

private:
    size_t size_;
    size_t mappedSize_;
    uint8_t* mapped_;
    uint8_t* data_;
};
