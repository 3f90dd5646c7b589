#include "media/Demuxer.h"

#include "media/ToolError.h"

#include <filesystem>

namespace {

// Containers of movies alone: playlists, which would open further files, and still images are left out.
const char* const movieContainers = "mov,matroska,avi,mpegts,mpeg,flv,gif,mxf,mxf_opatom,asf,ogg,nut,dv,wav";

AvIo OpenFile(const std::string& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        throw ToolError(ExitStatus::CannotOpen, path, "not a regular file");
    }
    AVIOContext* io = nullptr;
    const int result = avio_open(&io, ("file:" + path).c_str(), AVIO_FLAG_READ);
    if (result < 0) throw ToolError(ExitStatus::CannotOpen, path, AvErrorText(result));
    return AvIo(io);
}

ToolError OpenFailure(const std::string& path, int result) {
    if (result == AVERROR(EINVAL))
        return {ExitStatus::Unsupported, path, "not a movie container that is read"};
    if (result == AVERROR_INVALIDDATA || result == AVERROR_EOF) {
        return {ExitStatus::Damaged, path, "no movie, or a damaged one: " + AvErrorText(AVERROR_INVALIDDATA)};
    }
    return {ExitStatus::CannotOpen, path, AvErrorText(result)};
}

AvInput OpenContainer(const std::string& path, AVIOContext* io) {
    AVFormatContext* context = avformat_alloc_context();
    if (context == nullptr) throw std::bad_alloc();
    context->pb = io;
    AVDictionary* options = nullptr;
    av_dict_set(&options, "format_whitelist", movieContainers, 0);
    av_dict_set(&options, "protocol_whitelist", "file", 0);
    const int result = avformat_open_input(&context, "", nullptr, &options);
    av_dict_free(&options);
    if (result < 0) throw OpenFailure(path, result); // the context is freed already
    return AvInput(context);
}

/// The best video stream that is no cover picture; negative if there is none.
int FindVideoStream(AVFormatContext& format) {
    const int best = av_find_best_stream(&format, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (best < 0 || format.streams[best]->disposition & AV_DISPOSITION_ATTACHED_PIC) return -1;
    return best;
}

} // namespace

PictureProperties PropertiesOf(const AVCodecParameters& parameters) {
    return {parameters.field_order, parameters.color_range, parameters.color_space,
            parameters.color_primaries, parameters.color_trc};
}

std::vector<Demuxer::ContainerWord> Demuxer::WordsOnStreams(const AVFormatContext& format) {
    std::vector<ContainerWord> words;
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        AVStream* stream = format.streams[i];
        // An index counts what edit lists leave; the header's count serves where the index itself is lost.
        const int64_t indexed = avformat_index_get_entries_count(stream);
        words.push_back({PropertiesOf(*stream->codecpar), indexed > 0 ? indexed : stream->nb_frames});
    }
    return words;
}

Demuxer::Demuxer(const std::string& path) {
    SilenceLibav();
    io = OpenFile(path);
    format = OpenContainer(path, io.get());
    const std::vector<ContainerWord> words = WordsOnStreams(*format);
    const int result = avformat_find_stream_info(format.get(), nullptr);
    if (result < 0) throw ToolError(ExitStatus::Damaged, path, AvErrorText(result));
    const int index = FindVideoStream(*format);
    if (index < 0) throw ToolError(ExitStatus::Unsupported, path, "no video track");
    track = format->streams[index];
    if (static_cast<size_t>(index) < words.size()) container = words[index];
    for (unsigned i = 0; i < format->nb_streams; ++i) {
        if (format->streams[i] != track) format->streams[i]->discard = AVDISCARD_ALL;
    }
}

int Demuxer::Read(AVPacket& packet) {
    for (;;) {
        av_packet_unref(&packet);
        const int result = av_read_frame(format.get(), &packet);
        if (result < 0 || packet.stream_index == track->index) return result;
    }
}

bool Demuxer::Seek(int64_t ticks) {
    return av_seek_frame(format.get(), track->index, ticks, AVSEEK_FLAG_BACKWARD | AVSEEK_FLAG_ANY) >= 0;
}
