#include "prores/encoder/PrxQuantMatrices.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <string>

namespace {

// The matrices of the first four pairs, finest first, and the two of the last.
const char* const matrix0 = "2 2 2 2 2 2 2 2 "
                            "2 2 2 2 2 2 2 2 "
                            "2 2 2 2 2 2 2 2 "
                            "2 2 2 2 2 2 2 3 "
                            "2 2 2 2 2 2 3 3 "
                            "2 2 2 2 2 3 3 3 "
                            "2 2 2 2 3 3 3 4 "
                            "2 2 2 2 3 3 4 4 ";
const char* const matrix1 = "4 4 4 4 4 4 4 4 "
                            "4 4 4 4 4 4 4 4 "
                            "4 4 4 4 4 4 4 4 "
                            "4 4 4 4 4 4 4 5 "
                            "4 4 4 4 4 4 5 5 "
                            "4 4 4 4 4 5 5 6 "
                            "4 4 4 4 5 5 6 7 "
                            "4 4 4 4 5 6 7 7 ";
const char* const matrix2 = "4 4 5 5 6 7 7 9 "
                            "4 4 5 6 7 7 9 9 "
                            "5 5 6 7 7 9 9 10 "
                            "5 5 6 7 7 9 9 10 "
                            "5 6 7 7 8 9 10 12 "
                            "6 7 7 8 9 10 12 15 "
                            "6 7 7 9 10 11 14 17 "
                            "7 7 9 10 11 14 17 21 ";
const char* const matrix3 = "4 5 6 7 9 11 13 15 "
                            "5 5 7 8 11 13 15 17 "
                            "6 7 9 11 13 15 15 17 "
                            "7 7 9 11 13 15 17 19 "
                            "7 9 11 13 14 16 19 23 "
                            "9 11 13 14 16 19 23 29 "
                            "9 11 13 15 17 21 28 35 "
                            "11 13 16 17 21 28 35 41 ";
const char* const lastLuma = "4 7 9 11 13 14 15 255 "
                             "7 7 11 12 14 15 255 255 "
                             "9 11 13 14 15 255 255 255 "
                             "11 11 13 14 255 255 255 255 "
                             "11 13 14 255 255 255 255 255 "
                             "13 14 255 255 255 255 255 255 "
                             "13 255 255 255 255 255 255 255 "
                             "255 255 255 255 255 255 255 255 ";
const char* const lastChroma = "4 7 9 11 13 14 255 255 "
                               "7 7 11 12 14 255 255 255 "
                               "9 11 13 14 255 255 255 255 "
                               "11 11 13 14 255 255 255 255 "
                               "11 13 14 255 255 255 255 255 "
                               "13 14 255 255 255 255 255 255 "
                               "13 255 255 255 255 255 255 255 "
                               "255 255 255 255 255 255 255 255 ";

PrxQuantMatrix Parse(const std::string& text) {
    std::istringstream stream(text);
    PrxQuantMatrix matrix = {};
    for (uint8_t& weight : matrix) {
        int32_t value = 0;
        stream >> value;
        weight = static_cast<uint8_t>(value);
    }
    return matrix;
}

TEST(PrxQuantMatrices, LumaWeightsAreThoseOfTheDesign) {
    const char* const expected[] = {matrix0, matrix1, matrix2, matrix3, lastLuma};
    for (int32_t index = 0; index < 5; ++index)
        EXPECT_EQ(PrxLumaWeights(index), Parse(expected[index])) << "index " << index;
}

TEST(PrxQuantMatrices, ChromaWeightsAreThoseOfTheDesign) {
    const char* const expected[] = {matrix1, matrix1, matrix2, matrix3, lastChroma};
    for (int32_t index = 0; index < 5; ++index)
        EXPECT_EQ(PrxChromaWeights(index), Parse(expected[index])) << "index " << index;
}

TEST(PrxQuantMatrices, OnlyTheLastPairDropsAnything) {
    const auto drops = [](const PrxQuantMatrix& matrix) { return std::ranges::count(matrix, 255); };
    for (int32_t index = 0; index < 4; ++index)
        EXPECT_EQ(drops(PrxLumaWeights(index)) + drops(PrxChromaWeights(index)), 0) << "index " << index;
    EXPECT_EQ(drops(PrxLumaWeights(4)), 64 - 28);
    EXPECT_EQ(drops(PrxChromaWeights(4)), 64 - 25);
}

TEST(PrxQuantMatrices, NoWeightIsBelow2SoThatReciprocalsFit) {
    for (int32_t index = 0; index < 5; ++index) {
        EXPECT_GE(std::ranges::min(PrxLumaWeights(index)), 2) << "index " << index;
        EXPECT_GE(std::ranges::min(PrxChromaWeights(index)), 2) << "index " << index;
    }
}

} // namespace
