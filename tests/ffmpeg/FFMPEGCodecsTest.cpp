// What the back-end on FFmpeg claims, and how it opens a track of the registry.

#include "ffmpeg/FFMPEGCodecs.h"

#include "ffmpeg/CodecTestSupport.h"
#include "ffmpeg/DecoderCodes.h"
#include "ffmpeg/FFmpegSpy.h"
#include "framework/CxAVCodecRegistry.h"
#include "support/HeapSpy.h"

namespace {

using CxFFMPEG::DecoderCode;
using CxFFMPEG::DecoderCodes;
using CxFFMPEG::FFMPEGCodecs;
using CxFFMPEG::g_FFmpegFactory;

const EncodedTrack& Track() {
    static const EncodedTrack track(TrackSpec{});
    return track;
}

const AVCodec* FindAllButVp9(AVCodecID id) {
    return id == AV_CODEC_ID_VP9 ? nullptr : avcodec_find_decoder(id);
}

std::set<uint32_t> ClaimedCodes() {
    std::set<uint32_t> codes;
    std::vector<CxEncoderInfo> encoders;
    std::string name;
    EXPECT_TRUE(FFMPEGCodecs::FillCodecInfo(codes, encoders, name));
    return codes;
}

/// Opens a track of a code, and says what came of it.
struct Attempt {
    explicit Attempt(uint32_t fourCC) {
        EncodedSource source(Track(), fourCC);
        FFMPEGCodecs codec(CxAV_DECODE, nullptr);
        words = WordsOf([&] { result = codec.SetDataSource(&source); });
        width = codec.GetWidth();
    }

    CxAVError result = CxAV_OK;
    std::string words;
    int32_t width = 0; ///< afterwards
};

TEST(FFMPEGCodecs, ClaimsEveryCodeOfTheTableThatFFmpegDecodes) {
    std::set<uint32_t> expected;
    for (const DecoderCode& code : DecoderCodes())
        expected.insert(code.fourCC);
    EXPECT_EQ(ClaimedCodes(), expected);
}

TEST(FFMPEGCodecs, LeavesOutTheCodesOfADecoderThatFFmpegLacks) {
    const ReplacedFunction find(&FFmpegFunctions::avcodec_find_decoder, FindAllButVp9);
    const std::set<uint32_t> codes = ClaimedCodes();
    EXPECT_EQ(codes.size(), DecoderCodes().size() - 1);
    EXPECT_FALSE(codes.contains(FourCC("VP90")));
}

TEST(FFMPEGCodecs, AddsItsCodesToThoseThatAreThereAndOffersNoEncoder) {
    std::set<uint32_t> codes = {FourCC("some")};
    std::vector<CxEncoderInfo> encoders;
    std::string name;
    EXPECT_TRUE(FFMPEGCodecs::FillCodecInfo(codes, encoders, name));
    EXPECT_EQ(codes.size(), DecoderCodes().size() + 1);
    EXPECT_TRUE(encoders.empty());
    EXPECT_EQ(name, "FFmpeg");
}

TEST(FFMPEGCodecs, IsRegisteredBeforeAllOthersForEveryCode) {
    ASSERT_NE(g_FFmpegFactory, nullptr);
    EXPECT_EQ(g_FFmpegFactory->GetName(), "FFmpeg");
    for (const DecoderCode& code : DecoderCodes()) {
        const auto factories = CxAVCodecRegistry::GetDecoderFactories(code.fourCC);
        ASSERT_FALSE(factories.empty()) << code.fourCC;
        EXPECT_EQ(factories.front(), g_FFmpegFactory) << code.fourCC;
    }
}

TEST(FFMPEGCodecs, TheRegistryMakesADecoderOfATracksCode) {
    EncodedSource source(Track(), FourCC("avc1"));
    const std::unique_ptr<CxAbstractAVCodec> codec(CxAVCodecRegistry::CreateDecoder(&source));
    ASSERT_NE(codec, nullptr);
    EXPECT_TRUE(codec->isTypeOf(g_FFmpegFactory));
    EXPECT_EQ(codec->GetName(), "FFmpeg");
    EXPECT_EQ(codec->GetWidth(), 64);
    EXPECT_EQ(codec->GetHeight(), 48);
}

TEST(FFMPEGCodecs, IsNamedFFmpegWithoutAFactoryToo) {
    FFMPEGCodecs codec(CxAV_DECODE, nullptr);
    EXPECT_EQ(codec.GetName(), "FFmpeg");
    EXPECT_TRUE(codec.isTypeOf(nullptr));
}

TEST(FFMPEGCodecs, HasNoSizeBeforeItIsOpen) {
    FFMPEGCodecs codec(CxAV_DECODE, nullptr);
    EXPECT_EQ(codec.GetWidth(), 0);
    EXPECT_EQ(codec.GetHeight(), 0);
}

TEST(FFMPEGCodecs, ANumberOfFFmpegsInPlaceOfACodeOpensThatCodec) {
    EncodedSource source(Track(), AV_CODEC_ID_H264);
    ASSERT_EQ(source.GetFourCC(), 27u);
    const auto codec = OpenCodec(source);
    EXPECT_EQ(DecodeAll(*codec, source).size(), 12u);
}

TEST(FFMPEGCodecs, WithoutASourceOpenIsAnInvalidState) {
    FFMPEGCodecs codec(CxAV_DECODE, nullptr);
    CxAVError result = CxAV_OK;
    EXPECT_EQ(WordsOf([&] { result = codec.Open(); }), "");
    EXPECT_EQ(result, CxAV_INVALID_STATE);
}

TEST(FFMPEGCodecs, ACodeOfNoDecoderIsAnInvalidState) {
    for (const uint32_t fourCC : {FourCC("what"), uint32_t{0}, ~uint32_t{0}}) {
        const Attempt attempt(fourCC);
        EXPECT_EQ(attempt.result, CxAV_INVALID_STATE);
        EXPECT_EQ(attempt.words, "Codec not found\n");
    }
}

TEST(FFMPEGCodecs, WithoutMemoryForAContextOpenFails) {
    const ReplacedFunction allocate(&FFmpegFunctions::avcodec_alloc_context3,
                                    [](const AVCodec*) -> AVCodecContext* { return nullptr; });
    const Attempt attempt(FourCC("avc1"));
    EXPECT_EQ(attempt.result, CxAV_FAILED);
    EXPECT_EQ(attempt.words, "Could not allocate video codec context\n");
}

TEST(FFMPEGCodecs, ADecoderThatDoesNotOpenFails) {
    const OpenedDecoders spy;
    OpenedDecoders::result = AVERROR(EINVAL);
    const Attempt attempt(FourCC("avc1"));
    EXPECT_EQ(attempt.result, CxAV_FAILED);
    EXPECT_EQ(attempt.words, "Could not open codec\n");
}

TEST(FFMPEGCodecs, AFailedOpenIsAsIfThereHadBeenNone) {
    EncodedSource source(Track(), FourCC("avc1"));
    const auto codec = OpenCodec(source);
    EXPECT_EQ(codec->GetWidth(), 64);
    source.fourCC = FourCC("what");
    EXPECT_EQ(WordsOf([&] { codec->Open(); }), "Codec not found\n");
    EXPECT_EQ(codec->GetWidth(), 0);
    AVFrame* frame = nullptr;
    CxDecodeRequest request;
    EXPECT_EQ(Feed(*codec, source, 0, frame, request), CxAV_INVALID_STATE);
}

TEST(FFMPEGCodecs, OpenedAgainItReadsTheNewTrackFromItsStart) {
    EncodedSource first(Track(), FourCC("avc1"));
    const EncodedTrack track(
        {.encoder = "mpeg2video", .frames = 3, .width = 32, .height = 16, .format = AV_PIX_FMT_YUV422P});
    EncodedSource second(track, FourCC("mp2v"));
    const ImagePtr image = MakeImage(32, 16);
    Image* target = image.get();
    const auto codec = OpenCodec(first);
    EXPECT_EQ(codec->GetDecodedFrame(2, target), CxAV_OK);
    EXPECT_EQ(codec->SetDataSource(&second), CxAV_OK);
    EXPECT_EQ(codec->GetWidth(), 32);
    // A cached frame of the first track has the same time.
    EXPECT_EQ(codec->GetDecodedFrame(1, target), CxAV_OK);
    EXPECT_EQ(FrameOfImage(*target), 1);
    EXPECT_EQ(MetadataOf(*target, "FrameFormat"), "yuv422p");
}

TEST(FFMPEGCodecs, EncodingThroughTheCodecInterfaceDoesNothing) {
    FFMPEGCodecs codec(CxAV_ENCODE, nullptr);
    CxVideoSettings settings;
    CxEncodedFrame frame;
    Image* image = nullptr;
    EXPECT_EQ(codec.SetEncoderSettings(settings), CxAV_OK);
    EXPECT_EQ(codec.EncodeFrame(image, frame), CxAV_OK);
    EXPECT_EQ(codec.GetTargetFrameSize(settings), 0);
    EXPECT_EQ(frame.data, nullptr);
}

} // namespace
