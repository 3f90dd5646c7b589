#include "iostream/H264Sets.h"

#include <gtest/gtest.h>

#include <bit>

namespace {

/// The set is accepted, and what stands behind the slice groups is read at its place.
void ExpectRead(const PictureSet& set) {
    H264Parsers payload;
    EXPECT_TRUE(payload.ReadPPS(set.Payload()));
    EXPECT_EQ(payload.deblockingControlPresent, set.deblockingControlPresent);
    EXPECT_EQ(payload.redundantPicCntPresent, set.redundantPicCntPresent);
}

/// `ExpectRead` with both values of both flags, so that no place but the right one gives them all.
void ExpectGroupsRead(const Syntax& sliceGroups) {
    for (const bool deblocking : {false, true})
        for (const bool redundant : {false, true}) {
            PictureSet set;
            set.sliceGroups = sliceGroups;
            set.deblockingControlPresent = deblocking;
            set.redundantPicCntPresent = redundant;
            ExpectRead(set);
        }
}

TEST(IOH264PictureSet, KeepsFourFlags) {
    using Flag = bool PictureSet::*;
    for (const Flag flag : {&PictureSet::entropyCodingMode, &PictureSet::bottomFieldPicOrderPresent,
                            &PictureSet::deblockingControlPresent, &PictureSet::redundantPicCntPresent}) {
        PictureSet set;
        set.*flag = true;
        H264Parsers payload;
        EXPECT_TRUE(payload.ReadPPS(set.Payload()));
        EXPECT_EQ(payload.entropyCodingMode, set.entropyCodingMode);
        EXPECT_EQ(payload.bottomFieldPicOrderPresent, set.bottomFieldPicOrderPresent);
        EXPECT_EQ(payload.deblockingControlPresent, set.deblockingControlPresent);
        EXPECT_EQ(payload.redundantPicCntPresent, set.redundantPicCntPresent);
    }
}

TEST(IOH264PictureSet, ALaterSetClearsItsFlagsAgain) {
    PictureSet set;
    set.entropyCodingMode = set.deblockingControlPresent = true;
    H264Parsers payload;
    payload.ReadPPS(set.Payload());
    payload.ReadPPS(PictureSet().Payload());
    EXPECT_FALSE(payload.entropyCodingMode);
    EXPECT_FALSE(payload.deblockingControlPresent);
}

TEST(IOH264PictureSet, AnIdFrom256OnIsRefused) {
    PictureSet set;
    set.entropyCodingMode = true;
    set.id = 256;
    H264Parsers payload;
    EXPECT_FALSE(payload.ReadPPS(set.Payload()));
    EXPECT_FALSE(payload.entropyCodingMode);
    set.id = 255;
    EXPECT_TRUE(payload.ReadPPS(set.Payload()));
}

TEST(IOH264PictureSet, ASequenceSetIdFrom32OnIsRefused) {
    PictureSet set;
    set.entropyCodingMode = true;
    set.spsID = 32;
    H264Parsers payload;
    EXPECT_FALSE(payload.ReadPPS(set.Payload()));
    EXPECT_FALSE(payload.entropyCodingMode);
    set.spsID = 31;
    EXPECT_TRUE(payload.ReadPPS(set.Payload()));
}

TEST(IOH264PictureSet, InterleavedGroupsHaveARunEach) {
    ExpectGroupsRead([](BitStreamWriter& bits) { bits.UE(2).UE(0).UE(10).UE(20).UE(30); });
}

TEST(IOH264PictureSet, DispersedGroupsHaveNothingMore) {
    ExpectGroupsRead([](BitStreamWriter& bits) { bits.UE(2).UE(1); });
}

TEST(IOH264PictureSet, ForegroundGroupsHaveACornerPairEachTheLastOneIncluded) {
    ExpectGroupsRead([](BitStreamWriter& bits) {
        bits.UE(2).UE(2).UE(1).UE(20).UE(3).UE(40); // the two pairs that the standard has
        bits.UE(5).UE(60);                          // the one that is read besides
    });
}

TEST(IOH264PictureSet, ChangingGroupsHaveADirectionAndARate) {
    for (const uint32_t type : {3, 4, 5})
        ExpectGroupsRead([=](BitStreamWriter& bits) { bits.UE(1).UE(type).Flag(true).UE(99); });
}

/// slice_group_map_type 6 over so many map units, each group id with so many bits.
Syntax ExplicitGroups(uint32_t units, uint32_t bitsOfAnId) {
    return [=](BitStreamWriter& bits) { bits.UE(2).UE(6).UE(units - 1).Repeat(units * bitsOfAnId, true); };
}

TEST(IOH264PictureSet, ExplicitGroupIdsAreAsWideAsTheNumberOfMapUnitsNeeds) {
    ExpectGroupsRead(ExplicitGroups(1, 0));
    ExpectGroupsRead(ExplicitGroups(2, 1));
    ExpectGroupsRead(ExplicitGroups(8, 3));
    ExpectGroupsRead(ExplicitGroups(9, 4)); // three groups: the standard has two bits
}

TEST(IOH264PictureSet, ExplicitGroupIdsOfMoreThan30BitsAreRefused) {
    PictureSet set;
    set.sliceGroups = [](BitStreamWriter& bits) { bits.UE(1).UE(6).UE(1u << 30); };
    H264Parsers payload;
    EXPECT_FALSE(payload.ReadPPS(set.Payload()));
    set.sliceGroups = [](BitStreamWriter& bits) { bits.UE(1).UE(6).UE((1u << 30) - 1); };
    EXPECT_THROW(payload.ReadPPS(set.Payload()), IOStream::BitBuffer::IOBitBufferNoDataException);
}

TEST(IOH264PictureSet, UnknownKindsOfGroupsHaveNothingMore) {
    for (const uint32_t type : {7, 1000})
        ExpectGroupsRead([=](BitStreamWriter& bits) { bits.UE(1).UE(type); });
}

TEST(IOH264PictureSet, MoreThan32ReferencesInEitherListAreRefused) {
    for (uint32_t PictureSet::*const list :
         {&PictureSet::referencesL0Minus1, &PictureSet::referencesL1Minus1}) {
        PictureSet set;
        set.deblockingControlPresent = true;
        set.*list = 32;
        H264Parsers payload;
        EXPECT_FALSE(payload.ReadPPS(set.Payload()));
        EXPECT_FALSE(payload.deblockingControlPresent);
        set.*list = 31;
        EXPECT_TRUE(payload.ReadPPS(set.Payload()));
    }
}

TEST(IOH264PictureSet, ASetThatIsCutOffLeavesTheValuesBeforeTheCut) {
    BitStreamWriter bits;
    bits.UE(0).UE(0).Flag(true).Flag(true).UE(7); // and nothing of the slice groups
    H264Parsers payload;
    EXPECT_THROW(payload.ReadPPS(bits.Bytes()), IOStream::BitBuffer::IOBitBufferNoDataException);
    EXPECT_TRUE(payload.entropyCodingMode);
    EXPECT_TRUE(payload.bottomFieldPicOrderPresent);
}

TEST(IOH264PictureSet, AnEmptySetIsCutOff) {
    EXPECT_THROW(H264Parsers().ParsePPS(nullptr, 0), IOStream::BitBuffer::IOBitBufferNoDataException);
}

} // namespace
