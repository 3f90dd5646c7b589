#include "commands/ListCommand.h"

#include "Containers.h"
#include "DNXDiagnosis.h"
#include "Encoders.h"
#include "FFmpegDiagnosis.h"
#include "FourCCText.h"
#include "MediaFoundationDiagnosis.h"
#include "RawDiagnosis.h"
#include "Text.h"
#include "TrackCodes.h"
#include "framework/CxAVCodecRegistry.h"
#include "host/Registry.h"

#include <algorithm>
#include <set>
#include <vector>

namespace {

using Json = nlohmann::ordered_json;

/// A back-end that the module may have.
struct BackEnd {
    const char* name;
    const char* factory;       ///< name of its factory in the registry; null for a host format
    const char* format;        ///< name of its host format class; null for a codec
    std::string (*diagnose)(); ///< why it is missing, or nothing if it could be there; null if none
                               ///< knows, which holds of codecs alone
};

constexpr BackEnd kBackEnds[] = {
    {"FFmpeg", "FFmpeg", nullptr, WhyFFmpegIsMissing},
    {"Avid DNX", "Avid DNX", nullptr, WhyDNXIsMissing},
    {"Apple ProRes", "Apple ProRes", nullptr, nullptr},
    {"Uncompressed", "Uncompressed", nullptr, nullptr},
    {"Media Foundation", "DXVA", nullptr, WhyMediaFoundationIsMissing},
    {"Ravenlight Raw", nullptr, "VrelFileFormat", WhyRawSdkIsMissing},
};

/// Why a back-end that is not there is missing.
std::string ReasonOf(const BackEnd& backEnd) {
    const std::string reason = backEnd.diagnose != nullptr ? backEnd.diagnose() : "";
    return reason.empty() ? "not part of this build" : reason;
}

std::vector<std::string> FactoryNames(uint32_t fourCC) {
    std::vector<std::string> names;
    for (const CxAbstractCodecFactory* factory : CxAVCodecRegistry::GetDecoderFactories(fourCC))
        names.push_back(factory->name);
    return names;
}

bool IsAnnounced(const std::string& className) {
    const std::vector<Registry*> formats = Registry::Formats();
    return std::ranges::any_of(formats,
                               [&](const Registry* format) { return format->ClassName() == className; });
}

bool IsPresent(const BackEnd& backEnd) {
    // A host format is announced without its library too.
    if (backEnd.format != nullptr) return IsAnnounced(backEnd.format) && backEnd.diagnose().empty();
    return std::ranges::any_of(TrackCodes(), [&](uint32_t code) {
        const std::vector<std::string> names = FactoryNames(code);
        return std::find(names.begin(), names.end(), backEnd.factory) != names.end();
    });
}

Json ListBackEnds() {
    Json list = Json::array();
    for (const BackEnd& backEnd : kBackEnds) {
        const bool present = IsPresent(backEnd);
        Json row = {{"name", backEnd.name}, {"available", present}};
        if (!present) row["reason"] = ReasonOf(backEnd);
        list.push_back(row);
    }
    return list;
}

Json ListDecoders() {
    Json list = Json::array();
    for (const uint32_t code : TrackCodes()) {
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
    for (Registry* format : Registry::Formats()) {
        list.push_back({{"name", format->ClassName()},
                        {"available", format->Start()},
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
                row["priority"].dump() + (row["available"].get<bool>() ? "\n" : ", not available\n");
    return text;
}

Json ListContainers() {
    Json list = Json::array();
    for (const Container& container : SaveContainers())
        list.push_back({{"name", container.name},
                        {"extensions", container.extensions},
                        {"encoders", container.encoders}});
    return list;
}

std::string TextOfContainers(const Json& list) {
    std::string text;
    for (const Json& row : list)
        text += "  " + row["name"].get<std::string>() + "\t" + Join(row["extensions"], " ") + "\t" +
                Join(row["encoders"], ", ") + "\n";
    return text;
}

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
    {"containers", "Containers of FFmpeg, with their encoders", ListContainers, TextOfContainers},
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
