#include "frames/HostFormats.h"

#include "QuietStream.h"
#include "RawDiagnosis.h"
#include "Text.h"

#include <algorithm>
#include <filesystem>
#include <optional>

namespace {

std::string ExtensionOf(const std::string& path) { return std::filesystem::path(path).extension().string(); }

/// Formats say on standard error why they refuse a file that another may open.
std::unique_ptr<ImageFormat> OpenFormat(Registry& registry, const std::string& path) {
    const QuietStream quiet(stderr);
    std::unique_ptr<ImageFormat> format = NewFormat(registry);
    TagList tags;
    // A path from the root is never taken for a protocol, whatever the file's name.
    const std::string fullPath = std::filesystem::absolute(path).string();
    const CxID pictures(CLSID_DataType_Image, true);
    if (format && !format->LoadHeaderTagList(pictures, fullPath.c_str(), tags)) format.reset();
    return format;
}

/// Why a format can't be tried, in words; nothing if it can be.
std::optional<std::string> WhyMissing(Registry& format) {
    if (!format.Start()) return " is not available";
    // This one starts without what it stands on, and refuses each file.
    const bool needsSdk = std::string(format.ClassName()) == "VrelFileFormat";
    const std::string reason = needsSdk ? WhyRawSdkIsMissing() : "";
    if (reason.empty()) return std::nullopt;
    return " is not available: " + reason;
}

} // namespace

std::vector<Registry*> LoadersOf(const std::string& path) {
    std::vector<Registry*> formats = Registry::FormatsForExtension(ExtensionOf(path).c_str());
    std::erase_if(formats, [](const Registry* format) { return !format->CanLoad(); });
    return formats;
}

std::string FormatName(const Registry& format) {
    const std::string name = format.DisplayName();
    return name.empty() ? format.ClassName() : name;
}

std::unique_ptr<ImageFormat> NewFormat(Registry& format) {
    std::unique_ptr<Object> object = format.Create(ScriptVal(), TagList());
    std::unique_ptr<ImageFormat> made(dynamic_cast<ImageFormat*>(object.get()));
    if (made) static_cast<void>(object.release());
    return made;
}

OpenedFormat OpenHostFormat(const std::string& path) {
    for (Registry* const registry : LoadersOf(path))
        if (std::unique_ptr<ImageFormat> format = OpenFormat(*registry, path))
            return {registry, std::move(format)};
    return {};
}

bool IsFormatMissing(const std::string& path) {
    return std::ranges::any_of(LoadersOf(path),
                               [](Registry* format) { return WhyMissing(*format).has_value(); });
}

std::string WhyNoFormatOpens(const std::string& path) {
    std::vector<std::string> names;
    for (Registry* const format : LoadersOf(path))
        names.push_back(FormatName(*format) + WhyMissing(*format).value_or(" doesn't open it"));
    if (names.empty()) return "no host format of this build loads '" + ExtensionOf(path) + "'";
    return "no host format: " + Join(names, ", ");
}
