#include "media/MovieTrackWriter.h"

#include "media/OutputStream.h"
#include "media/ToolError.h"
#include "media/TrackFormat.h"
#include "pixel/PixelConvert.h"

#include <algorithm>
#include <climits>
#include <cstring>

extern "C" {
#include <libavutil/timecode.h>
}

namespace {

[[noreturn]] void RefuseSettings(const MovieTrackSettings& settings, const std::string& cause) {
    throw ToolError(ExitStatus::Usage, settings.path, cause);
}

AVRational RateOf(const MovieTrackSettings& settings) {
    const Rational& rate = settings.frameRate;
    AVRational reduced{};
    if (rate.num < 1 || rate.den < 1 || !av_reduce(&reduced.num, &reduced.den, rate.num, rate.den, INT_MAX)) {
        RefuseSettings(settings,
                       "no frame rate: " + std::to_string(rate.num) + "/" + std::to_string(rate.den));
    }
    return reduced;
}

void CheckSettings(const MovieTrackSettings& settings, AVRational rate) {
    constexpr int sizeLimit = 32767;
    const auto isSize = [](int size) { return size >= 1 && size <= sizeLimit; };
    if (!isSize(settings.width) || !isSize(settings.height)) {
        RefuseSettings(settings, "no size for a movie: " + std::to_string(settings.width) + "x" +
                                     std::to_string(settings.height));
    }
    if (settings.fieldOrder < 1 || settings.fieldOrder > 3) RefuseSettings(settings, "no such field order");
    AVTimecode timeCode;
    if (!settings.timeCode.empty() &&
        av_timecode_init_from_string(&timeCode, rate, settings.timeCode.c_str(), nullptr) < 0) {
        RefuseSettings(settings, "no time code at this frame rate: " + settings.timeCode);
    }
}

AVFieldOrder FieldOrderOf(const MovieTrackSettings& settings) {
    if (settings.fieldOrder == 2) return AV_FIELD_TT;
    return settings.fieldOrder == 3 ? AV_FIELD_BB : AV_FIELD_PROGRESSIVE;
}

void SetExtraData(AVCodecParameters& parameters, const std::vector<uint8_t>& bytes) {
    if (bytes.empty()) return;
    parameters.extradata = static_cast<uint8_t*>(av_mallocz(bytes.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    if (parameters.extradata == nullptr) throw std::bad_alloc();
    std::memcpy(parameters.extradata, bytes.data(), bytes.size());
    parameters.extradata_size = static_cast<int>(bytes.size());
}

void SetParameters(AVStream& stream, const MovieTrackSettings& settings, const TrackFormat& format) {
    AVCodecParameters& parameters = *stream.codecpar;
    parameters.codec_type = AVMEDIA_TYPE_VIDEO;
    parameters.codec_id = format.codec;
    parameters.codec_tag = format.tag;
    parameters.format = format.pixelFormat;
    parameters.bits_per_coded_sample = format.bitsPerPixel;
    parameters.width = settings.width;
    parameters.height = settings.height;
    parameters.field_order = FieldOrderOf(settings);
    parameters.color_range = static_cast<AVColorRange>(settings.colorRange);
    parameters.color_space = static_cast<AVColorSpace>(settings.colorMatrix);
    parameters.color_primaries = static_cast<AVColorPrimaries>(settings.colorPrimaries);
    parameters.color_trc = static_cast<AVColorTransferCharacteristic>(settings.colorTransfer);
    SetExtraData(parameters, settings.extraData);
}

void SetAspect(AVStream& stream, Rational aspect) {
    if (aspect.num < 1 || aspect.den < 1) return;
    av_reduce(&stream.sample_aspect_ratio.num, &stream.sample_aspect_ratio.den, aspect.num, aspect.den,
              INT_MAX);
    stream.codecpar->sample_aspect_ratio = stream.sample_aspect_ratio;
}

} // namespace

struct MovieTrackWriter::State {
    explicit State(const MovieTrackSettings& settings);
    const uint8_t* PadRows(const uint8_t* data, size_t& size);
    void OpenTrack(const MovieTrackSettings& settings, const TrackFormat& format);

    std::string path;
    AVRational rate;
    int height;
    size_t rowBytes = 0; ///< of the frames given; 0 for compressed ones
    size_t fileRowBytes = 0;
    std::unique_ptr<OutputStream> file;
    AvOutput output; ///< writes through `file`, and so goes before it
    AVStream* stream = nullptr;
    AvPacket packet = NewPacket();
    std::vector<uint8_t> padded;
    int64_t frameCount = 0;
};

MovieTrackWriter::State::State(const MovieTrackSettings& settings)
    : path(settings.path), rate(RateOf(settings)), height(settings.height) {
    SilenceLibav();
    CheckSettings(settings, rate);
    const TrackFormat format = ChooseTrackFormat(path, settings.fourCC, settings.alpha);
    if (format.pixelFormat != AV_PIX_FMT_NONE || format.codec == AV_CODEC_ID_RAWVIDEO) {
        rowBytes = PixelConvert::CalcRowBytes(settings.fourCC, static_cast<uint32_t>(settings.width));
        fileRowBytes = FileRowBytes(settings.fourCC, settings.width);
    }
    file = std::make_unique<OutputStream>(path);
    OpenTrack(settings, format);
}

void MovieTrackWriter::State::OpenTrack(const MovieTrackSettings& settings, const TrackFormat& format) {
    AVFormatContext* context = nullptr;
    if (avformat_alloc_output_context2(&context, nullptr, format.muxer, nullptr) < 0) throw std::bad_alloc();
    output.reset(context);
    context->pb = file->Io();
    // The container's tables would otherwise put a code of their own in place of some of the codes.
    context->strict_std_compliance = FF_COMPLIANCE_UNOFFICIAL;
    stream = avformat_new_stream(context, nullptr);
    if (stream == nullptr) throw std::bad_alloc();
    SetParameters(*stream, settings, format);
    SetAspect(*stream, settings.pixelAspect);
    stream->time_base = av_inv_q(rate);
    stream->avg_frame_rate = rate;
    stream->r_frame_rate = rate;
    if (!settings.timeCode.empty()) av_dict_set(&stream->metadata, "timecode", settings.timeCode.c_str(), 0);
    file->Check(avformat_write_header(context, nullptr));
}

const uint8_t* MovieTrackWriter::State::PadRows(const uint8_t* data, size_t& size) {
    if (rowBytes == 0) return data;
    if (size != rowBytes * height) {
        throw ToolError(ExitStatus::JobFailed, path,
                        "a frame of " + std::to_string(size) + " bytes, not of " +
                            std::to_string(rowBytes * height));
    }
    if (rowBytes == fileRowBytes) return data;
    padded.assign(fileRowBytes * height, 0);
    for (int row = 0; row < height; ++row) {
        std::memcpy(padded.data() + fileRowBytes * row, data + rowBytes * row, rowBytes);
    }
    size = padded.size();
    return padded.data();
}

MovieTrackWriter::MovieTrackWriter(const MovieTrackSettings& settings)
    : state(std::make_unique<State>(settings)) {}
MovieTrackWriter::~MovieTrackWriter() = default;

void MovieTrackWriter::WriteFrame(const uint8_t* data, size_t size, bool keyFrame) {
    const uint8_t* frame = state->PadRows(data, size);
    if (frame == nullptr || size == 0 || size > INT_MAX) {
        throw ToolError(ExitStatus::JobFailed, state->path, "a frame of " + std::to_string(size) + " bytes");
    }
    AVPacket& packet = *state->packet;
    packet.data = const_cast<uint8_t*>(frame); // a muxer reads only
    packet.size = static_cast<int>(size);
    packet.stream_index = state->stream->index;
    packet.flags = keyFrame ? AV_PKT_FLAG_KEY : 0;
    packet.pts = packet.dts = state->frameCount++;
    packet.duration = 1;
    av_packet_rescale_ts(&packet, av_inv_q(state->rate), state->stream->time_base);
    const int result = av_write_frame(state->output.get(), &packet);
    av_packet_unref(&packet);
    state->file->Check(result);
}

void MovieTrackWriter::Finish() {
    state->file->Check(av_write_trailer(state->output.get()));
    state->file->Commit();
}
