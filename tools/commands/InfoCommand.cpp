#include "commands/InfoCommand.h"

#include "Text.h"
#include "commands/MovieDescription.h"
#include "commands/ParameterSetDescription.h"
#include "frames/ClipInput.h"
#include "images/ImageFileReader.h"
#include "images/ImageFormats.h"
#include "images/ImageOperations.h"
#include "images/ImageSequence.h"
#include "media/MovieTrackSource.h"
#include "media/StreamAnalysis.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kChannelNames[] = {"R", "G", "B", "A"};

Json RangesOf(const Image& image, bool hasAlpha) {
    const ChannelRanges ranges = MeasureRanges(image);
    Json object;
    for (size_t channel = 0; channel < (hasAlpha ? 4 : 3); ++channel)
        object[kChannelNames[channel]] = {ranges.least[channel], ranges.greatest[channel]};
    return object;
}

/// An image sequence, with the values that its first file holds; a hole in it is told, not refused.
Json DescribeImages(const std::string& input) {
    const ImageSequence sequence(input, MissingFrames::Black);
    ImageFileReader reader(sequence.FirstFile());
    const ImageFileInfo& info = reader.Info();
    Json object;
    object["kind"] = "images";
    object["format"] = info.format;
    object["width"] = info.width;
    object["height"] = info.height;
    object["channels"] = info.channels;
    object["depth"] = info.depth;
    object["firstNumber"] = sequence.FirstNumber();
    object["lastNumber"] = sequence.FirstNumber() + sequence.FrameCount() - 1;
    object["frameCount"] = sequence.FrameCount();
    object["missing"] = sequence.MissingNumbers();
    object["firstFile"] = sequence.FirstFile();
    object["range"] = RangesOf(*reader.Read(), info.hasAlpha);
    return object;
}

std::string TextOfImages(const Json& object) {
    const std::string channels = Join(object["channels"], " ");
    std::string text = "first file  " + object["firstFile"].get<std::string>() + "\n";
    text += "format      " + object["format"].get<std::string>() + "\n";
    text += "size        " + object["width"].dump() + "x" + object["height"].dump() + "\n";
    text += "channels    " + channels + ", " + object["depth"].get<std::string>() + "\n";
    text += "frames      " + object["frameCount"].dump() + ", " + object["firstNumber"].dump() + " to " +
            object["lastNumber"].dump() + "\n";
    const std::string missing = object["missing"].get<std::string>();
    if (!missing.empty()) text += "missing     " + missing + "\n";
    for (const auto& [channel, range] : object["range"].items())
        text += "values " + channel + "    " + range[0].dump() + " to " + range[1].dump() + "\n";
    return text;
}

void Describe(const MovieTrackInfo& movie, Report& report) {
    report.result = DescribeMovie(movie);
    report.text = TextOfMovie(report.result);
    if (!movie.damage.empty()) report.warnings.push_back(movie.path + ": " + movie.damage);
}

} // namespace

void RunInfo(const std::string& input, Report& report) {
    if (FindImageFormat(input) != nullptr) {
        report.result = DescribeImages(input);
        report.text = TextOfImages(report.result);
        return;
    }
    if (ClipInput::IsClip(input)) {
        Describe(*ClipInput(input, DecodeRoad::Format).Track().movie, report);
        return;
    }
    const std::unique_ptr<MovieTrackSource> source = MovieTrackSource::Open(input);
    Describe(source->Info(), report);
    if (const std::optional<StreamAnalysis> analysis = AnalyseStream(*source)) {
        report.result["parameterSets"] = DescribeParameterSets(*analysis, source->Info());
        report.text += TextOfParameterSets(report.result["parameterSets"]);
    }
}
