#include "dnx/Compressions.h"

#include <algorithm>
#include <iterator>

namespace dnx {

namespace {

constexpr AVPixelFormat planes422 = AV_PIX_FMT_YUV422P;
constexpr AVPixelFormat planes422Of10 = AV_PIX_FMT_YUV422P10LE;
constexpr AVPixelFormat planesRgb = AV_PIX_FMT_GBRP10LE;

// FFmpeg chooses a DNxHD compression by size, scanning, depth and bit rate. The lowest bit rate of each
// stands here; frames are of one size whatever the rate. A DNxHR compression is a profile of its encoder, and
// any size.
constexpr Compression compressions[] = {
    {1235, 1920, 1080, false, planes422Of10, 175, 917504},
    {1237, 1920, 1080, false, planes422, 115, 606208},
    {1238, 1920, 1080, false, planes422, 175, 917504},
    {1241, 1920, 1080, true, planes422Of10, 185, 917504},
    {1242, 1920, 1080, true, planes422, 120, 606208},
    {1243, 1920, 1080, true, planes422, 185, 917504},
    {1244, 1440, 1080, true, planes422, 120, 606208},
    {1250, 1280, 720, false, planes422Of10, 90, 458752},
    {1251, 1280, 720, false, planes422, 90, 458752},
    {1252, 1280, 720, false, planes422, 60, 303104},
    {1253, 1920, 1080, false, planes422, 36, 188416},
    {1258, 960, 720, false, planes422, 42, 212992},
    {1259, 1440, 1080, false, planes422, 63, 417792},
    {1270, 0, 0, false, planesRgb, 5, 57344},
    {1271, 0, 0, false, planes422Of10, 4, 28672},
    {1272, 0, 0, false, planes422, 3, 28672},
    {1273, 0, 0, false, planes422, 2, 18944},
    {1274, 0, 0, false, planes422, 1, 5888},
};

} // namespace

const Compression* FindCompression(uint32_t id) {
    const auto row = std::ranges::find(compressions, id, &Compression::id);
    return row != std::end(compressions) ? row : nullptr;
}

bool AllowsSize(const Compression& compression, uint32_t width, uint32_t height) {
    if (!compression.IsHR()) return width == compression.width && height == compression.height;
    // The encoder's least size; the height from where on the decoder refuses frames.
    return width >= 256 && height >= 120 && width <= 32768 && height <= 8192;
}

uint32_t FrameBytes(const Compression& compression, uint32_t width, uint32_t height) {
    if (!compression.IsHR()) return compression.frameByteUnit;
    // The frame size of SMPTE ST 2019-1 for any picture size: in whole blocks, to the nearest, and two at
    // least.
    constexpr uint64_t block = 4096;
    const uint64_t macroblocks = (uint64_t{width} + 15) / 16 * ((uint64_t{height} + 15) / 16);
    const uint64_t bytes = macroblocks * compression.frameByteUnit / 255;
    return static_cast<uint32_t>(std::max((bytes + block / 2) / block, uint64_t{2}) * block);
}

} // namespace dnx
