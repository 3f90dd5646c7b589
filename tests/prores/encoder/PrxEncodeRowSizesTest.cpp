// How far apart the caller's rows are.

#include "prores/encoder/EncodeFixture.h"

#include "support/GuardedBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>

namespace {

constexpr int32_t allModes[] = {0, 1, 2};

std::vector<uint32_t> CodecsFor(uint32_t pixelFormat) {
    std::vector<uint32_t> codecs;
    for (const uint32_t codec : {uint32_t{prxCodecApch}, uint32_t{prxCodecAp4h}}) {
        if (IsTaken(codec, pixelFormat)) codecs.push_back(codec);
    }
    return codecs;
}

/// Calls `check(settings, pixelFormat)`.
template <typename Check>
void ForAllInputs(const Check& check) {
    for (const uint32_t format : allInputs)
        for (const uint32_t codec : CodecsFor(format))
            for (const int32_t interlaceMode : allModes)
                check(PrxEncodeSettings{codec, interlaceMode, 1}, format);
}

struct Placed {
    uint8_t* firstRow;
    int32_t rowBytes;
};

/// Encodes 13 by 32 pixels.
CodedFrame EncodePlaced(PrxEncoderRef encoder, const PrxEncodeSettings& settings, uint32_t format,
                        const Placed& placed) {
    return Encode(encoder, settings, {placed.firstRow, placed.rowBytes, format, 13, 32});
}

TEST(EncodeRowSizes, RowsShorterThanTheirPixelsAreRefusedAndNotRead) {
    const EncoderPtr encoder = MakeEncoder();
    const GuardedBytes nothing(0, GuardedBytes::Guard::Behind);
    ForAllInputs([&](const PrxEncodeSettings& settings, uint32_t format) {
        if (format == prxFormatV210) return;
        for (const int32_t rowBytes : {0, 1, RowSize(format, 13) - 1})
            for (const int32_t sign : {1, -1}) {
                const CodedFrame frame =
                    EncodePlaced(encoder.get(), settings, format, {nothing.data(), sign * rowBytes});
                ASSERT_EQ(frame.result, -50) << format << ", row of " << sign * rowBytes;
            }
    });
}

TEST(EncodeRowSizes, ARowOfPackedPixelsTakesWholePairs) {
    for (const auto& [format, bytes] :
         {std::pair(prxFormat2vuy, 28), std::pair(prxFormatYuvs, 28), std::pair(prxFormatV216, 56)}) {
        const EncoderPtr encoder = MakeEncoder();
        std::vector<uint8_t> pixels(static_cast<size_t>(bytes) * 32);
        EXPECT_EQ(EncodePlaced(encoder.get(), {prxCodecApch, 0, 0}, format, {pixels.data(), bytes}).result,
                  0);
        EXPECT_EQ(
            EncodePlaced(encoder.get(), {prxCodecApch, 0, 0}, format, {pixels.data(), bytes - 1}).result,
            -50);
    }
}

TEST(EncodeRowSizes, RowsOfJustTheirPixelsAreEncodedInBothDirections) {
    const EncoderPtr encoder = MakeEncoder();
    ForAllInputs([&](const PrxEncodeSettings& settings, uint32_t format) {
        const int32_t rowBytes = RowSize(format, 13);
        const GuardedBytes down(static_cast<size_t>(rowBytes) * 32, GuardedBytes::Guard::Behind);
        const GuardedBytes up(static_cast<size_t>(rowBytes) * 32, GuardedBytes::Guard::Before);
        ASSERT_EQ(EncodePlaced(encoder.get(), settings, format, {down.data(), rowBytes}).result, 0);
        ASSERT_EQ(
            EncodePlaced(encoder.get(), settings, format, {up.data() + 31 * rowBytes, -rowBytes}).result, 0);
    });
}

TEST(EncodeRowSizes, OfAPictureOfOneRowDoNotMatter) {
    const EncoderPtr encoder = MakeEncoder();
    ForAllInputs([&](const PrxEncodeSettings& settings, uint32_t format) {
        if (format == prxFormatV210) return;
        const InputPicture picture = MakePicture(format, 13, 1, Content::Noise);
        const std::vector<uint8_t> original = picture.bytes;
        const std::vector<uint8_t> expected = Encode(encoder.get(), settings, picture.buffer).bytes;
        for (const int32_t rowBytes : {0, 1, -1, std::numeric_limits<int32_t>::max()})
            for (const auto guard : {GuardedBytes::Guard::Behind, GuardedBytes::Guard::Before}) {
                const GuardedBytes row(original.size(), guard);
                std::ranges::copy(original, row.data());
                const PrxPixelBuffer buffer = {row.data(), rowBytes, format, 13, 1};
                ASSERT_EQ(Encode(encoder.get(), settings, buffer).bytes, expected)
                    << format << ", row of " << rowBytes;
            }
    });
}

/// Everything but the frame header, which tells the pixel format.
std::vector<uint8_t> BehindHeader(const std::vector<uint8_t>& frame) {
    return {frame.begin() + 8 + 148, frame.end()};
}

TEST(EncodeRowSizes, ShortRowsOfV210AreNotReadAndComeOutBlackAlsoInFields) {
    const EncoderPtr encoder = MakeEncoder();
    const GuardedBytes nothing(0, GuardedBytes::Guard::Behind);
    InputPicture black = MakePicture(prxFormatV216, 13, 32, Content::Flat);
    constexpr std::array<uint8_t, 4> blackPixel = {0x00, 0x80, 0x00, 0x10};
    for (size_t i = 0; i < black.bytes.size(); i += 4)
        std::ranges::copy(blackPixel, black.bytes.begin() + static_cast<ptrdiff_t>(i));
    for (const int32_t interlaceMode : allModes) {
        const PrxEncodeSettings settings{prxCodecApch, interlaceMode, 0};
        const auto expected = BehindHeader(Encode(encoder.get(), settings, black.buffer).bytes);
        for (const int32_t rowBytes : {0, 1, 24, 30, 47})
            for (const int32_t sign : {1, -1}) {
                const CodedFrame frame =
                    EncodePlaced(encoder.get(), settings, prxFormatV210, {nothing.data(), sign * rowBytes});
                ASSERT_EQ(frame.result, 0);
                ASSERT_EQ(BehindHeader(frame.bytes), expected)
                    << "mode " << interlaceMode << ", row of " << sign * rowBytes;
            }
    }
}

TEST(EncodeRowSizes, TheLowestRowSizeOf32BitsIsNoFailureOfTheCheck) {
    const EncoderPtr encoder = MakeEncoder();
    const InputPicture picture = MakePicture(prxFormatV216, 13, 1, Content::Noise);
    PrxPixelBuffer buffer = picture.buffer;
    buffer.rowBytes = std::numeric_limits<int32_t>::min();
    for (const int32_t interlaceMode : allModes) {
        const PrxEncodeSettings settings{prxCodecApch, interlaceMode, 0};
        EXPECT_EQ(Encode(encoder.get(), settings, buffer).bytes,
                  Encode(encoder.get(), settings, picture.buffer).bytes);
    }
}

} // namespace
