// Every layout in both directions against the model in double precision.

#include "host/ColorModel.h"
#include "host/ColorTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

using namespace color_model;

namespace {

/// Rounding to nearest leaves half a step, single precision a trace more.
constexpr double tolerance = 0.52;

struct Size {
    int width;
    int height;
};
constexpr Size sizes[] = {{1, 1}, {2, 2},  {3, 3},   {5, 4},   {6, 5},
                          {7, 2}, {18, 3}, {47, 18}, {64, 33}, {130, 5}};

class ColorConvertModel : public testing::TestWithParam<Layout> {};

void ExpectImageLikeModel(Image& image, const Buffer& buffer, int selector) {
    double worst = 0;
    for (int y = 0; y < image.Height; ++y) {
        for (int x = 0; x < image.Width; ++x) {
            const Rgba exact = PixelOf(buffer, selector, x, y);
            const Rgba stored = StoredPixel(image, x, y);
            for (size_t c = 0; c < 4; ++c)
                worst = std::max(worst, StepsApart(image.DataFormat->Kind, stored[c], exact[c]));
        }
    }
    EXPECT_LE(worst, tolerance) << "kind " << image.DataFormat->Kind << ", selector " << selector << ", "
                                << image.Width << "x" << image.Height;
}

/// Distance of a written code from the exact one, in steps of the layout.
double CodesApart(const Layout& layout, double written, double exact) {
    if (layout.codes != Codes::Fraction) return std::fabs(written - exact);
    return std::fabs(written - exact) / std::ldexp(1, std::ilogb(std::max(std::fabs(exact), 1. / 16)) - 23);
}

void ExpectBufferLikeModel(const Image& image, const Buffer& buffer, int selector,
                           double mostApart = tolerance) {
    double worst = 0;
    const auto compare = [&](Component component, int width, int height) {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const double exact = WrittenCode(image, buffer, selector, component, x, y);
                const double written = CodeAt(buffer, component, x, y);
                worst = std::max(worst, CodesApart(*buffer.layout, written, exact));
            }
        }
    };
    compare(Luma, buffer.width, buffer.height);
    compare(Cb, buffer.ChromaWidth(), buffer.ChromaHeight());
    compare(Cr, buffer.ChromaWidth(), buffer.ChromaHeight());
    if (buffer.layout->position[Alpha] >= 0) compare(Alpha, buffer.width, buffer.height);
    EXPECT_LE(worst, mostApart) << "kind " << image.DataFormat->Kind << ", selector " << selector << ", "
                                << image.Width << "x" << image.Height;
}

} // namespace

TEST_P(ColorConvertModel, ReadingIsTheNearestValue) {
    std::mt19937 random = MakeRandom();
    for (const Size& size : sizes) {
        YuvBuffer buffer(GetParam(), size.width, size.height);
        buffer.FillRandom(random);
        for (ImageDataKind kind : allImageKinds) {
            for (int selector : {0, 1, 2}) {
                const ImagePtr image = MakeImage(size.width, size.height, kind);
                ASSERT_TRUE(CxYUV2RGBTagList(image.get(), buffer.Tags(selector)));
                ExpectImageLikeModel(*image, buffer.View(), selector);
            }
        }
    }
}

TEST_P(ColorConvertModel, WritingIsTheNearestCode) {
    std::mt19937 random = MakeRandom();
    for (const Size& size : sizes) {
        for (ImageDataKind kind : allImageKinds) {
            const ImagePtr image = MakeImage(size.width, size.height, kind);
            FillRandom(*image, random);
            for (int selector : {0, 1, 2}) {
                YuvBuffer buffer(GetParam(), size.width, size.height);
                ASSERT_EQ(CxRGB2YUVTagList(image.get(), buffer.Tags(selector)), buffer.Plane(0));
                ExpectBufferLikeModel(*image, buffer.View(), selector);
            }
        }
    }
}

TEST_P(ColorConvertModel, PixelsFarBeyondWhiteAndBlackAreLimitedExactly) {
    std::mt19937 random = MakeRandom();
    std::uniform_real_distribution<float> wide(-70000, 70000);
    for (ImageDataKind kind : {ImageData_RGBAHalf, ImageData_RGBAFloat}) {
        const ImagePtr image = MakeImage(33, 4, kind);
        for (int row = 0; row < image->Height; ++row) {
            for (int x = 0; x < image->Width; ++x) {
                const float grey = wide(random);
                SetPixelAt(*image, x, row, PixelFloat{grey, grey, x % 2 == 0 ? grey : wide(random), grey});
            }
        }
        YuvBuffer buffer(GetParam(), image->Width, image->Height);
        ASSERT_NE(CxRGB2YUVTagList(image.get(), buffer.Tags()), nullptr);
        // Strong colours that cancel out leave an eighth of a code more.
        ExpectBufferLikeModel(*image, buffer.View(), 1, tolerance + 0.125);
    }
}

TEST_P(ColorConvertModel, RowsMayBeLongerThanTheirSamples) {
    std::mt19937 random = MakeRandom();
    for (int padding : {4, 36}) {
        YuvBuffer buffer(GetParam(), 13, 5, padding);
        buffer.FillRandom(random);
        const ImagePtr image = MakeImage(13, 5, ImageData_RGBA16);
        ASSERT_TRUE(CxYUV2RGBTagList(image.get(), buffer.Tags()));
        ExpectImageLikeModel(*image, buffer.View(), 1);
        ASSERT_NE(CxRGB2YUVTagList(image.get(), buffer.Tags()), nullptr);
        ExpectBufferLikeModel(*image, buffer.View(), 1);
    }
}

INSTANTIATE_TEST_SUITE_P(EveryLayout, ColorConvertModel, testing::ValuesIn(layouts),
                         [](const auto& info) { return std::string("Of_") + info.param.name; });
