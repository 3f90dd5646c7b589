// Frames that the library decodes: what it is asked for, and what becomes of its pictures.

#include "codecs/dnx/DNXTestSupport.h"

namespace {

constexpr int32_t fullScale = 65535;

/// A group of pixels in white, with an alpha in the packings that have it.
const Bytes white2vuy = {128, 235, 128, 235};
const Bytes whiteV216 = {0, 128, 0, 235, 0, 128, 0, 235};
const Bytes whiteYv16 = {0, 128, 0, 235, 0x34, 0x12, 0, 128, 0, 235, 0x34, 0x12};
const Bytes whiteA48r = {0x34, 0x12, 0, 235, 0, 235, 0, 235};

class DNXDecode : public DNXTest {
protected:
    DNXDecode() { Script().information = FrameOf(1272); }

    /// Decodes frame 0 of the track, in which the library fills pictures with a group of bytes.
    CxAVError Decode(const Bytes& pixels) {
        Script().pixels = pixels;
        codec_.SetDataSource(&track_);
        return ::Decode(codec_, 0, image_.get());
    }
    std::string Metadata(const char* key) const {
        return image_->ImageInfo.FindKeyConst("Metadata").FindKeyConst(key).ToString("(none)");
    }
    void ExpectWhite(int32_t alpha) const {
        for (int32_t y = 0; y < image_->Height; ++y) {
            for (int32_t x = 0; x < image_->Width; ++x) {
                const Pixel pixel = PixelAt(*image_, x, y);
                for (const int32_t channel : {pixel.R, pixel.G, pixel.B})
                    EXPECT_NEAR(channel, fullScale, 2);
                EXPECT_EQ(pixel.A, alpha);
            }
        }
    }

    MemoryTrackSource track_ = DNXTrack();
    DNXCodec codec_{CxAV_DECODE, nullptr};
    ImagePtr image_ = MarkedImage(4, 2);
};

TEST_F(DNXDecode, OpenTakesTheSizeOfTheSourceAndAsksTheLibraryNothing) {
    EXPECT_EQ(codec_.GetWidth(), 0);
    EXPECT_EQ(codec_.GetHeight(), 0);
    EXPECT_EQ(codec_.SetDataSource(&track_), CxAV_OK);
    EXPECT_EQ(codec_.GetWidth(), 4);
    EXPECT_EQ(codec_.GetHeight(), 2);
    track_.width = 6;
    track_.height = 8;
    EXPECT_EQ(codec_.Open(), CxAV_OK);
    EXPECT_EQ(codec_.GetWidth(), 6);
    EXPECT_EQ(codec_.GetHeight(), 8);
    EXPECT_TRUE(Script().calls.empty());
}

TEST_F(DNXDecode, AsksTheLibraryOnceForAFrameAndForADecoderOfIt) {
    Script().frameType = 1;
    ASSERT_EQ(Decode(whiteV216), CxAV_OK);
    EXPECT_EQ(Script().calls,
              (std::vector<std::string>{"GetInfoFromCompressedFrame", "CreateDecoder", "DecodeFrame"}));
    EXPECT_EQ(Script().informationSize, 64U);
    EXPECT_EQ(+Script().decoderInformation.compressionId, 1272U);
    EXPECT_EQ(+Script().uncompressed.size, 50U);
    EXPECT_EQ(+Script().uncompressed.frameStructure, 1U);
    EXPECT_EQ(+Script().decodeOperation.size, 24U);
    EXPECT_EQ(+Script().decodeOperation.alpha, 0U);
}

TEST_F(DNXDecode, ReadsTheSampleOfTheFramesNumber) {
    track_ = DNXTrack({{1}, {2, 3}, {4}});
    codec_.SetDataSource(&track_);
    ASSERT_EQ(::Decode(codec_, 1, image_.get()), CxAV_OK);
    EXPECT_EQ(track_.lastSampleRead, 1);
    EXPECT_EQ(Script().data, (Bytes{2, 3}));
}

TEST_F(DNXDecode, AnHrFrameOf8BitsGoesThrough16BitPictures) {
    Script().information.codedBits = 8;
    Script().information.depth = 8;
    ASSERT_EQ(Decode(whiteV216), CxAV_OK);
    EXPECT_EQ(Script().outputSize, 4U * 4 * 2);
    ExpectWhite(fullScale);
}

TEST_F(DNXDecode, AnHrFrameWithAlphaGoesThrough16BitPicturesWithAlpha) {
    Script().information.alpha = 1;
    ASSERT_EQ(Decode(whiteYv16), CxAV_OK);
    EXPECT_EQ(Script().outputSize, 6U * 4 * 2);
    EXPECT_EQ(+Script().decodeOperation.alpha, 1U);
    ExpectWhite(0x1234);
}

TEST_F(DNXDecode, A444FrameGoesThroughRgbPicturesWithAlpha) {
    Script().information = FrameOf(1270);
    ASSERT_EQ(Decode(whiteA48r), CxAV_OK);
    EXPECT_EQ(Script().outputSize, 8U * 4 * 2);
    ExpectWhite(0x1234);
}

TEST_F(DNXDecode, AnHqxFrameOfDNxHDGoesThroughRgbPictures) {
    Script().information = FrameOf(1235);
    ASSERT_EQ(Decode(whiteA48r), CxAV_OK);
    EXPECT_EQ(+Script().uncompressed.componentLayout, 4U);
    ExpectWhite(0x1234);
}

TEST_F(DNXDecode, TheLowBandwidthCompressionGoesThrough8BitPicturesUnderItsName) {
    Script().information = FrameOf(1253);
    ASSERT_EQ(Decode(white2vuy), CxAV_OK);
    EXPECT_EQ(Script().outputSize, 2U * 4 * 2);
    EXPECT_EQ(Metadata("Compression"), "DNxHD LB 1080p");
    ExpectWhite(fullScale);
}

TEST_F(DNXDecode, AnUnknownCompressionGoesThrough8BitPicturesAsDNxHD) {
    Script().information = FrameOf(1999);
    ASSERT_EQ(Decode(white2vuy), CxAV_OK);
    EXPECT_EQ(Script().outputSize, 2U * 4 * 2);
    EXPECT_EQ(Metadata("Compression"), "DNxHD");
    ExpectWhite(fullScale);
}

TEST_F(DNXDecode, EveryCompressionHasItsName) {
    const std::vector<std::pair<uint32_t, const char*>> names = {
        {1235, "DNxHD HQX 1080p"}, {1237, "DNxHD SQ 1080p"},  {1238, "DNxHD HQ 1080p"},
        {1241, "DNxHD HQX 1080i"}, {1242, "DNxHD SQ 1080i"},  {1243, "DNxHD HQ 1080i"},
        {1250, "DNxHD HQX 720p"},  {1251, "DNxHD HQ 720p"},   {1252, "DNxHD SQ 720p"},
        {1253, "DNxHD LB 1080p"},  {1256, "DNxHD 444 1080p"}, {1258, "DNxHD"},
        {1270, "DNxHR 444"},       {1271, "DNxHR HQX"},       {1272, "DNxHR HQ"},
        {1273, "DNxHR SQ"},        {1274, "DNxHR LB"}};
    for (const auto& [id, name] : names) {
        Script().information = FrameOf(id);
        ASSERT_EQ(Decode(whiteV216), CxAV_OK);
        EXPECT_EQ(Metadata("Compression"), name);
    }
}

TEST_F(DNXDecode, TheSamplingIsTold) {
    for (const auto& [sampling, name] : {std::pair{2U, "444"}, {4U, "420"}, {1U, "422"}, {0U, "422"}}) {
        Script().information.sampling = sampling;
        ASSERT_EQ(Decode(whiteV216), CxAV_OK);
        EXPECT_EQ(Metadata("SubSampling"), name);
    }
}

TEST_F(DNXDecode, TheColourIsTold) {
    for (const auto& [color, name] : {std::pair{2U, "RGB"}, {1U, "YCbCr"}, {0U, "YCbCr"}}) {
        Script().information.colorFormat = color;
        ASSERT_EQ(Decode(whiteV216), CxAV_OK);
        EXPECT_EQ(Metadata("ColorFormat"), name);
    }
}

TEST_F(DNXDecode, TheDepthIsTold) {
    for (const auto& [depth, name] : {std::pair{10U, "10bit"}, {12U, "12bit"}, {8U, "8bit"}, {0U, "8bit"}}) {
        Script().information.depth = depth;
        ASSERT_EQ(Decode(whiteV216), CxAV_OK);
        EXPECT_EQ(Metadata("Depth"), name);
    }
}

TEST_F(DNXDecode, TheAlphaIsToldAlsoOfADNxHDFrameThatClaimsIt) {
    for (const uint32_t id : {1272U, 1237U}) {
        Script().information = FrameOf(id);
        ASSERT_EQ(Decode(whiteV216), CxAV_OK);
        EXPECT_EQ(Metadata("AlphaChannel"), "No");
        Script().information.losslessAlpha = 1;
        ASSERT_EQ(Decode(whiteV216), CxAV_OK);
        EXPECT_EQ(Metadata("AlphaChannel"), "No");
        Script().information.alpha = 1;
        ASSERT_EQ(Decode(whiteYv16), CxAV_OK);
        EXPECT_EQ(Metadata("AlphaChannel"), "Lossless");
        Script().information.losslessAlpha = 0;
        ASSERT_EQ(Decode(whiteYv16), CxAV_OK);
        EXPECT_EQ(Metadata("AlphaChannel"), "Yes");
    }
}

TEST_F(DNXDecode, TheDecoderOfTheFirstFrameServesAllOthersWhateverTheirCompression) {
    ASSERT_EQ(Decode(whiteV216), CxAV_OK);
    Script().information = FrameOf(1235);
    ASSERT_EQ(Decode(whiteA48r), CxAV_OK);
    ExpectWhite(0x1234);
    EXPECT_EQ(Metadata("Compression"), "DNxHD HQX 1080p");
    EXPECT_EQ(CallsOf("CreateDecoder"), 1);
    EXPECT_EQ(CallsOf("DecodeFrame"), 2);
    EXPECT_EQ(+Script().decoderInformation.compressionId, 1272U);
}

TEST_F(DNXDecode, TheDecoderOutlivesAnotherOpen) {
    ASSERT_EQ(Decode(whiteV216), CxAV_OK);
    ASSERT_EQ(codec_.Open(), CxAV_OK);
    codec_.Flush();
    ASSERT_EQ(Decode(whiteV216), CxAV_OK);
    EXPECT_EQ(CallsOf("CreateDecoder"), 1);
}

TEST_F(DNXDecode, TheDecoderIsDeletedWithTheCodec) {
    {
        DNXCodec codec(CxAV_DECODE, nullptr);
        codec.SetDataSource(&track_);
        ASSERT_EQ(::Decode(codec, 0, image_.get()), CxAV_OK);
        EXPECT_EQ(Script().decoders, 1);
    }
    EXPECT_EQ(Script().decoders, 0);
    EXPECT_EQ(CallsOf("DeleteDecoder"), 1);
}

TEST_F(DNXDecode, ACodecThatNeverDecodedDeletesNothing) {
    { const DNXCodec codec(CxAV_DECODE, nullptr); }
    EXPECT_TRUE(Script().calls.empty());
}

TEST_F(DNXDecode, AnImageSmallerThanTheTrackGetsABufferOfItsOwnRowSize) {
    image_ = MarkedImage(2, 1);
    ASSERT_EQ(Decode(whiteV216), CxAV_OK);
    EXPECT_EQ(Script().outputSize, 4U * 2 * 2);
    ExpectWhite(fullScale);
}

TEST_F(DNXDecode, WhatTheLibraryLeavesOutOfTheFirstPictureIsNeverOldMemory) {
    Script().information = FrameOf(1270);
    Script().decodedSize = 8;
    ASSERT_EQ(Decode(whiteA48r), CxAV_OK);
    EXPECT_EQ(PixelAt(*image_, 0, 0).A, 0x1234);
    for (int32_t x = 1; x < 4; ++x)
        EXPECT_EQ(PixelAt(*image_, x, 0).A, 0);
}

} // namespace
