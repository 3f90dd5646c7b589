#include "CommandLine.h"

#include "FrameList.h"
#include "FrameRateText.h"
#include "commands/DecodeCommand.h"
#include "commands/EncodeCommand.h"
#include "commands/InfoCommand.h"
#include "commands/ListCommand.h"
#include "commands/SaveCommand.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstring>
#include <map>

namespace {

constexpr const char* kDescription =
    "Reads and writes movies through the video codecs of corvexvideoformats.\n"
    "Exit status: 0 done, 1 the job failed, 2 wrong usage, 3 cannot open, 4 damaged input, 5 unsupported, "
    "6 cannot write, 130 cancelled.";

constexpr const char* kDecodeDescription = "Write frames as images (exr, png, tif, dpx). Values are written "
                                           "as they are decoded: there is no transfer "
                                           "conversion, and alpha is neither multiplied nor divided.";

constexpr const char* kEncodeDescription =
    "Make a movie of a movie or an image sequence, through an encoder of the registry. Values are encoded as "
    "they are read: there is no transfer conversion.";

constexpr const char* kSaveDescription =
    "Make a movie of a movie or an image sequence through FFmpeg, by the save controls of the host format. "
    "'list containers' says which containers there are and what they hold.";

constexpr const char* kRateHelp =
    "Frames per second, such as 24, 23.976 or 24000/1001; by default the movie's, or 24";

/// What the options are before they are understood.
struct RawOptions {
    std::string section;
    std::string input;
    std::string output;
    std::string frames;
    std::string depth = "default";
    std::string via = "auto";
    std::string missing = "refuse";
    std::string codec;
    std::string container;
    std::string encoder;
    std::string encoderOptions;
    std::optional<double> dataRate;
    std::optional<double> keyFrames;
    std::string frameRate;
    std::string fieldOrder;
    std::string progress = "bar";
    bool alpha = false;
    bool json = false;
};

const std::map<std::string, ImageDepth> kDepths = {{"default", ImageDepth::Default},
                                                   {"8", ImageDepth::Bits8},
                                                   {"16", ImageDepth::Bits16},
                                                   {"half", ImageDepth::Half},
                                                   {"float", ImageDepth::Float}};
const std::map<std::string, DecodeRoad> kRoads = {
    {"auto", DecodeRoad::Auto}, {"registry", DecodeRoad::Registry}, {"format", DecodeRoad::Format}};
const std::map<std::string, MissingFrames> kMissing = {
    {"refuse", MissingFrames::Refuse}, {"hold", MissingFrames::Hold}, {"black", MissingFrames::Black}};
const std::map<std::string, ProgressStyle> kProgress = {{"bar", ProgressStyle::Bar},
                                                        {"json", ProgressStyle::Json}};
const std::map<std::string, int> kFieldOrders = {{"progressive", 1}, {"tff", 2}, {"bff", 3}};

/// An option that takes one word of a list.
template <typename Value>
void AddChoice(CLI::App& command, const std::string& name, std::string& word,
               const std::map<std::string, Value>& choices, const std::string& help) {
    std::vector<std::string> words;
    words.reserve(choices.size());
    for (const auto& [choice, value] : choices)
        words.push_back(choice);
    command.add_option(name, word, help)->check(CLI::IsMember(words));
}

void AddJobOptions(CLI::App& command, RawOptions& raw) {
    AddChoice(command, "--missing", raw.missing, kMissing, "What stands for missing images of a sequence");
    AddChoice(command, "--progress", raw.progress, kProgress, "How progress is shown on standard error");
}

void AddList(CLI::App& app, RawOptions& raw) {
    CLI::App* command = app.add_subcommand("list", "Say what this build offers, and what it lacks");
    const std::vector<std::string> sections = {"decoders", "encoders", "containers", "formats"};
    command->add_option("section", raw.section, "One part of the list")->check(CLI::IsMember(sections));
    command->add_flag("--json", raw.json, "Answer as one JSON object");
}

void AddInfo(CLI::App& app, RawOptions& raw) {
    CLI::App* command = app.add_subcommand("info", "Say what is known of a movie or an image sequence");
    command->add_option("input", raw.input, "Movie, image or image sequence")->required();
    command->add_flag("--json", raw.json, "Answer as one JSON object");
}

void AddDecode(CLI::App& app, RawOptions& raw) {
    CLI::App* command = app.add_subcommand("decode", kDecodeDescription);
    command->add_option("input", raw.input, "Movie or image sequence")->required();
    command->add_option("-o,--output", raw.output, "Images, such as name.%04d.exr")->required();
    command->add_option("--frames", raw.frames, "Frames to write, such as 0-9,20,100-");
    AddChoice(*command, "--depth", raw.depth, kDepths,
              "Depth of the images; by default half for exr, 16 bits for png and tif, 10 for dpx");
    AddChoice(*command, "--via", raw.via, kRoads, "What decodes a movie");
    AddJobOptions(*command, raw);
    command->add_flag("--json", raw.json, "Answer as one JSON object");
}

void AddEncode(CLI::App& app, RawOptions& raw) {
    CLI::App* command = app.add_subcommand("encode", kEncodeDescription);
    command->add_option("input", raw.input, "Movie or image sequence")->required();
    command->add_option("-o,--output", raw.output, "Movie")->required();
    command->add_option("--codec", raw.codec, "Display name of an encoder, as list says it")->required();
    command->add_option("--fps", raw.frameRate, kRateHelp);
    command->add_flag("--alpha", raw.alpha, "Code the alpha channel, where the encoder can");
    AddChoice(*command, "--field-order", raw.fieldOrder, kFieldOrders,
              "By default the movie's, or progressive");
    AddJobOptions(*command, raw);
    command->add_flag("--json", raw.json, "Answer as one JSON object");
}

void AddSave(CLI::App& app, RawOptions& raw) {
    CLI::App* command = app.add_subcommand("save", kSaveDescription);
    command->add_option("input", raw.input, "Movie or image sequence")->required();
    command->add_option("-o,--output", raw.output, "Movie")->required();
    command->add_option("--container", raw.container, "Name of a container, as list says it")->required();
    command->add_option("--encoder", raw.encoder, "Label of one of its encoders")->required();
    command->add_option("--fps", raw.frameRate, kRateHelp);
    command->add_option("--data-rate", raw.dataRate, "Kilobytes of 1024 bytes a second; 512 by default")
        ->check(CLI::NonNegativeNumber);
    command
        ->add_option("--key-frames", raw.keyFrames,
                     "Frames from one key frame to the next, 0 to 64; 1 by default")
        ->check(CLI::NonNegativeNumber);
    command->add_option("--options", raw.encoderOptions,
                        "Options of the encoder, such as preset=slow,crf=18");
    AddJobOptions(*command, raw);
    command->add_flag("--json", raw.json, "Answer as one JSON object");
}

[[noreturn]] void FailUsage(const std::string& option, const std::string& cause) {
    throw ToolError(ExitStatus::Usage, option, cause);
}

FrameInputOptions InputOptions(const RawOptions& raw) {
    return {kRoads.at(raw.via), kMissing.at(raw.missing)};
}

DecodeOptions ReadDecodeOptions(const RawOptions& raw) {
    DecodeOptions options;
    options.input = raw.input;
    options.output = raw.output;
    options.depth = kDepths.at(raw.depth);
    options.inputOptions = InputOptions(raw);
    options.progress = kProgress.at(raw.progress);
    if (raw.frames.empty()) return options;
    const std::optional<FrameList> frames = FrameList::Parse(raw.frames);
    if (!frames) FailUsage("--frames " + raw.frames, "not a list of frames such as 0-9,20,100-");
    options.frames = *frames;
    return options;
}

std::optional<Rational> ReadFrameRate(const RawOptions& raw) {
    if (raw.frameRate.empty()) return std::nullopt;
    const std::optional<Rational> rate = ParseFrameRate(raw.frameRate);
    if (!rate) FailUsage("--fps " + raw.frameRate, "not a rate such as 24, 23.976 or 24000/1001");
    return rate;
}

EncodeOptions ReadEncodeOptions(const RawOptions& raw) {
    EncodeOptions options;
    options.input = raw.input;
    options.output = raw.output;
    options.codec = raw.codec;
    options.alpha = raw.alpha;
    options.inputOptions = InputOptions(raw);
    options.progress = kProgress.at(raw.progress);
    if (!raw.fieldOrder.empty()) options.fieldOrder = kFieldOrders.at(raw.fieldOrder);
    options.frameRate = ReadFrameRate(raw);
    return options;
}

SaveOptions ReadSaveOptions(const RawOptions& raw) {
    SaveOptions options;
    options.input = raw.input;
    options.output = raw.output;
    options.controls.container = raw.container;
    options.controls.encoder = raw.encoder;
    options.controls.dataRate = raw.dataRate;
    options.controls.keyFrames = raw.keyFrames;
    options.controls.options = raw.encoderOptions;
    options.inputOptions = InputOptions(raw);
    options.progress = kProgress.at(raw.progress);
    options.frameRate = ReadFrameRate(raw);
    return options;
}

using Job = std::function<void(Report&)>;

/// The job that the command line asks for.
Job ReadJob(const CLI::App& app, const RawOptions& raw) {
    if (app.got_subcommand("list")) return [raw](Report& report) { RunList(raw.section, report); };
    if (app.got_subcommand("info")) return [raw](Report& report) { RunInfo(raw.input, report); };
    if (app.got_subcommand("decode"))
        return [options = ReadDecodeOptions(raw)](Report& report) { RunDecode(options, report); };
    if (app.got_subcommand("save"))
        return [options = ReadSaveOptions(raw)](Report& report) { RunSave(options, report); };
    return [options = ReadEncodeOptions(raw)](Report& report) { RunEncode(options, report); };
}

bool HasJsonFlag(int argc, char** argv) {
    return std::any_of(argv, argv + argc, [](const char* word) { return std::strcmp(word, "--json") == 0; });
}

} // namespace

void CommandLine::Parse(int argc, char** argv) {
    json_ = HasJsonFlag(argc, argv);
    CLI::App app(kDescription, "corvexvf");
    RawOptions raw;
    app.require_subcommand(1);
    AddList(app, raw);
    AddInfo(app, raw);
    AddDecode(app, raw);
    AddEncode(app, raw);
    AddSave(app, raw);
    try {
        app.parse(argc, argv);
        run_ = ReadJob(app, raw);
    } catch (const CLI::CallForHelp&) {
        const std::vector<CLI::App*> commands = app.get_subcommands();
        const std::string help = commands.empty() ? app.help() : commands.front()->help();
        json_ = false;
        run_ = [help](Report& report) { report.text = help; };
    } catch (const CLI::ParseError& error) {
        FailUsage("command line", error.what());
    }
}
