#include "host/ImageFormat.h"

#include <utility>

const CxID ImageFormat::ClassID("ImageFormat", true);

size_t ImageFormat::ObjectSize() const { return sizeof(ImageFormat); }

bool ImageFormat::SetAttrsTagList(const TagList& tags) {
    const bool found = tags.FindQuery(FormatTag_Width) || tags.FindQuery(FormatTag_Height);
    width = static_cast<int32_t>(tags.GetLong(FormatTag_Width, width));
    height = static_cast<int32_t>(tags.GetLong(FormatTag_Height, height));
    return MediaFormat::SetAttrsTagList(tags) || found;
}

bool ImageFormat::CopyAttr(Tag key, void* out) {
    switch (key) {
    case FormatTag_Width: *static_cast<int32_t*>(out) = width; return true;
    case FormatTag_Height: *static_cast<int32_t*>(out) = height; return true;
    default: return MediaFormat::CopyAttr(key, out);
    }
}

bool ImageFormat::LoadHeaderTagList(const CxID& dataType, const char* path, TagList& tags) {
    return dataType == CLSID_DataType_Image && LoadHeaderTagList(path, tags);
}

bool ImageFormat::CheckSizeOptions() { return true; }

bool ImageFormat::LoadHeaderTagList(const char*, TagList&) { return false; }

bool ImageFormat::LoadFrameTagList(uint32_t, Image*& image, TagList& tags) {
    if (image != nullptr) return true;
    if (width <= 0 || height <= 0) return false;
    const int64_t kind = tags.GetLong(FormatTag_DataKind, ImageData_RGBA16);
    if (!std::in_range<uint32_t>(kind)) return false;
    image = Image::Allocate(width, height, static_cast<ImageDataKind>(kind));
    return image != nullptr;
}

bool ImageFormat::SaveHeaderTagList(const char*, Image*, TagList&) { return false; }

bool ImageFormat::SaveHeaderTagList(IOClass*, Image*, TagList&) { return false; }

bool ImageFormat::SaveFrameTagList(uint32_t, Image*, TagList&) { return false; }

int64_t ImageFormat::PredictFileSize(Image*) { return 0; }
