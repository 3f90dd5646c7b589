#include "ffmpeg/accuracy/NumberedPicture.h"

#include <gtest/gtest.h>

namespace {

constexpr PictureSize size{192, 112};

/// The planes of a picture as a brightness function sees them.
class Drawn {
public:
    explicit Drawn(int number, bool isInterlaced = false) {
        AppendPicture(number, size, isInterlaced, planes);
    }

    int operator()(int x, int y) const { return planes[static_cast<size_t>(y) * size.width + x] * 257; }

    std::vector<uint8_t> planes;
};

TEST(NumberedPicture, EveryNumberIsReadBack) {
    for (int number = 0; number < numberLimit; ++number)
        EXPECT_EQ(ReadNumber(size, Drawn(number)), number);
}

TEST(NumberedPicture, EveryNumberOfAnInterlacedPictureIsReadBack) {
    for (int number = 0; number < numberLimit; ++number)
        EXPECT_EQ(ReadNumber(size, Drawn(number, true)), number);
}

TEST(NumberedPicture, HasThreePlanesOf420) { EXPECT_EQ(Drawn(0).planes.size(), size_t{192} * 112 * 3 / 2); }

TEST(NumberedPicture, OnlyTheTextureOfTheOddRowsDiffersWhereItIsInterlaced) {
    const Drawn progressive(3);
    const Drawn interlaced(3, true);
    EXPECT_EQ(progressive(150, 40), interlaced(150, 40));
    bool isAnyOddRowOther = false;
    for (int x = 0; x < size.width; ++x)
        isAnyOddRowOther = isAnyOddRowOther || progressive(x, 41) != interlaced(x, 41);
    EXPECT_TRUE(isAnyOddRowOther);
}

TEST(NumberedPicture, AFlatPictureHasNoNumber) {
    EXPECT_EQ(ReadNumber(size, [](int, int) { return 30000; }), std::nullopt);
}

TEST(NumberedPicture, AMixtureOfTwoPicturesHasNoNumber) {
    const Drawn a(5);
    const Drawn b(6);
    EXPECT_EQ(ReadNumber(size, [&](int x, int y) { return (a(x, y) + b(x, y)) / 2; }), std::nullopt);
}

TEST(NumberedPicture, FieldsOfTwoPicturesHaveNoNumber) {
    const Drawn a(5);
    const Drawn b(6);
    EXPECT_EQ(ReadNumber(size, [&](int x, int y) { return y % 2 == 0 ? a(x, y) : b(x, y); }), std::nullopt);
}

TEST(NumberedPicture, ATooSmallPictureHasNoNumber) {
    EXPECT_EQ(ReadNumber({127, 112}, Drawn(1)), std::nullopt);
    EXPECT_EQ(ReadNumber({192, 31}, Drawn(1)), std::nullopt);
}

TEST(NumberedPicture, IsReadFromAnImageWhoseFirstRowIsTheBottomOne) {
    const Drawn drawn(77);
    Image* image = Image::Allocate(size.width, size.height, ImageData_RGBA8);
    ASSERT_NE(image, nullptr);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const int level = drawn(x, y);
            const Pixel pixel{level, level, level, 65535};
            image->SetPixel(pixel, image->RowAddress(size.height - 1 - y) + x * image->PixelStride, nullptr,
                            image);
        }
    }
    EXPECT_EQ(ReadNumber(*image), 77);
    Image::Free(image);
}

} // namespace
