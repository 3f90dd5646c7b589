#pragma once

#include <cstdint>
#include <vector>

/// A made-up picture with what a camera delivers: smooth light, texture at all sizes, hard edges, and grain
/// in every sample. 10-bit video-range codes; chroma at the full size of luma.
struct CameraPicture {
    int32_t width;
    int32_t height;
    std::vector<uint16_t> luma;
    std::vector<uint16_t> cb;
    std::vector<uint16_t> cr;
};

/// Picture `index` of a slow pan. The same arguments give the same picture.
CameraPicture MakeCameraPicture(int32_t width, int32_t height, int32_t index);
