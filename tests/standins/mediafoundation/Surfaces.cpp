#include "standins/mediafoundation/Surfaces.h"

#include <algorithm>

PeerPicture SurfaceOf(const PeerPicture& picture) {
    PeerPicture surface = {(picture.width + 15) / 16 * 16, (picture.height + 15) / 16 * 16, {}};
    size_t offset = 0;
    for (const size_t part : {1, 2, 2}) {
        const size_t width = picture.width / part;
        const size_t height = picture.height / part;
        for (size_t y = 0; y < surface.height / part; ++y)
            for (size_t x = 0; x < surface.width / part; ++x)
                surface.samples.push_back(
                    picture.samples[offset + std::min(y, height - 1) * width + std::min(x, width - 1)]);
        offset += width * height;
    }
    return surface;
}

Bytes YUY2Of(const PeerPicture& picture) {
    const uint8_t* const luma = picture.samples.data();
    const uint8_t* const cb = luma + picture.width * picture.height;
    const uint8_t* const cr = cb + picture.width * picture.height / 4;
    Bytes bytes;
    for (size_t y = 0; y < picture.height; ++y)
        for (size_t x = 0; x < picture.width; ++x) {
            const size_t chroma = y / 2 * (picture.width / 2) + x / 2;
            bytes.push_back(luma[y * picture.width + x]);
            bytes.push_back(x % 2 == 0 ? cb[chroma] : cr[chroma]);
        }
    return bytes;
}

std::vector<Bytes> SurfacesOf(const std::vector<PeerPicture>& pictures) {
    std::vector<Bytes> surfaces;
    for (const PeerPicture& picture : pictures)
        surfaces.push_back(YUY2Of(SurfaceOf(picture)));
    return surfaces;
}
