// What the uncompressed back-end claims and offers, and how it answers to wrong calls, samples and sizes.

#include "codecs/UncompressedCodecs.h"

#include "codecs/UncompressedTestSupport.h"
#include "framework/AllocatorSpy.h"
#include "pixel/PixelConvert.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

TEST(UncompressedCodecs, ClaimThirteenCodes) {
    std::set<uint32_t> fourCCs;
    std::vector<CxEncoderInfo> rows;
    std::string name;
    EXPECT_TRUE(UncompressedCodecs::FillCodecInfo(fourCCs, rows, name));
    EXPECT_EQ(fourCCs, (std::set<uint32_t>{24, 32, FourCC("2vuy"), FourCC("BGRA"), FourCC("b64a"),
                                           FourCC("r210"), FourCC("v210"), FourCC("v216"), FourCC("rgb "),
                                           FourCC("raw "), FourCC("yuv2"), FourCC("2Vuy"), FourCC("uyvy")}));
    EXPECT_EQ(name, "Uncompressed");
}

TEST(UncompressedCodecs, AreRegisteredAtLoadForEveryCode) {
    std::set<uint32_t> fourCCs;
    std::vector<CxEncoderInfo> rows;
    std::string name;
    UncompressedCodecs::FillCodecInfo(fourCCs, rows, name);
    ASSERT_NE(g_UncompressedFactory, nullptr);
    EXPECT_EQ(g_UncompressedFactory->GetName(), "Uncompressed");
    for (const uint32_t fourCC : fourCCs) {
        MemoryTrackSource source(fourCC, 4, 2, {});
        const CodecPointer decoder = NewDecoder(source);
        ASSERT_NE(decoder, nullptr) << fourCC;
        EXPECT_TRUE(decoder->isTypeOf(g_UncompressedFactory)) << fourCC;
    }
}

TEST(UncompressedCodecs, OfferEightEncodersInOrderOfTheirCodes) {
    std::set<uint32_t> fourCCs;
    std::vector<CxEncoderInfo> rows;
    std::string name;
    UncompressedCodecs::FillCodecInfo(fourCCs, rows, name);
    const std::vector<std::pair<uint32_t, std::string>> expected = {
        {24, "Uncompressed RGB 8-bit"},
        {32, "Uncompressed ARGB 8-bit"},
        {FourCC("2vuy"), "Uncompressed YUV 422 8-bit"},
        {FourCC("BGRA"), "Uncompressed BGRA 8-bit"},
        {FourCC("b64a"), "Uncompressed ARGB 16 bit"},
        {FourCC("r210"), "Uncompressed RGB 10-bit"},
        {FourCC("v210"), "Uncompressed YUV 422 10-bit"},
        {FourCC("v216"), "Uncompressed YUV 422 16-bit"},
    };
    ASSERT_EQ(rows.size(), expected.size());
    for (size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(rows[i].fourCC, expected[i].first);
        EXPECT_EQ(rows[i].name, expected[i].second);
    }
}

TEST(UncompressedCodecs, EncoderRowsCarryTheCommonCodecIdAndNothingElse) {
    std::set<uint32_t> fourCCs;
    std::vector<CxEncoderInfo> rows;
    std::string name;
    UncompressedCodecs::FillCodecInfo(fourCCs, rows, name);
    for (const CxEncoderInfo& row : rows) {
        EXPECT_EQ(row.codecId, FourCC("imco"));
        EXPECT_EQ(row.reserved | row.width | row.height | row.flags, 0u);
        EXPECT_EQ(row.description, "");
    }
}

TEST(UncompressedCodecs, ACallerGetsACopyOfTheFormatTable) {
    std::map<uint32_t, std::string> formats = UncompressedCodecs::GetFormats();
    EXPECT_EQ(formats.size(), 8u);
    formats.clear();
    EXPECT_EQ(UncompressedCodecs::GetFormats().size(), 8u);
}

TEST(UncompressedCodecs, AYuv2TrackOpensAndEveryFrameOfItFails) {
    MemoryTrackSource source(FourCC("yuv2"), 6, 4, {Bytes(1000, 1), Bytes(1000, 2)});
    const CodecPointer decoder = NewDecoder(source);
    ASSERT_NE(decoder, nullptr);
    const ImagePtr image = MarkedImage(6, 4);
    EXPECT_EQ(Decode(*decoder, 0, image.get()), CxAV_FAILED);
    EXPECT_EQ(Decode(*decoder, 1, image.get()), CxAV_FAILED);
    EXPECT_TRUE(IsFilledWith(*image, marker));
}

TEST(UncompressedCodecs, Yuv2HasNoRowSizeAndNoConversion) {
    EXPECT_EQ(PixelConvert::CalcRowBytes(FourCC("yuv2"), 6), 0);
    const ImagePtr image = MarkedImage(6, 4);
    Image* picture = image.get();
    Bytes sample(1000, 1);
    EXPECT_FALSE(PixelConvert::BlobToImage(sample.data(), 12, FourCC("yuv2"), picture));
    EXPECT_TRUE(IsFilledWith(*image, marker));
}

TEST(UncompressedCodecs, NoEncoderOfTheCatalogueIsForUyvy) {
    std::vector<CxEncoderInfo> rows;
    ASSERT_TRUE(CxAVCodecRegistry::ListAllCodecs(true, rows));
    for (const CxEncoderInfo& row : rows)
        EXPECT_NE(row.fourCC, FourCC("uyvy")) << row.name;
}

TEST(UncompressedCodecs, EncodingToUyvyIsUnsupported) {
    const CodecPointer encoder = NewEncoder("Uncompressed YUV 422 8-bit");
    const ImagePtr image = MarkedImage(6, 4);
    Bytes encoded;
    EXPECT_EQ(Encode(*encoder, FourCC("uyvy"), image.get(), encoded), CxAV_UNSUPPORTED);
    EXPECT_EQ(Encode(*encoder, 0, image.get(), encoded), CxAV_UNSUPPORTED);
    EXPECT_TRUE(encoded.empty());
}

TEST(UncompressedCodecs, V210OfWidth49HasRowsOf256Bytes) {
    const CodecPointer encoder = NewEncoder("Uncompressed YUV 422 10-bit");
    Bytes encoded;
    EXPECT_EQ(Encode(*encoder, FourCC("v210"), MarkedImage(49, 3).get(), encoded), CxAV_OK);
    EXPECT_EQ(encoded.size(), 3u * 256);
}

TEST(UncompressedCodecs, R210OfWidth65HasRowsOf512Bytes) {
    const CodecPointer encoder = NewEncoder("Uncompressed RGB 10-bit");
    Bytes encoded;
    EXPECT_EQ(Encode(*encoder, FourCC("r210"), MarkedImage(65, 3).get(), encoded), CxAV_OK);
    EXPECT_EQ(encoded.size(), 3u * 512);
}

TEST(UncompressedCodecs, TheFrameNumberIsTheSampleIndexInAnyOrder) {
    MemoryTrackSource source = SmallTrack();
    const CodecPointer decoder = NewDecoder(source);
    const ImagePtr image = MarkedImage(6, 4);
    for (const int32_t frame : {2, 0, 1, 1}) {
        EXPECT_EQ(Decode(*decoder, frame, image.get()), CxAV_OK);
        EXPECT_EQ(source.lastSampleRead, frame);
        EXPECT_TRUE(IsFilledWith(*image, Grey(frame + 1)));
    }
}

TEST(UncompressedCodecs, AFrameThatTheSourceDoesNotHaveIsAFailedRead) {
    MemoryTrackSource source = SmallTrack();
    const CodecPointer decoder = NewDecoder(source);
    const ImagePtr image = MarkedImage(6, 4);
    EXPECT_EQ(Decode(*decoder, 3, image.get()), CxAV_READ_FAILED);
    EXPECT_EQ(Decode(*decoder, -1, image.get()), CxAV_READ_FAILED);
    EXPECT_TRUE(IsFilledWith(*image, marker));
}

TEST(UncompressedCodecs, WithoutASourceOrAnImageTheStateIsInvalid) {
    UncompressedCodecs codec(CxAV_DECODE, nullptr);
    const ImagePtr image = MarkedImage(6, 4);
    EXPECT_EQ(Decode(codec, 0, image.get()), CxAV_INVALID_STATE);
    MemoryTrackSource source = SmallTrack();
    codec.SetDataSource(&source);
    EXPECT_EQ(Decode(codec, 0, nullptr), CxAV_INVALID_STATE);
    EXPECT_EQ(Decode(codec, 0, image.get()), CxAV_OK);
}

TEST(UncompressedCodecs, AnyCodeOpensAndTheSizeIsTheSources) {
    UncompressedCodecs codec(CxAV_DECODE, nullptr);
    EXPECT_EQ(codec.GetWidth(), 0);
    EXPECT_EQ(codec.GetHeight(), 0);
    MemoryTrackSource source(FourCC("zzzz"), 640, 480, {});
    EXPECT_EQ(codec.SetDataSource(&source), CxAV_OK);
    EXPECT_EQ(codec.GetWidth(), 640);
    EXPECT_EQ(codec.GetHeight(), 480);
}

TEST(UncompressedCodecs, OpeningWithoutASourceIsAnInvalidState) {
    UncompressedCodecs codec(CxAV_DECODE, nullptr);
    EXPECT_EQ(codec.SetDataSource(nullptr), CxAV_INVALID_STATE);
    EXPECT_EQ(codec.Open(), CxAV_INVALID_STATE);
}

TEST(UncompressedCodecs, SizeAndCodeAreTakenFromTheSourceForEachFrame) {
    MemoryTrackSource source = SmallTrack();
    const CodecPointer decoder = NewDecoder(source);
    MemoryTrackSource other(32, 2, 1, {{255, 1, 2, 3, 128, 4, 5, 6}});
    decoder->getDataSource() = &other;
    const ImagePtr image = MarkedImage(2, 1);
    ASSERT_EQ(Decode(*decoder, 0, image.get()), CxAV_OK);
    EXPECT_EQ(PixelAt(*image, 1, 0), (Pixel{4 * 257, 5 * 257, 6 * 257, 128 * 257}));
    EXPECT_EQ(decoder->GetWidth(), 2);
    EXPECT_EQ(decoder->GetHeight(), 1);
}

TEST(UncompressedCodecs, AnImageOfNoPixelsEncodesToNoBytesInEveryFormat) {
    for (const auto& [fourCC, name] : UncompressedCodecs::GetFormats()) {
        const CodecPointer encoder = NewEncoder(name);
        for (const auto& [width, height] : {std::pair{0, 0}, std::pair{0, 3}, std::pair{3, 0}}) {
            Bytes encoded = {1};
            EXPECT_EQ(Encode(*encoder, fourCC, MakeImage(width, height, ImageData_RGBA8).get(), encoded),
                      CxAV_OK);
            EXPECT_TRUE(encoded.empty()) << name << " " << width << "x" << height;
        }
    }
}

TEST(UncompressedCodecs, EncodingNoImageIsAnInvalidState) {
    const CodecPointer encoder = NewEncoder("Uncompressed RGB 8-bit");
    Bytes encoded;
    EXPECT_EQ(Encode(*encoder, 24, nullptr, encoded), CxAV_INVALID_STATE);
}

TEST(UncompressedCodecs, EncodingPassesOverABufferThatTheCallerGave) {
    const CodecPointer encoder = NewEncoder("Uncompressed RGB 8-bit");
    const ImagePtr image = MarkedImage(6, 4);
    std::array<uint8_t, 72> mine;
    mine.fill(0xee);
    CxEncodedFrame frame;
    frame.codecTag = 24;
    frame.data = mine.data();
    frame.size = 72;
    Image* picture = image.get();
    ASSERT_EQ(encoder->EncodeFrame(picture, frame), CxAV_OK);
    EXPECT_NE(frame.data, mine.data());
    EXPECT_EQ(frame.size, 72u);
    EXPECT_TRUE(std::all_of(mine.begin(), mine.end(), [](uint8_t byte) { return byte == 0xee; }));
    Platform::FreeMemAligned(frame.data);
}

TEST(UncompressedCodecs, AnImageThatIsTooLargeForAFrameIsRefusedAndTheRecordStays) {
    const CodecPointer encoder = NewEncoder("Uncompressed ARGB 16 bit");
    const ImagePtr image = MarkedImage(2, 2);
    for (const auto& [width, height] :
         {std::pair{2, 0x7fffffff}, std::pair{2, -1}, std::pair{0x10000000, 2}, std::pair{0x20000000, 2}}) {
        image->Width = width;
        image->Height = height;
        CxEncodedFrame frame;
        frame.codecTag = FourCC("b64a");
        Image* picture = image.get();
        EXPECT_EQ(encoder->EncodeFrame(picture, frame), CxAV_INVALID_STATE) << width << "x" << height;
        EXPECT_EQ(frame.data, nullptr);
        EXPECT_EQ(frame.size, 0u);
    }
    image->Width = 2;
    image->Height = 2;
}

TEST(UncompressedCodecs, TheBufferOfAFailedConversionIsFreed) {
    const CodecPointer encoder = NewEncoder("Uncompressed ARGB 16 bit");
    const ImagePtr image = MarkedImage(2, 2);
    // The row size wraps to that of one pixel, so that there is a buffer and no conversion.
    image->Width = 0x20000001;
    CxEncodedFrame frame;
    frame.codecTag = FourCC("b64a");
    Image* picture = image.get();
    AllocatorSpy::Reset();
    EXPECT_EQ(encoder->EncodeFrame(picture, frame), CxAV_INVALID_STATE);
    EXPECT_EQ(AllocatorSpy::allocations, 1);
    EXPECT_EQ(AllocatorSpy::frees, 1);
    EXPECT_EQ(frame.data, nullptr);
    image->Width = 2;
}

TEST(UncompressedCodecs, TheTargetSizeIsZeroAndSettingsAreTaken) {
    const CodecPointer encoder = NewEncoder("Uncompressed RGB 8-bit");
    CxVideoSettings settings;
    settings.width = 1920;
    settings.height = 1080;
    EXPECT_EQ(encoder->GetTargetFrameSize(settings), 0);
    EXPECT_EQ(encoder->SetEncoderSettings(settings), CxAV_OK);
    EXPECT_TRUE(settings.extraData.empty());
}

} // namespace
