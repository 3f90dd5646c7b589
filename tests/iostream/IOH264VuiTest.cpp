#include "iostream/H264Sets.h"

#include <gtest/gtest.h>

#include <bit>

namespace {

using IOStream::BitBuffer;

/// The four flags and the colours of the part that H.264 and HEVC share, none of them present.
void WriteNoCommon(BitStreamWriter& bits) { bits.U(3, 0); }

/// All that follows the shared part, with nothing present.
void WriteNoRest(BitStreamWriter& bits) { bits.U(6, 0); }

/// A payload whose VUI parser has read the bits; `isAccepted` is its result.
struct VuiRead {
    explicit VuiRead(const Syntax& vui, uint32_t spsID = 0) {
        BitStreamWriter bits;
        vui(bits);
        bits.Trailing();
        BitBuffer reader(bits.Bytes().data(), static_cast<uint32_t>(bits.Bytes().size()));
        isAccepted = payload.ParseVUI(reader, spsID);
    }
    H264Parsers payload;
    const IOStream::IOElementaryStreamInfo& info = payload.info;
    bool isAccepted = false;
};

VuiRead ReadAspect(uint32_t idc) {
    return VuiRead([=](BitStreamWriter& bits) {
        bits.Flag(true).U(8, idc).U(2, 0);
        WriteNoRest(bits);
    });
}

TEST(IOH264Vui, EachAspectRatioHasItsFloat) {
    struct {
        uint32_t idc;
        uint32_t floatBits;
    } constexpr table[] = {{0, 0x3F800000},  {1, 0x3F800000},  {2, 0x3F8BA2E9},  {3, 0x3F68BA2F},
                           {4, 0x3FBA2E8C},  {5, 0x3F9B26CA},  {6, 0x400BA2E9},  {8, 0x403A2E8C},
                           {9, 0x401B26CA},  {10, 0x3FD1745D}, {11, 0x3FAE8BA3}, {12, 0x3FF83E10},
                           {13, 0x3FCEDE62}, {14, 0x3FAAAAAB}, {15, 0x3FC00000}, {16, 0x40000000}};
    for (const auto& [idc, floatBits] : table) {
        const VuiRead read = ReadAspect(idc);
        EXPECT_TRUE(read.isAccepted) << idc;
        EXPECT_EQ(std::bit_cast<uint32_t>(read.info.pixelAspect), floatBits) << idc;
    }
}

TEST(IOH264Vui, AspectRatio7IsRefused) {
    const VuiRead read = ReadAspect(7);
    EXPECT_FALSE(read.isAccepted);
    EXPECT_EQ(read.info.pixelAspect, 1.0F);
}

TEST(IOH264Vui, AspectRatiosBehindTheTableAreRefused) {
    for (uint32_t idc = 17; idc < 255; ++idc)
        EXPECT_FALSE(ReadAspect(idc).isAccepted) << idc;
}

TEST(IOH264Vui, AspectRatio255KeepsTheAspectAsItIs) {
    const VuiRead read([](BitStreamWriter& bits) {
        bits.Flag(true).U(8, 255).U(16, 64).U(16, 45).U(2, 0);
        bits.Flag(false).Flag(true).U(32, 1).U(32, 50).Flag(true).U(4, 0); // timing shows the place
    });
    EXPECT_TRUE(read.isAccepted);
    EXPECT_EQ(read.info.pixelAspect, 1.0F);
    EXPECT_EQ(read.info.frameRateNum, 25u);
}

TEST(IOH264Vui, OverscanIsPassedOver) {
    const VuiRead read([](BitStreamWriter& bits) {
        bits.Flag(false).Flag(true).Flag(true).Flag(true).U(3, 5).Flag(true).Flag(false);
        WriteNoRest(bits);
    });
    EXPECT_TRUE(read.isAccepted);
    EXPECT_EQ(read.info.fullRangeBySPS, (std::map<uint32_t, uint32_t>{{0, 2}}));
}

/// A video signal type without colours.
Syntax VideoSignal(uint32_t format, bool isFullRange) {
    return [=](BitStreamWriter& bits) {
        bits.U(2, 0).Flag(true).U(3, format).Flag(isFullRange).Flag(false);
        WriteNoRest(bits);
    };
}

TEST(IOH264Vui, TheRangeIsKeptById) {
    EXPECT_EQ(VuiRead(VideoSignal(5, true), 7).info.fullRangeBySPS, (std::map<uint32_t, uint32_t>{{7, 2}}));
    EXPECT_EQ(VuiRead(VideoSignal(5, false), 31).info.fullRangeBySPS,
              (std::map<uint32_t, uint32_t>{{31, 1}}));
}

TEST(IOH264Vui, ALaterSetOfTheSameIdOverwritesItsRangeAlone) {
    H264Parsers payload;
    for (const auto& [id, isFullRange] : {std::pair{1u, true}, {2u, true}, {1u, false}}) {
        SequenceSet set;
        set.id = id;
        set.vui = VideoSignal(5, isFullRange);
        payload.ReadSPS(set.Payload());
    }
    EXPECT_EQ(payload.info.fullRangeBySPS, (std::map<uint32_t, uint32_t>{{1, 1}, {2, 2}}));
}

TEST(IOH264Vui, VideoFormatsAbove5AreRefused) {
    for (const uint32_t format : {6, 7}) {
        const VuiRead read(VideoSignal(format, true));
        EXPECT_FALSE(read.isAccepted);
        EXPECT_TRUE(read.info.fullRangeBySPS.empty());
    }
}

TEST(IOH264Vui, ColoursAreKept) {
    const VuiRead read([](BitStreamWriter& bits) {
        bits.U(2, 0).Flag(true).U(3, 5).Flag(false).Flag(true).U(8, 9).U(8, 16).U(8, 10);
        WriteNoRest(bits);
    });
    EXPECT_TRUE(read.isAccepted);
    EXPECT_EQ(read.info.colourPrimaries, 9);
    EXPECT_EQ(read.info.transferCharacteristics, 16);
    EXPECT_EQ(read.info.matrixCoefficients, 10);
}

TEST(IOH264Vui, WithoutColoursTheyStayUnspecified) {
    const VuiRead read(VideoSignal(5, false));
    EXPECT_EQ(read.info.colourPrimaries, 2);
    EXPECT_EQ(read.info.transferCharacteristics, 2);
    EXPECT_EQ(read.info.matrixCoefficients, 2);
}

VuiRead ReadTiming(uint32_t unitsInTick, uint32_t timeScale, bool isFixed = true) {
    return VuiRead([=](BitStreamWriter& bits) {
        WriteNoCommon(bits);
        bits.Flag(false).Flag(true).U(32, unitsInTick).U(32, timeScale).Flag(isFixed).U(4, 0);
    });
}

TEST(IOH264Vui, ATimeScaleOf60000Over1001Is30000Over1001) {
    const VuiRead read = ReadTiming(1001, 60000);
    EXPECT_TRUE(read.isAccepted);
    EXPECT_EQ(read.info.frameRateNum, 30000u);
    EXPECT_EQ(read.info.frameRateDen, 1001u);
}

TEST(IOH264Vui, AnOddTimeScaleLosesItsHalf) { EXPECT_EQ(ReadTiming(1, 25).info.frameRateNum, 12u); }

TEST(IOH264Vui, TimingHas32Bits) {
    const VuiRead read = ReadTiming(0xFFFFFFFF, 0xFFFFFFFF);
    EXPECT_EQ(read.info.frameRateNum, 0x7FFFFFFFu);
    EXPECT_EQ(read.info.frameRateDen, 0xFFFFFFFFu);
}

TEST(IOH264Vui, TheFixedRateFlagIsKept) {
    EXPECT_TRUE(ReadTiming(1, 50, true).info.fixedFrameRate);
    EXPECT_FALSE(ReadTiming(1, 50, false).info.fixedFrameRate);
}

TEST(IOH264Vui, TheChromaPlaceIsPassedOver) {
    const VuiRead read([](BitStreamWriter& bits) {
        WriteNoCommon(bits);
        bits.Flag(true).UE(2).UE(3).Flag(true).U(32, 1).U(32, 48).Flag(true).U(4, 0);
    });
    EXPECT_TRUE(read.isAccepted);
    EXPECT_EQ(read.info.frameRateNum, 24u);
}

/// HRD parameters with `count` buffers and these lengths, in bits.
struct Hrd {
    uint32_t count = 1;
    uint32_t cpbRemovalDelayLength = 20;
    uint32_t dpbOutputDelayLength = 18;
    uint32_t timeOffsetLength = 5;

    void Write(BitStreamWriter& bits) const {
        bits.UE(count - 1).U(4, 3).U(4, 9);
        for (uint32_t cpb = 0; cpb < count; ++cpb)
            bits.UE(1000 + cpb).UE(2000 + cpb).Flag(true);
        bits.U(5, 23).U(5, cpbRemovalDelayLength - 1).U(5, dpbOutputDelayLength - 1).U(5, timeOffsetLength);
    }
};

/// VUI parameters with the HRD parameters that are there, and pic_struct_present_flag.
VuiRead ReadHrd(const std::optional<Hrd>& nal, const std::optional<Hrd>& vcl, bool hasPicStruct = true) {
    return VuiRead([&](BitStreamWriter& bits) {
        WriteNoCommon(bits);
        bits.U(2, 0);
        for (const auto& hrd : {nal, vcl}) {
            bits.Flag(hrd.has_value());
            if (hrd) hrd->Write(bits);
        }
        if (nal || vcl) bits.Flag(!hasPicStruct); // low_delay_hrd_flag
        bits.Flag(hasPicStruct).Flag(false);
    });
}

TEST(IOH264Vui, WithoutHrdTheLengthsStay24) {
    const VuiRead read = ReadHrd(std::nullopt, std::nullopt);
    EXPECT_TRUE(read.isAccepted);
    EXPECT_FALSE(read.info.hrdPresent);
    EXPECT_EQ(read.info.cpbRemovalDelayLength, 24);
    EXPECT_EQ(read.info.dpbOutputDelayLength, 24);
    EXPECT_EQ(read.info.timeOffsetLength, 24);
    EXPECT_TRUE(read.info.picStructPresent);
}

TEST(IOH264Vui, EitherHrdTellsLengths) {
    for (const bool isNal : {true, false}) {
        const Hrd hrd;
        const VuiRead read = isNal ? ReadHrd(hrd, std::nullopt) : ReadHrd(std::nullopt, hrd);
        EXPECT_TRUE(read.isAccepted);
        EXPECT_TRUE(read.info.hrdPresent);
        EXPECT_EQ(read.info.cpbRemovalDelayLength, 20);
        EXPECT_EQ(read.info.dpbOutputDelayLength, 18);
        EXPECT_EQ(read.info.timeOffsetLength, 5);
        EXPECT_TRUE(read.info.picStructPresent);
    }
}

TEST(IOH264Vui, OfTwoHrdsTheSecondCounts) {
    const VuiRead read = ReadHrd(Hrd{32, 10, 11, 12}, Hrd{2, 13, 14, 0}, false);
    EXPECT_TRUE(read.isAccepted);
    EXPECT_EQ(read.info.cpbRemovalDelayLength, 13);
    EXPECT_EQ(read.info.dpbOutputDelayLength, 14);
    EXPECT_EQ(read.info.timeOffsetLength, 0);
    EXPECT_FALSE(read.info.picStructPresent);
}

TEST(IOH264Vui, AnHrdWithCpbCntMinus1Of32IsRefused) {
    BitStreamWriter bits;
    Hrd{33}.Write(bits);
    BitBuffer reader(bits.Bytes().data(), static_cast<uint32_t>(bits.Bytes().size()));
    EXPECT_FALSE(H264Parsers().ParseHRD(reader));
}

TEST(IOH264Vui, ARefusedHrdRefusesTheVuiBeforeItCounts) {
    for (const bool isNal : {true, false}) {
        const Hrd hrd{33};
        const VuiRead read = isNal ? ReadHrd(hrd, std::nullopt) : ReadHrd(std::nullopt, hrd);
        EXPECT_FALSE(read.isAccepted);
        EXPECT_FALSE(read.info.hrdPresent);
    }
}

TEST(IOH264Vui, DelaysOf25BitsAreRefusedAndKept) {
    const VuiRead longRemoval = ReadHrd(Hrd{1, 25, 24, 3}, std::nullopt);
    EXPECT_FALSE(longRemoval.isAccepted);
    EXPECT_EQ(longRemoval.info.cpbRemovalDelayLength, 25);
    EXPECT_EQ(longRemoval.info.timeOffsetLength, 24);
    EXPECT_FALSE(ReadHrd(Hrd{1, 24, 25, 3}, std::nullopt).isAccepted);
    EXPECT_TRUE(ReadHrd(Hrd{1, 24, 24, 3}, std::nullopt).isAccepted);
}

TEST(IOH264Vui, ARestrictionIsReadToItsEnd) {
    BitStreamWriter bits;
    WriteNoCommon(bits);
    bits.U(5, 0).Flag(true).Flag(true); // bitstream_restriction_flag, and the vectors' flag
    for (uint32_t element = 0; element < 6; ++element)
        bits.UE(30 + element);
    const auto used = static_cast<uint32_t>(bits.Bytes().size());
    bits.Align().U(32, 0);
    BitBuffer reader(bits.Bytes().data(), used + 4);
    EXPECT_TRUE(H264Parsers().ParseVUI(reader, 0));
    EXPECT_EQ(reader.bytesLeft, 4u);
}

TEST(IOH264Vui, VuiThatIsCutOffLeavesTheValuesBeforeTheCut) {
    BitStreamWriter bits;
    bits.Flag(true).U(8, 14).Flag(false).Flag(true).U(3, 5).Flag(true).Flag(true).U(8, 9);
    H264Parsers payload;
    BitBuffer reader(bits.Bytes().data(), static_cast<uint32_t>(bits.Bytes().size()));
    EXPECT_THROW(payload.ParseVUI(reader, 4), BitBuffer::IOBitBufferNoDataException);
    EXPECT_EQ(payload.info.pixelAspect, 4.0F / 3.0F);
    EXPECT_EQ(payload.info.fullRangeBySPS.at(4), 2u);
    EXPECT_EQ(payload.info.colourPrimaries, 9);
    EXPECT_EQ(payload.info.transferCharacteristics, 2);
}

} // namespace
