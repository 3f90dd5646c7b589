#include "ffmpeg/FFmpegVersions.h"

namespace CxFFMPEG {

namespace {

/// Takes a packet if there is one; that there is none is no error.
int ReceivePacket(AVCodecContext* encoder, AVPacket* packet, bool& gotPacket) {
    const int received = FFmpeg().avcodec_receive_packet(encoder, packet);
    if (received == AVERROR(EAGAIN) || received == AVERROR_EOF) return 0;
    gotPacket = received >= 0;
    return received;
}

} // namespace

int EncodeVideo(AVCodecContext* encoder, AVPacket* packet, const AVFrame* frame, bool& gotPacket) {
    gotPacket = false;
    int sent = FFmpeg().avcodec_send_frame(encoder, frame);
    if (sent == AVERROR(EAGAIN)) {
        // An encoder that is full takes the frame once it got rid of a packet.
        if (const int received = ReceivePacket(encoder, packet, gotPacket); received < 0) return received;
        sent = FFmpeg().avcodec_send_frame(encoder, frame);
    }
    // Draining goes on, one packet after the other, after the first null.
    if (sent < 0 && !(frame == nullptr && sent == AVERROR_EOF)) return sent;
    return gotPacket ? 0 : ReceivePacket(encoder, packet, gotPacket);
}

int32_t ChannelsOf(const AVCodecParameters& parameters) {
#if LIBAVCODEC_VERSION_MAJOR >= 59
    return parameters.ch_layout.nb_channels;
#else
    return parameters.channels;
#endif
}

void SetChannels(AVCodecContext& context, int32_t channels) {
#if LIBAVCODEC_VERSION_MAJOR >= 59
    FFmpeg().av_channel_layout_default(&context.ch_layout, channels);
#else
    context.channels = channels;
    context.channel_layout = static_cast<uint64_t>(FFmpeg().av_get_default_channel_layout(channels));
#endif
}

} // namespace CxFFMPEG
