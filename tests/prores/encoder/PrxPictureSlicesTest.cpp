#include "prores/encoder/PrxPictureSlices.h"

#include "support/HeapSpy.h"

#include <gtest/gtest.h>

#include <new>
#include <vector>

namespace {

std::vector<uint32_t> WidthsOf(std::span<const PrxSlice> slices) {
    std::vector<uint32_t> widths;
    for (const PrxSlice& slice : slices)
        widths.push_back(slice.MbCount());
    return widths;
}

TEST(PictureSlices, CutARowIntoEightsAndThenSmallerPowersOf2) {
    PrxPictureSlices slices;
    slices.LayOut(23, 2, 8, 0);
    EXPECT_EQ(WidthsOf(slices.Row(1)), (std::vector<uint32_t>{8, 8, 4, 2, 1}));
    slices.LayOut(8, 1, 8, 0);
    EXPECT_EQ(WidthsOf(slices.All()), (std::vector<uint32_t>{8}));
    slices.LayOut(1, 1, 8, 0);
    EXPECT_EQ(WidthsOf(slices.All()), (std::vector<uint32_t>{1}));
}

TEST(PictureSlices, StandRowByRow) {
    PrxPictureSlices slices;
    slices.LayOut(11, 3, 8, 0);
    ASSERT_EQ(slices.All().size(), 9U);
    for (uint32_t row = 0; row < 3; ++row) {
        EXPECT_EQ(slices.Row(row).data(), slices.All().data() + 3 * row);
        EXPECT_EQ(slices.Row(row)[0].mbX, 0U);
        EXPECT_EQ(slices.Row(row)[1].mbX, 8U);
        EXPECT_EQ(slices.Row(row)[2].mbX, 10U);
    }
}

TEST(PictureSlices, HaveTheirCoefficientsOneBehindTheOther) {
    for (const uint32_t blocksPerMb : {8U, 12U}) {
        PrxPictureSlices slices;
        slices.LayOut(11, 2, blocksPerMb, 0);
        int16_t* next = slices.All()[0].coefficients;
        EXPECT_EQ(reinterpret_cast<uintptr_t>(next) % 64, 0U);
        for (const PrxSlice& slice : slices.All()) {
            EXPECT_EQ(slice.coefficients, next);
            next += size_t{64} * blocksPerMb * slice.MbCount();
            next[-1] = 1;
        }
    }
}

TEST(PictureSlices, HaveTheirAlphaOneBehindTheOther) {
    PrxPictureSlices slices;
    slices.LayOut(11, 2, 12, 768);
    uint8_t* next = slices.All()[0].alphaData;
    for (const PrxSlice& slice : slices.All()) {
        EXPECT_EQ(slice.alphaData, next);
        EXPECT_EQ(slice.alphaCapacity, 768 * slice.MbCount());
        next += slice.alphaCapacity;
        next[-1] = 1;
    }
}

TEST(PictureSlices, HaveNoAlphaInAPictureWithout) {
    PrxPictureSlices slices;
    slices.LayOut(11, 2, 12, 768);
    slices.LayOut(11, 2, 12, 0);
    for (const PrxSlice& slice : slices.All()) {
        EXPECT_EQ(slice.alphaData, nullptr);
        EXPECT_EQ(slice.alphaCapacity, 0U);
    }
}

TEST(PictureSlices, KeepTheirMemoryForSmallerPictures) {
    PrxPictureSlices slices;
    slices.LayOut(40, 20, 12, 768);
    const PrxSlice* first = slices.All().data();
    const int16_t* coefficients = first->coefficients;
    slices.LayOut(8, 2, 8, 0);
    EXPECT_EQ(slices.All().size(), 2U);
    slices.LayOut(40, 20, 12, 768);
    EXPECT_EQ(slices.All().data(), first);
    EXPECT_EQ(first->coefficients, coefficients);
}

TEST(PictureSlices, AreNoneInAPictureWithoutRows) {
    PrxPictureSlices slices;
    slices.LayOut(8, 2, 8, 512);
    slices.LayOut(8, 0, 8, 512);
    EXPECT_TRUE(slices.All().empty());
}

TEST(PictureSlices, AreNoneAfterAFailureAndAllOfThemAfterTheNextSuccess) {
    PrxPictureSlices slices;
    slices.LayOut(11, 2, 12, 0);
    {
        const NoMemory noMemory(Allocation::Aligned, 1024);
        EXPECT_THROW(slices.LayOut(11, 2, 12, 768), std::bad_alloc);
        EXPECT_TRUE(slices.All().empty());
        EXPECT_THROW(slices.LayOut(40, 20, 12, 0), std::bad_alloc);
        EXPECT_TRUE(slices.All().empty());
    }
    slices.LayOut(11, 2, 12, 768);
    EXPECT_EQ(WidthsOf(slices.All()), (std::vector<uint32_t>{8, 2, 1, 8, 2, 1}));
    EXPECT_NE(slices.All()[5].alphaData, nullptr);
}

} // namespace
