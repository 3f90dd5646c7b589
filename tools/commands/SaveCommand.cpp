#include "commands/SaveCommand.h"

#include "Cancellation.h"
#include "FrameRateText.h"
#include "frames/OutputProperties.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

constexpr double kMostKeyFrames = 64; ///< of the control

/// What the format has made of the rate: the same, its thousandths, or a rate over 1001.
Rational RateOfFile(const Rational& asked, double rate) {
    constexpr double tolerance = 1e-9;
    const double exact = static_cast<double>(asked.num) / static_cast<double>(asked.den);
    if (std::abs(rate - exact) <= exact * tolerance) return asked;
    const bool isThousandths = std::abs(rate * 1000.0 - std::round(rate * 1000.0)) < 0.001;
    const int64_t den = isThousandths ? 1000 : 1001;
    const int64_t num = std::llround(rate * static_cast<double>(den));
    const int64_t common = std::gcd(num, den);
    return {num / common, den / common};
}

bool HasSound(const MovieTrackInfo& movie) {
    return std::ranges::any_of(movie.streams,
                               [](const StreamInfo& stream) { return stream.type == "audio"; });
}

bool HasSquarePixels(const MovieTrackInfo& movie) { return movie.sampleAspect.num == movie.sampleAspect.den; }

void WarnAbout(const SaveOptions& options, const FrameTrack& track, const Rational& rate, Report& report) {
    const auto warn = [&](const std::string& words) {
        report.warnings.push_back(options.output + ": " + words);
    };
    if (rate != options.controls.frameRate) warn("its frame rate is rounded to " + FormatRational(rate));
    if (options.controls.keyFrames.value_or(0) > kMostKeyFrames)
        warn("has a key frame every 64 frames, which is the most");
    // The format tells encoders the height of a pixel as its width.
    if (track.movie && !HasSquarePixels(*track.movie))
        warn("its pixels are square; those of the input are " + FormatRational(track.movie->sampleAspect));
    if (track.movie && HasSound(*track.movie)) warn("the sound of the input is left out");
    for (const std::string& warning : InputWarnings(track))
        report.warnings.push_back(warning);
}

/// Tells the format, with the image, what it asks images for.
void Describe(const FrameTrack& track, Image& image) {
    if (!track.movie) return;
    image.ImageInfo.FindKey("Metadata").FindKey("TimeCode") = track.movie->timeCode.c_str();
    TagList attributes;
    attributes.Set(ImageTag_Interlaced, OutputFieldOrder(track) != FieldOrder::Progressive ? 1 : 0, false);
    image.SetAttrsTagList(attributes);
}

void Describe(const SaveOptions& options, const FrameTrack& track, const Rational& rate, Report& report) {
    const std::string size = std::to_string(track.width) + "x" + std::to_string(track.height);
    report.result["file"] = options.output;
    report.result["container"] = options.controls.container;
    report.result["encoder"] = options.controls.encoder;
    report.result["frames"] = track.frameCount;
    report.result["width"] = track.width;
    report.result["height"] = track.height;
    report.result["frameRate"] = FormatRational(rate);
    report.text = options.output + ": " + std::to_string(track.frameCount) + " frames " + size + " at " +
                  FormatRational(rate) + " a second, " + options.controls.encoder + " in " +
                  options.controls.container + "\n";
}

void SaveFrames(FrameInput& input, FormatSaver& saver, ProgressStyle style) {
    const FrameTrack& track = input.Track();
    // Encoders get 16 bits; images that have less or halves are as good as they are.
    const ImageDataKind kind = track.kind == ImageData_RGBAFloat ? ImageData_RGBA16 : track.kind;
    Progress progress("save", track.frameCount, style);
    for (int64_t index = 0; index < track.frameCount; ++index) {
        ThrowIfCancelled(track.name);
        const HostImage image = input.Read(index, kind);
        Describe(track, *image);
        saver.Save(image.get());
        progress.Step();
    }
    ThrowIfCancelled(track.name);
}

} // namespace

void RunSave(const SaveOptions& options, Report& report) {
    const std::unique_ptr<FrameInput> input = OpenFrameInput(options.input, options.inputOptions);
    const FrameTrack& track = input->Track();
    SaveOptions chosen = options;
    chosen.controls.frameRate = OutputRate(options.frameRate, track);
    FormatSaver saver(chosen.output, chosen.controls);
    const Rational rate = RateOfFile(chosen.controls.frameRate, saver.FrameRate());
    WarnAbout(chosen, track, rate, report);
    SaveFrames(*input, saver, options.progress);
    saver.Finish();
    Describe(chosen, track, rate, report);
}
