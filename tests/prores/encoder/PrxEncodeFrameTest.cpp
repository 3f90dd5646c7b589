#include "prores/encoder/EncodeFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>
#include <utility>

namespace {

constexpr PrxEncodeSettings hq{prxCodecApch, 0, 0};

int32_t BoundOf(const PrxEncodeSettings& settings, int32_t width, int32_t height) {
    int32_t bound = 0;
    PrxGetMaxFrameSize(settings.codecType, settings.hasAlpha, width, height, &bound, nullptr);
    return bound;
}

// Arguments

/// Encodes a small picture with one thing changed; output and results must stay as they are.
int32_t Refused(const std::function<void(PrxEncodeSettings*, PrxPixelBuffer*, int32_t*)>& spoil) {
    const EncoderPtr encoder = MakeEncoder();
    const InputPicture picture = MakePicture(prxFormatV216, 32, 16, Content::Noise);
    PrxEncodeSettings settings = hq;
    PrxPixelBuffer buffer = picture.buffer;
    std::vector<uint8_t> output(static_cast<size_t>(BoundOf(hq, 32, 16)), 0xcc);
    auto capacity = static_cast<int32_t>(output.size());
    spoil(&settings, &buffer, &capacity);
    int32_t size = 77;
    uint8_t opaque = 77;
    const int32_t result =
        PrxEncodeFrame(encoder.get(), &settings, &buffer, output.data(), capacity, &size, &opaque);
    EXPECT_EQ(size, 77);
    EXPECT_EQ(opaque, 77);
    EXPECT_EQ(std::ranges::count(output, 0xcc), static_cast<ptrdiff_t>(output.size()));
    return result;
}

TEST(EncodeFrame, RefusesNullPointers) {
    const EncoderPtr encoder = MakeEncoder();
    const InputPicture picture = MakePicture(prxFormatV216, 32, 16, Content::Noise);
    std::vector<uint8_t> output(static_cast<size_t>(BoundOf(hq, 32, 16)));
    const auto capacity = static_cast<int32_t>(output.size());
    const PrxPixelBuffer* pixels = &picture.buffer;
    int32_t size;
    uint8_t opaque;
    EXPECT_EQ(PrxEncodeFrame(nullptr, &hq, pixels, output.data(), capacity, &size, &opaque), -50);
    EXPECT_EQ(PrxEncodeFrame(encoder.get(), nullptr, pixels, output.data(), capacity, &size, &opaque), -50);
    EXPECT_EQ(PrxEncodeFrame(encoder.get(), &hq, nullptr, output.data(), capacity, &size, &opaque), -50);
    EXPECT_EQ(PrxEncodeFrame(encoder.get(), &hq, pixels, nullptr, capacity, &size, &opaque), -50);
    EXPECT_EQ(Refused([](auto, PrxPixelBuffer* buffer, auto) { buffer->baseAddress = nullptr; }), -50);
}

TEST(EncodeFrame, NeedsNoPlaceForItsResults) {
    const EncoderPtr encoder = MakeEncoder();
    const InputPicture picture = MakePicture(prxFormatV216, 32, 16, Content::Noise);
    std::vector<uint8_t> output(static_cast<size_t>(BoundOf(hq, 32, 16)));
    EXPECT_EQ(PrxEncodeFrame(encoder.get(), &hq, &picture.buffer, output.data(),
                             static_cast<int32_t>(output.size()), nullptr, nullptr),
              0);
}

TEST(EncodeFrame, RefusesOneByteLessThanTheBoundAndNegativeCapacities) {
    EXPECT_EQ(Refused([](auto, auto, int32_t* capacity) { --*capacity; }), -50);
    EXPECT_EQ(Refused([](auto, auto, int32_t* capacity) { *capacity = 0; }), -50);
    EXPECT_EQ(Refused([](auto, auto, int32_t* capacity) { *capacity = -1; }), -50);
}

TEST(EncodeFrame, AcceptsACapacityOfTheBound) {
    const EncoderPtr encoder = MakeEncoder();
    const InputPicture picture = MakePicture(prxFormatB64a, 100, 50, Content::Noise);
    EXPECT_EQ(Encode(encoder.get(), hq, picture.buffer).result, 0);
    EXPECT_EQ(Encode(encoder.get(), {prxCodecAp4h, 0, 1}, picture.buffer).result, 0);
}

TEST(EncodeFrame, NeedsTheRoomForAlphaAlsoWhereNoneIsCoded) {
    const auto without = [](PrxEncodeSettings* settings, PrxPixelBuffer*, int32_t* capacity) {
        settings->codecType = prxCodecAp4h;
        *capacity = BoundOf(*settings, 32, 16);
        settings->hasAlpha = 1;
    };
    EXPECT_EQ(Refused(without), -50);
}

TEST(EncodeFrame, RefusesSizesBelow1) {
    for (const int32_t size : {0, -1, std::numeric_limits<int32_t>::min()}) {
        EXPECT_EQ(Refused([=](auto, PrxPixelBuffer* buffer, auto) { buffer->width = size; }), -50);
        EXPECT_EQ(Refused([=](auto, PrxPixelBuffer* buffer, auto) { buffer->height = size; }), -50);
    }
}

TEST(EncodeFrame, RefusesSizesAbove65535) {
    EXPECT_EQ(Refused([](auto, PrxPixelBuffer* buffer, auto) { buffer->width = 65536, buffer->height = 1; }),
              -3);
    EXPECT_EQ(Refused([](auto, PrxPixelBuffer* buffer, auto) { buffer->height = 65536, buffer->width = 1; }),
              -3);
}

TEST(EncodeFrame, RefusesTheLargestSizesForWantOfCapacity) {
    EXPECT_EQ(Refused([](auto, PrxPixelBuffer* buffer, auto) {
                  buffer->width = buffer->height = std::numeric_limits<int32_t>::max();
              }),
              -50);
}

TEST(EncodeFrame, RefusesFormatsThatItHasNoConverterFor) {
    for (const uint32_t format : {uint32_t{prxFormatBgra}, uint32_t{prxFormatL302}, uint32_t{prxFormatW216},
                                  uint32_t{prxFormatN302}, 0U, 0x78787878U}) {
        EXPECT_EQ(Refused([=](auto, PrxPixelBuffer* buffer, auto) { buffer->pixelFormat = format; }), -50);
    }
}

TEST(EncodeFrame, TakesWidthsAndHeightsOf65535) {
    const EncoderPtr encoder = MakeEncoder();
    for (const auto& [width, height] : {std::pair(65535, 1), std::pair(1, 65535)}) {
        const InputPicture picture = MakePicture(prxFormatV216, width, height, Content::Noise);
        for (const int32_t interlaceMode : {0, 1}) {
            const CodedFrame frame = Encode(encoder.get(), {prxCodecApco, interlaceMode, 0}, picture.buffer);
            ASSERT_EQ(frame.result, 0);
            EXPECT_FALSE(ReadPictures(frame.bytes).empty());
            EXPECT_LE(frame.bytes.size(), static_cast<size_t>(BoundOf({prxCodecApco, 0, 0}, width, height)));
        }
    }
}

TEST(EncodeFrame, TakesACodecThatIsNoneLikeAp4xWithoutItsRate) {
    const EncoderPtr encoder = MakeEncoder();
    const InputPicture picture = MakePicture(prxFormatY416, 64, 32, Content::Ramps);
    const CodedFrame frame = Encode(encoder.get(), {0x78787878, 0, 0}, picture.buffer);
    ASSERT_EQ(frame.result, 0);
    EXPECT_EQ(ReadHeader(frame.bytes).chromaFormat, 3);
    EXPECT_EQ(ReadHeader(frame.bytes).lumaMatrix[0], 2);
}

TEST(EncodeFrame, GivesACodecThatIsNoneTheRateOfApchAlsoIn444) {
    const EncoderPtr encoder = MakeEncoder();
    for (const uint32_t format : {prxFormatV216, prxFormatY416}) {
        const InputPicture picture = MakePicture(format, 1280, 720, Content::Noise);
        const CodedFrame frame = Encode(encoder.get(), {0x78787878, 0, 0}, picture.buffer);
        ASSERT_EQ(frame.result, 0);
        const auto target = static_cast<double>(BoundOf(hq, 1280, 720));
        EXPECT_LE(static_cast<double>(frame.bytes.size()), target);
        EXPECT_GT(static_cast<double>(frame.bytes.size()), target * 0.8);
    }
}

TEST(EncodeFrame, LeavesRoomForTheAlphaOfACodecThatIsNone) {
    const EncoderPtr encoder = MakeEncoder();
    const InputPicture picture = MakePicture(prxFormatB64a, 1024, 128, Content::Noise);
    const PrxEncodeSettings settings{0x78787878, 0, 1};
    EXPECT_EQ(Encode(encoder.get(), settings, picture.buffer).result, -50);
    const int32_t capacity = BoundOf(settings, 1024, 128) + 3 * 1024 * 128;
    std::vector<uint8_t> output(static_cast<size_t>(capacity));
    int32_t size = 0;
    ASSERT_EQ(
        PrxEncodeFrame(encoder.get(), &settings, &picture.buffer, output.data(), capacity, &size, nullptr),
        0);
    output.resize(static_cast<size_t>(size));
    EXPECT_FALSE(ReadPictures(output).empty());
}

TEST(DeleteEncoder, TakesNull) { PrxDeleteEncoder(nullptr); }

// Frame header

TEST(EncodeFrame, WritesTheHeaderOfTheSettings) {
    const EncoderPtr encoder = MakeEncoder();
    const InputPicture picture = MakePicture(prxFormatB64a, 100, 50, Content::Ramps);
    const CodedFrame frame = Encode(encoder.get(), {prxCodecAp4h, 1, 1}, picture.buffer);
    const PrxFrameHeader header = ReadHeader(frame.bytes);
    EXPECT_EQ(header.headerSize, 148U);
    EXPECT_EQ(header.width, 100U);
    EXPECT_EQ(header.height, 50U);
    EXPECT_EQ(header.chromaFormat, 3);
    EXPECT_EQ(header.interlaceMode, 1);
    EXPECT_EQ(header.colorPrimaries, 2);
    EXPECT_EQ(header.transferCharacteristic, 2);
    EXPECT_EQ(header.matrixCoefficients, 6);
    EXPECT_EQ(header.sourcePixelFormat, 10);
    EXPECT_EQ(header.alphaType, 2);
}

TEST(EncodeFrame, TellsTheSourceFormatAsTheCallerGaveIt) {
    const EncoderPtr encoder = MakeEncoder();
    for (const auto& [format, code] : {std::pair(prxFormatV210, 2), std::pair(prxFormatR210, 15)}) {
        const InputPicture picture = MakePicture(format, 32, 16, Content::Ramps);
        EXPECT_EQ(ReadHeader(Encode(encoder.get(), hq, picture.buffer).bytes).sourcePixelFormat, code);
    }
}

TEST(EncodeFrame, KeepsTwoBitsOfAnInterlaceModeThatIsNoneInTheHeaderOfAProgressiveFrame) {
    const EncoderPtr encoder = MakeEncoder();
    const InputPicture picture = MakePicture(prxFormatV216, 32, 33, Content::Ramps);
    const CodedFrame progressive = Encode(encoder.get(), hq, picture.buffer);
    ASSERT_EQ(ReadPictures(progressive.bytes).at(0).slices.size(), 3U);
    for (const auto& [mode, bits] : {std::pair(3, 3), std::pair(4, 0), std::pair(5, 1), std::pair(6, 2),
                                     std::pair(-1, 3), std::pair(-4, 0)}) {
        const CodedFrame frame = Encode(encoder.get(), {prxCodecApch, mode, 0}, picture.buffer);
        ASSERT_EQ(frame.result, 0);
        EXPECT_EQ(ReadHeader(frame.bytes).interlaceMode, bits) << mode;
        EXPECT_EQ(ReadHeader(frame.bytes).chromaFormat, prxChroma422) << mode;
        std::vector<uint8_t> expected = progressive.bytes;
        expected[20] = static_cast<uint8_t>(expected[20] | bits << 2);
        EXPECT_EQ(frame.bytes, expected) << mode;
    }
}

// Alpha

void Expect422WithoutAlpha(const PrxEncodeSettings& settings, uint32_t pixelFormat) {
    const EncoderPtr encoder = MakeEncoder();
    const InputPicture picture = MakePicture(pixelFormat, 64, 32, Content::Noise);
    const CodedFrame frame = Encode(encoder.get(), settings, picture.buffer);
    EXPECT_EQ(ReadHeader(frame.bytes).chromaFormat, 2);
    EXPECT_EQ(ReadHeader(frame.bytes).alphaType, 0);
    EXPECT_EQ(ReadPictures(frame.bytes).at(0).slices.at(0).headerSize, 6U);
    EXPECT_TRUE(frame.allOpaque);
}

TEST(EncodeFrame, CodesNoAlphaForA422Codec) { Expect422WithoutAlpha({prxCodecApch, 0, 1}, prxFormatB64a); }

TEST(EncodeFrame, CodesNoAlphaForA422FormatInA4444Codec) {
    Expect422WithoutAlpha({prxCodecAp4h, 0, 1}, prxFormat2vuy);
}

TEST(EncodeFrame, HasAnAlphaSizeInEachSliceWithAlpha) {
    const EncoderPtr encoder = MakeEncoder();
    const InputPicture picture = MakePicture(prxFormatB64a, 64, 32, Content::Ramps);
    const CodedFrame frame = Encode(encoder.get(), {prxCodecAp4h, 0, 1}, picture.buffer);
    const std::vector<CodedPicture> pictures = ReadPictures(frame.bytes);
    ASSERT_EQ(pictures.size(), 1U);
    for (const CodedSlice& slice : pictures[0].slices) {
        EXPECT_EQ(slice.headerSize, 8U);
        EXPECT_GT(slice.alphaSize, 0U);
    }
}

TEST(EncodeFrame, CodesNoAlphaIfNotAskedTo) {
    const EncoderPtr encoder = MakeEncoder();
    const InputPicture picture = MakePicture(prxFormatB64a, 64, 32, Content::Noise);
    const CodedFrame frame = Encode(encoder.get(), {prxCodecAp4h, 0, 0}, picture.buffer);
    EXPECT_EQ(ReadHeader(frame.bytes).alphaType, 0);
    EXPECT_TRUE(frame.allOpaque);
}

TEST(EncodeFrame, SaysWhetherAllAlphaIsOpaque) {
    const EncoderPtr encoder = MakeEncoder();
    for (const int32_t interlaceMode : {0, 1, 2}) {
        for (const int32_t clearedRow : {-1, 0, 1, 39}) {
            InputPicture picture = MakePicture(prxFormatB64a, 70, 40, Content::Ramps);
            if (clearedRow >= 0)
                picture.bytes[static_cast<size_t>(clearedRow * RowSize(prxFormatB64a, 70)) + 1] = 0xfe;
            const CodedFrame frame = Encode(encoder.get(), {prxCodecAp4h, interlaceMode, 1}, picture.buffer);
            EXPECT_EQ(frame.allOpaque, clearedRow < 0) << interlaceMode << " " << clearedRow;
        }
    }
}

// Fields

TEST(EncodeFrame, GivesTheTopFieldTheOddRowOfAnInterlacedFrame) {
    // 33 rows are fields of 17 and 16: two rows of macroblocks and one.
    const EncoderPtr encoder = MakeEncoder();
    const InputPicture picture = MakePicture(prxFormatV216, 32, 33, Content::Ramps);
    const auto topFirst = ReadPictures(Encode(encoder.get(), {prxCodecApch, 1, 0}, picture.buffer).bytes);
    ASSERT_EQ(topFirst.size(), 2U);
    EXPECT_EQ(topFirst[0].sliceCountField, 2U);
    EXPECT_EQ(topFirst[1].sliceCountField, 1U);
    const auto bottomFirst = ReadPictures(Encode(encoder.get(), {prxCodecApch, 2, 0}, picture.buffer).bytes);
    ASSERT_EQ(bottomFirst.size(), 2U);
    EXPECT_EQ(bottomFirst[0].sliceCountField, 1U);
    EXPECT_EQ(bottomFirst[1].sliceCountField, 2U);
}

TEST(EncodeFrame, WritesAFieldWithoutRowsAsAPictureOf8Bytes) {
    const EncoderPtr encoder = MakeEncoder();
    const InputPicture picture = MakePicture(prxFormatV216, 32, 1, Content::Noise);
    for (const int32_t interlaceMode : {1, 2}) {
        const auto pictures =
            ReadPictures(Encode(encoder.get(), {prxCodecApch, interlaceMode, 0}, picture.buffer).bytes);
        ASSERT_EQ(pictures.size(), 2U);
        EXPECT_EQ(pictures[interlaceMode == 1 ? 1 : 0].size, 8U);
        EXPECT_GT(pictures[interlaceMode == 1 ? 0 : 1].size, 8U);
    }
}

TEST(EncodeFrame, OfOneRowInFieldsIsDecodedOnlyByAFirstFieldThatHasTheRow) {
    // A picture without rows of macroblocks is a damaged one to the decoder.
    const EncoderPtr encoder = MakeEncoder();
    const DecoderPtr decoder(PrxCreateDecoder(1, nullptr));
    const InputPicture picture = MakePicture(prxFormatV216, 32, 1, Content::Noise);
    for (const int32_t interlaceMode : {1, 2}) {
        const auto frame = Encode(encoder.get(), {prxCodecApch, interlaceMode, 0}, picture.buffer).bytes;
        std::vector<uint8_t> row(128);
        const PrxPixelBuffer target = {row.data(), 128, prxFormatV216, 32, 1};
        const auto size = static_cast<int32_t>(frame.size());
        EXPECT_EQ(PrxDecodeFrame(decoder.get(), frame.data(), size, &target, 0, 0), -2);
        EXPECT_EQ(PrxDecodeFrame(decoder.get(), frame.data(), size, &target, 1, 0),
                  interlaceMode == 1 ? size : -2);
    }
}

TEST(EncodeFrame, CodesEachFieldFromItsOwnRows) {
    // One field is flat, so that its slices are tiny.
    const EncoderPtr encoder = MakeEncoder();
    InputPicture picture = MakePicture(prxFormatV216, 64, 64, Content::Noise);
    const auto rowSize = static_cast<size_t>(picture.buffer.rowBytes);
    for (size_t y = 1; y < 64; y += 2)
        std::memset(picture.bytes.data() + y * rowSize, 0x80, rowSize);
    const auto pictures = ReadPictures(Encode(encoder.get(), {prxCodecApch, 1, 0}, picture.buffer).bytes);
    ASSERT_EQ(pictures.size(), 2U);
    EXPECT_GT(pictures[0].size, 20 * pictures[1].size);
}

} // namespace
