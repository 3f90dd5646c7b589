#include "iostream/H264Sets.h"

#include <gtest/gtest.h>

#include <iterator>

namespace {

/// The sample format of a high profile as it is read: without bit_depth_chroma_minus8.
Syntax ReadFormat(uint32_t chromaFormatIdc, uint32_t bitDepthMinus8 = 0) {
    return [=](BitStreamWriter& bits) {
        bits.UE(chromaFormatIdc);
        if (chromaFormatIdc == 3) bits.Flag(false); // separate_colour_plane_flag
        bits.UE(bitDepthMinus8).U(2, 0);
    };
}

/// The same with a scaling matrix that `lists` writes.
Syntax ReadFormatWithLists(uint32_t chromaFormatIdc, const Syntax& lists) {
    return [=](BitStreamWriter& bits) {
        bits.UE(chromaFormatIdc);
        if (chromaFormatIdc == 3) bits.Flag(false);
        bits.UE(0).Flag(false).Flag(true);
        lists(bits);
    };
}

SequenceSet HighSet(const Syntax& format) {
    SequenceSet set;
    set.profile = 100;
    set.sampleFormat = format;
    set.log2MaxFrameNumMinus4 = 5;
    return set;
}

TEST(IOH264SequenceSet, BaselineOf1920By1080HasABottomCropOf8) {
    SequenceSet set;
    set.crop = {0, 0, 0, 4};
    H264Parsers payload;
    EXPECT_GT(payload.ReadSPS(set.Payload()), 0u);
    EXPECT_EQ(payload.info.width, 1920);
    EXPECT_EQ(payload.info.height, 1080);
    EXPECT_EQ(payload.info.cropBottom, 8);
}

TEST(IOH264SequenceSet, KeepsProfileAndLevelAndReferenceFrames) {
    SequenceSet set;
    set.profile = 77;
    set.level = 31;
    set.maxRefFrames = 5;
    H264Parsers payload;
    payload.ReadSPS(set.Payload());
    EXPECT_EQ(payload.info.profile, 77);
    EXPECT_EQ(payload.info.level, 31);
    EXPECT_EQ(payload.info.maxRefFrames, 5u);
}

TEST(IOH264SequenceSet, BaselineMainAndExtendedAre420Of8Bits) {
    for (const uint8_t profile : {66, 77, 88}) {
        SequenceSet set;
        set.profile = profile;
        H264Parsers payload;
        payload.ReadSPS(set.Payload());
        EXPECT_EQ(payload.info.chromaFormat, 420) << int{profile};
        EXPECT_EQ(payload.info.bitDepth, 8) << int{profile};
    }
}

TEST(IOH264SequenceSet, AProfileOutsideBothListsLeavesChromaFormatAndBitDepthAndReadsOn) {
    for (const uint8_t profile : {134, 135, 139, 0, 255}) {
        SequenceSet set;
        set.profile = profile;
        H264Parsers payload;
        payload.info.chromaFormat = 422;
        payload.info.bitDepth = 10;
        EXPECT_GT(payload.ReadSPS(set.Payload()), 0u);
        EXPECT_EQ(payload.info.chromaFormat, 422) << int{profile};
        EXPECT_EQ(payload.info.bitDepth, 10) << int{profile};
        EXPECT_EQ(payload.info.width, 1920) << int{profile};
    }
}

TEST(IOH264SequenceSet, TenProfilesTellChromaFormatAndBitDepth) {
    for (const uint8_t profile : {44, 83, 86, 100, 110, 118, 122, 128, 138, 244}) {
        SequenceSet set = HighSet(ReadFormat(2, 2));
        set.profile = profile;
        H264Parsers payload;
        EXPECT_GT(payload.ReadSPS(set.Payload()), 0u);
        EXPECT_EQ(payload.info.chromaFormat, 422) << int{profile};
        EXPECT_EQ(payload.info.bitDepth, 10) << int{profile};
        EXPECT_EQ(payload.info.width, 1920) << int{profile};
    }
}

TEST(IOH264SequenceSet, ChromaFormatsAreNamedBySampling) {
    constexpr uint16_t names[] = {1, 420, 422, 444};
    for (uint32_t idc = 0; idc < std::size(names); ++idc) {
        H264Parsers payload;
        EXPECT_GT(payload.ReadSPS(HighSet(ReadFormat(idc)).Payload()), 0u);
        EXPECT_EQ(payload.info.chromaFormat, names[idc]);
    }
}

TEST(IOH264SequenceSet, AChromaFormatAbove3IsRefusedWithProfileAndLevelKept) {
    H264Parsers payload;
    EXPECT_EQ(payload.ReadSPS(HighSet(ReadFormat(4)).Payload()), 0u);
    EXPECT_EQ(payload.info.profile, 100);
    EXPECT_EQ(payload.info.level, 40);
    EXPECT_EQ(payload.info.chromaFormat, 0);
}

TEST(IOH264SequenceSet, BitDepthHasEightBits) {
    H264Parsers payload;
    payload.ReadSPS(HighSet(ReadFormat(1, 250)).Payload());
    EXPECT_EQ(payload.info.bitDepth, 2);
}

TEST(IOH264SequenceSet, SeparateColourPlanesAreReadWith444AndStay) {
    H264Parsers payload;
    const auto format = [](BitStreamWriter& bits) { bits.UE(3).Flag(true).UE(0).U(2, 0); };
    payload.ReadSPS(HighSet(format).Payload());
    EXPECT_TRUE(payload.separateColourPlane);
    payload.ReadSPS(HighSet(ReadFormat(1)).Payload());
    EXPECT_TRUE(payload.separateColourPlane);
    payload.ReadSPS(HighSet(ReadFormat(3)).Payload());
    EXPECT_FALSE(payload.separateColourPlane);
}

TEST(IOH264SequenceSet, AHighSetAsTheStandardHasItIsReadOneBitEarly) {
    const auto standardFormat = [](BitStreamWriter& bits) {
        bits.UE(1).UE(0).UE(0).Flag(false).Flag(false); // the third is bit_depth_chroma_minus8
    };
    SequenceSet set = HighSet(standardFormat);
    set.log2MaxFrameNumMinus4 = 0;
    H264Parsers payload;
    payload.ReadSPS(set.Payload());
    EXPECT_EQ(payload.info.chromaFormat, 420);
    EXPECT_EQ(payload.info.bitDepth, 8);
    // The flag of the scaling matrix, 0, begins the code of log2_max_frame_num_minus4, 1, and that goes on
    // into the code of pic_order_cnt_type, 011: 010 in all.
    EXPECT_EQ(payload.log2MaxFrameNum, 1u + 4u);
}

TEST(IOH264SequenceSet, TheFlagBeforeTheMatrixIsTakenForItsOwn) {
    // bit_depth_chroma_minus8 0, qpprime_y_zero_transform_bypass_flag 1: eight list flags are read next.
    const auto format = [](BitStreamWriter& bits) { bits.UE(1).UE(0).UE(0).Flag(true).U(8, 0); };
    H264Parsers payload;
    EXPECT_GT(payload.ReadSPS(HighSet(format).Payload()), 0u);
    EXPECT_EQ(payload.log2MaxFrameNum, 9u);
    EXPECT_EQ(payload.info.width, 1920);
}

TEST(IOH264SequenceSet, AMatrixHas8ListsAnd12With444) {
    const auto noLists = [](uint32_t count) {
        return [=](BitStreamWriter& bits) { bits.Repeat(count, false); };
    };
    H264Parsers payload;
    payload.ReadSPS(HighSet(ReadFormatWithLists(2, noLists(8))).Payload());
    EXPECT_EQ(payload.info.width, 1920);
    H264Parsers payload444;
    payload444.ReadSPS(HighSet(ReadFormatWithLists(3, noLists(12))).Payload());
    EXPECT_EQ(payload444.info.width, 1920);
}

TEST(IOH264SequenceSet, TheFirst6ListsHave16EntriesAndTheOthers64) {
    const auto fullLists = [](BitStreamWriter& bits) {
        for (uint32_t list = 0; list < 8; ++list) {
            bits.Flag(true);
            for (uint32_t entry = 0; entry < (list < 6 ? 16u : 64u); ++entry)
                bits.SE(entry % 2 == 0 ? 3 : -3);
        }
    };
    H264Parsers payload;
    EXPECT_GT(payload.ReadSPS(HighSet(ReadFormatWithLists(1, fullLists)).Payload()), 0u);
    EXPECT_EQ(payload.log2MaxFrameNum, 9u);
    EXPECT_EQ(payload.info.width, 1920);
}

TEST(IOH264SequenceSet, AListEndsWhereTheNextScaleIsZeroModulo256) {
    for (const int32_t last : {-8, 248, -264}) {
        const auto lists = [=](BitStreamWriter& bits) { bits.Flag(true).SE(last).U(7, 0); };
        H264Parsers payload;
        payload.ReadSPS(HighSet(ReadFormatWithLists(1, lists)).Payload());
        EXPECT_EQ(payload.log2MaxFrameNum, 9u) << last;
        EXPECT_EQ(payload.info.width, 1920) << last;
    }
}

TEST(IOH264SequenceSet, AnIdAbove31IsRefused) {
    SequenceSet set;
    set.id = 31;
    H264Parsers payload;
    EXPECT_GT(payload.ReadSPS(set.Payload()), 0u);
    set.id = 32;
    set.widthInMbs = 10;
    EXPECT_EQ(payload.ReadSPS(set.Payload()), 0u);
    EXPECT_EQ(payload.info.width, 1920);
}

TEST(IOH264SequenceSet, PicOrderCntType0TellsTheLengthOfItsBits) {
    SequenceSet set;
    set.picOrderCnt = [](BitStreamWriter& bits) { bits.UE(0).UE(6); };
    H264Parsers payload;
    EXPECT_GT(payload.ReadSPS(set.Payload()), 0u);
    EXPECT_EQ(payload.picOrderCntType, 0u);
    EXPECT_EQ(payload.log2MaxPicOrderCntLsb, 10u);
    EXPECT_EQ(payload.info.width, 1920);
}

/// pic_order_cnt_type 1 with so many offsets.
Syntax OffsetCycle(uint32_t length) {
    return [=](BitStreamWriter& bits) {
        bits.UE(1).Flag(true).SE(-70).SE(5).UE(length);
        for (uint32_t frame = 0; frame < length; ++frame)
            bits.SE(-static_cast<int32_t>(frame));
    };
}

TEST(IOH264SequenceSet, PicOrderCntType1HasUpTo255Offsets) {
    SequenceSet set;
    set.picOrderCnt = OffsetCycle(255);
    H264Parsers payload;
    EXPECT_GT(payload.ReadSPS(set.Payload()), 0u);
    EXPECT_EQ(payload.picOrderCntType, 1u);
    EXPECT_TRUE(payload.deltaPicOrderAlwaysZero);
    EXPECT_EQ(payload.info.width, 1920);
}

TEST(IOH264SequenceSet, MoreThan255OffsetsAreRefused) {
    SequenceSet set;
    set.picOrderCnt = OffsetCycle(256);
    H264Parsers payload;
    EXPECT_EQ(payload.ReadSPS(set.Payload()), 0u);
    EXPECT_EQ(payload.picOrderCntType, 1u);
    EXPECT_EQ(payload.info.maxRefFrames, 0u);
}

TEST(IOH264SequenceSet, FramesAloneAreProgressive) {
    H264Parsers payload;
    payload.ReadSPS(SequenceSet().Payload());
    EXPECT_TRUE(payload.frameMbsOnly);
    EXPECT_EQ(payload.info.fieldOrder, 1u);
}

TEST(IOH264SequenceSet, WithFieldsAndNoSliceYetTheFieldOrderIsUnknown) {
    SequenceSet set;
    set.frameMbsOnly = false;
    set.heightInMapUnits = 34;
    H264Parsers payload;
    payload.ReadSPS(set.Payload());
    EXPECT_FALSE(payload.frameMbsOnly);
    EXPECT_EQ(payload.info.fieldOrder, 0u);
    EXPECT_EQ(payload.info.height, 34 * 32);
}

TEST(IOH264SequenceSet, ALaterSetWithFieldsClearsNeitherTheFrameFlagNorTheFieldOrder) {
    H264Parsers payload;
    payload.ReadSPS(SequenceSet().Payload());
    SequenceSet fields;
    fields.frameMbsOnly = false;
    payload.ReadSPS(fields.Payload());
    EXPECT_TRUE(payload.frameMbsOnly);
    EXPECT_EQ(payload.info.fieldOrder, 1u);
    EXPECT_EQ(payload.info.height, 68 * 32);
}

TEST(IOH264SequenceSet, TheMbaffFlagIsWrittenBySetsWithFieldsOnly) {
    SequenceSet mbaff;
    mbaff.frameMbsOnly = false;
    mbaff.mbAdaptive = true;
    H264Parsers payload;
    payload.ReadSPS(mbaff.Payload());
    EXPECT_TRUE(payload.info.mbAdaptiveFrameField);
    payload.ReadSPS(SequenceSet().Payload());
    EXPECT_TRUE(payload.info.mbAdaptiveFrameField);
    mbaff.mbAdaptive = false;
    payload.ReadSPS(mbaff.Payload());
    EXPECT_FALSE(payload.info.mbAdaptiveFrameField);
}

/// Cropping by 1, 2, 3 and 4 units.
SequenceSet CroppedSet(uint32_t chromaFormatIdc, bool frameMbsOnly) {
    SequenceSet set = HighSet(ReadFormat(chromaFormatIdc));
    set.frameMbsOnly = frameMbsOnly;
    set.crop = {1, 2, 3, 4};
    return set;
}

TEST(IOH264SequenceSet, CropUnitsFollowChromaFormatAndFields) {
    struct {
        uint32_t idc;
        bool frameMbsOnly;
        int unitX;
        int unitY;
    } constexpr cases[] = {{0, true, 1, 1},  {1, true, 2, 2},  {2, true, 2, 1},  {3, true, 1, 1},
                           {0, false, 1, 2}, {1, false, 2, 4}, {2, false, 2, 2}, {3, false, 1, 2}};
    for (const auto& example : cases) {
        H264Parsers payload;
        payload.ReadSPS(CroppedSet(example.idc, example.frameMbsOnly).Payload());
        SCOPED_TRACE(testing::Message() << example.idc << " " << example.frameMbsOnly);
        EXPECT_EQ(payload.info.cropLeft, example.unitX);
        EXPECT_EQ(payload.info.cropRight, 2 * example.unitX);
        EXPECT_EQ(payload.info.cropTop, 3 * example.unitY);
        EXPECT_EQ(payload.info.cropBottom, 4 * example.unitY);
        EXPECT_EQ(payload.info.width, 1920 - 3 * example.unitX);
        EXPECT_EQ(payload.info.height, (example.frameMbsOnly ? 1088 : 2176) - 7 * example.unitY);
    }
}

TEST(IOH264SequenceSet, ALaterSetWithoutCroppingScalesTheEarlierCroppingOnceMore) {
    SequenceSet set;
    set.crop = {0, 0, 0, 4};
    H264Parsers payload;
    payload.ReadSPS(set.Payload());
    payload.ReadSPS(SequenceSet().Payload());
    EXPECT_EQ(payload.info.cropBottom, 16);
    EXPECT_EQ(payload.info.height, 1088 - 16);
}

TEST(IOH264SequenceSet, SizesAndCroppingHave16Bits) {
    SequenceSet set;
    set.widthInMbs = 4097;
    set.crop = {0, 0x18001, 0, 0};
    H264Parsers payload;
    payload.ReadSPS(set.Payload());
    EXPECT_EQ(payload.info.cropRight, 2);
    EXPECT_EQ(payload.info.width, 16 - 2);
}

TEST(IOH264SequenceSet, AspectRatio7RefusesTheSetAfterItsSizeIsKept) {
    SequenceSet set;
    set.vui = [](BitStreamWriter& bits) { bits.Flag(true).U(8, 7).Repeat(16, false); };
    H264Parsers payload;
    EXPECT_EQ(payload.ReadSPS(set.Payload()), 0u);
    EXPECT_EQ(payload.info.width, 1920);
    EXPECT_EQ(payload.info.height, 1088);
}

TEST(IOH264SequenceSet, TheResultIsTheBytesThatWereTouched) {
    std::vector<uint8_t> payload = SequenceSet().Payload();
    const size_t size = payload.size();
    payload.insert(payload.end(), 20, 0xFF);
    EXPECT_EQ(H264Parsers().ReadSPS(payload), size);
}

TEST(IOH264SequenceSet, EmulationPreventionIsTakenOut) {
    SequenceSet set;
    set.maxRefFrames = (1u << 24) - 1; // 24 zeros
    const std::vector<uint8_t> escaped = WithEmulationPrevention(set.Payload());
    ASSERT_GT(escaped.size(), set.Payload().size());
    H264Parsers payload;
    EXPECT_EQ(payload.ReadSPS(escaped), escaped.size());
    EXPECT_EQ(payload.info.maxRefFrames, set.maxRefFrames);
    EXPECT_EQ(payload.info.width, 1920);
}

TEST(IOH264SequenceSet, LessThanThreeBytesAreRefusedUnread) {
    const std::vector<uint8_t> bytes = {66, 0, 40};
    for (uint32_t size = 0; size < 3; ++size) {
        H264Parsers payload;
        EXPECT_EQ(payload.ParseSPS(size == 0 ? nullptr : bytes.data(), size), 0u);
        EXPECT_EQ(payload.info.profile, 0);
    }
}

TEST(IOH264SequenceSet, ASetThatIsCutOffLeavesTheValuesBeforeTheCut) {
    BitStreamWriter bits;
    bits.U(8, 66).U(8, 0).U(8, 30).UE(0);    // profile, level, id
    bits.UE(2).UE(2).UE(3).Flag(false);      // frame numbers, order, references, gaps
    bits.UE(9).UE(9).Flag(true).Flag(true);  // size, frames only, direct_8x8_inference_flag
    bits.Flag(true).UE(5).UE(126);           // cropping of the left side; the code of the right one
    std::vector<uint8_t> cut = bits.Bytes(); // of 13 bits
    cut.pop_back();
    H264Parsers payload;
    payload.info.width = 77;
    EXPECT_THROW(payload.ReadSPS(cut), IOStream::BitBuffer::IOBitBufferNoDataException);
    EXPECT_EQ(payload.log2MaxFrameNum, 6u);
    EXPECT_EQ(payload.info.maxRefFrames, 3u);
    EXPECT_EQ(payload.info.fieldOrder, 1u);
    EXPECT_EQ(payload.info.cropLeft, 5); // not yet in samples
    EXPECT_EQ(payload.info.cropRight, 0);
    EXPECT_EQ(payload.info.width, 77);
}

} // namespace
