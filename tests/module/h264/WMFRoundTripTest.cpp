// H.264 through the decoder and the encoder that the module makes of Media Foundation, with the library that
// stands in for the platform's, held against FFmpeg.

#include "codecs/UncompressedTestSupport.h"
#include "module/h264/Mp4File.h"
#include "module/h264/PeerTrackSource.h"
#include "pixel/PixelConvert.h"
#include "standins/mediafoundation/Surfaces.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <numeric>
#include <optional>
#include <unistd.h>

namespace {

constexpr int32_t width = 90; // no whole macroblocks
constexpr int32_t height = 70;
constexpr int32_t count = 24;

/// Makes a decoder of this back-end, which the registry would come to only if FFmpeg refused. Null if it
/// does.
CodecPointer NewDecoder(PeerTrackSource& source) {
    for (const CxAbstractCodecFactory* factory : CxAVCodecRegistry::GetDecoderFactories(source.GetFourCC())) {
        if (factory->GetName() != "DXVA") continue;
        // The registry's factories are there to be looked at, but their codecs can be made of them.
        CodecPointer decoder(const_cast<CxAbstractCodecFactory*>(factory)->CreateCodec(CxAV_DECODE));
        if (decoder->SetDataSource(&source) == CxAV_OK) return decoder;
    }
    return nullptr;
}

PeerStream Encoded(const std::string& profile, const std::string& parameters) {
    return PeerEncode(
        Scene(width, height, count),
        {.profile = profile, .parameters = "keyint=8:scenecut=0:" + parameters, .hasGlobalHeader = true});
}

/// A picture of the peer's as the module is to give it: YUY2, taken for `uyvy`.
ImagePtr ImageOf(const PeerPicture& picture) {
    Bytes surface = YUY2Of(SurfaceOf(picture));
    ImagePtr image = MakeImage(width, height);
    Image* target = image.get();
    const auto rowBytes = static_cast<uint32_t>(PixelConvert::CalcRowBytes(FourCC("uyvy"), 96));
    EXPECT_TRUE(PixelConvert::BlobToImage(surface.data(), rowBytes, FourCC("uyvy"), target));
    return image;
}

/// How far the colours of two images are apart: the root of the mean square, full scale being 1.
double Distance(Image& a, Image& b) {
    double squares = 0;
    for (int32_t y = 0; y < a.Height; ++y)
        for (int32_t x = 0; x < a.Width; ++x) {
            const Pixel p = PixelAt(a, x, y);
            const Pixel q = PixelAt(b, x, y);
            for (const int32_t difference : {p.R - q.R, p.G - q.G, p.B - q.B})
                squares += std::pow(difference / 65535.0, 2);
        }
    return std::sqrt(squares / (3.0 * a.Width * a.Height));
}

/// Decodes frames of a stream in an order; each must be the peer's.
/// @param tolerance  the most that an image may be away
void ExpectFrames(const PeerStream& stream, const std::vector<int32_t>& order, double tolerance) {
    const std::vector<PeerPicture> pictures = PeerDecode(stream.samples, stream.header);
    ASSERT_EQ(pictures.size(), static_cast<size_t>(count));
    PeerTrackSource source(LengthPrefixed(stream), width, height);
    const CodecPointer decoder = NewDecoder(source);
    ASSERT_NE(decoder, nullptr);
    for (const int32_t frame : order) {
        const ImagePtr image = MakeImage(width, height);
        ASSERT_EQ(Decode(*decoder, frame, image.get()), CxAV_OK) << frame;
        EXPECT_LE(Distance(*image, *ImageOf(pictures[static_cast<size_t>(frame)])), tolerance) << frame;
    }
}

std::vector<int32_t> Forward() {
    std::vector<int32_t> order(count);
    std::iota(order.begin(), order.end(), 0);
    return order;
}

std::vector<int32_t> Backward() {
    std::vector<int32_t> order = Forward();
    std::ranges::reverse(order);
    return order;
}

std::vector<int32_t> Shuffled() {
    std::mt19937 random = MakeRandom();
    std::vector<int32_t> order = Forward();
    std::ranges::shuffle(order, random);
    return order;
}

/// A smooth image that moves.
ImagePtr SmoothImage(int32_t number) {
    ImagePtr image = MakeImage(width, height);
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x)
            SetPixelAt(*image, x, y,
                       {15000 + 300 * ((x + number) % width), 20000 + 250 * y, 40000 - 200 * x, 65535});
    return image;
}

CxVideoSettings Settings() {
    CxVideoSettings settings;
    settings.width = width;
    settings.height = height;
    settings.timeScale = 1000;
    settings.frameDuration = 40;
    settings.fieldOrder = 1;
    settings.quality = 100;
    settings.gopSize = 8;
    return settings;
}

/// Encodes one image; nothing if the encoder gives nothing.
std::optional<Mp4Sample> EncodedSample(CxAbstractAVCodec& encoder, Image* image) {
    CxEncodedFrame frame;
    EXPECT_EQ(encoder.EncodeFrame(image, frame), CxAV_OK);
    if (frame.data == nullptr) return std::nullopt;
    Mp4Sample sample = {Bytes(frame.data, frame.data + frame.size), frame.timing.presentationTime,
                        frame.timing.decodeTime, frame.timing.duration, frame.timing.isKeyFrame};
    Platform::FreeMemAligned(frame.data);
    return sample;
}

/// The images of a movie through the encoder "H.264".
Mp4Track EncodedTrack() {
    const CodecPointer encoder = NewEncoder("H.264");
    CxVideoSettings settings = Settings();
    EXPECT_EQ(encoder->SetEncoderSettings(settings), CxAV_OK);
    Mp4Track track = {width, height, settings.extraData, {}};
    for (int32_t number = 0; number < count; ++number)
        if (auto sample = EncodedSample(*encoder, SmoothImage(number).get()))
            track.samples.push_back(std::move(*sample));
    while (auto sample = EncodedSample(*encoder, nullptr))
        track.samples.push_back(std::move(*sample));
    return track;
}

/// A file that goes when the test is over.
struct TemporaryFile {
    ~TemporaryFile() { std::filesystem::remove(path); }
    const std::string path = testing::TempDir() + "WMFRoundTrip" + std::to_string(getpid()) + ".mp4";
};

TEST(WMFRoundTrip, TheBackEndComesAfterFFmpegInTheRegistry) {
    std::vector<std::string> names;
    for (const CxAbstractCodecFactory* factory : CxAVCodecRegistry::GetDecoderFactories(FourCC("avc1")))
        names.push_back(factory->GetName());
    EXPECT_EQ(names, (std::vector<std::string>{"FFmpeg", "DXVA"}));
    PeerTrackSource source(LengthPrefixed(Encoded("baseline", "")), width, height);
    const CodecPointer decoder(CxAVCodecRegistry::CreateDecoder(&source));
    ASSERT_NE(decoder, nullptr);
    EXPECT_EQ(decoder->GetName(), "FFmpeg");
}

TEST(WMFRoundTrip, ABaselineMovieDecodesFrameByFrame) { ExpectFrames(Encoded("baseline", ""), Forward(), 0); }

TEST(WMFRoundTrip, AMainMovieDecodesFrameByFrame) {
    ExpectFrames(Encoded("main", "bframes=3:b-adapt=0:partitions=none"), Forward(), 0);
}

TEST(WMFRoundTrip, AHighMovieDecodesFrameByFrame) {
    ExpectFrames(Encoded("high", "bframes=3:b-adapt=0:partitions=i4x4,i8x8"), Forward(), 0);
}

TEST(WMFRoundTrip, AnyFrameDecodesInAnyOrder) {
    for (const PeerStream& stream :
         {Encoded("baseline", ""), Encoded("high", "bframes=3:b-adapt=0:partitions=none")}) {
        ExpectFrames(stream, Backward(), 0);
        ExpectFrames(stream, Shuffled(), 0);
    }
}

TEST(WMFRoundTrip, BPicturesOfSmallPartitionsComeNear) {
    for (const char* const profile : {"main", "high"})
        ExpectFrames(Encoded(profile, "bframes=3:b-adapt=0"), Forward(), 0.05);
}

TEST(WMFRoundTrip, EachFrameIsDecodedOnceOnTheWay) {
    PeerTrackSource source(LengthPrefixed(Encoded("high", "bframes=3:b-adapt=0")), width, height);
    const CodecPointer decoder = NewDecoder(source);
    const ImagePtr image = MakeImage(width, height);
    for (int32_t frame = 0; frame < count; ++frame)
        EXPECT_EQ(Decode(*decoder, frame, image.get()), CxAV_OK);
    EXPECT_EQ(source.reads, count);
}

TEST(WMFRoundTrip, AFrameThatIsSmallerThanItsTrackTellsIsNotConverted) {
    PeerTrackSource source(LengthPrefixed(Encoded("baseline", "")), 320, 240);
    const CodecPointer decoder = NewDecoder(source);
    ASSERT_NE(decoder, nullptr);
    const ImagePtr image = MakeImage(width, height);
    EXPECT_EQ(Decode(*decoder, 5, image.get()), CxAV_FAILED);
}

TEST(WMFRoundTrip, AnEncodedMovieIsReadByFFmpegWithItsTimesAndKeyFrames) {
    const TemporaryFile file;
    const Mp4Track track = EncodedTrack();
    ASSERT_EQ(track.samples.size(), static_cast<size_t>(count));
    ASSERT_TRUE(WriteMp4(file.path, track));
    std::vector<PeerPicture> pictures;
    const Mp4Track read = ReadMp4(file.path, pictures);
    EXPECT_EQ(read.record, track.record);
    EXPECT_TRUE(read.samples == track.samples);
    ASSERT_EQ(pictures.size(), static_cast<size_t>(count));
    for (size_t i = 0; i < read.samples.size(); ++i) {
        EXPECT_EQ(read.samples[i].presentationTime, static_cast<int64_t>(i) * 40);
        EXPECT_EQ(read.samples[i].duration, 40);
        EXPECT_EQ(read.samples[i].isKey, i % 8 == 0);
    }
}

TEST(WMFRoundTrip, AnEncodedMovieShowsItsImagesToFFmpegAsYUY2) {
    const TemporaryFile file;
    ASSERT_TRUE(WriteMp4(file.path, EncodedTrack()));
    std::vector<PeerPicture> pictures;
    ReadMp4(file.path, pictures);
    ASSERT_EQ(pictures.size(), static_cast<size_t>(count));
    for (int32_t number = 0; number < count; ++number) {
        const ImagePtr shown = ImageOf(pictures[static_cast<size_t>(number)]);
        EXPECT_LT(Distance(*shown, *SmoothImage(number)), 0.03) << number;
    }
}

TEST(WMFRoundTrip, ImagesComeBackThroughEncoderAndDecoder) {
    const Mp4Track track = EncodedTrack();
    PeerStream stream = {track.record, {}};
    for (const Mp4Sample& sample : track.samples)
        stream.samples.push_back({sample.bytes, sample.presentationTime * 10000 + TimeOf(0),
                                  sample.duration * 10000, sample.isKey});
    PeerTrackSource source(stream, width, height);
    const CodecPointer decoder = NewDecoder(source);
    ASSERT_NE(decoder, nullptr);
    for (const int32_t frame : {0, 5, 23, 12, 0}) {
        const ImagePtr image = MakeImage(width, height);
        ASSERT_EQ(Decode(*decoder, frame, image.get()), CxAV_OK);
        EXPECT_LT(Distance(*image, *SmoothImage(frame)), 0.03) << frame;
    }
}

TEST(WMFRoundTrip, NothingOfTheLibraryIsLeftBehindTheCodecs) {
    {
        PeerTrackSource source(LengthPrefixed(Encoded("high", "bframes=3:b-adapt=0")), width, height);
        const CodecPointer decoder = NewDecoder(source);
        ASSERT_NE(decoder, nullptr);
        for (const int32_t frame : {0, 20, 3})
            EXPECT_EQ(Decode(*decoder, frame, MakeImage(width, height).get()), CxAV_OK);
        EncodedTrack();
    }
    Platform::Library* const library = Platform::LoadLib("mfplat.dll", 0, nullptr);
    const auto canUnload =
        reinterpret_cast<HRESULT (*)()>(Platform::GetFuncAddress(library, "DllCanUnloadNow"));
    const auto startCom =
        reinterpret_cast<decltype(&CoInitializeEx)>(Platform::GetFuncAddress(library, "CoInitializeEx"));
    const auto endCom =
        reinterpret_cast<decltype(&CoUninitialize)>(Platform::GetFuncAddress(library, "CoUninitialize"));
    ASSERT_TRUE(canUnload != nullptr && startCom != nullptr && endCom != nullptr);
    EXPECT_EQ(canUnload(), S_OK);
    // Each codec has ended COM as often as it has started it.
    EXPECT_EQ(startCom(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    endCom();
    Platform::UnloadLib(library);
}

TEST(WMFRoundTrip, FieldsAreNotEncoded) {
    const CodecPointer encoder = NewEncoder("H.264");
    CxVideoSettings settings = Settings();
    settings.fieldOrder = 2;
    EXPECT_EQ(encoder->SetEncoderSettings(settings), CxAV_INVALID_STATE);
}

} // namespace
