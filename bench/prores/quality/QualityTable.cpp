// Prints a Markdown table of what encoding costs a picture: frame size, PSNR and SSIM of this engine in each
// codec, and beside it both of FFmpeg's encoders at the sizes nearest to that which they reach. FFmpeg
// decodes all frames.
//
// usage: prores_quality [WIDTH HEIGHT]

#include "prores/PeerCodec.h"
#include "prores/Prx.h"
#include "prores/PrxFormats.h"
#include "prores/quality/PictureQuality.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace {

using Planes = std::array<QualityPlane, 3>; ///< luma, Cb, Cr

Planes PlanesOf(const AVFrame& frame) {
    const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    const float step = std::ldexp(1.0f, 10 - format.comp[0].depth);
    Planes planes;
    for (int i = 0; i < 3; ++i) {
        const int32_t width = i == 0 ? frame.width : frame.width >> format.log2_chroma_w;
        QualityPlane& plane = planes[static_cast<size_t>(i)];
        plane.width = width;
        plane.height = frame.height;
        for (int32_t y = 0; y < frame.height; ++y) {
            const uint8_t* const row = frame.data[i] + int64_t{y} * frame.linesize[i];
            for (int32_t x = 0; x < width; ++x) {
                uint16_t code = 0;
                std::memcpy(&code, row + 2 * int64_t{x}, sizeof(code));
                plane.codes.push_back(static_cast<float>(code) * step);
            }
        }
    }
    return planes;
}

uint32_t CodecTypeOf(const PeerProfile& profile) {
    uint32_t code = 0;
    for (int i = 0; i < 4; ++i)
        code = code << 8 | static_cast<uint8_t>(profile.name[i]);
    return code;
}

PeerPacket EncodeHere(const CameraPicture& picture, const PeerProfile& profile) {
    const uint32_t format = profile.is444 ? prxFormatY416 : prxFormatV216;
    const uint32_t rowBytes = PrxGetBytesPerRow(static_cast<uint32_t>(picture.width), format, 0);
    std::vector<uint8_t> pixels = PackCameraPicture(picture, format, rowBytes);
    const PrxPixelBuffer buffer = {pixels.data(), static_cast<int32_t>(rowBytes), format, picture.width,
                                   picture.height};
    const PrxEncodeSettings settings = {CodecTypeOf(profile), 0, 0};
    int32_t capacity = 0;
    PrxGetMaxFrameSize(settings.codecType, 0, picture.width, picture.height, &capacity, nullptr);
    PeerPacket packet(av_packet_alloc());
    av_new_packet(packet.get(), capacity);
    const PrxEncoderRef encoder = PrxCreateEncoder(0, nullptr);
    int32_t size = 0;
    PrxEncodeFrame(encoder, &settings, &buffer, packet->data, capacity, &size, nullptr);
    PrxDeleteEncoder(encoder);
    av_shrink_packet(packet.get(), size);
    return packet;
}

/// The peer's frame of nearly `size` bytes, by the number of bits that it may spend on a macroblock.
PeerPacket EncodeByKs(const CameraPicture& picture, const PeerProfile& profile, int32_t size) {
    const AVPixelFormat format = PeerPixelFormat(profile, false);
    const PeerFrame frame = MakePeerFrame(picture, format);
    int32_t least = 128; // it takes no fewer
    int32_t most = 8192;
    PeerPacket best;
    while (least <= most) {
        const int32_t bits = (least + most) / 2;
        PeerPacket packet =
            PeerEncoder("prores_ks", profile, format, picture.width, picture.height, bits).Encode(*frame);
        (packet->size < size ? least : most) = packet->size < size ? bits + 1 : bits - 1;
        if (!best || std::abs(packet->size - size) < std::abs(best->size - size)) best = std::move(packet);
    }
    return best;
}

/// The peer's frame of the profile that comes nearest to `size` bytes: it can't be told a size.
PeerPacket EncodeByAw(const CameraPicture& picture, const PeerProfile& wanted, int32_t size) {
    PeerPacket best;
    for (const PeerProfile& profile : peerProfiles) {
        if (profile.is444 != wanted.is444) continue;
        const AVPixelFormat format = PeerPixelFormat(profile, false);
        PeerPacket packet = PeerEncoder("prores_aw", profile, format, picture.width, picture.height)
                                .Encode(*MakePeerFrame(picture, format));
        if (!best || std::abs(packet->size - size) < std::abs(best->size - size)) best = std::move(packet);
    }
    return best;
}

void PrintRow(const CameraPicture& picture, const PeerProfile& profile, const char* who, float grain,
              const AVPacket& packet) {
    PeerDecoder decoder(profile, picture.width, picture.height);
    const Planes decoded = PlanesOf(decoder.Decode(packet));
    const Planes source = PlanesOf(*MakePeerFrame(picture, PeerPixelFormat(profile, false)));
    std::array<double, 3> psnr = {};
    for (size_t i = 0; i < 3; ++i)
        psnr[i] = PlanePsnr(source[i], decoded[i]);
    std::printf("| %s | %.0f | %s | %d | %.2f | %.2f | %.2f | %.5f |\n", profile.name, grain, who,
                packet.size / 1000, psnr[0], psnr[1], psnr[2], PlaneSsim(source[0], decoded[0]));
}

void PrintRows(const CameraPicture& picture, const PeerProfile& profile, float grain) {
    const PeerPacket ours = EncodeHere(picture, profile);
    PrintRow(picture, profile, "ours", grain, *ours);
    PrintRow(picture, profile, "prores_ks", grain, *EncodeByKs(picture, profile, ours->size));
    PrintRow(picture, profile, "prores_aw", grain, *EncodeByAw(picture, profile, ours->size));
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv) {
    const int32_t width = argc == 3 ? std::atoi(argv[1]) : 1920;
    const int32_t height = argc == 3 ? std::atoi(argv[2]) : 1080;
    std::printf("| codec | grain | encoder | kB | PSNR Y | PSNR Cb | PSNR Cr | SSIM Y |\n"
                "|---|---|---|---|---|---|---|---|\n");
    for (const float grain : {2.0f, 5.0f}) {
        const CameraPicture picture = MakeCameraPicture(width, height, 0, grain);
        for (const PeerProfile& profile : peerProfiles)
            PrintRows(picture, profile, grain);
    }
}
