#include "iostream/HEVCSyntax.h"
#include "iostream/PayloadAccess.h"

#include <gtest/gtest.h>

namespace {

HEVCPayload ParsedVui(const HEVCVui& vui) {
    HEVCPayload payload;
    payload.Parse(HEVCSequenceSet{.vui = vui}.Unit());
    return payload;
}

/// avgFrameRate of the record, whose bytes are little-endian.
int AvgFrameRate(uint32_t units, uint32_t timeScale) {
    const HEVCPayload payload = ParsedVui({.timing = HEVCTiming(units, timeScale)});
    return payload.record[19] | payload.record[20] << 8;
}

/// Parses HRD parameters for a stream of `layers` temporal sub-layers.
bool ParseHRD(HEVCPayload& payload, uint32_t layers, const BitStreamWriter& bits) {
    payload.record[21] = static_cast<uint8_t>(layers << 3);
    const std::vector<uint8_t> bytes = WithEmulationPrevention(bits.Bytes());
    IOStream::BitBuffer reader(bytes.data(), static_cast<uint32_t>(bytes.size()));
    return payload.ParseHRD(reader);
}

/// The parameters that NAL and VCL share, without those of sub-pictures.
void WriteCommon(BitStreamWriter& bits, uint32_t removalLength, uint32_t outputLength) {
    bits.Flag(false).U(4, 1).U(4, 2).U(5, 23).U(5, removalLength - 1).U(5, outputLength - 1);
}

void WriteBuffers(BitStreamWriter& bits, uint32_t count) {
    for (uint32_t buffer = 0; buffer < count; ++buffer)
        bits.UE(1000).UE(2000).Flag(false);
}

/// Restrictions behind the HRD parameters, to tell whether the parser has kept its place.
void WriteSegmentation(BitStreamWriter& bits, uint32_t segmentation) {
    bits.U(3, 0).UE(segmentation).UE(0).UE(0).UE(15).UE(15);
}

int Segmentation(const HEVCPayload& payload) { return payload.record[13] | payload.record[14] << 8; }

/// Segmentation that is found behind these HRD parameters.
int SegmentationBehind(const SyntaxPart& hrd) {
    return Segmentation(
        ParsedVui({.timing = HEVCTiming(1, 25, hrd),
                   .restrictions = [](BitStreamWriter& bits) { WriteSegmentation(bits, 77); }}));
}

} // namespace

TEST(HEVCVui, NTSCRateIsThirtyWholeFrames) {
    const HEVCPayload payload = ParsedVui({.timing = HEVCTiming(1001, 30000)});
    EXPECT_EQ(payload.info.frameRateNum, 30000U);
    EXPECT_EQ(payload.info.frameRateDen, 1001U);
    EXPECT_EQ(payload.record[19], 0x1E);
    EXPECT_EQ(payload.record[20], 0x00);
}

TEST(HEVCVui, HalfAFrameIsRoundedUp) {
    EXPECT_EQ(AvgFrameRate(2, 25), 13);
    EXPECT_EQ(AvgFrameRate(100, 1249), 12);
}

TEST(HEVCVui, RateIsCutTo16Bits) {
    EXPECT_EQ(AvgFrameRate(1, 65536 + 24), 24);
    EXPECT_EQ(AvgFrameRate(1, 0xFFFFFFFF), 0); // 2^32 in single precision
}

TEST(HEVCVui, RateIsDividedInSinglePrecision) {
    EXPECT_EQ(AvgFrameRate(1, (1 << 24) + 1), 0); // 2^24 in single precision
}

TEST(HEVCVui, NoUnitsGiveNoRate) { EXPECT_EQ(AvgFrameRate(0, 25), 0); }

TEST(HEVCVui, ProportionalTimingIsAFixedRate) {
    const auto timing = [](BitStreamWriter& bits) { bits.U(32, 1).U(32, 25).Flag(true).UE(0).Flag(false); };
    EXPECT_TRUE(ParsedVui({.timing = timing}).info.fixedFrameRate);
    EXPECT_FALSE(ParsedVui({.timing = HEVCTiming(1, 25)}).info.fixedFrameRate);
}

TEST(HEVCVui, ProportionalTimingKeepsItsPlace) {
    const auto timing = [](BitStreamWriter& bits) { bits.U(32, 1).U(32, 25).Flag(true).UE(5).Flag(false); };
    const auto restrictions = [](BitStreamWriter& bits) { WriteSegmentation(bits, 9); };
    EXPECT_EQ(Segmentation(ParsedVui({.timing = timing, .restrictions = restrictions})), 9);
}

TEST(HEVCVui, ColourDescriptionIsKept) {
    const auto signal = [](BitStreamWriter& bits) {
        bits.U(3, 5).Flag(true).Flag(true).U(8, 9).U(8, 16).U(8, 10);
    };
    const HEVCPayload payload = ParsedVui({.videoSignal = signal});
    EXPECT_EQ(payload.info.colourPrimaries, 9);
    EXPECT_EQ(payload.info.transferCharacteristics, 16);
    EXPECT_EQ(payload.info.matrixCoefficients, 10);
}

TEST(HEVCVui, RangeIsKeptByTheSetsID) {
    const auto signal = [](bool isFull) {
        return HEVCVui{.videoSignal = [=](BitStreamWriter& bits) { bits.U(3, 5).Flag(isFull).Flag(false); }};
    };
    HEVCPayload payload;
    payload.Parse(HEVCSequenceSet{.id = 3, .vui = signal(true)}.Unit());
    payload.Parse(HEVCSequenceSet{.id = 4, .vui = signal(false)}.Unit());
    const std::map<uint32_t, uint32_t> expected = {{3, 2}, {4, 1}};
    EXPECT_EQ(payload.info.fullRangeBySPS, expected);
}

TEST(HEVCVui, RefusedAspectEndsTheParameters) {
    const HEVCPayload payload =
        ParsedVui({.aspect = [](BitStreamWriter& bits) { bits.U(8, 7); }, .timing = HEVCTiming(1, 25)});
    EXPECT_EQ(payload.info.frameRateNum, 0U);
}

TEST(HEVCVui, LocationAndWindowKeepTheirPlace) {
    const HEVCPayload payload =
        ParsedVui({.chromaLocation = [](BitStreamWriter& bits) { bits.UE(2).UE(3); },
                   .hasFrameFieldInfo = true,
                   .displayWindow = [](BitStreamWriter& bits) { bits.UE(1).UE(2).UE(3).UE(4); },
                   .timing = HEVCTiming(1, 25)});
    EXPECT_TRUE(payload.frameFieldInfoPresent);
    EXPECT_EQ(payload.info.frameRateNum, 25U);
    EXPECT_EQ(payload.info.cropLeft, 0);
}

TEST(HEVCVui, SegmentationIsLittleEndianAndOfTwelveBits) {
    const auto restrictions = [](BitStreamWriter& bits) { WriteSegmentation(bits, 0x1ABC); };
    const HEVCPayload payload = ParsedVui({.restrictions = restrictions});
    EXPECT_EQ(payload.record[13], 0xBC);
    EXPECT_EQ(payload.record[14], 0x0A);
}

TEST(HEVCVui, RefusedHRDEndsTheParameters) {
    EXPECT_EQ(SegmentationBehind(
                  [](BitStreamWriter& bits) { bits.Flag(false).Flag(false).Flag(true).UE(0).UE(32); }),
              0);
}

TEST(HEVCHrd, DelayLengthsAreKept) {
    EXPECT_EQ(SegmentationBehind([](BitStreamWriter& bits) {
                  bits.Flag(true).Flag(false);
                  WriteCommon(bits, 17, 9);
                  bits.Flag(true).UE(0).UE(1);
                  WriteBuffers(bits, 2);
              }),
              77);
    HEVCPayload payload;
    BitStreamWriter bits;
    bits.Flag(true).Flag(false);
    WriteCommon(bits, 17, 32);
    EXPECT_TRUE(ParseHRD(payload, 0, bits));
    EXPECT_EQ(payload.info.cpbRemovalDelayLength, 17);
    EXPECT_EQ(payload.info.dpbOutputDelayLength, 32);
    EXPECT_FALSE(payload.info.hrdPresent); // a fact of H.264 only
}

TEST(HEVCHrd, BothKindsHaveBuffersOfTheirOwn) {
    EXPECT_EQ(SegmentationBehind([](BitStreamWriter& bits) {
                  bits.Flag(true).Flag(true);
                  WriteCommon(bits, 8, 8);
                  bits.Flag(false).Flag(true).UE(0).UE(2); // fixed within the sequence
                  WriteBuffers(bits, 2 * 3);
              }),
              77);
}

TEST(HEVCHrd, SubPictureParametersArePassedOver) {
    EXPECT_EQ(SegmentationBehind([](BitStreamWriter& bits) {
                  bits.Flag(false).Flag(true).Flag(true).U(8, 98).U(5, 7).Flag(true).U(5, 6);
                  bits.U(4, 1).U(4, 2).U(4, 3).U(5, 23).U(5, 7).U(5, 7);
                  bits.Flag(true).UE(0).UE(0);
                  bits.UE(1).UE(2).UE(3).UE(4).Flag(true);
              }),
              77);
}

TEST(HEVCHrd, RateThatIsNotFixedHasNoDuration) {
    EXPECT_EQ(SegmentationBehind([](BitStreamWriter& bits) {
                  bits.Flag(true).Flag(false);
                  WriteCommon(bits, 8, 8);
                  bits.Flag(false).Flag(false).Flag(false).UE(1);
                  WriteBuffers(bits, 2);
              }),
              77);
}

TEST(HEVCHrd, LowDelayHasOneBuffer) {
    EXPECT_EQ(SegmentationBehind([](BitStreamWriter& bits) {
                  bits.Flag(true).Flag(false);
                  WriteCommon(bits, 8, 8);
                  bits.Flag(false).Flag(false).Flag(true);
                  WriteBuffers(bits, 1);
              }),
              77);
}

TEST(HEVCHrd, MoreThan32BuffersAreRefused) {
    HEVCPayload payload;
    EXPECT_TRUE(ParseHRD(payload, 1, BitStreamWriter().Flag(false).Flag(false).Flag(true).UE(0).UE(31)));
    EXPECT_FALSE(ParseHRD(payload, 1, BitStreamWriter().Flag(false).Flag(false).Flag(true).UE(0).UE(32)));
}

TEST(HEVCHrd, EveryLayerHasParameters) {
    BitStreamWriter bits;
    bits.Flag(false).Flag(false);
    for (uint32_t layer = 0; layer < 2; ++layer)
        bits.Flag(true).UE(0).UE(0);
    bits.Flag(true).UE(0).UE(32);
    HEVCPayload payload;
    EXPECT_TRUE(ParseHRD(payload, 2, bits));
    EXPECT_FALSE(ParseHRD(payload, 3, bits));
}

TEST(HEVCHrd, NoLayersHaveNoParameters) {
    HEVCPayload payload;
    EXPECT_TRUE(ParseHRD(payload, 0, BitStreamWriter().Flag(false).Flag(false)));
}
