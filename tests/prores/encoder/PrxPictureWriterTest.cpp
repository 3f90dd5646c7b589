#include "prores/encoder/PrxPictureWriter.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace {

/// A slice of these bytes and of alpha, both borrowed.
PrxSlice SliceOf(const std::vector<uint8_t>& bytes, std::vector<uint8_t>* alpha) {
    PrxSlice slice{};
    slice.bytes = bytes.data();
    slice.outcome.sliceSize = static_cast<int32_t>(bytes.size());
    slice.alphaData = alpha->data();
    slice.alphaSize = static_cast<uint32_t>(alpha->size());
    return slice;
}

TEST(PictureWriter, WritesHeaderTableAndSlicesEachFollowedByItsAlpha) {
    const std::vector<uint8_t> first(0x102, 0x11), second = {0x22, 0x22};
    std::vector<uint8_t> alpha = {0xa1, 0xa2, 0xa3}, noAlpha;
    std::vector<PrxSlice> slices;
    slices.push_back(SliceOf(first, &alpha));
    slices.push_back(SliceOf(second, &noAlpha));
    std::vector<uint8_t> output(400, 0xcc);
    ASSERT_EQ(PrxWritePicture(slices, output), 8U + 4 + 0x105 + 2);
    const std::vector<uint8_t> head(output.begin(), output.begin() + 13);
    EXPECT_EQ(head, (std::vector<uint8_t>{0x40, 0, 0, 0x01, 0x13, 0, 2, 0x30, 0x01, 0x05, 0, 2, 0x11}));
    EXPECT_EQ(output[12 + 0x101], 0x11);
    EXPECT_EQ(output[12 + 0x102], 0xa1);
    EXPECT_EQ(output[12 + 0x104], 0xa3);
    EXPECT_EQ(output[12 + 0x105], 0x22);
    EXPECT_EQ(output[12 + 0x107], 0xcc);
}

TEST(PictureWriter, WritesAnEmptyPictureOf8Bytes) {
    std::vector<uint8_t> output(8, 0xcc);
    EXPECT_EQ(PrxWritePicture({}, output), 8U);
    EXPECT_EQ(output, (std::vector<uint8_t>{0x40, 0, 0, 0, 8, 0, 0, 0x30}));
}

TEST(PictureWriter, FillsItsOutputToTheLastByte) {
    const std::vector<uint8_t> bytes(100, 0x11);
    std::vector<uint8_t> noAlpha;
    std::vector<PrxSlice> slices;
    slices.push_back(SliceOf(bytes, &noAlpha));
    std::vector<uint8_t> output(8 + 2 + 100);
    EXPECT_EQ(PrxWritePicture(slices, output), output.size());
    EXPECT_EQ(output.back(), 0x11);
}

TEST(PictureWriter, LeavesOutASliceCountThatItsFieldCannotHold) {
    const std::vector<uint8_t> bytes(1, 0x11);
    std::vector<uint8_t> noAlpha;
    for (const size_t count : {65535U, 65536U}) {
        std::vector<PrxSlice> slices;
        for (size_t i = 0; i < count; ++i)
            slices.push_back(SliceOf(bytes, &noAlpha));
        std::vector<uint8_t> output(8 + 3 * count);
        EXPECT_EQ(PrxWritePicture(slices, output), output.size());
        EXPECT_EQ(output[5] << 8 | output[6], count == 65535 ? 65535 : 0);
    }
}

} // namespace
