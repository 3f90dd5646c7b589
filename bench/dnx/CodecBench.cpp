// Frames through the registry, decoded and encoded, beside the same work without the back-end and the library
// behind it: FFmpeg's codec alone and the module's pixel conversion, one after the other.

#include "DNXMaterial.h"
#include "PeerCodec.h"
#include "framework/CxAVCodecRegistry.h"
#include "framework/MemoryTrackSource.h"
#include "host/Platform.h"
#include "pixel/PixelConvert.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

struct Depth {
    const char* name;
    ImageDataKind kind;
};
constexpr Depth depths[] = {{"image8", ImageData_RGBA8}, {"image16", ImageData_RGBA16}};

/// Measures `step`, which is true unless it fails, behind a first time: decoders and encoders are made then.
template <typename Step>
void Measure(benchmark::State& state, const Step& step) {
    if (!step()) state.SkipWithError("the first frame fails");
    for (auto _ : state)
        if (!step()) state.SkipWithError("a frame fails");
}

void OursDecodes(benchmark::State& state, const BenchCompression& compression, const Depth& depth) {
    MemoryTrackSource source(compression.fourCC, 1920, 1080, {FrameOf(compression)});
    const std::unique_ptr<CxAbstractAVCodec> decoder(CxAVCodecRegistry::CreateDecoder(&source));
    const BenchImage picture = MakeBenchImage(depth.kind);
    Image* image = picture.get();
    Measure(state, [&] { return decoder->GetDecodedFrame(0, image) == CxAV_OK; });
}

void OursEncodes(benchmark::State& state, const BenchCompression& compression, const Depth& depth) {
    const std::unique_ptr<CxAbstractAVCodec> encoder(CxAVCodecRegistry::CreateEncoder(compression.encoder));
    const BenchImage picture = MakeBenchImage(depth.kind);
    Image* image = picture.get();
    Measure(state, [&] {
        CxEncodedFrame frame;
        frame.codecTag = compression.id;
        const bool encoded = encoder->EncodeFrame(image, frame) == CxAV_OK;
        if (frame.data != nullptr) Platform::FreeMemAligned(frame.data);
        return encoded;
    });
}

/// An image's picture in a packing.
std::vector<uint8_t> BlobOf(uint32_t packing, Image* image) {
    const int32_t rowBytes = PixelConvert::CalcRowBytes(packing, 1920);
    std::vector<uint8_t> blob(static_cast<size_t>(rowBytes) * 1080);
    uint8_t* bytes = blob.data();
    PixelConvert::ImageToBlob(image, static_cast<int32_t>(packing), rowBytes, bytes, false);
    return blob;
}

void PeerDecodes(benchmark::State& state, const BenchCompression& compression, const Depth& depth) {
    PeerCodec peer(FrameOf(compression));
    const BenchImage picture = MakeBenchImage(depth.kind);
    Image* image = picture.get();
    std::vector<uint8_t> blob = BlobOf(compression.packing, image);
    const auto rowBytes = static_cast<uint32_t>(blob.size() / 1080);
    Measure(state, [&] {
        peer.Decode();
        return PixelConvert::BlobToImage(blob.data(), rowBytes, compression.packing, image);
    });
}

void PeerEncodes(benchmark::State& state, const BenchCompression& compression, const Depth& depth) {
    PeerCodec peer(FrameOf(compression));
    const BenchImage picture = MakeBenchImage(depth.kind);
    Image* image = picture.get();
    peer.SetPicture(BlobOf(compression.id == 1270 ? FourCC("a48r") : FourCC("v216"), image));
    std::vector<uint8_t> blob = BlobOf(compression.packing, image);
    const auto rowBytes = static_cast<int32_t>(blob.size() / 1080);
    uint8_t* bytes = blob.data();
    Measure(state, [&] {
        peer.Encode();
        return PixelConvert::ImageToBlob(image, static_cast<int32_t>(compression.packing), rowBytes, bytes,
                                         false);
    });
}

using Measurement = void (*)(benchmark::State&, const BenchCompression&, const Depth&);

void Register(const std::string& name, Measurement measurement, const BenchCompression& compression,
              const Depth& depth) {
    // The time of all threads tells more than the clock where other programs hold the processors.
    benchmark::RegisterBenchmark(name.c_str(), measurement, compression, depth)
        ->MeasureProcessCPUTime()
        ->UseRealTime();
}

bool RegisterAll() {
    constexpr const char* peer = "/ffmpeg_and_conversion";
    for (const BenchCompression& compression : benchCompressions) {
        for (const Depth& depth : depths) {
            const std::string name = std::string(compression.name) + "_to_" + depth.name;
            Register("dnx/decode_" + name + "/ours", OursDecodes, compression, depth);
            Register("dnx/decode_" + name + peer, PeerDecodes, compression, depth);
        }
        const std::string name = std::string(compression.name) + "_from_" + depths[1].name;
        Register("dnx/encode_" + name + "/ours", OursEncodes, compression, depths[1]);
        Register("dnx/encode_" + name + peer, PeerEncodes, compression, depths[1]);
    }
    return true;
}

const bool registered = RegisterAll();

} // namespace
