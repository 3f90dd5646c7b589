#include "iostream/Conversions.h"

#include "iostream/BitStreamWriter.h"

#include <gtest/gtest.h>

namespace {

using IOStream::IOH264NALPayload;

bool IsAnnexB(const Bytes& bytes) {
    const GuardedCopy data(bytes);
    return IOH264NALPayload::s_IsAnnexB(data.data(), data.size());
}

uint64_t StreamOffset(const Bytes& bytes) {
    const GuardedCopy data(bytes);
    return IOH264NALPayload::GetAVCCStreamOffset(data.data(), data.size());
}

TEST(IsAnnexB, AStartCodeAloneIsNot) { EXPECT_FALSE(IsAnnexB({0, 0, 0, 1})); }

TEST(IsAnnexB, AStartCodeOfFourBytesAndAnyByteIs) {
    EXPECT_TRUE(IsAnnexB({0, 0, 0, 1, 0x67}));
    EXPECT_TRUE(IsAnnexB({0, 0, 0, 1, 0xFF}));
}

TEST(IsAnnexB, AStartCodeOfThreeBytesDoesNotCount) { EXPECT_FALSE(IsAnnexB({0, 0, 1, 0x67, 0x42})); }

TEST(IsAnnexB, NoBytesAreNot) {
    EXPECT_FALSE(IsAnnexB({}));
    EXPECT_FALSE(IOH264NALPayload::s_IsAnnexB(nullptr, 0));
}

TEST(GetAVCCStreamOffset, PassesOverOneDelimiterAndStopsBeforeASequenceSet) {
    EXPECT_EQ(StreamOffset({0, 0, 0, 1, 9, 0, 0, 0, 1, 0x67}), 5U);
}

TEST(GetAVCCStreamOffset, PassesOverDelimitersAndEndsOfSequenceWhateverTheirReferenceBits) {
    EXPECT_EQ(StreamOffset({0, 0, 0, 1, 0x69, 0, 0, 0, 1, 0x2A, 0, 0, 0, 1, 9, 0, 0, 0, 1, 0x65, 1}), 15U);
}

TEST(GetAVCCStreamOffset, ADelimiterWithContentEndsTheWalkBehindItsHeader) {
    EXPECT_EQ(StreamOffset({0, 0, 0, 1, 9, 0xF0, 0, 0, 0, 1, 9, 0xF0}), 5U);
}

TEST(GetAVCCStreamOffset, MayReachTheEnd) { EXPECT_EQ(StreamOffset({0, 0, 0, 1, 9, 0, 0, 0, 1, 10}), 10U); }

TEST(GetAVCCStreamOffset, AnythingElseIsAtTheStart) {
    EXPECT_EQ(StreamOffset({}), 0U);
    EXPECT_EQ(StreamOffset({0, 0, 0, 1}), 0U);
    EXPECT_EQ(StreamOffset({0, 0, 1, 9, 0}), 0U);
    EXPECT_EQ(StreamOffset({0, 0, 0, 1, 0x67}), 0U);
    EXPECT_EQ(IOH264NALPayload::GetAVCCStreamOffset(nullptr, 0), 0U);
}

TEST(ConvertToAnnexB, WritesStartCodesOverLengthFieldsOfFourBytes) {
    const AnnexBSample converted = ConvertToAnnexB({0, 0, 0, 5, 0x65, 2, 3, 4, 5}, 4);
    EXPECT_TRUE(converted.isDone);
    EXPECT_EQ(converted.out, Bytes());
    EXPECT_EQ(converted.input, (Bytes{0, 0, 0, 1, 0x65, 2, 3, 4, 5}));
}

TEST(ConvertToAnnexB, WritesStartCodesAndUnitsForLengthFieldsOfTwoBytes) {
    const AnnexBSample converted = ConvertToAnnexB({0, 5, 0x65, 2, 3, 4, 5}, 2);
    EXPECT_TRUE(converted.isDone);
    EXPECT_EQ(converted.out, (Bytes{0, 0, 0, 1, 0x65, 2, 3, 4, 5}));
    EXPECT_EQ(converted.input, (Bytes{0, 5, 0x65, 2, 3, 4, 5})) << "the input is left alone";
}

TEST(ConvertToAnnexB, WalksAllUnitsForEveryLengthSize) {
    const std::vector<Bytes> units = {{0x67, 1, 2, 3}, {}, {0x68}, Bytes(200, 0x65)};
    for (uint8_t lengthSize = 1; lengthSize <= 4; ++lengthSize) {
        const AnnexBSample converted = ConvertToAnnexB(LengthPrefixed(units, lengthSize), lengthSize);
        EXPECT_TRUE(converted.isDone);
        EXPECT_EQ(converted.Stream(), AnnexB(units)) << int{lengthSize};
    }
}

TEST(ConvertToAnnexB, RefusesALengthSizeOfFive) {
    const AnnexBSample converted = ConvertToAnnexB({0, 0, 0, 0, 1, 0x65}, 5);
    EXPECT_FALSE(converted.isDone);
    EXPECT_EQ(converted.out, Bytes()) << "the output is emptied first";
}

TEST(ConvertToAnnexB, RefusesALengthSizeOfZeroWithWhichTheWalkWouldMakeNoProgress) {
    EXPECT_FALSE(ConvertToAnnexB({1, 2, 3, 4, 5}, 0).isDone);
    EXPECT_FALSE(ConvertToAnnexB({}, 0).isDone);
}

TEST(ConvertToAnnexB, LeavesAByteStreamAsItIsWhateverTheLengthSize) {
    for (const uint8_t lengthSize : {0, 2, 4, 9}) {
        const Bytes stream = {0, 0, 0, 1, 0x65};
        const AnnexBSample converted = ConvertToAnnexB(stream, lengthSize);
        EXPECT_TRUE(converted.isDone);
        EXPECT_EQ(converted.out, Bytes());
        EXPECT_EQ(converted.input, stream);
    }
}

TEST(ConvertToAnnexB, AnEmptySampleGivesAnEmptyStream) {
    const AnnexBSample converted = ConvertToAnnexB({}, 4);
    EXPECT_TRUE(converted.isDone);
    EXPECT_EQ(converted.out, Bytes());
}

TEST(ConvertToAnnexB, ALengthFieldThatPassesTheEndGivesFalseAndLeavesWhatWasAppended) {
    const AnnexBSample converted = ConvertToAnnexB({0, 1, 0x65, 0}, 2);
    EXPECT_FALSE(converted.isDone);
    EXPECT_EQ(converted.out, (Bytes{0, 0, 0, 1, 0x65}));
}

TEST(ConvertToAnnexB, AUnitThatPassesTheEndStaysAsItIsBehindFourByteFields) {
    const AnnexBSample converted = ConvertToAnnexB({0, 0, 0, 2, 0x65, 1, 0, 0, 0, 9, 0x41}, 4);
    EXPECT_TRUE(converted.isDone);
    EXPECT_EQ(converted.out, Bytes());
    EXPECT_EQ(converted.input, (Bytes{0, 0, 0, 1, 0x65, 1, 0, 0, 0, 9, 0x41}));
}

TEST(ConvertToAnnexB, AUnitThatPassesTheEndIsAppendedWithItsLengthFieldBehindShorterFields) {
    const AnnexBSample converted = ConvertToAnnexB({0, 2, 0x65, 1, 0, 9, 0x41}, 2);
    EXPECT_TRUE(converted.isDone);
    EXPECT_EQ(converted.out, (Bytes{0, 0, 0, 1, 0x65, 1, 0, 9, 0x41}));
}

TEST(ConvertToAnnexB, TheLargestLengthIsNoReasonToLookBehindTheEnd) {
    const Bytes sample = {0xFF, 0xFF, 0xFF, 0xFF, 0x65};
    const AnnexBSample converted = ConvertToAnnexB(sample, 4);
    EXPECT_TRUE(converted.isDone);
    EXPECT_EQ(converted.input, sample);
}

TEST(ConvertToAnnexB, AFirstUnitOfOneByteBehindAFourByteFieldIsTakenForAByteStream) {
    // Its length field reads 00 00 00 01: kept.
    const Bytes sample = {0, 0, 0, 1, 0x65, 0, 0, 0, 2, 0x41, 1};
    EXPECT_EQ(ConvertToAnnexB(sample, 4).input, sample);
}

TEST(ConvertToAnnexB, AllocatesTheOutputOnce) {
    const Bytes sample = LengthPrefixed({Bytes(100, 1), Bytes(100, 2), {3}}, 1);
    const AnnexBSample converted = ConvertToAnnexB(sample, 1);
    EXPECT_EQ(converted.out.capacity(), converted.out.size());
}

} // namespace
