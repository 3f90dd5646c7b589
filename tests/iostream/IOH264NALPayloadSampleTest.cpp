// How samples of a container become a byte stream.

#include "iostream/IOH264NALPayload.h"

#include "iostream/BitStreamWriter.h"
#include "iostream/RecordingPayload.h"
#include "support/GuardedBytes.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace IOStream;
using Bytes = std::vector<uint8_t>;

bool AppendSample(RecordingPayload& payload, const Bytes& sample, uint32_t lengthSize) {
    return payload.AppendSample(sample.data(), static_cast<uint32_t>(sample.size()), lengthSize);
}

/// All that a payload has.
Bytes DataOf(RecordingPayload& payload) {
    return {payload.GetData(), payload.GetData() + payload.GetDataSize()};
}

/// What a payload has after one sample.
Bytes DataOfSample(const Bytes& sample, uint32_t lengthSize) {
    RecordingPayload payload;
    EXPECT_TRUE(AppendSample(payload, sample, lengthSize));
    return DataOf(payload);
}

TEST(IOH264NALPayloadSample, AnAnnexBSampleIsTakenAsItIs) {
    const Bytes sample = {0, 0, 0, 1, 0x67, 1, 0, 0, 1, 0x68, 2};
    for (const uint32_t lengthSize : {0u, 1u, 4u})
        EXPECT_EQ(DataOfSample(sample, lengthSize), sample);
}

TEST(IOH264NALPayloadSample, AStartCodeAloneIsALengthOf1) {
    EXPECT_EQ(DataOfSample({0, 0, 0, 1}, 4), (Bytes{0, 0, 0, 1}));
    EXPECT_EQ(DataOfSample({0, 0, 0, 1}, 2), (Bytes{0, 0, 0, 1, 0, 0, 0, 1}));
}

TEST(IOH264NALPayloadSample, EachUnitGetsAStartCodeOfFourBytes) {
    const std::vector<Bytes> units = {{0x67, 1, 2}, {0x68, 3}, {0x65, 4, 5, 6}};
    for (uint32_t lengthSize = 1; lengthSize <= 4; ++lengthSize)
        EXPECT_EQ(DataOfSample(LengthPrefixed(units, lengthSize), lengthSize), AnnexB(units)) << lengthSize;
}

TEST(IOH264NALPayloadSample, UnitsAreFoundAsTheyCome) {
    RecordingPayload payload;
    ASSERT_TRUE(AppendSample(payload, LengthPrefixed({{0x67, 1, 2}, {0x68, 3}}), 4));
    ASSERT_TRUE(AppendSample(payload, LengthPrefixed({{0x65, 4, 5}}), 4));
    payload.GetStreamInfo();
    // The start codes were appended alone: their first zeros stay with the units before.
    EXPECT_EQ(payload.parsed, (std::vector<ParsedUnit>{{7, {1, 2, 0}}, {8, {3, 0}}, {5, {4, 5}}}));
}

TEST(IOH264NALPayloadSample, AUnitOfOneByteIsNotFoundAndStaysWithTheOneBefore) {
    RecordingPayload payload;
    ASSERT_TRUE(AppendSample(payload, LengthPrefixed({{0x65, 4, 5}, {0x0A}, {0x67, 1}}), 4));
    ASSERT_EQ(payload.parsed.size(), 1u);
    EXPECT_EQ(payload.parsed[0], (ParsedUnit{5, {4, 5, 0, 0, 0, 1, 0x0A, 0}}));
}

TEST(IOH264NALPayloadSample, ALastUnitThatPassesTheEndIsTakenAsFarAsItGoes) {
    const Bytes sample = {0, 0, 0, 2, 0x67, 1, 0, 0, 0, 9, 0x68, 3};
    const GuardedBytes guarded(sample.size(), GuardedBytes::Guard::Behind);
    std::ranges::copy(sample, guarded.begin());
    RecordingPayload payload;
    EXPECT_TRUE(payload.AppendSample(guarded.data(), static_cast<uint32_t>(guarded.size()), 4));
    EXPECT_EQ(DataOf(payload), AnnexB({{0x67, 1}, {0x68, 3}}));
}

TEST(IOH264NALPayloadSample, ALengthThatWrapsThePlaceEndsTheWalk) {
    EXPECT_EQ(DataOfSample({0xFF, 0xFF, 0xFF, 0xFC, 0x67, 1}, 4), AnnexB({{0x67, 1}}));
}

TEST(IOH264NALPayloadSample, ALengthFieldThatPassesTheEndEndsTheWalk) {
    EXPECT_EQ(DataOfSample({0, 2, 0x67, 1, 0}, 2), AnnexB({{0x67, 1}}));
}

TEST(IOH264NALPayloadSample, ALengthOfZeroLeavesAStartCode) {
    EXPECT_EQ(DataOfSample({0, 0, 0, 0, 0, 2, 0x67, 1}, 2), AnnexB({{}, {}, {0x67, 1}}));
}

TEST(IOH264NALPayloadSample, AnEmptySampleAppendsNothing) {
    RecordingPayload payload;
    EXPECT_TRUE(payload.AppendSample(nullptr, 0, 4));
    EXPECT_EQ(payload.GetDataSize(), 0u);
}

TEST(IOH264NALPayloadSample, LengthFieldsOfNoByteOrMoreThanFourAppendNothing) {
    for (const uint32_t lengthSize : {0u, 5u, UINT32_MAX})
        EXPECT_TRUE(DataOfSample({0, 0, 0, 0, 2, 0x67, 1}, lengthSize).empty()) << lengthSize;
}

TEST(IOH264NALPayloadSample, AForbiddenBitIsNotReported) {
    RecordingPayload payload;
    EXPECT_TRUE(AppendSample(payload, {0, 0, 0, 1, 0xE7, 1, 2}, 4));
    EXPECT_TRUE(AppendSample(payload, {0, 1, 0x67, 0, 1, 0x68}, 2));
    EXPECT_TRUE(payload.entries.empty());
}

TEST(IOH264NALPayloadSample, NoByteOutsideASampleIsReadWhateverItHolds) {
    std::mt19937 random = MakeRandom();
    for (uint32_t round = 0; round < 2000; ++round) {
        const GuardedBytes sample(random() % 40, GuardedBytes::Guard::Behind);
        std::ranges::generate(sample, [&random] { return static_cast<uint8_t>(random() % 6); });
        RecordingPayload payload;
        const uint32_t lengthSize = random() % 6;
        ASSERT_TRUE(payload.AppendSample(sample.data(), static_cast<uint32_t>(sample.size()), lengthSize));
        ASSERT_LE(payload.GetDataSize(), 5 * sample.size());
        payload.GetStreamInfo();
    }
}

} // namespace
