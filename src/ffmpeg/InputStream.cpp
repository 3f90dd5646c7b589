#include "ffmpeg/InputStream.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <string_view>

namespace CxFFMPEG {

bool InputStream::Open(const char* path) {
    Close();
    AVFormatContext* opened = nullptr;
    if (!LoadFFmpeg() || FFmpeg().avformat_open_input(&opened, path, nullptr, nullptr) < 0) return false;
    file.reset(opened);
    if (FFmpeg().avformat_find_stream_info(opened, nullptr) < 0) Close();
    return IsOpen();
}

void InputStream::Close() { *this = InputStream(); }

bool InputStream::ChooseVideo() {
    const int best = FFmpeg().av_find_best_stream(file.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (best < 0) {
        std::fprintf(stderr, "No valid stream found in file '%s'\n", file->url);
        return false;
    }
    index = best;
    stream = file->streams[best];
    hasDecodingTimes = false;
    file->flags |= AVFMT_FLAG_GENPTS;
    for (unsigned i = 0; i < file->nb_streams; ++i)
        file->streams[i]->discard = file->streams[i] == stream ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    return true;
}

bool InputStream::Seek(int64_t time, int flags) {
    isAtEnd = false;
    isKeyWanted = false;
    return FFmpeg().av_seek_frame(file.get(), index, time, flags) >= 0;
}

bool InputStream::Read(AVPacket& packet) {
    FFmpeg().av_packet_unref(&packet);
    while (!isAtEnd) {
        isAtEnd = FFmpeg().av_read_frame(file.get(), &packet) < 0;
        // A packet without data means the end to a decoder, and some files have them on their way.
        const bool isPicture = !isAtEnd && packet.stream_index == index && packet.size > 0;
        if (isPicture && (!isKeyWanted || (packet.flags & AV_PKT_FLAG_KEY) != 0)) {
            isKeyWanted = false;
            return true;
        }
        FFmpeg().av_packet_unref(&packet);
    }
    return false;
}

/// AVI tells the order of decoding and no more. Where pictures are out of order, and with codecs of which
/// FFmpeg never knows that they are not, the times of presentation that packets come with are made up then,
/// and the first one is not the 0 that the container tells.
bool InputStream::IsReorderedAvi() const {
    if (std::string_view(file->iformat->name) != "avi") return false;
    const AVCodecParameters& codec = *stream->codecpar;
    return codec.video_delay > 0 || codec.codec_id == AV_CODEC_ID_H264 || codec.codec_id == AV_CODEC_ID_HEVC;
}

int64_t InputStream::FindFirstTime() {
    const bool isReorderedAvi = IsReorderedAvi();
    if (!isReorderedAvi && stream->start_time != AV_NOPTS_VALUE) return stream->start_time;
    const PacketPointer packet(FFmpeg().av_packet_alloc());
    if (packet == nullptr || !Seek(0, 0)) return stream->start_time;
    return isReorderedAvi ? ReadLeastTime(*packet) : ReadFirstTime(*packet);
}

/// Time of the first packet that has one.
int64_t InputStream::ReadFirstTime(AVPacket& packet) {
    int64_t time = AV_NOPTS_VALUE;
    while (time == AV_NOPTS_VALUE && Read(packet))
        time = packet.pts;
    return time;
}

/// The least time of as many packets as pictures may be out of order, and one. Finds out what
/// `HasDecodingTimes` tells.
int64_t InputStream::ReadLeastTime(AVPacket& packet) {
    constexpr int mostPackets = 17;
    constexpr int64_t none = std::numeric_limits<int64_t>::max();
    int64_t least = none;
    int64_t last = AV_NOPTS_VALUE;
    hasDecodingTimes = true;
    for (int i = 0; i < mostPackets && Read(packet); ++i) {
        hasDecodingTimes = hasDecodingTimes && packet.pts > last;
        last = packet.pts;
        if (last != AV_NOPTS_VALUE) least = std::min(least, last);
    }
    return least == none ? stream->start_time : least;
}

/// The last time up to the end; `AV_NOPTS_VALUE`, which is less than every time, if there is none.
int64_t InputStream::ReadLastTime(AVPacket& packet) {
    int64_t last = AV_NOPTS_VALUE;
    while (Read(packet))
        last = std::max(last, packet.pts);
    return last;
}

int64_t InputStream::FindLastTime(int64_t place, int64_t least) {
    const PacketPointer packet(FFmpeg().av_packet_alloc());
    if (packet == nullptr) return least;
    // A place that can't be reached leaves the one that the file stands at.
    Seek(place, AVSEEK_FLAG_BACKWARD);
    int64_t last = ReadLastTime(*packet);
    if (last == AV_NOPTS_VALUE && Seek(least, AVSEEK_FLAG_BACKWARD)) last = ReadLastTime(*packet);
    return std::max(last, least);
}

} // namespace CxFFMPEG
