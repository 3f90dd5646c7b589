// Input that no encoder writes: any bytes, and good sets with bits turned or bytes cut off. The parsers end
// with a result or with one of the reader's exceptions, and read nothing behind the bytes: each input lies in
// a block of its own size, whose end the address sanitizer guards.

#include "framework/CxAVTypes.h"
#include "iostream/H264Sets.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint8_t parsedTypes[] = {1, 5, 7, 8};

/// Parses a unit's payload from a block of its own.
void ParseCopy(H264Parsers& payload, uint8_t type, const Bytes& bytes) {
    const auto block = std::make_unique<uint8_t[]>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), block.get());
    try {
        payload.ParseNAL(type, block.get(), static_cast<uint32_t>(bytes.size()));
    } catch (const IOStream::BitBuffer::IOBitBufferNoDataException&) {
    } catch (const IOStream::BitBuffer::IOBitBufferIllegalDataException&) {
    }
}

/// A set with all that a set can have.
SequenceSet FullSet() {
    SequenceSet set;
    set.profile = 122;
    set.sampleFormat = [](BitStreamWriter& bits) { bits.UE(2).UE(2).U(2, 0); };
    set.picOrderCnt = [](BitStreamWriter& bits) { bits.UE(1).Flag(false).SE(1).SE(-1).UE(2).SE(4).SE(5); };
    set.frameMbsOnly = false;
    set.crop = {1, 1, 2, 2};
    set.vui = [](BitStreamWriter& bits) {
        bits.Flag(true).U(8, 2).Flag(true).Flag(true);                         // aspect, overscan
        bits.Flag(true).U(3, 5).Flag(true).Flag(true).U(8, 1).U(8, 1).U(8, 1); // signal, colours
        bits.Flag(true).UE(1).UE(1).Flag(true).U(32, 1001).U(32, 60000).Flag(true);
        bits.Flag(true).UE(0).U(8, 0).UE(9).UE(9).Flag(false).U(20, 0x5294A); // NAL HRD
        bits.Flag(false).Flag(false).Flag(true).Flag(false);
    };
    return set;
}

/// The payload is still of use: it reads a good set.
void ExpectUsable(H264Parsers& payload) {
    payload.frameMbsOnly = false;
    EXPECT_GT(payload.ReadSPS(FullSet().Payload()), 0u);
    EXPECT_EQ(payload.info.width, 1920 - 4);
    EXPECT_EQ(payload.info.frameRateNum, 30000u);
}

TEST(IOH264ParserInput, AnyBytesLeaveThePayloadUsable) {
    std::mt19937 random = MakeRandom();
    H264Parsers payload;
    for (int round = 0; round < 4000; ++round) {
        Bytes bytes(random() % 64);
        for (uint8_t& byte : bytes)
            byte = static_cast<uint8_t>(random() % 3 == 0 ? 0 : random());
        for (const uint8_t type : parsedTypes)
            ParseCopy(payload, type, bytes);
    }
    ExpectUsable(payload);
}

TEST(IOH264ParserInput, TurnedBitsLeaveThePayloadUsable) {
    H264Parsers payload;
    const Bytes good = FullSet().Payload();
    for (size_t bit = 0; bit < good.size() * 8; ++bit) {
        Bytes bytes = good;
        bytes[bit / 8] ^= static_cast<uint8_t>(128 >> bit % 8);
        for (const uint8_t type : parsedTypes)
            ParseCopy(payload, type, bytes);
    }
    ExpectUsable(payload);
}

TEST(IOH264ParserInput, ASetCutAtAnyByteKeepsADefaultOrTheWholeSetsValue) {
    const Bytes good = FullSet().Payload();
    H264Parsers whole;
    ASSERT_GT(whole.ReadSPS(good), 0u);
    size_t lastRead = 0;
    for (size_t size = 0; size <= good.size(); ++size) {
        H264Parsers cut;
        ParseCopy(cut, 7, Bytes(good.begin(), good.begin() + static_cast<ptrdiff_t>(size)));
        const std::array<std::array<uint32_t, 3>, 6> values = {{
            {cut.info.profile, 0, whole.info.profile},
            {cut.info.bitDepth, 0, whole.info.bitDepth},
            {cut.log2MaxFrameNum, 0, whole.log2MaxFrameNum},
            {cut.info.width, 0, whole.info.width},
            {cut.info.matrixCoefficients, 2, whole.info.matrixCoefficients},
            {cut.info.frameRateNum, 0, whole.info.frameRateNum},
        }};
        // In the order of the syntax: those before the cut are read, those behind it are not.
        const auto unread = std::find_if(values.begin(), values.end(),
                                         [](const auto& value) { return value[0] != value[2]; });
        const bool isRestDefault =
            std::all_of(unread, values.end(), [](const auto& value) { return value[0] == value[1]; });
        EXPECT_TRUE(isRestDefault) << size;
        const auto read = static_cast<size_t>(unread - values.begin());
        EXPECT_GE(read, lastRead) << size;
        lastRead = read;
    }
    EXPECT_EQ(lastRead, 6u);
}

TEST(IOH264ParserInput, RecordsOfAnyBytesEndWithAResult) {
    std::mt19937 random = MakeRandom();
    H264Parsers payload;
    for (int round = 0; round < 4000; ++round) {
        Bytes record(random() % 100);
        for (uint8_t& byte : record)
            byte = static_cast<uint8_t>(random() % 2 == 0 ? random() % 4 : random());
        EXPECT_LE(payload.ParseConfigRecord(record, FourCC("avcC")), 4u);
    }
    ExpectUsable(payload);
}

TEST(IOH264ParserInput, HugeCountsEndWithTheBytes) {
    H264Parsers payload;
    PictureSet set;
    set.sliceGroups = [](BitStreamWriter& bits) { bits.UE(0x7FFFFFFE).UE(0); };
    EXPECT_THROW(payload.ReadPPS(set.Payload()), IOStream::BitBuffer::IOBitBufferNoDataException);
    set.sliceGroups = [](BitStreamWriter& bits) { bits.UE(1).UE(6).UE((1u << 30) - 1); };
    EXPECT_THROW(payload.ReadPPS(set.Payload()), IOStream::BitBuffer::IOBitBufferNoDataException);
    payload.deblockingControlPresent = true;
    payload.log2MaxPicOrderCntLsb = 0x80000000;
    const Bytes slice = BitStreamWriter().UE(0).UE(7).UE(0).UE(0).Repeat(100, false).Bytes();
    payload.frameMbsOnly = true;
    EXPECT_THROW(payload.ReadIDRSlice(slice), IOStream::BitBuffer::IOBitBufferNoDataException);
}

} // namespace
