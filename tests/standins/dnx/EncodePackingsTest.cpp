// The exact codes that pictures are encoded from: those that FFmpeg's encoder makes the same frame of.

#include "standins/dnx/ColorModel.h"
#include "standins/dnx/DNXLibrary.h"
#include "standins/dnx/Peer.h"

#include <gtest/gtest.h>

namespace {

constexpr int profileHQ = 3;
constexpr int profileHQX = 4;
constexpr int profile444 = 5;

/// A picture whose samples of one or two bytes a function of their index gives.
template <typename Sample>
Bytes MakePicture(size_t samples, size_t bytes, Sample sample) {
    Bytes picture(samples * bytes);
    for (size_t index = 0; index < samples; ++index) {
        const auto value = static_cast<uint16_t>(sample(index));
        std::memcpy(picture.data() + index * bytes, &value, bytes);
    }
    return picture;
}

/// Words of all heights, not only those that video uses, in patches.
uint32_t AnyWord(size_t index) { return static_cast<uint32_t>(index / 40 * 2477 % 65536); }

uint16_t RoundTo(int depth, uint32_t word) {
    const int lost = 16 - depth;
    const double code = std::floor(word / std::pow(2.0, lost) + 0.5);
    return static_cast<uint16_t>(
        std::clamp(code, std::pow(2.0, depth - 8), 255 * std::pow(2.0, depth - 8) - 1));
}

/// Planes of 4:2:2 of a packed picture, whose samples `code` takes to their depth.
template <typename Code>
PeerPlanes PlanesOfPairs(const Bytes& picture, size_t bytes, AVPixelFormat format, size_t width,
                         size_t height, Code code) {
    return MakePlanes(format, width, height, [&](int plane, size_t x, size_t y) {
        size_t place = 2 * x + 1;
        if (plane == 1) place = 4 * x;
        if (plane == 2) place = 4 * x + 2;
        // The Cr of a lone last pixel is that of the pair before it.
        if (place >= 2 * width) place -= 4;
        const size_t index = 2 * width * y + place;
        return code(bytes == 1 ? picture[index] : WordAt(picture, index));
    });
}

void ExpectWordsEncodedAs(uint32_t id, AVPixelFormat format, int depth, int profile, size_t width) {
    constexpr size_t height = 130;
    const Bytes picture = MakePicture(2 * width * height, 2, AnyWord);
    const PeerPlanes planes = PlanesOfPairs(picture, 2, format, width, height,
                                            [depth](uint32_t word) { return RoundTo(depth, word); });
    const Outcome<Bytes> frame = EncodePicture(id, static_cast<uint32_t>(width), height, v216, picture);
    ASSERT_EQ(frame.error, noError);
    EXPECT_EQ(frame.value, PeerEncode(planes, profile));
}

TEST(EncodePackings, RoundsWordsTo10BitsOfVideo) {
    ExpectWordsEncodedAs(1271, AV_PIX_FMT_YUV422P10LE, 10, profileHQX, 270);
}

TEST(EncodePackings, RoundsWordsToBytesOfVideo) {
    ExpectWordsEncodedAs(1272, AV_PIX_FMT_YUV422P, 8, profileHQ, 270);
}

TEST(EncodePackings, GivesALoneLastPixelTheCrOfThePairBeforeIt) {
    ExpectWordsEncodedAs(1271, AV_PIX_FMT_YUV422P10LE, 10, profileHQX, 271);
    ExpectWordsEncodedAs(1272, AV_PIX_FMT_YUV422P, 8, profileHQ, 257);
}

TEST(EncodePackings, TakesBytesAsTheyAre) {
    constexpr size_t width = 1280;
    constexpr size_t height = 720;
    const Bytes picture =
        MakePicture(2 * width * height, 1, [](size_t index) { return AnyWord(index) & 0xFF; });
    const PeerPlanes planes = PlanesOfPairs(picture, 1, AV_PIX_FMT_YUV422P, width, height,
                                            [](uint32_t byte) { return static_cast<uint16_t>(byte); });
    const Outcome<Bytes> frame = EncodePicture(1251, width, height, vuy2, picture);
    ASSERT_EQ(frame.error, noError);
    EXPECT_EQ(frame.value, PeerEncode(planes, 0, 90));
}

TEST(EncodePackings, RoundsRgbTo10BitsOfVideo) {
    constexpr size_t width = 271;
    constexpr size_t height = 131;
    const Bytes picture = MakePicture(4 * width * height, 2, AnyWord);
    const PeerPlanes planes =
        MakePlanes(AV_PIX_FMT_GBRP10LE, width, height, [&](int plane, size_t x, size_t y) {
            constexpr size_t placeOfPlane[] = {2, 3, 1};
            return RoundTo(10, WordAt(picture, 4 * (y * width + x) + placeOfPlane[plane]));
        });
    const Outcome<Bytes> frame = EncodePicture(1270, width, height, a48r, picture);
    ASSERT_EQ(frame.error, noError);
    EXPECT_EQ(frame.value, PeerEncode(planes, profile444));
}

TEST(EncodePackings, IgnoresTheAlphaOfRgb) {
    const auto picture = [](uint32_t alpha) {
        return MakePicture(4 * 256 * 120, 2,
                           [alpha](size_t index) { return index % 4 == 0 ? alpha : 30000; });
    };
    EXPECT_EQ(EncodePicture(1270, 256, 120, a48r, picture(0)).value,
              EncodePicture(1270, 256, 120, a48r, picture(65535)).value);
}

/// A picture of R'G'B' with patches of colour that begin at odd and even columns.
Bytes Patches(size_t width, size_t height) {
    return MakePicture(4 * width * height, 2, [width](size_t index) -> uint32_t {
        const size_t patch = index / 4 % width / 27 + index / 4 / width / 20;
        const uint32_t words[] = {65535, 4096, 60160, 32000, 20000};
        return index % 4 == 0 ? 65535 : words[(patch + index % 4) % 5];
    });
}

RgbValue PixelAt(const Bytes& picture, size_t pixel) {
    const auto word = [&](size_t place) { return static_cast<double>(WordAt(picture, 4 * pixel + place)); };
    return {word(1), word(2), word(3)};
}

/// What 4:2:2 planes of 10 bits should hold of a picture: chroma is weighed by (1 2 1) / 4 about even
/// columns.
double ModelSample(const Bytes& picture, size_t width, int plane, size_t x, size_t y) {
    const auto value = [&](size_t column) { return ToYCbCr(PixelAt(picture, y * width + column)); };
    if (plane == 0) return value(x).y / 64;
    const auto chroma = [&](size_t column) { return plane == 1 ? value(column).cb : value(column).cr; };
    const size_t before = x > 0 ? 2 * x - 1 : 0;
    const size_t behind = std::min(2 * x + 1, width - 1);
    return (chroma(before) + 2 * chroma(2 * x) + chroma(behind)) / 4 / 64;
}

TEST(EncodePackings, TakesRgbToYCbCr422ThroughBT709) {
    for (const size_t width : {270, 271}) {
        constexpr size_t height = 130;
        const Bytes picture = Patches(width, height);
        const auto model =
            MakePlanes(AV_PIX_FMT_YUV422P10LE, width, height, [&](int plane, size_t x, size_t y) {
                const double code = ModelSample(picture, width, plane, x, y);
                return static_cast<uint16_t>(std::clamp(std::floor(code + 0.5), 4.0, 1019.0));
            });
        const Outcome<Bytes> frame = EncodePicture(1271, static_cast<uint32_t>(width), height, a48r, picture);
        ASSERT_EQ(frame.error, noError);
        EXPECT_EQ(frame.value, PeerEncode(model, profileHQX)) << width;
    }
}

struct FlatCase {
    uint32_t id;
    PackingRow packing;
    uint32_t width;
    uint32_t height;
    uint32_t step; ///< of one code of the compression, in samples of the packing
};

constexpr FlatCase flatCases[] = {
    {1251, vuy2, 1280, 720, 1},   {1243, vuy2, 1920, 1080, 1}, {1272, v216, 256, 120, 256},
    {1271, v216, 256, 120, 64},   {1270, a48r, 256, 120, 64},  {1250, a48r, 1280, 720, 64},
    {1241, a48r, 1920, 1080, 64},
};

/// The largest difference of two pictures of bytes or words.
uint32_t WorstDifference(const Bytes& a, const Bytes& b, bool words) {
    uint32_t worst = 0;
    for (size_t index = 0; index < a.size() / (words ? 2 : 1); ++index) {
        const int first = words ? WordAt(a, index) : a[index];
        const int second = words ? WordAt(b, index) : b[index];
        worst = std::max(worst, static_cast<uint32_t>(std::abs(first - second)));
    }
    return worst;
}

class FlatPictures : public testing::TestWithParam<FlatCase> {};

TEST_P(FlatPictures, ComeBackWithinOneCode) {
    const auto& [id, packing, width, height, step] = GetParam();
    const bool words = packing.layout != dnxLayout8Bit;
    // Cb, Y, Cr, Y of a green, or A, R, G, B of another.
    const std::vector<uint32_t> sample = packing.color == dnxColorRgb
                                             ? std::vector<uint32_t>{65535, 14001, 45023, 20977}
                                             : std::vector<uint32_t>{0x51, 0x91, 0x37, 0x91};
    const uint32_t unit = words && packing.color != dnxColorRgb ? 256 : 1;
    const Bytes picture = MakePicture(packing.pixelBytes / (words ? 2 : 1) * width * height, words ? 2 : 1,
                                      [&](size_t index) { return sample[index % 4] * unit; });
    const Outcome<Bytes> frame = EncodePicture(id, width, height, packing, picture);
    ASSERT_EQ(frame.error, noError);
    const Outcome<Bytes> decoded = DecodePicture(frame.value, packing);
    ASSERT_EQ(decoded.error, noError);
    ASSERT_EQ(decoded.value.size(), picture.size());
    EXPECT_LE(WorstDifference(picture, decoded.value, words), step);
}

INSTANTIATE_TEST_SUITE_P(EncodePackings, FlatPictures, testing::ValuesIn(flatCases),
                         [](const auto& info) { return std::to_string(info.param.id); });

} // namespace
