#include "frames/HostFormats.h"

#include <filesystem>

std::vector<Registry*> LoadersOf(const std::string& path) {
    const std::string extension = std::filesystem::path(path).extension().string();
    std::vector<Registry*> formats = Registry::FormatsForExtension(extension.c_str());
    std::erase_if(formats, [](const Registry* format) { return !format->CanLoad(); });
    return formats;
}

std::string FormatName(const Registry& format) {
    const std::string name = format.DisplayName();
    return name.empty() ? format.ClassName() : name;
}
