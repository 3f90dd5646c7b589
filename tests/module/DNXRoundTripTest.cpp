// Images through the DNx encoders and decoders of the module, with the library that stands in for the closed
// one.

#include "codecs/UncompressedTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

constexpr uint32_t hrCode = FourCC("AVdh");

/// A smooth picture, which any compression keeps well.
ImagePtr SmoothImage(int32_t width, int32_t height) {
    ImagePtr image = MakeImage(width, height);
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x)
            SetPixelAt(*image, x, y,
                       {10000 + 40000 * x / width, 20000 + 20000 * y / height, 30000 + 60 * (y - x), 65535});
    return image;
}

/// How far the colours of two pictures are apart: the root of the mean square, full scale being 1.
double Distance(Image& a, Image& b) {
    double squares = 0;
    for (int32_t y = 0; y < a.Height; ++y) {
        for (int32_t x = 0; x < a.Width; ++x) {
            const Pixel p = PixelAt(a, x, y);
            const Pixel q = PixelAt(b, x, y);
            for (const int32_t difference : {p.R - q.R, p.G - q.G, p.B - q.B})
                squares += std::pow(difference / 65535.0, 2);
        }
    }
    return std::sqrt(squares / (3.0 * a.Width * a.Height));
}

Bytes EncodedAs(const std::string& name, uint32_t id, Image* image) {
    const CodecPointer encoder = NewEncoder(name);
    Bytes sample;
    EXPECT_NE(encoder, nullptr) << name;
    if (encoder != nullptr) {
        EXPECT_EQ(Encode(*encoder, id, image, sample), CxAV_OK) << name;
    }
    return sample;
}

ImagePtr DecodedOf(uint32_t fourCC, int32_t width, int32_t height, const Bytes& sample) {
    MemoryTrackSource source(fourCC, width, height, {sample});
    const CodecPointer decoder = NewDecoder(source);
    ImagePtr image = MakeImage(width, height);
    EXPECT_NE(decoder, nullptr);
    if (decoder != nullptr) {
        EXPECT_EQ(Decode(*decoder, 0, image.get()), CxAV_OK);
    }
    return image;
}

TEST(DNXRoundTrip, EveryCompressionOfDNxHRKeepsASmoothPicture) {
    struct Row {
        const char* name;
        uint32_t id;
        const char* depth; // the library that stands in codes 10 bits at most
    };
    const ImagePtr image = SmoothImage(256, 128);
    for (const Row& row : {Row{"DNxHR LB 8bit", 1274, "8bit"}, Row{"DNxHR SQ 8bit", 1273, "8bit"},
                           Row{"DNxHR HQ 8bit", 1272, "8bit"}, Row{"DNxHR HQX 12bit", 1271, "10bit"},
                           Row{"DNxHR 444 12bit", 1270, "10bit"}}) {
        const Bytes sample = EncodedAs(row.name, row.id, image.get());
        const ImagePtr decoded = DecodedOf(hrCode, 256, 128, sample);
        EXPECT_LT(Distance(*image, *decoded), 0.01) << row.name;
        EXPECT_STREQ(decoded->ImageInfo.FindKeyConst("Metadata").FindKeyConst("Depth").ToString(""),
                     row.depth);
    }
}

TEST(DNXRoundTrip, A720pFrameOfDNxHDKeepsASmoothPicture) {
    const ImagePtr image = SmoothImage(1280, 720);
    const Bytes sample = EncodedAs("DNxHD SQ 720p 8bit", 1252, image.get());
    const ImagePtr decoded = DecodedOf(FourCC("AVdn"), 1280, 720, sample);
    EXPECT_LT(Distance(*image, *decoded), 0.01);
}

TEST(DNXRoundTrip, ASizeThatARowOfDNxHDDoesNotAllowIsRefusedAndTheNextImageIsNot) {
    const CodecPointer encoder = NewEncoder("DNxHR SQ 8bit");
    Bytes sample;
    testing::internal::CaptureStderr();
    EXPECT_EQ(Encode(*encoder, 1252, SmoothImage(640, 480).get(), sample), CxAV_FAILED);
    const std::string words = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(words.starts_with("Error: ")) << words;
    EXPECT_TRUE(words.ends_with(" - DNXCodec:241\n")) << words;
    EXPECT_EQ(Encode(*encoder, 1273, SmoothImage(640, 480).get(), sample), CxAV_OK);
}

TEST(DNXRoundTrip, ATruncatedOrDamagedFrameFailsAndTheNextOneDecodes) {
    const ImagePtr image = SmoothImage(256, 128);
    const Bytes whole = EncodedAs("DNxHR SQ 8bit", 1273, image.get());
    Bytes damaged = whole;
    damaged[0] ^= 0xff;
    MemoryTrackSource source(hrCode, 256, 128, {Bytes(whole.begin(), whole.begin() + 300), damaged, whole});
    const CodecPointer decoder = NewDecoder(source);
    const ImagePtr decoded = MarkedImage(256, 128);
    testing::internal::CaptureStderr();
    EXPECT_EQ(Decode(*decoder, 0, decoded.get()), CxAV_FAILED);
    EXPECT_EQ(Decode(*decoder, 1, decoded.get()), CxAV_FAILED);
    const std::string words = testing::internal::GetCapturedStderr();
    EXPECT_NE(words.find("DNXCodec:309\n"), std::string::npos) << words;
    EXPECT_TRUE(IsFilledWith(*decoded, marker));
    EXPECT_EQ(Decode(*decoder, 2, decoded.get()), CxAV_OK);
    EXPECT_LT(Distance(*image, *decoded), 0.01);
}

TEST(DNXRoundTrip, AClipWhoseCompressionChangesInTheMiddleGoesOn) {
    const ImagePtr image = SmoothImage(256, 128);
    const Bytes standard = EncodedAs("DNxHR SQ 8bit", 1273, image.get());
    const Bytes high = EncodedAs("DNxHR HQ 8bit", 1272, image.get());
    MemoryTrackSource source(hrCode, 256, 128, {standard, high});
    const CodecPointer decoder = NewDecoder(source);
    for (const int32_t frame : {0, 1, 0}) {
        const ImagePtr decoded = MakeImage(256, 128);
        ASSERT_EQ(Decode(*decoder, frame, decoded.get()), CxAV_OK);
        EXPECT_LT(Distance(*image, *decoded), 0.01);
        EXPECT_STREQ(decoded->ImageInfo.FindKeyConst("Metadata").FindKeyConst("Compression").ToString(""),
                     frame == 1 ? "DNxHR HQ" : "DNxHR SQ");
    }
}

} // namespace
