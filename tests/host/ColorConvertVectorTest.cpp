// The vector form of each stage gives the bytes of the scalar form, for each instruction set of this machine,
// at every width, and touches nothing outside buffer and image.

#include "host/ColorConvertKernels.h"
#include "host/ColorTestSupport.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>
#include <hwy/highway.h>

#include <algorithm>
#include <functional>
#include <span>

using color_model::Layout;

namespace {

constexpr int widest = 130;
constexpr int rows = 3;

/// Ways to fill memory: random and the extremes, not-a-number among the floats.
using Fill = std::function<void(std::span<uint8_t>)>;

Fill Random(std::mt19937& random) {
    return [&random](std::span<uint8_t> bytes) {
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<uint8_t>(random()); });
    };
}

Fill Constant(uint8_t value) {
    return [value](std::span<uint8_t> bytes) { std::fill(bytes.begin(), bytes.end(), value); };
}

/// All of a pixel's bytes at one extreme, those of the next at the other.
Fill Alternating(size_t period) {
    return [period](std::span<uint8_t> bytes) {
        for (size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = i / period % 2 == 0 ? 0x00 : 0xff;
    };
}

/// A stretch of memory with a forbidden page right behind or right before it.
class GuardedPlane {
public:
    explicit GuardedPlane(GuardedBytes::Guard guard) : guard_(guard), bytes_(1 << 14, guard) {}

    std::span<uint8_t> Take(size_t size) {
        if (guard_ == GuardedBytes::Guard::Before) return {bytes_.begin(), size};
        return {bytes_.end() - size, size};
    }

private:
    GuardedBytes::Guard guard_;
    GuardedBytes bytes_;
};

/// A picture of one width whose planes and pixels each stand at a forbidden page.
class GuardedPicture {
public:
    GuardedPicture(GuardedBytes::Guard guard)
        : planes_{GuardedPlane(guard), GuardedPlane(guard), GuardedPlane(guard)}, pixels_(guard) {}

    void Shape(const Layout& layout, ImageDataKind kind, int width) {
        image_ = MakeImage(width, rows, kind);
        const size_t rowBytes = static_cast<size_t>(width) * BytesPerPixelOf(kind);
        pixelBytes_ = pixels_.Take(rowBytes * rows);
        for (size_t row = 0; row < rows; ++row)
            rowTable_[row] = pixelBytes_.data() + row * rowBytes;
        image_->RowTable = rowTable_;

        buffer_ = std::make_unique<YuvBuffer>(layout, width, rows);
        tags_ = buffer_->Tags();
        const Tag tags[] = {ColorTag_Buffer, ColorTag_Plane2, ColorTag_Plane3};
        for (size_t plane = 0; plane < 3; ++plane) {
            planeBytes_[plane] = planes_[plane].Take(buffer_->Bytes(plane).size());
            if (!planeBytes_[plane].empty()) tags_.SetPtr(tags[plane], planeBytes_[plane].data());
        }
    }

    void FillPixels(const Fill& fill) { fill(pixelBytes_); }
    void FillPlanes(const Fill& fill) {
        for (const auto& plane : planeBytes_)
            fill(plane);
    }
    std::vector<uint8_t> Pixels() const { return {pixelBytes_.begin(), pixelBytes_.end()}; }
    std::vector<uint8_t> Planes() const {
        std::vector<uint8_t> all;
        for (const auto& plane : planeBytes_)
            all.insert(all.end(), plane.begin(), plane.end());
        return all;
    }

    std::vector<uint8_t> Read(const ColorKernels& kernels) {
        FillPixels(Constant(0xa5));
        EXPECT_TRUE(ConvertColorToImage(image_.get(), tags_, kernels));
        return Pixels();
    }
    std::vector<uint8_t> Write(const ColorKernels& kernels) {
        FillPlanes(Constant(0xa5));
        EXPECT_NE(ConvertColorFromImage(image_.get(), tags_, kernels), nullptr);
        return Planes();
    }

private:
    GuardedPlane planes_[3];
    GuardedPlane pixels_;
    std::span<uint8_t> planeBytes_[3];
    std::span<uint8_t> pixelBytes_;
    uint8_t* rowTable_[rows] = {};
    ImagePtr image_;
    std::unique_ptr<YuvBuffer> buffer_;
    TagList tags_;
};

/// Each layout with each kind of image at each width.
void ForEachShape(GuardedPicture& picture, const std::vector<int>& widths,
                  const std::function<void()>& test) {
    for (const Layout& layout : color_model::layouts) {
        for (const ImageDataKind kind : allImageKinds) {
            for (const int width : widths) {
                SCOPED_TRACE(std::string(layout.name) + ", kind " + std::to_string(kind) + ", width " +
                             std::to_string(width));
                picture.Shape(layout, kind, width);
                test();
                if (testing::Test::HasFailure()) return;
            }
        }
    }
}

void ForEachTarget(const std::function<void(const ColorKernels&)>& test) {
    const std::vector<int64_t> targets = VectorTargets();
    ASSERT_FALSE(targets.empty()) << "no vector instruction set was dispatched";
    for (const int64_t target : targets) {
        SCOPED_TRACE(hwy::TargetName(target));
        const ForcedTarget forced(target);
        const ColorKernels& kernels = VectorColorKernels();
        ASSERT_EQ(kernels.target, target);
        test(kernels);
    }
}

void ExpectLikeScalar(GuardedPicture& picture, const std::vector<int>& widths, const Fill& fill) {
    ForEachTarget([&](const ColorKernels& kernels) {
        ForEachShape(picture, widths, [&] {
            picture.FillPlanes(fill);
            ASSERT_EQ(picture.Read(kernels), picture.Read(ScalarColorKernels())) << "reading";
            picture.FillPixels(fill);
            ASSERT_EQ(picture.Write(kernels), picture.Write(ScalarColorKernels())) << "writing";
        });
    });
}

std::vector<int> AllWidths() {
    std::vector<int> widths(widest);
    std::generate(widths.begin(), widths.end(), [next = 1]() mutable { return next++; });
    return widths;
}

const std::vector<int> someWidths = {1, 2, 7, 16, 17, 33, 64, 129};

} // namespace

TEST(ColorConvertVector, GivesTheScalarBytesUpToAForbiddenPage) {
    std::mt19937 random = MakeRandom();
    GuardedPicture picture(GuardedBytes::Guard::Behind);
    ExpectLikeScalar(picture, AllWidths(), Random(random));
}

TEST(ColorConvertVector, GivesTheScalarBytesFromAForbiddenPageOn) {
    std::mt19937 random = MakeRandom();
    GuardedPicture picture(GuardedBytes::Guard::Before);
    ExpectLikeScalar(picture, AllWidths(), Random(random));
}

TEST(ColorConvertVector, GivesTheScalarBytesOfExtremeSamples) {
    GuardedPicture picture(GuardedBytes::Guard::Behind);
    for (const uint8_t value : {0x00, 0xff, 0x7f, 0x80})
        ExpectLikeScalar(picture, someWidths, Constant(value));
}

TEST(ColorConvertVector, GivesTheScalarBytesOfAlternatingExtremes) {
    GuardedPicture picture(GuardedBytes::Guard::Behind);
    for (const size_t period : {1, 2, 4, 8, 16})
        ExpectLikeScalar(picture, someWidths, Alternating(period));
}

TEST(ColorConvertVector, GivesTheScalarBytesOfEveryHalf) {
    const Layout& layout = color_model::LayoutOf(ColorLayout_r4fl);
    const ImagePtr image = MakeImage(256, 64, ImageData_RGBAHalf);
    for (int row = 0; row < image->Height; ++row) {
        auto* halves = reinterpret_cast<uint16_t*>(image->RowTable[row]);
        for (int i = 0; i < 4 * image->Width; ++i)
            halves[i] = static_cast<uint16_t>(1024 * row + i);
    }
    YuvBuffer expected(layout, image->Width, image->Height);
    ASSERT_NE(ConvertColorFromImage(image.get(), expected.Tags(), ScalarColorKernels()), nullptr);
    ForEachTarget([&](const ColorKernels& kernels) {
        YuvBuffer written(layout, image->Width, image->Height);
        ASSERT_NE(ConvertColorFromImage(image.get(), written.Tags(), kernels), nullptr);
        EXPECT_EQ(written.Bytes(), expected.Bytes());
    });
}

TEST(ColorConvertVector, StoresTheScalarHalfOfEveryMagnitude) {
    // Alpha passes as it is: every exponent of a float, with mantissas about the half's rounding points.
    const Layout& layout = color_model::LayoutOf(ColorLayout_r4fl);
    YuvBuffer buffer(layout, 256, 16);
    for (uint32_t i = 0; i < 256 * 16; ++i) {
        const uint32_t bits = (i % 256) << 23 | (i / 256 % 8 * 0x0fff + i % 3) | (i / 2048) << 31;
        std::memcpy(buffer.Plane(0) + 16 * i, &bits, sizeof bits);
    }
    const ImagePtr expected = MakeImage(256, 16, ImageData_RGBAHalf);
    ASSERT_TRUE(ConvertColorToImage(expected.get(), buffer.Tags(), ScalarColorKernels()));
    ForEachTarget([&](const ColorKernels& kernels) {
        const ImagePtr read = MakeImage(256, 16, ImageData_RGBAHalf);
        ASSERT_TRUE(ConvertColorToImage(read.get(), buffer.Tags(), kernels));
        EXPECT_EQ(PixelBytes(*read, ImageData_RGBAHalf), PixelBytes(*expected, ImageData_RGBAHalf));
    });
}
