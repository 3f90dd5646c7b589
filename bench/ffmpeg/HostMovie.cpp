#include "HostMovie.h"

#include "host/Registry.h"

#include <cstdlib>
#include <filesystem>

namespace {

constexpr Tag frameCountTag = 0x100000cb;

} // namespace

HostMovie::HostMovie(const std::string& path, ImageDataKind kind) {
    const std::string extension = std::filesystem::path(path).extension().string();
    const std::vector<Registry*> formats = Registry::FormatsForExtension(extension.c_str());
    if (formats.empty()) std::abort();
    object_ = formats.front()->Create({}, {});
    format_ = dynamic_cast<ImageFormat*>(object_.get());
    TagList tags;
    if (format_ == nullptr) std::abort();
    if (!format_->LoadHeaderTagList(CxID(CLSID_DataType_Image, true), path.c_str(), tags)) std::abort();
    image_.reset(Image::Allocate(format_->width, format_->height, kind));
}

bool HostMovie::Load(uint32_t frame) {
    TagList tags;
    Image* image = image_.get();
    return format_->LoadFrameTagList(frame, image, tags);
}

int32_t HostMovie::FrameCount() { return format_->GetAttr(frameCountTag, 0); }
