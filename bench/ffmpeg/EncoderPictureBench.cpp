// What an image costs on its way to an encoder, 1920x1080: all that `EncodeImage` does but encoding. Beside
// it libswscale, with its fastest filter and from words that are there already; one thread each.

#include "ffmpeg/FFMPEGCodecs.h"
#include "ffmpeg/FFmpegSpy.h"
#include "support/TestSupport.h"

#include <benchmark/benchmark.h>
#include <tbb/global_control.h>

#include <cstdlib>
#include <random>
#include <string>

namespace {

constexpr int32_t width = 1920;
constexpr int32_t height = 1080;

constexpr AVPixelFormat formats[] = {AV_PIX_FMT_YUV420P,     AV_PIX_FMT_YUV422P,     AV_PIX_FMT_YUV444P,
                                     AV_PIX_FMT_YUV420P10LE, AV_PIX_FMT_YUV422P10LE, AV_PIX_FMT_YUV444P10LE,
                                     AV_PIX_FMT_RGB8};

struct Depth {
    const char* name;
    ImageDataKind kind;
};
constexpr Depth depths[] = {
    {"image8", ImageData_RGBA8},
    {"image16", ImageData_RGBA16},
};

/// An encoder that takes every picture and gives nothing.
class SilentEncoder {
public:
    explicit SilentEncoder(AVPixelFormat format)
        : sent_(&FFmpegFunctions::avcodec_send_frame, [](AVCodecContext*, const AVFrame*) { return 0; }),
          received_(&FFmpegFunctions::avcodec_receive_packet,
                    [](AVCodecContext*, AVPacket*) { return AVERROR(EAGAIN); }),
          codec_(CxAV_ENCODE, nullptr), packet_(av_packet_alloc()) {
        CxFFMPEG::EncoderEntry entry;
        entry.codecId = AV_CODEC_ID_RAWVIDEO;
        entry.pixelFormat = format;
        entry.encoder = avcodec_find_encoder(AV_CODEC_ID_RAWVIDEO);
        CxVideoSettings settings;
        settings.width = width;
        settings.height = height;
        settings.frameDuration = 1;
        settings.timeScale = 25;
        settings.value11 = AVCOL_SPC_BT709;
        CxFFMPEG::EncoderOptions options;
        if (codec_.OpenEncoder(entry, settings, options) != CxAV_OK) std::abort();
    }
    ~SilentEncoder() { av_packet_free(&packet_); }
    SilentEncoder(const SilentEncoder&) = delete;
    SilentEncoder& operator=(const SilentEncoder&) = delete;

    bool Encode(Image* image) {
        int32_t gotPacket = 0;
        return codec_.EncodeImage(image, packet_, gotPacket) == CxAV_OK;
    }

private:
    ReplacedFunction<decltype(avcodec_send_frame)> sent_;
    ReplacedFunction<decltype(avcodec_receive_packet)> received_;
    CxFFMPEG::FFMPEGCodecs codec_;
    AVPacket* packet_;
};

ImagePtr MakeNoise(ImageDataKind kind) {
    ImagePtr image = MakeImage(width, height, kind);
    std::mt19937 random(1);
    for (int32_t row = 0; row < height; ++row)
        for (int32_t x = 0; x < width; ++x)
            image->SetPixel({static_cast<uint16_t>(random()), static_cast<uint16_t>(random()),
                             static_cast<uint16_t>(random()), 65535},
                            image->RowTable[row] + int64_t{x} * image->PixelStride, nullptr, image.get());
    return image;
}

void Ours(benchmark::State& state, AVPixelFormat format, const Depth& depth, size_t threads) {
    const tbb::global_control control(tbb::global_control::max_allowed_parallelism, threads);
    if (!LoadFFmpeg()) return state.SkipWithError("no FFmpeg");
    SilentEncoder encoder(format);
    const ImagePtr image = MakeNoise(depth.kind);
    for (auto _ : state)
        if (!encoder.Encode(image.get())) state.SkipWithError("the conversion failed");
}

/// A picture in memory of its own, of noise that all components share.
class Planes {
public:
    explicit Planes(AVPixelFormat format) {
        const int size = av_image_alloc(data, strides, width, height, format, 32);
        if (size < 0) std::abort();
        std::mt19937 random(1);
        for (int i = 0; i < size; ++i)
            data[0][i] = static_cast<uint8_t>(random());
    }
    ~Planes() { av_freep(&data[0]); }
    Planes(const Planes&) = delete;
    Planes& operator=(const Planes&) = delete;

    uint8_t* data[4] = {};
    int strides[4] = {};
};

void Swscale(benchmark::State& state, AVPixelFormat format) {
    const Planes words(AV_PIX_FMT_RGB48LE);
    const Planes picture(format);
    SwsContext* const scaler = sws_getContext(width, height, AV_PIX_FMT_RGB48LE, width, height, format,
                                              SWS_POINT, nullptr, nullptr, nullptr);
    if (scaler == nullptr) return state.SkipWithError("libswscale has no such conversion");
    for (auto _ : state) {
        if (sws_scale(scaler, words.data, words.strides, 0, height, picture.data, picture.strides) != height)
            state.SkipWithError("the conversion failed");
        benchmark::ClobberMemory();
    }
    sws_freeContext(scaler);
}

bool RegisterAll() {
    for (const AVPixelFormat format : formats) {
        for (const Depth& depth : depths) {
            const std::string name =
                std::string("ffmpeg/") + depth.name + "_to_" + av_get_pix_fmt_name(format);
            benchmark::RegisterBenchmark((name + "/ours").c_str(), Ours, format, depth, 1)->UseRealTime();
            benchmark::RegisterBenchmark((name + "/swscale").c_str(), Swscale, format)->UseRealTime();
            benchmark::RegisterBenchmark((name + "/two_threads").c_str(), Ours, format, depth, 2)
                ->UseRealTime();
        }
    }
    return true;
}

const bool registered = RegisterAll();

} // namespace
