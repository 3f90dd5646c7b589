// Configuration records and byte streams of parameter sets.

#include "codecs/WMFConfigRecords.h"

#include "codecs/wmf/ConversionCheck.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

namespace {

using CxWMF::AnnexBFromAvcRecord;
using CxWMF::AnnexBFromHevcRecord;
using CxWMF::AvcRecordFromAnnexB;
using Bytes = std::vector<uint8_t>;

const Bytes record = {1, 0x4d, 0, 30, 0xff, 0xe1, 0, 4, 0x67, 0x4d, 0, 30, 1, 0, 2, 0x68, 0xee};
const Bytes stream = {0, 0, 0, 1, 0x67, 0x4d, 0, 30, 0, 0, 0, 1, 0x68, 0xee};

void Append(Bytes& bytes, const Bytes& more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

void AppendUnit(Bytes& bytes, const Unit& unit) {
    Append(bytes, {static_cast<uint8_t>(unit.size() >> 8), static_cast<uint8_t>(unit.size())});
    Append(bytes, unit);
}

void AppendBehindStartCode(Bytes& bytes, const Unit& unit) {
    Append(bytes, {0, 0, 0, 1});
    Append(bytes, unit);
}

/// An "hvcC" record up to its arrays.
Bytes HevcRecord(uint8_t arrays) {
    Bytes bytes(22, 1);
    bytes.push_back(arrays);
    return bytes;
}

TEST(WMFConfigRecords, AnAvcRecordBecomesAByteStreamAndBack) {
    EXPECT_EQ(AnnexBFromAvcRecord(record), stream);
    EXPECT_EQ(AvcRecordFromAnnexB(stream), record);
}

TEST(WMFConfigRecords, RandomUnitListsComeOutOfAnAvcRecord) {
    std::mt19937 random = MakeRandom();
    for (int round = 0; round < 200; ++round) {
        const std::vector<Unit> sequences = RandomUnits(random() % 32, 20, random);
        const std::vector<Unit> pictures = RandomUnits(random() % 40, 20, random);
        Bytes bytes = {1, 2, 3, 4, 0xff, static_cast<uint8_t>(0xe0 | sequences.size())};
        Bytes expected;
        for (const Unit& unit : sequences) {
            AppendUnit(bytes, unit);
            AppendBehindStartCode(expected, unit);
        }
        bytes.push_back(static_cast<uint8_t>(pictures.size()));
        for (const Unit& unit : pictures) {
            AppendUnit(bytes, unit);
            AppendBehindStartCode(expected, unit);
        }
        // What follows, as in records of high profiles, is not read.
        Append(bytes, {0xfd, 0xf8, 0xf8, 0});
        ASSERT_EQ(AnnexBFromAvcRecord(bytes), expected);
    }
}

TEST(WMFConfigRecords, RandomUnitListsComeOutOfAnHevcRecord) {
    std::mt19937 random = MakeRandom();
    constexpr uint8_t types[] = {32, 33, 34, 39, 40};
    for (int round = 0; round < 200; ++round) {
        Bytes bytes = HevcRecord(static_cast<uint8_t>(random() % 6));
        Bytes expected;
        for (int array = 0; array < bytes[22]; ++array) {
            const std::vector<Unit> units = RandomUnits(random() % 5, 20, random);
            Append(bytes, {static_cast<uint8_t>((random() % 4) << 6 | types[random() % 5]), 0,
                           static_cast<uint8_t>(units.size())});
            for (const Unit& unit : units) {
                AppendUnit(bytes, unit);
                AppendBehindStartCode(expected, unit);
            }
        }
        ASSERT_EQ(AnnexBFromHevcRecord(bytes), expected);
    }
}

TEST(WMFConfigRecords, RandomParameterSetsBecomeAnAvcRecord) {
    std::mt19937 random = MakeRandom();
    for (int round = 0; round < 200; ++round) {
        std::vector<Unit> units = RandomUnits(2 + random() % 2, 30, random);
        units[0].insert(units[0].begin(), {0x67, 0x4d, 0x40, 0x1e});
        Bytes bytes;
        for (const Unit& unit : units)
            AppendBehindStartCode(bytes, unit);
        Bytes expected = {1, 0x4d, 0x40, 0x1e, 0xff, 0xe1};
        AppendUnit(expected, units[0]);
        expected.push_back(1);
        AppendUnit(expected, units[1]);
        ASSERT_EQ(AvcRecordFromAnnexB(bytes), expected);
    }
}

TEST(WMFConfigRecords, AnyBytesKeepThePromises) {
    std::mt19937 random = MakeRandom();
    for (int round = 0; round < 3000; ++round) {
        Bytes bytes(random() % 64);
        for (uint8_t& byte : bytes)
            byte = static_cast<uint8_t>(random() % 4 == 0 ? random() : random() % 2);
        ASSERT_NO_THROW(CheckRecords(bytes));
    }
}

TEST(WMFConfigRecords, ARecordThatIsAByteStreamAlreadyIsCopied) {
    EXPECT_EQ(AnnexBFromAvcRecord(stream), stream);
    EXPECT_EQ(AnnexBFromHevcRecord(stream), stream);
    EXPECT_EQ(AnnexBFromAvcRecord(Bytes{0, 0, 0, 1}), Bytes());
}

TEST(WMFConfigRecords, WithoutASequenceParameterSetTheNextByteCountsPictureParameterSets) {
    EXPECT_EQ(AnnexBFromAvcRecord(Bytes{1, 2, 3, 4, 0xff, 0xe0, 1, 0, 2, 0x68, 0xee}),
              (Bytes{0, 0, 0, 1, 0x68, 0xee}));
}

TEST(WMFConfigRecords, AnAvcRecordThatIsCutOffGivesTheUnitsThatAreWhole) {
    const Bytes sequenceOnly = {0, 0, 0, 1, 0x67, 0x4d, 0, 30};
    for (size_t size = 0; size < record.size(); ++size)
        EXPECT_EQ(AnnexBFromAvcRecord(std::span(record).first(size)), size < 12 ? Bytes() : sequenceOnly)
            << size;
}

TEST(WMFConfigRecords, LengthsThatLieEndTheConversion) {
    EXPECT_EQ(AnnexBFromAvcRecord(Bytes{1, 2, 3, 4, 5, 0xe2, 0, 1, 0x67, 0xff, 0xff, 0x68}),
              (Bytes{0, 0, 0, 1, 0x67}));
    Bytes hevc = HevcRecord(255);
    Append(hevc, {33, 0xff, 0xff, 0, 1, 0x42, 0xff, 0xff, 1});
    EXPECT_EQ(AnnexBFromHevcRecord(hevc), (Bytes{0, 0, 0, 1, 0x42}));
}

TEST(WMFConfigRecords, AnotherTypeEndsAnHevcRecord) {
    Bytes bytes = HevcRecord(3);
    Append(bytes, {32, 0, 1, 0, 1, 0x40});
    Append(bytes, {35, 0, 1, 0, 1, 0x46});
    Append(bytes, {33, 0, 1, 0, 1, 0x42});
    EXPECT_EQ(AnnexBFromHevcRecord(bytes), (Bytes{0, 0, 0, 1, 0x40}));
}

TEST(WMFConfigRecords, DataThatDoNotBeginWithALongStartCodeAreCopied) {
    for (const Bytes& bytes : {Bytes{}, Bytes{0, 0, 1, 0x67, 1, 2, 3}, record})
        EXPECT_EQ(AvcRecordFromAnnexB(bytes), bytes);
}

TEST(WMFConfigRecords, ShortStartCodesStayPartOfAUnit) {
    EXPECT_EQ(AvcRecordFromAnnexB(Bytes{0, 0, 0, 1, 0x67, 1, 2, 3, 0, 0, 0, 1, 0x68, 0, 0, 1, 9}),
              (Bytes{1, 1, 2, 3, 0xff, 0xe1, 0, 4, 0x67, 1, 2, 3, 1, 0, 5, 0x68, 0, 0, 1, 9}));
}

TEST(WMFConfigRecords, WithoutBothParameterSetsThereIsNoRecord) {
    EXPECT_EQ(AvcRecordFromAnnexB(Bytes{0, 0, 0, 1}), Bytes());
    EXPECT_EQ(AvcRecordFromAnnexB(Bytes{0, 0, 0, 1, 0x67, 1, 2, 3}), Bytes());
    EXPECT_EQ(AvcRecordFromAnnexB(Bytes{0, 0, 0, 1, 0x67, 1, 2, 3, 0, 0, 0, 1}), Bytes());
    EXPECT_EQ(AvcRecordFromAnnexB(Bytes{0, 0, 0, 1, 0x67, 1, 2, 0, 0, 0, 1, 0x68}), Bytes());
}

TEST(WMFConfigRecords, ParameterSetsThatNoLengthHoldsGiveNoRecord) {
    Bytes bytes = {0, 0, 0, 1};
    bytes.resize(4 + 65536, 7);
    Append(bytes, {0, 0, 0, 1, 0x68});
    EXPECT_EQ(AvcRecordFromAnnexB(bytes), Bytes());
    bytes.erase(bytes.begin() + 4);
    EXPECT_EQ(AvcRecordFromAnnexB(bytes).size(), 65535U + 12);
}

} // namespace
