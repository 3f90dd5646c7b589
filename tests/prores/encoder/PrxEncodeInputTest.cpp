// What a frame is made of: the colours of the caller's pixels, and what becomes of those.

#include "prores/encoder/ColorRamps.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

void SetMatrix(PrxEncoderRef encoder, int32_t colorMatrix) {
    ASSERT_EQ(PrxSetEncoderOption(encoder, 0x666d6174, 4, &colorMatrix), 0); // fmat
}

TEST(EncodeInput, RgbIsConvertedByTheMatrixOfTheFrame) {
    const EncoderPtr encoder = MakeEncoder();
    for (const uint32_t codec : {prxCodecApch, prxCodecAp4h}) {
        for (const uint32_t format : rgb_input_model::macroblockFormats) {
            if (!IsTaken(codec, format)) continue;
            for (const int32_t colorMatrix : colorMatrices) {
                SetMatrix(encoder.get(), colorMatrix);
                const InputPicture picture = ramps::MakeRgb(format);
                const auto frame = Encode(encoder.get(), {codec, 0, 0}, picture.buffer).bytes;
                EXPECT_EQ(ReadHeader(frame).matrixCoefficients, colorMatrix);
                const double error = ramps::LargestError(ramps::Decode(frame), [&](int32_t x, int32_t y) {
                    return ramps::RgbColorAt(format, colorMatrix, x, y);
                });
                EXPECT_LT(error, 0.6) << RgbCaseName(format, colorMatrix, false) << ", codec " << codec;
            }
        }
    }
}

/// The only picture of a frame.
std::vector<uint8_t> PictureOf(const std::vector<uint8_t>& frame) {
    const auto first = frame.begin() + 8 + 148;
    return {first, first + ReadPictures(frame).at(0).size};
}

TEST(EncodeInput, OfAHeightOf17TheLastRowIsRepeated16Times) {
    const EncoderPtr encoder = MakeEncoder();
    for (const uint32_t codec : {prxCodecApch, prxCodecAp4h}) {
        for (const uint32_t format : allInputs) {
            if (!IsTaken(codec, format)) continue;
            const InputPicture tall = MakePicture(format, 45, 32, Content::Noise);
            const auto rowBytes = static_cast<ptrdiff_t>(tall.buffer.rowBytes);
            uint8_t* bytes = tall.buffer.baseAddress;
            for (ptrdiff_t y = 17; y < 32; ++y)
                std::copy_n(bytes + 16 * rowBytes, rowBytes, bytes + y * rowBytes);
            const std::vector<uint8_t> original = tall.bytes;
            InputPicture low = {original, tall.buffer};
            low.buffer.baseAddress = low.bytes.data();
            low.buffer.height = 17;
            const PrxEncodeSettings settings{codec, 0, 0};
            ASSERT_EQ(PictureOf(Encode(encoder.get(), settings, low.buffer).bytes),
                      PictureOf(Encode(encoder.get(), settings, tall.buffer).bytes))
                << format;
        }
    }
}

TEST(EncodeInput, AY408PictureHasOtherChromaBytesAfterA422FrameWasMade) {
    const EncoderPtr encoder = MakeEncoder();
    const InputPicture picture = MakePicture(prxFormatY408, 45, 33, Content::Noise);
    const std::vector<uint8_t> before = picture.bytes;
    ASSERT_EQ(Encode(encoder.get(), {prxCodecApcn, 0, 0}, picture.buffer).result, 0);
    size_t changed = 0;
    for (size_t i = 0; i < before.size(); ++i) {
        const bool isChroma = i % 4 >= 2;
        changed += picture.bytes[i] != before[i];
        ASSERT_TRUE(isChroma || picture.bytes[i] == before[i]) << i;
    }
    EXPECT_GT(changed, before.size() / 5);
}

TEST(EncodeInput, AY408PictureStaysAsItWasWhenA444FrameIsMade) {
    const EncoderPtr encoder = MakeEncoder();
    const InputPicture picture = MakePicture(prxFormatY408, 45, 33, Content::Noise);
    const std::vector<uint8_t> before = picture.bytes;
    ASSERT_EQ(Encode(encoder.get(), {prxCodecAp4h, 0, 1}, picture.buffer).result, 0);
    EXPECT_EQ(picture.bytes, before);
}

} // namespace
