// Bringing frames into images: what the codec adds to the conversion itself.

#include "ffmpeg/FFMPEGCodecs.h"

#include "ffmpeg/CodecTestSupport.h"
#include "ffmpeg/FFmpegSpy.h"
#include "support/HeapSpy.h"

namespace {

using CxFFMPEG::FFMPEGCodecs;

const EncodedTrack& Track() {
    static const EncodedTrack track({.frames = 1, .hasConfiguration = false});
    return track;
}

/// A grey frame, its chroma neutral.
struct GreyFrame {
    explicit GreyFrame(AVPixelFormat format, int luma = 128) : frame(av_frame_alloc()) {
        frame->format = format;
        frame->width = 64;
        frame->height = 48;
        av_frame_get_buffer(frame, 0);
        const AVPixFmtDescriptor* const descriptor = av_pix_fmt_desc_get(format);
        for (int plane = 0; plane < 3 && frame->data[plane] != nullptr; ++plane) {
            const int rows = plane == 0 ? 48 : 48 >> descriptor->log2_chroma_h;
            std::fill_n(frame->data[plane], frame->linesize[plane] * rows, plane == 0 ? luma : 128);
        }
    }
    ~GreyFrame() { av_frame_free(&frame); }
    GreyFrame(const GreyFrame&) = delete;
    GreyFrame& operator=(const GreyFrame&) = delete;

    AVFrame* frame;
};

class FFMPEGCodecsImage : public testing::Test {
protected:
    bool Convert(FFMPEGCodecs& converting, const GreyFrame& grey) {
        Image* target = image.get();
        return converting.ConvertFrameToImage(grey.frame, target);
    }
    /// Green of the picture's middle.
    int32_t Level() {
        Pixel pixel = {};
        image->GetPixel(pixel, image->RowAddress(24) + 32 * image->PixelStride, nullptr, image.get());
        return pixel.G;
    }
    /// Takes the image's pixels away, which the host's conversion refuses.
    void TakePixels() { image->RowTable = nullptr; }

    EncodedSource source{Track(), FourCC("avci")};
    std::unique_ptr<FFMPEGCodecs> codec = OpenCodec(source);
    ImagePtr image = MakeImage(64, 48);
};

constexpr const char* decoderName = "H.264 / AVC / MPEG-4 AVC / MPEG-4 part 10";

TEST_F(FFMPEGCodecsImage, TheMetadataNameTheDecoderAndTheFormatOfADirectFrame) {
    ASSERT_TRUE(Convert(*codec, GreyFrame(AV_PIX_FMT_YUV420P)));
    EXPECT_EQ(MetadataOf(*image, "Compression"), decoderName);
    EXPECT_EQ(MetadataOf(*image, "FrameFormat"), "yuv420p");
}

TEST_F(FFMPEGCodecsImage, TheMetadataNameTheDecoderAndTheFormatOfAConvertedFrame) {
    ASSERT_TRUE(Convert(*codec, GreyFrame(AV_PIX_FMT_YUV444P)));
    EXPECT_EQ(MetadataOf(*image, "Compression"), decoderName);
    EXPECT_EQ(MetadataOf(*image, "FrameFormat"), "yuv444p");
}

TEST_F(FFMPEGCodecsImage, AFrameOfAnotherSizeNamesItsOwnFormatToo) {
    image = MakeImage(32, 24);
    ASSERT_TRUE(Convert(*codec, GreyFrame(AV_PIX_FMT_YUV420P)));
    EXPECT_EQ(MetadataOf(*image, "FrameFormat"), "yuv420p");
}

TEST_F(FFMPEGCodecsImage, OtherMetadataStay) {
    image->ImageInfo.FindKey("Metadata").FindKey("TimeCode") = "01:02:03:04";
    ASSERT_TRUE(Convert(*codec, GreyFrame(AV_PIX_FMT_YUV420P)));
    EXPECT_EQ(MetadataOf(*image, "TimeCode"), "01:02:03:04");
    EXPECT_EQ(MetadataOf(*image, "Compression"), decoderName);
}

TEST_F(FFMPEGCodecsImage, WithoutADecoderNoMetadataAreWritten) {
    FFMPEGCodecs closed(CxAV_DECODE, nullptr);
    for (const AVPixelFormat format : {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV444P}) {
        ASSERT_TRUE(Convert(closed, GreyFrame(format, 235)));
        EXPECT_FALSE(image->ImageInfo.IsTable());
        EXPECT_NEAR(Level(), 65535, 300);
    }
}

TEST_F(FFMPEGCodecsImage, ADirectFrameThatTheHostRefusesLeavesItsMetadata) {
    TakePixels();
    EXPECT_FALSE(Convert(*codec, GreyFrame(AV_PIX_FMT_YUV420P)));
    EXPECT_EQ(MetadataOf(*image, "Compression"), decoderName);
    EXPECT_EQ(MetadataOf(*image, "FrameFormat"), "yuv420p");
}

TEST_F(FFMPEGCodecsImage, AFrameThatCannotBeConvertedLeavesNoMetadata) {
    const ReplacedFunction scale(&FFmpegFunctions::sws_scale,
                                 [](SwsContext*, const uint8_t* const[], const int[], int, int,
                                    uint8_t* const[], const int[]) { return 0; });
    EXPECT_FALSE(Convert(*codec, GreyFrame(AV_PIX_FMT_YUV444P)));
    EXPECT_FALSE(image->ImageInfo.IsTable());
}

TEST_F(FFMPEGCodecsImage, AFrameOfNoFormatCannotBeConverted) {
    GreyFrame grey(AV_PIX_FMT_YUV444P);
    for (const int format : {-1, 100000}) {
        grey.frame->format = format;
        EXPECT_FALSE(Convert(*codec, grey)) << format;
    }
    grey.frame->format = AV_PIX_FMT_YUV444P;
    EXPECT_FALSE(image->ImageInfo.IsTable());
}

TEST_F(FFMPEGCodecsImage, WithoutAFrameOrAnImageNothingIsConverted) {
    Image* target = image.get();
    EXPECT_FALSE(codec->ConvertFrameToImage(nullptr, target));
    EXPECT_FALSE(image->ImageInfo.IsTable());
    const GreyFrame grey(AV_PIX_FMT_YUV420P);
    target = nullptr;
    EXPECT_FALSE(codec->ConvertFrameToImage(grey.frame, target));
}

TEST_F(FFMPEGCodecsImage, WithoutMemoryForTheMetadataAFrameIsNotConverted) {
    const GreyFrame grey(AV_PIX_FMT_YUV420P);
    Image* target = image.get();
    bool converted = true;
    {
        const HeapSpy spy(0);
        converted = codec->ConvertFrameToImage(grey.frame, target);
        EXPECT_TRUE(spy.RanOut());
    }
    EXPECT_FALSE(converted);
    EXPECT_TRUE(Convert(*codec, grey));
}

TEST_F(FFMPEGCodecsImage, TheRangeOfTheTrackDecidesForFramesThatLeaveItOpen) {
    for (const auto& [range, expected] : {std::pair{2, 60138}, {1, 65535}, {0, 65535}}) {
        source.colorRange = range;
        ASSERT_TRUE(Convert(*codec, GreyFrame(AV_PIX_FMT_YUV420P, 234)));
        EXPECT_NEAR(Level(), expected, 300) << range;
    }
}

TEST_F(FFMPEGCodecsImage, ATracksRangeGoesBeforeThatOfTheDecoder) {
    source.colorRange = 2;
    const auto fullRange = OpenCodec(source);
    source.colorRange = 1;
    ASSERT_TRUE(Convert(*fullRange, GreyFrame(AV_PIX_FMT_YUV420P, 235)));
    EXPECT_EQ(Level(), 65535);
}

TEST_F(FFMPEGCodecsImage, WithoutATrackTheRangeOfTheDecoderDecides) {
    source.colorRange = 2;
    const auto fullRange = OpenCodec(source);
    fullRange->getDataSource() = nullptr;
    ASSERT_TRUE(Convert(*fullRange, GreyFrame(AV_PIX_FMT_YUV420P, 234)));
    EXPECT_NEAR(Level(), 60138, 300);
    codec->getDataSource() = nullptr;
    ASSERT_TRUE(Convert(*codec, GreyFrame(AV_PIX_FMT_YUV420P, 235)));
    EXPECT_EQ(Level(), 65535);
}

TEST_F(FFMPEGCodecsImage, WithoutATrackAndADecoderTheRangeIsThatOfVideo) {
    FFMPEGCodecs closed(CxAV_DECODE, nullptr);
    ASSERT_TRUE(Convert(closed, GreyFrame(AV_PIX_FMT_YUV420P, 235)));
    EXPECT_EQ(Level(), 65535);
}

TEST_F(FFMPEGCodecsImage, ReleasingAFrameForgetsIt) {
    AVFrame* frame = av_frame_alloc();
    frame->format = AV_PIX_FMT_GRAY8;
    ASSERT_GT(av_image_alloc(frame->data, frame->linesize, 8, 8, AV_PIX_FMT_GRAY8, 32), 0);
    codec->ReleaseDecodedFrame(frame);
    EXPECT_EQ(frame, nullptr);
    codec->ReleaseDecodedFrame(frame);
    EXPECT_EQ(frame, nullptr);
}

} // namespace
