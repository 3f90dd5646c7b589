#include "iostream/HEVCSyntax.h"
#include "iostream/PayloadAccess.h"

#include <gtest/gtest.h>

using namespace IOStream;

namespace {

/// A payload whose stream has frame_field_info_present_flag.
HEVCPayload FieldInfoPayload() {
    HEVCPayload payload;
    payload.frameFieldInfoPresent = true;
    return payload;
}

uint32_t FieldOrderBy(uint32_t picStruct) {
    HEVCPayload payload = FieldInfoPayload();
    payload.Parse(HEVCPrefixSEI({HEVCPicTiming(picStruct)}));
    return payload.info.fieldOrder;
}

/// An alpha_channel_info message.
HEVCMessage AlphaInfo(bool isCancelled, uint32_t use) {
    BitStreamWriter bits;
    bits.Flag(isCancelled).U(3, use).U(3, 0).U(9, 0).U(9, 255).Flag(false).Flag(false).Trailing();
    return {165, bits.Bytes()};
}

int32_t AlphaUseBy(const HEVCMessage& message) {
    HEVCPayload payload;
    payload.Parse(HEVCPrefixSEI({message}));
    return payload.info.alphaUse;
}

} // namespace

TEST(HEVCSei, PicStructsOfTopFieldsFirst) {
    for (const uint32_t picStruct : {1, 3, 5, 9, 11})
        EXPECT_EQ(FieldOrderBy(picStruct), IOField_TopFirst) << picStruct;
}

TEST(HEVCSei, PicStructsOfBottomFieldsFirst) {
    for (const uint32_t picStruct : {2, 4, 6, 10, 12})
        EXPECT_EQ(FieldOrderBy(picStruct), IOField_BottomFirst) << picStruct;
}

TEST(HEVCSei, PicStructOfAFrameIsProgressive) { EXPECT_EQ(FieldOrderBy(0), IOField_Progressive); }

TEST(HEVCSei, PicStruct7LeavesTheFieldOrder) {
    HEVCPayload payload = FieldInfoPayload();
    payload.info.fieldOrder = IOField_BottomFirst;
    payload.Parse(HEVCPrefixSEI({HEVCPicTiming(7)}));
    EXPECT_EQ(payload.info.fieldOrder, IOField_BottomFirst);
}

TEST(HEVCSei, RepeatedFramesAndReservedPicStructsLeaveTheFieldOrder) {
    for (const uint32_t picStruct : {8, 13, 14, 15})
        EXPECT_EQ(FieldOrderBy(picStruct), IOField_Unknown) << picStruct;
}

TEST(HEVCSei, PicTimingNeedsFieldInfo) {
    HEVCPayload payload;
    payload.Parse(HEVCPrefixSEI({HEVCPicTiming(1)}));
    EXPECT_EQ(payload.info.fieldOrder, IOField_Unknown);
}

TEST(HEVCSei, PicTimingAsTheSecondMessageIsNotSeen) {
    HEVCPayload payload = FieldInfoPayload();
    payload.Parse(HEVCPrefixSEI({{0, {0x80}}, HEVCPicTiming(1)}));
    EXPECT_EQ(payload.info.fieldOrder, IOField_Unknown);
}

TEST(HEVCSei, CancelledAlphaLeavesTheUse) { EXPECT_EQ(AlphaUseBy(AlphaInfo(true, 0)), -1); }

TEST(HEVCSei, AlphaUses) {
    EXPECT_EQ(AlphaUseBy(AlphaInfo(false, 0)), 1);
    EXPECT_EQ(AlphaUseBy(AlphaInfo(false, 1)), 2);
    for (uint32_t use = 2; use < 8; ++use)
        EXPECT_EQ(AlphaUseBy(AlphaInfo(false, use)), 0) << use;
}

TEST(HEVCSei, OtherTypesAreIgnored) { EXPECT_EQ(AlphaUseBy({5, {0x00}}), -1); }

TEST(HEVCSei, TypeIsASumOfBytes) {
    HEVCPayload payload = FieldInfoPayload();
    payload.Parse({39 << 1, 1, 255, 1, 1, 0x10, 0x80}); // type 256
    EXPECT_EQ(payload.info.fieldOrder, IOField_Unknown);
}

TEST(HEVCSei, SizeOfManyBytesIsPassedOver) {
    HEVCPayload payload = FieldInfoPayload();
    payload.Parse({39 << 1, 1, 1, 255, 255, 4, 0x20, 0x80});
    EXPECT_EQ(payload.info.fieldOrder, IOField_BottomFirst);
}

TEST(HEVCSei, SizeBoundsNothing) {
    HEVCPayload payload = FieldInfoPayload();
    payload.Parse({39 << 1, 1, 1, 0, 0x10, 0x80});
    EXPECT_EQ(payload.info.fieldOrder, IOField_TopFirst);
}

TEST(HEVCSei, IsNotReadWithoutInterpreting) {
    HEVCPayload payload = FieldInfoPayload();
    const std::vector<uint8_t> unit = HEVCPrefixSEI({HEVCPicTiming(1)});
    EXPECT_TRUE(payload.ParseSEI(unit.data() + 2, static_cast<uint32_t>(unit.size() - 2), false));
    EXPECT_EQ(payload.info.fieldOrder, IOField_Unknown);
}

TEST(HEVCSei, SuffixIsIgnored) {
    HEVCPayload payload = FieldInfoPayload();
    std::vector<uint8_t> unit = HEVCPrefixSEI({HEVCPicTiming(1)});
    unit[0] = 40 << 1;
    payload.Parse(unit);
    EXPECT_EQ(payload.info.fieldOrder, IOField_Unknown);
}

TEST(HEVCSei, EndsWithItsBytes) {
    for (const std::vector<uint8_t>& unit :
         {std::vector<uint8_t>{78, 1, 255}, {78, 1, 255, 255}, {78, 1, 1}, {78, 1, 1, 1}, {78, 1, 165, 4}}) {
        HEVCPayload payload = FieldInfoPayload();
        EXPECT_THROW(payload.Parse(unit), BitBuffer::IOBitBufferNoDataException);
        EXPECT_EQ(payload.info.fieldOrder, IOField_Unknown);
        EXPECT_EQ(payload.info.alphaUse, -1);
    }
}
