#include "iostream/SampleFormat.h"

#include <gtest/gtest.h>

namespace {

using IOStream::LengthPrefixedReader;
using IOStream::NALBytes;
using Bytes = std::vector<uint8_t>;

Bytes Copy(NALBytes bytes) { return {bytes.begin(), bytes.end()}; }

TEST(LengthPrefixedReader, NumbersAreBigEndian) {
    const Bytes data = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    LengthPrefixedReader reader(data.data(), data.size());
    EXPECT_EQ(reader.ReadNumber(1), 0x01U);
    EXPECT_EQ(reader.ReadNumber(2), 0x0203U);
    EXPECT_EQ(reader.ReadNumber(3), 0x040506U);
    EXPECT_EQ(reader.ReadNumber(4), 0x0708090AU);
    EXPECT_EQ(reader.ReadNumber(0), 0U);
}

TEST(LengthPrefixedReader, StaysBeforeANumberThatPassesTheEnd) {
    const Bytes data = {1, 2, 3};
    LengthPrefixedReader reader(data.data(), data.size());
    EXPECT_FALSE(reader.ReadNumber(4));
    EXPECT_EQ(Copy(reader.Rest()), data);
}

TEST(LengthPrefixedReader, StaysBeforeTheLengthOfAUnitThatPassesTheEnd) {
    const Bytes data = {0, 1, 9, 0, 2, 8};
    LengthPrefixedReader reader(data.data(), data.size());
    EXPECT_EQ(Copy(reader.ReadUnit(2).value()), Bytes{9});
    EXPECT_FALSE(reader.ReadUnit(2));
    EXPECT_EQ(Copy(reader.Rest()), (Bytes{0, 2, 8}));
}

TEST(LengthPrefixedReader, TakesNoMoreThanIsLeft) {
    const Bytes data = {1, 2, 3};
    LengthPrefixedReader reader(data.data(), data.size());
    EXPECT_EQ(Copy(reader.Take(2)), (Bytes{1, 2}));
    EXPECT_EQ(Copy(reader.Take(UINT64_MAX)), Bytes{3});
    EXPECT_TRUE(reader.Take(1).empty());
}

} // namespace
