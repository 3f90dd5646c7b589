// The vector form of each row converter finds rows where the scalar form does: at odd addresses, with padding
// between them, and in planes.

#include "RowVectorTestSupport.h"

namespace {

/// `size` random bytes behind one that is 0, so that the first of them stands at an odd address.
std::vector<uint8_t> OddBytes(size_t size, std::mt19937& random) {
    std::vector<uint8_t> bytes(size + 1);
    std::generate(bytes.begin() + 1, bytes.end(), [&] { return static_cast<uint8_t>(random()); });
    return bytes;
}

TEST(RowConvertersVector, ReadsRowsOfAnyAlignment) {
    std::mt19937 random = MakeRandom();
    ForEachTarget([&] {
        ForEachPacking([&](RowPacking packing, ImageDataKind kind) {
            constexpr int32_t width = 77;
            std::vector<uint8_t> blob = OddBytes(BlobBytes(packing, width), random);
            std::vector<uint8_t> pixels(BytesPerPixelOf(kind) * width + 1);
            std::vector<uint8_t> expected(pixels.size());
            const RowImage image(width, kind, pixels.data() + 1);
            const RowImage expectedImage(width, kind, expected.data() + 1);
            RowContext context = ContextOf(packing, width, blob.data() + 1);
            VectorRowReader(packing, *image.get())(image.get(), &context, 0);
            ScalarRowReader(packing)(expectedImage.get(), &context, 0);
            ASSERT_EQ(pixels, expected);
        });
    });
}

TEST(RowConvertersVector, WritesRowsOfAnyAlignment) {
    std::mt19937 random = MakeRandom();
    ForEachTarget([&] {
        ForEachPacking([&](RowPacking packing, ImageDataKind kind) {
            if (!IsWritable(packing)) return;
            constexpr int32_t width = 77;
            std::vector<uint8_t> pixels = OddBytes(BytesPerPixelOf(kind) * width, random);
            std::vector<uint8_t> blob(BlobBytes(packing, width) + 1);
            std::vector<uint8_t> expected(blob.size());
            const RowImage image(width, kind, pixels.data() + 1);
            RowContext vector = ContextOf(packing, width, blob.data() + 1);
            RowContext scalar = ContextOf(packing, width, expected.data() + 1);
            VectorRowWriter(packing, *image.get())(image.get(), &vector, 0);
            ScalarRowWriter(packing)(image.get(), &scalar, 0);
            ASSERT_EQ(blob, expected);
        });
    });
}

constexpr int32_t paddedWidth = 41;
constexpr int32_t paddedHeight = 3;
constexpr int32_t paddedRowBytes = 8 * paddedWidth + 5;

size_t PaddedBlobBytes(RowPacking packing) {
    return PlanesOf(packing) * size_t{paddedHeight} * size_t{paddedRowBytes};
}

void ConvertPaddedRows(Image::RowFunction convert, Image* image, std::vector<uint8_t>& blob) {
    RowContext context = {rowMarkerWithAlpha, paddedRowBytes, blob.data()};
    for (int row = 0; row < paddedHeight; ++row)
        convert(image, &context, row);
}

TEST(RowConvertersVector, ReadsPaddedRowsAndPlanesWhereTheScalarFormFindsThem) {
    std::mt19937 random = MakeRandom();
    ForEachTarget([&] {
        ForEachPacking([&](RowPacking packing, ImageDataKind kind) {
            std::vector<uint8_t> blob(PaddedBlobBytes(packing));
            Fills(random)[0](blob);
            std::vector<uint8_t> pixels(size_t{paddedHeight} * paddedWidth * BytesPerPixelOf(kind));
            std::vector<uint8_t> expected(pixels.size());
            const RowImage image(paddedWidth, kind, pixels.data(), paddedHeight);
            const RowImage expectedImage(paddedWidth, kind, expected.data(), paddedHeight);
            ConvertPaddedRows(VectorRowReader(packing, *image.get()), image.get(), blob);
            ConvertPaddedRows(ScalarRowReader(packing), expectedImage.get(), blob);
            ASSERT_EQ(pixels, expected);
        });
    });
}

TEST(RowConvertersVector, WritesPaddedRowsWhereTheScalarFormDoesAndLeavesThePadding) {
    std::mt19937 random = MakeRandom();
    ForEachTarget([&] {
        ForEachPacking([&](RowPacking packing, ImageDataKind kind) {
            if (!IsWritable(packing)) return;
            std::vector<uint8_t> pixels(size_t{paddedHeight} * paddedWidth * BytesPerPixelOf(kind));
            Fills(random)[0](pixels);
            const RowImage image(paddedWidth, kind, pixels.data(), paddedHeight);
            std::vector<uint8_t> blob(PaddedBlobBytes(packing), 0xA5);
            std::vector<uint8_t> expected = blob;
            ConvertPaddedRows(VectorRowWriter(packing, *image.get()), image.get(), blob);
            ConvertPaddedRows(ScalarRowWriter(packing), image.get(), expected);
            ASSERT_EQ(blob, expected);
        });
    });
}

} // namespace
