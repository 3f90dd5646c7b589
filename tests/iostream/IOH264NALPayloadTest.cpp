// How the units of a byte stream are found and handed to the parsers.

#include "iostream/IOH264NALPayload.h"

#include "iostream/RecordingPayload.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

using namespace IOStream;
using Bytes = std::vector<uint8_t>;
using Entries = std::vector<NALEntry>;
using Units = std::vector<ParsedUnit>;

TEST(IOH264NALPayload, TheClassesDeriveInASingleLine) {
    EXPECT_TRUE((std::is_base_of_v<IOFramePayload, IOMPEG2VideoPayload>));
    EXPECT_TRUE((std::is_base_of_v<IOMPEG2VideoPayload, IOH264NALPayload>));
    EXPECT_TRUE((std::is_base_of_v<IOH264NALPayload, IOHEVCNALPayload>));
}

TEST(IOH264NALPayload, AnEntryTakesEightBytes) { EXPECT_EQ(sizeof(NALEntry), 8u); }

TEST(IOH264NALPayload, TheTypeIsInTheLowFiveBits) {
    const H264Payload payload;
    EXPECT_EQ(payload.GetNALType(0x67), 7);
    EXPECT_EQ(payload.GetNALType(0xFF), 31);
}

TEST(IOH264NALPayload, OfFewerThanThreeBytesTheScanFindsNothingAndStays) {
    RecordingPayload payload;
    EXPECT_TRUE(payload.ScanData());
    for (const uint8_t byte : {0, 0}) {
        payload.Append({byte});
        EXPECT_TRUE(payload.ScanData());
        EXPECT_EQ(payload.scanPos, 0u);
        EXPECT_TRUE(payload.entries.empty());
    }
    EXPECT_TRUE(payload.GetStreamInfo().fullRangeBySPS.empty());
}

TEST(IOH264NALPayload, AStartBelowThreeBytesLosesNoStartCode) {
    RecordingPayload payload;
    payload.Append({0});
    payload.Append({0});
    payload.Append({0, 1, 0x67, 0x42});
    EXPECT_EQ(payload.entries, (Entries{{7, 4, 0}}));
}

TEST(IOH264NALPayload, AStartCodeWrittenOverOldDataLeavesItsUnitEmpty) {
    RecordingPayload payload;
    payload.Append({0, 0, 0, 1, 0x67});
    std::copy_n(std::begin({uint8_t{0}, uint8_t{0}, uint8_t{1}}), 3, payload.GetData() + 2);
    payload.Append({0x65, 0x88});
    ASSERT_EQ(payload.entries.size(), 2u);
    EXPECT_TRUE(payload.Unit(0).empty());
    EXPECT_EQ(payload.GetStreamInfo().width, 0);
}

TEST(IOH264NALPayload, AUnitThatTheInfoHasParsedIsParsedOnceMoreWhenTheNextBegins) {
    RecordingPayload payload;
    payload.Append({0, 0, 0, 1, 0x67, 0x42});
    payload.GetStreamInfo();
    payload.Append({0, 0, 0, 1, 0x68, 0x43});
    EXPECT_EQ(payload.parsed, (Units{{7, {0x42}}, {7, {0x42}}}));
}

TEST(IOH264NALPayload, ALoneUnitIsParsedOnlyWhenTheInfoIsAskedFor) {
    RecordingPayload payload;
    payload.Append({0, 0, 0, 1, 0x67, 0x42});
    EXPECT_EQ(payload.entries, (Entries{{7, 4, 0}}));
    EXPECT_TRUE(payload.parsed.empty());
    EXPECT_EQ(payload.lastParsed, -1);
    payload.GetStreamInfo();
    EXPECT_EQ(payload.parsed, (Units{{7, {0x42}}}));
    EXPECT_EQ(payload.lastParsed, 0);
}

TEST(IOH264NALPayload, AUnitIsParsedOnceTheNextHasBegun) {
    RecordingPayload payload;
    payload.Append({0, 0, 1, 0x67, 1, 2, 0, 0, 1, 0x68, 3, 4});
    EXPECT_EQ(payload.parsed, (Units{{7, {1, 2}}}));
    EXPECT_EQ(payload.lastParsed, 0);
}

TEST(IOH264NALPayload, AskingForTheInfoTwiceParsesNothingTwice) {
    RecordingPayload payload;
    payload.Append({0, 0, 1, 0x67, 1, 0, 0, 1, 0x68, 2});
    payload.GetStreamInfo();
    payload.GetStreamInfo();
    EXPECT_EQ(payload.parsed, (Units{{7, {1}}, {8, {2}}}));
}

TEST(IOH264NALPayload, AStartCodeAtTheEndMakesNoEntryBeforeMoreDataComes) {
    RecordingPayload payload;
    payload.Append({0, 0, 1, 0x67, 1, 2, 3, 0, 0, 1});
    EXPECT_EQ(payload.entries, (Entries{{7, 3, 0}}));
    payload.Append({0x68, 4});
    EXPECT_EQ(payload.entries, (Entries{{7, 3, 0}, {8, 3, 7}}));
}

TEST(IOH264NALPayload, StartCodesOfThreeAndFourBytesMayBeMixed) {
    RecordingPayload payload;
    payload.Append({0, 0, 0, 1, 0x67, 1, 0, 0, 1, 0x68, 2, 0, 0, 0, 0, 1, 0x65, 3});
    EXPECT_EQ(payload.entries, (Entries{{7, 4, 0}, {8, 3, 6}, {5, 4, 12}}));
    EXPECT_EQ(payload.parsed, (Units{{7, {1}}, {8, {2, 0}}}));
}

TEST(IOH264NALPayload, AZeroBeforeAStartCodeOfFourBytesStaysWithTheUnitBefore) {
    RecordingPayload payload;
    payload.Append({0, 0, 0, 0, 1, 0x67, 1});
    EXPECT_EQ(payload.entries, (Entries{{7, 4, 1}}));
}

TEST(IOH264NALPayload, AStartCodeOfFourBytesAtTheEndOfAPieceIsFoundAsOneOfThree) {
    RecordingPayload payload;
    payload.Append({0, 0, 1, 0x67, 1, 0, 0, 0, 1});
    EXPECT_EQ(payload.scanPos, 6u);
    payload.Append({0x68, 2});
    EXPECT_EQ(payload.entries, (Entries{{7, 3, 0}, {8, 3, 6}}));
    EXPECT_EQ(payload.parsed, (Units{{7, {1, 0}}}));
}

TEST(IOH264NALPayload, AStartCodeOfThreeBytesBeforeTheLastByteOfAPieceIsLost) {
    RecordingPayload payload;
    payload.Append({0, 0, 1, 0x67, 1, 0, 0, 1, 0x68});
    payload.Append({2, 3, 4, 5, 6, 7});
    EXPECT_EQ(payload.entries, (Entries{{7, 3, 0}}));
}

TEST(IOH264NALPayload, AUnitOfOneByteIsFoundBehindAStartCodeOfFourBytes) {
    RecordingPayload payload;
    payload.Append({0, 0, 0, 1, 0x0A});
    EXPECT_EQ(payload.entries, (Entries{{10, 4, 0}}));
    payload.GetStreamInfo();
    EXPECT_EQ(payload.parsed, (Units{{10, {}}}));
}

TEST(IOH264NALPayload, AStartCodeNeverBeginsWithTheHeaderOfTheUnitBefore) {
    RecordingPayload payload;
    payload.Append({0, 0, 1, 0, 0, 1, 0, 0, 1, 5, 5});
    EXPECT_EQ(payload.entries, (Entries{{0, 3, 0}, {5, 3, 6}}));
}

TEST(IOH264NALPayload, AForbiddenBitEndsTheScanWhereItIs) {
    RecordingPayload payload;
    payload.Append({0, 0, 1, 0x67, 1, 0, 0, 1, 0xE8, 2, 0, 0, 1, 0x65, 3});
    EXPECT_EQ(payload.entries, (Entries{{7, 3, 0}}));
    EXPECT_EQ(payload.scanPos, 4u);
    EXPECT_FALSE(payload.ScanData());
    EXPECT_EQ(payload.scanPos, 4u);
}

TEST(IOH264NALPayload, AnObjectWithAForbiddenBitStaysUsable) {
    RecordingPayload payload;
    payload.Append({0, 0, 1, 0x67, 1, 0, 0, 1, 0xE8, 2});
    payload.Append({0, 0, 0, 1, 0x65, 3});
    EXPECT_EQ(payload.GetDataSize(), 16u);
    payload.GetStreamInfo();
    EXPECT_EQ(payload.parsed.size(), 1u);
    EXPECT_EQ(payload.parsed[0].payload.size(), 12u);
}

TEST(IOH264NALPayload, NothingButTheLastThreeBytesIsLookedAtAgain) {
    RecordingPayload payload;
    payload.Append(Bytes(100, 9));
    // A start code that appears in data of old is not seen.
    std::copy_n(Bytes{0, 0, 1, 7}.data(), 4, payload.GetData() + 93);
    payload.Append(Bytes(100, 9));
    EXPECT_TRUE(payload.entries.empty());
    EXPECT_EQ(payload.scanPos, 197u);
}

TEST(IOH264NALPayload, AScanThatHasStoppedLooksAtNothingAgain) {
    RecordingPayload payload;
    payload.Append({0, 0, 1, 0x80, 9, 9, 9});
    payload.GetData()[3] = 7;
    EXPECT_FALSE(payload.ScanData());
    EXPECT_TRUE(payload.entries.empty());
}

TEST(IOH264NALPayload, ATypeIsKeptWhereUnitsAreOnlyFound) {
    RecordingPayload payload(false);
    payload.Append({0, 0, 1, 0x67, 1, 0, 0, 1, 0x68, 2});
    payload.GetStreamInfo();
    EXPECT_EQ(payload.entries, (Entries{{7, 3, 0}, {8, 3, 5}}));
    EXPECT_TRUE(payload.parsed.empty());
    EXPECT_EQ(payload.lastParsed, -1);
}

TEST(IOH264NALPayload, AnIndexBehindTheLastUnitIsIgnored) {
    RecordingPayload payload;
    payload.Append({0, 0, 1, 0x67, 1, 2});
    payload.ParseEntry(1);
    payload.ParseEntry(UINT32_MAX);
    EXPECT_TRUE(payload.parsed.empty());
    EXPECT_EQ(payload.lastParsed, -1);
}

TEST(IOH264NALPayload, AUnitThatFailsCountsAsParsed) {
    RecordingPayload payload;
    payload.throwsAlways = true;
    payload.Append({0, 0, 1, 0x67, 1, 0, 0, 1, 0x68, 2});
    EXPECT_EQ(payload.lastParsed, 0);
    EXPECT_NO_THROW(payload.GetStreamInfo());
    EXPECT_EQ(payload.lastParsed, 1);
    EXPECT_EQ(payload.parsed.size(), 2u);
}

TEST(IOH264NALPayload, TheFrameTypeIsThatOfTheLastUnitToo) {
    H264Payload payload;
    payload.Append({0, 0, 0, 1, 0x65, 0x88, 0x84});
    EXPECT_EQ(payload.info.frameType, IOFrame_Unknown);
    EXPECT_EQ(payload.GetFrameType(), IOFrame_Intra);
}

TEST(IOH264NALPayload, NothingIsAppendedThatPasses4GiB) {
    RecordingPayload payload;
    payload.Append({0, 0, 1, 0x67, 1, 2});
    payload.dataSize = UINT32_MAX - 5;
    payload.Append({1, 2, 3, 4, 5, 6});
    EXPECT_EQ(payload.dataSize, UINT32_MAX - 5);
}

} // namespace
