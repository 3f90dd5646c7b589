#pragma once

#include "ffmpeg/CodecTestSupport.h"
#include "ffmpeg/FFMPEGCodecs.h"
#include "ffmpeg/FramePatches.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

/// What the codec's encoding side is given, and what FFmpeg's own decoders make of its packets.

inline CxFFMPEG::EncoderEntry EntryOf(const char* encoder, AVPixelFormat format,
                                      int32_t profile = FF_PROFILE_UNKNOWN) {
    // FFmpeg's words would stand among those that the tests read.
    av_log_set_level(AV_LOG_QUIET);
    CxFFMPEG::EncoderEntry entry;
    entry.encoder = avcodec_find_encoder_by_name(encoder);
    EXPECT_NE(entry.encoder, nullptr) << encoder;
    entry.codecId = entry.encoder != nullptr ? entry.encoder->id : AV_CODEC_ID_NONE;
    entry.profile = profile;
    entry.pixelFormat = format;
    return entry;
}

/// 25 frames a second of BT.709, square pixels.
inline CxVideoSettings SettingsOf(int32_t width, int32_t height) {
    CxVideoSettings settings;
    settings.width = width;
    settings.height = height;
    settings.frameDuration = 1;
    settings.timeScale = 25;
    settings.fieldOrder = 1;
    settings.gopSize = 12;
    settings.value7 = settings.value8 = 1;
    settings.value9 = settings.value10 = settings.value11 = 1;
    return settings;
}

struct PacketFree {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using TestPacket = std::unique_ptr<AVPacket, PacketFree>;

/// An encoder on its way, opened or not, with the packets that came out.
class TestEncoder {
public:
    explicit TestEncoder(int32_t width = 64, int32_t height = 48) : settings(SettingsOf(width, height)) {}

    CxAVError Open(const CxFFMPEG::EncoderEntry& entry) {
        return codec.OpenEncoder(entry, settings, options);
    }

    /// One call, with null to drain; what comes is kept.
    CxAVError Encode(Image* image) {
        TestPacket packet(av_packet_alloc());
        int32_t gotPacket = -1;
        const CxAVError result = codec.EncodeImage(image, packet.get(), gotPacket);
        EXPECT_EQ(gotPacket, packet->data != nullptr ? 1 : 0);
        if (gotPacket == 1) packets.push_back(std::move(packet));
        return result;
    }

    /// Drains to the end, and gives the last result.
    CxAVError Drain() {
        CxAVError result;
        while ((result = Encode(nullptr)) == CxAV_OK) {
        }
        return result;
    }

    CxFFMPEG::FFMPEGCodecs codec{CxAV_ENCODE, nullptr};
    CxVideoSettings settings;
    CxFFMPEG::EncoderOptions options;
    std::vector<TestPacket> packets;
};

/// An encoder of H.264 that holds nothing back.
inline CxFFMPEG::EncoderEntry H264Entry(AVPixelFormat format = AV_PIX_FMT_YUV420P) {
    return EntryOf("libx264", format);
}

/// All frames of an encoder's packets, by FFmpeg's decoder, in order of presentation.
inline std::vector<TestFrame> Decode(const TestEncoder& encoder) {
    std::vector<TestFrame> frames;
    const AVCodecContext& encoding = *encoder.codec.Context();
    AVCodecContext* context = avcodec_alloc_context3(avcodec_find_decoder(encoding.codec_id));
    AVCodecParameters* parameters = avcodec_parameters_alloc();
    EXPECT_GE(avcodec_parameters_from_context(parameters, &encoding), 0);
    EXPECT_GE(avcodec_parameters_to_context(context, parameters), 0);
    avcodec_parameters_free(&parameters);
    context->thread_count = 1;
    EXPECT_GE(avcodec_open2(context, nullptr, nullptr), 0);
    const auto feed = [&](const AVPacket* packet) {
        EXPECT_GE(avcodec_send_packet(context, packet), 0);
        for (TestFrame frame(av_frame_alloc()); avcodec_receive_frame(context, frame.get()) >= 0;
             frame.reset(av_frame_alloc()))
            frames.push_back(std::move(frame));
    };
    for (const TestPacket& packet : encoder.packets)
        feed(packet.get());
    feed(nullptr);
    avcodec_free_context(&context);
    return frames;
}

/// An image of one colour, with white at 65535.
inline ImagePtr MakeFlatImage(int32_t width, int32_t height, const Pixel& pixel,
                              ImageDataKind kind = ImageData_RGBA16) {
    ImagePtr image = MakeImage(width, height, kind);
    for (int32_t row = 0; row < height; ++row)
        for (int32_t x = 0; x < width; ++x)
            SetPixelAt(*image, x, row, pixel);
    return image;
}

/// An image of grey, by its number.
inline ImagePtr MakeGreyImage(int32_t number, int32_t width = 64, int32_t height = 48) {
    const auto grey = static_cast<uint16_t>((LumaOfFrame(number) - 16) * 65535 / 219);
    return MakeFlatImage(width, height, {grey, grey, grey, 65535});
}
