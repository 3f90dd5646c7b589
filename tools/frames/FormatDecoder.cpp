#include "frames/FormatDecoder.h"

#include "QuietStream.h"
#include "frames/FrameFailure.h"
#include "frames/HostFormats.h"
#include "images/HostImage.h"
#include "media/Demuxer.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace {

/// Where a format's frames begin.
struct FormatStart {
    int64_t ticks;  ///< time of its frame 0, in the source's ticks
    bool isMovedTo; ///< only once that frame was decoded: the container tells a later one
};

FormatStart StartOf(MovieTrackSource& source) {
    const int64_t first = source.GetFrameTicks(0);
    const int64_t told = Demuxer(source.Info().path).Track().start_time;
    if (told == AV_NOPTS_VALUE) return {first, false};
    // Only where samples are no frames may the container tell of one of these. (Where it has no times of
    // presentation, what it tells and the source's times have nothing in common.)
    const bool isOfSample = told < first && source.GetSampleCount() > source.GetFrameCount();
    return {isOfSample ? told : first, first < told};
}

/// Decodes through an open host format.
///
/// The source numbers the frames that are there, and a format the steps of its own rate from the start that
/// the container tells. Mostly the numbers are the same. They differ where frames are not evenly spaced,
/// where the format counts fields, and where the first pictures of a cut file can't be decoded; a frame's
/// time gives the format's number then.
class FormatDecoder : public FrameDecoder {
public:
    FormatDecoder(const std::string& name, std::unique_ptr<ImageFormat> format, MovieTrackSource& source)
        : FrameDecoder(name, Matrix::OfTrack), format_(std::move(format)),
          rate_(format_->GetAttr(kFormatFrameRate, 0.0)), source_(source), start_(StartOf(source)) {}

    void Decode(int32_t frame, Image* image) override {
        const std::string& path = source_.Info().path;
        const int64_t number = NumberOf(frame);
        if (number < 0 || number > kLastNumber)
            FailFrame(path, frame, ExitStatus::Unsupported, "the host format doesn't count that far");
        if (NumberOf(frame - 1) == number || NumberOf(frame + 1) == number)
            FailFrame(path, frame, ExitStatus::Unsupported,
                      "too close to the next frame for the rate of the host format");
        if (start_.isMovedTo) Load(0, NewHostImage(1, 1, ImageData_RGBA8).get());
        start_.isMovedTo = false;
        if (!Load(number, image)) FailFrame(path, frame, ExitStatus::Damaged, "it can't be decoded");
    }

private:
    /// Formats look some frames ahead of the one that they are asked for.
    static constexpr int64_t kLastNumber = INT32_MAX / 2;

    /// The format's number of a frame; -1 for one that isn't there.
    int64_t NumberOf(int32_t frame) const {
        if (frame < 0 || frame >= source_.GetFrameCount()) return -1;
        if (rate_ <= 0) return frame;
        const Rational base = source_.GetTimeBase();
        const auto ticks = static_cast<double>(source_.GetFrameTicks(frame) - start_.ticks);
        const double seconds = ticks * static_cast<double>(base.num) / static_cast<double>(base.den);
        return std::llround(std::min(seconds * rate_, static_cast<double>(kLastNumber) + 1));
    }

    /// Formats say on standard error where a file ends, which they may meet on the way to any frame.
    bool Load(int64_t number, Image* image) {
        const QuietStream quiet(stderr);
        TagList tags;
        return image != nullptr && format_->LoadFrameTagList(static_cast<uint32_t>(number), image, tags);
    }

    std::unique_ptr<ImageFormat> format_;
    double rate_; ///< frames a second; 0 if the format doesn't tell
    const MovieTrackSource& source_;
    FormatStart start_;
};

} // namespace

std::unique_ptr<FrameDecoder> OpenFormatDecoder(MovieTrackSource& source) {
    OpenedFormat opened = OpenHostFormat(source.Info().path);
    if (!opened.format) return nullptr;
    return std::make_unique<FormatDecoder>(FormatName(*opened.registry), std::move(opened.format), source);
}
