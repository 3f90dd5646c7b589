#include "ffmpeg/FFmpegFileWriter.h"

#include "ffmpeg/FFmpegVersions.h"
#include "ffmpeg/InBandParameters.h"
#include "ffmpeg/TimeCode.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace CxFFMPEG {

namespace {

/// Rate of the pictures, by the settings.
AVRational RateOf(const CxVideoSettings& settings) {
    return {static_cast<int>(settings.timeScale), static_cast<int>(settings.frameDuration)};
}

AVCodecID PcmCodec(int32_t bitsPerSample) {
    switch (bitsPerSample) {
    case 16: return AV_CODEC_ID_PCM_S16LE;
    case 24: return AV_CODEC_ID_PCM_S24LE;
    case 32: return AV_CODEC_ID_PCM_F32LE;
    default: return AV_CODEC_ID_PCM_U8;
    }
}

/// Whether it can be told to an encoder, whose numbers hold no more.
bool IsDescribed(const AudioDescription& audio) {
    return audio.format == "lpcm" && audio.sampleRate >= 1 && audio.channels >= 1 &&
           std::in_range<int32_t>(int64_t{audio.bitsPerSample} * audio.channels);
}

} // namespace

void FFmpegFileWriter::OutputDeleter::operator()(AVFormatContext* context) const {
    if (context->pb != nullptr) FFmpeg().avio_closep(&context->pb);
    FFmpeg().avformat_free_context(context);
}

std::unique_ptr<FFmpegFileWriter> FFmpegFileWriter::Create(const FileDescription& file,
                                                           const ContainerEntry* container) {
    auto writer = std::make_unique<FFmpegFileWriter>();
    return writer->Open(file.path, file.reelName, container) ? std::move(writer) : nullptr;
}

FFmpegFileWriter::~FFmpegFileWriter() { FFmpegFileWriter::Close(); }

bool FFmpegFileWriter::Open(const std::string& path, const std::string& reel,
                            const ContainerEntry* container) {
    Close();
    if (container == nullptr || container->format == nullptr) return false;
    AVFormatContext* context = nullptr;
    const int made =
        FFmpeg().avformat_alloc_output_context2(&context, container->format, nullptr, path.c_str());
    if (made < 0 || context == nullptr) return false;
    output.reset(context);
    if (FFmpeg().avio_open(&context->pb, path.c_str(), AVIO_FLAG_WRITE) < 0) {
        output.reset();
        return false;
    }
    reelName = reel;
    return true;
}

bool FFmpegFileWriter::Close() {
    if (output != nullptr && isHeaderWritten.value_or(false)) {
        // What a muxer holds goes out. Those that open files of their own do so with the trailer, and among
        // FFmpeg's there is one that doesn't survive a null packet.
        if ((output->oformat->flags & AVFMT_NOFILE) == 0) FFmpeg().av_write_frame(output.get(), nullptr);
        FFmpeg().av_write_trailer(output.get());
    }
    output.reset();
    audioContext.reset();
    videoContext = nullptr;
    videoTracks.clear();
    audioTracks.clear();
    isHeaderWritten.reset();
    return true;
}

bool FFmpegFileWriter::AddVideoStream(CxVideoSettings& settings, const EncoderEntry&) {
    const auto* const context = reinterpret_cast<const AVCodecContext*>(settings.value5);
    if (!IsOpen() || context == nullptr) return false;
    AVStream* const stream = FFmpeg().avformat_new_stream(output.get(), nullptr);
    if (stream == nullptr) return false;
    stream->time_base = context->time_base;
    // The duration of a frame and not its inverse. Kept.
    stream->avg_frame_rate = context->time_base;
    videoContext = context;
    videoTracks.push_back({stream, 0, RateOf(settings)});
    SetTimeCode(RateOf(settings), static_cast<int64_t>(settings.value3));
    if (FFmpeg().avcodec_parameters_from_context(stream->codecpar, context) < 0) return false;
    if (!reelName.empty()) FFmpeg().av_dict_set(&stream->metadata, "reel_name", reelName.c_str(), 0);
    return true;
}

/// Writes the time code of the first frame. That it may be missing is not looked at, so that the numbers for
/// that become a time code too. Kept.
void FFmpegFileWriter::SetTimeCode(AVRational rate, int64_t frames) {
    const int perSecond = rate.den != 0 ? rate.num / rate.den : 0;
    const auto rateByte = static_cast<uint8_t>(std::max(perSecond, 1));
    const TimeCode code = TimeCode::FromFrameCount(static_cast<uint32_t>(frames), rate, rateByte, false);
    FFmpeg().av_dict_set(&output->metadata, "timecode", code.Text().c_str(), 0);
}

bool FFmpegFileWriter::AddAudioStream(const AudioDescription& audio) {
    if (!IsOpen() || !IsDescribed(audio)) return false;
    const AVCodec* const encoder = FFmpeg().avcodec_find_encoder(PcmCodec(audio.bitsPerSample));
    if (encoder == nullptr || encoder->sample_fmts == nullptr) return false;
    AVStream* const stream = FFmpeg().avformat_new_stream(output.get(), nullptr);
    audioContext.reset(FFmpeg().avcodec_alloc_context3(encoder));
    if (stream == nullptr || audioContext == nullptr) return false;
    stream->time_base = {1, audio.sampleRate};
    if (videoTracks.empty() && audioTracks.empty()) SetTimeCode(audio.rate, audio.timeCodeFrames);
    audioTracks.push_back({stream, 0, audio.rate});
    if (!OpenAudioEncoder(*encoder, audio)) return false;
    FFmpeg().avcodec_parameters_from_context(stream->codecpar, audioContext.get());
    return true;
}

bool FFmpegFileWriter::OpenAudioEncoder(const AVCodec& encoder, const AudioDescription& audio) {
    AVCodecContext& context = *audioContext;
    const int32_t bitsPerFrame = audio.bitsPerSample * audio.channels;
    context.codec_type = AVMEDIA_TYPE_AUDIO;
    context.codec_id = encoder.id;
    context.sample_fmt = encoder.sample_fmts[0];
    context.bits_per_coded_sample = audio.bitsPerSample;
    context.bit_rate = int64_t{bitsPerFrame} * audio.sampleRate;
    context.block_align = bitsPerFrame / 8;
    context.sample_rate = audio.sampleRate;
    SetChannels(context, audio.channels);
    return FFmpeg().avcodec_open2(&context, &encoder, nullptr) >= 0;
}

/// Writes the header unless it is there. There is one attempt: not all muxers survive a second one.
bool FFmpegFileWriter::WriteHeader() {
    if (!isHeaderWritten) isHeaderWritten = FFmpeg().avformat_write_header(output.get(), nullptr) >= 0;
    return *isHeaderWritten;
}

/// Gives the muxer a packet, which stands in the file where it comes. FFmpeg's muxers of ASF end the process
/// where times go back, as they do from sound to pictures that are encoded ahead; so theirs are sorted.
bool FFmpegFileWriter::Write(AVPacket& packet) {
    const bool isSorted = std::string_view(output->oformat->name).starts_with("asf");
    const auto write = isSorted ? FFmpeg().av_interleaved_write_frame : FFmpeg().av_write_frame;
    return write(output.get(), &packet) >= 0;
}

/// The same of a packet of pictures, with what the muxer would lose of the stream's parameters.
bool FFmpegFileWriter::WritePicture(AVPacket& packet) {
    std::vector<uint8_t> bytes = WithParameters(packet, *videoContext, *output->oformat);
    if (bytes.empty()) return Write(packet);
    const PacketPointer whole(FFmpeg().av_packet_alloc());
    if (whole == nullptr) return false;
    whole->pts = packet.pts;
    whole->dts = packet.dts;
    whole->duration = packet.duration;
    whole->flags = packet.flags;
    whole->stream_index = packet.stream_index;
    whole->data = bytes.data();
    whole->size = static_cast<int>(bytes.size()) - AV_INPUT_BUFFER_PADDING_SIZE;
    return Write(*whole);
}

bool FFmpegFileWriter::WriteVideoPacket(AVPacket* packet) {
    if (!IsOpen() || videoTracks.empty() || !WriteHeader()) return false;
    const AVStream& stream = *videoTracks.front().stream;
    packet->stream_index = stream.index;
    // A tick is a frame. Muxers would take the length of one from the rate that is not inverted.
    if (packet->duration == 0) packet->duration = 1;
    FFmpeg().av_packet_rescale_ts(packet, videoContext->time_base, stream.time_base);
    if (!WritePicture(*packet)) return false;
    // A muxer that opens files of its own may have closed this one.
    if (output->pb != nullptr) FFmpeg().avio_flush(output->pb);
    return true;
}

bool FFmpegFileWriter::WriteAudioData(int32_t track, void* data, uint32_t size) {
    if (!IsOpen() || track < 0 || static_cast<size_t>(track) >= audioTracks.size()) return false;
    if (audioContext == nullptr || !std::in_range<int>(size) || (data == nullptr && size > 0)) return false;
    if (!WriteHeader()) return false;
    Track& audio = audioTracks[static_cast<size_t>(track)];
    const int64_t frames = size / std::max(audioContext->block_align, 1);
    const PacketPointer packet(FFmpeg().av_packet_alloc());
    if (packet == nullptr) return false;
    packet->pts = packet->dts = audio.nextTime;
    packet->stream_index = audio.stream->index;
    packet->duration = frames;
    packet->data = static_cast<uint8_t*>(data);
    packet->size = static_cast<int>(size);
    FFmpeg().av_packet_rescale_ts(packet.get(), audioContext->time_base, audio.stream->time_base);
    if (!Write(*packet)) return false;
    audio.nextTime += frames;
    return true;
}

} // namespace CxFFMPEG
