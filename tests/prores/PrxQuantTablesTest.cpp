#include "prores/PrxInverseTransform.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

PrxQuantMatrix Ascending(uint8_t first) {
    PrxQuantMatrix matrix;
    for (size_t i = 0; i < matrix.size(); ++i)
        matrix[i] = static_cast<uint8_t>(first + i);
    return matrix;
}

PrxQuantMatrix Filled(uint8_t value) {
    PrxQuantMatrix matrix;
    matrix.fill(value);
    return matrix;
}

TEST(PrxQuantTables, EntriesAreMatrixValuesTimesTheQuantiser) {
    PrxSliceState state;
    PrxUpdateQuantTables(state, Ascending(2), Ascending(66), 7);
    for (int32_t i = 0; i < 64; ++i) {
        EXPECT_EQ(state.lumaTable[i], (2 + i) * 7);
        EXPECT_EQ(state.chromaTable[i], (66 + i) * 7);
    }
    EXPECT_EQ(state.cachedQuantiser, 7);
}

TEST(PrxQuantTables, LargeProductsKeepTheirLow16Bits) {
    PrxSliceState state;
    PrxUpdateQuantTables(state, Filled(255), Filled(128), 512);
    EXPECT_TRUE(
        std::ranges::all_of(state.lumaTable, [](int16_t entry) { return entry == 255 * 512 - 0x20000; }));
    EXPECT_TRUE(std::ranges::all_of(state.chromaTable, [](int16_t entry) { return entry == 0; }));
}

TEST(PrxQuantTables, ProductsAbove32767AreNegative) {
    PrxSliceState state;
    PrxUpdateQuantTables(state, Filled(100), Filled(64), 512);
    EXPECT_EQ(state.lumaTable[0], 51200 - 0x10000);
    EXPECT_EQ(state.chromaTable[63], -32768);
}

TEST(PrxQuantTables, TablesOfTheCachedQuantiserAreKept) {
    PrxSliceState state;
    PrxUpdateQuantTables(state, Filled(4), Filled(5), 3);
    PrxUpdateQuantTables(state, Filled(40), Filled(50), 3);
    EXPECT_EQ(state.lumaTable[0], 12);
    EXPECT_EQ(state.chromaTable[0], 15);
}

TEST(PrxQuantTables, AnotherQuantiserReplacesThem) {
    PrxSliceState state;
    PrxUpdateQuantTables(state, Filled(4), Filled(5), 3);
    PrxUpdateQuantTables(state, Filled(4), Filled(5), 9);
    EXPECT_EQ(state.lumaTable[63], 36);
    EXPECT_EQ(state.chromaTable[63], 45);
    EXPECT_EQ(state.cachedQuantiser, 9);
}

TEST(PrxQuantTables, AResetOfTheCachedQuantiserTakesOtherMatrices) {
    PrxSliceState state;
    PrxUpdateQuantTables(state, Filled(4), Filled(5), 3);
    state.cachedQuantiser = 0;
    PrxUpdateQuantTables(state, Filled(40), Filled(50), 3);
    EXPECT_EQ(state.lumaTable[0], 120);
    EXPECT_EQ(state.chromaTable[0], 150);
}

} // namespace
