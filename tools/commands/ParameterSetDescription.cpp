#include "commands/ParameterSetDescription.h"

#include "FrameRateText.h"
#include "Text.h"
#include "commands/Lines.h"

#include <cmath>
#include <numeric>

namespace {

using Json = nlohmann::ordered_json;
using IOStream::IOElementaryStreamInfo;

constexpr const char* kFrameTypeNames[] = {"unknown", "intra", "predicted", "bi-predicted"};
constexpr const char* kFieldOrderNames[] = {"unknown", "progressive", "top first", "bottom first"};

/// A value of the stream beside the track's; null is what is not told.
Json Compare(const Json& learnt, const Json& track = nullptr) {
    return {{"value", learnt}, {"track", track}, {"differs", !track.is_null() && learnt != track}};
}

Json KnownOnly(int value, bool isKnown) { return isKnown ? Json(value) : Json(nullptr); }

Json FactOf(const TrackValue& value) { return KnownOnly(value.value, value.source != ValueSource::Assumed); }

Json RateOf(const IOElementaryStreamInfo& info) {
    const uint32_t divisor = std::gcd(info.frameRateNum, info.frameRateDen);
    if (info.frameRateNum == 0 || info.frameRateDen == 0) return nullptr;
    return FormatRational({info.frameRateNum / divisor, info.frameRateDen / divisor});
}

/// As programs compare it: six digits behind the point.
double Rounded(double value) { return std::round(value * 1e6) / 1e6; }

/// Of the first sequence parameter set that tells it: 1 video, 2 full.
Json RangeOf(const IOElementaryStreamInfo& info) {
    return info.fullRangeBySPS.empty() ? Json(nullptr) : Json(info.fullRangeBySPS.begin()->second);
}

/// Which field is shown first; files also tell which one is stored first.
Json FieldOrderOf(const TrackValue& order) {
    constexpr int displayed[] = {0, 1, 2, 3, 3, 2};
    const bool isKnown = order.source != ValueSource::Assumed && order.value >= 1 && order.value <= 5;
    return isKnown ? Json(kFieldOrderNames[displayed[order.value]]) : Json(nullptr);
}

void DescribeSize(const IOElementaryStreamInfo& info, const MovieTrackInfo& track, Json& object) {
    object["width"] = Compare(info.width, track.width);
    object["height"] = Compare(info.height, track.height);
    object["codedWidth"] = Compare(info.width + info.cropLeft + info.cropRight, track.codedWidth);
    object["codedHeight"] = Compare(info.height + info.cropTop + info.cropBottom, track.codedHeight);
    object["crop"] = Compare({{"left", info.cropLeft},
                              {"right", info.cropRight},
                              {"top", info.cropTop},
                              {"bottom", info.cropBottom}});
}

void DescribePixels(const IOElementaryStreamInfo& info, const MovieTrackInfo& track, Json& object) {
    object["chromaFormat"] =
        Compare(info.chromaFormat, KnownOnly(track.chromaFormat, track.chromaFormat > 0));
    object["bitDepth"] = Compare(info.bitDepth, KnownOnly(track.bitDepth, track.bitDepth > 0));
    const double trackAspect =
        static_cast<double>(track.sampleAspect.num) / static_cast<double>(track.sampleAspect.den);
    object["pixelAspect"] = Compare(Rounded(info.pixelAspect), Rounded(trackAspect));
    object["range"] = Compare(RangeOf(info), FactOf(track.colorRange));
    object["primaries"] = Compare(info.colourPrimaries, FactOf(track.colorPrimaries));
    object["transfer"] = Compare(info.transferCharacteristics, FactOf(track.colorTransfer));
    object["matrix"] = Compare(info.matrixCoefficients, FactOf(track.colorMatrix));
}

Json FrameTypesOf(const StreamAnalysis& analysis) {
    Json names = Json::array();
    for (const uint32_t type : analysis.frameTypes)
        names.push_back(kFrameTypeNames[type]);
    return names;
}

std::string TextOfCrop(const Json& crop) {
    return "left " + crop["left"].dump() + ", right " + crop["right"].dump() + ", top " + crop["top"].dump() +
           ", bottom " + crop["bottom"].dump();
}

std::string TextOfComparison(const Json& compared) {
    const Json& value = compared["value"];
    std::string text = value.is_null() ? "not told" : value.is_object() ? TextOfCrop(value) : TextOf(value);
    if (compared["differs"].get<bool>())
        text += " (differs: the track has " + TextOf(compared["track"]) + ")";
    return text;
}

/// Values of the text, and their names in it.
constexpr std::pair<const char*, const char*> kValueNames[] = {
    {"profile", "profile"},
    {"level", "level"},
    {"width", "width"},
    {"height", "height"},
    {"codedWidth", "coded width"},
    {"codedHeight", "coded height"},
    {"crop", "crop"},
    {"chromaFormat", "chroma"},
    {"bitDepth", "bit depth"},
    {"frameRate", "rate"},
    {"pixelAspect", "aspect"},
    {"range", "range"},
    {"primaries", "primaries"},
    {"transfer", "transfer"},
    {"matrix", "matrix"},
    {"fieldOrder", "field order"},
    {"referenceFrames", "references"},
};

} // namespace

Json DescribeParameterSets(const StreamAnalysis& analysis, const MovieTrackInfo& track) {
    const IOElementaryStreamInfo& info = analysis.info;
    Json object;
    object["source"] = analysis.source;
    object["lengthSize"] = analysis.lengthSize;
    object["profile"] = Compare(info.profile, KnownOnly(track.profileNumber, track.profileNumber >= 0));
    object["level"] = Compare(info.level, KnownOnly(track.level, track.level >= 0));
    DescribeSize(info, track, object);
    DescribePixels(info, track, object);
    object["frameRate"] = Compare(RateOf(info), FormatRational(track.frameRate));
    object["fieldOrder"] = Compare(kFieldOrderNames[info.fieldOrder], FieldOrderOf(track.fieldOrder));
    if (analysis.countsReferences) object["referenceFrames"] = Compare(info.maxRefFrames);
    object["frameTypes"] = FrameTypesOf(analysis);
    return object;
}

std::string TextOfParameterSets(const Json& parameterSets) {
    Lines lines;
    const uint32_t lengthSize = parameterSets["lengthSize"].get<uint32_t>();
    lines.Add("parameter sets",
              TextOf(parameterSets["source"]) +
                  (lengthSize > 0 ? ", length fields of " + std::to_string(lengthSize) + " bytes" : ""));
    for (const auto& [key, name] : kValueNames)
        if (parameterSets.contains(key))
            lines.Add(std::string("  ").append(name), TextOfComparison(parameterSets[key]));
    lines.Add("  first frames", Join(parameterSets["frameTypes"], ", "));
    return lines.Text();
}
