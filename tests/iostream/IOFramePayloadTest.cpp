#include "iostream/IOFramePayload.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

using namespace IOStream;

class FramePayload : public IOFramePayload {
public:
    using IOFramePayload::data;
    using IOFramePayload::dataSize;
    using IOFramePayload::Grow;
    using IOFramePayload::growQuantum;

    /// Room for `size` bytes more, which then count as there.
    bool Add(uint32_t size) {
        if (!Grow(size)) return false;
        dataSize += size;
        return true;
    }
};

class MPEG2Payload : public IOMPEG2VideoPayload {
public:
    using IOMPEG2VideoPayload::data;
    using IOMPEG2VideoPayload::dataSize;

    bool GetConfigRecord(std::vector<uint8_t>&, uint32_t&) override { return false; }
};

TEST(IOFramePayload, StartsEmpty) {
    FramePayload payload;
    EXPECT_EQ(payload.GetDataSize(), 0u);
    EXPECT_TRUE(payload.data.empty());
}

TEST(IOFramePayload, FirstMakesRoomForTheQuantum) {
    FramePayload payload;
    EXPECT_EQ(payload.growQuantum, 16384u);
    ASSERT_TRUE(payload.Add(1));
    EXPECT_EQ(payload.data.size(), 16384u);
}

TEST(IOFramePayload, FirstMakesRoomForWhatIsMoreThanTheQuantum) {
    FramePayload payload;
    ASSERT_TRUE(payload.Add(16385));
    EXPECT_EQ(payload.data.size(), 16385u);
}

TEST(IOFramePayload, GrowsToTwiceWhatIsNeededAndOnlyWhereTheRoomIsShort) {
    FramePayload payload;
    ASSERT_TRUE(payload.Add(16000));
    ASSERT_TRUE(payload.Add(384));
    EXPECT_EQ(payload.data.size(), 16384u);
    ASSERT_TRUE(payload.Add(1));
    EXPECT_EQ(payload.data.size(), 2u * 16385);
}

TEST(IOFramePayload, AppendingByteByByteMovesTheDataAFewTimesOnly) {
    FramePayload payload;
    size_t growths = 0;
    for (uint32_t size = 0; size < 1000000; ++size) {
        const size_t capacity = payload.data.size();
        ASSERT_TRUE(payload.Add(1));
        growths += payload.data.size() != capacity ? 1 : 0;
    }
    EXPECT_LE(growths, 8u);
}

TEST(IOFramePayload, RefusesToPass32BitsAndStaysAsItIs) {
    FramePayload payload;
    ASSERT_TRUE(payload.Add(100));
    EXPECT_FALSE(payload.Add(UINT32_MAX - 99));
    EXPECT_EQ(payload.dataSize, 100u);
    EXPECT_EQ(payload.data.size(), 16384u);
}

TEST(IOFramePayload, GivesTheBytes) {
    FramePayload payload;
    ASSERT_TRUE(payload.Add(3));
    payload.data[2] = 77;
    EXPECT_EQ(payload.GetData()[2], 77);
    EXPECT_EQ(payload.GetDataSize(), 3u);
}

TEST(IOFramePayload, AnyDataIsAnIntraFrameAndScansWell) {
    FramePayload payload;
    ASSERT_TRUE(payload.Add(5));
    payload.SetStreamID(3);
    EXPECT_TRUE(payload.ScanData());
    EXPECT_EQ(payload.GetFrameType(), 1u);
}

TEST(IOMPEG2VideoPayload, IsAbstract) {
    EXPECT_TRUE(std::is_abstract_v<IOMPEG2VideoPayload>);
    EXPECT_FALSE(std::is_abstract_v<IOFramePayload>);
}

TEST(IOMPEG2VideoPayload, TheFrameTypeOfAnyDataIs1) {
    MPEG2Payload payload;
    EXPECT_EQ(payload.GetFrameType(), 1u);
    payload.data = {0, 0, 1, 0, 0x12, 0x57, 0xFF};
    payload.dataSize = 7;
    EXPECT_TRUE(payload.ScanData());
    EXPECT_EQ(payload.GetFrameType(), 1u);
}

TEST(IOMPEG2VideoPayload, KeepsTheStreamID) {
    MPEG2Payload payload;
    payload.SetStreamID(0xABCD);
    EXPECT_EQ(payload.GetStreamInfo().streamID, 0xABCD);
}

TEST(IOMPEG2VideoPayload, KnowsNothingOfTheStreamAtFirst) {
    MPEG2Payload payload;
    const IOElementaryStreamInfo& info = payload.GetStreamInfo();
    EXPECT_EQ(info.codecFourCC, (std::array<char, 4>{'1', 'c', 'v', 'a'}));
    EXPECT_EQ(info.profile, 0);
    EXPECT_EQ(info.width, 0);
    EXPECT_EQ(info.chromaFormat, 0);
    EXPECT_EQ(info.pixelAspect, 1.0f);
    EXPECT_TRUE(info.fixedFrameRate);
    EXPECT_TRUE(info.deblockingEnabled);
    EXPECT_TRUE(info.fullRangeBySPS.empty());
    EXPECT_EQ(info.cpbRemovalDelayLength, 24);
    EXPECT_EQ(info.dpbOutputDelayLength, 24);
    EXPECT_EQ(info.timeOffsetLength, 24);
    EXPECT_EQ(info.frameType, 0u);
    EXPECT_EQ(info.fieldOrder, 0u);
    EXPECT_EQ(info.colourPrimaries, 2);
    EXPECT_EQ(info.transferCharacteristics, 2);
    EXPECT_EQ(info.matrixCoefficients, 2);
    EXPECT_EQ(info.alphaUse, -1);
}

} // namespace
