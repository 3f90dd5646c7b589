#pragma once

#include "PixelTestSupport.h"
#include "host/Platform.h"
#include "pixel/PixelConvert.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

struct BlobDeleter {
    void operator()(uint8_t* blob) const { Platform::FreeMemAligned(blob); }
};
using BlobPtr = std::unique_ptr<uint8_t, BlobDeleter>;

inline bool Write(Image* image, uint32_t fourCC, int32_t rowBytes, uint8_t*& blob) {
    return PixelConvert::ImageToBlob(image, static_cast<int32_t>(fourCC), rowBytes, blob, false);
}

inline bool Read(std::vector<uint8_t>& blob, uint32_t fourCC, uint32_t rowBytes, Image* image) {
    return PixelConvert::BlobToImage(blob.data(), rowBytes, fourCC, image);
}

/// Leaves a freed block of the size behind, full of a value, for the next allocation to find.
inline void SoilMemory(int64_t size) {
    void* block = Platform::AllocMemAligned(size, 32);
    std::memset(block, 0xA5, static_cast<size_t>(size));
    Platform::FreeMemAligned(block);
}
