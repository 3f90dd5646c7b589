#include "Containers.h"

#include "FFmpegDiagnosis.h"
#include "QuietStream.h"
#include "Text.h"
#include "ffmpeg/EncoderCatalogue.h"
#include "media/ToolError.h"

#include <algorithm>
#include <sstream>

namespace {

/// @param list  names without dots between commas; may be null
std::vector<std::string> ReadExtensions(const char* list) {
    std::vector<std::string> extensions;
    std::istringstream names(list != nullptr ? list : "");
    for (std::string name; std::getline(names, name, ',');)
        extensions.push_back(std::string(".").append(name));
    return extensions;
}

Container Describe(const std::string& name, const CxFFMPEG::ContainerEntry& entry) {
    const bool isOneFile = (entry.format->flags & AVFMT_NOFILE) == 0;
    Container container{name, ReadExtensions(entry.format->extensions), entry.labels, isOneFile};
    std::sort(container.encoders.begin(), container.encoders.end());
    return container;
}

std::string Quoted(const std::vector<std::string>& names) { return "'" + Join(names, "', '") + "'"; }

void CheckEncoder(const Container& container, const std::string& encoder) {
    const auto& labels = container.encoders;
    if (std::find(labels.begin(), labels.end(), encoder) == labels.end())
        throw ToolError(ExitStatus::Usage, "--encoder " + encoder,
                        "no encoder of '" + container.name + "', which has " + Quoted(labels));
    if (!container.isOneFile)
        throw ToolError(ExitStatus::Unsupported, "--container " + container.name, "it doesn't make one file");
}

} // namespace

std::vector<Container> SaveContainers() {
    // The command's own search for FFmpeg repeats what the module said of it while it was loaded.
    const QuietStream quietOutput(stdout);
    const QuietStream quietError(stderr);
    std::vector<Container> containers;
    for (const auto& [name, entry] : CxFFMPEG::GetContainerTable())
        containers.push_back(Describe(name, entry));
    std::sort(containers.begin(), containers.end(),
              [](const Container& a, const Container& b) { return a.name < b.name; });
    return containers;
}

void CheckContainer(const std::string& container, const std::string& encoder) {
    std::vector<std::string> names;
    for (const Container& known : SaveContainers()) {
        names.push_back(known.name);
        if (known.name == container) return CheckEncoder(known, encoder);
    }
    if (names.empty()) throw ToolError(ExitStatus::Unsupported, "FFmpeg", WhyFFmpegIsMissing());
    throw ToolError(ExitStatus::Usage, "--container " + container,
                    "no such container; there are " + Quoted(names));
}
