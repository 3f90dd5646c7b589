// The module as other binaries see it: loaded, filled, and used through its exports alone.

#include "codecs/UncompressedTestSupport.h"
#include "framework/FakeBackEnd.h"
#include "pixel/PixelConvert.h"

#include <gtest/gtest.h>

namespace {

TEST(Registration, TheUncompressedBackEndIsThereWhenTheModuleIsLoaded) {
    for (const char* const text : {"2vuy", "2Vuy", "uyvy", "yuv2", "v210", "v216", "BGRA", "b64a", "r210"}) {
        const uint32_t fourCC = FourCC({text[0], text[1], text[2], text[3], '\0'});
        const auto factories = CxAVCodecRegistry::GetDecoderFactories(fourCC);
        ASSERT_EQ(factories.size(), 1u) << text;
        EXPECT_EQ(factories[0]->name, "Uncompressed");
    }
}

TEST(Registration, TheEncodersAreListedWhenTheModuleIsLoaded) {
    std::vector<CxEncoderInfo> rows;
    ASSERT_TRUE(CxAVCodecRegistry::ListAllCodecs(true, rows));
    ASSERT_GE(rows.size(), 8u);
    EXPECT_EQ(rows[0].name, "Uncompressed RGB 8-bit");
    EXPECT_EQ(rows[7].name, "Uncompressed YUV 422 16-bit");
}

TEST(Registration, AnImageGoesThroughAnEncoderAndADecoderOfTheModule) {
    std::mt19937 random = NewRandom();
    const ImagePointer image = NewImage(13, 7, ImageData_RGBA16);
    FillAtRandom(*image, random);
    const CodecPointer encoder = NewEncoder("Uncompressed ARGB 16 bit");
    ASSERT_NE(encoder, nullptr);
    Bytes sample;
    ASSERT_EQ(Encode(*encoder, FourCC("b64a"), image.get(), sample), CxAV_OK);
    MemoryTrackSource source(FourCC("b64a"), 13, 7, {sample}, MemoryTrackSource::Delivery::CallersBuffer);
    const CodecPointer decoder = NewDecoder(source);
    ASSERT_NE(decoder, nullptr);
    const ImagePointer decoded = NewImage(13, 7, ImageData_RGBA16);
    ASSERT_EQ(Decode(*decoder, 0, decoded.get()), CxAV_OK);
    for (int32_t y = 0; y < 7; ++y)
        for (int32_t x = 0; x < 13; ++x)
            ASSERT_EQ(PixelAt(*decoded, x, y), PixelAt(*image, x, y));
}

TEST(Registration, ABackEndOfAnotherBinaryCanBeAdded) {
    const uint32_t fourCC = NewFourCC();
    const auto backEnd = NewBackEnd({fourCC}, {EncoderRow("Encoder of another binary")});
    CxAbstractCodecFactory* const factory = Register(backEnd);
    ASSERT_NE(factory, nullptr);
    MemoryTrackSource source(fourCC, 4, 2, {{1, 2, 3}});
    {
        const CodecPointer decoder = NewDecoder(source);
        ASSERT_NE(decoder, nullptr);
        EXPECT_TRUE(decoder->isTypeOf(factory));
        EXPECT_EQ(decoder->getDataSource(), &source);
        EXPECT_EQ(decoder->GetDataBufferSize(), 3);
        EXPECT_NE(decoder->GetDataBuffer(), nullptr);
        EXPECT_NE(NewEncoder("Encoder of another binary"), nullptr);
    }
    EXPECT_EQ(backEnd->codecsMade, 2);
    EXPECT_EQ(backEnd->codecsDeleted, 2);
}

TEST(Registration, ThePixelConversionsAreExported) {
    const ImagePointer image = NewImage(1, 1, ImageData_RGBA16);
    SetPixelAt(*image, 0, 0, {0x1200, 0x3400, 0x5600, 0x7800});
    Image* picture = image.get();
    uint8_t* blob = nullptr;
    EXPECT_EQ(PixelConvert::CalcRowBytes(32, 1), 4);
    ASSERT_TRUE(PixelConvert::ImageToBlob(picture, 32, 4, blob, false));
    EXPECT_EQ(Bytes(blob, blob + 4), (Bytes{0x78, 0x12, 0x34, 0x56}));
    EXPECT_TRUE(PixelConvert::BlobToImage(blob, 4, 32, picture));
    EXPECT_EQ(PixelAt(*image, 0, 0), (Pixel{0x1212, 0x3434, 0x5656, 0x7878}));
    Platform::FreeMemAligned(blob);
}

} // namespace
