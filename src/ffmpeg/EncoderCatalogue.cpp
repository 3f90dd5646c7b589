#include "ffmpeg/EncoderCatalogue.h"

#include "ffmpeg/FFmpegBinding.h"

#include <utility>

namespace CxFFMPEG {

namespace {

constexpr int32_t noProfile = FF_PROFILE_UNKNOWN;

/// A codec and the first part of its labels.
struct CodecName {
    AVCodecID codec;
    const char* name;
};

constexpr CodecName codecNames[] = {
    {AV_CODEC_ID_MPEG2VIDEO, "MPEG2"}, {AV_CODEC_ID_MPEG4, "MPEG4"}, {AV_CODEC_ID_H264, "H.264"},
    {AV_CODEC_ID_THEORA, "Theora"},    {AV_CODEC_ID_GIF, "GIF"},     {AV_CODEC_ID_HEVC, "HEVC"},
};

struct Profile {
    AVCodecID codec;
    int32_t profile;
    const char* text;
    AVPixelFormat pixelFormat;
};

constexpr Profile profiles[] = {
    {AV_CODEC_ID_H264, FF_PROFILE_H264_BASELINE, "Baseline", AV_PIX_FMT_YUV420P},
    {AV_CODEC_ID_H264, FF_PROFILE_H264_MAIN, "Main", AV_PIX_FMT_YUV420P},
    {AV_CODEC_ID_H264, FF_PROFILE_H264_HIGH, "High", AV_PIX_FMT_YUV420P},
    {AV_CODEC_ID_H264, FF_PROFILE_H264_HIGH_10, "High10", AV_PIX_FMT_YUV420P10LE},
    {AV_CODEC_ID_H264, FF_PROFILE_H264_HIGH_422, "High_422", AV_PIX_FMT_YUV422P},
    // Named for 4:2:2 and told to the encoder as the 4:2:0 profile. Kept.
    {AV_CODEC_ID_H264, FF_PROFILE_H264_HIGH_10, "High10_422", AV_PIX_FMT_YUV422P10LE},
    {AV_CODEC_ID_H264, FF_PROFILE_H264_HIGH_444, "High_444", AV_PIX_FMT_YUV444P},
    {AV_CODEC_ID_GIF, noProfile, "", AV_PIX_FMT_RGB8},
    {AV_CODEC_ID_MPEG4, noProfile, "", AV_PIX_FMT_YUV420P},
    // 4:2:2 in the Main profile, which has 4:2:0 alone (ISO/IEC 23008-2, A.3.2). Kept.
    {AV_CODEC_ID_HEVC, FF_PROFILE_HEVC_MAIN, "", AV_PIX_FMT_YUV422P},
    {AV_CODEC_ID_HEVC, FF_PROFILE_HEVC_MAIN_10, "10Bit", AV_PIX_FMT_YUV422P10LE},
    {AV_CODEC_ID_MPEG2VIDEO, FF_PROFILE_MPEG2_MAIN, "", AV_PIX_FMT_YUV420P},
    {AV_CODEC_ID_MPEG2VIDEO, FF_PROFILE_MPEG2_422, "422", AV_PIX_FMT_YUV422P},
    {AV_CODEC_ID_THEORA, noProfile, "420", AV_PIX_FMT_YUV420P},
    {AV_CODEC_ID_THEORA, noProfile, "422", AV_PIX_FMT_YUV422P},
    {AV_CODEC_ID_THEORA, noProfile, "444", AV_PIX_FMT_YUV444P},
};

bool TakesPixelFormat(const AVCodec& encoder, int32_t pixelFormat) {
    const AVPixelFormat* format = encoder.pix_fmts;
    if (format == nullptr) return false;
    while (*format != AV_PIX_FMT_NONE && *format != pixelFormat)
        ++format;
    return *format == pixelFormat;
}

std::string LabelOf(const char* codecName, const std::string& profile) {
    return profile.empty() ? codecName : std::string(codecName).append(" [").append(profile).append("]");
}

EncoderTable MakeEncoders() {
    EncoderTable table;
    for (const CodecName& row : codecNames) {
        const AVCodec* const encoder = FFmpeg().avcodec_find_encoder(row.codec);
        if (encoder == nullptr) continue;
        for (const EncoderEntry& profile : GetProfileTable().at(row.codec)) {
            if (!TakesPixelFormat(*encoder, profile.pixelFormat)) continue;
            EncoderEntry entry = profile;
            entry.label = LabelOf(row.name, profile.label);
            entry.encoder = encoder;
            table[entry.label] = entry;
        }
    }
    return table;
}

bool Holds(const AVOutputFormat& format, int32_t codecId) {
    const auto codec = static_cast<AVCodecID>(codecId);
    return codec == format.video_codec ||
           FFmpeg().avformat_query_codec(&format, codec, FF_COMPLIANCE_STRICT) == 1;
}

ContainerTable MakeContainers() {
    ContainerTable table;
    void* position = nullptr;
    while (const AVOutputFormat* const format = FFmpeg().av_muxer_iterate(&position)) {
        ContainerEntry entry = {format, {}};
        for (const auto& [label, encoder] : GetEncoderTable())
            if (Holds(*format, encoder.codecId)) entry.labels.push_back(label);
        const char* const name = format->long_name != nullptr ? format->long_name : format->name;
        if (!entry.labels.empty()) table[name] = std::move(entry);
    }
    return table;
}

} // namespace

const ProfileTable& GetProfileTable() {
    static const ProfileTable table = [] {
        ProfileTable rows;
        for (const Profile& row : profiles)
            rows[row.codec].push_back({row.codec, row.profile, row.text, row.pixelFormat, nullptr});
        return rows;
    }();
    return table;
}

const EncoderTable& GetEncoderTable() {
    static EncoderTable table;
    if (table.empty() && LoadFFmpeg()) table = MakeEncoders();
    return table;
}

const ContainerTable& GetContainerTable() {
    static ContainerTable table;
    if (table.empty() && LoadFFmpeg() && !GetEncoderTable().empty()) table = MakeContainers();
    return table;
}

ContainerEntry FindContainer(const std::string& name) {
    const auto found = GetContainerTable().find(name);
    return found != GetContainerTable().end() ? found->second : ContainerEntry();
}

EncoderEntry FindEncoder(const std::string& label) {
    const auto found = GetEncoderTable().find(label);
    return found != GetEncoderTable().end() ? found->second : EncoderEntry();
}

std::list<std::string> GetContainerNames() {
    std::list<std::string> names;
    for (const auto& [name, entry] : GetContainerTable())
        names.push_back(name);
    return names;
}

std::list<std::string> GetEncoderLabels(const std::string& container) {
    const ContainerEntry entry = FindContainer(container);
    return {entry.labels.begin(), entry.labels.end()};
}

EncoderOptions ParseEncoderOptions(const std::string& text) {
    constexpr const char* separators = "\n|:,;";
    EncoderOptions options;
    size_t begin = 0;
    for (size_t end; (end = text.find_first_of(separators, begin)) != std::string::npos; begin = end + 1) {
        const std::string segment = text.substr(begin, end - begin);
        const size_t equals = segment.find('=');
        if (equals != std::string::npos)
            options.emplace_back(segment.substr(0, equals), segment.substr(equals + 1));
    }
    return options;
}

} // namespace CxFFMPEG
