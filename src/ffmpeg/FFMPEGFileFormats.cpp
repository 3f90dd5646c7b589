#include "ffmpeg/FFMPEGFileFormats.h"
#include "ffmpeg/FFmpegVersions.h"

#include <algorithm>
#include <utility>

namespace CxFFMPEG {

namespace {

int32_t LimitToCount(int64_t count) {
    return static_cast<int32_t>(std::min<int64_t>(count, std::numeric_limits<int32_t>::max()));
}

bool Answer(void* out, int32_t value) {
    *static_cast<int32_t*>(out) = value;
    return true;
}

bool Answer(void* out, double value) {
    *static_cast<double*>(out) = value;
    return true;
}

} // namespace

FFMPEGFileFormats::FFMPEGFileFormats(const Registry* registry, const ScriptVal& value, const TagList& tags)
    : ImageFormat(registry, value, tags) {
    times.start = AV_NOPTS_VALUE;
    settings.value3 = UINT64_MAX;
    settings.fieldOrder = 1;
    settings.value7 = settings.value8 = 1;
    settings.value9 = settings.value10 = settings.value11 = 1;
}

FFMPEGFileFormats::~FFMPEGFileFormats() { FFMPEGFileFormats::CloseFile(); }

size_t FFMPEGFileFormats::ObjectSize() const { return sizeof(FFMPEGFileFormats); }

bool FFMPEGFileFormats::SetAttrsTagList(const TagList& tags) {
    const bool isFound = tags.FindQuery(FFmpegTag_StoredTime);
    if (isFound) storedTime = tags.GetLong(FFmpegTag_StoredTime, -2'000'000'000);
    return ImageFormat::SetAttrsTagList(tags) || isFound;
}

bool FFMPEGFileFormats::CopyAttr(Tag key, void* out) {
    switch (key) {
    case FormatTag_Width: return Answer(out, width);
    case FormatTag_Height: return Answer(out, height);
    case FFmpegTag_Zero: return Answer(out, 0);
    case FFmpegTag_FrameCount: return Answer(out, frameCount);
    case FFmpegTag_FrameRate: return Answer(out, times.FramesPerSecond());
    case FFmpegTag_StoredTime: return Answer(out, static_cast<double>(storedTime));
    case FFmpegTag_FirstInteger: return Answer(out, firstInteger);
    case FFmpegTag_Number: return Answer(out, static_cast<double>(number));
    case FFmpegTag_SecondInteger: return Answer(out, secondInteger);
    case FFmpegTag_ShortInteger: return Answer(out, int32_t{shortInteger});
    default: return ImageFormat::CopyAttr(key, out);
    }
}

bool FFMPEGFileFormats::OpenFile(const char* path, const TagList& /*tags*/) try {
    CloseFile();
    fileName.clear();
    std::string name = path != nullptr ? path : "";
    if (path == nullptr || !input.Open(path)) return false;
    fileName = std::move(name);
    return true;
} catch (...) {
    CloseFile();
    return false;
}

bool FFMPEGFileFormats::CloseFile() {
    CloseWriter();
    CloseDecoder();
    input.Close();
    return true;
}

void FFMPEGFileFormats::CloseDecoder() {
    codec.reset();
    lastTime = noTime;
}

bool FFMPEGFileFormats::LoadHeaderTagList(const CxID& dataType, const char* path, TagList& tags) {
    return dataType == CLSID_DataType_Image && LoadHeaderTagList(path, tags);
}

bool FFMPEGFileFormats::LoadHeaderTagList(const char* path, TagList& tags) try {
    const bool isOpen = input.IsOpen() && path != nullptr && fileName == path;
    if (!isOpen && !OpenFile(path, tags)) return false;
    // A new decoder knows nothing of where the file stands.
    CloseDecoder();
    if (OpenDecoder() && ReadTimes()) return true;
    CloseDecoder();
    return false;
} catch (...) {
    CloseDecoder();
    return false;
}

bool FFMPEGFileFormats::OpenDecoder() {
    if (!input.ChooseVideo()) return false;
    codec = std::make_unique<FFMPEGCodecs>(CxAV_DECODE, nullptr);
    return codec->OpenFromStream(input.Stream()) == CxAV_OK;
}

/// Size, rate, start and count of the stream.
bool FFMPEGFileFormats::ReadTimes() {
    const AVStream& stream = *input.Stream();
    times.timeBase = stream.time_base;
    times.channels = ChannelsOf(*stream.codecpar);
    times.sampleRate = stream.codecpar->sample_rate;
    times.frameRate = stream.r_frame_rate;
    if (times.frameRate.num == 0 || times.frameRate.den == 0) return false;
    width = codec->GetWidth();
    height = codec->GetHeight();
    // Also for a start that is known: it finds out which times the file has.
    const int64_t firstTime = input.FindFirstTime();
    if (times.start == AV_NOPTS_VALUE) times.start = firstTime == AV_NOPTS_VALUE ? 0 : firstTime;
    const int32_t count = CountFrames();
    if (count <= 0) return false;
    frameCount = count;
    return true;
}

int32_t FFMPEGFileFormats::CountFrames() {
    if (frameCount != unknownCount) return frameCount;
    const AVStream* const stream = input.Stream();
    if (stream == nullptr) return 0;
    if (stream->nb_frames >= 1) return LimitToCount(stream->nb_frames);
    const int64_t duration = stream->duration;
    // Its lower 32 bits decide too. Kept.
    const bool isDurationKnown = duration > 0 && static_cast<int32_t>(duration) > 0;
    if (isDurationKnown && times.FramesIn(duration) >= 1) return times.FramesIn(duration);
    // A frame far past every end.
    const int64_t end = FrameToTime(0x20000000);
    return LimitToCount(int64_t{TimeToFrame(input.FindLastTime(end, times.start))} + 1);
}

} // namespace CxFFMPEG
