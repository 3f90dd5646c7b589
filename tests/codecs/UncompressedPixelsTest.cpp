// The pixels of uncompressed samples: exact where the packing loses nothing, and against a model in double
// precision where it does. Samples stand in blocks of exactly their size.

#include "codecs/UncompressedTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

/// An encoder row of the registry, with the image kind whose channels the test uses.
struct Format {
    const char* name;
    uint32_t fourCC;
    ImageDataKind kind;
    bool hasAlpha;
};

std::ostream& operator<<(std::ostream& out, const Format& format) { return out << format.name; }

std::string TestName(const testing::TestParamInfo<Format>& info) {
    const uint32_t code = info.param.fourCC;
    if (code < 256) return std::to_string(code);
    return {static_cast<char>(code >> 24), static_cast<char>(code >> 16), static_cast<char>(code >> 8),
            static_cast<char>(code)};
}

/// Sizes around the group sizes of the packings, and images of one row or column.
constexpr std::array<std::pair<int32_t, int32_t>, 8> sizes = {
    {{1, 1}, {2, 3}, {7, 5}, {47, 2}, {48, 3}, {49, 4}, {64, 1}, {65, 9}}};

/// Encodes the image, takes the result for a track of one sample and decodes that.
ImagePtr RoundTrip(Image& image, const Format& format) {
    const CodecPointer encoder = NewEncoder(format.name);
    Bytes sample;
    EXPECT_EQ(Encode(*encoder, format.fourCC, &image, sample), CxAV_OK);
    MemoryTrackSource source(format.fourCC, image.Width, image.Height, {sample});
    const CodecPointer decoder = NewDecoder(source);
    ImagePtr decoded = MakeImage(image.Width, image.Height, format.kind);
    EXPECT_EQ(Decode(*decoder, 0, decoded.get()), CxAV_OK);
    return decoded;
}

class LosslessFormats : public testing::TestWithParam<Format> {};

TEST_P(LosslessFormats, GiveEveryPixelBack) {
    const Format format = GetParam();
    std::mt19937 random = MakeRandom();
    for (const auto& [width, height] : sizes) {
        const ImagePtr image = MakeImage(width, height, format.kind);
        FillAtRandom(*image, random);
        const ImagePtr decoded = RoundTrip(*image, format);
        for (int32_t y = 0; y < height; ++y) {
            for (int32_t x = 0; x < width; ++x) {
                Pixel expected = PixelAt(*image, x, y);
                if (!format.hasAlpha) expected.A = 65535;
                ASSERT_EQ(PixelAt(*decoded, x, y), expected) << width << "x" << height;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Uncompressed, LosslessFormats,
    testing::Values(Format{"Uncompressed RGB 8-bit", 24, ImageData_RGBA8, false},
                    Format{"Uncompressed ARGB 8-bit", 32, ImageData_RGBA8, true},
                    Format{"Uncompressed BGRA 8-bit", FourCC("BGRA"), ImageData_RGBA8, true},
                    Format{"Uncompressed ARGB 16 bit", FourCC("b64a"), ImageData_RGBA16, true}),
    TestName);

TEST(UncompressedPixels, R210QuantisesToTenBitsOfVideoRange) {
    const auto tenBits = [](int32_t c) { return std::floor(c * 876.0 / 65535.0); };
    const auto expected = [&](int32_t c) { return static_cast<int32_t>(tenBits(c) * 65535.0 / 876.0); };
    const Format format = {"Uncompressed RGB 10-bit", FourCC("r210"), ImageData_RGBA16, false};
    std::mt19937 random = MakeRandom();
    for (const auto& [width, height] : sizes) {
        const ImagePtr image = MakeImage(width, height, format.kind);
        FillAtRandom(*image, random);
        const ImagePtr decoded = RoundTrip(*image, format);
        for (int32_t y = 0; y < height; ++y) {
            for (int32_t x = 0; x < width; ++x) {
                const Pixel p = PixelAt(*image, x, y);
                ASSERT_EQ(PixelAt(*decoded, x, y),
                          (Pixel{expected(p.R), expected(p.G), expected(p.B), 65535}))
                    << width << "x" << height;
            }
        }
    }
}

/// Luma and chroma of a colour by ITU-R BT.709, 3.2 and 3.3: Y from 0 to 1, Cb and Cr from -0.5 to 0.5.
struct YCbCr {
    double y, cb, cr;
};

YCbCr FromRgb(const Pixel& p) {
    const double r = p.R / 65535.0, g = p.G / 65535.0, b = p.B / 65535.0;
    const double y = 0.2126 * r + 0.7152 * g + 0.0722 * b;
    return {y, (b - y) / 1.8556, (r - y) / 1.5748};
}

/// Channels of a colour before they are rounded, with 65535 as white, limited to 0..65535.
std::array<double, 3> ToRgb(const YCbCr& c) {
    const double r = c.y + 1.5748 * c.cr, b = c.y + 1.8556 * c.cb;
    const double g = (c.y - 0.2126 * r - 0.0722 * b) / 0.7152;
    return {std::clamp(r, 0.0, 1.0) * 65535.0, std::clamp(g, 0.0, 1.0) * 65535.0,
            std::clamp(b, 0.0, 1.0) * 65535.0};
}

/// How a 4:2:2 packing stores its components, which follow each other as Cb Y Cr Y for two pixels.
struct ComponentPacking {
    uint32_t fourCC;
    int bits;

    int32_t Get(const uint8_t* row, int32_t index) const {
        if (bits == 8) return row[index];
        if (bits == 16) return row[index * 2] | row[index * 2 + 1] << 8;
        const uint8_t* const word = row + index / 3 * 4; // three components of ten bits a little-endian word
        const uint32_t value = word[0] | word[1] << 8 | word[2] << 16 | uint32_t{word[3]} << 24;
        return value >> index % 3 * 10 & 1023;
    }
    int32_t RowBytes(int32_t width) const { return bits == 10 ? (width + 47) / 48 * 128 : width * bits / 4; }
    double Scale() const { return 1 << (bits - 8); }
    double LumaCode(double y) const { return (16 + 219 * y) * Scale(); }
    double ChromaCode(double c) const { return (128 + 224 * c) * Scale(); }
    YCbCr Colour(const uint8_t* row, int32_t x) const {
        const int32_t pair = x / 2 * 4;
        return {(Get(row, x * 2 + 1) / Scale() - 16) / 219, (Get(row, pair) / Scale() - 128) / 224,
                (Get(row, pair + 2) / Scale() - 128) / 224};
    }
};

/// Rows of one colour each: chroma filters, which work along the row, leave them as they are.
ImagePtr ColourRows(int32_t width, int32_t height, std::mt19937& random) {
    ImagePtr image = MakeImage(width, height, ImageData_RGBA16);
    for (int32_t y = 0; y < height; ++y) {
        Pixel colour = RandomPixel(random);
        colour.A = 65535;
        for (int32_t x = 0; x < width; ++x)
            SetPixelAt(*image, x, y, colour);
    }
    return image;
}

void ExpectColour(const Pixel& pixel, const YCbCr& colour) {
    const std::array<double, 3> exact = ToRgb(colour);
    ASSERT_NEAR(pixel.R, exact[0], 1.0);
    ASSERT_NEAR(pixel.G, exact[1], 1.0);
    ASSERT_NEAR(pixel.B, exact[2], 1.0);
    ASSERT_EQ(pixel.A, 65535);
}

class YuvEncoders : public testing::TestWithParam<Format> {
protected:
    static ComponentPacking Packing(uint32_t fourCC) {
        return {fourCC, fourCC == FourCC("2vuy") ? 8 : fourCC == FourCC("v210") ? 10 : 16};
    }
};

TEST_P(YuvEncoders, WriteTheComponentsOfBt709InVideoRange) {
    const ComponentPacking packing = Packing(GetParam().fourCC);
    const CodecPointer encoder = NewEncoder(GetParam().name);
    std::mt19937 random = MakeRandom();
    const ImagePtr image = ColourRows(50, 40, random);
    Bytes sample;
    ASSERT_EQ(Encode(*encoder, packing.fourCC, image.get(), sample), CxAV_OK);
    ASSERT_EQ(sample.size(), static_cast<size_t>(packing.RowBytes(50)) * 40);
    for (int32_t y = 0; y < 40; ++y) {
        const uint8_t* const row = sample.data() + y * packing.RowBytes(50);
        const YCbCr exact = FromRgb(PixelAt(*image, 0, y));
        for (int32_t pair = 0; pair < 25; ++pair) {
            ASSERT_NEAR(packing.Get(row, pair * 4), packing.ChromaCode(exact.cb), 1.0);
            ASSERT_NEAR(packing.Get(row, pair * 4 + 1), packing.LumaCode(exact.y), 1.0);
            ASSERT_NEAR(packing.Get(row, pair * 4 + 2), packing.ChromaCode(exact.cr), 1.0);
            ASSERT_NEAR(packing.Get(row, pair * 4 + 3), packing.LumaCode(exact.y), 1.0);
        }
    }
}

TEST_P(YuvEncoders, WriteWhatTheirDecodersReadBack) {
    const ComponentPacking packing = Packing(GetParam().fourCC);
    std::mt19937 random = MakeRandom();
    const ImagePtr image = ColourRows(50, 40, random);
    const ImagePtr decoded = RoundTrip(*image, GetParam());
    // One code of luma and of chroma at most, as the blue channel carries them on.
    const double step = 65535.0 / packing.Scale();
    const double tolerance = step / 219 + 1.8556 * step / 224 + 1;
    for (int32_t y = 0; y < 40; ++y) {
        for (int32_t x = 0; x < 50; ++x) {
            const Pixel before = PixelAt(*image, x, y), after = PixelAt(*decoded, x, y);
            ASSERT_NEAR(after.R, before.R, tolerance);
            ASSERT_NEAR(after.G, before.G, tolerance);
            ASSERT_NEAR(after.B, before.B, tolerance);
            ASSERT_EQ(after.A, 65535);
        }
    }
}

TEST_P(YuvEncoders, TakeAndGiveImagesOfEverySize) {
    for (const auto& [width, height] : sizes) {
        const ImagePtr image = MakeImage(width, height, ImageData_RGBA16);
        FillWith(*image, {65535, 65535, 65535, 65535});
        const ImagePtr decoded = RoundTrip(*image, GetParam());
        ASSERT_TRUE(IsFilledWith(*decoded, {65535, 65535, 65535, 65535})) << width << "x" << height;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Uncompressed, YuvEncoders,
    testing::Values(Format{"Uncompressed YUV 422 8-bit", FourCC("2vuy"), ImageData_RGBA16, false},
                    Format{"Uncompressed YUV 422 10-bit", FourCC("v210"), ImageData_RGBA16, false},
                    Format{"Uncompressed YUV 422 16-bit", FourCC("v216"), ImageData_RGBA16, false}),
    TestName);

/// Decodes a sample whose rows have one chroma value each and random luma, and compares each pixel to the
/// model.
void ExpectDecodedByModel(const ComponentPacking& packing) {
    constexpr int32_t width = 48, height = 40;
    std::mt19937 random = MakeRandom();
    Bytes sample(static_cast<size_t>(packing.RowBytes(width)) * height);
    for (int32_t y = 0; y < height; ++y) {
        uint8_t* const row = sample.data() + y * packing.RowBytes(width);
        const auto cb = static_cast<uint8_t>(random()), cr = static_cast<uint8_t>(random());
        for (int32_t x = 0; x < width; ++x) {
            row[x * 2] = x % 2 == 0 ? cb : cr;
            row[x * 2 + 1] = static_cast<uint8_t>(random());
        }
    }
    MemoryTrackSource source(packing.fourCC, width, height, {sample});
    const CodecPointer decoder = NewDecoder(source);
    ASSERT_NE(decoder, nullptr);
    const ImagePtr image = MakeImage(width, height, ImageData_RGBA16);
    ASSERT_EQ(Decode(*decoder, 0, image.get()), CxAV_OK);
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x)
            ExpectColour(PixelAt(*image, x, y),
                         packing.Colour(sample.data() + y * packing.RowBytes(width), x));
}

TEST(UncompressedPixels, A2vuyTrackDecodesByTheModel) { ExpectDecodedByModel({FourCC("2vuy"), 8}); }

TEST(UncompressedPixels, A2VuyTrackDecodesAs2vuy) { ExpectDecodedByModel({FourCC("2Vuy"), 8}); }

TEST(UncompressedPixels, AUyvyTrackDecodesAtTwoBytesAPixel) { ExpectDecodedByModel({FourCC("uyvy"), 8}); }

TEST(UncompressedPixels, ARawTrackDecodesAsBytesARGB) {
    MemoryTrackSource source(FourCC("raw "), 2, 2, {{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}});
    const CodecPointer decoder = NewDecoder(source);
    ASSERT_NE(decoder, nullptr);
    const ImagePtr image = MakeImage(2, 2, ImageData_RGBA16);
    ASSERT_EQ(Decode(*decoder, 0, image.get()), CxAV_OK);
    EXPECT_EQ(PixelAt(*image, 0, 0), (Pixel{2 * 257, 3 * 257, 4 * 257, 1 * 257}));
    EXPECT_EQ(PixelAt(*image, 1, 1), (Pixel{14 * 257, 15 * 257, 16 * 257, 13 * 257}));
}

TEST(UncompressedPixels, ARgbTrackDecodesAsBytesRGB) {
    MemoryTrackSource source(FourCC("rgb "), 2, 2, {{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}});
    const CodecPointer decoder = NewDecoder(source);
    ASSERT_NE(decoder, nullptr);
    const ImagePtr image = MakeImage(2, 2, ImageData_RGBA16);
    ASSERT_EQ(Decode(*decoder, 0, image.get()), CxAV_OK);
    EXPECT_EQ(PixelAt(*image, 0, 0), (Pixel{1 * 257, 2 * 257, 3 * 257, 65535}));
    EXPECT_EQ(PixelAt(*image, 1, 1), (Pixel{10 * 257, 11 * 257, 12 * 257, 65535}));
}

} // namespace
