#include "support/RawClips.h"

#include "rawsdk/picture/Mosaic.h"

#include <vector>

namespace {

std::vector<uint16_t> PlanesOf(const RawPicture& picture, uint64_t frame) {
    std::vector<uint16_t> words;
    words.reserve(size_t{3} * picture.width * picture.height);
    for (uint32_t plane = 0; plane < 3; ++plane)
        for (uint32_t y = 0; y < picture.height; ++y)
            for (uint32_t x = 0; x < picture.width; ++x)
                words.push_back(picture.At(frame, plane, x, y));
    return words;
}

rawsdk::FrameProperties PropertiesOf(const RawClipRecipe& recipe, uint32_t frame) {
    rawsdk::FrameProperties properties;
    properties.metadata = {{u"take", rawsdk::NumberValue(frame)}};
    if (recipe.hasTimecodes) properties.timecode = RawTimecode(frame);
    return properties;
}

} // namespace

uint16_t RawPicture::At(uint64_t frame, uint32_t plane, uint32_t x, uint32_t y) const {
    const uint64_t across = uint64_t{20000} * x / width;
    const uint64_t down = uint64_t{20000} * y / height;
    return static_cast<uint16_t>(15000 + across * (plane != 1) + down * (plane != 0) + 1000 * (frame % 8));
}

void WriteRawClip(const std::string& path, const RawClipRecipe& recipe) {
    rawsdk::ClipProperties clip;
    clip.width = recipe.picture.width;
    clip.height = recipe.picture.height;
    clip.frameRate = recipe.frameRate;
    clip.settings = recipe.settings;
    clip.metadata = {{u"camera", rawsdk::TextValue(u"Größe A")}, {u"take", rawsdk::TextValue(u"clip")}};
    clip.table = recipe.table;
    const rawsdk::Mosaic mosaic(rawsdk::ToneOf(clip.settings, rawsdk::FrameSettings()));
    rawsdk::ClipWriter writer(path, clip);
    for (uint32_t frame = 0; frame < recipe.frames; ++frame) {
        std::vector<uint16_t> planes = PlanesOf(recipe.picture, frame);
        writer.Add(PropertiesOf(recipe, frame), mosaic.Samples({planes.data(), clip.width, clip.height}));
    }
    writer.Finish();
}
