#include "media/WrittenFrames.h"

#include "media/AvHandles.h"

namespace {

AvInput OpenInput(const std::string& path) {
    AVFormatContext* context = nullptr;
    const bool isOpen = avformat_open_input(&context, ("file:" + path).c_str(), nullptr, nullptr) >= 0;
    AvInput input(isOpen ? context : nullptr);
    if (isOpen && avformat_find_stream_info(context, nullptr) < 0) input.reset();
    return input;
}

/// Reads the next packet that is whole.
bool Read(AVFormatContext& input, int stream, AVPacket& packet) {
    for (;;) {
        av_packet_unref(&packet);
        if (av_read_frame(&input, &packet) < 0) return false;
        const bool isWhole = packet.size > 0 && (packet.flags & AV_PKT_FLAG_CORRUPT) == 0;
        if (packet.stream_index == stream && isWhole) return true;
    }
}

/// Decodes until the first picture is there.
class PictureCheck {
public:
    explicit PictureCheck(const AVCodecParameters& stream) : decoder_(OpenDecoder(stream, AV_EF_EXPLODE)) {}

    /// @param packet  the next one, or null at the end
    /// @return false if it can't be decoded
    bool Take(const AVPacket* packet) {
        if (isThere_) return true;
        if (!decoder_ || avcodec_send_packet(decoder_.get(), packet) < 0) return false;
        const int result = avcodec_receive_frame(decoder_.get(), frame_.get());
        isThere_ = result == 0;
        return isThere_ || (result == AVERROR(EAGAIN) && packet != nullptr);
    }

private:
    AvCodecContext decoder_;
    AvFrame frame_ = NewFrame();
    bool isThere_ = false;
};

} // namespace

int64_t CountWrittenFrames(const std::string& path) {
    SilenceLibav();
    const AvInput input = OpenInput(path);
    const int video =
        input ? av_find_best_stream(input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0) : AVERROR(ENOENT);
    if (video < 0) return 0;
    PictureCheck picture(*input->streams[video]->codecpar);
    const AvPacket packet = NewPacket();
    int64_t count = 0;
    for (; Read(*input, video, *packet); ++count) {
        if (!picture.Take(packet.get())) return 0;
    }
    return picture.Take(nullptr) ? count : 0;
}
