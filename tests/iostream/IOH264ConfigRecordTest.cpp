#include "iostream/BitStreamWriter.h"
#include "iostream/Conversions.h"
#include "iostream/PayloadAccess.h"

#include <gtest/gtest.h>

namespace {

using IOStream::IOH264NALPayload;

const Bytes sps = {0x67, 0x42, 0xC0, 0x1E, 0xAA};
const Bytes otherSPS = {0x67, 0x4D, 0x40, 0x28, 0xBB, 0xCC};
const Bytes pps = {0x68, 0xCE, 0x38};
const Bytes otherPPS = {0x68, 0x11};
const Bytes delimiter = {0x09, 0xF0};
const Bytes slice = {0x65, 0x88, 0x84};

/// The record of these sets as it is to be.
Bytes RecordOf(const Bytes& sequenceSet, const std::vector<Bytes>& pictureSets) {
    Bytes record = {1, sequenceSet[1], sequenceSet[2], sequenceSet[3], 0xFF, 0xE1};
    const Bytes first = LengthPrefixed({sequenceSet}, 2);
    const Bytes rest = LengthPrefixed(pictureSets, 2);
    record.insert(record.end(), first.begin(), first.end());
    record.push_back(static_cast<uint8_t>(pictureSets.size()));
    record.insert(record.end(), rest.begin(), rest.end());
    return record;
}

Extracted Extract(const Bytes& record) { return ExtractParameterSets<IOH264NALPayload>(record); }

Bytes Cut(Bytes bytes, size_t size) {
    bytes.resize(size);
    return bytes;
}

// From a record to a byte stream.

TEST(ConvertH264, SixZeroBytesAreAByteStreamAndAreCopied) {
    const Converted converted = ConvertH264({0, 0, 0, 0, 0, 0});
    EXPECT_TRUE(converted.isDone);
    EXPECT_EQ(converted.out, Bytes(6, 0));
    EXPECT_EQ(converted.lengthSize, 1);
}

TEST(ConvertH264, LeavesItsOutputsAloneBelowSixBytes) {
    const Converted converted = ConvertH264({1, 0x42, 0xC0, 0x1E, 0xFF});
    EXPECT_FALSE(converted.isDone);
    EXPECT_EQ(converted.out, untouched);
    EXPECT_EQ(converted.lengthSize, 0xEE);
}

TEST(ConvertH264, WritesAllParameterSetsBehindStartCodes) {
    const Converted converted = ConvertH264(RecordOf(sps, {pps, otherPPS}));
    EXPECT_TRUE(converted.isDone);
    EXPECT_EQ(converted.out, AnnexB({sps, pps, otherPPS}));
    EXPECT_EQ(converted.lengthSize, 4);
}

TEST(ConvertH264, TheLengthSizeIsTheLowTwoBitsOfByteFourPlusOne) {
    Bytes record = RecordOf(sps, {pps});
    for (uint8_t size = 1; size <= 4; ++size) {
        record[4] = static_cast<uint8_t>(0xFC | (size - 1));
        EXPECT_EQ(ConvertH264(record).lengthSize, size);
    }
}

TEST(ConvertH264, ReadsAsManySequenceSetsAsByteFiveSays) {
    Bytes record = RecordOf(sps, {pps});
    record[5] = 0xE2;
    const Bytes second = LengthPrefixed({otherSPS}, 2);
    record.insert(record.begin() + 8 + static_cast<ptrdiff_t>(sps.size()), second.begin(), second.end());
    EXPECT_EQ(ConvertH264(record).out, AnnexB({sps, otherSPS, pps}));
}

TEST(ConvertH264, ARecordWithoutSequenceSetsGivesFalseAndAnEmptyOutput) {
    Bytes record = RecordOf(sps, {pps});
    record[5] = 0xE0;
    const Converted converted = ConvertH264(record);
    EXPECT_FALSE(converted.isDone);
    EXPECT_EQ(converted.out, Bytes());
    EXPECT_EQ(converted.lengthSize, 4);
}

TEST(ConvertH264, ReadsAllEightBitsOfThePictureSetCount) {
    const std::vector<Bytes> many(33, otherPPS);
    EXPECT_EQ(ConvertH264(RecordOf(sps, many)).out.size(), 4 + sps.size() + 33 * (4 + otherPPS.size()));
}

TEST(ConvertH264, TakesTheExtensionOfHighProfilesForOneMoreGroup) {
    // Chroma format, bit depths and no extension sets: 253 units, of which the first passes the end.
    Bytes record = RecordOf(sps, {pps});
    record.insert(record.end(), {0xFD, 0xF8, 0xF8, 0x00});
    EXPECT_EQ(ConvertH264(record).out, AnnexB({sps, pps}));
}

TEST(ConvertH264, CopiesWhatBytesBehindTheLastPictureSetDescribe) {
    Bytes record = RecordOf(sps, {pps});
    record.insert(record.end(), {1, 0, 2, 0x55, 0x66, 0});
    EXPECT_EQ(ConvertH264(record).out, AnnexB({sps, pps, {0x55, 0x66}}));
}

TEST(ConvertH264, EndsBeforeAUnitThatPassesTheEnd) {
    const Bytes record = RecordOf(sps, {pps, otherPPS});
    EXPECT_EQ(ConvertH264(Cut(record, record.size() - 1)).out, AnnexB({sps, pps}));
    EXPECT_EQ(ConvertH264(Cut(record, record.size() - otherPPS.size() - 1)).out, AnnexB({sps, pps}));
    EXPECT_EQ(ConvertH264(Cut(record, 8 + sps.size())).out, AnnexB({sps}));
    EXPECT_FALSE(ConvertH264(Cut(record, 10)).isDone);
}

// From a byte stream to a record.

TEST(ConvertToAVCC, WritesTheParameterSetsAsTheyStandInTheStream) {
    const Converted converted = ConvertToAVCC(AnnexB({delimiter, sps, pps, slice}));
    EXPECT_TRUE(converted.isDone);
    EXPECT_EQ(converted.out, RecordOf(sps, {pps}));
}

TEST(ConvertToAVCC, WritesNoExtensionForHighProfiles) {
    const Bytes high = {0x67, 100, 0, 40, 0xAC};
    EXPECT_EQ(ConvertToAVCC(AnnexB({high, pps, slice})).out, RecordOf(high, {pps}));
}

TEST(ConvertToAVCC, TheSecondOfTwoSequenceSetsGoesIntoTheRecord) {
    EXPECT_EQ(ConvertToAVCC(AnnexB({sps, otherSPS, pps, slice})).out, RecordOf(otherSPS, {pps}));
}

TEST(ConvertToAVCC, PictureSetsBehindTheSecondDelimiterAreNotInTheRecord) {
    const Bytes stream = AnnexB({delimiter, sps, pps, slice, delimiter, otherPPS, slice});
    EXPECT_EQ(ConvertToAVCC(stream).out, RecordOf(sps, {pps}));
}

TEST(ConvertToAVCC, PictureSetsOfAllUnitsBeforeTheSecondDelimiterAreInTheRecord) {
    const Bytes stream = AnnexB({sps, pps, delimiter, otherPPS, slice, delimiter, pps});
    EXPECT_EQ(ConvertToAVCC(stream).out, RecordOf(sps, {pps, otherPPS}));
}

TEST(ConvertToAVCC, SequenceSetsAreTakenFromTheWholeStream) {
    const Bytes stream = AnnexB({delimiter, sps, pps, delimiter, slice, delimiter, otherSPS});
    EXPECT_EQ(ConvertToAVCC(stream).out, RecordOf(otherSPS, {pps}));
}

TEST(ConvertToAVCC, ProfileAndLevelAreReadWithoutEmulationPreventionAndTheSetIsCopiedWithIt) {
    const Bytes escaped = {0x67, 0x42, 0x00, 0x00, 0x03, 0x01, 0x77};
    const Bytes record = ConvertToAVCC(AnnexB({escaped, pps})).out;
    ASSERT_GE(record.size(), 8 + escaped.size());
    EXPECT_EQ(Bytes(record.begin(), record.begin() + 8), (Bytes{1, 0x42, 0, 0, 0xFF, 0xE1, 0, 7}));
    EXPECT_EQ(Bytes(record.begin() + 8, record.begin() + 15), escaped);
}

TEST(ConvertToAVCC, ReplacesAnEarlierRecord) {
    EXPECT_EQ(ConvertToAVCC(AnnexB({otherSPS, pps}), RecordOf(sps, {otherPPS})).out,
              RecordOf(otherSPS, {pps}));
}

TEST(ConvertToAVCC, KeepsTheSequenceSetOfAnEarlierRecordIfTheStreamHasNone) {
    const Converted converted = ConvertToAVCC(AnnexB({otherPPS, pps, slice}), RecordOf(sps, {pps}));
    EXPECT_TRUE(converted.isDone);
    EXPECT_EQ(converted.out, RecordOf(sps, {otherPPS, pps}));
}

TEST(ConvertToAVCC, RefusesAnEarlierRecordWhoseSequenceSetIsNotWhole) {
    const Bytes record = RecordOf(sps, {pps});
    for (const size_t size : {size_t{1}, size_t{7}, 7 + sps.size()}) {
        const Converted converted = ConvertToAVCC(AnnexB({pps}), Cut(record, size));
        EXPECT_FALSE(converted.isDone);
        EXPECT_EQ(converted.out, Cut(record, size));
    }
}

TEST(ConvertToAVCC, WithoutASequenceSetAnywhereTheResultIsFalse) {
    const Converted converted = ConvertToAVCC(AnnexB({pps, slice}));
    EXPECT_FALSE(converted.isDone);
    EXPECT_EQ(converted.out, Bytes());
}

TEST(ConvertToAVCC, WithoutAPictureSetTheOutputIsLeftAlone) {
    const Converted converted = ConvertToAVCC(AnnexB({sps, slice}), untouched);
    EXPECT_FALSE(converted.isDone);
    EXPECT_EQ(converted.out, untouched);
}

TEST(ConvertToAVCC, ASequenceSetThatIsTooShortLeavesTheOutputAlone) {
    const Bytes record = RecordOf(sps, {pps});
    // Of 67 00 00 03 the reader does not deliver the second zero.
    for (const Bytes& tooShort : {Bytes{0x67}, Bytes{0x67, 0x42, 0xC0}, Bytes{0x67, 0, 0, 3}}) {
        const Converted converted = ConvertToAVCC(AnnexB({pps, tooShort, slice}), record);
        EXPECT_FALSE(converted.isDone);
        EXPECT_EQ(converted.out, record);
    }
}

TEST(ConvertToAVCC, NoBytesHoldNoRecord) {
    EXPECT_FALSE(ConvertToAVCC({}).isDone);
    EXPECT_FALSE(ConvertToAVCC({0, 0, 0, 1}).isDone);
}

TEST(ConvertToAVCC, OfMoreThan255PictureSetsTheCountHasTheLowBits) {
    std::vector<Bytes> units(257, otherPPS);
    units.insert(units.begin(), sps);
    const Bytes record = ConvertToAVCC(AnnexB(units)).out;
    ASSERT_EQ(record.size(), 9 + sps.size() + 257 * (2 + otherPPS.size()));
    EXPECT_EQ(record[8 + sps.size()], 1);
}

TEST(GetConfigRecord, OfH264GivesTheRecordAndItsTag) {
    H264Payload payload;
    payload.Append(AnnexB({sps, pps, slice}));
    Bytes record;
    uint32_t fourCC = 0;
    EXPECT_TRUE(payload.GetConfigRecord(record, fourCC));
    EXPECT_EQ(record, RecordOf(sps, {pps}));
    EXPECT_EQ(fourCC, 0x61766343U); // avcC
}

TEST(GetConfigRecord, OfH264LeavesTheTagAloneWithoutARecord) {
    H264Payload payload;
    Bytes record;
    uint32_t fourCC = 7;
    EXPECT_FALSE(payload.GetConfigRecord(record, fourCC));
    EXPECT_EQ(fourCC, 7U);
}

// The places of the parameter sets in a record.

TEST(ExtractH264ParameterSets, AppendsTheSequenceSetAndAllPictureSets) {
    const Extracted extracted = Extract(RecordOf(sps, {pps, otherPPS}));
    EXPECT_EQ(extracted.lengthSize, 4U);
    EXPECT_EQ(extracted.units, (std::vector<Bytes>{sps, pps, otherPPS}));
}

TEST(ExtractH264ParameterSets, KeepsWhatTheOutputsHold) {
    const Bytes record = RecordOf(sps, {pps});
    std::vector<const uint8_t*> pointers = {nullptr};
    std::vector<uint64_t> sizes = {99};
    IOH264NALPayload::s_ExtractParameterSets(record, pointers, sizes);
    EXPECT_EQ(pointers, (std::vector<const uint8_t*>{nullptr, record.data() + 8, record.data() + 16}));
    EXPECT_EQ(sizes, (std::vector<uint64_t>{99, sps.size(), pps.size()}));
}

TEST(ExtractH264ParameterSets, DoesNotReadTheNumberOfSequenceSets) {
    Bytes record = RecordOf(sps, {pps});
    record[5] = 0xE0;
    EXPECT_EQ(Extract(record).units, (std::vector<Bytes>{sps, pps}));
}

TEST(ExtractH264ParameterSets, WithoutPictureSetsTheResultIsZeroAndTheSequenceSetIsAppended) {
    const Extracted extracted = Extract(RecordOf(sps, {}));
    EXPECT_EQ(extracted.lengthSize, 0U);
    EXPECT_EQ(extracted.units, std::vector<Bytes>{sps});
}

TEST(ExtractH264ParameterSets, ARecordBelowEightBytesIsRefused) {
    const Extracted extracted = Extract({1, 0x42, 0xC0, 0x1E, 0xFF, 0xE1, 0});
    EXPECT_EQ(extracted.lengthSize, 0U);
    EXPECT_TRUE(extracted.units.empty());
}

TEST(ExtractH264ParameterSets, EndsAtTheEndOfTheRecordWithWhatWasGathered) {
    const Bytes record = RecordOf(sps, {pps, otherPPS});
    EXPECT_EQ(Extract(Cut(record, record.size() - 1)).units, (std::vector<Bytes>{sps, pps}));
    EXPECT_EQ(Extract(Cut(record, record.size() - 1)).lengthSize, 4U);
    EXPECT_EQ(Extract(Cut(record, 8 + sps.size())).units, std::vector<Bytes>{sps});
    EXPECT_EQ(Extract(Cut(record, 8 + sps.size())).lengthSize, 0U);
    EXPECT_TRUE(Extract(Cut(record, 7 + sps.size())).units.empty());
    EXPECT_EQ(Extract(Cut(record, 7 + sps.size())).lengthSize, 0U);
}

} // namespace
