// Encoding of camera-like frames on one worker beside FFmpeg's encoders on one thread. Each side takes the
// pictures as its callers hold them: packed here, planar there.

#include "prores/PeerCodec.h"
#include "prores/PinWorker.h"
#include "prores/Prx.h"
#include "prores/PrxFormats.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace {

/// Pictures of a camera at its base sensitivity, and in the dark, where rate control has the most to do.
struct Scene {
    const char* name;
    int32_t width;
    int32_t height;
    int32_t pictures;
    float grain;
    const char* suffix;
};
constexpr Scene scenes[] = {{"1080", 1920, 1080, 4, 2, ""},
                            {"1080", 1920, 1080, 4, 5, "_heavy_grain"},
                            {"2160", 3840, 2160, 2, 2, ""}};

struct Material {
    PeerProfile profile;
    uint32_t codecType;
    uint32_t pixelFormat;
    const char* formatName;
    Scene scene;
};

std::string NameOf(const Scene& scene) { return std::string(scene.name).append(scene.suffix); }

const std::vector<CameraPicture>& Pictures(const Scene& scene) {
    static std::map<std::string, std::vector<CameraPicture>> made;
    std::vector<CameraPicture>& pictures = made[NameOf(scene)];
    for (auto i = static_cast<int32_t>(pictures.size()); i < scene.pictures; ++i) {
        pictures.push_back(MakeCameraPicture(scene.width, scene.height, i, scene.grain));
        AddMatte(pictures.back());
    }
    return pictures;
}

uint32_t RowBytes(const Material& material) {
    return PrxGetBytesPerRow(static_cast<uint32_t>(material.scene.width), material.pixelFormat, 0);
}

using PackedPictures = std::vector<std::vector<uint8_t>>;

/// The pictures as the engine takes them; made once.
PackedPictures& Packed(const Material& material) {
    static std::map<std::tuple<std::string, uint32_t>, PackedPictures> made;
    PackedPictures& packed = made[{NameOf(material.scene), material.pixelFormat}];
    if (packed.empty())
        for (const CameraPicture& picture : Pictures(material.scene))
            packed.push_back(PackCameraPicture(picture, material.pixelFormat, RowBytes(material)));
    return packed;
}

/// The pictures as the peers take them; made once.
const std::vector<PeerFrame>& Planar(const Material& material) {
    static std::map<std::tuple<std::string, bool>, std::vector<PeerFrame>> made;
    std::vector<PeerFrame>& planar = made[{NameOf(material.scene), material.profile.is444}];
    if (planar.empty())
        for (const CameraPicture& picture : Pictures(material.scene))
            planar.push_back(MakePeerFrame(picture, PeerPixelFormat(material.profile, true)));
    return planar;
}

struct DeleteEncoder {
    void operator()(PrxEncoderRef encoder) const { PrxDeleteEncoder(encoder); }
};

void CountBytes(benchmark::State& state, int64_t bytes) {
    state.counters["kB_per_frame"] =
        static_cast<double>(bytes) / 1000 / static_cast<double>(std::max<int64_t>(state.iterations(), 1));
}

void Ours(benchmark::State& state, Material material, uint32_t workers) {
    PackedPictures& pictures = Packed(material);
    const Scene& scene = material.scene;
    const PrxEncodeSettings settings = {material.codecType, 0, material.profile.is444};
    int32_t capacity = 0;
    PrxGetMaxFrameSize(settings.codecType, settings.hasAlpha, scene.width, scene.height, &capacity, nullptr);
    std::vector<uint8_t> output(static_cast<size_t>(capacity));
    const std::unique_ptr<PrxEncoderHandle, DeleteEncoder> encoder(PrxCreateEncoder(workers, PinWorker));
    size_t next = 0;
    int64_t bytes = 0;
    for (auto _ : state) {
        const PrxPixelBuffer picture = {pictures[next++ % pictures.size()].data(),
                                        static_cast<int32_t>(RowBytes(material)), material.pixelFormat,
                                        scene.width, scene.height};
        int32_t frameSize = 0;
        if (PrxEncodeFrame(encoder.get(), &settings, &picture, output.data(), capacity, &frameSize,
                           nullptr) != 0)
            state.SkipWithError("refused");
        bytes += frameSize;
    }
    CountBytes(state, bytes);
}

void Peer(benchmark::State& state, Material material, const char* name) {
    const std::vector<PeerFrame>& pictures = Planar(material);
    PeerEncoder encoder(name, material.profile, PeerPixelFormat(material.profile, true), material.scene.width,
                        material.scene.height);
    size_t next = 0;
    int64_t bytes = 0;
    for (auto _ : state) {
        AVFrame& picture = *pictures[next % pictures.size()];
        picture.pts = static_cast<int64_t>(next++);
        bytes += encoder.Encode(picture)->size;
    }
    CountBytes(state, bytes);
}

template <typename Function, typename... Arguments>
void Register(const std::string& name, Function function, Arguments... arguments) {
    benchmark::RegisterBenchmark(name.c_str(),
                                 [=](benchmark::State& state) { function(state, arguments...); })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
}

void RegisterAll() {
    for (const Scene& scene : scenes)
        for (const Material& material :
             {Material{peerProfiles[3], prxCodecApch, prxFormatV216, "v216", scene},
              Material{peerProfiles[2], prxCodecApcn, prxFormatV216, "v216", scene},
              Material{peerProfiles[4], prxCodecAp4h, prxFormatB64a, "b64a", scene}}) {
            const std::string what = std::string("prores/encode_") + material.profile.name + "_" +
                                     scene.name + "_" + material.formatName + scene.suffix + "/";
            Register(what + "ours", Ours, material, 1u);
            // The other peer makes poor 4:4:4.
            if (!material.profile.is444) Register(what + "prores_aw", Peer, material, "prores_aw");
            Register(what + "prores_ks", Peer, material, "prores_ks");
            Register(what + "two_threads", Ours, material, 2u);
        }
}

[[maybe_unused]] const bool registered = (RegisterAll(), true);

} // namespace
