#pragma once

#include "codecs/MediaFoundation.h"
#include "mediafoundation/Picture.h"

#include <span>

namespace mediafoundation {

/// How the bytes of uncompressed samples stand: whole rows without gaps, top row first.
struct PictureFormat {
    GUID subtype;
    uint32_t bytesOfTwoPixels;
    /// Writes a picture; `bytes` has room for all of it.
    void (*pack)(const Picture& picture, uint8_t* bytes);
    /// Reads a picture of the size that `picture` has.
    void (*unpack)(const uint8_t* bytes, Picture& picture);

    uint64_t Bytes(uint32_t width, uint32_t height) const {
        return uint64_t{width} * height * bytesOfTwoPixels / 2;
    }
};

/// All of them, in the order in which decoder and encoder offer them.
std::span<const PictureFormat> PictureFormats();
/// Null if there is none of this subtype.
const PictureFormat* FindPictureFormat(REFGUID subtype);

} // namespace mediafoundation
