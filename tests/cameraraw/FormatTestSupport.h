#pragma once

#include "cameraraw/RawTestSupport.h"
#include "cameraraw/VrelFileFormat.h"
#include "support/TestSupport.h"

#include <string>

/// A format object on its own, as the host's tools drive it.
class LoadedClip {
public:
    bool Open(const std::string& path = "clip.vrel") { return format.LoadHeaderTagList(path.c_str(), tags); }
    /// Loads a frame into `image`.
    bool Load(uint32_t frame, const ImagePtr& image) {
        Image* target = image.get();
        return format.LoadFrameTagList(frame, target, tags);
    }
    /// Loads a frame into an image of its own.
    bool Load(uint32_t frame) { return Load(frame, MakeImage(format.width, format.height)); }

    VrelFileFormat format{nullptr, ScriptVal(), TagList()};
    TagList tags;
};

/// Pixel of a 16-bit image, counted from the top left corner.
inline Pixel PixelAtTop(Image& image, int32_t x, int32_t y) {
    const uint16_t* const row =
        reinterpret_cast<const uint16_t*>(image.RowTable[image.Height - 1 - y]) + size_t{4} * x;
    return {row[0], row[1], row[2], row[3]};
}

/// Text of an entry in the image's table "Metadata"; "-" if it isn't there.
inline std::string MetadataText(const Image& image, const char* key) {
    return image.ImageInfo.FindKeyConst("Metadata").FindKeyConst(key).ToString("-");
}
