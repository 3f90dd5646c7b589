// Images that the library encodes: what it is asked for, and what becomes of its frames.

#include "codecs/dnx/DNXTestSupport.h"
#include "framework/AllocatorSpy.h"

namespace {

constexpr uint32_t alphaFlag = 2;
constexpr uint32_t pixelCount = 240 * 120;

class DNXEncode : public DNXTest {
protected:
    CxAVError Encode(const CxEncodedFrame& frame) { return EncodeOnce(codec_, image_.get(), frame); }

    DNXCodec codec_{CxAV_ENCODE, nullptr};
    ImagePtr image_ = LeastImage();
};

TEST_F(DNXEncode, AsksTheLibraryForAnEncoderForABufferAndForTheFrame) {
    ASSERT_EQ(Encode(FrameToEncode(1272)), CxAV_OK);
    EXPECT_EQ(Script().calls,
              (std::vector<std::string>{"CreateEncoder", "GetCompressedBufferSize", "EncodeFrame"}));
    EXPECT_EQ(+Script().compressed.size, 64U);
    EXPECT_EQ(+Script().compressed.width, 240U);
    EXPECT_EQ(+Script().compressed.height, 120U);
    EXPECT_EQ(+Script().compressed.compressionId, 1272U);
    EXPECT_EQ(+Script().uncompressed.size, 50U);
    EXPECT_EQ(+Script().encodeOperation.size, 12U);
    EXPECT_EQ(+Script().encodeOperation.constant, 4U);
}

TEST_F(DNXEncode, AnImageOf239By1000IsRefusedBeforeTheLibraryIsAsked) {
    image_ = MakeImage(239, 1000);
    EXPECT_EQ(Encode(FrameToEncode(1272)), CxAV_INVALID_STATE);
    EXPECT_TRUE(Script().calls.empty());
}

TEST_F(DNXEncode, AnImageOf1000By119IsRefusedBeforeTheLibraryIsAsked) {
    image_ = MakeImage(1000, 119);
    EXPECT_EQ(Encode(FrameToEncode(1272)), CxAV_INVALID_STATE);
    EXPECT_TRUE(Script().calls.empty());
}

TEST_F(DNXEncode, AnImageOf240By120IsEncoded) { EXPECT_EQ(Encode(FrameToEncode(1272)), CxAV_OK); }

TEST_F(DNXEncode, NoImageIsAnInvalidState) {
    EXPECT_EQ(EncodeOnce(codec_, nullptr, FrameToEncode(1272)), CxAV_INVALID_STATE);
    EXPECT_TRUE(Script().calls.empty());
}

TEST_F(DNXEncode, TheFrameIsInAnAlignedBufferThatTheCallerFrees) {
    Script().encoded = {5, 6, 7};
    Script().bufferSize = 100;
    CxEncodedFrame frame = FrameToEncode(1272);
    Image* image = image_.get();
    AllocatorSpy::Reset();
    ASSERT_EQ(codec_.EncodeFrame(image, frame), CxAV_OK);
    EXPECT_EQ(AllocatorSpy::lastSize, 100);
    EXPECT_EQ(AllocatorSpy::lastAlignment, 32);
    EXPECT_EQ(Script().outputSize, 100U);
    EXPECT_EQ(Bytes(frame.data, frame.data + frame.size), (Bytes{5, 6, 7}));
    Platform::FreeMemAligned(frame.data);
}

TEST_F(DNXEncode, ABufferThatTheCallerBringsIsPassedOver) {
    uint8_t own[4] = {9, 9, 9, 9};
    CxEncodedFrame frame = FrameToEncode(1272);
    frame.data = own;
    frame.size = sizeof(own);
    Image* image = image_.get();
    ASSERT_EQ(codec_.EncodeFrame(image, frame), CxAV_OK);
    EXPECT_NE(frame.data, own);
    EXPECT_EQ(own[0], 9);
    Platform::FreeMemAligned(frame.data);
}

TEST_F(DNXEncode, AFrameThatClaimsMoreThanItsBufferEndsWithTheBuffer) {
    Script().encoded = Bytes(65, 1);
    CxEncodedFrame frame = FrameToEncode(1272);
    Image* image = image_.get();
    ASSERT_EQ(codec_.EncodeFrame(image, frame), CxAV_OK);
    EXPECT_EQ(frame.size, 64U);
    Platform::FreeMemAligned(frame.data);
}

TEST_F(DNXEncode, HrOf8BitsTakes16BitPictures) {
    ASSERT_EQ(Encode(FrameToEncode(1272)), CxAV_OK);
    ASSERT_EQ(Script().input.size(), pixelCount * 4);
    EXPECT_EQ(Bytes(Script().input.begin(), Script().input.begin() + 8),
              (Bytes{0, 128, 0, 235, 0, 128, 0, 235}));
}

TEST_F(DNXEncode, HrWithAlphaTakes16BitPicturesWithAlpha) {
    image_ = LeastImage({65535, 65535, 65535, 0x1234});
    ASSERT_EQ(Encode(FrameToEncode(1273, 1, alphaFlag)), CxAV_OK);
    ASSERT_EQ(Script().input.size(), pixelCount * 6);
    EXPECT_EQ(Bytes(Script().input.begin(), Script().input.begin() + 12),
              (Bytes{0, 128, 0, 235, 0x34, 0x12, 0, 128, 0, 235, 0x34, 0x12}));
    EXPECT_EQ(+Script().compressed.alpha, 1U);
}

TEST_F(DNXEncode, TheAlphaBitHasNoEffectForDNxHD) {
    for (const uint32_t id : idsOfDNxHD) {
        DNXCodec plain(CxAV_ENCODE, nullptr);
        ASSERT_EQ(EncodeOnce(plain, image_.get(), FrameToEncode(id)), CxAV_OK);
        const size_t plainSize = Script().input.size();
        DNXCodec withBit(CxAV_ENCODE, nullptr);
        ASSERT_EQ(EncodeOnce(withBit, image_.get(), FrameToEncode(id, 1, alphaFlag)), CxAV_OK);
        EXPECT_EQ(Script().input.size(), plainSize) << id;
        EXPECT_EQ(+Script().compressed.alpha, 0U) << id;
    }
}

TEST_F(DNXEncode, HqxOfDNxHDTakesRgbPicturesWithTheImagesAlpha) {
    image_ = LeastImage({65535, 65535, 65535, 0x1234});
    ASSERT_EQ(Encode(FrameToEncode(1235)), CxAV_OK);
    ASSERT_EQ(Script().input.size(), pixelCount * 8);
    EXPECT_EQ(Script().input[0], 0x34);
    EXPECT_EQ(Script().input[1], 0x12);
    EXPECT_NEAR(Script().input[2] + 256 * Script().input[3], 60160, 1);
}

TEST_F(DNXEncode, DNxHDOf8BitsTakes8BitPictures) {
    ASSERT_EQ(Encode(FrameToEncode(1237)), CxAV_OK);
    ASSERT_EQ(Script().input.size(), pixelCount * 2);
    EXPECT_EQ(Bytes(Script().input.begin(), Script().input.begin() + 4), (Bytes{128, 235, 128, 235}));
}

TEST_F(DNXEncode, ThePictureStartsWithTheTopRow) {
    image_ = LeastImage({0, 0, 0, 65535});
    for (int32_t x = 0; x < 240; ++x)
        SetPixelAt(*image_, x, 0, {65535, 65535, 65535, 65535});
    ASSERT_EQ(Encode(FrameToEncode(1237)), CxAV_OK);
    EXPECT_EQ(Script().input[1], 235);
    EXPECT_EQ(Script().input[2 * 240 + 1], 16);
}

TEST_F(DNXEncode, A1080iCompressionFollowsTheFieldOrder) {
    constexpr uint32_t topFieldFirst = 2;
    ASSERT_EQ(Encode(FrameToEncode(1242, topFieldFirst)), CxAV_OK);
    EXPECT_EQ(+Script().uncompressed.frameStructure, 1U);
    DNXCodec other(CxAV_ENCODE, nullptr);
    ASSERT_EQ(EncodeOnce(other, image_.get(), FrameToEncode(1242, 1)), CxAV_OK);
    EXPECT_EQ(+Script().uncompressed.frameStructure, 64U);
}

TEST_F(DNXEncode, TheEncoderOfTheFirstImageServesAllOthersWhateverTheirCompression) {
    ASSERT_EQ(Encode(FrameToEncode(1272)), CxAV_OK);
    image_ = MakeImage(300, 130);
    ASSERT_EQ(Encode(FrameToEncode(1237)), CxAV_OK);
    EXPECT_EQ(CallsOf("CreateEncoder"), 1);
    EXPECT_EQ(CallsOf("EncodeFrame"), 2);
    EXPECT_EQ(+Script().compressed.compressionId, 1237U);
    EXPECT_EQ(Script().input.size(), 300U * 130 * 2);
}

TEST_F(DNXEncode, TheEncoderIsDeletedWithTheCodec) {
    {
        DNXCodec codec(CxAV_ENCODE, nullptr);
        ASSERT_EQ(EncodeOnce(codec, image_.get(), FrameToEncode(1272)), CxAV_OK);
        EXPECT_EQ(Script().encoders, 1);
    }
    EXPECT_EQ(Script().encoders, 0);
    EXPECT_EQ(CallsOf("DeleteEncoder"), 1);
}

TEST_F(DNXEncode, SettingsAndTargetSizeAreThoseOfEveryCodec) {
    CxVideoSettings settings;
    settings.width = 1920;
    EXPECT_EQ(codec_.SetEncoderSettings(settings), CxAV_OK);
    EXPECT_EQ(codec_.GetTargetFrameSize(settings), 0);
    EXPECT_TRUE(settings.extraData.empty());
    EXPECT_TRUE(Script().calls.empty());
}

} // namespace
