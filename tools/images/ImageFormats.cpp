#include "images/ImageFormats.h"

#include "media/ToolError.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <sstream>

namespace {

constexpr ImageFileFormat kFormats[] = {
    {"openexr", "exr", {ImageData_RGBAHalf, 16}, false, true},
    {"png", "png", {ImageData_RGBA16, 16}, true, false},
    {"tiff", "tif tiff", {ImageData_RGBA16, 16}, true, true},
    {"dpx", "dpx", {ImageData_RGBA16, 10}, true, false},
};

std::string ExtensionOf(const std::string& path) {
    std::string extension = std::filesystem::path(path).extension().string();
    if (!extension.empty()) extension.erase(0, 1);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

bool ListHas(std::string_view list, const std::string& word) {
    std::istringstream words{std::string(list)};
    for (std::string candidate; words >> candidate;) {
        if (candidate == word) return true;
    }
    return false;
}

ImageStorage StorageOf(ImageDepth depth, const ImageFileFormat& format) {
    switch (depth) {
    case ImageDepth::Bits8: return {ImageData_RGBA8, 8};
    case ImageDepth::Bits16: return {ImageData_RGBA16, 16};
    case ImageDepth::Half: return {ImageData_RGBAHalf, 16};
    case ImageDepth::Float: return {ImageData_RGBAFloat, 32};
    case ImageDepth::Default: break;
    }
    return format.defaultStorage;
}

} // namespace

const ImageFileFormat* FindImageFormat(const std::string& path) {
    const std::string extension = ExtensionOf(path);
    const auto* found =
        std::find_if(std::begin(kFormats), std::end(kFormats),
                     [&](const ImageFileFormat& format) { return ListHas(format.extensions, extension); });
    return found == std::end(kFormats) ? nullptr : found;
}

ImageStorage ChooseImageStorage(const std::string& path, ImageDepth depth) {
    const ImageFileFormat* format = FindImageFormat(path);
    if (format == nullptr)
        throw ToolError(ExitStatus::Usage, path, "images are written as .exr, .png, .tif, .tiff or .dpx");
    const bool isFloat = depth == ImageDepth::Half || depth == ImageDepth::Float;
    const bool isInteger = depth == ImageDepth::Bits8 || depth == ImageDepth::Bits16;
    if ((isFloat && !format->floats) || (isInteger && !format->integers))
        throw ToolError(ExitStatus::Usage, path,
                        std::string("this kind of image does not store ") +
                            (isFloat ? "floating point" : "integers"));
    return StorageOf(depth, *format);
}
