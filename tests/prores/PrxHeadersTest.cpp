#include "prores/PrxHeaders.h"

#include "support/GuardedBytes.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;

PrxBufferPiece PieceOf(const Bytes& bytes) { return {bytes.data(), bytes.size(), nullptr}; }

constexpr PrxQuantMatrix DefaultMatrix() {
    PrxQuantMatrix matrix{};
    matrix.fill(4);
    return matrix;
}

/// 64 values that count up from `first`.
PrxQuantMatrix CountingMatrix(uint8_t first) {
    PrxQuantMatrix matrix;
    std::iota(matrix.begin(), matrix.end(), first);
    return matrix;
}

/// A frame header of 1998 by 1080 with a different value in each field; its matrices count up from 0 and 64.
Bytes StandardHeader(uint8_t matrixFlags, uint16_t headerSize = 148) {
    Bytes bytes = {0,    0,    0xff, 1,    'c', 'o', 'd', 'r',  0x07, 0xce,
                   0x04, 0x38, 0x84, 0x21, 9,   16,  6,   0xa2, 0xff, matrixFlags};
    bytes[0] = static_cast<uint8_t>(headerSize >> 8);
    bytes[1] = static_cast<uint8_t>(headerSize);
    bytes.resize(20 + 2 * 64);
    std::iota(bytes.begin() + 20, bytes.end(), uint8_t{0});
    return bytes;
}

/// A frame of the short form, 720 by 486, 4:2:2, with `interlaceByte`.
Bytes ShortHeader(uint8_t interlaceByte) {
    return {0,    0,    0x10,          0,    1, 18, 0x02, 0xd0, 0x01, 0xe6, 0xff, 0xff, 0xff, 0xff,
            0xff, 0xff, interlaceByte, 0x80, 1, 2,  6,    0xff, 0xff, 0xff};
}

PrxFrameHeader Parse(const Bytes& bytes) {
    PrxFrameHeader header;
    std::memset(&header, 0xee, sizeof(header));
    EXPECT_NE(PrxParseFrameHeader(PieceOf(bytes), &header), 0U);
    return header;
}

void ExpectEqual(const PrxFrameHeader& a, const PrxFrameHeader& b) {
    EXPECT_EQ(a.headerSize, b.headerSize);
    EXPECT_EQ(a.width, b.width);
    EXPECT_EQ(a.height, b.height);
    EXPECT_EQ(a.chromaFormat, b.chromaFormat);
    EXPECT_EQ(a.interlaceMode, b.interlaceMode);
    EXPECT_EQ(a.colorPrimaries, b.colorPrimaries);
    EXPECT_EQ(a.transferCharacteristic, b.transferCharacteristic);
    EXPECT_EQ(a.matrixCoefficients, b.matrixCoefficients);
    EXPECT_EQ(a.sourcePixelFormat, b.sourcePixelFormat);
    EXPECT_EQ(a.alphaType, b.alphaType);
    EXPECT_EQ(a.loadLumaMatrix, b.loadLumaMatrix);
    EXPECT_EQ(a.loadChromaMatrix, b.loadChromaMatrix);
    EXPECT_EQ(a.lumaMatrix, b.lumaMatrix);
    EXPECT_EQ(a.chromaMatrix, b.chromaMatrix);
}

} // namespace

TEST(PrxFrameHeader, StandsBehindSizeAndTagInTheStandardForm) {
    EXPECT_EQ(PrxFrameHeaderOffset(PieceOf({0, 0, 1, 0, 'i', 'c', 'p', 'f', 0, 148})), 8U);
}

TEST(PrxFrameHeader, TheTagOfTheStandardFormIsNotTested) {
    EXPECT_EQ(PrxFrameHeaderOffset(PieceOf({0, 0, 1, 0, 'x', 'x', 'x', 'x', 0, 148})), 8U);
    EXPECT_EQ(PrxFrameHeaderOffset(PieceOf({0, 0, 1, 0, 1, 17})), 8U);
    EXPECT_EQ(PrxFrameHeaderOffset(PieceOf({0, 0, 1, 0, 2, 18})), 8U);
    EXPECT_EQ(PrxFrameHeaderOffset(PrxBufferPiece()), 8U);
}

TEST(PrxFrameHeader, IsTheWholeStartOfAShortFrame) {
    EXPECT_EQ(PrxFrameHeaderOffset(PieceOf(ShortHeader(0))), 0U);
}

TEST(PrxFrameHeader, StandardLayoutGivesEachFieldItsOwnBits) {
    const PrxFrameHeader header = Parse(StandardHeader(3));
    EXPECT_EQ(header.headerSize, 148U);
    EXPECT_EQ(header.width, 1998U);
    EXPECT_EQ(header.height, 1080U);
    EXPECT_EQ(header.chromaFormat, 2);
    EXPECT_EQ(header.interlaceMode, 1);
    EXPECT_EQ(header.colorPrimaries, 9);
    EXPECT_EQ(header.transferCharacteristic, 16);
    EXPECT_EQ(header.matrixCoefficients, 6);
    EXPECT_EQ(header.sourcePixelFormat, 10);
    EXPECT_EQ(header.alphaType, 2);
}

TEST(PrxFrameHeader, ReservedValuesOfFieldsArePassedOn) {
    Bytes bytes = StandardHeader(0);
    bytes[12] = 0x0c;
    bytes[17] = 0x0f;
    const PrxFrameHeader header = Parse(bytes);
    EXPECT_EQ(header.chromaFormat, 0);
    EXPECT_EQ(header.interlaceMode, 3);
    EXPECT_EQ(header.sourcePixelFormat, 0);
    EXPECT_EQ(header.alphaType, 15);
}

TEST(PrxFrameHeader, BitsBesideTheFieldsAreNotRead) {
    Bytes bytes = StandardHeader(3);
    bytes[2] ^= 0xff;
    bytes[12] ^= 0x33;
    bytes[13] ^= 0xff;
    bytes[18] ^= 0xff;
    bytes[19] ^= 0xfc;
    ExpectEqual(Parse(bytes), Parse(StandardHeader(3)));
}

TEST(PrxFrameHeader, LoadsBothMatricesOneBehindTheOther) {
    const PrxFrameHeader header = Parse(StandardHeader(3));
    EXPECT_TRUE(header.loadLumaMatrix);
    EXPECT_TRUE(header.loadChromaMatrix);
    EXPECT_EQ(header.lumaMatrix, CountingMatrix(0));
    EXPECT_EQ(header.chromaMatrix, CountingMatrix(64));
}

TEST(PrxFrameHeader, ALumaMatrixAloneIsThatOfChromaToo) {
    const PrxFrameHeader header = Parse(StandardHeader(2));
    EXPECT_TRUE(header.loadLumaMatrix);
    EXPECT_FALSE(header.loadChromaMatrix);
    EXPECT_EQ(header.lumaMatrix, CountingMatrix(0));
    EXPECT_EQ(header.chromaMatrix, CountingMatrix(0));
}

TEST(PrxFrameHeader, AChromaMatrixAloneStandsAtOffset20AndLumaHasTheDefault) {
    const PrxFrameHeader header = Parse(StandardHeader(1));
    EXPECT_FALSE(header.loadLumaMatrix);
    EXPECT_TRUE(header.loadChromaMatrix);
    EXPECT_EQ(header.lumaMatrix, DefaultMatrix());
    EXPECT_EQ(header.chromaMatrix, CountingMatrix(0));
}

TEST(PrxFrameHeader, ASizeOf148WithoutMatricesSkipsTheirBytes) {
    const PrxFrameHeader header = Parse(StandardHeader(0xfc));
    EXPECT_EQ(header.headerSize, 148U);
    EXPECT_FALSE(header.loadLumaMatrix);
    EXPECT_FALSE(header.loadChromaMatrix);
    EXPECT_EQ(header.lumaMatrix, DefaultMatrix());
    EXPECT_EQ(header.chromaMatrix, DefaultMatrix());
}

TEST(PrxFrameHeader, ItsSizeCountsAlsoWhereTheMatricesReachPastIt) {
    const PrxFrameHeader header = Parse(StandardHeader(3, 20));
    EXPECT_EQ(header.headerSize, 20U);
    EXPECT_EQ(header.chromaMatrix, CountingMatrix(64));
    EXPECT_EQ(Parse(StandardHeader(3, 65535)).headerSize, 65535U);
}

TEST(PrxFrameHeader, ASizeBelow20IsRefused) {
    PrxFrameHeader header;
    EXPECT_EQ(PrxParseFrameHeader(PieceOf(StandardHeader(0, 19)), &header), 0U);
    EXPECT_EQ(PrxParseFrameHeader(PieceOf(StandardHeader(0, 20)), &header), 20U);
}

TEST(PrxFrameHeader, AVersionAbove1IsRefused) {
    Bytes bytes = StandardHeader(0);
    PrxFrameHeader header;
    for (const uint8_t version : {0, 1}) {
        bytes[3] = version;
        EXPECT_EQ(PrxParseFrameHeader(PieceOf(bytes), &header), 148U);
    }
    for (const uint8_t version : {2, 255}) {
        bytes[3] = version;
        EXPECT_EQ(PrxParseFrameHeader(PieceOf(bytes), &header), 0U);
    }
}

TEST(PrxFrameHeader, ARefusalLeavesTheResultAsItWas) {
    const PrxFrameHeader before = Parse(StandardHeader(3));
    PrxFrameHeader header = before;
    EXPECT_EQ(PrxParseFrameHeader(PieceOf(Bytes(148, 0)), &header), 0U);
    ExpectEqual(header, before);
}

TEST(PrxFrameHeader, NoBytesAreRefused) {
    PrxFrameHeader header;
    EXPECT_EQ(PrxParseFrameHeader(PrxBufferPiece(), &header), 0U);
}

TEST(PrxFrameHeader, AShortLayoutHasAHeaderOf24Bytes) {
    const PrxFrameHeader header = Parse(ShortHeader(0));
    EXPECT_EQ(header.headerSize, 24U);
    EXPECT_EQ(header.width, 720U);
    EXPECT_EQ(header.height, 486U);
    EXPECT_EQ(header.chromaFormat, 2);
    EXPECT_EQ(header.colorPrimaries, 1);
    EXPECT_EQ(header.transferCharacteristic, 2);
    EXPECT_EQ(header.matrixCoefficients, 6);
}

TEST(PrxFrameHeader, AShortLayoutHasNeitherAlphaNorMatrices) {
    const PrxFrameHeader header = Parse(ShortHeader(0));
    EXPECT_EQ(header.sourcePixelFormat, 0);
    EXPECT_EQ(header.alphaType, 0);
    EXPECT_FALSE(header.loadLumaMatrix);
    EXPECT_FALSE(header.loadChromaMatrix);
    EXPECT_EQ(header.lumaMatrix, DefaultMatrix());
    EXPECT_EQ(header.chromaMatrix, DefaultMatrix());
}

TEST(PrxFrameHeader, BitsBesideTheFieldsOfAShortLayoutAreNotRead) {
    Bytes bytes = ShortHeader(78);
    for (const size_t offset : {0, 1, 2, 3, 10, 11, 12, 13, 14, 15, 21, 22, 23})
        bytes[offset] ^= 0xff;
    bytes[17] ^= 0x3f;
    ExpectEqual(Parse(bytes), Parse(ShortHeader(78)));
}

TEST(PrxFrameHeader, AShortLayoutTellsFieldOrderByOneByte) {
    EXPECT_EQ(Parse(ShortHeader(0)).interlaceMode, 0);
    EXPECT_EQ(Parse(ShortHeader(63)).interlaceMode, 0);
    EXPECT_EQ(Parse(ShortHeader(14)).interlaceMode, 0);
    EXPECT_EQ(Parse(ShortHeader(64)).interlaceMode, 1);
    EXPECT_EQ(Parse(ShortHeader(64 + 14)).interlaceMode, 2);
    EXPECT_EQ(Parse(ShortHeader(255)).interlaceMode, 1);
    EXPECT_EQ(Parse(ShortHeader(0xfe)).interlaceMode, 2);
}

TEST(PrxFrameHeader, AStandardFrameWhoseEncoderNameIsTheShortMarkHasTheShortLayout) {
    Bytes bytes = StandardHeader(3);
    bytes[4] = 1;
    bytes[5] = 18;
    const PrxFrameHeader header = Parse(bytes);
    EXPECT_EQ(header.headerSize, 24U);
    EXPECT_EQ(header.height, 1998U); // bytes 8 and 9
    EXPECT_FALSE(header.loadLumaMatrix);
}

TEST(PrxFrameHeader, BytesBehindTheEndAreZeroAndNoneIsRead) {
    const Bytes whole = StandardHeader(3);
    for (size_t size = 0; size <= whole.size(); ++size) {
        const GuardedBytes cut(size, GuardedBytes::Guard::Behind);
        std::copy_n(whole.begin(), size, cut.begin());
        Bytes padded(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size));
        padded.resize(whole.size(), 0);
        PrxFrameHeader fromCut{};
        PrxFrameHeader fromPadded{};
        EXPECT_EQ(PrxParseFrameHeader({cut.data(), size, nullptr}, &fromCut),
                  PrxParseFrameHeader(PieceOf(padded), &fromPadded));
        ExpectEqual(fromCut, fromPadded);
    }
}

TEST(PrxFrameHeader, ReadsTheSameFromTwoPiecesAsFromOne) {
    for (const Bytes& bytes : {StandardHeader(3), ShortHeader(78)}) {
        const PrxFrameHeader whole = Parse(bytes);
        for (size_t cut = 0; cut <= bytes.size(); ++cut) {
            const PrxBufferPiece second = {bytes.data() + cut, bytes.size() - cut, nullptr};
            const PrxBufferPiece first = {bytes.data(), cut, &second};
            PrxFrameHeader header{};
            EXPECT_EQ(PrxParseFrameHeader(first, &header), whole.headerSize);
            ExpectEqual(header, whole);
        }
    }
}

TEST(PrxFrameHeader, RandomBytesAreReadOrRefusedByTheirSizeAndVersionAlone) {
    std::mt19937 random = MakeRandom();
    for (int round = 0; round < 20000; ++round) {
        const GuardedBytes bytes(random() % 160, GuardedBytes::Guard::Behind);
        for (uint8_t& byte : bytes)
            byte = static_cast<uint8_t>(random());
        if (bytes.size() > 3) bytes.data()[3] &= 3;
        if (bytes.size() > 5 && round % 4 == 0) {
            bytes.data()[4] = 1;
            bytes.data()[5] = 18;
        }
        const PrxBufferPiece piece = {bytes.data(), bytes.size(), nullptr};
        const bool isShort = PrxByteAt(piece, 4) == 1 && PrxByteAt(piece, 5) == 18;
        const uint32_t size = PrxRead16At(piece, 0);
        const uint32_t standard = size >= 20 && PrxByteAt(piece, 3) <= 1 ? size : 0;
        PrxFrameHeader header;
        EXPECT_EQ(PrxParseFrameHeader(piece, &header), isShort ? 24 : standard);
    }
}
