#include "ffmpeg/SavedMovie.h"

void SavedMovie::Closer::operator()(AVFormatContext* context) const { avformat_close_input(&context); }

SavedMovie::SavedMovie(const std::string& path) {
    AVFormatContext* context = nullptr;
    if (avformat_open_input(&context, path.c_str(), nullptr, nullptr) < 0) return;
    file.reset(context);
    if (avformat_find_stream_info(context, nullptr) < 0) {
        file.reset();
    } else {
        ReadPackets();
    }
}

std::string SavedMovie::Tag(const char* key) const {
    const AVDictionaryEntry* const entry = IsOpen() ? av_dict_get(file->metadata, key, nullptr, 0) : nullptr;
    return entry != nullptr ? entry->value : "(none)";
}

const AVStream* SavedMovie::Find(AVMediaType type) const {
    for (unsigned i = 0; IsOpen() && i < file->nb_streams; ++i)
        if (file->streams[i]->codecpar->codec_type == type) return file->streams[i];
    return nullptr;
}

void SavedMovie::ReadPackets() {
    AVPacket* packet = av_packet_alloc();
    while (av_read_frame(file.get(), packet) >= 0) {
        const bool isPicture = file->streams[packet->stream_index] == Pictures();
        if (isPicture) ++pictureCount;
        std::vector<uint8_t>& bytes = isPicture ? pictures : sound;
        bytes.insert(bytes.end(), packet->data, packet->data + packet->size);
        av_packet_unref(packet);
    }
    av_packet_free(&packet);
}
