// The command that makes raw camera clips: reads its command line and says how it ended.

#include "FrameRateText.h"
#include "QuietLoading.h"
#include "media/ToolError.h"
#include "vrelmake/ClipMaking.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <new>

namespace {

constexpr const char* description =
    "Makes a raw camera clip (.vrel) of an image sequence or a movie: the sensor's samples that decode to "
    "its "
    "pictures.\nExit status: 0 done, 1 the job failed, 2 wrong usage, 3 cannot open, 4 damaged input, 5 "
    "unsupported, 6 cannot write.";

/// The range of an attribute, for the command line.
template <typename Owner>
CLI::Range RangeOf(std::span<const rawsdk::Attribute<Owner>> attributes, uint32_t code) {
    const rawsdk::Limits& limits = rawsdk::FindAttribute(attributes, code)->limits;
    return {limits.lowest, limits.highest};
}

CLI::IsMember ChoicesOf(uint32_t code) {
    const auto choices = rawsdk::FindAttribute(rawsdk::ClipAttributes(), code)->choices;
    return CLI::IsMember(std::vector<std::string>(choices.begin(), choices.end()));
}

void AddSettings(CLI::App& app, ClipOptions& options) {
    const auto frame = [](uint32_t code) { return RangeOf(rawsdk::FrameAttributes(), code); };
    rawsdk::ClipSettings& clip = options.clipSettings;
    rawsdk::FrameSettings& frames = options.frameSettings;
    app.add_option("--gamma", clip.gamma, "How pictures are encoded")->check(ChoicesOf(rawGamma));
    app.add_option("--lut-mode", clip.lutMode, "Table that decoding applies")->check(ChoicesOf(rawLutMode));
    app.add_option("--kelvin", frames.kelvin, "White balance")->check(frame(rawWhiteBalanceKelvin));
    app.add_option("--tint", frames.tint, "White balance")->check(frame(rawWhiteBalanceTint));
    app.add_option("--exposure", frames.exposure, "Stops")->check(frame(rawExposure));
    app.add_option("--iso", frames.iso, "As the camera tells it")->check(CLI::NonNegativeNumber);
}

void AddOptions(CLI::App& app, ClipOptions& options, std::string& rate) {
    app.add_option("input", options.input, "Image, image sequence or movie")->required();
    app.add_option("-o,--output", options.output, "Clip")->required();
    app.add_option("--fps", rate, "Frames per second, such as 24, 23.976 or 24000/1001; 24 by default");
    app.add_option("--timecode", options.timecode, "Of the first frame: hh:mm:ss:ff, or hh:mm:ss;ff");
    app.add_option("--metadata", options.metadataFile, "JSON file with entries of the clip and of frames");
    app.add_option("--lut", options.table, "Table of colours (.cube) to put into the clip");
    app.add_option("--sidecar-lut", options.sidecarTable, "Table of colours (.cube) to put beside the clip");
    app.add_option("--camera", options.camera, "Model of the camera");
    AddSettings(app, options);
}

/// @return the exit status for help and wrong usage; nothing if there is a clip to make
std::optional<int> ReadOptions(int argc, char** argv, ClipOptions& options) {
    CLI::App app(description, "vrelmake");
    std::string rate = "24";
    AddOptions(app, options, rate);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : static_cast<int>(ExitStatus::Usage);
    }
    const std::optional<Rational> read = ParseFrameRate(rate);
    if (!read)
        throw ToolError(ExitStatus::Usage, "--fps " + rate, "not a rate such as 24, 23.976 or 24000/1001");
    options.frameRate = *read;
    return std::nullopt;
}

int Run(int argc, char** argv) {
    ClipOptions options;
    if (const std::optional<int> status = ReadOptions(argc, argv, options)) return *status;
    MakeClip(options);
    return static_cast<int>(ExitStatus::Done);
}

} // namespace

int main(int argc, char** argv) {
    EndQuietLoading();
    try {
        return Run(argc, argv);
    } catch (const ToolError& error) {
        std::fprintf(stderr, "vrelmake: %s\n", error.what());
        return static_cast<int>(error.status());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vrelmake: %s\n", error.what());
        return static_cast<int>(ExitStatus::JobFailed);
    }
}
