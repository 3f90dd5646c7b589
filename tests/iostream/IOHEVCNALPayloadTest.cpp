#include "iostream/HEVCSyntax.h"
#include "iostream/PayloadAccess.h"
#include "support/GuardedBytes.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace IOStream;

namespace {

constexpr uint32_t hvcc = 0x68766343;
using Units = std::vector<std::vector<uint8_t>>;

void Append16(std::vector<uint8_t>& bytes, size_t value) {
    bytes.push_back(static_cast<uint8_t>(value >> 8));
    bytes.push_back(static_cast<uint8_t>(value));
}

/// A record with an array for each unit.
std::vector<uint8_t> Record(const Units& units) {
    std::vector<uint8_t> record(23);
    record[0] = 1;
    record[1] = 0x22;
    record[12] = 150;
    record[21] = 1; // length fields of two bytes
    record[22] = static_cast<uint8_t>(units.size());
    for (const std::vector<uint8_t>& unit : units) {
        record.push_back(static_cast<uint8_t>(0xC0 | unit[0] >> 1)); // the upper bits are not the type's
        Append16(record, 1);
        Append16(record, unit.size());
        record.insert(record.end(), unit.begin(), unit.end());
    }
    return record;
}

/// A set with a bit of everything.
HEVCSequenceSet RichSet() {
    const HEVCVui vui = {
        .aspect = [](BitStreamWriter& bits) { bits.U(8, 14); },
        .videoSignal =
            [](BitStreamWriter& bits) { bits.U(3, 5).Flag(true).Flag(true).U(8, 9).U(8, 16).U(8, 9); },
        .hasFrameFieldInfo = true,
        .timing = HEVCTiming(1001, 60000),
        .restrictions = [](BitStreamWriter& bits) { bits.U(3, 0).UE(300).UE(0).UE(0).UE(15).UE(15); }};
    return {.profile = 4,
            .chromaFormat = 2,
            .width = 1920,
            .height = 1088,
            .window = [](BitStreamWriter& bits) { bits.UE(1).UE(1).UE(2).UE(6); },
            .lumaDepthMinus8 = 2,
            .chromaDepthMinus8 = 2,
            .shortTerm = [](BitStreamWriter& bits) { bits.UE(1).UE(1).UE(0).UE(0).Flag(true); },
            .vui = vui};
}

/// Parses a unit at the end of readable memory as the scanner would.
void ParseAtGuard(HEVCPayload& payload, const std::vector<uint8_t>& unit) {
    const GuardedBytes guarded(unit.size(), GuardedBytes::Guard::Behind);
    std::memcpy(guarded.data(), unit.data(), unit.size());
    try {
        payload.ParseNAL(payload.GetNALType(unit.at(0)), guarded.data() + 1,
                         static_cast<uint32_t>(unit.size() - 1));
    } catch (const std::exception& error) {
        const std::string what = error.what();
        EXPECT_TRUE(what == "No data in buffer" || what == "Illegal data in buffer") << what;
    }
}

} // namespace

TEST(IOHEVCNALPayload, StartsWithAVersionOneRecord) {
    const HEVCPayload payload;
    EXPECT_EQ(payload.record[0], 1);
    EXPECT_EQ(std::count(payload.record.begin() + 1, payload.record.end(), 0), 22);
}

TEST(IOHEVCNALPayload, KeepsTheCodecTagOfItsBase) {
    const std::array<char, 4> tag = {'1', 'c', 'v', 'a'};
    EXPECT_EQ(HEVCPayload().info.codecFourCC, tag);
}

TEST(IOHEVCNALPayload, TypeIsInBitsOneToSix) {
    const HEVCPayload payload;
    EXPECT_EQ(payload.GetNALType(0x42), 33);
    EXPECT_EQ(payload.GetNALType(0xFF), 63);
    EXPECT_EQ(payload.GetNALType(0x81), 0);
}

TEST(IOHEVCNALPayload, VideoParameterSetChangesNothing) {
    HEVCPayload payload;
    std::vector<uint8_t> unit = HEVCSequenceSet{.width = 320}.Unit();
    unit[0] = 32 << 1;
    payload.Parse(unit);
    EXPECT_EQ(payload.info.width, 0);
    EXPECT_EQ(payload.info.profile, 0);
    EXPECT_EQ(payload.record, HEVCPayload().record);
}

TEST(IOHEVCNALPayload, FrameTypeStaysUnknown) {
    HEVCPayload payload;
    payload.Append(AnnexB({HEVCSequenceSet{}.Unit(),
                           HEVCPictureSet{}.Unit(),
                           {19 << 1, 1, 0xAF, 0x80}, // IDR
                           {1 << 1, 1, 0xD0, 0x80},  // trailing picture
                           {5, 0x88, 0x84, 0x21}})); // an IDR slice if it were H.264
    EXPECT_EQ(payload.GetFrameType(), IOFrame_Unknown);
    EXPECT_EQ(payload.entries.size(), 5U);
    EXPECT_EQ(payload.info.width, 64);
}

TEST(IOHEVCNALPayload, SetsAreReadThroughTheScanner) {
    HEVCPayload payload;
    payload.Append(AnnexB(
        {RichSet().Unit(), HEVCPictureSet{.hasWavefronts = true}.Unit(), HEVCPrefixSEI({HEVCPicTiming(2)})},
        3));
    const IOElementaryStreamInfo& info = payload.GetStreamInfo();
    EXPECT_EQ(info.width, 1916);
    EXPECT_EQ(info.height, 1080);
    EXPECT_EQ(info.chromaFormat, 422);
    EXPECT_EQ(info.fieldOrder, IOField_BottomFirst);
    EXPECT_EQ(payload.record[15], 3);
}

TEST(IOHEVCNALPayload, BrokenSetDoesNotStopTheNextOne) {
    std::vector<uint8_t> cut = RichSet().Unit();
    cut.resize(cut.size() / 2);
    HEVCPayload payload;
    payload.Append(AnnexB({cut, HEVCSequenceSet{.width = 320}.Unit()}));
    EXPECT_EQ(payload.GetStreamInfo().width, 320);
}

TEST(IOHEVCNALPayload, UnitWithoutSecondHeaderByteIsNotRead) {
    for (const uint8_t header : {33 << 1, 34 << 1, 39 << 1}) {
        HEVCPayload payload;
        const GuardedBytes unit(1, GuardedBytes::Guard::Behind);
        unit.data()[0] = header;
        payload.ParseNAL(payload.GetNALType(header), unit.data() + 1, 0);
        EXPECT_EQ(payload.record, HEVCPayload().record);
    }
}

// The values in stream order, so that those before the cut are those of the whole set and those behind it are
// the first ones.
TEST(IOHEVCNALPayload, CutSetLeavesTheValuesBeforeTheCut) {
    const auto valuesOf = [](const HEVCPayload& payload) {
        const IOElementaryStreamInfo& info = payload.info;
        return std::vector<int64_t>{payload.record[21],
                                    info.profile,
                                    payload.record[6],
                                    info.level,
                                    payload.record[16],
                                    info.cropLeft,
                                    info.cropRight,
                                    info.cropTop,
                                    info.cropBottom,
                                    payload.record[17],
                                    info.bitDepth,
                                    payload.record[18],
                                    payload.log2MaxPicOrderCntLsb,
                                    static_cast<int64_t>(info.pixelAspect * 3), // 4:3 or 1:1
                                    static_cast<int64_t>(info.fullRangeBySPS.size()),
                                    info.colourPrimaries,
                                    info.transferCharacteristics,
                                    info.matrixCoefficients,
                                    payload.frameFieldInfoPresent,
                                    info.frameRateDen,
                                    info.frameRateNum,
                                    info.fixedFrameRate,
                                    payload.record[19],
                                    payload.record[13]};
    };
    const std::vector<uint8_t> unit = RichSet().Unit();
    HEVCPayload whole;
    whole.Parse(unit);
    const std::vector<int64_t> first = valuesOf(HEVCPayload());
    const std::vector<int64_t> last = valuesOf(whole);
    size_t before = 0;
    for (size_t size = 1; size <= unit.size(); ++size) {
        HEVCPayload payload;
        ParseAtGuard(payload, {unit.begin(), unit.begin() + static_cast<ptrdiff_t>(size)});
        const std::vector<int64_t> values = valuesOf(payload);
        size_t read = 0;
        while (read < values.size() && values[read] == last[read])
            ++read;
        EXPECT_GE(read, before) << size;
        EXPECT_TRUE(std::equal(values.begin() + static_cast<ptrdiff_t>(read), values.end(),
                               first.begin() + static_cast<ptrdiff_t>(read)))
            << size;
        before = read;
    }
    EXPECT_EQ(before, last.size());
}

TEST(IOHEVCNALPayload, RandomDamageStaysInsideTheUnit) {
    std::mt19937 random = MakeRandom();
    const Units units = {RichSet().Unit(), HEVCPictureSet{.hasQPDelta = true}.Unit(),
                         HEVCPrefixSEI({HEVCPicTiming(1)})};
    HEVCPayload payload;
    for (int round = 0; round < 3000; ++round) {
        std::vector<uint8_t> unit = units[random() % units.size()];
        for (uint32_t change = random() % 6; change > 0; --change)
            unit[2 + random() % (unit.size() - 2)] ^= static_cast<uint8_t>(1U << random() % 8);
        unit.resize(1 + random() % unit.size());
        ParseAtGuard(payload, unit);
    }
    payload.Parse(HEVCSequenceSet{.width = 320}.Unit());
    EXPECT_EQ(payload.info.width, 320);
}

TEST(IOHEVCNALPayload, RandomBytesStayInsideTheUnit) {
    std::mt19937 random = MakeRandom();
    HEVCPayload payload;
    for (int round = 0; round < 3000; ++round) {
        std::vector<uint8_t> unit(2 + random() % 300);
        for (uint8_t& byte : unit)
            byte = static_cast<uint8_t>(round % 2 == 0 ? random() : random() & random() & random());
        unit[0] = std::array<uint8_t, 3>{33 << 1, 34 << 1, 39 << 1}[random() % 3];
        ParseAtGuard(payload, unit);
    }
    payload.Parse(HEVCSequenceSet{.width = 320}.Unit());
    EXPECT_EQ(payload.info.width, 320);
}

TEST(HEVCConfigRecord, GivesProfileLevelAndLengthSize) {
    HEVCPayload payload;
    EXPECT_EQ(payload.ParseConfigRecord(Record({HEVCPictureSet{}.Unit()}), hvcc), 2U);
    EXPECT_EQ(payload.info.profile, 2);
    EXPECT_EQ(payload.info.level, 150);
}

TEST(HEVCConfigRecord, SetsAreParsed) {
    HEVCPayload payload;
    const std::vector<uint8_t> record =
        Record({HEVCSequenceSet{.width = 320}.Unit(), HEVCPictureSet{.hasTiles = true}.Unit()});
    EXPECT_EQ(payload.ParseConfigRecord(record, hvcc), 2U);
    EXPECT_EQ(payload.info.width, 320);
    EXPECT_EQ(payload.info.level, 93); // the set's, which comes after the record's
    EXPECT_EQ(payload.record[15], 2);
}

TEST(HEVCConfigRecord, SetsAreParsedWhereUnitsAreOnlyFound) {
    HEVCPayload payload(false);
    payload.ParseConfigRecord(Record({HEVCSequenceSet{.width = 320}.Unit()}), hvcc);
    EXPECT_EQ(payload.info.width, 320);
}

TEST(HEVCConfigRecord, ArrayOfSeveralUnitsIsReadInOrder) {
    std::vector<uint8_t> record = Record({});
    record[22] = 1;
    record.push_back(33);
    Append16(record, 2);
    for (const uint32_t width : {320U, 640U}) {
        const std::vector<uint8_t> unit = HEVCSequenceSet{.width = width}.Unit();
        Append16(record, unit.size());
        record.insert(record.end(), unit.begin(), unit.end());
    }
    HEVCPayload payload;
    payload.ParseConfigRecord(record, hvcc);
    EXPECT_EQ(payload.info.width, 640);
}

TEST(HEVCConfigRecord, TypeIsTheArraysAndNotTheUnits) {
    std::vector<uint8_t> record = Record({HEVCSequenceSet{.width = 320}.Unit()});
    record[23] = 32;
    HEVCPayload payload;
    payload.ParseConfigRecord(record, hvcc);
    EXPECT_EQ(payload.info.width, 0);
}

TEST(HEVCConfigRecord, BrokenUnitDoesNotStopTheNextOne) {
    std::vector<uint8_t> cut = RichSet().Unit();
    cut.resize(5);
    HEVCPayload payload;
    EXPECT_EQ(payload.ParseConfigRecord(Record({cut, HEVCSequenceSet{.width = 320}.Unit()}), hvcc), 2U);
    EXPECT_EQ(payload.info.width, 320);
}

TEST(HEVCConfigRecord, UnitsWithoutHeaderArePassedOver) {
    std::vector<uint8_t> record = Record({});
    record[22] = 2;
    record.insert(record.end(), {33, 0, 2, 0, 0, 0, 1, 33 << 1});
    const std::vector<uint8_t> next = Record({HEVCSequenceSet{.width = 320}.Unit()});
    record.insert(record.end(), next.begin() + 23, next.end());
    HEVCPayload payload;
    EXPECT_EQ(payload.ParseConfigRecord(record, hvcc), 2U);
    EXPECT_EQ(payload.info.width, 320);
}

TEST(HEVCConfigRecord, OtherTagIsRefused) {
    HEVCPayload payload;
    EXPECT_EQ(payload.ParseConfigRecord(Record({HEVCPictureSet{}.Unit()}), 0x61766343), 0U);
    EXPECT_EQ(payload.info.profile, 0);
}

TEST(HEVCConfigRecord, ShortRecordIsRefused) {
    std::vector<uint8_t> record = Record({HEVCPictureSet{}.Unit()});
    record.resize(22);
    EXPECT_EQ(HEVCPayload().ParseConfigRecord(record, hvcc), 0U);
    EXPECT_EQ(HEVCPayload().ParseConfigRecord({}, hvcc), 0U);
}

TEST(HEVCConfigRecord, RecordWithoutArraysIsRefused) {
    HEVCPayload payload;
    EXPECT_EQ(payload.ParseConfigRecord(Record({}), hvcc), 0U);
    EXPECT_EQ(payload.info.profile, 0);
}

TEST(HEVCConfigRecord, CutRecordLeavesWhatWasGathered) {
    const std::vector<uint8_t> whole =
        Record({HEVCSequenceSet{.width = 320}.Unit(), HEVCPictureSet{.hasTiles = true}.Unit()});
    const size_t endOfFirst = 23 + 5 + HEVCSequenceSet{.width = 320}.Unit().size();
    for (size_t size = 23; size < whole.size(); ++size) {
        const std::vector<uint8_t> cut(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size));
        HEVCPayload payload;
        EXPECT_EQ(payload.ParseConfigRecord(cut, hvcc), 2U);
        EXPECT_EQ(payload.info.width, size < endOfFirst ? 0 : 320);
        EXPECT_EQ(payload.record[15], 0);
    }
}
