#include "iostream/HEVCSyntax.h"
#include "iostream/peer/HEVCPeerFacts.h"

#include <gtest/gtest.h>

// Sets made by hand with what x265 does not write, held against what FFmpeg makes of them.

namespace {

/// A stream of sets alone, with timing in the first.
void ExpectSetsAgree(const HEVCSequenceSet& sequence, const HEVCPictureSet& picture = {}) {
    const std::vector<uint8_t> stream = AnnexB({sequence.Unit(), picture.Unit()});
    ExpectTraced(Parsed(stream), TraceHeaders("hevc", stream));
}

} // namespace

TEST(HEVCPeerSets, TilesAgree) {
    const HEVCSequenceSet sequence = {.width = 256, .height = 256, .vui = HEVCLandmark()};
    ExpectSetsAgree(sequence, {.hasTiles = true});
    ExpectSetsAgree(sequence, {.hasQPDelta = true, .hasTiles = true, .hasWavefronts = true});
}

TEST(HEVCPeerSets, SubLayersAgree) {
    const auto subLayers = [](BitStreamWriter& bits) {
        bits.Flag(true).Flag(true).Flag(false).Flag(true).U(2 * 6, 0);
        bits.U(8, 1).U(32, 0x60000000).U(8, 0x90).U(32, 0).U(8, 0).U(8, 30).U(8, 60);
    };
    ExpectSetsAgree({.maxSubLayersMinus1 = 2,
                     .subLayers = subLayers,
                     .hasOrderingOfEachLayer = true,
                     .vui = HEVCLandmark()});
}

TEST(HEVCPeerSets, CodedScalingListsAndPCMAgree) {
    const auto lists = [](BitStreamWriter& bits) {
        bits.Flag(true);
        for (uint32_t list = 0; list < 3 * 6 + 2; ++list) {
            const uint32_t size = list / 6;
            const bool isCoded = list % 2 == 0;
            bits.Flag(isCoded);
            if (!isCoded) bits.UE(0);
            if (isCoded && size > 1) bits.SE(8);
            for (uint32_t entry = 0; isCoded && entry < (size == 0 ? 16 : 64); ++entry)
                bits.SE(entry % 2 == 0 ? 2 : -1);
        }
    };
    const auto pcm = [](BitStreamWriter& bits) { bits.U(4, 7).U(4, 7).UE(0).UE(0).Flag(true); };
    ExpectSetsAgree({.scalingLists = lists, .pcm = pcm, .vui = HEVCLandmark()});
}

TEST(HEVCPeerSets, ReferencePicturesAgree) {
    const auto shortTerm = [](BitStreamWriter& bits) {
        bits.UE(3);
        bits.UE(2).UE(1).UE(0).Flag(true).UE(3).Flag(false).UE(1).Flag(true);
        bits.Flag(true).Flag(false).UE(0);
        bits.Flag(true).Flag(false).Flag(true).Flag(false).Flag(false).Flag(true);
        bits.Flag(false).UE(1).UE(0).UE(0).Flag(true);
    };
    const auto longTerm = [](BitStreamWriter& bits) { bits.UE(2).U(8, 16).Flag(true).U(8, 32).Flag(false); };
    ExpectSetsAgree({.shortTerm = shortTerm, .longTerm = longTerm, .vui = HEVCLandmark()});
}

TEST(HEVCPeerSets, SubPictureHRDAndRestrictionsAgree) {
    const auto hrd = [](BitStreamWriter& bits) {
        bits.Flag(true).Flag(true).Flag(true).U(8, 98).U(5, 7).Flag(true).U(5, 6);
        bits.U(4, 1).U(4, 2).U(4, 3).U(5, 23).U(5, 17).U(5, 9);
        bits.Flag(false).Flag(false).Flag(false).UE(1);
        for (uint32_t buffer = 0; buffer < 2 * 2; ++buffer)
            bits.UE(100 + buffer % 2)
                .UE(200 - buffer % 2)
                .UE(300 - buffer % 2)
                .UE(400 + buffer % 2)
                .Flag(true);
    };
    const HEVCVui vui = {
        .aspect = [](BitStreamWriter& bits) { bits.U(8, 16); },
        .videoSignal = [](BitStreamWriter& bits) { bits.U(3, 5).Flag(true).Flag(false); },
        .chromaLocation = [](BitStreamWriter& bits) { bits.UE(1).UE(1); },
        .hasFrameFieldInfo = true,
        .displayWindow = [](BitStreamWriter& bits) { bits.UE(1).UE(2).UE(3).UE(4); },
        .timing = HEVCTiming(1001, 60000, hrd),
        .restrictions = [](BitStreamWriter& bits) { bits.U(3, 2).UE(300).UE(0).UE(0).UE(15).UE(15); }};
    ExpectSetsAgree({.chromaFormat = 2, .vui = vui});
}
