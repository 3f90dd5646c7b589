#include "prores/PrxSliceHeader.h"

#include "prores/StreamBits.h"

#include <gtest/gtest.h>

#include <optional>

namespace {

PrxBufferPiece PieceOf(const stream::Bytes& bytes) { return {bytes.data(), bytes.size(), nullptr}; }

struct Given {
    uint8_t firstByte = 6 << 3;
    uint8_t quantIndex = 1;
    uint16_t lumaSize = 0;
    uint16_t cbSize = 0;
    uint16_t crSize = 0;
};

stream::Bytes HeaderBytes(const Given& given) {
    stream::Bytes bytes = {given.firstByte, given.quantIndex};
    stream::Append16(bytes, given.lumaSize);
    stream::Append16(bytes, given.cbSize);
    stream::Append16(bytes, given.crSize);
    return bytes;
}

std::optional<PrxSliceHeader> Read(const Given& given, uint32_t sliceSize, bool streamHasAlpha = false) {
    const stream::Bytes bytes = HeaderBytes(given);
    PrxSliceHeader header = {};
    const uint32_t size = PrxReadSliceHeader(PieceOf(bytes), sliceSize, streamHasAlpha, &header);
    if (size == 0) return std::nullopt;
    EXPECT_EQ(header.headerSize, size);
    return header;
}

} // namespace

TEST(PrxSliceHeader, WithoutAlphaCrTakesWhatRemains) {
    const auto header = Read({.lumaSize = 100, .cbSize = 50, .crSize = 0xffff}, 186);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->headerSize, 6u);
    EXPECT_EQ(header->lumaSize, 100u);
    EXPECT_EQ(header->cbSize, 50u);
    EXPECT_EQ(header->crSize, 30u);
    EXPECT_EQ(header->alphaSize, 0u);
}

TEST(PrxSliceHeader, WithAlphaTheAlphaTakesWhatRemains) {
    const auto header = Read({.firstByte = 8 << 3, .lumaSize = 100, .cbSize = 50, .crSize = 40}, 208, true);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->headerSize, 8u);
    EXPECT_EQ(header->crSize, 40u);
    EXPECT_EQ(header->alphaSize, 10u);
}

TEST(PrxSliceHeader, TheByte7FMeans8AndTheByte78Means15) {
    EXPECT_EQ(Read({.firstByte = 0x7f}, 100)->headerSize, 8u);
    EXPECT_EQ(Read({.firstByte = 0x78}, 100)->headerSize, 15u);
    EXPECT_EQ(Read({.firstByte = 0x7e}, 100)->headerSize, 15u);
    EXPECT_EQ(Read({.firstByte = 0xff}, 100)->headerSize, 31u);
}

TEST(PrxSliceHeader, AHeaderThatFillsTheSliceIsRefused) {
    EXPECT_FALSE(Read({}, 6));
    EXPECT_FALSE(Read({}, 5));
    EXPECT_TRUE(Read({}, 7));
}

TEST(PrxSliceHeader, AnEmptySliceIsRefused) {
    PrxSliceHeader header = {};
    EXPECT_EQ(PrxReadSliceHeader({}, 0, false, &header), 0u);
    EXPECT_FALSE(Read({}, 0));
}

TEST(PrxSliceHeader, AHeaderSizeOf0IsRefused) { EXPECT_FALSE(Read({.firstByte = 7}, 100)); }

TEST(PrxSliceHeader, AHeaderSizeBelow6IsTakenAsItStands) {
    const auto header = Read({.firstByte = 1 << 3, .lumaSize = 3, .cbSize = 4}, 10);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->headerSize, 1u);
    EXPECT_EQ(header->crSize, 2u);
}

TEST(PrxSliceHeader, SizesBeyondTheSliceAreRefused) {
    EXPECT_TRUE(Read({.lumaSize = 60, .cbSize = 34}, 100));
    EXPECT_FALSE(Read({.lumaSize = 60, .cbSize = 35}, 100));
    EXPECT_TRUE(Read({.firstByte = 8 << 3, .lumaSize = 50, .cbSize = 30, .crSize = 12}, 100, true));
    EXPECT_FALSE(Read({.firstByte = 8 << 3, .lumaSize = 50, .cbSize = 30, .crSize = 13}, 100, true));
    EXPECT_FALSE(Read({.lumaSize = 0xffff, .cbSize = 0xffff, .crSize = 0xffff}, 0xffff, true));
}

TEST(PrxSliceHeader, ARefusedSliceLeavesTheHeaderAlone) {
    PrxSliceHeader header = {
        .headerSize = 1, .quantiser = 2, .lumaSize = 3, .cbSize = 4, .crSize = 5, .alphaSize = 6};
    const stream::Bytes bytes = HeaderBytes({.lumaSize = 1000});
    EXPECT_EQ(PrxReadSliceHeader(PieceOf(bytes), 100, false, &header), 0u);
    EXPECT_EQ(header.lumaSize, 3u);
    EXPECT_EQ(header.alphaSize, 6u);
}

TEST(PrxSliceHeader, FieldsBehindAShortSliceAreReadFromTheInput) {
    // A slice of two bytes: the sizes are those that the bytes behind it give.
    EXPECT_TRUE(Read({.firstByte = 1 << 3}, 2));
    EXPECT_FALSE(Read({.firstByte = 1 << 3, .lumaSize = 2}, 2));
}

TEST(PrxSliceHeader, FieldsMayLieInSeveralPieces) {
    const stream::Bytes bytes = HeaderBytes({.quantIndex = 9, .lumaSize = 0x102, .cbSize = 0x304});
    const PrxBufferPiece rest = {bytes.data() + 3, bytes.size() - 3, nullptr};
    const PrxBufferPiece start = {bytes.data(), 3, &rest};
    PrxSliceHeader header = {};
    EXPECT_EQ(PrxReadSliceHeader(start, 2000, false, &header), 6u);
    EXPECT_EQ(header.quantiser, 9);
    EXPECT_EQ(header.lumaSize, 0x102u);
    EXPECT_EQ(header.cbSize, 0x304u);
}

TEST(PrxSliceHeader, FieldsBehindTheInputAre0) {
    const stream::Bytes bytes = {6 << 3};
    PrxSliceHeader header = {};
    EXPECT_EQ(PrxReadSliceHeader(PieceOf(bytes), 10, false, &header), 6u);
    EXPECT_EQ(header.quantiser, 1);
    EXPECT_EQ(header.lumaSize, 0u);
    EXPECT_EQ(header.crSize, 4u);
}

TEST(PrxSliceHeader, QuantIndex0BehavesAs1And255As224) {
    EXPECT_EQ(Read({.quantIndex = 0}, 10)->quantiser, 1);
    EXPECT_EQ(Read({.quantIndex = 1}, 10)->quantiser, 1);
    EXPECT_EQ(Read({.quantIndex = 224}, 10)->quantiser, 512);
    EXPECT_EQ(Read({.quantIndex = 255}, 10)->quantiser, 512);
}

TEST(PrxSliceHeader, TheQuantiserRisesInStepsOf4Above128) {
    EXPECT_EQ(PrxQuantiserOf(128), 128);
    EXPECT_EQ(PrxQuantiserOf(129), 132);
    EXPECT_EQ(PrxQuantiserOf(200), 416);
}
