#include "prores/PrxFrameSetup.h"

#include "prores/PrxFormats.h"
#include "prores/StreamFrame.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <limits>

namespace {

using stream::Bytes;
using stream::FrameSpec;

uint8_t somewhere[64]; // set-up never touches the target

PrxOutputTarget TargetFor(uint32_t format, int32_t width, int32_t height, int32_t rowBytes) {
    return {somewhere, rowBytes, format, width, height};
}
PrxOutputTarget LargeTarget(uint32_t format = prxFormat2vuy) { return TargetFor(format, 4096, 4096, 65536); }

int32_t Prepare(const Bytes& frame, const PrxOutputTarget& target, int32_t mode = 1,
                PrxFrameSetup* out = nullptr, bool ignoreAlpha = false) {
    PrxFrameSetup setup;
    return PrxSetUpFrame({frame.data(), frame.size(), nullptr}, target, mode, ignoreAlpha,
                         out != nullptr ? out : &setup);
}

FrameSpec SpecOf(int width, int height, int interlaceMode = 0) {
    FrameSpec spec;
    spec.width = width;
    spec.height = height;
    spec.interlaceMode = interlaceMode;
    return spec;
}

TEST(FrameSize, OfExactlyTheInputIsAccepted) {
    const Bytes frame = stream::BuildFrame(FrameSpec{});
    EXPECT_EQ(Prepare(frame, LargeTarget()), static_cast<int32_t>(frame.size()));
}

TEST(FrameSize, OneByteAboveTheInputIsDamage) {
    Bytes frame = stream::BuildFrame(FrameSpec{});
    frame.pop_back();
    EXPECT_EQ(Prepare(frame, LargeTarget()), -2);
}

TEST(FrameSize, BelowTheInputIsReturnedAsItStands) {
    Bytes frame = stream::BuildFrame(FrameSpec{});
    stream::Patch32(frame, 0, 21);
    EXPECT_EQ(Prepare(frame, LargeTarget()), 21);
}

TEST(FrameSize, Of20OrLessIsDamageWhateverTheFrameHolds) {
    Bytes frame = stream::BuildFrame(FrameSpec{});
    for (uint32_t size = 0; size <= 20; ++size) {
        stream::Patch32(frame, 0, size);
        EXPECT_EQ(Prepare(frame, LargeTarget()), -2) << size;
        EXPECT_EQ(Prepare(Bytes(frame.begin(), frame.begin() + size), LargeTarget()), -2) << size;
    }
}

TEST(FrameSize, WithTheTopBitSetIsDamage) {
    Bytes frame = stream::BuildFrame(FrameSpec{});
    for (const uint32_t size : {0x80000000U, 0x80000100U, 0xffffffffU}) {
        stream::Patch32(frame, 0, size);
        EXPECT_EQ(Prepare(frame, LargeTarget()), -2) << size;
    }
}

TEST(FrameSize, OfAnEmptyInputIsDamage) { EXPECT_EQ(Prepare({}, LargeTarget()), -2); }

TEST(FrameChecks, HeaderThatIsRefusedIsDamage) {
    FrameSpec spec;
    spec.version = 2;
    EXPECT_EQ(Prepare(stream::BuildFrame(spec), LargeTarget()), -2);
    spec.version = 1;
    EXPECT_GT(Prepare(stream::BuildFrame(spec), LargeTarget()), 0);
    Bytes frame = stream::BuildFrame(spec);
    stream::Patch16(frame, 8, 19);
    EXPECT_EQ(Prepare(frame, LargeTarget()), -2);
}

TEST(FrameChecks, NoPixelsAreDamage) {
    Bytes noWidth = stream::BuildFrame(FrameSpec{});
    stream::Patch16(noWidth, 16, 0);
    EXPECT_EQ(Prepare(noWidth, LargeTarget()), -2);
    Bytes noHeight = stream::BuildFrame(FrameSpec{});
    stream::Patch16(noHeight, 18, 0);
    EXPECT_EQ(Prepare(noHeight, LargeTarget()), -2);
}

TEST(FrameChecks, InterlacedFrameOfOneLineHasNoBottomField) {
    const Bytes frame = stream::BuildFrame(SpecOf(32, 1, 1));
    EXPECT_EQ(Prepare(frame, LargeTarget(), 1), -2);
    EXPECT_GT(Prepare(frame, LargeTarget(), 3), 0);
    EXPECT_EQ(Prepare(frame, LargeTarget(), 4), -2);
}

TEST(FrameChecks, PictureHeaderBelowEightBytesIsDamage) {
    stream::FramePlaces places;
    Bytes frame = stream::BuildFrame(FrameSpec{}, &places);
    frame[places.pictures[0].header] = 7 << 3;
    EXPECT_EQ(Prepare(frame, LargeTarget()), -2);
}

TEST(FrameChecks, PictureHeaderThatTheInputCutsIsDamage) {
    stream::FramePlaces places;
    Bytes frame = stream::BuildFrame(FrameSpec{}, &places);
    frame.resize(places.pictures[0].header + 8);
    stream::Patch32(frame, 0, 30);
    EXPECT_EQ(Prepare(frame, LargeTarget()), 30);
    frame.pop_back();
    EXPECT_EQ(Prepare(frame, LargeTarget()), -2);
}

TEST(FrameChecks, SecondFieldIsTestedOnlyIfItIsDecoded) {
    stream::FramePlaces places;
    Bytes frame = stream::BuildFrame(SpecOf(32, 32, 1), &places);
    frame[places.pictures[1].header] = 0;
    const auto size = static_cast<int32_t>(frame.size());
    EXPECT_EQ(Prepare(frame, LargeTarget(), 1), -2);
    EXPECT_EQ(Prepare(frame, LargeTarget(), 2), size);
    EXPECT_EQ(Prepare(frame, LargeTarget(), 4), -2);
}

TEST(FrameChecks, PictureSizeThatPassesTheEndLeavesNoSecondField) {
    stream::FramePlaces places;
    Bytes frame = stream::BuildFrame(SpecOf(32, 32, 1), &places);
    stream::Patch32(frame, places.pictures[0].header + 1, 0xffffffff);
    EXPECT_EQ(Prepare(frame, LargeTarget(), 1), -2);
}

// The order of failures: each frame below fails in the named way and in all later ones.

TEST(FailureOrder, DamagedFrameComesBeforeModeOutOfRange) {
    Bytes frame = stream::BuildFrame(FrameSpec{});
    stream::Patch16(frame, 8, 0);
    EXPECT_EQ(Prepare(frame, TargetFor(prxFormatYuvs, -1, -1, -1), 12), -2);
}

TEST(FailureOrder, ModeOutOfRangeComesBeforeSmallTarget) {
    for (const int32_t mode : {std::numeric_limits<int32_t>::min(), -1, 0, 12, 13}) {
        EXPECT_EQ(Prepare(stream::BuildFrame(FrameSpec{}), TargetFor(prxFormatYuvs, 1, 1, 1), mode), -3)
            << mode;
    }
}

TEST(FailureOrder, SmallTargetComesBeforeMissingWriter) {
    EXPECT_EQ(Prepare(stream::BuildFrame(SpecOf(32, 32, 3)), TargetFor(prxFormatYuvs, 31, 32, 4096)), -4);
}

TEST(FailureOrder, MissingWriterComesBeforeUndefinedFields) {
    EXPECT_EQ(Prepare(stream::BuildFrame(SpecOf(32, 32, 3)), LargeTarget(prxFormatYuvs)), -1);
    EXPECT_EQ(Prepare(stream::BuildFrame(SpecOf(32, 32)), LargeTarget(prxFormatYuvs), 3), -1);
}

TEST(FailureOrder, UndefinedFieldsComeBeforeDamagedPictures) {
    stream::FramePlaces places;
    Bytes frame = stream::BuildFrame(SpecOf(32, 32, 3), &places);
    frame[places.pictures[0].header] = 0;
    EXPECT_EQ(Prepare(frame, LargeTarget()), -3);
    frame[8 + 12] = 2 << 6; // progressive
    EXPECT_EQ(Prepare(frame, LargeTarget(), 4), -3);
    EXPECT_EQ(Prepare(frame, LargeTarget(), 1), -2);
}

TEST(MissingWriter, IsReportedForFormatsThatNothingDecodesTo) {
    const Bytes frame = stream::BuildFrame(FrameSpec{});
    for (const uint32_t format : {uint32_t{prxFormatYuvs}, 0U, 24U, 0x41424344U}) {
        EXPECT_EQ(Prepare(frame, LargeTarget(format)), -1) << std::hex << format;
    }
}

TEST(MissingWriter, IsReportedForL302FromA444Stream) {
    FrameSpec spec;
    EXPECT_GT(Prepare(stream::BuildFrame(spec), LargeTarget(prxFormatL302)), 0);
    spec.chromaFormat = 3;
    EXPECT_EQ(Prepare(stream::BuildFrame(spec), LargeTarget(prxFormatL302)), -1);
}

TEST(MissingWriter, IsReportedForChromaFormatsBelow422) {
    FrameSpec spec;
    for (const int chromaFormat : {0, 1}) {
        spec.chromaFormat = chromaFormat;
        EXPECT_EQ(Prepare(stream::BuildFrame(spec), LargeTarget()), -1);
    }
}

TEST(TargetSize, ExactlyThatOfThePictureIsEnough) {
    const Bytes frame = stream::BuildFrame(SpecOf(33, 18));
    EXPECT_GT(Prepare(frame, TargetFor(prxFormat2vuy, 33, 18, 96)), 0);
    EXPECT_EQ(Prepare(frame, TargetFor(prxFormat2vuy, 32, 18, 96)), -4);
    EXPECT_EQ(Prepare(frame, TargetFor(prxFormat2vuy, 33, 17, 96)), -4);
    EXPECT_EQ(Prepare(frame, TargetFor(prxFormat2vuy, 33, 18, 95)), -4);
}

TEST(TargetSize, RowsOfV210CountByThreePixels) {
    const Bytes frame = stream::BuildFrame(SpecOf(33, 18));
    EXPECT_GT(Prepare(frame, TargetFor(prxFormatV210, 33, 18, 88)), 0);
    EXPECT_EQ(Prepare(frame, TargetFor(prxFormatV210, 33, 18, 87)), -4);
}

TEST(TargetSize, Of960PixelsTakes1920InHalfSize) {
    const Bytes frame = stream::BuildFrame(SpecOf(1920, 16));
    EXPECT_GT(Prepare(frame, TargetFor(prxFormat2vuy, 960, 8, 1920), 6), 0);
    EXPECT_EQ(Prepare(frame, TargetFor(prxFormat2vuy, 959, 8, 1920), 6), -4);
    EXPECT_EQ(Prepare(frame, TargetFor(prxFormat2vuy, 960, 8, 1919), 6), -4);
}

TEST(TargetSize, RowsHaveToTakeWholeReducedMacroblocks) {
    const Bytes frame = stream::BuildFrame(SpecOf(33, 16));
    EXPECT_GT(Prepare(frame, TargetFor(prxFormat2vuy, 16, 8, 48), 6), 0);
    EXPECT_EQ(Prepare(frame, TargetFor(prxFormat2vuy, 16, 8, 47), 6), -4);
}

TEST(TargetSize, BelowZeroIsTooSmall) {
    const Bytes frame = stream::BuildFrame(SpecOf(16, 16));
    constexpr int32_t least = std::numeric_limits<int32_t>::min();
    for (const int32_t negative : {-1, -65536, least}) {
        EXPECT_EQ(Prepare(frame, TargetFor(prxFormat2vuy, negative, 16, 32)), -4);
        EXPECT_EQ(Prepare(frame, TargetFor(prxFormat2vuy, 16, negative, 32)), -4);
        EXPECT_EQ(Prepare(frame, TargetFor(prxFormat2vuy, 16, 16, negative)), -4);
    }
}

TEST(TargetSize, WithoutMemoryIsTooSmall) {
    const PrxOutputTarget target{nullptr, 65536, prxFormat2vuy, 4096, 4096};
    EXPECT_EQ(Prepare(stream::BuildFrame(FrameSpec{}), target), -4);
}

TEST(TargetSize, CountsHalfTheFrameForAFieldEvenIfTheFieldHasOneLineMore) {
    const Bytes frame = stream::BuildFrame(SpecOf(16, 1081, 1));
    PrxFrameSetup setup;
    EXPECT_GT(Prepare(frame, TargetFor(prxFormat2vuy, 16, 540, 32), 2, &setup), 0);
    EXPECT_EQ(setup.pictures[0].height, 541);
    EXPECT_EQ(setup.pictures[0].outHeight, 540);
    EXPECT_EQ(Prepare(frame, TargetFor(prxFormat2vuy, 16, 539, 32), 2), -4);
}

TEST(TargetSize, CountsTheWidthAfterTheResampler) {
    const Bytes frame = stream::BuildFrame(SpecOf(1440, 16));
    PrxOutputTarget target = TargetFor(prxFormat2vuy, 1920, 16, 3840);
    target.widthResampler = [](const PrxResampleRows&) {};
    EXPECT_GT(Prepare(frame, target), 0);
    target.width = 1919;
    EXPECT_EQ(Prepare(frame, target), -4);
    target.width = 1920;
    target.rowBytes = 3839;
    EXPECT_EQ(Prepare(frame, target), -4);
}

struct ModeFacts {
    int32_t mode;
    int32_t hShift;
    int32_t vShift; // of a progressive frame
    uint32_t coefLimit;
};

TEST(Modes, SetTheReductionOfAProgressiveFrame) {
    for (const ModeFacts& facts :
         {ModeFacts{1, 0, 0, 64}, ModeFacts{2, 0, 1, 32}, ModeFacts{6, 1, 1, 16}, ModeFacts{7, 1, 1, 4},
          ModeFacts{8, 1, 2, 8}, ModeFacts{9, 2, 2, 4}, ModeFacts{10, 2, 3, 2}, ModeFacts{11, 3, 3, 1}}) {
        PrxFrameSetup setup;
        ASSERT_GT(Prepare(stream::BuildFrame(FrameSpec{}), LargeTarget(), facts.mode, &setup), 0);
        EXPECT_EQ(setup.pictures[0].HShift(), facts.hShift) << facts.mode;
        EXPECT_EQ(setup.pictures[0].VShift(), facts.vShift) << facts.mode;
        EXPECT_EQ(setup.pictures[0].order.coefLimit, facts.coefLimit) << facts.mode;
        EXPECT_NE(setup.pictures[0].idct, nullptr);
    }
}

TEST(Modes, ReduceTheLinesOfAFieldOnceLess) {
    for (const ModeFacts& facts :
         {ModeFacts{1, 0, 0, 64}, ModeFacts{2, 0, 0, 64}, ModeFacts{3, 0, 0, 64}, ModeFacts{4, 0, 0, 64},
          ModeFacts{5, 0, 0, 64}, ModeFacts{6, 1, 0, 32}, ModeFacts{7, 1, 0, 8}, ModeFacts{8, 1, 1, 16},
          ModeFacts{9, 2, 1, 8}, ModeFacts{10, 2, 2, 4}, ModeFacts{11, 3, 2, 2}}) {
        PrxFrameSetup setup;
        ASSERT_GT(Prepare(stream::BuildFrame(SpecOf(64, 32, 2)), LargeTarget(), facts.mode, &setup), 0);
        EXPECT_EQ(setup.pictures[0].VShift(), facts.vShift) << facts.mode;
        EXPECT_EQ(setup.pictures[0].order.coefLimit, facts.coefLimit) << facts.mode;
        EXPECT_LE(facts.coefLimit, setup.pictures[0].order.scan.size()) << facts.mode;
        EXPECT_NE(setup.pictures[0].idct, nullptr);
    }
}

TEST(Modes, FieldsOfAFullSizeFrameShareTheTargetLineByLine) {
    PrxFrameSetup setup;
    const PrxOutputTarget target = TargetFor(prxFormat2vuy, 16, 1083, 32);
    ASSERT_GT(Prepare(stream::BuildFrame(SpecOf(16, 1081, 2)), target, 1, &setup), 0);
    ASSERT_EQ(setup.pictureCount, 2);
    EXPECT_EQ(setup.pictures[0].outBase, somewhere + 32);
    EXPECT_EQ(setup.pictures[0].outHeight, 541);
    EXPECT_EQ(setup.pictures[0].height, 540);
    EXPECT_EQ(setup.pictures[1].outBase, somewhere);
    EXPECT_EQ(setup.pictures[1].outHeight, 542);
    EXPECT_EQ(setup.pictures[1].height, 541);
    EXPECT_EQ(setup.pictures[0].rowBytes, 64);
    EXPECT_EQ(setup.pictures[1].rowBytes, 64);
}

TEST(AlphaChoice, FollowsStreamFormatAndCaller) {
    FrameSpec spec;
    spec.alphaType = 2;
    const Bytes frame = stream::BuildFrame(spec);
    PrxFrameSetup setup;
    ASSERT_GT(Prepare(frame, LargeTarget(prxFormatB64a), 1, &setup), 0);
    EXPECT_NE(setup.pictures[0].alphaDecoder, nullptr);
    EXPECT_EQ(setup.pictures[0].alphaSampleSize, 2U);
    ASSERT_GT(Prepare(frame, LargeTarget(prxFormatV216), 1, &setup), 0);
    EXPECT_EQ(setup.pictures[0].alphaDecoder, nullptr);
    EXPECT_TRUE(setup.pictures[0].streamHasAlpha);
    ASSERT_GT(Prepare(frame, LargeTarget(prxFormatB64a), 1, &setup, true), 0);
    EXPECT_EQ(setup.pictures[0].alphaDecoder, nullptr);
    EXPECT_TRUE(setup.pictures[0].streamHasAlpha);
}

TEST(AlphaChoice, TypeAbove2HasAnAlphaSizeButNoDecoder) {
    FrameSpec spec;
    spec.alphaType = 3;
    PrxFrameSetup setup;
    ASSERT_GT(Prepare(stream::BuildFrame(spec), LargeTarget(prxFormatB64a), 1, &setup), 0);
    EXPECT_EQ(setup.pictures[0].alphaDecoder, nullptr);
    EXPECT_TRUE(setup.pictures[0].streamHasAlpha);
}

TEST(ColourMatrix, FallsBackByTheFrameHeight) {
    for (const int height : {719, 720}) {
        for (const int matrix : {0, 2, 255}) {
            FrameSpec spec = SpecOf(16, height);
            spec.matrixCoefficients = matrix;
            PrxFrameSetup setup;
            ASSERT_GT(Prepare(stream::BuildFrame(spec), LargeTarget(), 1, &setup), 0);
            EXPECT_EQ(setup.pictures[0].writerSetup.colorMatrix, height < 720 ? 6 : 1);
        }
        for (const int matrix : {1, 6, 9}) {
            FrameSpec spec = SpecOf(16, height);
            spec.matrixCoefficients = matrix;
            PrxFrameSetup setup;
            ASSERT_GT(Prepare(stream::BuildFrame(spec), LargeTarget(), 1, &setup), 0);
            EXPECT_EQ(setup.pictures[0].writerSetup.colorMatrix, matrix);
        }
    }
}

TEST(PixelStores, GoPastTheCachesWhereNothingReadsThePixelsAgain) {
    const auto streams = [](uint32_t format, int chromaFormat) {
        FrameSpec spec;
        spec.chromaFormat = chromaFormat;
        PrxFrameSetup setup;
        EXPECT_GT(Prepare(stream::BuildFrame(spec), LargeTarget(format), 1, &setup), 0);
        return setup.pictures[0].writerSetup.streams;
    };
    EXPECT_TRUE(streams(prxFormatV216, prxChroma422));
    EXPECT_TRUE(streams(prxFormatY416, prxChroma444));
    EXPECT_FALSE(streams(prxFormatY416, prxChroma422)) << "a pass finishes the last pixels of macroblocks";
    EXPECT_FALSE(streams(prxFormatV210, prxChroma422)) << "a pass packs a buffered row";
}

} // namespace
