// The module as other binaries see it: loaded, filled, and used through its exports alone.

#include "codecs/UncompressedTestSupport.h"
#include "framework/FakeBackEnd.h"
#include "pixel/PixelConvert.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace {

/// An encoder that a test adds to the registry.
const std::string foreignEncoder = "Encoder of another binary";

using Names = std::vector<std::string>;

/// Every back-end in the order of registration. One whose library is missing on a machine is not there.
const Names backEnds = {"FFmpeg", "Avid DNX", "Apple ProRes", "Uncompressed", "DXVA"};

/// Codes that the back-ends claim, each by at least one of them; `avc1` and `avci` by two.
const std::vector<uint32_t> codes = {FourCC("avc1"), FourCC("avci"), FourCC("AVdn"), FourCC("AVdh"),
                                     FourCC("apch"), FourCC("apcn"), FourCC("v210"), 24};

/// The names in the order of registration.
Names InOrder(const Names& names) {
    Names ordered;
    for (const std::string& name : backEnds)
        if (std::find(names.begin(), names.end(), name) != names.end()) ordered.push_back(name);
    return ordered;
}

Names FactoriesOf(uint32_t fourCC) {
    Names names;
    for (const CxAbstractCodecFactory* factory : CxAVCodecRegistry::GetDecoderFactories(fourCC))
        names.push_back(factory->GetName());
    return names;
}

/// The encoder rows of the back-ends that came with the module.
std::vector<CxEncoderInfo> CatalogueRows() {
    std::vector<CxEncoderInfo> rows;
    CxAVCodecRegistry::ListAllCodecs(true, rows);
    std::erase_if(rows, [](const CxEncoderInfo& row) { return row.name == foreignEncoder; });
    return rows;
}

TEST(Registration, TheFFmpegBackEndIsTheFirstWhenTheModuleIsLoaded) {
    for (const char* const text : {"avc1", "avci", "hvc1", "mp2v", "xdv7", "dvcp", "mp4v", "jpeg", "VP90"}) {
        const Names names = FactoriesOf(FourCC({text[0], text[1], text[2], text[3], '\0'}));
        ASSERT_FALSE(names.empty()) << text;
        EXPECT_EQ(names.front(), "FFmpeg") << text;
        EXPECT_EQ(std::count(names.begin(), names.end(), "FFmpeg"), 1) << text;
    }
}

TEST(Registration, TheUncompressedBackEndIsThereWhenTheModuleIsLoaded) {
    for (const char* const text : {"2vuy", "2Vuy", "uyvy", "yuv2", "v210", "v216", "BGRA", "b64a", "r210"}) {
        const Names names = FactoriesOf(FourCC({text[0], text[1], text[2], text[3], '\0'}));
        EXPECT_EQ(std::count(names.begin(), names.end(), "Uncompressed"), 1) << text;
    }
}

TEST(Registration, TheProResBackEndIsThereWhenTheModuleIsLoaded) {
    for (const char* const text : {"apch", "apcn", "apcs", "apco", "ap4h", "ap4x"}) {
        const Names names = FactoriesOf(FourCC({text[0], text[1], text[2], text[3], '\0'}));
        EXPECT_EQ(std::count(names.begin(), names.end(), "Apple ProRes"), 1) << text;
    }
}

TEST(Registration, TheDNXBackEndIsThereWhenTheModuleIsLoaded) {
    for (const uint32_t fourCC : {FourCC("AVdn"), FourCC("AVdh")}) {
        const Names names = FactoriesOf(fourCC);
        EXPECT_EQ(std::count(names.begin(), names.end(), "Avid DNX"), 1) << fourCC;
    }
}

TEST(Registration, TheEncodersAreListedWhenTheModuleIsLoaded) {
    const std::vector<CxEncoderInfo> rows = CatalogueRows();
    const std::map<std::string, uint32_t> expected = {{"Apple ProRes 422", FourCC("apcn")},
                                                      {"Apple ProRes 4444 XQ", FourCC("ap4x")},
                                                      {"Uncompressed RGB 8-bit", 24},
                                                      {"Uncompressed ARGB 16 bit", FourCC("b64a")},
                                                      {"Uncompressed YUV 422 16-bit", FourCC("v216")}};
    std::map<std::string, uint32_t> found;
    for (const CxEncoderInfo& row : rows)
        if (expected.contains(row.name)) found[row.name] = row.fourCC;
    EXPECT_EQ(found, expected);
}

TEST(Registration, FactoriesThatClaimOneCodeStandInTheFixedOrder) {
    for (const uint32_t fourCC : codes)
        EXPECT_EQ(FactoriesOf(fourCC), InOrder(FactoriesOf(fourCC))) << fourCC;
}

TEST(Registration, TheRowsOfTheCatalogueStandInTheFixedOrderOfTheirBackEnds) {
    Names makers;
    for (const CxEncoderInfo& row : CatalogueRows()) {
        const CodecPointer encoder = NewEncoder(row.name);
        ASSERT_NE(encoder, nullptr) << row.name;
        if (makers.empty() || makers.back() != encoder->GetName()) makers.push_back(encoder->GetName());
    }
    EXPECT_EQ(makers, InOrder(makers));
    EXPECT_FALSE(makers.empty());
}

TEST(Registration, AnImageGoesThroughAnEncoderAndADecoderOfTheModule) {
    std::mt19937 random = MakeRandom();
    const ImagePtr image = MakeImage(13, 7, ImageData_RGBA16);
    FillAtRandom(*image, random);
    const CodecPointer encoder = NewEncoder("Uncompressed ARGB 16 bit");
    ASSERT_NE(encoder, nullptr);
    Bytes sample;
    ASSERT_EQ(Encode(*encoder, FourCC("b64a"), image.get(), sample), CxAV_OK);
    MemoryTrackSource source(FourCC("b64a"), 13, 7, {sample}, MemoryTrackSource::Delivery::CallersBuffer);
    const CodecPointer decoder = NewDecoder(source);
    ASSERT_NE(decoder, nullptr);
    const ImagePtr decoded = MakeImage(13, 7, ImageData_RGBA16);
    ASSERT_EQ(Decode(*decoder, 0, decoded.get()), CxAV_OK);
    for (int32_t y = 0; y < 7; ++y)
        for (int32_t x = 0; x < 13; ++x)
            ASSERT_EQ(PixelAt(*decoded, x, y), PixelAt(*image, x, y));
}

TEST(Registration, ABackEndOfAnotherBinaryCanBeAdded) {
    const uint32_t fourCC = NewFourCC();
    const auto backEnd = NewBackEnd({fourCC}, {EncoderRow(foreignEncoder)});
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
        EXPECT_NE(NewEncoder(foreignEncoder), nullptr);
    }
    EXPECT_EQ(backEnd->codecsMade, 2);
    EXPECT_EQ(backEnd->codecsDeleted, 2);
}

TEST(Registration, ThePixelConversionsAreExported) {
    const ImagePtr image = MakeImage(1, 1, ImageData_RGBA16);
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
