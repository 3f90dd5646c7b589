#include "commands/ListCommand.h"

#include "Encoders.h"
#include "FourCCText.h"
#include "Text.h"
#include "TrackCodes.h"
#include "framework/CxAVCodecRegistry.h"
#include "host/Registry.h"

#include <algorithm>
#include <set>
#include <vector>

namespace {

using Json = nlohmann::ordered_json;

/// A back-end that the module may have, and why it is missing if it is.
struct BackEnd {
    const char* name;
    const char* factory; ///< name of its factory in the registry; null for a host format
    const char* format;  ///< name of its host format class; null for a codec
    const char* missing;
};

constexpr const char* kNotBuilt = "not part of this build";

constexpr BackEnd kBackEnds[] = {
    {"FFmpeg", "FFmpeg", nullptr, kNotBuilt},
    {"Avid DNX", "Avid DNX", nullptr, kNotBuilt},
    {"Apple ProRes", "Apple ProRes", nullptr, kNotBuilt},
    {"Uncompressed", "Uncompressed", nullptr, kNotBuilt},
    {"Media Foundation", "DXVA", nullptr, kNotBuilt},
    {"Ravenlight Raw", nullptr, "VrelFileFormat", kNotBuilt},
};

std::vector<std::string> FactoryNames(uint32_t fourCC) {
    std::vector<std::string> names;
    for (const CxAbstractCodecFactory* factory : CxAVCodecRegistry::GetDecoderFactories(fourCC))
        names.push_back(factory->name);
    return names;
}

bool IsPresent(const BackEnd& backEnd) {
    if (backEnd.format != nullptr) {
        const std::vector<Registry*> formats = Registry::Formats();
        return std::any_of(formats.begin(), formats.end(), [&](const Registry* format) {
            return std::string(format->ClassName()) == backEnd.format;
        });
    }
    return std::any_of(std::begin(kTrackCodes), std::end(kTrackCodes), [&](uint32_t code) {
        const std::vector<std::string> names = FactoryNames(code);
        return std::find(names.begin(), names.end(), backEnd.factory) != names.end();
    });
}

Json ListBackEnds() {
    Json list = Json::array();
    for (const BackEnd& backEnd : kBackEnds) {
        const bool present = IsPresent(backEnd);
        Json row = {{"name", backEnd.name}, {"available", present}};
        if (!present) row["reason"] = backEnd.missing;
        list.push_back(row);
    }
    return list;
}

Json ListDecoders() {
    Json list = Json::array();
    for (const uint32_t code : kTrackCodes) {
        const std::vector<std::string> names = FactoryNames(code);
        if (!names.empty()) list.push_back({{"fourCC", FourCCText(code)}, {"backEnds", names}});
    }
    return list;
}

Json ListEncoders() {
    Json list = Json::array();
    for (const CxEncoderInfo& row : RegistryEncoders()) {
        Json entry = {{"name", row.name}, {"fourCC", FourCCText(row.fourCC)}, {"alpha", OffersAlpha(row)}};
        if (row.width != 0) entry["width"] = row.width;
        if (row.height != 0) entry["height"] = row.height;
        list.push_back(entry);
    }
    return list;
}

Json ListFormats() {
    Json list = Json::array();
    for (const Registry* format : Registry::Formats()) {
        list.push_back({{"name", format->ClassName()},
                        {"extensions", format->Extensions()},
                        {"priority", format->Priority()},
                        {"loads", format->CanLoad()},
                        {"saves", format->CanSave()}});
    }
    return list;
}

std::string TextOfDecoders(const Json& list) {
    std::string text;
    for (const Json& row : list)
        text += "  " + row["fourCC"].get<std::string>() + "\t" + Join(row["backEnds"], ", ") + "\n";
    return text;
}

std::string TextOfEncoders(const Json& list) {
    std::string text;
    for (const Json& row : list)
        text += "  " + row["fourCC"].get<std::string>() + "\t" + row["name"].get<std::string>() + "\n";
    return text;
}

std::string TextOfFormats(const Json& list) {
    std::string text;
    for (const Json& row : list)
        text += "  " + row["name"].get<std::string>() + "\t" + Join(row["extensions"], " ") + "\tpriority " +
                row["priority"].dump() + "\n";
    return text;
}

/// FFmpeg's containers are those that its back-end writes; without the back-end there are none.
Json ListContainers() { return Json::array(); }

std::string TextOfContainers(const Json& /*list*/) { return {}; }

/// One section of the list: how it is gathered and how it reads.
struct Section {
    const char* name;
    const char* title;
    Json (*gather)();
    std::string (*text)(const Json& list);
};

constexpr Section kSections[] = {
    {"decoders", "Decoders, by track code", ListDecoders, TextOfDecoders},
    {"encoders", "Encoders, by display name", ListEncoders, TextOfEncoders},
    {"containers", "Containers of FFmpeg", ListContainers, TextOfContainers},
    {"formats", "Formats of the host", ListFormats, TextOfFormats},
};

std::string TextOfMissing(const Json& backEnds) {
    std::string text;
    for (const Json& row : backEnds) {
        if (row.contains("reason"))
            text += "  " + row["name"].get<std::string>() + ": " + row["reason"].get<std::string>() + "\n";
    }
    return text.empty() ? text : "Missing back-ends\n" + text;
}

} // namespace

void RunList(const std::string& section, Report& report) {
    for (const Section& entry : kSections) {
        if (!section.empty() && section != entry.name) continue;
        const Json list = entry.gather();
        report.result[entry.name] = list;
        report.text += std::string(entry.title) + "\n" + (list.empty() ? "  none\n" : entry.text(list));
    }
    report.result["backEnds"] = ListBackEnds();
    report.text += TextOfMissing(report.result["backEnds"]);
}
