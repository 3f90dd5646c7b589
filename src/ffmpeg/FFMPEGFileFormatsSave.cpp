// The writing side of FFMPEGFileFormats.

#include "ffmpeg/FFMPEGFileFormats.h"
#include "ffmpeg/SaveSettings.h"
#include "ffmpeg/TimeCode.h"
#include "framework/CatchAll.h"
#include "host/AudioBlock.h"

#include <cmath>
#include <limits>

namespace CxFFMPEG {

namespace {

/// Number of frames for an image whose metadata have no time code.
constexpr uint64_t unknownTimeCode = std::numeric_limits<int64_t>::max();

/// The text under "TimeCode" of an image's metadata, empty if there is none; null without metadata.
const char* TimeCodeText(const Image& image) {
    const ScriptVal& metadata = image.ImageInfo.FindKeyConst("Metadata");
    return metadata.IsTable() ? metadata.FindKeyConst("TimeCode").ToString("") : nullptr;
}

/// Number of frames that a time code stands for, at the whole number next to the rate.
uint64_t CountTimeCode(const char* text, const CxVideoSettings& settings) {
    if (*text == '\0') return unknownTimeCode;
    TimeCode code = TimeCode::FromText(text);
    const float rate = static_cast<float>(settings.timeScale) / static_cast<float>(settings.frameDuration);
    code.framesPerSecond = static_cast<uint8_t>(static_cast<int64_t>(std::floor(rate + 0.5F)));
    return static_cast<uint64_t>(code.FrameCount());
}

void DescribeEncoder(const EncoderEntry& entry, CxVideoSettings& settings) {
    settings.text0 = settings.text1 = entry.label;
    settings.value1 = static_cast<uint32_t>(entry.codecId);
    settings.fourCC = FourCC("yuv2");
    settings.flag1 = true;
    settings.value4 = 1;
    settings.value5 = 0;
}

void DescribeImage(Image& image, CxVideoSettings& settings) {
    settings.width = image.Width;
    settings.height = image.Height;
    const bool isInterlaced = image.GetAttr(ImageTag_Interlaced, 0) != 0;
    settings.fieldOrder = SaveFieldOrder(isInterlaced, image.Width, image.Height);
    const PixelAspect aspect = ReducePixelAspect(image.XAspect, image.YAspect);
    settings.value7 = static_cast<uint32_t>(aspect.numerator);
    settings.value8 = static_cast<uint32_t>(aspect.denominator);
    // An image without metadata keeps the time code of the save before. Kept.
    if (const char* const text = TimeCodeText(image)) settings.value3 = CountTimeCode(text, settings);
}

const AudioBlock* FindAudio(const TagList& tags) {
    return static_cast<const AudioBlock*>(tags.GetPtr(AudioTag_Block, nullptr));
}

AudioDescription Describe(const AudioBlock& block) {
    AudioDescription audio;
    audio.format = "lpcm";
    audio.sampleRate = block.SampleRate;
    audio.channels = block.Channels;
    audio.bitsPerSample = block.BitsPerSample;
    return audio;
}

} // namespace

bool FFMPEGFileFormats::SaveHeaderTagList(const char* path, Image* image, TagList& tags) {
    if (containerName.IsEmpty() || encoderName.IsEmpty() || path == nullptr || image == nullptr) return false;
    ContainerEntry container;
    EncoderEntry entry;
    const bool isKnown = CatchAll(false, [&] {
        container = FindContainer(static_cast<const char*>(containerName));
        entry = FindEncoder(static_cast<const char*>(encoderName));
        return entry.codecId != 0 && container.format != nullptr;
    });
    // Up to here a save that runs goes on.
    if (!isKnown) return false;
    CloseWriter();
    const bool isOpen = CatchAll(false, [&] {
        writer = FFmpegFileWriter::Create({path, static_cast<int32_t>(settings.timeScale), {}}, &container);
        if (writer == nullptr) return false;
        DescribeEncoder(entry, settings);
        DescribeImage(*image, settings);
        return OpenStreams(entry, FindAudio(tags));
    });
    if (!isOpen) AbandonWriter();
    return isOpen;
}

/// Opens the encoder and tells the writer of its stream, and of the sound if there is any.
bool FFMPEGFileFormats::OpenStreams(const EncoderEntry& entry, const AudioBlock* audio) {
    encoder = std::make_unique<FFMPEGCodecs>(CxAV_ENCODE, nullptr);
    if (encoder->OpenEncoder(entry, settings, options) != CxAV_OK) return false;
    settings.value5 = reinterpret_cast<uintptr_t>(encoder->Context());
    if (!writer->AddVideoStream(settings, entry)) return false;
    return audio == nullptr || writer->AddAudioStream(Describe(*audio));
}

bool FFMPEGFileFormats::SaveFrameTagList(uint32_t /*frame*/, Image* image, TagList& tags) try {
    if (writer == nullptr || image == nullptr) return false;
    const PacketPointer packet(FFmpeg().av_packet_alloc());
    int32_t gotPacket = 0;
    if (packet == nullptr || encoder->EncodeImage(image, packet.get(), gotPacket) != CxAV_OK) return false;
    // What becomes of the packet is not looked at. Kept.
    if (gotPacket != 0) writer->WriteVideoPacket(packet.get());
    const AudioBlock* const audio = FindAudio(tags);
    if (audio == nullptr) return true;
    return audio->Size >= 0 && writer->WriteAudioData(0, audio->Data, static_cast<uint32_t>(audio->Size));
} catch (...) {
    return false;
}

/// Writes what the encoder holds back, and ends the file.
void FFMPEGFileFormats::CloseWriter() {
    if (writer == nullptr) return;
    const PacketPointer packet(FFmpeg().av_packet_alloc());
    Image* noImage = nullptr;
    int32_t gotPacket = packet != nullptr ? 1 : 0;
    while (gotPacket != 0 && encoder->EncodeImage(noImage, packet.get(), gotPacket) == CxAV_OK)
        writer->WriteVideoPacket(packet.get());
    AbandonWriter();
}

/// Ends the file with what is in it, which needs no encoder any more.
void FFMPEGFileFormats::AbandonWriter() {
    encoder.reset();
    settings.value5 = 0;
    writer.reset();
}

} // namespace CxFFMPEG
