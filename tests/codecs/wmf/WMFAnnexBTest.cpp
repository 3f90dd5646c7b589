// Byte streams and samples behind lengths.

#include "codecs/WMFAnnexB.h"

#include "codecs/wmf/ConversionCheck.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using Bytes = std::vector<uint8_t>;

Bytes SampleOf(Bytes stream, size_t extra = 1024) {
    Bytes sample(stream.size() + extra);
    sample.resize(CxWMF::LengthPrefixesFromAnnexB(stream, sample));
    return sample;
}

Bytes StreamOf(Bytes sample) {
    CxWMF::AnnexBFromLengthPrefixes(sample);
    return sample;
}

Bytes SampleOfUnits(const std::vector<Unit>& units) {
    Bytes sample;
    for (const Unit& unit : units) {
        const auto size = static_cast<uint32_t>(unit.size());
        for (int shift = 24; shift >= 0; shift -= 8)
            sample.push_back(static_cast<uint8_t>(size >> shift));
        sample.insert(sample.end(), unit.begin(), unit.end());
    }
    return sample;
}

TEST(WMFAnnexB, UnitsBehindStartCodesOfEitherLengthGetLengths) {
    EXPECT_EQ(SampleOf({0, 0, 0, 1, 0x67, 7, 0, 0, 1, 0x68, 0, 0, 0, 1, 0x65}),
              (Bytes{0, 0, 0, 2, 0x67, 7, 0, 0, 0, 1, 0x68, 0, 0, 0, 1, 0x65}));
}

TEST(WMFAnnexB, RandomUnitListsComeBackAsTheyWere) {
    std::mt19937 random = MakeRandom();
    for (int round = 0; round < 200; ++round) {
        std::vector<Unit> units = RandomUnits(random() % 8, 40, random);
        // A length of 1 in front would be taken for a start code.
        if (!units.empty()) units[0].insert(units[0].begin(), 0x67);
        Bytes stream;
        for (const Unit& unit : units) {
            stream.insert(stream.end(), 2 + random() % 2, 0);
            stream.push_back(1);
            stream.insert(stream.end(), unit.begin(), unit.end());
        }
        ASSERT_EQ(SampleOf(stream), SampleOfUnits(units));
        Bytes expected;
        for (const Unit& unit : units) {
            expected.insert(expected.end(), {0, 0, 0, 1});
            expected.insert(expected.end(), unit.begin(), unit.end());
        }
        ASSERT_EQ(StreamOf(SampleOfUnits(units)), expected);
    }
}

TEST(WMFAnnexB, AnyBytesAreTreatedAsTheModelDoes) {
    std::mt19937 random = MakeRandom();
    for (int round = 0; round < 3000; ++round) {
        Bytes bytes(random() % 48);
        for (uint8_t& byte : bytes)
            byte = static_cast<uint8_t>(random() % 8 == 0 ? random() : random() % 2);
        ASSERT_NO_THROW(CheckAnnexB(bytes, random() % 80));
    }
}

TEST(WMFAnnexB, WhatStandsBeforeTheFirstStartCodeIsLeftOut) {
    EXPECT_EQ(SampleOf({9, 9, 0, 0, 1, 5}), (Bytes{0, 0, 0, 1, 5}));
    EXPECT_EQ(SampleOf({9, 9, 9}), Bytes());
    EXPECT_EQ(SampleOf({}), Bytes());
}

TEST(WMFAnnexB, ZerosInFrontOfAUnitAreSkipped) {
    EXPECT_EQ(SampleOf({0, 0, 0, 0, 0, 1, 5}), (Bytes{0, 0, 0, 1, 5}));
}

TEST(WMFAnnexB, OneZeroBelongsToTheNextStartCodeAndOthersToTheUnit) {
    EXPECT_EQ(SampleOf({0, 0, 1, 5, 0, 0, 0, 0, 1, 6, 0}), (Bytes{0, 0, 0, 2, 5, 0, 0, 0, 0, 2, 6, 0}));
}

TEST(WMFAnnexB, EmptyUnitsAreLeftOut) {
    EXPECT_EQ(SampleOf({0, 0, 1, 0, 0, 1, 0, 0, 0, 1, 5, 0, 0, 1}), (Bytes{0, 0, 0, 1, 5}));
}

TEST(WMFAnnexB, AUnitWithoutRoomEndsTheSample) {
    Bytes stream;
    for (int i = 0; i < 2000; ++i)
        stream.insert(stream.end(), {0, 0, 1, 9});
    const Bytes sample = SampleOf(stream);
    EXPECT_EQ(sample.size(), (stream.size() + 1024) / 5 * 5);
}

TEST(WMFAnnexB, AStartCodeIsFoundWhereverItStandsInAWord) {
    for (size_t place = 0; place < 12; ++place) {
        Bytes bytes(16, 0xff);
        bytes[place] = bytes[place + 1] = 0;
        bytes[place + 2] = 1;
        EXPECT_EQ(CxWMF::FindStartCode(bytes, 0), place);
        EXPECT_EQ(CxWMF::FindStartCode(bytes, place), place);
        EXPECT_EQ(CxWMF::FindStartCode(bytes, place + 1), bytes.size());
    }
}

TEST(WMFAnnexB, ASampleThatIsAByteStreamAlreadyStays) {
    const Bytes stream = {0, 0, 0, 1, 0x65, 0, 0, 0, 2, 7};
    EXPECT_EQ(StreamOf(stream), stream);
}

TEST(WMFAnnexB, ASampleThatBeginsWithAUnitOfOneByteIsTakenForAByteStream) {
    const Bytes sample = {0, 0, 0, 1, 0x09, 0, 0, 0, 2, 0x65, 7};
    EXPECT_EQ(StreamOf(sample), sample);
}

TEST(WMFAnnexB, ALengthThatPassesTheEndIsStillTurned) {
    EXPECT_EQ(StreamOf({0, 0, 9, 9, 5}), (Bytes{0, 0, 0, 1, 5}));
    EXPECT_EQ(StreamOf({0, 0xff, 0xff, 0xff}), (Bytes{0, 0, 0, 1}));
}

TEST(WMFAnnexB, ALengthThatIsCutOffStays) {
    EXPECT_EQ(StreamOf({0, 0, 0, 2, 5, 6, 0, 0, 9}), (Bytes{0, 0, 0, 1, 5, 6, 0, 0, 9}));
    EXPECT_EQ(StreamOf({0}), Bytes{0});
    EXPECT_EQ(StreamOf({}), Bytes());
}

TEST(WMFAnnexB, ALengthOf16MegabytesOrMoreEndsTheWalk) {
    const Bytes sample = {0, 0, 0, 2, 5, 6, 1, 0, 0, 0, 7};
    EXPECT_EQ(StreamOf(sample), (Bytes{0, 0, 0, 1, 5, 6, 1, 0, 0, 0, 7}));
}

TEST(WMFAnnexB, LengthsOf0AreTurnedOneByOne) {
    EXPECT_EQ(StreamOf({0, 0, 0, 0, 0, 0, 0, 0}), (Bytes{0, 0, 0, 1, 0, 0, 0, 1}));
}

TEST(WMFAnnexB, DataAreAByteStreamFromFiveBytesOn) {
    EXPECT_TRUE(CxWMF::IsAnnexB(Bytes{0, 0, 0, 1, 0}));
    EXPECT_FALSE(CxWMF::IsAnnexB(Bytes{0, 0, 0, 1}));
    EXPECT_FALSE(CxWMF::IsAnnexB(Bytes{0, 0, 1, 5, 5}));
    EXPECT_TRUE(CxWMF::BeginsWithStartCode(Bytes{0, 0, 0, 1}));
    EXPECT_FALSE(CxWMF::BeginsWithStartCode(Bytes{0, 0, 1}));
}

} // namespace
