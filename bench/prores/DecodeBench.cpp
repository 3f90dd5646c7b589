// Decoding of camera-like frames on one worker beside FFmpeg's decoder on one thread, on the same packets.

#include "prores/DecodeMaterial.h"
#include "prores/PeerCodec.h"
#include "prores/PinWorker.h"
#include "prores/Prx.h"
#include "prores/PrxFormats.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

namespace {

void CountBits(benchmark::State& state, const Material& material) {
    int64_t bytes = 0;
    for (const PeerPacket& packet : material.Packets())
        bytes += packet->size;
    state.counters["kB_per_frame"] = static_cast<double>(bytes) / material.size.packets / 1000;
}

void Ours(benchmark::State& state, Material material, uint32_t format, uint32_t quality, uint32_t workers) {
    const auto& packets = material.Packets();
    const Picture picture(material.size, format, static_cast<int32_t>(quality));
    const std::unique_ptr<PrxDecoderHandle, DeleteDecoder> decoder(PrxCreateDecoder(workers, PinWorker));
    size_t next = 0;
    for (auto _ : state) {
        const AVPacket& packet = *packets[next++ % packets.size()];
        if (PrxDecodeFrame(decoder.get(), packet.data, packet.size, picture.Buffer(), quality, 0) <= 0)
            state.SkipWithError("refused");
    }
    CountBits(state, material);
}

void Peer(benchmark::State& state, Material material) {
    const auto& packets = material.Packets();
    PeerDecoder decoder(material.profile, material.size.width, material.size.height);
    size_t next = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(decoder.Decode(*packets[next++ % packets.size()]).data[0]);
}

void PeerWithScaler(benchmark::State& state, Material material) {
    const auto& packets = material.Packets();
    PeerDecoder decoder(material.profile, material.size.width, material.size.height);
    PeerFrame rgba(av_frame_alloc());
    rgba->width = material.size.width;
    rgba->height = material.size.height;
    rgba->format = AV_PIX_FMT_RGBA64LE;
    av_frame_get_buffer(rgba.get(), 64);
    std::unique_ptr<SwsContext, FreeScaler> scaler;
    size_t next = 0;
    for (auto _ : state) {
        const AVFrame& frame = decoder.Decode(*packets[next++ % packets.size()]);
        if (!scaler)
            scaler.reset(sws_getContext(frame.width, frame.height, static_cast<AVPixelFormat>(frame.format),
                                        rgba->width, rgba->height, AV_PIX_FMT_RGBA64LE, SWS_POINT, nullptr,
                                        nullptr, nullptr));
        sws_scale(scaler.get(), frame.data, frame.linesize, 0, frame.height, rgba->data, rgba->linesize);
    }
}

template <typename Function, typename... Arguments>
void Register(const std::string& name, Function function, Arguments... arguments) {
    benchmark::RegisterBenchmark(name.c_str(),
                                 [=](benchmark::State& state) { function(state, arguments...); })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
}

void RegisterAll() {
    for (const Size& size : sizes)
        for (const PeerProfile& profile : peerProfiles) {
            const Material material = {profile, size};
            const std::string what = std::string(profile.name) + "_" + size.name;
            const uint32_t format = profile.is444 ? prxFormatY416 : prxFormatV216;
            const std::string planar = "prores/decode_" + what + (profile.is444 ? "_y416/" : "_v216/");
            Register(planar + "ours", Ours, material, format, 0u, 1u);
            Register(planar + "ffmpeg", Peer, material);
            Register(planar + "two_threads", Ours, material, format, 0u, 2u);
            const std::string rgb = "prores/decode_" + what + "_b64a/";
            Register(rgb + "ours", Ours, material, prxFormatB64a, 0u, 1u);
            Register(rgb + "ffmpeg_swscale", PeerWithScaler, material);
            Register(rgb + "two_threads", Ours, material, prxFormatB64a, 0u, 2u);
            const std::string half = "prores/half_size_" + what + "_2vuy/";
            Register(half + "ours", Ours, material, prxFormat2vuy, 2u, 1u);
            Register(half + "full_size", Ours, material, prxFormat2vuy, 0u, 1u);
        }
}

[[maybe_unused]] const bool registered = (RegisterAll(), true);

} // namespace
