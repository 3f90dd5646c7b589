#include "images/ImageOperations.h"

#include "TestImages.h"

#include <cstring>
#include <gtest/gtest.h>

TEST(ImageOperations, ConvertsIntegersToFloatAndBackWithoutLoss) {
    const HostImage image = MakePattern(40, 30, ImageData_RGBA16);
    const HostImage wide = ConvertImage(*image, ImageData_RGBAFloat);
    const HostImage back = ConvertImage(*wide, ImageData_RGBA16);
    for (int32_t y = 0; y < 30; ++y)
        EXPECT_EQ(std::memcmp(image->RowAddress(y), back->RowAddress(y), 40 * 8), 0) << "row " << y;
}

TEST(ImageOperations, MakesOpaqueBlack) {
    const HostImage image = NewOpaqueBlackImage(3, 2, ImageData_RGBA16);
    const PixelFloat pixel = PixelAt(*image, 2, 1);
    EXPECT_EQ(pixel.R, 0.0f);
    EXPECT_EQ(pixel.A, 1.0f);
}

TEST(ImageOperations, MeasuresTheRangeOfEachChannel) {
    const HostImage image = NewOpaqueBlackImage(3, 2, ImageData_RGBAFloat);
    image->SetPixelFloat({-0.5f, 2.0f, 0.25f, 0.75f}, image->RowAddress(1), nullptr, image.get());
    const ChannelRanges ranges = MeasureRanges(*image);
    EXPECT_EQ(ranges.least, (std::array<float, 4>{-0.5f, 0.0f, 0.0f, 0.75f}));
    EXPECT_EQ(ranges.greatest, (std::array<float, 4>{0.0f, 2.0f, 0.25f, 1.0f}));
}
