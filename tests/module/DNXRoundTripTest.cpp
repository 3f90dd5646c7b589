// Images through the DNx encoders and decoders of the module, with the library that stands in for the closed
// one.

#include "codecs/UncompressedTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

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

struct Row {
    const char* name;
    uint32_t id;
    uint32_t fourCC;
    int32_t width;
    int32_t height;
    const char* compression; ///< in metadata, as all below
    const char* sampling;
    const char* color;
    const char* depth; ///< the library that stands in codes 10 bits at most
};

void PrintTo(const Row& row, std::ostream* out) { *out << row.id; }

constexpr uint32_t hdCode = FourCC("AVdn");

/// The rows that the library encodes, those of any size at a small one.
constexpr Row rows[] = {
    {"DNxHD SQ 720p 8bit", 1252, hdCode, 1280, 720, "DNxHD SQ 720p", "422", "YCbCr", "8bit"},
    {"DNxHD HQ 720p 8bit", 1251, hdCode, 1280, 720, "DNxHD HQ 720p", "422", "YCbCr", "8bit"},
    {"DNxHD HQX 720p 10bit", 1250, hdCode, 1280, 720, "DNxHD HQX 720p", "422", "YCbCr", "10bit"},
    {"DNxHD LB 1080p 8bit", 1253, hdCode, 1920, 1080, "DNxHD LB 1080p", "422", "YCbCr", "8bit"},
    {"DNxHD SQ 1080p 8bit", 1237, hdCode, 1920, 1080, "DNxHD SQ 1080p", "422", "YCbCr", "8bit"},
    {"DNxHD HQ 1080p 8bit", 1238, hdCode, 1920, 1080, "DNxHD HQ 1080p", "422", "YCbCr", "8bit"},
    {"DNxHD HQX 1080p 10bit", 1235, hdCode, 1920, 1080, "DNxHD HQX 1080p", "422", "YCbCr", "10bit"},
    {"DNxHD SQ 1080i 8bit", 1242, hdCode, 1920, 1080, "DNxHD SQ 1080i", "422", "YCbCr", "8bit"},
    {"DNxHD HQ 1080i 8bit", 1243, hdCode, 1920, 1080, "DNxHD HQ 1080i", "422", "YCbCr", "8bit"},
    {"DNxHD HQX 1080i 10bit", 1241, hdCode, 1920, 1080, "DNxHD HQX 1080i", "422", "YCbCr", "10bit"},
    {"DNxHR LB 8bit", 1274, hrCode, 256, 128, "DNxHR LB", "422", "YCbCr", "8bit"},
    {"DNxHR SQ 8bit", 1273, hrCode, 256, 128, "DNxHR SQ", "422", "YCbCr", "8bit"},
    {"DNxHR HQ 8bit", 1272, hrCode, 256, 128, "DNxHR HQ", "422", "YCbCr", "8bit"},
    {"DNxHR HQX 12bit", 1271, hrCode, 256, 128, "DNxHR HQX", "422", "YCbCr", "10bit"},
    {"DNxHR 444 12bit", 1270, hrCode, 256, 128, "DNxHR 444", "444", "RGB", "10bit"},
};

class DNXRows : public testing::TestWithParam<Row> {};

TEST_P(DNXRows, KeepASmoothPictureAndTellWhatTheyAre) {
    const Row& row = GetParam();
    const ImagePtr image = SmoothImage(row.width, row.height);
    const Bytes sample = EncodedAs(row.name, row.id, image.get());
    const ImagePtr decoded = DecodedOf(row.fourCC, row.width, row.height, sample);
    EXPECT_LT(Distance(*image, *decoded), 0.01);
    const auto told = [&](const char* key) {
        return std::string(decoded->ImageInfo.FindKeyConst("Metadata").FindKeyConst(key).ToString(""));
    };
    EXPECT_EQ(told("Compression"), row.compression);
    EXPECT_EQ(told("SubSampling"), row.sampling);
    EXPECT_EQ(told("ColorFormat"), row.color);
    EXPECT_EQ(told("Depth"), row.depth);
    EXPECT_EQ(told("AlphaChannel"), "No");
}

INSTANTIATE_TEST_SUITE_P(Encoded, DNXRows, testing::ValuesIn(rows),
                         [](const auto& info) { return "Id" + std::to_string(info.param.id); });

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

/// What is said when an encoder refuses an image.
std::string WordsOfRefusal(uint32_t id, Image* image, uint32_t flags = 0) {
    const CodecPointer encoder = NewEncoder("DNxHR SQ 8bit");
    CxEncodedFrame frame;
    frame.codecTag = id;
    frame.flags = flags;
    testing::internal::CaptureStderr();
    EXPECT_EQ(encoder->EncodeFrame(image, frame), CxAV_FAILED);
    EXPECT_EQ(frame.data, nullptr);
    return testing::internal::GetCapturedStderr();
}

TEST(DNXRefusals, ASizeThatARowOfDNxHDDoesNotAllowIsToldWithTheLineOfMakingAnEncoder) {
    const ImagePtr image = MakeImage(1280, 722);
    for (const Row& row : rows) {
        if (row.fourCC != hdCode) continue;
        EXPECT_EQ(WordsOfRefusal(row.id, image.get()),
                  "Error: The compression does not allow this picture size - DNXCodec:241\n");
    }
}

TEST(DNXRefusals, DNxHRBelowTheLibrarysLeastWidthIsToldWithTheLineOfMakingAnEncoder) {
    const ImagePtr image = MakeImage(240, 120);
    EXPECT_EQ(WordsOfRefusal(1273, image.get()),
              "Error: The compression does not allow this picture size - DNXCodec:241\n");
}

TEST(DNXRefusals, AnImageBelow240By120IsRefusedWithoutWords) {
    for (const auto& [width, height] : {std::pair{239, 1000}, {1000, 119}}) {
        const CodecPointer encoder = NewEncoder("DNxHR SQ 8bit");
        Bytes sample;
        testing::internal::CaptureStderr();
        EXPECT_EQ(Encode(*encoder, 1273, MakeImage(width, height).get(), sample), CxAV_INVALID_STATE);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    }
}

TEST(DNXRefusals, AlphaIsToldWithTheLineOfMakingAnEncoder) {
    constexpr uint32_t codesAlpha = 2;
    const ImagePtr image = MakeImage(256, 128);
    for (const uint32_t id : {1270U, 1271U, 1272U, 1273U, 1274U})
        EXPECT_EQ(WordsOfRefusal(id, image.get(), codesAlpha),
                  "Error: Alpha is not supported - DNXCodec:241\n");
}

TEST(DNXRefusals, ACompressionThatIsNotEncodedIsToldWithTheLineOfMakingAnEncoder) {
    EXPECT_EQ(WordsOfRefusal(1256, MakeImage(1920, 1080).get()),
              "Error: Frames of this compression cannot be encoded - DNXCodec:241\n");
}

/// A track of two frames whose packings differ, and what decoding them one after the other gives.
class DNXPackingChange : public testing::Test {
protected:
    DNXPackingChange() : image_(SmoothImage(256, 128)) {}

    void OpenClip(const Row& first, const Row& second) {
        source_.samples = {EncodedAs(first.name, first.id, image_.get()),
                           EncodedAs(second.name, second.id, image_.get())};
        decoder_ = NewDecoder(source_);
    }
    CxAVError DecodeFrame(int32_t frame) {
        decoded_ = MarkedImage(256, 128);
        testing::internal::CaptureStderr();
        const CxAVError result = Decode(*decoder_, frame, decoded_.get());
        words_ = testing::internal::GetCapturedStderr();
        return result;
    }

    static constexpr const Row& ofWords_ = rows[11];
    static constexpr const Row& ofRgb_ = rows[14];
    ImagePtr image_;
    MemoryTrackSource source_{hrCode, 256, 128, {}};
    CodecPointer decoder_;
    ImagePtr decoded_;
    std::string words_;
};

TEST_F(DNXPackingChange, ToRgbIsRefusedByADecoderOfYCbCrAndTheClipGoesOn) {
    OpenClip(ofWords_, ofRgb_);
    EXPECT_EQ(DecodeFrame(0), CxAV_OK);
    EXPECT_EQ(DecodeFrame(1), CxAV_FAILED);
    EXPECT_EQ(words_,
              "Error: The frame cannot be given in the format of the uncompressed picture - DNXCodec:389\n");
    EXPECT_TRUE(IsFilledWith(*decoded_, marker));
    EXPECT_EQ(DecodeFrame(0), CxAV_OK);
    EXPECT_LT(Distance(*image_, *decoded_), 0.01);
}

// The decoder of the first frame serves all others: it gives the packing that it was made for, which is then
// taken for that of the frame. Kept.
TEST_F(DNXPackingChange, ToYCbCrGivesAWrongPictureByADecoderOfRgbAndTheClipGoesOn) {
    OpenClip(ofRgb_, ofWords_);
    EXPECT_EQ(DecodeFrame(0), CxAV_OK);
    EXPECT_EQ(DecodeFrame(1), CxAV_OK);
    EXPECT_EQ(words_, "");
    EXPECT_GT(Distance(*image_, *decoded_), 0.1);
    EXPECT_EQ(DecodeFrame(0), CxAV_OK);
    EXPECT_LT(Distance(*image_, *decoded_), 0.01);
}

} // namespace
