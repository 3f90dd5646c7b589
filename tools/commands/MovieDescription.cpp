#include "commands/MovieDescription.h"

#include "FourCCText.h"
#include "FrameRateText.h"
#include "Text.h"
#include "commands/Lines.h"
#include "frames/HostFormats.h"
#include "framework/CxAVCodecRegistry.h"

namespace {

using Json = nlohmann::ordered_json;

Json DescribeValue(const TrackValue& value) {
    return {{"value", value.value}, {"text", value.text}, {"source", ValueSourceName(value.source)}};
}

Json DescribeStreams(const MovieTrackInfo& info) {
    Json list = Json::array();
    for (const StreamInfo& stream : info.streams)
        list.push_back({{"index", stream.index},
                        {"type", stream.type},
                        {"codec", stream.codecName},
                        {"fourCC", stream.fourCCText}});
    return list;
}

Json DescribeColor(const MovieTrackInfo& info) {
    return {{"range", DescribeValue(info.colorRange)},
            {"matrix", DescribeValue(info.colorMatrix)},
            {"primaries", DescribeValue(info.colorPrimaries)},
            {"transfer", DescribeValue(info.colorTransfer)}};
}

/// Back-ends of the registry that claim the track's code, and host formats that claim the file's extension,
/// the first one to be tried first.
Json DescribeDecoder(const MovieTrackInfo& info) {
    Json backEnds = Json::array();
    for (const CxAbstractCodecFactory* factory : CxAVCodecRegistry::GetDecoderFactories(info.fourCC))
        backEnds.push_back(factory->name);
    Json formats = Json::array();
    for (const Registry* format : LoadersOf(info.path))
        formats.push_back(FormatName(*format));
    return {{"available", CxAVCodecRegistry::CanCreateDecoder(info.fourCC)},
            {"backEnds", backEnds},
            {"formats", formats}};
}

void DescribeCodec(const MovieTrackInfo& info, Json& object) {
    object["fourCC"] = FourCCText(info.fourCC);
    object["containerTag"] = FourCCText(info.containerTag);
    object["codec"] = info.codecName;
    object["profile"] = info.profile;
    object["pixelFormat"] = info.pixelFormat;
    object["bitsPerCodedSample"] = info.bitsPerCodedSample;
    object["bitRate"] = info.bitRate;
    object["configurationBytes"] = info.extraData.size();
}

void DescribePicture(const MovieTrackInfo& info, Json& object) {
    object["width"] = info.width;
    object["height"] = info.height;
    object["codedWidth"] = info.codedWidth;
    object["codedHeight"] = info.codedHeight;
    object["displayWidth"] = info.displayWidth;
    object["displayHeight"] = info.displayHeight;
    object["pixelAspect"] = FormatRational(info.sampleAspect);
    object["fieldOrder"] = DescribeValue(info.fieldOrder);
    object["color"] = DescribeColor(info);
}

void DescribeTime(const MovieTrackInfo& info, Json& object) {
    object["frameCount"] = info.frameCount;
    object["frameRate"] = FormatRational(info.frameRate);
    object["constantFrameRate"] = info.constantFrameRate;
    object["startTime"] = FormatRational(info.startTime);
    object["duration"] = FormatRational(info.duration);
    object["timeCode"] = info.timeCode;
}

void AddSourced(Lines& lines, const std::string& name, const Json& value) {
    lines.Add(name, TextOf(value["text"]) + " (" + TextOf(value["source"]) + ")");
}

std::string TextOfDecoder(const Json& decoder) {
    const std::string backEnds = Join(decoder["backEnds"], ", ");
    const std::string formats = Join(decoder["formats"], ", ");
    return (backEnds.empty() ? "none in the registry" : backEnds) +
           (formats.empty() ? "" : "; host formats: " + formats);
}

std::string TextOfSize(const Json& movie, const char* width, const char* height) {
    return TextOf(movie[width]) + "x" + TextOf(movie[height]);
}

void AddPicture(const Json& movie, Lines& lines) {
    lines.Add("size", TextOfSize(movie, "width", "height"));
    lines.Add("coded size", TextOfSize(movie, "codedWidth", "codedHeight"));
    lines.Add("display size", TextOfSize(movie, "displayWidth", "displayHeight") + ", pixel aspect " +
                                  TextOf(movie["pixelAspect"]));
    AddSourced(lines, "field order", movie["fieldOrder"]);
    AddSourced(lines, "range", movie["color"]["range"]);
    AddSourced(lines, "matrix", movie["color"]["matrix"]);
    AddSourced(lines, "primaries", movie["color"]["primaries"]);
    AddSourced(lines, "transfer", movie["color"]["transfer"]);
}

void AddTime(const Json& movie, Lines& lines) {
    lines.Add("frames", TextOf(movie["frameCount"]));
    lines.Add("rate",
              TextOf(movie["frameRate"]) + (movie["constantFrameRate"].get<bool>() ? "" : ", not constant"));
    lines.Add("start", TextOf(movie["startTime"]) + " s");
    lines.Add("duration", TextOf(movie["duration"]) + " s");
    lines.Add("time code", TextOf(movie["timeCode"]));
}

} // namespace

Json DescribeMovie(const MovieTrackInfo& info) {
    Json object;
    object["kind"] = "movie";
    object["file"] = info.path;
    object["container"] = info.container;
    object["streams"] = DescribeStreams(info);
    object["videoStream"] = info.streamIndex;
    DescribeCodec(info, object);
    object["decoder"] = DescribeDecoder(info);
    DescribePicture(info, object);
    DescribeTime(info, object);
    object["metadata"] = info.metadata;
    object["damage"] = info.damage;
    return object;
}

std::string TextOfMovie(const Json& movie) {
    Lines lines;
    lines.Add("file", TextOf(movie["file"]));
    lines.Add("container", TextOf(movie["container"]));
    for (const Json& stream : movie["streams"])
        lines.Add("stream " + TextOf(stream["index"]), TextOf(stream["type"]) + ", " +
                                                           TextOf(stream["codec"]) + ", tag " +
                                                           TextOf(stream["fourCC"]));
    lines.Add("video stream", TextOf(movie["videoStream"]));
    lines.Add("track code", TextOf(movie["fourCC"]) + " (container " + TextOf(movie["containerTag"]) + ")");
    lines.Add("codec", TextOf(movie["codec"]) + " " + TextOf(movie["profile"]));
    lines.Add("pixel format", TextOf(movie["pixelFormat"]));
    lines.Add("decoder", TextOfDecoder(movie["decoder"]));
    AddPicture(movie, lines);
    AddTime(movie, lines);
    for (const auto& [key, value] : movie["metadata"].items())
        lines.Add("  " + key, TextOf(value));
    return lines.Text();
}
