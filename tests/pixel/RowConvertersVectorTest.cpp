// The vector form of each row converter gives the bytes of the scalar form, for each instruction set of this
// machine, at every width, and touches nothing outside blob and image.

#include "pixel/RowConvertersVector.h"

#include "RowVectorTestSupport.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <set>

namespace {

constexpr int32_t widest = 130;

/// Writes one row by both forms, the vector form within guarded memory.
void CompareWriters(RowPacking packing, ImageDataKind kind, int32_t width, GuardedBytes::Guard guard,
                    const Fill& fill) {
    GuardedBytes pixels(BytesPerPixelOf(kind) * static_cast<size_t>(width), guard);
    GuardedBytes blob(BlobBytes(packing, width), guard);
    fill({pixels.data(), pixels.size()});
    const RowImage image(width, kind, pixels.data());
    std::vector<uint8_t> expected(blob.size());

    RowContext scalar = ContextOf(packing, width, expected.data());
    ScalarRowWriter(packing)(image.get(), &scalar, 0);
    RowContext vector = ContextOf(packing, width, blob.data());
    const Image::RowFunction writer = VectorRowWriter(packing, *image.get());
    ASSERT_NE(writer, nullptr);
    writer(image.get(), &vector, 0);
    ASSERT_EQ(std::vector<uint8_t>(blob.begin(), blob.end()), expected) << "width " << width;
}

/// Reads one row by both forms, the vector form within guarded memory.
void CompareReaders(RowPacking packing, ImageDataKind kind, int32_t width, GuardedBytes::Guard guard,
                    const Fill& fill) {
    GuardedBytes pixels(BytesPerPixelOf(kind) * static_cast<size_t>(width), guard);
    GuardedBytes blob(BlobBytes(packing, width), guard);
    fill({blob.data(), blob.size()});
    const RowImage image(width, kind, pixels.data());
    std::vector<uint8_t> expected(pixels.size());
    const RowImage expectedImage(width, kind, expected.data());

    RowContext context = ContextOf(packing, width, blob.data());
    ScalarRowReader(packing)(expectedImage.get(), &context, 0);
    const Image::RowFunction reader = VectorRowReader(packing, *image.get());
    ASSERT_NE(reader, nullptr);
    reader(image.get(), &context, 0);
    ASSERT_EQ(std::vector<uint8_t>(pixels.begin(), pixels.end()), expected) << "width " << width;
}

using Compare = void (*)(RowPacking, ImageDataKind, int32_t, GuardedBytes::Guard, const Fill&);

void CompareAtEveryWidth(RowPacking packing, ImageDataKind kind, Compare compare, std::mt19937& random) {
    const std::vector<Fill> fills = Fills(random);
    for (int32_t width = 0; width <= widest; ++width) {
        compare(packing, kind, width, GuardedBytes::Guard::Behind, fills[0]);
        if (testing::Test::HasFatalFailure()) return;
        compare(packing, kind, width, GuardedBytes::Guard::Before, fills[0]);
        if (testing::Test::HasFatalFailure()) return;
    }
    for (const Fill& fill : fills) {
        compare(packing, kind, widest, GuardedBytes::Guard::Behind, fill);
        if (testing::Test::HasFatalFailure()) return;
    }
}

TEST(RowConvertersVector, WritesTheBytesOfTheScalarFormAndNoOthers) {
    std::mt19937 random = MakeRandom();
    ForEachTarget([&] {
        ForEachPacking([&](RowPacking packing, ImageDataKind kind) {
            if (IsWritable(packing)) CompareAtEveryWidth(packing, kind, CompareWriters, random);
        });
    });
}

TEST(RowConvertersVector, ReadsThePixelsOfTheScalarFormAndNoOthers) {
    std::mt19937 random = MakeRandom();
    ForEachTarget([&] {
        ForEachPacking([&](RowPacking packing, ImageDataKind kind) {
            CompareAtEveryWidth(packing, kind, CompareReaders, random);
        });
    });
}

/// Every value of a 16-bit word, in each place of a pixel.
Fill AllWords() {
    return [](std::span<uint8_t> bytes) {
        for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
            bytes[i] = static_cast<uint8_t>(i / 8);
            bytes[i + 1] = static_cast<uint8_t>(i / 8 >> 8);
        }
    };
}

TEST(RowConvertersVector, WritesEachOf65536ChannelValuesAsTheScalarFormDoes) {
    ForEachTarget([] {
        ForEachPacking([](RowPacking packing, ImageDataKind kind) {
            if (IsWritable(packing))
                CompareWriters(packing, kind, 65536, GuardedBytes::Guard::Behind, AllWords());
        });
    });
}

/// Floats on both sides of each place where the rounded channel, of `steps` to white, changes.
std::vector<float> FloatsAroundSteps(int steps) {
    std::vector<float> floats;
    for (int step = -2; step <= steps + 1; ++step) {
        const float edge = static_cast<float>((step + 0.5) / steps);
        for (const float value : {std::nextafter(edge, -1.0f), edge, std::nextafter(edge, 2.0f)})
            floats.push_back(value);
    }
    return floats;
}

std::vector<float> UnusualFloats() {
    using Limits = std::numeric_limits<float>;
    return {0.0f,
            -0.0f,
            0.5f,
            1.0f,
            -1.0f,
            2.0f,
            Limits::infinity(),
            -Limits::infinity(),
            Limits::quiet_NaN(),
            Limits::denorm_min(),
            -Limits::denorm_min(),
            Limits::max(),
            Limits::lowest(),
            Limits::min(),
            std::nextafter(1.0f, 0.0f),
            std::nextafter(1.0f, 2.0f),
            std::nextafter(0.5f, 0.0f)};
}

/// Fills an image of floats with the given ones, over and over.
Fill Repeat(const std::vector<float>& floats) {
    return [floats](std::span<uint8_t> bytes) {
        for (size_t i = 0; i < bytes.size() / 4; ++i)
            std::memcpy(&bytes[4 * i], &floats[i % floats.size()], 4);
    };
}

TEST(RowConvertersVector, RoundsFloatsAsTheScalarFormDoesOnBothSidesOfEachStep) {
    ForEachTarget([] {
        const auto compare = [](RowPacking packing, const std::vector<float>& floats) {
            const auto width = static_cast<int32_t>(floats.size() + 40);
            CompareWriters(packing, ImageData_RGBAFloat, width, GuardedBytes::Guard::Behind, Repeat(floats));
        };
        compare(RowPacking::B64a, FloatsAroundSteps(65535));
        compare(RowPacking::L48r, FloatsAroundSteps(65535));
        compare(RowPacking::R210, FloatsAroundSteps(876));
    });
}

TEST(RowConvertersVector, TakesUnusualFloatsAsTheScalarFormDoes) {
    ForEachTarget([] {
        ForEachPacking([](RowPacking packing, ImageDataKind kind) {
            if (!IsWritable(packing) || kind != ImageData_RGBAFloat) return;
            CompareWriters(packing, kind, 64, GuardedBytes::Guard::Behind, Repeat(UnusualFloats()));
        });
    });
}

TEST(RowConvertersVector, ReadsEachOf65536WordValuesAsTheScalarFormDoes) {
    ForEachTarget([] {
        ForEachPacking([](RowPacking packing, ImageDataKind kind) {
            CompareReaders(packing, kind, 65536, GuardedBytes::Guard::Behind, AllWords());
        });
    });
}

TEST(RowConvertersVector, ReadsEachOf1024TenBitValuesAsTheScalarFormDoes) {
    const Fill allTenBits = [](std::span<uint8_t> bytes) {
        for (uint32_t i = 0; i + 3 < bytes.size(); i += 4) {
            const uint32_t value = i / 4 % 1024;
            const uint32_t word = value << 20 | (1023 - value) << 10 | value;
            for (uint32_t j = 0; j < 4; ++j)
                bytes[i + j] = static_cast<uint8_t>(word >> (24 - 8 * j));
        }
    };
    ForEachTarget([&] {
        for (const ImageDataKind kind : kinds)
            if (HasForm(kind))
                CompareReaders(RowPacking::R210, kind, 1024, GuardedBytes::Guard::Behind, allTenBits);
    });
}

TEST(RowConvertersVector, EachInstructionSetHasConvertersOfItsOwn) {
    const ImagePtr image = MakeImage(1, 1);
    std::set<Image::RowFunction> readers;
    std::set<Image::RowFunction> writers;
    ForEachTarget([&] {
        readers.insert(VectorRowReader(RowPacking::B64a, *image));
        writers.insert(VectorRowWriter(RowPacking::B64a, *image));
    });
    EXPECT_EQ(readers.size(), VectorTargets().size());
    EXPECT_EQ(writers.size(), VectorTargets().size());
    EXPECT_FALSE(readers.contains(nullptr));
    EXPECT_FALSE(writers.contains(nullptr));
}

void ExpectNoVectorForm(const Image& image) {
    EXPECT_EQ(VectorRowReader(RowPacking::B64a, image), nullptr);
    EXPECT_EQ(VectorRowWriter(RowPacking::B64a, image), nullptr);
}

TEST(RowConvertersVector, LeavesImagesWithAccessorsOfACallerAlone) {
    const ImagePtr image = MakeImage(8, 1);
    image->GetPixel = [](Pixel& pixel, const uint8_t*, const uint8_t*, Image*) { pixel = {}; };
    ExpectNoVectorForm(*image);
}

TEST(RowConvertersVector, LeavesImagesWithoutMainDataAlone) {
    const ImagePtr image = MakeImage(8, 1);
    image->RowTable = nullptr;
    ExpectNoVectorForm(*image);
    image->RowTable = reinterpret_cast<uint8_t**>(UINTPTR_MAX);
    ExpectNoVectorForm(*image);
}

TEST(RowConvertersVector, LeavesImagesWithGapsBetweenPixelsAlone) {
    const ImagePtr image = MakeImage(8, 1);
    image->PixelStride = 16;
    ExpectNoVectorForm(*image);
}

TEST(RowConvertersVector, AnInstructionSetOfThisMachineTakesHalfPrecisionImages) {
    int count = 0;
    ForEachTarget([&] { count += HasForm(ImageData_RGBAHalf); });
    EXPECT_GE(count, 1);
}

TEST(RowConvertersVector, HasNoWriterForRp16) {
    EXPECT_EQ(VectorRowWriter(RowPacking::Rp16, *MakeImage(8, 1)), nullptr);
}

} // namespace
