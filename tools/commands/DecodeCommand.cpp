#include "commands/DecodeCommand.h"

#include "Cancellation.h"
#include "TimeCode.h"
#include "images/ImageWriteQueue.h"
#include "images/SequencePattern.h"

#include <algorithm>
#include <limits>

namespace {

std::vector<int64_t> ChooseFrames(const FrameTrack& track, const FrameList& list) {
    const int64_t last = track.firstNumber + track.frameCount - 1;
    const auto numbers = list.Resolve(track.firstNumber, last);
    if (!numbers)
        throw ToolError(ExitStatus::Usage, track.name,
                        "--frames names frames beyond " + std::to_string(track.firstNumber) + "-" +
                            std::to_string(last));
    return *numbers;
}

/// Paths of the images, by frame number.
class OutputNames {
public:
    OutputNames(const std::string& output, size_t count)
        : output_(output), pattern_(SequencePattern::Parse(output)) {
        if (!pattern_ && count != 1)
            throw ToolError(ExitStatus::Usage, output,
                            "more than one frame needs one number field, such as name.%04d.exr");
    }
    std::string Of(int64_t number) const { return pattern_ ? pattern_->PathOf(number) : output_; }

private:
    std::string output_;
    std::optional<SequencePattern> pattern_;
};

/// Metadata of each image, from what the movie says.
class FrameMetadata {
public:
    explicit FrameMetadata(const FrameTrack& track) {
        if (!track.movie) return;
        const Rational& rate = track.movie->frameRate;
        timeCode_ = TimeCode::Parse(track.movie->timeCode, rate);
        if (std::max(rate.num, rate.den) > std::numeric_limits<int32_t>::max()) return;
        metadata_.frameRateNumerator = static_cast<int32_t>(rate.num);
        metadata_.frameRateDenominator = static_cast<int32_t>(rate.den);
    }
    ImageMetadata Of(int64_t index) const {
        ImageMetadata metadata = metadata_;
        if (timeCode_) metadata.timeCode = timeCode_->PackedAfter(index);
        return metadata;
    }

private:
    std::optional<TimeCode> timeCode_;
    ImageMetadata metadata_;
};

void WriteFrames(FrameInput& input, const std::vector<int64_t>& numbers, const OutputNames& names,
                 const ImageStorage& storage, ProgressStyle progressStyle) {
    const FrameTrack& track = input.Track();
    const FrameMetadata metadata(track);
    Progress progress("decode", static_cast<int64_t>(numbers.size()), progressStyle);
    ImageWriteQueue queue(storage, track.hasAlpha);
    for (const int64_t number : numbers) {
        ThrowIfCancelled(track.name);
        const int64_t index = number - track.firstNumber;
        queue.Push(names.Of(number), input.Read(index, storage.kind), metadata.Of(index));
        progress.Step();
    }
    queue.Finish();
}

void Describe(const FrameTrack& track, const std::vector<int64_t>& numbers, const OutputNames& names,
              Report& report) {
    auto& files = report.result["files"] = nlohmann::ordered_json::array();
    for (const int64_t number : numbers)
        files.push_back(names.Of(number));
    report.result["frames"] = numbers.size();
    report.result["width"] = track.width;
    report.result["height"] = track.height;
    report.result["alpha"] = track.hasAlpha;
    report.result["backEnd"] = track.backEnd;
    report.text = names.Of(numbers.front()) + (numbers.size() > 1 ? " - " + names.Of(numbers.back()) : "") +
                  ": " + std::to_string(numbers.size()) + " frames " + std::to_string(track.width) + "x" +
                  std::to_string(track.height) + ", decoded by " + track.backEnd + "\n";
}

} // namespace

void RunDecode(const DecodeOptions& options, Report& report) {
    const ImageStorage storage = ChooseImageStorage(options.output, options.depth);
    const std::unique_ptr<FrameInput> input = OpenFrameInput(options.input, options.inputOptions);
    const FrameTrack& track = input->Track();
    const std::vector<int64_t> numbers = ChooseFrames(track, options.frames);
    const OutputNames names(options.output, numbers.size());
    if (track.movie && !track.movie->damage.empty())
        report.warnings.push_back(options.input + ": " + track.movie->damage);
    WriteFrames(*input, numbers, names, storage, options.progress);
    Describe(track, numbers, names, report);
}
