#include "iostream/H264Sets.h"

#include <gtest/gtest.h>

namespace {

/// A slice of frames with 4 bits of frame number.
std::vector<uint8_t> Slice(uint32_t type, uint32_t ppsID = 0) {
    return BitStreamWriter().UE(0).UE(type).UE(ppsID).U(4, 0).Trailing().Bytes();
}

/// A payload that has read a sequence set of frames alone.
struct FramesPayload : H264Parsers {
    FramesPayload() { ReadNAL(7, SequenceSet().Payload()); }
};

TEST(IOH264Units, SliceTypesAreClassifiedWithSPAsPredictedAndSIAsIntra) {
    constexpr uint32_t frameTypes[] = {2, 3, 1, 2, 1, 2, 3, 1, 2, 1};
    for (uint32_t type = 0; type < std::size(frameTypes); ++type) {
        FramesPayload payload;
        payload.ReadNAL(1, Slice(type));
        EXPECT_EQ(payload.info.frameType, frameTypes[type]) << type;
    }
}

TEST(IOH264Units, SliceTypesFrom10OnLeaveTheFrameTypeUnknown) {
    for (const uint32_t type : {10, 11, 1000}) {
        FramesPayload payload;
        payload.ReadNAL(1, Slice(type));
        EXPECT_EQ(payload.info.frameType, 0u) << type;
    }
}

TEST(IOH264Units, AfterAnUnknownSliceTypeTheNextSliceIsRead) {
    FramesPayload payload;
    payload.ReadNAL(1, Slice(10));
    payload.ReadNAL(1, Slice(6));
    EXPECT_EQ(payload.info.frameType, 3u);
}

TEST(IOH264Units, ANonIDRSliceWithPictureSetId300CountsAsPredicted) {
    FramesPayload payload;
    payload.ReadNAL(1, Slice(7, 300));
    EXPECT_EQ(payload.info.frameType, 2u);
}

TEST(IOH264Units, AfterAnISliceAPSliceDoesNotChangeTheFrameType) {
    FramesPayload payload;
    payload.ReadNAL(1, Slice(7));
    payload.ReadNAL(1, Slice(5));
    EXPECT_EQ(payload.info.frameType, 1u);
}

TEST(IOH264Units, AnIDRSliceMakesTheFrameIntraWhateverItsType) {
    FramesPayload payload;
    payload.ReadNAL(1, Slice(5));
    payload.ReadNAL(5, Slice(6));
    EXPECT_EQ(payload.info.frameType, 1u);
}

TEST(IOH264Units, AnIDRSliceWithoutBytesMakesTheFrameIntra) {
    FramesPayload payload;
    payload.ParseNAL(5, nullptr, 0);
    EXPECT_EQ(payload.info.frameType, 1u);
}

TEST(IOH264Units, TheFirstSliceSettlesTheFieldOrderUntilAnIDRSlice) {
    SequenceSet fields;
    fields.frameMbsOnly = false;
    const auto fieldSlice = [](bool isBottom) {
        return BitStreamWriter().UE(0).UE(7).UE(0).U(4, 0).Flag(true).Flag(isBottom).Trailing().Bytes();
    };
    H264Parsers payload;
    payload.ReadNAL(7, fields.Payload());
    payload.ReadNAL(1, fieldSlice(true));
    payload.ReadNAL(1, fieldSlice(false));
    EXPECT_EQ(payload.info.fieldOrder, 3u);
    payload.ReadNAL(5, fieldSlice(false));
    EXPECT_EQ(payload.info.fieldOrder, 2u);
}

TEST(IOH264Units, ParameterSetsAreParsedByType) {
    PictureSet pictureSet;
    pictureSet.entropyCodingMode = true;
    H264Parsers payload;
    payload.ReadNAL(7, SequenceSet().Payload());
    payload.ReadNAL(8, pictureSet.Payload());
    EXPECT_EQ(payload.info.width, 1920);
    EXPECT_TRUE(payload.entropyCodingMode);
}

TEST(IOH264Units, AnEmptyUnitIsPassedOver) {
    H264Parsers payload;
    payload.ParseUnit(5, {});
    EXPECT_EQ(payload.info.frameType, 0u);
}

TEST(IOH264Units, WhatABrokenUnitThrowsEndsWithTheUnit) {
    const std::vector<uint8_t> cut = {0x67, 77, 0, 30};
    H264Parsers payload;
    EXPECT_NO_THROW(payload.ParseUnit(7, cut));
    EXPECT_EQ(payload.info.profile, 77);
    EXPECT_EQ(payload.info.level, 30);
}

TEST(IOH264Units, OtherTypesAreIgnored) {
    H264Parsers payload;
    for (uint32_t type = 0; type < 256; ++type) {
        if (type == 1 || type == 5 || type == 7 || type == 8) continue;
        payload.ReadNAL(static_cast<uint8_t>(type), SequenceSet().Payload());
        payload.ReadNAL(static_cast<uint8_t>(type), Slice(7));
    }
    EXPECT_EQ(payload.info.profile, 0);
    EXPECT_EQ(payload.info.frameType, 0u);
}

} // namespace
