// The exact codes of decoded pictures: those of FFmpeg's decoder, taken to the packing.

#include "standins/dnx/ColorModel.h"
#include "standins/dnx/DNXLibrary.h"
#include "standins/dnx/Peer.h"

#include <gtest/gtest.h>

namespace {

constexpr int profileSQ = 2;
constexpr int profileHQ = 3;
constexpr int profileHQX = 4;
constexpr int profile444 = 5;

constexpr size_t width = 271;
constexpr size_t height = 131;

/// A picture with edges, ramps and texture, from the lowest to the highest codes.
uint16_t Texture(int depth, int plane, size_t x, size_t y) {
    const size_t top = (size_t{1} << depth) - 1;
    const size_t ramp = (x * 7 + y * 3 + static_cast<size_t>(plane) * 90) % 400 * top / 400;
    return static_cast<uint16_t>((x / 16 + y / 16) % 3 == 0 ? ramp : (x / 32 % 2 == 0 ? top : 0));
}

int DepthOf(AVPixelFormat format) { return format == AV_PIX_FMT_YUV422P ? 8 : 10; }

Bytes TextureFrame(AVPixelFormat format, int profile) {
    return PeerEncode(
        MakePlanes(format, width, height,
                   [format](int plane, size_t x, size_t y) { return Texture(DepthOf(format), plane, x, y); }),
        profile);
}

/// The same coefficients as of a frame of 10 bits, in a frame that says 12.
Bytes FrameOf12Bits(AVPixelFormat format, int profile) {
    Bytes frame = TextureFrame(format, profile);
    frame.at(0x21) = 0x78;
    return frame;
}

uint32_t SampleAt(const Bytes& picture, size_t bytes, size_t index) {
    return bytes == 1 ? picture[index] : WordAt(picture, index);
}

/// Compares a picture of Y'CbCr with planes whose codes `expected` takes to its depth.
template <typename Code>
void ExpectPairs(const Bytes& picture, const PackingRow& packing, const PeerPlanes& planes, Code expected) {
    const size_t bytes = packing.layout == dnxLayout8Bit ? 1 : 2;
    const size_t pixel = packing.pixelBytes / bytes;
    ASSERT_EQ(picture.size(), packing.pixelBytes * planes.width * planes.height);
    size_t differences = 0;
    for (size_t y = 0; y < planes.height; ++y)
        for (size_t x = 0; x < planes.width; ++x) {
            const size_t at = (y * planes.width + x) * pixel;
            const uint16_t chroma = planes.At(x % 2 == 0 ? 1 : 2, x / 2, y);
            if (SampleAt(picture, bytes, at) != expected(chroma)) ++differences;
            if (SampleAt(picture, bytes, at + 1) != expected(planes.At(0, x, y))) ++differences;
            const uint32_t opaque = bytes == 1 ? 255 : 65535;
            if (pixel == 3 && SampleAt(picture, bytes, at + 2) != opaque) ++differences;
        }
    EXPECT_EQ(differences, 0u);
}

template <typename Code>
void ExpectDecodedPairs(const Bytes& frame, AVPixelFormat format, const PackingRow& packing, Code expected) {
    const PeerPlanes planes = PeerDecode(frame);
    ASSERT_EQ(planes.format, format);
    const Outcome<Bytes> picture = DecodePicture(frame, packing);
    ASSERT_EQ(picture.error, noError);
    ExpectPairs(picture.value, packing, planes, expected);
}

constexpr auto asItIs = [](uint32_t code) { return code; };
constexpr auto up4 = [](uint32_t code) { return code << 4; };
constexpr auto up6 = [](uint32_t code) { return code << 6; };
constexpr auto up8 = [](uint32_t code) { return code << 8; };
constexpr auto roundedTo8 = [](uint32_t code) { return std::clamp((code + 2) / 4, 1u, 254u); };

TEST(DecodePackings, GivesBytesOf8BitFramesAsTheyAre) {
    ExpectDecodedPairs(TextureFrame(AV_PIX_FMT_YUV422P, profileHQ), AV_PIX_FMT_YUV422P, vuy2, asItIs);
    ExpectDecodedPairs(TextureFrame(AV_PIX_FMT_YUV422P, profileSQ), AV_PIX_FMT_YUV422P, yv8u, asItIs);
}

TEST(DecodePackings, ShiftsBytesToWordsByEight) {
    ExpectDecodedPairs(TextureFrame(AV_PIX_FMT_YUV422P, profileHQ), AV_PIX_FMT_YUV422P, v216, up8);
    ExpectDecodedPairs(TextureFrame(AV_PIX_FMT_YUV422P, profileSQ), AV_PIX_FMT_YUV422P, yv16, up8);
}

TEST(DecodePackings, Shifts10BitsToWordsBySix) {
    const Bytes frame = TextureFrame(AV_PIX_FMT_YUV422P10LE, profileHQX);
    ExpectDecodedPairs(frame, AV_PIX_FMT_YUV422P10LE, v216, up6);
    ExpectDecodedPairs(frame, AV_PIX_FMT_YUV422P10LE, yv16, up6);
}

TEST(DecodePackings, Shifts12BitsToWordsByFour) {
    const Bytes frame = FrameOf12Bits(AV_PIX_FMT_YUV422P10LE, profileHQX);
    ExpectDecodedPairs(frame, AV_PIX_FMT_YUV422P12LE, v216, up4);
}

TEST(DecodePackings, Rounds10BitsToBytesOfVideo) {
    const Bytes frame = TextureFrame(AV_PIX_FMT_YUV422P10LE, profileHQX);
    ExpectDecodedPairs(frame, AV_PIX_FMT_YUV422P10LE, vuy2, roundedTo8);
    ExpectDecodedPairs(frame, AV_PIX_FMT_YUV422P10LE, yv8u, roundedTo8);
}

/// Compares a picture of R'G'B' with what `expected` gives for each pixel.
template <typename Expected>
void ExpectRgb(const Bytes& picture, const PeerPlanes& planes, double tolerance, Expected expected) {
    ASSERT_EQ(picture.size(), a48r.pixelBytes * planes.width * planes.height);
    double worst = 0;
    size_t transparent = 0;
    for (size_t y = 0; y < planes.height; ++y)
        for (size_t x = 0; x < planes.width; ++x) {
            const size_t at = 4 * (y * planes.width + x);
            const RgbValue value = expected(x, y);
            if (WordAt(picture, at) != 65535) ++transparent;
            worst = std::max({worst, std::abs(WordAt(picture, at + 1) - value.red),
                              std::abs(WordAt(picture, at + 2) - value.green),
                              std::abs(WordAt(picture, at + 3) - value.blue)});
        }
    EXPECT_EQ(transparent, 0u);
    EXPECT_LE(worst, tolerance);
}

void ExpectDecodedRgbPlanes(const Bytes& frame, AVPixelFormat format, int shift) {
    const PeerPlanes planes = PeerDecode(frame);
    ASSERT_EQ(planes.format, format);
    const Outcome<Bytes> picture = DecodePicture(frame, a48r);
    ASSERT_EQ(picture.error, noError);
    ExpectRgb(picture.value, planes, 0, [&](size_t x, size_t y) {
        const auto word = [&](int plane) { return static_cast<double>(planes.At(plane, x, y) << shift); };
        return RgbValue{word(2), word(0), word(1)};
    });
}

TEST(DecodePackings, ShiftsRgbOf10BitsToWordsBySix) {
    ExpectDecodedRgbPlanes(TextureFrame(AV_PIX_FMT_GBRP10LE, profile444), AV_PIX_FMT_GBRP10LE, 6);
}

TEST(DecodePackings, ShiftsRgbOf12BitsToWordsByFour) {
    ExpectDecodedRgbPlanes(FrameOf12Bits(AV_PIX_FMT_GBRP10LE, profile444), AV_PIX_FMT_GBRP12LE, 4);
}

void ExpectDecodedThroughMatrix(const Bytes& frame, AVPixelFormat format, int depth, Weights weights) {
    const PeerPlanes planes = PeerDecode(frame);
    ASSERT_EQ(planes.format, format);
    const Outcome<Bytes> picture = DecodePicture(frame, a48r);
    ASSERT_EQ(picture.error, noError);
    const double scale = 1 << (16 - depth);
    ExpectRgb(picture.value, planes, 0.51, [&](size_t x, size_t y) {
        return ToRgb(
            {planes.At(0, x, y) * scale, ChromaAt(planes, 1, x, y, scale), ChromaAt(planes, 2, x, y, scale)},
            weights);
    });
}

TEST(DecodePackings, TakesYCbCr422ToRgbThroughBT709) {
    ExpectDecodedThroughMatrix(TextureFrame(AV_PIX_FMT_YUV422P, profileHQ), AV_PIX_FMT_YUV422P, 8, bt709);
    ExpectDecodedThroughMatrix(TextureFrame(AV_PIX_FMT_YUV422P10LE, profileHQX), AV_PIX_FMT_YUV422P10LE, 10,
                               bt709);
}

TEST(DecodePackings, TakesYCbCr444ToRgbThroughBT709) {
    ExpectDecodedThroughMatrix(TextureFrame(AV_PIX_FMT_YUV444P10LE, profile444), AV_PIX_FMT_YUV444P10LE, 10,
                               bt709);
    ExpectDecodedThroughMatrix(FrameOf12Bits(AV_PIX_FMT_YUV444P10LE, profile444), AV_PIX_FMT_YUV444P12LE, 12,
                               bt709);
}

/// A frame of 4:4:4 Y'CbCr that names its colour volume.
Bytes FrameOfVolume(uint8_t volume) {
    Bytes frame = TextureFrame(AV_PIX_FMT_YUV444P10LE, profile444);
    frame.at(0x2C) = static_cast<uint8_t>(frame[0x2C] | volume << 1);
    return frame;
}

TEST(DecodePackings, TakesFramesThatNameBT2020ThroughIt) {
    ExpectDecodedThroughMatrix(FrameOfVolume(1), AV_PIX_FMT_YUV444P10LE, 10, bt2020);
}

TEST(DecodePackings, RefusesConstantLuminanceAsRgb) {
    EXPECT_EQ(DecodePicture(FrameOfVolume(2), a48r).error, constantLuminance);
}

TEST(DecodePackings, GivesYCbCrOnlyOf422) {
    for (const PackingRow& packing : {vuy2, v216, yv8u, yv16}) {
        EXPECT_EQ(DecodePicture(TextureFrame(AV_PIX_FMT_GBRP10LE, profile444), packing).error,
                  wrongFrameFormat);
        EXPECT_EQ(DecodePicture(TextureFrame(AV_PIX_FMT_YUV444P10LE, profile444), packing).error,
                  wrongFrameFormat);
    }
}

TEST(DecodePackings, GivesBothFieldsOfInterlacedFramesInPlace) {
    const PeerPlanes source = MakePlanes(AV_PIX_FMT_YUV422P, 1920, 1080, [](int plane, size_t x, size_t y) {
        return static_cast<uint16_t>(plane == 0 ? (y % 2 == 0 ? 40 + x / 16 : 200) : 128);
    });
    const Bytes frame = PeerEncode(source, 0, 185, true);
    ExpectDecodedPairs(frame, AV_PIX_FMT_YUV422P, vuy2, asItIs);
    const Bytes picture = DecodePicture(frame, vuy2).value;
    EXPECT_NEAR(picture[2 * 960 + 1], 100, 2);
    EXPECT_NEAR(picture[2 * (1920 + 960) + 1], 200, 2);
}

TEST(DecodePackings, TakesTheSecondValuesOfSampleFormatsAsTheFirst) {
    constexpr PackingRow argb = {"a48r", dnxLayout16BitHR, dnxColorRgb, dnxSamplesArgbCoded8, 8};
    constexpr PackingRow words = {"yv16", dnxLayout16BitHR, dnxColorYCbCr, dnxSamplesCbYACrYACoded8, 6};
    constexpr PackingRow bytes = {"yv8u", dnxLayout8Bit, dnxColorYCbCr, dnxSamplesCbYACrYACoded8, 3};
    const Bytes frame = TextureFrame(AV_PIX_FMT_YUV422P, profileHQ);
    EXPECT_EQ(DecodePicture(frame, argb).value, DecodePicture(frame, a48r).value);
    EXPECT_EQ(DecodePicture(frame, words).value, DecodePicture(frame, yv16).value);
    EXPECT_EQ(DecodePicture(frame, bytes).value, DecodePicture(frame, yv8u).value);
}

} // namespace
