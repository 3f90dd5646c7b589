#include "iostream/H264Sets.h"

#include <gtest/gtest.h>

namespace {

using IOStream::BitBuffer;

/// The start of a slice header (ISO/IEC 14496-10, 7.3.3), as far as it is read; `rest` follows.
struct SliceStart {
    uint32_t type = 7;
    uint32_t ppsID = 0;
    uint32_t frameNumBits = 4;
    std::optional<bool> isBottomField; ///< nothing: no field_pic_flag, as in streams of frames alone
    bool isFrame = false;              ///< field_pic_flag 0

    BitStreamWriter Bits() const {
        BitStreamWriter bits;
        bits.UE(0).UE(type).UE(ppsID).Repeat(frameNumBits, false);
        if (isFrame) bits.Flag(false);
        if (isBottomField) bits.Flag(true).Flag(*isBottomField);
        return bits;
    }
};

SliceStart FieldSlice(bool isBottom) {
    SliceStart slice;
    slice.isBottomField = isBottom;
    return slice;
}

SliceStart FrameSliceAmongFields() {
    SliceStart slice;
    slice.isFrame = true;
    return slice;
}

/// A payload as a set of 4 bits of frame number leaves it.
struct SlicePayload : H264Parsers {
    explicit SlicePayload(bool isFrameMbsOnly = true) {
        frameMbsOnly = isFrameMbsOnly;
        log2MaxFrameNum = 4;
        picOrderCntType = 2;
    }
    uint32_t ReadStart(BitStreamWriter bits) {
        bits.Trailing();
        BitBuffer reader(bits.Bytes().data(), static_cast<uint32_t>(bits.Bytes().size()));
        return ParseSliceStart(reader);
    }
};

TEST(IOH264Slices, TheResultIsTheSliceType) {
    for (uint32_t type = 0; type < 12; ++type) {
        SliceStart slice;
        slice.type = type;
        EXPECT_EQ(SlicePayload().ReadStart(slice.Bits()), type);
    }
}

TEST(IOH264Slices, APictureSetIdFrom256OnPassesForSliceType0) {
    SliceStart slice;
    slice.ppsID = 256;
    EXPECT_EQ(SlicePayload(false).ReadStart(slice.Bits()), 0u);
    slice.ppsID = 255;
    EXPECT_EQ(SlicePayload().ReadStart(slice.Bits()), 7u);
}

TEST(IOH264Slices, AmongFramesAloneTheFieldOrderIsLeft) {
    SlicePayload payload;
    payload.info.fieldOrder = 1;
    payload.ReadStart(SliceStart().Bits());
    EXPECT_EQ(payload.info.fieldOrder, 1u);
    EXPECT_FALSE(payload.fieldSeen);
}

TEST(IOH264Slices, AFieldTellsTheOrder) {
    for (const bool isBottom : {false, true}) {
        SlicePayload payload(false);
        payload.ReadStart(FieldSlice(isBottom).Bits());
        EXPECT_EQ(payload.info.fieldOrder, isBottom ? 3u : 2u);
        EXPECT_TRUE(payload.fieldSeen);
    }
}

TEST(IOH264Slices, AFrameAmongFieldsCountsAsTopFieldFirst) {
    SlicePayload payload(false);
    payload.ReadStart(FrameSliceAmongFields().Bits());
    EXPECT_EQ(payload.info.fieldOrder, 2u);
    EXPECT_FALSE(payload.fieldSeen);
}

TEST(IOH264Slices, AColourPlaneIsPassedOver) {
    SlicePayload payload(false);
    payload.separateColourPlane = true;
    BitStreamWriter bits;
    bits.UE(0).UE(7).UE(0).U(2, 2).U(4, 0).Flag(true).Flag(true); // a bottom field
    payload.ReadStart(bits);
    EXPECT_EQ(payload.info.fieldOrder, 3u);
}

TEST(IOH264Slices, FrameNumHasTheBitsOfTheSequenceSet) {
    for (const uint32_t length : {0, 16, 32}) {
        SlicePayload payload(false);
        payload.log2MaxFrameNum = length;
        SliceStart slice = FieldSlice(true);
        slice.frameNumBits = length;
        payload.ReadStart(slice.Bits());
        EXPECT_EQ(payload.info.fieldOrder, 3u) << length;
    }
}

TEST(IOH264Slices, OfTheLengthOfFrameNumTheLowEightBitsCount) {
    SlicePayload payload(false);
    payload.log2MaxFrameNum = 256 + 4;
    payload.ReadStart(FieldSlice(true).Bits());
    EXPECT_EQ(payload.info.fieldOrder, 3u);
}

TEST(IOH264Slices, AFieldThatIsCutOffLeavesTheOrder) {
    BitStreamWriter bits;
    bits.UE(0).UE(0).UE(0).U(4, 0).Flag(true); // eight bits, up to field_pic_flag
    SlicePayload payload(false);
    BitBuffer reader(bits.Bytes().data(), 1);
    EXPECT_THROW(payload.ParseSliceStart(reader), BitBuffer::IOBitBufferNoDataException);
    EXPECT_TRUE(payload.fieldSeen);
    EXPECT_EQ(payload.info.fieldOrder, 0u);
}

// IDR slices: what stands between their start and disable_deblocking_filter_idc, which tells of the filter.

/// A payload whose picture set has the filter's controls.
struct IDRPayload : SlicePayload {
    explicit IDRPayload(bool isFrameMbsOnly = true) : SlicePayload(isFrameMbsOnly) {
        deblockingControlPresent = true;
    }
};

/// An IDR slice with this disable_deblocking_filter_idc; `order` writes what idr_pic_id does not end.
std::vector<uint8_t> IDRSlice(uint32_t disableFilter, const Syntax& order = nullptr, SliceStart start = {}) {
    BitStreamWriter bits = start.Bits();
    bits.UE(77); // idr_pic_id
    if (order) order(bits);
    return bits.U(2, 0).SE(-5).UE(disableFilter).Trailing().Bytes();
}

TEST(IOH264Slices, AnIDRSliceWithTheFilterOnEndsTheSearch) {
    IDRPayload payload;
    EXPECT_TRUE(payload.ReadIDRSlice(IDRSlice(0)));
    EXPECT_TRUE(payload.info.deblockingEnabled);
    EXPECT_TRUE(payload.deblockingSeen);
    EXPECT_FALSE(payload.ReadIDRSlice(IDRSlice(1)));
    EXPECT_TRUE(payload.info.deblockingEnabled);
}

TEST(IOH264Slices, AnIDRSliceWithTheFilterOffLeavesTheSearchOpen) {
    for (const uint32_t disableFilter : {1, 2}) {
        IDRPayload payload;
        EXPECT_TRUE(payload.ReadIDRSlice(IDRSlice(disableFilter)));
        EXPECT_FALSE(payload.info.deblockingEnabled);
        EXPECT_FALSE(payload.deblockingSeen);
        EXPECT_TRUE(payload.ReadIDRSlice(IDRSlice(0)));
        EXPECT_TRUE(payload.info.deblockingEnabled);
        EXPECT_TRUE(payload.deblockingSeen);
    }
}

TEST(IOH264Slices, AFilterControlAbove2TellsNothing) {
    IDRPayload payload;
    EXPECT_FALSE(payload.ReadIDRSlice(IDRSlice(3)));
    EXPECT_TRUE(payload.info.deblockingEnabled);
    EXPECT_FALSE(payload.deblockingSeen);
}

TEST(IOH264Slices, OnlyIDRSlicesOfType7AreLookedInto) {
    for (const uint32_t type : {2, 4, 9}) {
        SliceStart start;
        start.type = type;
        IDRPayload payload;
        EXPECT_FALSE(payload.ReadIDRSlice(IDRSlice(1, nullptr, start))) << type;
        EXPECT_TRUE(payload.info.deblockingEnabled) << type;
    }
}

TEST(IOH264Slices, WithoutFilterControlsIDRSlicesTellNothing) {
    IDRPayload payload;
    payload.deblockingControlPresent = false;
    EXPECT_FALSE(payload.ReadIDRSlice(IDRSlice(1)));
    EXPECT_TRUE(payload.info.deblockingEnabled);
}

TEST(IOH264Slices, AnIDRSliceTellsTheFieldOrderToo) {
    SlicePayload payload(false);
    payload.ReadIDRSlice(IDRSlice(0, nullptr, FieldSlice(true)));
    EXPECT_EQ(payload.info.fieldOrder, 3u);
}

/// The slice tells that the filter is off only if `order` is passed over to its end.
void ExpectOrderPassedOver(IDRPayload& payload, const Syntax& order, const SliceStart& start = {}) {
    EXPECT_TRUE(payload.ReadIDRSlice(IDRSlice(1, order, start)));
    EXPECT_FALSE(payload.info.deblockingEnabled);
}

TEST(IOH264Slices, PicOrderCntType0HasItsBitsAndADelta) {
    IDRPayload payload;
    payload.picOrderCntType = 0;
    payload.log2MaxPicOrderCntLsb = 40;
    ExpectOrderPassedOver(payload, [](BitStreamWriter& bits) { bits.Repeat(40, true); });
    payload.bottomFieldPicOrderPresent = true;
    payload.info.deblockingEnabled = true;
    ExpectOrderPassedOver(payload, [](BitStreamWriter& bits) { bits.Repeat(40, true).SE(-9); });
}

TEST(IOH264Slices, TheDeltaOfTheBottomFieldIsReadForFieldsToo) {
    IDRPayload payload(false);
    payload.picOrderCntType = 0;
    payload.log2MaxPicOrderCntLsb = 6;
    payload.bottomFieldPicOrderPresent = true;
    ExpectOrderPassedOver(
        payload, [](BitStreamWriter& bits) { bits.U(6, 0).SE(31); }, FieldSlice(false));
}

TEST(IOH264Slices, PicOrderCntType1HasTwoDeltasUnlessTheyAreZero) {
    IDRPayload payload;
    payload.picOrderCntType = 1;
    ExpectOrderPassedOver(payload, [](BitStreamWriter& bits) { bits.SE(12); });
    payload.bottomFieldPicOrderPresent = true;
    payload.info.deblockingEnabled = true;
    ExpectOrderPassedOver(payload, [](BitStreamWriter& bits) { bits.SE(12).SE(-30); });
    payload.deltaPicOrderAlwaysZero = true;
    payload.info.deblockingEnabled = true;
    ExpectOrderPassedOver(payload, nullptr);
}

TEST(IOH264Slices, ARedundantPictureCountIsPassedOver) {
    for (const uint32_t count : {0, 1, 2, 100}) {
        IDRPayload payload;
        payload.redundantPicCntPresent = true;
        ExpectOrderPassedOver(payload, [=](BitStreamWriter& bits) { bits.UE(count); });
    }
}

} // namespace
