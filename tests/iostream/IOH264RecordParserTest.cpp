#include "framework/CxAVTypes.h"
#include "iostream/H264Sets.h"

#include <gtest/gtest.h>

namespace {

constexpr uint32_t avcC = FourCC("avcC");

using Bytes = std::vector<uint8_t>;

Bytes SequenceUnit(const SequenceSet& set = {}) { return NALUnit({0x67}, set.Payload()); }

Bytes PictureUnit(bool entropyCodingMode, bool bottomFieldPicOrderPresent = false) {
    PictureSet set;
    set.entropyCodingMode = entropyCodingMode;
    set.bottomFieldPicOrderPresent = bottomFieldPicOrderPresent;
    return NALUnit({0x68}, set.Payload());
}

void Append(Bytes& record, const Bytes& bytes) { record.insert(record.end(), bytes.begin(), bytes.end()); }

/// An "avcC" record (ISO/IEC 14496-15, 5.3.3.1) with a profile and level of its own.
Bytes Record(const Bytes& sps, const std::vector<Bytes>& pps, uint8_t lengthSizeByte = 0xFF) {
    Bytes record = {1, 88, 0, 52, lengthSizeByte, 0xE1};
    Append(record, LengthPrefixed({sps}, 2));
    record.push_back(static_cast<uint8_t>(pps.size()));
    Append(record, LengthPrefixed(pps, 2));
    return record;
}

TEST(IOH264RecordParser, ReadsBothKindsOfSets) {
    H264Parsers payload;
    EXPECT_EQ(payload.ParseConfigRecord(Record(SequenceUnit(), {PictureUnit(true)}), avcC), 4u);
    EXPECT_EQ(payload.info.profile, 66);
    EXPECT_EQ(payload.info.level, 40);
    EXPECT_EQ(payload.info.width, 1920);
    EXPECT_TRUE(payload.entropyCodingMode);
}

TEST(IOH264RecordParser, TheLengthSizeIsTheLowTwoBitsOfByte4PlusOne) {
    for (uint8_t size = 1; size <= 4; ++size) {
        const Bytes record = Record(SequenceUnit(), {}, static_cast<uint8_t>(0x54 | (size - 1)));
        EXPECT_EQ(H264Parsers().ParseConfigRecord(record, avcC), size);
    }
}

TEST(IOH264RecordParser, AnotherTagIsRefused) {
    H264Parsers payload;
    EXPECT_EQ(payload.ParseConfigRecord(Record(SequenceUnit(), {}), FourCC("hvcC")), 0u);
    EXPECT_EQ(payload.info.profile, 0);
}

TEST(IOH264RecordParser, LessThanEightBytesAreRefused) {
    const Bytes record = Record(SequenceUnit(), {});
    for (size_t size = 0; size < 8; ++size) {
        H264Parsers payload;
        EXPECT_EQ(payload.ParseConfigRecord(Bytes(record.begin(), record.begin() + size), avcC), 0u);
        EXPECT_EQ(payload.info.profile, 0);
    }
}

TEST(IOH264RecordParser, ASequenceSetBelowTwoBytesIsRefused) {
    for (const Bytes& sps : {Bytes{}, Bytes{0x67}}) {
        H264Parsers payload;
        EXPECT_EQ(payload.ParseConfigRecord(Record(sps, {PictureUnit(true)}), avcC), 0u);
        EXPECT_EQ(payload.info.profile, 0);
        EXPECT_FALSE(payload.entropyCodingMode);
    }
}

TEST(IOH264RecordParser, ProfileAndLevelAreTheRecordsOwnUntilASetIsRead) {
    H264Parsers payload;
    EXPECT_EQ(payload.ParseConfigRecord(Record({0x67, 66}, {}), avcC), 4u);
    EXPECT_EQ(payload.info.profile, 88);
    EXPECT_EQ(payload.info.level, 52);
}

TEST(IOH264RecordParser, TheHeaderOfASetIsNotLookedAt) {
    Bytes sps = SequenceUnit();
    Bytes pps = PictureUnit(true);
    sps[0] = pps[0] = 0xFF;
    H264Parsers payload;
    payload.ParseConfigRecord(Record(sps, {pps}), avcC);
    EXPECT_EQ(payload.info.width, 1920);
    EXPECT_TRUE(payload.entropyCodingMode);
}

TEST(IOH264RecordParser, ABrokenSequenceSetDoesNotStopThePictureSets) {
    H264Parsers payload;
    EXPECT_EQ(payload.ParseConfigRecord(Record({0x67, 77, 0, 30, 0, 0}, {PictureUnit(true)}), avcC), 4u);
    EXPECT_EQ(payload.info.profile, 77);
    EXPECT_TRUE(payload.entropyCodingMode);
}

TEST(IOH264RecordParser, ABrokenPictureSetDoesNotStopTheNext) {
    H264Parsers payload;
    payload.ParseConfigRecord(Record(SequenceUnit(), {{0x68, 0, 0, 0}, PictureUnit(true)}), avcC);
    EXPECT_TRUE(payload.entropyCodingMode);
}

TEST(IOH264RecordParser, PictureSetsOfTwoBytesAreNotParsed) {
    H264Parsers payload;
    payload.ParseConfigRecord(Record(SequenceUnit(), {PictureUnit(true), {0x68, 0xC0}, {}}), avcC);
    EXPECT_TRUE(payload.entropyCodingMode); // 0xC0 would have cleared it
}

TEST(IOH264RecordParser, TheNumberOfPictureSetsHasEightBits) {
    std::vector<Bytes> sets(199, PictureUnit(false));
    sets.push_back(PictureUnit(true));
    H264Parsers payload;
    payload.ParseConfigRecord(Record(SequenceUnit(), sets), avcC);
    EXPECT_TRUE(payload.entropyCodingMode);
}

TEST(IOH264RecordParser, OneSequenceSetIsReadWhateverTheirNumber) {
    SequenceSet second;
    second.widthInMbs = 10;
    for (const uint8_t count : {0xE0, 0xE2}) {
        Bytes record = Record(SequenceUnit(), {PictureUnit(true)});
        record[5] = count;
        Append(record, LengthPrefixed({SequenceUnit(second)}, 2));
        H264Parsers payload;
        EXPECT_EQ(payload.ParseConfigRecord(record, avcC), 4u);
        EXPECT_EQ(payload.info.width, 1920);
        EXPECT_TRUE(payload.entropyCodingMode);
    }
}

TEST(IOH264RecordParser, ASequenceSetThatPassesTheEndIsNotRead) {
    Bytes record = Record(SequenceUnit(), {});
    record.pop_back(); // the number of picture sets
    record.pop_back(); // the set's last byte
    H264Parsers payload;
    EXPECT_EQ(payload.ParseConfigRecord(record, avcC), 4u);
    EXPECT_EQ(payload.info.profile, 88);
    EXPECT_EQ(payload.info.width, 0);
}

TEST(IOH264RecordParser, BehindASequenceSetThatPassesTheEndNothingIsTakenForAPictureSet) {
    const Bytes pps = PictureUnit(true);
    Bytes record = {1, 88, 0, 52, 0xFF, 0xE1, 1, 0}; // a set of 256 bytes
    record.push_back(static_cast<uint8_t>(pps.size()));
    Append(record, pps);
    H264Parsers payload;
    EXPECT_EQ(payload.ParseConfigRecord(record, avcC), 4u);
    EXPECT_FALSE(payload.entropyCodingMode);
}

TEST(IOH264RecordParser, ARecordThatEndsBehindItsSequenceSetHasNoPictureSets) {
    Bytes record = Record(SequenceUnit(), {});
    record.pop_back();
    H264Parsers payload;
    EXPECT_EQ(payload.ParseConfigRecord(record, avcC), 4u);
    EXPECT_EQ(payload.info.width, 1920);
}

TEST(IOH264RecordParser, APictureSetThatPassesTheEndIsNotReadAndThoseBeforeItStay) {
    Bytes record = Record(SequenceUnit(), {PictureUnit(true), PictureUnit(false, true)});
    record.pop_back();
    H264Parsers payload;
    EXPECT_EQ(payload.ParseConfigRecord(record, avcC), 4u);
    EXPECT_TRUE(payload.entropyCodingMode);
    EXPECT_FALSE(payload.bottomFieldPicOrderPresent);
}

} // namespace
