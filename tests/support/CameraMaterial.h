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
    std::vector<uint16_t> alpha; ///< full range; opaque until `AddMatte`
};

/// Picture `index` of a slow pan. The same arguments give the same picture. `grain` is the standard deviation
/// of its grain in luma, in codes; chroma has three fifths of that. A camera at its base sensitivity has
/// about 2, and one in the dark 5 and more.
CameraPicture MakeCameraPicture(int32_t width, int32_t height, int32_t index, float grain = 5.0f);

/// Gives a picture the alpha of a figure cut out of its background: opaque inside, transparent outside, with
/// an edge as soft as focus and motion make it.
void AddMatte(CameraPicture& picture);

/// The picture in one of the engine's formats `v216`, `y416` and `b64a` (RGB by BT.709, full range), with
/// rows of `rowBytes` bytes, top row first. 4:2:2 has the chroma of the even pixels.
std::vector<uint8_t> PackCameraPicture(const CameraPicture& picture, uint32_t pixelFormat, uint32_t rowBytes);
