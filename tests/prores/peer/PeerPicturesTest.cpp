// Movies of both of FFmpeg's encoders, decoded by the engine and by FFmpeg. The peer rounds to 10 or 12 bits
// by a transform of its own, so pictures are close, not equal; alpha is coded without loss and must be the
// same.

#include "prores/encoder/EncodeFixture.h"
#include "prores/peer/EnginePicture.h"
#include "prores/peer/PeerDecoder.h"
#include "prores/peer/PictureDifference.h"
#include "tools/Workspace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iostream>

namespace {

/// A format of the engine, and how close to the peer's its planes are at least, in dB at 10 bits. Rounding
/// alone leaves 59 dB between 8 and 10 bits, and 71 dB between 10 and 16.
struct Format {
    uint32_t fourCC;
    const char* name;
    double leastPsnr;
};

constexpr Format formats[] = {{prxFormatV216, "v216", 65},
                              {prxFormatY416, "y416", 65},
                              {prxFormat2vuy, "2vuy", 55},
                              {prxFormatV210, "v210", 65}};

/// One movie: an encoder with its options.
struct Encoding {
    const char* name;
    const char* options;
    int alphaBits;
};

constexpr Encoding encodings[] = {
    {"ks_apco", "-c:v prores_ks -profile:v 0 -pix_fmt yuv422p10le", 0},
    {"ks_apcs", "-c:v prores_ks -profile:v 1 -pix_fmt yuv422p10le", 0},
    {"ks_apcn", "-c:v prores_ks -profile:v 2 -pix_fmt yuv422p10le", 0},
    {"ks_apch", "-c:v prores_ks -profile:v 3 -pix_fmt yuv422p10le", 0},
    {"ks_ap4h", "-c:v prores_ks -profile:v 4 -pix_fmt yuv444p10le", 0},
    {"ks_ap4x", "-c:v prores_ks -profile:v 5 -pix_fmt yuv444p10le", 0},
    {"ks_ap4h_alpha8", "-c:v prores_ks -profile:v 4 -alpha_bits 8 -pix_fmt yuva444p10le", 8},
    {"ks_ap4h_alpha16", "-c:v prores_ks -profile:v 4 -alpha_bits 16 -pix_fmt yuva444p10le", 16},
    {"ks_ap4x_alpha8", "-c:v prores_ks -profile:v 5 -alpha_bits 8 -pix_fmt yuva444p10le", 8},
    {"ks_ap4x_alpha16", "-c:v prores_ks -profile:v 5 -alpha_bits 16 -pix_fmt yuva444p10le", 16},
    {"ks_apch_narrow", "-c:v prores_ks -profile:v 3 -mbs_per_slice 2 -pix_fmt yuv422p10le", 0},
    {"aw_apco", "-c:v prores_aw -profile:v 0 -pix_fmt yuv422p10le", 0},
    {"aw_apcs", "-c:v prores_aw -profile:v 1 -pix_fmt yuv422p10le", 0},
    {"aw_apcn", "-c:v prores_aw -profile:v 2 -pix_fmt yuv422p10le", 0},
    {"aw_apch", "-c:v prores_aw -profile:v 3 -pix_fmt yuv422p10le", 0},
    {"aw_ap4h", "-c:v prores_aw -profile:v 4 -pix_fmt yuv444p10le", 0},
    {"aw_ap4x", "-c:v prores_aw -profile:v 5 -pix_fmt yuv444p10le", 0},
    {"aw_ap4h_alpha16", "-c:v prores_aw -profile:v 4 -pix_fmt yuva444p10le", 16},
    {"aw_ap4x_alpha16", "-c:v prores_aw -profile:v 5 -pix_fmt yuva444p10le", 16},
};

/// Size and scanning of all movies of a test.
struct Scene {
    const char* name;
    const char* size;
    const char* scanning; ///< ffmpeg's options
    int interlaceMode; ///< of the `prores_ks` frames; `prores_aw` writes all interlaced ones top field first
    int frames;
    bool evenWidth; ///< `prores_aw` takes no other
};

void PrintTo(const Scene& scene, std::ostream* out) { *out << scene.name; }

constexpr const char* bottomFirst = "-flags +ildct -top 0";
constexpr const char* topFirst = "-flags +ildct -top 1";

constexpr Scene scenes[] = {
    {"17x17_Progressive", "17x17", "", 0, 2, false},
    {"17x17_TopFirst", "17x17", topFirst, 1, 2, false},
    {"17x17_BottomFirst", "17x17", bottomFirst, 2, 2, false},
    {"130x98_Progressive", "130x98", "", 0, 2, true},
    {"130x98_TopFirst", "130x98", topFirst, 1, 2, true},
    {"130x98_BottomFirst", "130x98", bottomFirst, 2, 2, true},
    {"720x486_Progressive", "720x486", "", 0, 2, true},
    {"720x486_TopFirst", "720x486", topFirst, 1, 2, true},
    {"720x486_BottomFirst", "720x486", bottomFirst, 2, 2, true},
    {"1281x721_Progressive", "1281x721", "", 0, 1, false},
    {"1281x721_TopFirst", "1281x721", topFirst, 1, 1, false},
    {"1281x721_BottomFirst", "1281x721", bottomFirst, 2, 1, false},
    {"1998x1080_Progressive", "1998x1080", "", 0, 1, true},
    {"1998x1080_TopFirst", "1998x1080", topFirst, 1, 1, true},
    {"1998x1080_BottomFirst", "1998x1080", bottomFirst, 2, 1, true},
};

std::string FileOf(const Encoding& encoding) { return std::string(encoding.name) + ".mov"; }

std::vector<Encoding> EncodingsOf(const Scene& scene) {
    std::vector<Encoding> possible(std::begin(encodings), std::end(encodings));
    if (!scene.evenWidth) {
        std::erase_if(possible, [](const Encoding& one) { return std::string(one.name).starts_with("aw"); });
    }
    return possible;
}

/// A moving picture with grain, and an alpha of flat parts and slopes, in all encodings at once.
std::string MakeMovies(const Scene& scene) {
    const std::vector<Encoding> wanted = EncodingsOf(scene);
    const std::string source = std::string("testsrc2=r=25:s=").append(scene.size);
    std::string graph =
        source + ",format=yuv444p,noise=alls=12:allf=t:all_seed=5[colour];" + source +
        ",format=gray,noise=alls=3:allf=t:all_seed=6[alpha];" +
        "[colour][alpha]alphamerge,format=yuva444p10le,split=" + std::to_string(wanted.size());
    const std::string common = " -frames:v " + std::to_string(scene.frames) + " " + scene.scanning + " ";
    std::string outputs;
    for (const Encoding& encoding : wanted) {
        const std::string pad = std::string("[").append(encoding.name).append("]");
        graph += pad;
        outputs += " -map '" + pad + "'" + common + encoding.options + " " + FileOf(encoding);
    }
    return "ffmpeg -v error -nostdin -filter_complex '" + graph + "'" + outputs;
}

/// The worst figure of a test, and where it stands.
struct Worst {
    double psnr = INFINITY;
    std::string where;

    void See(double value, const std::string& place) {
        if (value < psnr) *this = {value, place};
    }
};

/// Decodes all frames of a movie by the engine, and compares them with those of the peer.
void CompareMovie(const std::vector<PeerPacket>& movie, PrxDecoderRef decoder, const Format& format,
                  const std::string& place, Worst& worst) {
    constexpr const char* components[] = {"Y", "Cb", "Cr"};
    Differences sums;
    for (const PeerPacket& packet : movie) {
        const PeerFrame& peer = packet.frame;
        const EnginePicture picture(decoder, packet.data, peer.width, peer.height, format.fourCC);
        ASSERT_EQ(picture.Result(), static_cast<int32_t>(packet.data.size()));
        const bool hasAllChroma = format.fourCC == prxFormatY416 && peer.log2ChromaWidth == 0;
        AddDifferences(picture, peer, hasAllChroma, sums);
        if (format.fourCC == prxFormatY416 && peer.HasAlpha()) {
            EXPECT_EQ(CountAlphaDifferences(picture, peer), 0U) << "alpha";
        }
    }
    for (size_t i = 0; i < sums.size(); ++i) {
        EXPECT_GE(sums[i].Psnr(), format.leastPsnr) << components[i];
        worst.See(sums[i].Psnr(), place + " " + components[i]);
    }
}

/// The movie is what the test is about.
void CheckStream(const PeerPacket& packet, const Encoding& encoding, const Scene& scene) {
    const int interlaceMode = packet.data.at(20) >> 2 & 3;
    const int alphaType = packet.data.at(25) & 15;
    ASSERT_EQ(std::to_string(packet.frame.width) + "x" + std::to_string(packet.frame.height), scene.size);
    const bool isKs = std::string(encoding.name).starts_with("ks");
    ASSERT_EQ(interlaceMode, isKs || scene.interlaceMode == 0 ? scene.interlaceMode : 1) << encoding.name;
    ASSERT_EQ(alphaType, encoding.alphaBits / 8) << encoding.name;
    ASSERT_EQ(packet.frame.HasAlpha(), encoding.alphaBits != 0) << encoding.name;
}

class PeerPictures : public testing::TestWithParam<Scene> {};

TEST_P(PeerPictures, AreCloseToTheEnginesInEveryPlaneAndEqualInAlpha) {
    const Scene& scene = GetParam();
    const Workspace workspace;
    const ProgramRun ffmpeg = workspace.Shell(MakeMovies(scene));
    ASSERT_EQ(ffmpeg.status, 0) << ffmpeg.err;
    const DecoderPtr decoder(PrxCreateDecoder(2, nullptr));
    Worst worst;
    for (const Encoding& encoding : EncodingsOf(scene)) {
        const std::vector<PeerPacket> movie = DecodeByPeer(workspace.Path(FileOf(encoding)));
        ASSERT_EQ(movie.size(), static_cast<size_t>(scene.frames));
        ASSERT_NO_FATAL_FAILURE(CheckStream(movie[0], encoding, scene));
        for (const Format& format : formats) {
            const std::string place = std::string(encoding.name).append(" in ").append(format.name);
            SCOPED_TRACE(place);
            CompareMovie(movie, decoder.get(), format, place, worst);
        }
    }
    std::cout << scene.name << ": worst PSNR " << worst.psnr << " dB (" << worst.where << ")" << std::endl;
    RecordProperty("WorstPsnr", std::to_string(worst.psnr) + " dB, " + worst.where);
}

INSTANTIATE_TEST_SUITE_P(OfFFmpeg, PeerPictures, testing::ValuesIn(scenes),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace
