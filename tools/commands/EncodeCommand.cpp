#include "commands/EncodeCommand.h"

#include "Cancellation.h"
#include "Encoders.h"
#include "FourCCText.h"
#include "FrameRateText.h"
#include "frames/OutputProperties.h"
#include "frames/Packings.h"
#include "framework/CxAVCodecRegistry.h"
#include "host/Platform.h"
#include "media/MovieTrackWriter.h"
#include "media/ProResTags.h"

namespace {

constexpr uint32_t kQuality = 80;  ///< of 100, for encoders that ask
constexpr uint32_t kCodeAlpha = 2; ///< of `CxEncodedFrame::flags`
// Colour values in FFmpeg's numbering.
constexpr int kNotTold = 2;
constexpr int kRangeNotTold = 0;
constexpr int kVideoRange = 1;
constexpr int kMatrixRgb = 0;
constexpr int kBt709 = 1; ///< of primaries, transfer and matrix

/// An encoded frame whose buffer goes with it.
struct EncodedFrame : CxEncodedFrame {
    EncodedFrame() = default;
    ~EncodedFrame() {
        if (data != nullptr) Platform::FreeMemAligned(data);
    }
    EncodedFrame(const EncodedFrame&) = delete;
    EncodedFrame& operator=(const EncodedFrame&) = delete;
};

/// Value of the movie's file, or `unknown` for one that was only assumed.
int ToldValue(const TrackValue& value, int unknown) {
    return value.source == ValueSource::Assumed ? unknown : value.value;
}

/// Tags of a movie in video range that is made of RGB pixels: the matrix that the encoder converts with, or
/// that of RGB, and primaries and transfer of BT.709 where nobody tells others.
void TagAsMadeOfRgb(MovieTrackSettings& settings, int matrix) {
    settings.colorMatrix = matrix;
    settings.colorRange = kVideoRange;
    if (settings.colorPrimaries == kNotTold) settings.colorPrimaries = kBt709;
    if (settings.colorTransfer == kNotTold) settings.colorTransfer = kBt709;
}

/// Uncompressed YUV is converted with the BT.709 matrix in video range in both directions, so the tags of
/// such a movie stay true for one that is made of it.
void TagColors(const FrameTrack& track, const CxEncoderInfo& row, MovieTrackSettings& settings) {
    if (track.movie) {
        settings.colorPrimaries = ToldValue(track.movie->colorPrimaries, kNotTold);
        settings.colorTransfer = ToldValue(track.movie->colorTransfer, kNotTold);
        settings.colorMatrix = ToldValue(track.movie->colorMatrix, kNotTold);
        settings.colorRange = ToldValue(track.movie->colorRange, kVideoRange);
    }
    const bool isYuv = settings.colorMatrix != kMatrixRgb && settings.colorMatrix != kNotTold;
    if (PackingIsRgb(settings.fourCC)) {
        settings.colorMatrix = kNotTold;
        settings.colorRange = kRangeNotTold;
    } else if (CodesRgb(row)) {
        TagAsMadeOfRgb(settings, kMatrixRgb);
    } else if (IsProRes(settings.fourCC)) {
        TagAsMadeOfRgb(settings, ProResMatrix(settings.height));
    } else if (!track.isReadAsBt709 || !isYuv) {
        TagAsMadeOfRgb(settings, kBt709);
    }
}

MovieTrackSettings DescribeMovie(const EncodeOptions& options, const FrameTrack& track,
                                 const CxEncoderInfo& row) {
    MovieTrackSettings settings;
    settings.path = options.output;
    settings.fourCC = row.fourCC;
    settings.width = track.width;
    settings.height = track.height;
    settings.frameRate = OutputRate(options.frameRate, track);
    settings.fieldOrder = options.fieldOrder.value_or(static_cast<int>(OutputFieldOrder(track)));
    settings.alpha = PackingHasAlpha(row.fourCC) || (options.alpha && OffersAlpha(row));
    if (track.movie) {
        settings.timeCode = track.movie->timeCode;
        settings.pixelAspect = track.movie->sampleAspect;
    }
    TagColors(track, row, settings);
    return settings;
}

CxVideoSettings DescribeStream(const MovieTrackSettings& movie, const CxEncoderInfo& row) {
    CxVideoSettings settings;
    settings.width = movie.width;
    settings.height = movie.height;
    settings.frameDuration = static_cast<uint32_t>(movie.frameRate.den);
    settings.timeScale = static_cast<uint32_t>(movie.frameRate.num);
    settings.text0 = row.name;
    settings.text1 = row.name;
    settings.fourCC = row.fourCC;
    settings.fieldOrder = static_cast<uint32_t>(movie.fieldOrder);
    settings.value7 = static_cast<uint32_t>(movie.pixelAspect.num);
    settings.value8 = static_cast<uint32_t>(movie.pixelAspect.den);
    settings.hasAlpha = movie.alpha;
    settings.value9 = static_cast<uint16_t>(movie.colorPrimaries);
    settings.value10 = static_cast<uint16_t>(movie.colorTransfer);
    settings.value11 = static_cast<uint16_t>(movie.colorMatrix);
    settings.quality = kQuality;
    return settings;
}

void CheckSize(const FrameTrack& track, const CxEncoderInfo& row) {
    const auto fits = [](uint32_t bound, int32_t size) {
        return bound == 0 || bound == static_cast<uint32_t>(size);
    };
    if (fits(row.width, track.width) && fits(row.height, track.height)) return;
    throw ToolError(ExitStatus::Unsupported, track.name,
                    "'" + row.name + "' takes pictures of " + std::to_string(row.width) + "x" +
                        std::to_string(row.height) + " alone");
}

/// Opens the encoder and completes the description of the movie by what the encoder says.
std::unique_ptr<CxAbstractAVCodec> OpenEncoder(const CxEncoderInfo& row, MovieTrackSettings& movie) {
    std::unique_ptr<CxAbstractAVCodec> encoder(CxAVCodecRegistry::CreateEncoder(row.name));
    CxVideoSettings settings = DescribeStream(movie, row);
    if (!encoder || encoder->SetEncoderSettings(settings) != CxAV_OK)
        throw ToolError(ExitStatus::Unsupported, movie.path, "'" + row.name + "' does not start");
    movie.extraData = settings.extraData;
    return encoder;
}

/// Encodes an image, or with none goes on with those that the encoder holds back.
/// @return whether a frame came out and was written
bool EncodeImage(CxAbstractAVCodec& encoder, const CxEncoderInfo& row, const MovieTrackSettings& movie,
                 Image* image, MovieTrackWriter& writer) {
    EncodedFrame frame;
    frame.codecTag = CodecTag(row);
    frame.fieldOrder = static_cast<uint32_t>(movie.fieldOrder);
    frame.flags = movie.alpha ? kCodeAlpha : 0;
    const CxAVError error = encoder.EncodeFrame(image, frame);
    if (error != CxAV_OK)
        throw ToolError(error == CxAV_UNSUPPORTED ? ExitStatus::Unsupported : ExitStatus::JobFailed,
                        movie.path, "'" + row.name + "' can't encode a frame");
    if (frame.data == nullptr) return false;
    if (IsProRes(movie.fourCC)) TagProResFrame(movie, {frame.data, frame.size});
    // Back-ends that code pictures by others fill in the times; what they leave out is a key frame.
    writer.WriteFrame(frame.data, frame.size, frame.timing.timeBase == 0 || frame.timing.isKeyFrame);
    return true;
}

void Describe(const FrameTrack& track, const MovieTrackSettings& movie, const CxEncoderInfo& row,
              Report& report) {
    const std::string rate = FormatRational(movie.frameRate);
    const std::string fourCC = FourCCText(movie.fourCC);
    report.result["file"] = movie.path;
    report.result["codec"] = row.name;
    report.result["fourCC"] = fourCC;
    report.result["frames"] = track.frameCount;
    report.result["width"] = movie.width;
    report.result["height"] = movie.height;
    report.result["frameRate"] = rate;
    report.text = movie.path + ": " + std::to_string(track.frameCount) + " frames " +
                  std::to_string(movie.width) + "x" + std::to_string(movie.height) + " at " + rate +
                  " a second, " + row.name + " (" + fourCC + ")\n";
}

void WarnAbout(const EncodeOptions& options, const FrameTrack& track, const CxEncoderInfo& row,
               const MovieTrackSettings& movie, Report& report) {
    const std::string encoder = options.output + ": '" + options.codec + "'";
    if (options.alpha && !movie.alpha) report.warnings.push_back(encoder + " carries no alpha");
    if (const int order = OwnFieldOrder(row); order != 0 && order != movie.fieldOrder)
        report.warnings.push_back(encoder + " codes its frames " +
                                  (order == 1 ? "as progressive" : "with the top field first"));
    for (const std::string& warning : InputWarnings(track))
        report.warnings.push_back(warning);
}

} // namespace

void RunEncode(const EncodeOptions& options, Report& report) {
    const CxEncoderInfo row = FindEncoder(options.codec);
    const std::unique_ptr<FrameInput> input = OpenFrameInput(options.input, options.inputOptions);
    const FrameTrack& track = input->Track();
    CheckSize(track, row);
    MovieTrackSettings movie = DescribeMovie(options, track, row);
    const std::unique_ptr<CxAbstractAVCodec> encoder = OpenEncoder(row, movie);
    WarnAbout(options, track, row, movie, report);

    MovieTrackWriter writer(movie);
    Progress progress("encode", track.frameCount, options.progress);
    int64_t written = 0;
    for (int64_t index = 0; index < track.frameCount; ++index) {
        ThrowIfCancelled(options.input);
        const HostImage image = input->Read(index, track.kind);
        written += EncodeImage(*encoder, row, movie, image.get(), writer) ? 1 : 0;
        progress.Step();
    }
    while (written < track.frameCount && EncodeImage(*encoder, row, movie, nullptr, writer))
        ++written;
    if (written < track.frameCount)
        throw ToolError(ExitStatus::JobFailed, movie.path, "'" + row.name + "' gave too few frames");
    ThrowIfCancelled(options.input);
    writer.Finish();
    Describe(track, movie, row, report);
}
