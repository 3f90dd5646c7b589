#include "SeekCount.h"

#include "ffmpeg/FFmpegBinding.h"

#include <cstdlib>

namespace {

int64_t seeks = 0;
decltype(&av_seek_frame) seek = nullptr;

int CountedSeek(AVFormatContext* context, int stream, int64_t time, int flags) {
    ++seeks;
    return seek(context, stream, time, flags);
}

} // namespace

int64_t& CountSeeks() {
    if (!LoadFFmpeg()) std::abort();
    // The table is a variable behind a constant view.
    auto& table = const_cast<FFmpegFunctions&>(FFmpeg());
    if (seek == nullptr) {
        seek = table.av_seek_frame;
        table.av_seek_frame = CountedSeek;
    }
    seeks = 0;
    return seeks;
}
