#include "prores/PrxDecoder.h"

#include "prores/PrxFormats.h"
#include "prores/StreamFrame.h"
#include "prores/TestFrames.h"
#include "prores/TestTarget.h"

#include <gtest/gtest.h>

namespace {

/// What a decode of `spec` says of its opacity; 77 stands for untouched.
int32_t OpacityOf(const stream::FrameSpec& spec, uint32_t format, int32_t mode = 1,
                  bool ignoreAlpha = false) {
    PrxDecoder decoder(2, nullptr);
    const TestTarget target(format, 256, 256, 4096);
    uint8_t isOpaque = 77;
    Decode(decoder, stream::BuildFrame(spec), target, mode, ignoreAlpha, &isOpaque);
    return isOpaque;
}

stream::FrameSpec OpaqueFrame(int alphaType, int interlaceMode = 0) {
    stream::FrameSpec spec = FrameOf(3, interlaceMode, alphaType);
    spec.alpha = nullptr;
    return spec;
}

TEST(IsOpaque, IsSetForAStreamWithoutAlpha) {
    EXPECT_EQ(OpacityOf(FrameOf(3), prxFormatB64a), 1);
    EXPECT_EQ(OpacityOf(FrameOf(2), prxFormatV216, 6), 1);
    EXPECT_EQ(OpacityOf(FrameOf(2, 1), prxFormatV216, 2), 1);
}

TEST(IsOpaque, IsSetForAStreamWithoutAlphaEvenIfSlicesFail) {
    stream::FrameSpec spec = FrameOf(2);
    spec.editSlice = [](const stream::SlicePlace&, stream::Bytes& slice) { slice[0] = 0; };
    EXPECT_EQ(OpacityOf(spec, prxFormatV216), 1);
}

TEST(IsOpaque, IsSetIfAllAlphaHasFullValue) {
    for (const int alphaType : {1, 2}) {
        EXPECT_EQ(OpacityOf(OpaqueFrame(alphaType), prxFormatB64a), 1);
        EXPECT_EQ(OpacityOf(OpaqueFrame(alphaType, 1), prxFormatB64a), 1);
        EXPECT_EQ(OpacityOf(OpaqueFrame(alphaType), prxFormatR408, 2), 1);
    }
}

TEST(IsOpaque, IsClearIfOneSampleIsBelowFullValue) {
    for (const int alphaType : {1, 2}) {
        stream::FrameSpec spec = OpaqueFrame(alphaType);
        const int full = alphaType == 1 ? 0xff : 0xffff;
        spec.alpha = [full](int x, int y) {
            return static_cast<uint16_t>(x == 77 && y == 55 ? full - 1 : full);
        };
        EXPECT_EQ(OpacityOf(spec, prxFormatB64a), 0);
    }
}

TEST(IsOpaque, IsClearIfASliceIsRefused) {
    stream::FrameSpec spec = OpaqueFrame(2);
    spec.editSlice = [](const stream::SlicePlace& place, stream::Bytes& slice) {
        if (place.index == 3) slice[0] = 0;
    };
    EXPECT_EQ(OpacityOf(spec, prxFormatB64a), 0);
}

TEST(IsOpaque, IsClearIfAlphaIsNotDecoded) {
    EXPECT_EQ(OpacityOf(OpaqueFrame(2), prxFormatB64a, 1, true), 0);
    EXPECT_EQ(OpacityOf(OpaqueFrame(2), prxFormatV216), 0);
    EXPECT_EQ(OpacityOf(OpaqueFrame(3), prxFormatB64a), 0);
}

TEST(IsOpaque, IsClearForOneFieldOfAFrameWithAlpha) {
    for (const int32_t mode : {2, 3, 4, 5, 6})
        EXPECT_EQ(OpacityOf(OpaqueFrame(2, 1), prxFormatR408, mode), 0) << mode;
}

TEST(IsOpaque, IsClearIfThePictureEndsBeforeItsLastMacroblocks) {
    stream::FrameSpec spec = OpaqueFrame(2);
    spec.height = 17; // two rows of an eighth, which the first row of macroblocks fills
    EXPECT_EQ(OpacityOf(spec, prxFormatR408, 11), 0);
}

TEST(IsOpaque, StaysAsItWasOnFailure) {
    EXPECT_EQ(OpacityOf(FrameOf(2), prxFormatYuvs), 77);
    EXPECT_EQ(OpacityOf(FrameOf(2), prxFormat2vuy, 0), 77);
}

} // namespace
