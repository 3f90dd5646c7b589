#include "iostream/HEVCSyntax.h"
#include "iostream/PayloadAccess.h"

#include <gtest/gtest.h>

// Sequence and picture parameter sets of HEVC. "The parser keeps its place" is told by the frame rate behind
// the syntax in question.

namespace {

HEVCPayload Parsed(const HEVCSequenceSet& set) {
    HEVCPayload payload;
    payload.Parse(set.Unit());
    return payload;
}

void ExpectPlaceKept(const HEVCSequenceSet& set) {
    const HEVCPayload payload = Parsed(set);
    EXPECT_EQ(payload.info.frameRateNum, 50U);
    EXPECT_EQ(payload.info.frameRateDen, 2U);
}

void ExpectRefused(const HEVCSequenceSet& set) {
    const HEVCPayload payload = Parsed(set);
    EXPECT_EQ(payload.info.level, 93); // what stands before is read
    EXPECT_EQ(payload.info.frameRateNum, 0U);
}

/// parallelismType.
int ParallelismOf(const HEVCPictureSet& set) {
    HEVCPayload payload;
    payload.Parse(set.Unit());
    return payload.record[15];
}

} // namespace

TEST(HEVCSequenceParameterSet, GivesSizeAndFormat) {
    const HEVCPayload payload = Parsed({.width = 1920, .height = 1080});
    EXPECT_EQ(payload.info.width, 1920);
    EXPECT_EQ(payload.info.height, 1080);
    EXPECT_EQ(payload.info.chromaFormat, 420);
    EXPECT_EQ(payload.info.bitDepth, 8);
    EXPECT_EQ(payload.log2MaxPicOrderCntLsb, 8U);
}

TEST(HEVCSequenceParameterSet, BitDepthOfTheProfileIsOverwrittenByTheSet) {
    const HEVCSequenceSet main10 = {.profile = 2, .lumaDepthMinus8 = 1, .chromaDepthMinus8 = 2};
    const HEVCPayload payload = Parsed(main10);
    EXPECT_EQ(payload.info.bitDepth, 9);
    EXPECT_EQ(payload.record[17], 1);
    EXPECT_EQ(payload.record[18], 2);
}

TEST(HEVCSequenceParameterSet, BitDepthsAreCutToThreeBits) {
    const HEVCPayload payload = Parsed({.lumaDepthMinus8 = 10, .chromaDepthMinus8 = 12});
    EXPECT_EQ(payload.info.bitDepth, 10);
    EXPECT_EQ(payload.record[17], 2);
    EXPECT_EQ(payload.record[18], 4);
}

TEST(HEVCSequenceParameterSet, ChromaFormatsAreNamedByTheirNumbers) {
    constexpr std::array<uint16_t, 4> formats = {1, 420, 422, 444};
    for (uint32_t idc = 0; idc < formats.size(); ++idc) {
        const HEVCPayload payload = Parsed({.profile = 4, .chromaFormat = idc});
        EXPECT_EQ(payload.info.chromaFormat, formats[idc]);
        EXPECT_EQ(payload.record[16], idc);
    }
}

TEST(HEVCSequenceParameterSet, SeparatePlanesAreReadWith444) {
    HEVCSequenceSet set = {.profile = 4, .chromaFormat = 3, .hasSeparatePlanes = true, .vui = HEVCLandmark()};
    EXPECT_TRUE(Parsed(set).separateColourPlane);
    ExpectPlaceKept(set);
}

TEST(HEVCSequenceParameterSet, UnknownChromaFormatIsNotRefused) {
    const HEVCPayload payload = Parsed({.profile = 4, .chromaFormat = 6, .width = 320});
    EXPECT_EQ(payload.info.chromaFormat, 0);
    EXPECT_EQ(payload.record[16], 2);
    EXPECT_EQ(payload.info.width, 320);
}

TEST(HEVCSequenceParameterSet, SizesAreCutTo16Bits) {
    const HEVCPayload payload = Parsed({.width = 65536 + 48, .height = 65536 + 32});
    EXPECT_EQ(payload.info.width, 48);
    EXPECT_EQ(payload.info.height, 32);
}

TEST(HEVCSequenceParameterSet, WindowCountsChromaSamples) {
    struct Case {
        uint32_t chromaFormat;
        uint16_t unitX, unitY;
    };
    for (const Case& chroma : {Case{0, 1, 1}, Case{1, 2, 2}, Case{2, 2, 1}, Case{3, 1, 1}}) {
        const auto window = [](BitStreamWriter& bits) { bits.UE(1).UE(2).UE(3).UE(4); };
        const HEVCPayload payload =
            Parsed({.profile = 4, .chromaFormat = chroma.chromaFormat, .window = window});
        EXPECT_EQ(payload.info.cropLeft, 1 * chroma.unitX);
        EXPECT_EQ(payload.info.cropRight, 2 * chroma.unitX);
        EXPECT_EQ(payload.info.cropTop, 3 * chroma.unitY);
        EXPECT_EQ(payload.info.cropBottom, 4 * chroma.unitY);
        EXPECT_EQ(payload.info.width, 64 - 3 * chroma.unitX);
        EXPECT_EQ(payload.info.height, 48 - 7 * chroma.unitY);
    }
}

TEST(HEVCSequenceParameterSet, WindowOfAnEarlierSetStaysButCutsNothing) {
    HEVCPayload payload;
    payload.Parse(
        HEVCSequenceSet{.window = [](BitStreamWriter& bits) { bits.UE(0).UE(1).UE(0).UE(2); }}.Unit());
    payload.Parse(HEVCSequenceSet{}.Unit());
    EXPECT_EQ(payload.info.cropRight, 2);
    EXPECT_EQ(payload.info.cropBottom, 4);
    EXPECT_EQ(payload.info.width, 64);
    EXPECT_EQ(payload.info.height, 48);
}

TEST(HEVCSequenceParameterSet, LaterSetOverwritesWhateverItsID) {
    HEVCPayload payload;
    payload.Parse(HEVCSequenceSet{.id = 0, .width = 64}.Unit());
    payload.Parse(HEVCSequenceSet{.id = 5, .width = 128}.Unit());
    payload.Parse(HEVCSequenceSet{.id = 0, .width = 96}.Unit());
    EXPECT_EQ(payload.info.width, 96);
}

TEST(HEVCSequenceParameterSet, ID32IsRefused) {
    EXPECT_EQ(Parsed({.id = 31}).info.width, 64);
    EXPECT_EQ(Parsed({.id = 32}).info.width, 0);
}

TEST(HEVCSequenceParameterSet, PicOrderCountOfMoreThan16BitsIsStoredAndRefused) {
    ExpectPlaceKept({.log2MaxPicOrderCntMinus4 = 12, .vui = HEVCLandmark()});
    const HEVCSequenceSet set = {.log2MaxPicOrderCntMinus4 = 13, .vui = HEVCLandmark()};
    ExpectRefused(set);
    EXPECT_EQ(Parsed(set).log2MaxPicOrderCntLsb, 17U);
}

TEST(HEVCSequenceParameterSet, LayersAndNestingGoIntoTheRecord) {
    const auto noSubLayers = [](BitStreamWriter& bits) { bits.U(16, 0); };
    const HEVCPayload payload =
        Parsed({.maxSubLayersMinus1 = 2, .isNested = false, .subLayers = noSubLayers, .vui = HEVCLandmark()});
    EXPECT_EQ(payload.record[21], 3 << 3);
    EXPECT_EQ(Parsed({}).record[21], 1 << 3 | 1 << 2);
}

TEST(HEVCSequenceParameterSet, OrderingOfEachLayerKeepsItsPlace) {
    const auto noSubLayers = [](BitStreamWriter& bits) { bits.U(16, 0); };
    ExpectPlaceKept({.maxSubLayersMinus1 = 3,
                     .subLayers = noSubLayers,
                     .hasOrderingOfEachLayer = true,
                     .vui = HEVCLandmark()});
}

TEST(HEVCSequenceParameterSet, DefaultScalingListsKeepTheirPlace) {
    ExpectPlaceKept({.scalingLists = [](BitStreamWriter& bits) { bits.Flag(false); }, .vui = HEVCLandmark()});
}

TEST(HEVCSequenceParameterSet, CodedScalingListsKeepTheirPlace) {
    const auto lists = [](BitStreamWriter& bits) {
        bits.Flag(true);
        for (uint32_t size = 0; size < 4; ++size) {
            for (uint32_t matrix = 0; matrix < (size == 3 ? 2 : 6); ++matrix) {
                bits.Flag(true);
                if (size > 1) bits.SE(-3); // scaling_list_dc_coef_minus8
                for (uint32_t entry = 0; entry < (size == 0 ? 16 : 64); ++entry)
                    bits.SE(entry % 2 == 0 ? 1 : -1);
            }
        }
    };
    ExpectPlaceKept({.scalingLists = lists, .vui = HEVCLandmark()});
}

TEST(HEVCSequenceParameterSet, PredictedScalingListsKeepTheirPlace) {
    const auto lists = [](BitStreamWriter& bits) {
        bits.Flag(true);
        for (uint32_t list = 0; list < 3 * 6 + 2; ++list)
            bits.Flag(false).UE(0);
    };
    ExpectPlaceKept({.scalingLists = lists, .vui = HEVCLandmark()});
}

TEST(HEVCSequenceParameterSet, PCMKeepsItsPlace) {
    const auto pcm = [](BitStreamWriter& bits) { bits.U(4, 7).U(4, 7).UE(0).UE(2).Flag(true); };
    ExpectPlaceKept({.pcm = pcm, .vui = HEVCLandmark()});
}

TEST(HEVCSequenceParameterSet, ShortTermPicturesKeepTheirPlace) {
    const auto sets = [](BitStreamWriter& bits) {
        bits.UE(2);
        bits.UE(2).UE(1); // two before, one after, each a distance and whether it is used
        bits.UE(0).Flag(true).UE(3).Flag(false).UE(1).Flag(true);
        bits.Flag(false).UE(0).UE(0); // an empty one
    };
    ExpectPlaceKept({.shortTerm = sets, .vui = HEVCLandmark()});
}

// A set that is predicted has an entry for each picture of the one before and one more. An entry counts if
// the picture is used by this picture or by later ones.
TEST(HEVCSequenceParameterSet, PredictedShortTermPicturesCountBothKindsOfUse) {
    const auto sets = [](BitStreamWriter& bits) {
        bits.UE(4);
        bits.UE(1).UE(0).UE(0).Flag(true);
        bits.Flag(true).Flag(false).UE(0); // two entries:
        bits.Flag(true);                   // used now
        bits.Flag(false).Flag(true);       // used later: the set has two pictures
        bits.Flag(true).Flag(true).UE(1);  // three entries:
        bits.Flag(false).Flag(false);      // not used
        bits.Flag(true).Flag(false).Flag(true);
        bits.Flag(true).Flag(true).UE(1); // three entries again, as one of those before is not used
        bits.Repeat(3, true);
    };
    ExpectPlaceKept({.shortTerm = sets, .vui = HEVCLandmark()});
}

TEST(HEVCSequenceParameterSet, MoreThan64ShortTermSetsAreRefused) {
    const auto sets = [](uint32_t count) {
        return [count](BitStreamWriter& bits) {
            bits.UE(count);
            for (uint32_t set = 0; set < count; ++set)
                (set == 0 ? bits : bits.Flag(false)).UE(0).UE(0);
        };
    };
    ExpectPlaceKept({.shortTerm = sets(64), .vui = HEVCLandmark()});
    ExpectRefused({.shortTerm = sets(65), .vui = HEVCLandmark()});
}

TEST(HEVCSequenceParameterSet, MoreThan16PicturesOnASideAreRefused) {
    const auto set = [](uint32_t negative, uint32_t positive) {
        return [=](BitStreamWriter& bits) {
            bits.UE(1).UE(negative).UE(positive);
            for (uint32_t entry = 0; entry < negative + positive; ++entry)
                bits.UE(0).Flag(true);
        };
    };
    ExpectPlaceKept({.shortTerm = set(16, 16), .vui = HEVCLandmark()});
    ExpectRefused({.shortTerm = set(17, 0), .vui = HEVCLandmark()});
    ExpectRefused({.shortTerm = set(0, 17), .vui = HEVCLandmark()});
}

TEST(HEVCSequenceParameterSet, LongTermPicturesKeepTheirPlace) {
    const auto pictures = [](uint32_t count) {
        return [count](BitStreamWriter& bits) {
            bits.UE(count);
            for (uint32_t picture = 0; picture < count; ++picture)
                bits.U(8, picture).Flag(true);
        };
    };
    ExpectPlaceKept({.longTerm = pictures(0), .vui = HEVCLandmark()});
    ExpectPlaceKept({.longTerm = pictures(31), .vui = HEVCLandmark()});
    ExpectRefused({.longTerm = pictures(32), .vui = HEVCLandmark()});
}

TEST(HEVCSequenceParameterSet, RefusedVUIDoesNotRefuseTheSet) {
    const auto vui = HEVCVui{.aspect = [](BitStreamWriter& bits) { bits.U(8, 17); }};
    const std::vector<uint8_t> unit = HEVCSequenceSet{.vui = vui}.Unit();
    HEVCPayload payload;
    EXPECT_TRUE(payload.ParseSPS(unit.data() + 2, static_cast<uint32_t>(unit.size() - 2)));
}

TEST(HEVCPictureParameterSet, TilesAndWavefrontsTogetherAreMixed) {
    HEVCPayload payload;
    payload.record[15] = 3;
    payload.Parse(HEVCPictureSet{.hasTiles = true, .hasWavefronts = true}.Unit());
    EXPECT_EQ(payload.record[15], 0);
}

TEST(HEVCPictureParameterSet, TilesAlone) { EXPECT_EQ(ParallelismOf({.hasTiles = true}), 2); }

TEST(HEVCPictureParameterSet, WavefrontsAlone) { EXPECT_EQ(ParallelismOf({.hasWavefronts = true}), 3); }

TEST(HEVCPictureParameterSet, NeitherLeavesSlices) { EXPECT_EQ(ParallelismOf({}), 1); }

TEST(HEVCPictureParameterSet, QuantiserDepthIsPassedOver) {
    EXPECT_EQ(ParallelismOf({.hasQPDelta = true, .hasTiles = true}), 2);
}
