#include "module/h264/Mp4File.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <cstring>
#include <memory>

namespace {

constexpr AVRational milliseconds = {1, 1000};

struct CloseOutput {
    void operator()(AVFormatContext* file) const {
        avio_closep(&file->pb);
        avformat_free_context(file);
    }
};
struct CloseInput {
    void operator()(AVFormatContext* file) const { avformat_close_input(&file); }
};
struct FreePacket {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using PacketPtr = std::unique_ptr<AVPacket, FreePacket>;

PacketPtr PacketOf(const Mp4Sample& sample, AVRational timeBase) {
    PacketPtr packet(av_packet_alloc());
    if (av_new_packet(packet.get(), static_cast<int>(sample.bytes.size())) < 0) return nullptr;
    std::memcpy(packet->data, sample.bytes.data(), sample.bytes.size());
    packet->pts = sample.presentationTime;
    packet->dts = sample.decodeTime;
    packet->duration = sample.duration;
    packet->flags = sample.isKey ? AV_PKT_FLAG_KEY : 0;
    av_packet_rescale_ts(packet.get(), milliseconds, timeBase);
    return packet;
}

void Describe(const Mp4Track& track, AVCodecParameters& parameters) {
    parameters.codec_type = AVMEDIA_TYPE_VIDEO;
    parameters.codec_id = AV_CODEC_ID_H264;
    parameters.width = track.width;
    parameters.height = track.height;
    const size_t room = track.record.size() + AV_INPUT_BUFFER_PADDING_SIZE;
    parameters.extradata = static_cast<uint8_t*>(av_mallocz(room));
    std::memcpy(parameters.extradata, track.record.data(), track.record.size());
    parameters.extradata_size = static_cast<int>(track.record.size());
}

Mp4Sample SampleOf(AVPacket& packet, AVRational timeBase) {
    av_packet_rescale_ts(&packet, timeBase, milliseconds);
    return {Bytes(packet.data, packet.data + packet.size), packet.pts, packet.dts, packet.duration,
            (packet.flags & AV_PKT_FLAG_KEY) != 0};
}

} // namespace

bool WriteMp4(const std::string& path, const Mp4Track& track) {
    AVFormatContext* made = nullptr;
    if (avformat_alloc_output_context2(&made, nullptr, "mp4", path.c_str()) < 0) return false;
    const std::unique_ptr<AVFormatContext, CloseOutput> file(made);
    AVStream* const stream = avformat_new_stream(file.get(), nullptr);
    Describe(track, *stream->codecpar);
    stream->time_base = milliseconds;
    if (avio_open(&file->pb, path.c_str(), AVIO_FLAG_WRITE) < 0) return false;
    if (avformat_write_header(file.get(), nullptr) < 0) return false;
    for (const Mp4Sample& sample : track.samples)
        if (av_write_frame(file.get(), PacketOf(sample, stream->time_base).get()) < 0) return false;
    return av_write_trailer(file.get()) >= 0;
}

Mp4Track ReadMp4(const std::string& path, std::vector<PeerPicture>& pictures) {
    Mp4Track track;
    AVFormatContext* opened = nullptr;
    if (avformat_open_input(&opened, path.c_str(), nullptr, nullptr) < 0) return track;
    const std::unique_ptr<AVFormatContext, CloseInput> file(opened);
    const AVStream& stream = *file->streams[0];
    const AVCodecParameters& parameters = *stream.codecpar;
    track.width = parameters.width;
    track.height = parameters.height;
    track.record.assign(parameters.extradata, parameters.extradata + parameters.extradata_size);
    const PacketPtr packet(av_packet_alloc());
    while (av_read_frame(file.get(), packet.get()) >= 0) {
        track.samples.push_back(SampleOf(*packet, stream.time_base));
        av_packet_unref(packet.get());
    }
    std::vector<TimedBytes> samples;
    for (const Mp4Sample& sample : track.samples)
        samples.push_back({sample.bytes, sample.presentationTime, sample.duration});
    pictures = PeerDecode(samples, track.record);
    return track;
}
