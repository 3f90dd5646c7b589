#include "iostream/HEVCSyntax.h"
#include "iostream/PayloadAccess.h"

#include <gtest/gtest.h>

using namespace IOStream;

namespace {

HEVCPayload Parsed(const HEVCSequenceSet& set) {
    HEVCPayload payload;
    payload.Parse(set.Unit());
    return payload;
}

/// A parser that kept its place finds both what stands next and what stands at the end.
void ExpectPlaceKept(const HEVCPayload& payload) {
    EXPECT_EQ(payload.info.width, 64);
    EXPECT_EQ(payload.info.height, 48);
    EXPECT_EQ(payload.info.frameRateNum, 50U);
}

/// The payload behind the profile alone: the unit ends there.
HEVCPayload ParsedProfile(uint32_t profile) {
    std::vector<uint8_t> unit = HEVCSequenceSet{.profile = profile}.Unit();
    unit.resize(2 + 1 + 1);
    HEVCPayload payload;
    EXPECT_THROW(payload.Parse(unit), BitBuffer::IOBitBufferNoDataException);
    return payload;
}

} // namespace

TEST(HEVCProfile, ProfileTierAndLevelGoIntoTheRecord) {
    const HEVCPayload payload = Parsed({.profile = 1U << 6 | 1U << 5 | 2, .level = 120});
    EXPECT_EQ(payload.info.profile, 2);
    EXPECT_EQ(payload.info.level, 120);
    EXPECT_EQ(payload.record[1], 0x62);
    EXPECT_EQ(payload.record[12], 120);
}

TEST(HEVCProfile, TellsTheFormatOfMain) {
    EXPECT_EQ(ParsedProfile(1).info.bitDepth, 8);
    EXPECT_EQ(ParsedProfile(1).info.chromaFormat, 420);
}

TEST(HEVCProfile, TellsTheFormatOfMain10) {
    EXPECT_EQ(ParsedProfile(2).info.bitDepth, 10);
    EXPECT_EQ(ParsedProfile(2).info.chromaFormat, 420);
}

TEST(HEVCProfile, TellsTheFormatOfStillPictures) {
    EXPECT_EQ(ParsedProfile(3).info.bitDepth, 8);
    EXPECT_EQ(ParsedProfile(3).info.chromaFormat, 420);
}

TEST(HEVCProfile, OthersTellNoFormat) {
    EXPECT_EQ(ParsedProfile(4).info.bitDepth, 0);
    EXPECT_EQ(ParsedProfile(4).info.chromaFormat, 0);
}

TEST(HEVCProfile, CompatibilityFlagsStandReversedInTheRecord) {
    const HEVCPayload payload = Parsed({.compatibility = 0x60000000});
    EXPECT_EQ(payload.record[2], 0x00);
    EXPECT_EQ(payload.record[3], 0x00);
    EXPECT_EQ(payload.record[4], 0x00);
    EXPECT_EQ(payload.record[5], 0x60);
}

TEST(HEVCProfile, ConstraintBytesStandInStreamOrder) {
    const HEVCPayload payload = Parsed({.constraints = {1, 2, 3, 4, 5, 6}});
    for (uint8_t byte = 0; byte < 6; ++byte)
        EXPECT_EQ(payload.record[6U + byte], byte + 1);
}

TEST(HEVCProfile, ProgressiveSourceIsTakenFromTheLowestBit) {
    const HEVCPayload payload = Parsed({.constraints = {0x01}});
    EXPECT_TRUE(payload.frameMbsOnly);
    EXPECT_FALSE(payload.fieldSeen);
    EXPECT_EQ(payload.info.fieldOrder, IOField_Progressive);
}

TEST(HEVCProfile, InterlacedSourceIsTakenFromTheBitAboveIt) {
    const HEVCPayload payload = Parsed({.constraints = {0x02}});
    EXPECT_FALSE(payload.frameMbsOnly);
    EXPECT_TRUE(payload.fieldSeen);
    EXPECT_EQ(payload.info.fieldOrder, IOField_Unknown);
}

TEST(HEVCProfile, BothSourceBitsLeaveTheFieldOrder) {
    const HEVCPayload payload = Parsed({.constraints = {0x03}});
    EXPECT_TRUE(payload.frameMbsOnly);
    EXPECT_TRUE(payload.fieldSeen);
    EXPECT_EQ(payload.info.fieldOrder, IOField_Unknown);
}

TEST(HEVCProfile, SourceFlagsOfTheStandardAreNotTaken) {
    const HEVCPayload payload = Parsed({.constraints = {0xC0}});
    EXPECT_FALSE(payload.frameMbsOnly);
    EXPECT_FALSE(payload.fieldSeen);
    EXPECT_EQ(payload.info.fieldOrder, IOField_Unknown);
}

TEST(HEVCProfile, LaterSetClearsTheSourceBits) {
    HEVCPayload payload;
    payload.Parse(HEVCSequenceSet{.constraints = {0x01}}.Unit());
    payload.Parse(HEVCSequenceSet{.constraints = {0x00}}.Unit());
    EXPECT_FALSE(payload.frameMbsOnly);
    EXPECT_EQ(payload.info.fieldOrder, IOField_Progressive); // which nothing takes back
}

TEST(HEVCProfile, SubLayersArePassedOver) {
    const auto subLayers = [](BitStreamWriter& bits) {
        bits.Flag(true).Flag(true).Flag(false).Flag(true).U(2 * 6, 0);
        bits.Repeat(88, true).U(8, 30).U(8, 60);
    };
    const HEVCPayload payload =
        Parsed({.maxSubLayersMinus1 = 2, .subLayers = subLayers, .vui = HEVCLandmark()});
    EXPECT_EQ(payload.info.profile, 1);
    EXPECT_EQ(payload.info.level, 93);
    ExpectPlaceKept(payload);
}

TEST(HEVCProfile, SevenLayersHaveSixSubLayers) {
    const auto subLayers = [](BitStreamWriter& bits) {
        bits.Repeat(2 * 6, true).U(2 * 2, 0).Repeat(6 * (88 + 8), true);
    };
    const HEVCPayload payload =
        Parsed({.maxSubLayersMinus1 = 6, .subLayers = subLayers, .vui = HEVCLandmark()});
    EXPECT_EQ(payload.record[21] >> 3, 7);
    ExpectPlaceKept(payload);
}

TEST(HEVCProfile, EightLayersCountAsNoneAndSkipEighteenBits) {
    const auto noSubLayers = [](BitStreamWriter& bits) { bits.Repeat(18, true); };
    const HEVCPayload payload =
        Parsed({.maxSubLayersMinus1 = 7, .subLayers = noSubLayers, .vui = HEVCLandmark()});
    EXPECT_EQ(payload.record[21] >> 3, 0);
    ExpectPlaceKept(payload);
}
