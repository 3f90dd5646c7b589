#include "ffmpeg/GreyMovie.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <stdexcept>

namespace {

void Check(bool ok, const std::string& what) {
    if (!ok) throw std::runtime_error("test movie: " + what);
}

struct OutputCloser {
    void operator()(AVFormatContext* output) const {
        avio_closep(&output->pb);
        avformat_free_context(output);
    }
};
using Output = std::unique_ptr<AVFormatContext, OutputCloser>;

struct PacketReleaser {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using Packet = std::unique_ptr<AVPacket, PacketReleaser>;

void AddSound(AVFormatContext& output) {
    AVStream* const stream = avformat_new_stream(&output, nullptr);
    stream->time_base = {1, 48000};
    stream->codecpar->codec_type = AVMEDIA_TYPE_AUDIO;
    stream->codecpar->codec_id = AV_CODEC_ID_PCM_S16LE;
    stream->codecpar->format = AV_SAMPLE_FMT_S16;
    stream->codecpar->sample_rate = 48000;
    stream->codecpar->bits_per_coded_sample = 16;
    stream->codecpar->block_align = 2;
    av_channel_layout_default(&stream->codecpar->ch_layout, 1);
}

AVStream* AddPictures(AVFormatContext& output, const EncodedTrack& track, AVRational rate) {
    AVStream* const stream = avformat_new_stream(&output, nullptr);
    stream->time_base = {1, rate.num};
    stream->avg_frame_rate = stream->r_frame_rate = rate;
    DescribeTrack(track, *stream->codecpar);
    return stream;
}

Packet MakePacket(const void* bytes, size_t size, int stream) {
    Packet packet(av_packet_alloc());
    Check(av_new_packet(packet.get(), static_cast<int>(size)) >= 0, "packet");
    std::memcpy(packet->data, bytes, size);
    packet->stream_index = stream;
    return packet;
}

void WriteSound(AVFormatContext& output, int stream) {
    const std::vector<uint8_t> silence(2 * 4800);
    const Packet packet = MakePacket(silence.data(), silence.size(), stream);
    packet->pts = packet->dts = 0;
    packet->duration = 4800;
    av_packet_rescale_ts(packet.get(), {1, 48000}, output.streams[stream]->time_base);
    Check(av_write_frame(&output, packet.get()) >= 0, "sound");
}

void WritePicture(AVFormatContext& output, const AVStream& stream, const EncodedSample& sample,
                  const MovieSpec& spec) {
    const Packet packet = MakePacket(sample.bytes.data(), sample.bytes.size(), stream.index);
    packet->pts = sample.frame + spec.firstFrame;
    packet->dts = sample.decodeTime + spec.firstFrame;
    packet->duration = 1;
    if (sample.isKeySample) packet->flags |= AV_PKT_FLAG_KEY;
    if (spec.change) spec.change(*packet);
    av_packet_rescale_ts(packet.get(), av_inv_q(spec.rate), stream.time_base);
    Check(av_write_frame(&output, packet.get()) >= 0, "picture");
}

} // namespace

std::string WriteMovie(const Workspace& workspace, const std::string& name, const EncodedTrack& track,
                       const MovieSpec& spec) {
    const std::string path = workspace.Path(name);
    AVFormatContext* made = nullptr;
    Check(avformat_alloc_output_context2(&made, nullptr, nullptr, path.c_str()) >= 0, name);
    const Output output(made);
    Check(avio_open(&output->pb, path.c_str(), AVIO_FLAG_WRITE) >= 0, path);
    if (!spec.isIndexed) output->pb->seekable = 0;
    for (int i = 0; i < spec.soundStreams; ++i)
        AddSound(*output);
    const AVStream* const stream = AddPictures(*output, track, spec.rate);
    Check(avformat_write_header(output.get(), nullptr) >= 0, "header");
    for (int i = 0; i < spec.soundStreams; ++i)
        WriteSound(*output, i);
    for (const EncodedSample& sample : track.samples)
        WritePicture(*output, *stream, sample, spec);
    Check(av_write_trailer(output.get()) >= 0, "trailer");
    return path;
}

const EncodedTrack& GreyTrack() {
    static const EncodedTrack track({.frames = 24, .groupLength = 12, .bFrames = 2});
    return track;
}

const EncodedTrack& GreyStreamTrack() {
    static const EncodedTrack track(
        {.frames = 24, .groupLength = 12, .bFrames = 2, .hasConfiguration = false});
    return track;
}
