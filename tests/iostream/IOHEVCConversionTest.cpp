#include "iostream/Conversions.h"
#include "iostream/HEVCSyntax.h"
#include "iostream/PayloadAccess.h"

#include <gtest/gtest.h>

namespace {

using IOStream::IOHEVCNALPayload;

const Bytes vps = {0x40, 0x01, 0x0C};
const Bytes sps = HEVCSequenceSet().Unit();
const Bytes pps = HEVCPictureSet{.hasTiles = true}.Unit();
const Bytes prefixSEI = {0x4E, 0x01, 0x81};
const Bytes suffixSEI = {0x50, 0x01, 0x82};
const Bytes slice = {0x26, 0x01, 0xAF, 0x11};

struct RecordArray {
    uint8_t type;
    std::vector<Bytes> units;
};

Bytes ArraysOf(const std::vector<RecordArray>& arrays) {
    Bytes bytes;
    for (const RecordArray& array : arrays) {
        bytes.insert(bytes.end(),
                     {static_cast<uint8_t>(array.type | 0x80), 0, static_cast<uint8_t>(array.units.size())});
        const Bytes units = LengthPrefixed(array.units, 2);
        bytes.insert(bytes.end(), units.begin(), units.end());
    }
    return bytes;
}

/// A record with nothing else in its header than the version, a length size of 4 and the number of arrays.
Bytes RecordOf(const std::vector<RecordArray>& arrays) {
    Bytes record(23, 0);
    record[0] = 1;
    record[21] = 3;
    record[22] = static_cast<uint8_t>(arrays.size());
    const Bytes rest = ArraysOf(arrays);
    record.insert(record.end(), rest.begin(), rest.end());
    return record;
}

Bytes Cut(Bytes bytes, size_t size) {
    bytes.resize(size);
    return bytes;
}

Bytes Behind(const Bytes& bytes, size_t offset) {
    return {bytes.begin() + static_cast<ptrdiff_t>(offset), bytes.end()};
}

Extracted Extract(const Bytes& record) { return ExtractParameterSets<IOHEVCNALPayload>(record); }

TEST(IsValidNalType, ParameterSetsAndSEIAreAndNothingElse) {
    std::vector<int> valid;
    for (int type = 0; type < 256; ++type)
        if (IOHEVCNALPayload::s_IsValidNalType(static_cast<uint8_t>(type))) valid.push_back(type);
    EXPECT_EQ(valid, (std::vector<int>{32, 33, 34, 39, 40}));
}

// From a record to a byte stream.

TEST(ConvertHEVC, WritesTheUnitsOfAllArraysBehindStartCodes) {
    const Converted converted = ConvertHEVC(RecordOf({{32, {vps}}, {33, {sps}}, {34, {pps, pps}}}));
    EXPECT_TRUE(converted.isDone);
    EXPECT_EQ(converted.out, AnnexB({vps, sps, pps, pps}));
    EXPECT_EQ(converted.lengthSize, 4);
}

TEST(ConvertHEVC, PassesOverUnitsOfOtherTypes) {
    EXPECT_EQ(ConvertHEVC(RecordOf({{35, {slice}}, {39, {prefixSEI}}, {41, {slice}}})).out,
              AnnexB({prefixSEI}));
}

TEST(ConvertHEVC, TheTypeIsTheLowSixBitsOfTheArraysHeader) {
    Bytes record = RecordOf({{33, {sps}}});
    for (const uint8_t header : {0x21, 0xA1, 0x61}) {
        record[23] = header;
        EXPECT_EQ(ConvertHEVC(record).out, AnnexB({sps}));
    }
}

TEST(ConvertHEVC, LeavesItsOutputsAloneBelow23Bytes) {
    const Converted converted = ConvertHEVC(Bytes(22, 1));
    EXPECT_FALSE(converted.isDone);
    EXPECT_EQ(converted.out, untouched);
    EXPECT_EQ(converted.lengthSize, 0xEE);
}

TEST(ConvertHEVC, DataThatBeginsWithZeroIsAByteStreamAndIsCopied) {
    const Bytes stream = AnnexB({vps, sps, pps});
    const Converted converted = ConvertHEVC(stream);
    EXPECT_TRUE(converted.isDone);
    EXPECT_EQ(converted.out, stream);
    EXPECT_EQ(converted.lengthSize, (stream[21] & 3) + 1);
}

TEST(ConvertHEVC, ARecordWithoutArraysGivesFalseAndAnEmptyOutput) {
    const Converted converted = ConvertHEVC(RecordOf({}));
    EXPECT_FALSE(converted.isDone);
    EXPECT_EQ(converted.out, Bytes());
    EXPECT_EQ(converted.lengthSize, 4);
}

TEST(ConvertHEVC, ALengthOrAUnitThatPassesTheEndEndsTheWholeWalk) {
    Bytes record = RecordOf({{32, {vps}}, {33, {sps}}, {34, {pps}}});
    const size_t lengthOfSPS = 23 + 3 + 2 + vps.size() + 3;
    record[lengthOfSPS] = 0xFF;
    EXPECT_EQ(ConvertHEVC(record).out, AnnexB({vps}));
    EXPECT_EQ(ConvertHEVC(Cut(record, lengthOfSPS + 1)).out, AnnexB({vps}));
    EXPECT_EQ(ConvertHEVC(Cut(record, lengthOfSPS - 1)).out, AnnexB({vps})) << "inside an array's header";
}

// From a byte stream to a record.

TEST(ConvertToHVCC, WritesTheArraysInAscendingOrderOfType) {
    const Converted converted =
        ConvertToHVCC(AnnexB({prefixSEI, pps, sps, vps, pps, slice, suffixSEI, slice}));
    ASSERT_TRUE(converted.isDone);
    ASSERT_GT(converted.out.size(), 23U);
    EXPECT_EQ(converted.out[22], 5);
    EXPECT_EQ(Behind(converted.out, 23),
              ArraysOf({{32, {vps}}, {33, {sps}}, {34, {pps, pps}}, {39, {prefixSEI}}, {40, {suffixSEI}}}));
}

TEST(ConvertToHVCC, WritesTheHeaderThatTheParsersFilled) {
    const Bytes record = ConvertToHVCC(AnnexB({vps, sps, pps, slice})).out;
    ASSERT_GT(record.size(), 23U);
    EXPECT_EQ(record[0], 1);
    EXPECT_EQ(record[1], 1) << "general_profile_idc";
    EXPECT_EQ(Bytes(record.begin() + 2, record.begin() + 6), (Bytes{0, 0, 0, 0x60})) << "little-endian";
    EXPECT_EQ(record[12], 93) << "general_level_idc";
    EXPECT_EQ(record[15], 2) << "parallelismType of tiles";
    EXPECT_EQ(record[21] & 3, 3);
}

TEST(ConvertToHVCC, AFirstStartCodeOfThreeBytesGivesALengthSizeOfThree) {
    const Converted converted = ConvertToHVCC(AnnexB({vps, sps, pps, slice}, 3));
    ASSERT_TRUE(converted.isDone);
    EXPECT_EQ(converted.out[21] & 3, 2);
}

TEST(ConvertToHVCC, OnlyTheFirstStartCodeTellsTheLengthSize) {
    Bytes stream = AnnexB({vps});
    const Bytes rest = AnnexB({sps, pps, slice}, 3);
    stream.insert(stream.end(), rest.begin(), rest.end());
    EXPECT_EQ(ConvertToHVCC(stream).out[21] & 3, 3);
}

TEST(ConvertToHVCC, APictureSetThatIsTheLastUnitIsNotParsedSoParallelismTypeStaysZero) {
    const Converted converted = ConvertToHVCC(AnnexB({vps, sps, pps}));
    ASSERT_TRUE(converted.isDone);
    EXPECT_EQ(converted.out[15], 0);
    EXPECT_EQ(Behind(converted.out, 23), ArraysOf({{32, {vps}}, {33, {sps}}, {34, {pps}}}))
        << "it is in the record all the same";
}

TEST(ConvertToHVCC, ASequenceSetThatIsTheLastUnitIsNotParsedSoThereIsNoProfile) {
    const Converted converted = ConvertToHVCC(AnnexB({vps, pps, sps}));
    EXPECT_FALSE(converted.isDone);
    EXPECT_EQ(converted.out, untouched);
}

TEST(ConvertToHVCC, AProfileOfZeroLeavesTheOutputAlone) {
    const Bytes withoutProfile = HEVCSequenceSet{.profile = 0x20}.Unit();
    const Converted converted = ConvertToHVCC(AnnexB({vps, withoutProfile, pps, slice}));
    EXPECT_FALSE(converted.isDone);
    EXPECT_EQ(converted.out, untouched);
}

TEST(ConvertToHVCC, DataWithoutAStartCodeAtTheBeginningIsRefused) {
    const Bytes stream = AnnexB({vps, sps, pps, slice});
    Bytes shifted = stream;
    shifted.insert(shifted.begin(), 0);
    for (const Bytes& data : {Bytes(), Bytes{0, 0, 1}, Bytes{0, 0, 0, 2}, shifted, Behind(stream, 2)}) {
        const Converted converted = ConvertToHVCC(data);
        EXPECT_FALSE(converted.isDone);
        EXPECT_EQ(converted.out, untouched);
    }
}

TEST(ConvertToHVCC, DataOfMoreThan32BitsIsRefusedUnread) {
    const Bytes start = {0, 0, 0, 1};
    Bytes out = untouched;
    EXPECT_FALSE(IOHEVCNALPayload::s_ConvertToHVCC(start.data(), uint64_t{1} << 32, out));
    EXPECT_EQ(out, untouched);
}

TEST(GetConfigRecord, OfHEVCGivesTheRecordAndItsTag) {
    HEVCPayload payload;
    const Bytes stream = AnnexB({vps, sps, pps, slice});
    payload.Append(stream);
    Bytes record;
    uint32_t fourCC = 0;
    EXPECT_TRUE(payload.GetConfigRecord(record, fourCC));
    EXPECT_EQ(record, ConvertToHVCC(stream).out);
    EXPECT_EQ(fourCC, 0x68766343U); // hvcC
}

TEST(GetConfigRecord, OfHEVCLeavesTheTagAloneWithoutARecord) {
    HEVCPayload payload;
    Bytes record;
    uint32_t fourCC = 7;
    EXPECT_FALSE(payload.GetConfigRecord(record, fourCC));
    EXPECT_EQ(fourCC, 7U);
}

// From a byte stream to a sample.

TEST(ConvertToHVCCStream, WritesUnitsOfAllTypesBehindLengthFieldsOfFourBytes) {
    const std::vector<Bytes> units = {vps, sps, pps, prefixSEI, slice, slice};
    EXPECT_EQ(ConvertToHVCCStream(AnnexB(units)), LengthPrefixed(units));
    EXPECT_EQ(ConvertToHVCCStream(AnnexB(units, 3)), LengthPrefixed(units));
}

TEST(ConvertToHVCCStream, ZerosBeforeAStartCodeStayWithTheUnitBeforeIt) {
    EXPECT_EQ(ConvertToHVCCStream({0, 0, 1, 0x26, 1, 0, 0, 0, 0, 1, 0x28, 1, 7}),
              LengthPrefixed({{0x26, 1, 0}, {0x28, 1, 7}}));
}

TEST(ConvertToHVCCStream, AHeaderWithTheForbiddenBitEndsTheSearchAndStaysWithTheUnitBeforeIt) {
    EXPECT_EQ(ConvertToHVCCStream(AnnexB({{0x26, 1}, {0x80, 1}, {0x28, 1}})),
              LengthPrefixed({{0x26, 1, 0, 0, 0, 1, 0x80, 1, 0, 0, 0, 1, 0x28, 1}}));
}

TEST(ConvertToHVCCStream, FindsTheUnitsThatAPayloadFinds) {
    const Bytes stream = {0, 0, 1, 0x26, 1, 0, 0, 0, 1, 0x28, 0, 0, 1, 2, 0, 0, 1, 0x42, 1, 0, 0, 1};
    HEVCPayload payload(false);
    payload.Append(stream);
    std::vector<Bytes> units;
    for (uint32_t index = 0; index < payload.entries.size(); ++index) {
        const auto unit = payload.Unit(index);
        units.emplace_back(unit.begin(), unit.end());
    }
    EXPECT_EQ(ConvertToHVCCStream(stream), LengthPrefixed(units));
}

TEST(ConvertToHVCCStream, UnitsOfOneByteBehindShortStartCodesFitAlthoughTheSampleIsLarger) {
    const std::vector<Bytes> units(200000, Bytes{0x26});
    Bytes stream = AnnexB(units, 3);
    stream.push_back(1); // the last unit needs a second byte to be found
    const auto sample = ConvertToHVCCStream(stream);
    ASSERT_TRUE(sample);
    EXPECT_EQ(sample->size(), units.size() * 5 + 1);
}

TEST(ConvertToHVCCStream, WithoutAUnitNothingIsAllocated) {
    EXPECT_FALSE(ConvertToHVCCStream({0, 0, 0, 1}));
    EXPECT_FALSE(ConvertToHVCCStream({0, 0, 0, 1, 0x80, 0}));
    EXPECT_FALSE(ConvertToHVCCStream({0, 0, 1, 0x80, 0}));
}

TEST(ConvertToHVCCStream, DataWithoutAStartCodeAtTheBeginningIsRefused) {
    EXPECT_FALSE(ConvertToHVCCStream({}));
    EXPECT_FALSE(ConvertToHVCCStream({0, 0, 1}));
    EXPECT_FALSE(ConvertToHVCCStream({1, 0, 0, 1, 0x26, 1, 2}));
}

TEST(ConvertToHVCCStream, DataOfMoreThan32BitsIsRefusedUnread) {
    const Bytes start = {0, 0, 0, 1};
    uint8_t* block = nullptr;
    uint64_t size = 77;
    EXPECT_FALSE(IOHEVCNALPayload::s_ConvertToHVCCStream(start.data(), uint64_t{1} << 32, block, size));
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(size, 77U);
}

// The places of the units in a record.

TEST(ExtractHEVCParameterSets, AppendsTheUnitsOfValidTypes) {
    const Extracted extracted =
        Extract(RecordOf({{32, {vps}}, {33, {sps}}, {34, {pps, pps}}, {35, {slice}}, {40, {suffixSEI}}}));
    EXPECT_EQ(extracted.lengthSize, 4U);
    EXPECT_EQ(extracted.units, (std::vector<Bytes>{vps, sps, pps, pps, suffixSEI}));
}

TEST(ExtractHEVCParameterSets, TooShortARecordOrOneWithoutArraysIsRefused) {
    EXPECT_EQ(Extract(Bytes(22, 1)).lengthSize, 0U);
    EXPECT_EQ(Extract(RecordOf({})).lengthSize, 0U);
}

TEST(ExtractHEVCParameterSets, TheLengthSizeIsTheLowTwoBitsOfByte21PlusOne) {
    Bytes record = RecordOf({{33, {sps}}});
    record[21] = 0xFD;
    EXPECT_EQ(Extract(record).lengthSize, 2U);
}

TEST(ExtractHEVCParameterSets, EndsAtTheEndOfTheRecordWithWhatWasGathered) {
    const Bytes record = RecordOf({{32, {vps}}, {33, {sps}}});
    const Extracted extracted = Extract(Cut(record, record.size() - 1));
    EXPECT_EQ(extracted.lengthSize, 4U);
    EXPECT_EQ(extracted.units, std::vector<Bytes>{vps});
    EXPECT_TRUE(Extract(Cut(record, 23)).units.empty());
    EXPECT_EQ(Extract(Cut(record, 23)).lengthSize, 4U);
}

} // namespace
