#include "ffmpeg/EncodedTrack.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <stdexcept>

namespace {

struct Release {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
template <typename Object>
using Owned = std::unique_ptr<Object, Release>;

void Check(bool ok, const std::string& what) {
    if (!ok) throw std::runtime_error("test track: " + what);
}

Owned<AVCodecContext> OpenEncoder(const TrackSpec& spec) {
    const AVCodec* const codec = avcodec_find_encoder_by_name(spec.encoder);
    Check(codec != nullptr, spec.encoder);
    Owned<AVCodecContext> context(avcodec_alloc_context3(codec));
    context->width = spec.width;
    context->height = spec.height;
    context->pix_fmt = spec.format;
    context->time_base = {1, 25};
    context->framerate = {25, 1};
    context->gop_size = spec.groupLength;
    context->max_b_frames = spec.bFrames;
    context->thread_count = 1;
    context->flags |= AV_CODEC_FLAG_QSCALE;
    context->global_quality = 2 * FF_QP2LAMBDA;
    context->strict_std_compliance = FF_COMPLIANCE_UNOFFICIAL;
    if (spec.hasConfiguration) context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    Check(av_set_options_string(context->priv_data, spec.options, "=", ":") >= 0, spec.options);
    Check(avcodec_open2(context.get(), codec, nullptr) >= 0, "encoder");
    return context;
}

Owned<AVFrame> MakeFrame(const TrackSpec& spec, int32_t number) {
    Owned<AVFrame> frame(av_frame_alloc());
    frame->format = spec.format;
    frame->width = spec.width;
    frame->height = spec.height;
    frame->pts = number;
    frame->quality = 2 * FF_QP2LAMBDA;
    Check(av_frame_get_buffer(frame.get(), 0) >= 0, "frame");
    const int chromaHeight = spec.format == AV_PIX_FMT_YUV420P || spec.format == AV_PIX_FMT_YUVJ420P
                                 ? (spec.height + 1) / 2
                                 : spec.height;
    for (int plane = 0; plane < 3; ++plane)
        std::memset(frame->data[plane], plane == 0 ? LumaOfFrame(number) : 128,
                    static_cast<size_t>(frame->linesize[plane] * (plane == 0 ? spec.height : chromaHeight)));
    return frame;
}

/// Feeds a frame, or drains with null, and keeps the samples that come out.
void Encode(AVCodecContext& context, const AVFrame* frame, std::vector<EncodedSample>& samples) {
    Check(avcodec_send_frame(&context, frame) >= 0, "encoding");
    const Owned<AVPacket> packet(av_packet_alloc());
    while (avcodec_receive_packet(&context, packet.get()) >= 0) {
        EncodedSample sample;
        sample.bytes.assign(packet->data, packet->data + packet->size);
        sample.bytes.shrink_to_fit();
        sample.frame = static_cast<int32_t>(packet->pts);
        sample.decodeTime = static_cast<int32_t>(packet->dts);
        sample.isKeySample = (packet->flags & AV_PKT_FLAG_KEY) != 0;
        samples.push_back(std::move(sample));
    }
}

} // namespace

EncodedTrack::EncodedTrack(const TrackSpec& content) : spec(content) {
    // FFmpeg's words would stand among those that the tests read.
    av_log_set_level(AV_LOG_QUIET);
    const Owned<AVCodecContext> context = OpenEncoder(spec);
    codec = context->codec_id;
    if (context->extradata_size > 0)
        configuration.assign(context->extradata, context->extradata + context->extradata_size);
    for (int32_t frame = 0; frame < spec.frames; ++frame)
        Encode(*context, MakeFrame(spec, frame).get(), samples);
    Encode(*context, nullptr, samples);
    Check(samples.size() == static_cast<size_t>(spec.frames), "number of samples");
}

int32_t EncodedSource::GetMaxSampleSize() {
    size_t largest = 0;
    for (const EncodedSample& sample : samples)
        largest = std::max(largest, sample.bytes.size());
    return static_cast<int32_t>(largest);
}

uint8_t* EncodedSource::ReadSample(int32_t sample, uint8_t*, int32_t& size) {
    if (sample < 0 || sample >= GetSampleCount()) return nullptr;
    std::vector<uint8_t>& bytes = samples[static_cast<size_t>(sample)].bytes;
    if (bytes.empty()) return nullptr;
    size = static_cast<int32_t>(bytes.size());
    return bytes.data();
}

int32_t EncodedSource::GetSampleForFrame(int32_t frame) {
    const auto found = std::ranges::find(samples, frame, &EncodedSample::frame);
    return found != samples.end() ? static_cast<int32_t>(found - samples.begin()) : -1;
}

int32_t EncodedSource::GetKeySample(int32_t sample) {
    int32_t key = std::min(sample, GetSampleCount() - 1);
    const int32_t frame = FrameOfSample(key);
    const auto isStart = [&](const EncodedSample& start) {
        return start.isKeySample && start.frame <= frame;
    };
    while (key > 0 && !isStart(samples[static_cast<size_t>(key)]))
        --key;
    return key;
}

int64_t EncodedSource::GetDecodeTime(int32_t sample) {
    const bool isThere = sample >= 0 && sample < GetSampleCount();
    return TimeOf(isThere ? samples[static_cast<size_t>(sample)].decodeTime : sample);
}

void DescribeTrack(const EncodedTrack& track, AVCodecParameters& parameters) {
    parameters.codec_type = AVMEDIA_TYPE_VIDEO;
    parameters.codec_id = track.codec;
    parameters.width = track.spec.width;
    parameters.height = track.spec.height;
    parameters.format = track.spec.format;
    const std::vector<uint8_t>& bytes = track.configuration;
    parameters.extradata = static_cast<uint8_t*>(av_mallocz(bytes.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    parameters.extradata_size = static_cast<int>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), parameters.extradata);
}

int32_t EncodedSource::FrameOfSample(int32_t sample) const {
    const bool isThere = sample >= 0 && static_cast<size_t>(sample) < samples.size();
    return isThere ? samples[static_cast<size_t>(sample)].frame : sample;
}
