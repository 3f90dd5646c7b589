#include "prores/encoder/PrxQuantMatrices.h"

#include <array>
#include <cassert>
#include <cstddef>

namespace {

constexpr uint8_t drop = prxDroppedWeight;

constexpr PrxQuantMatrix weights2To4 = {
    2, 2, 2, 2, 2, 2, 2, 2, //
    2, 2, 2, 2, 2, 2, 2, 2, //
    2, 2, 2, 2, 2, 2, 2, 2, //
    2, 2, 2, 2, 2, 2, 2, 3, //
    2, 2, 2, 2, 2, 2, 3, 3, //
    2, 2, 2, 2, 2, 3, 3, 3, //
    2, 2, 2, 2, 3, 3, 3, 4, //
    2, 2, 2, 2, 3, 3, 4, 4, //
};

constexpr PrxQuantMatrix weights4To7 = {
    4, 4, 4, 4, 4, 4, 4, 4, //
    4, 4, 4, 4, 4, 4, 4, 4, //
    4, 4, 4, 4, 4, 4, 4, 4, //
    4, 4, 4, 4, 4, 4, 4, 5, //
    4, 4, 4, 4, 4, 4, 5, 5, //
    4, 4, 4, 4, 4, 5, 5, 6, //
    4, 4, 4, 4, 5, 5, 6, 7, //
    4, 4, 4, 4, 5, 6, 7, 7, //
};

constexpr PrxQuantMatrix weights4To21 = {
    4, 4, 5, 5,  6,  7,  7,  9,  //
    4, 4, 5, 6,  7,  7,  9,  9,  //
    5, 5, 6, 7,  7,  9,  9,  10, //
    5, 5, 6, 7,  7,  9,  9,  10, //
    5, 6, 7, 7,  8,  9,  10, 12, //
    6, 7, 7, 8,  9,  10, 12, 15, //
    6, 7, 7, 9,  10, 11, 14, 17, //
    7, 7, 9, 10, 11, 14, 17, 21, //
};

constexpr PrxQuantMatrix weights4To41 = {
    4,  5,  6,  7,  9,  11, 13, 15, //
    5,  5,  7,  8,  11, 13, 15, 17, //
    6,  7,  9,  11, 13, 15, 15, 17, //
    7,  7,  9,  11, 13, 15, 17, 19, //
    7,  9,  11, 13, 14, 16, 19, 23, //
    9,  11, 13, 14, 16, 19, 23, 29, //
    9,  11, 13, 15, 17, 21, 28, 35, //
    11, 13, 16, 17, 21, 28, 35, 41, //
};

constexpr PrxQuantMatrix lumaWithDrops = {
    4,    7,    9,    11,   13,   14,   15,   drop, //
    7,    7,    11,   12,   14,   15,   drop, drop, //
    9,    11,   13,   14,   15,   drop, drop, drop, //
    11,   11,   13,   14,   drop, drop, drop, drop, //
    11,   13,   14,   drop, drop, drop, drop, drop, //
    13,   14,   drop, drop, drop, drop, drop, drop, //
    13,   drop, drop, drop, drop, drop, drop, drop, //
    drop, drop, drop, drop, drop, drop, drop, drop, //
};

constexpr PrxQuantMatrix chromaWithDrops = {
    4,    7,    9,    11,   13,   14,   drop, drop, //
    7,    7,    11,   12,   14,   drop, drop, drop, //
    9,    11,   13,   14,   drop, drop, drop, drop, //
    11,   11,   13,   14,   drop, drop, drop, drop, //
    11,   13,   14,   drop, drop, drop, drop, drop, //
    13,   14,   drop, drop, drop, drop, drop, drop, //
    13,   drop, drop, drop, drop, drop, drop, drop, //
    drop, drop, drop, drop, drop, drop, drop, drop, //
};

struct MatrixPair {
    const PrxQuantMatrix& luma;
    const PrxQuantMatrix& chroma;
};

constexpr std::array<MatrixPair, 5> pairs = {{
    {weights2To4, weights4To7},
    {weights4To7, weights4To7},
    {weights4To21, weights4To21},
    {weights4To41, weights4To41},
    {lumaWithDrops, chromaWithDrops},
}};

const MatrixPair& PairOf(int32_t matrixIndex) {
    assert(matrixIndex >= 0 && static_cast<size_t>(matrixIndex) < pairs.size());
    return pairs[static_cast<size_t>(matrixIndex)];
}

} // namespace

const PrxQuantMatrix& PrxLumaWeights(int32_t matrixIndex) { return PairOf(matrixIndex).luma; }

const PrxQuantMatrix& PrxChromaWeights(int32_t matrixIndex) { return PairOf(matrixIndex).chroma; }
