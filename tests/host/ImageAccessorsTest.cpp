#include "host/Image.h"

#include "host/Half.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

/// A one-pixel image with shorthands for its accessors.
class OnePixel {
public:
    explicit OnePixel(ImageDataKind kind) : image_(Image::Allocate(1, 1, kind)) {}
    ~OnePixel() { Image::Free(image_); }
    OnePixel(const OnePixel&) = delete;
    OnePixel& operator=(const OnePixel&) = delete;

    void Set(Pixel pixel) { image_->SetPixel(pixel, image_->RowAddress(0), nullptr, image_); }
    void SetAll(int32_t value) { Set({value, value, value, value}); }
    void SetFloat(PixelFloat pixel) { image_->SetPixelFloat(pixel, image_->RowAddress(0), nullptr, image_); }
    void SetAllFloat(float value) { SetFloat({value, value, value, value}); }

    Pixel Get() {
        Pixel pixel = {-1, -1, -1, -1};
        image_->GetPixel(pixel, image_->RowAddress(0), nullptr, image_);
        return pixel;
    }
    PixelFloat GetFloat() {
        PixelFloat pixel = {-1, -1, -1, -1};
        image_->GetPixelFloat(pixel, image_->RowAddress(0), nullptr, image_);
        return pixel;
    }

    /// Channel `index` as it is stored.
    template <typename Stored>
    Stored Raw(int index) const {
        Stored stored;
        std::memcpy(&stored, image_->RowAddress(0) + index * sizeof stored, sizeof stored);
        return stored;
    }
    template <typename Stored>
    void SetRaw(Stored stored) {
        for (int i = 0; i < 4; ++i)
            std::memcpy(image_->RowAddress(0) + i * sizeof stored, &stored, sizeof stored);
    }

    Image* operator->() const { return image_; }
    Image* Address() const { return image_; }

private:
    Image* image_;
};

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr ImageDataKind allKinds[] = {ImageData_RGBA8, ImageData_RGBA16, ImageData_RGBAHalf,
                                      ImageData_RGBAFloat};

/// Nearest integer to `value` limited to 0..1 and scaled, in double precision.
int32_t Model(double value, double white) {
    return static_cast<int32_t>(std::floor(std::fmin(std::fmax(value, 0.0), 1.0) * white + 0.5));
}

void ExpectPixel(const Pixel& pixel, int32_t r, int32_t g, int32_t b, int32_t a) {
    EXPECT_EQ(pixel.R, r);
    EXPECT_EQ(pixel.G, g);
    EXPECT_EQ(pixel.B, b);
    EXPECT_EQ(pixel.A, a);
}

TEST(ImageAccessors, ChannelsAreStoredInTheOrderRedGreenBlueAlpha) {
    OnePixel pixel8(ImageData_RGBA8);
    pixel8.Set({0x0101, 0x0202, 0x0303, 0x0404});
    OnePixel pixel16(ImageData_RGBA16);
    pixel16.Set({1, 2, 3, 4});
    OnePixel pixelHalf(ImageData_RGBAHalf);
    pixelHalf.SetFloat({1, 2, 3, 4});
    OnePixel pixelFloat(ImageData_RGBAFloat);
    pixelFloat.SetFloat({1, 2, 3, 4});
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(pixel8.Raw<uint8_t>(i), i + 1);
        EXPECT_EQ(pixel16.Raw<uint16_t>(i), i + 1);
        EXPECT_EQ(HalfToFloat(pixelHalf.Raw<uint16_t>(i)), i + 1);
        EXPECT_EQ(pixelFloat.Raw<float>(i), i + 1);
    }
}

TEST(ImageAccessors, EachChannelIsReadFromItsOwnPlace) {
    for (const ImageDataKind kind : allKinds) {
        OnePixel pixel(kind);
        pixel.Set({0, 65535, 0, 65535});
        ExpectPixel(pixel.Get(), 0, 65535, 0, 65535);
        pixel.SetFloat({1.0f, 0.0f, 0.0f, 1.0f});
        const PixelFloat read = pixel.GetFloat();
        EXPECT_EQ(read.R, 1.0f);
        EXPECT_EQ(read.G, 0.0f);
        EXPECT_EQ(read.B, 0.0f);
        EXPECT_EQ(read.A, 1.0f);
    }
}

TEST(ImageAccessors, EightBitValuesReadAsMultiplesOf257) {
    OnePixel pixel(ImageData_RGBA8);
    for (int stored = 0; stored < 256; ++stored) {
        pixel.SetRaw(static_cast<uint8_t>(stored));
        ASSERT_EQ(pixel.Get().G, stored * 257);
    }
}

TEST(ImageAccessors, EightBitWritesRoundToTheNearest) {
    OnePixel pixel(ImageData_RGBA8);
    for (int value = 0; value < 65536; ++value) {
        pixel.SetAll(value);
        ASSERT_EQ(pixel.Raw<uint8_t>(3), std::lround(value / 257.0)) << value;
    }
}

TEST(ImageAccessors, SixteenBitValuesAreKept) {
    OnePixel pixel(ImageData_RGBA16);
    for (int value = 0; value < 65536; ++value) {
        pixel.SetAll(value);
        ASSERT_EQ(pixel.Raw<uint16_t>(2), value);
        ASSERT_EQ(pixel.Get().B, value);
    }
}

TEST(ImageAccessors, EveryIntegerSurvivesAFloatImage) {
    OnePixel pixel(ImageData_RGBAFloat);
    for (int value = 0; value < 65536; ++value) {
        pixel.SetAll(value);
        ASSERT_EQ(pixel.Raw<float>(0), static_cast<float>(value / 65535.0)) << value;
        ASSERT_EQ(pixel.Get().R, value);
    }
}

TEST(ImageAccessors, HalfImagesStoreTheHalfNearestToTheSinglePrecisionQuotient) {
    OnePixel pixel(ImageData_RGBAHalf);
    for (int value = 0; value < 65536; ++value) {
        pixel.SetAll(value);
        const uint16_t stored = pixel.Raw<uint16_t>(1);
        const double exact = value / 65535.0f;
        const double error = std::abs(HalfToFloat(stored) - exact);
        for (const int neighbour : {std::max(stored - 1, 0), stored + 1}) {
            ASSERT_LE(error, std::abs(HalfToFloat(static_cast<uint16_t>(neighbour)) - exact)) << value;
        }
    }
}

TEST(ImageAccessors, EveryHalfReadsAsTheNearestInteger) {
    OnePixel pixel(ImageData_RGBAHalf);
    for (uint32_t bits = 0; bits < 65536; ++bits) {
        const uint16_t half = static_cast<uint16_t>(bits);
        pixel.SetRaw(half);
        const float value = HalfToFloat(half);
        ASSERT_EQ(pixel.Get().A, std::isnan(value) ? 0 : Model(value, 65535)) << std::hex << bits;
    }
}

TEST(ImageAccessors, FloatValuesReadAsTheNearestInteger) {
    OnePixel pixel(ImageData_RGBAFloat);
    for (int value = 0; value < 65535; ++value) {
        const float middle = static_cast<float>((value + 0.5) / 65535.0);
        for (const float near : {std::nextafter(middle, 0.0f), middle, std::nextafter(middle, 1.0f)}) {
            pixel.SetRaw(near);
            ASSERT_EQ(pixel.Get().R, Model(near, 65535)) << near;
        }
    }
}

TEST(ImageAccessors, ValuesBeyondBlackAndWhiteReadAsTheLimitsOfAnInteger) {
    OnePixel pixel(ImageData_RGBAFloat);
    pixel.SetFloat({-0.25f, 1.5f, infinity, -infinity});
    ExpectPixel(pixel.Get(), 0, 65535, 65535, 0);
    OnePixel half(ImageData_RGBAHalf);
    half.SetFloat({-0.25f, 1.5f, infinity, -infinity});
    ExpectPixel(half.Get(), 0, 65535, 65535, 0);
}

TEST(ImageAccessors, NotANumberReadsAsIntegerZero) {
    for (const ImageDataKind kind : {ImageData_RGBAHalf, ImageData_RGBAFloat}) {
        OnePixel pixel(kind);
        pixel.SetAllFloat(notANumber);
        ExpectPixel(pixel.Get(), 0, 0, 0, 0);
    }
}

TEST(ImageAccessors, WritesTakeTheLow16BitsOfEachChannel) {
    for (const ImageDataKind kind : allKinds) {
        OnePixel pixel(kind);
        pixel.Set({-1, 65536, 0x12340000, -65536});
        ExpectPixel(pixel.Get(), 65535, 0, 0, 0);
    }
    OnePixel pixel(ImageData_RGBA16);
    pixel.Set({-32768, 65536 + 7, -2, std::numeric_limits<int32_t>::min() + 5});
    ExpectPixel(pixel.Get(), 32768, 7, 65534, 5);
}

TEST(ImageAccessors, IntegerImagesReadAsFractionsOfWhite) {
    OnePixel pixel8(ImageData_RGBA8);
    for (int stored = 0; stored < 256; ++stored) {
        pixel8.SetRaw(static_cast<uint8_t>(stored));
        ASSERT_EQ(pixel8.GetFloat().R, static_cast<float>(stored / 255.0));
    }
    OnePixel pixel16(ImageData_RGBA16);
    for (int stored = 0; stored < 65536; ++stored) {
        pixel16.SetRaw(static_cast<uint16_t>(stored));
        ASSERT_EQ(pixel16.GetFloat().A, static_cast<float>(stored / 65535.0));
    }
}

template <typename Stored>
void ExpectNearestStored(ImageDataKind kind, int32_t white) {
    OnePixel pixel(kind);
    for (int32_t value = 0; value < white; ++value) {
        const float middle = static_cast<float>((value + 0.5) / white);
        for (const float near : {std::nextafter(middle, 0.0f), middle, std::nextafter(middle, 1.0f)}) {
            pixel.SetAllFloat(near);
            ASSERT_EQ(pixel.Raw<Stored>(0), Model(near, white)) << near;
        }
    }
}

TEST(ImageAccessors, FloatWritesToIntegerImagesRoundToTheNearest) {
    ExpectNearestStored<uint8_t>(ImageData_RGBA8, 255);
    ExpectNearestStored<uint16_t>(ImageData_RGBA16, 65535);
}

TEST(ImageAccessors, FloatWritesToIntegerImagesAreLimitedToBlackAndWhite) {
    for (const ImageDataKind kind : {ImageData_RGBA8, ImageData_RGBA16}) {
        OnePixel pixel(kind);
        pixel.SetFloat({-0.5f, 1.25f, infinity, -infinity});
        ExpectPixel(pixel.Get(), 0, 65535, 65535, 0);
        pixel.SetFloat(
            {notANumber, std::numeric_limits<float>::max(), std::numeric_limits<float>::denorm_min(), -0.0f});
        ExpectPixel(pixel.Get(), 0, 65535, 0, 0);
    }
}

TEST(ImageAccessors, FloatImagesKeepFloatsBitForBit) {
    OnePixel pixel(ImageData_RGBAFloat);
    for (const float value :
         {-3.5f, 1e30f, -0.0f, infinity, notANumber, std::numeric_limits<float>::denorm_min()}) {
        pixel.SetAllFloat(value);
        const float read = pixel.GetFloat().B;
        EXPECT_EQ(std::memcmp(&read, &value, sizeof value), 0) << value;
    }
}

TEST(ImageAccessors, HalfImagesKeepValuesBeyondBlackAndWhite) {
    OnePixel pixel(ImageData_RGBAHalf);
    pixel.SetFloat({-2.0f, 1000.0f, 1e6f, notANumber});
    const PixelFloat read = pixel.GetFloat();
    EXPECT_EQ(read.R, -2.0f);
    EXPECT_EQ(read.G, 1000.0f);
    EXPECT_EQ(read.B, infinity);
    EXPECT_TRUE(std::isnan(read.A));
}

/// Calls the accessors as a row loop does on an image without main data: with offsets from address 0.
void ExpectNoMainData(ImageDataKind kind, uint8_t** rowTable) {
    OnePixel pixel(kind);
    uint8_t** const ownTable = pixel->RowTable;
    pixel.SetAllFloat(1.0f);
    pixel->RowTable = rowTable;
    for (int x = 0; x < 3; ++x) {
        uint8_t* const address = reinterpret_cast<uint8_t*>(static_cast<uintptr_t>(x) * pixel->PixelStride);
        Pixel read = {1, 2, 3, 4};
        pixel->GetPixel(read, address, nullptr, pixel.Address());
        ExpectPixel(read, 0, 0, 0, 0);
        PixelFloat readFloat = {1, 2, 3, 4};
        pixel->GetPixelFloat(readFloat, address, nullptr, pixel.Address());
        EXPECT_EQ(readFloat.R + readFloat.G + readFloat.B + readFloat.A, 0.0f);
        pixel->SetPixel({1, 2, 3, 4}, address, nullptr, pixel.Address());
        pixel->SetPixelFloat({1, 2, 3, 4}, address, nullptr, pixel.Address());
    }
    pixel->RowTable = ownTable;
    ExpectPixel(pixel.Get(), 65535, 65535, 65535, 65535);
}

TEST(ImageAccessors, WithoutARowTableTheyReadTransparentBlackAndWriteNothing) {
    for (const ImageDataKind kind : allKinds)
        ExpectNoMainData(kind, nullptr);
}

TEST(ImageAccessors, WithARowTableOfAllOnesTheyReadTransparentBlackAndWriteNothing) {
    for (const ImageDataKind kind : allKinds)
        ExpectNoMainData(kind, reinterpret_cast<uint8_t**>(UINTPTR_MAX));
}

TEST(ImageAccessors, AtANullAddressTheyReadTransparentBlackAndWriteNothing) {
    for (const ImageDataKind kind : allKinds) {
        OnePixel pixel(kind);
        pixel.SetAllFloat(1.0f);
        pixel->SetPixel({1, 2, 3, 4}, nullptr, nullptr, pixel.Address());
        pixel->SetPixelFloat({1, 2, 3, 4}, nullptr, nullptr, pixel.Address());
        ExpectPixel(pixel.Get(), 65535, 65535, 65535, 65535);
        Pixel read = {1, 2, 3, 4};
        pixel->GetPixel(read, nullptr, nullptr, pixel.Address());
        ExpectPixel(read, 0, 0, 0, 0);
        PixelFloat readFloat = {1, 2, 3, 4};
        pixel->GetPixelFloat(readFloat, nullptr, nullptr, pixel.Address());
        EXPECT_EQ(readFloat.R + readFloat.G + readFloat.B + readFloat.A, 0.0f);
    }
}

TEST(ImageAccessors, AddressesNeedNoAlignment) {
    for (const ImageDataKind kind : allKinds) {
        OnePixel pixel(kind);
        uint8_t bytes[17 + 16] = {};
        pixel->SetPixel({65535, 0, 65535, 0}, bytes + 1, nullptr, pixel.Address());
        Pixel read = {};
        pixel->GetPixel(read, bytes + 1, nullptr, pixel.Address());
        ExpectPixel(read, 65535, 0, 65535, 0);
        EXPECT_EQ(bytes[0], 0);
        EXPECT_EQ(bytes[1 + pixel->PixelStride], 0);
    }
}

} // namespace
