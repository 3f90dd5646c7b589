#include "ffmpeg/accuracy/MovieRoad.h"

#include "ffmpeg/accuracy/NumberedPicture.h"
#include "framework/CxAVCodecRegistry.h"
#include "host/ImageFormat.h"
#include "host/Registry.h"
#include "media/MovieTrackSource.h"
#include "support/TestSupport.h"

#include <cstring>
#include <filesystem>
#include <utility>

namespace {

constexpr Tag frameCountTag = 0x100000cb;

/// What a road wrote into a blank image.
int NumberIn(Image& image) { return ReadNumber(image).value_or(MovieRoad::unreadable); }

void MakeBlank(Image& image) {
    for (int32_t row = 0; row < image.Height; ++row)
        std::memset(image.RowAddress(row), 0, static_cast<size_t>(image.Width) * image.PixelStride);
}

class RegistryRoad : public MovieRoad {
public:
    RegistryRoad(std::unique_ptr<MovieTrackSource> track, std::unique_ptr<CxAbstractAVCodec> decoder)
        : source(std::move(track)), codec(std::move(decoder)),
          image(MakeImage(source->GetWidth(), source->GetHeight(), ImageData_RGBA8)) {}

    int FrameCount() override { return source->GetFrameCount(); }

    int NumberOf(int frame) override {
        MakeBlank(*image);
        Image* target = image.get();
        return codec->GetDecodedFrame(frame, target) == CxAV_OK ? NumberIn(*image) : noFrame;
    }

private:
    std::unique_ptr<MovieTrackSource> source;
    std::unique_ptr<CxAbstractAVCodec> codec; // reads from `source`, and so goes before it
    ImagePtr image;
};

class FormatRoad : public MovieRoad {
public:
    FormatRoad(std::unique_ptr<Object> made, ImageFormat& loaded)
        : object(std::move(made)), format(loaded),
          image(MakeImage(format.width, format.height, ImageData_RGBA8)) {}

    int FrameCount() override {
        int32_t count = 0;
        return format.CopyAttr(frameCountTag, &count) ? count : 0;
    }

    int NumberOf(int frame) override {
        MakeBlank(*image);
        Image* target = image.get();
        TagList tags;
        const bool isLoaded = format.LoadFrameTagList(static_cast<uint32_t>(frame), target, tags);
        return isLoaded ? NumberIn(*image) : noFrame;
    }

private:
    std::unique_ptr<Object> object;
    ImageFormat& format; ///< `object` itself
    ImagePtr image;
};

} // namespace

std::unique_ptr<MovieRoad> OpenRegistryRoad(const std::string& path) {
    auto source = MovieTrackSource::Open(path);
    std::unique_ptr<CxAbstractAVCodec> codec(CxAVCodecRegistry::CreateDecoder(source.get()));
    if (!codec) return nullptr;
    return std::make_unique<RegistryRoad>(std::move(source), std::move(codec));
}

std::unique_ptr<MovieRoad> OpenFormatRoad(const std::string& path) {
    const std::string extension = std::filesystem::path(path).extension().string();
    const std::vector<Registry*> classes = Registry::FormatsForExtension(extension.c_str());
    if (classes.empty()) return nullptr;
    std::unique_ptr<Object> object = classes.front()->Create(ScriptVal(), TagList());
    auto* const format = dynamic_cast<ImageFormat*>(object.get());
    TagList tags;
    if (format == nullptr || !format->LoadHeaderTagList(CxID(CLSID_DataType_Image, true), path.c_str(), tags))
        return nullptr;
    return std::make_unique<FormatRoad>(std::move(object), *format);
}
