// Samples, rows and images that do not fit each other.

#include "codecs/UncompressedCodecs.h"

#include "codecs/UncompressedTestSupport.h"

#include <gtest/gtest.h>

namespace {

TEST(UncompressedSamples, AnImageOfAnotherSizeIsNotDetectedAndTheRowsAreTheTracks) {
    Bytes sample(72);
    for (size_t i = 0; i < sample.size(); ++i)
        sample[i] = static_cast<uint8_t>(i);
    MemoryTrackSource source(24, 6, 4, {sample});
    const CodecPointer decoder = NewDecoder(source);
    const ImagePtr image = MarkedImage(4, 3);
    ASSERT_EQ(Decode(*decoder, 0, image.get()), CxAV_OK);
    for (int32_t y = 0; y < 3; ++y) {
        for (int32_t x = 0; x < 4; ++x) {
            const int32_t first = y * 18 + x * 3;
            EXPECT_EQ(PixelAt(*image, x, y),
                      (Pixel{first * 257, (first + 1) * 257, (first + 2) * 257, 65535}));
        }
    }
}

TEST(UncompressedSamples, AnImageWiderThanTheTracksRowsFailsAndKeepsItsPixels) {
    MemoryTrackSource source = SmallTrack();
    const CodecPointer decoder = NewDecoder(source);
    const ImagePtr image = MarkedImage(7, 2);
    EXPECT_EQ(Decode(*decoder, 0, image.get()), CxAV_FAILED);
    EXPECT_TRUE(IsFilledWith(*image, marker));
}

TEST(UncompressedSamples, AnImageWiderThanTheTrackDecodesWhereItsPixelsFitThePaddedRow) {
    const CodecPointer encoder = NewEncoder("Uncompressed YUV 422 10-bit");
    const ImagePtr wide = MakeImage(50, 3);
    FillWith(*wide, {65535, 65535, 65535, 65535});
    Bytes sample;
    ASSERT_EQ(Encode(*encoder, FourCC("v210"), wide.get(), sample), CxAV_OK);
    MemoryTrackSource source(FourCC("v210"), 49, 3, {sample});
    const ImagePtr image = MarkedImage(50, 3);
    EXPECT_EQ(Decode(*NewDecoder(source), 0, image.get()), CxAV_OK);
    EXPECT_TRUE(IsFilledWith(*image, {65535, 65535, 65535, 65535}));
}

TEST(UncompressedSamples, ASampleThatLacksOnlyThePaddingOfItsLastRowDecodes) {
    struct Track {
        uint32_t fourCC;
        int32_t width;
        size_t needed;
    };
    for (const auto& [fourCC, width, needed] :
         {Track{FourCC("v210"), 49, 2 * 256 + 9 * 16}, Track{FourCC("r210"), 65, 2 * 512 + 65 * 4}}) {
        MemoryTrackSource source(fourCC, width, 3, {Bytes(needed), Bytes(needed - 1)});
        const CodecPointer decoder = NewDecoder(source);
        const ImagePtr image = MarkedImage(width, 3);
        EXPECT_EQ(Decode(*decoder, 1, image.get()), CxAV_FAILED);
        EXPECT_TRUE(IsFilledWith(*image, marker));
        EXPECT_EQ(Decode(*decoder, 0, image.get()), CxAV_OK);
        EXPECT_FALSE(IsFilledWith(*image, marker));
    }
}

TEST(UncompressedSamples, AnImageTallerThanTheSampleFailsAndKeepsItsPixels) {
    MemoryTrackSource source = SmallTrack();
    const CodecPointer decoder = NewDecoder(source);
    const ImagePtr image = MarkedImage(6, 5);
    EXPECT_EQ(Decode(*decoder, 0, image.get()), CxAV_FAILED);
    EXPECT_TRUE(IsFilledWith(*image, marker));
}

TEST(UncompressedSamples, AShortSampleFailsKeepsThePixelsAndTheNextFrameDecodes) {
    MemoryTrackSource source(24, 6, 4, {Bytes(71, 1), Bytes(72, 2), {}});
    const CodecPointer decoder = NewDecoder(source);
    const ImagePtr image = MarkedImage(6, 4);
    EXPECT_EQ(Decode(*decoder, 0, image.get()), CxAV_FAILED);
    EXPECT_EQ(Decode(*decoder, 2, image.get()), CxAV_FAILED);
    EXPECT_TRUE(IsFilledWith(*image, marker));
    EXPECT_EQ(Decode(*decoder, 1, image.get()), CxAV_OK);
    EXPECT_TRUE(IsFilledWith(*image, Grey(2)));
}

TEST(UncompressedSamples, ASampleCutToTheCodecsBufferFails) {
    MemoryTrackSource source = SmallTrack(MemoryTrackSource::Delivery::CallersBuffer);
    source.maxSampleSize = 71;
    const CodecPointer decoder = NewDecoder(source);
    const ImagePtr image = MarkedImage(6, 4);
    EXPECT_EQ(Decode(*decoder, 0, image.get()), CxAV_FAILED);
    EXPECT_TRUE(IsFilledWith(*image, marker));
}

/// Leaves its sample in the middle of the caller's buffer, and tells a size beyond the buffer's end.
class BoastingSource : public MemoryTrackSource {
public:
    explicit BoastingSource(int32_t start)
        : MemoryTrackSource(24, 6, 4, {Bytes(72, 1)}, Delivery::CallersBuffer), offset(start) {
        maxSampleSize = 80;
    }
    uint8_t* ReadSample(int32_t sample, uint8_t* buffer, int32_t& size) override {
        size -= offset;
        uint8_t* const start = MemoryTrackSource::ReadSample(sample, buffer + offset, size);
        size = 0x7fffffff;
        return start;
    }

private:
    int32_t offset;
};

TEST(UncompressedSamples, ASampleInsideTheCodecsBufferEndsWithTheBufferWhateverItsSize) {
    const ImagePtr image = MarkedImage(6, 4);
    for (const int32_t offset : {9, 79}) {
        BoastingSource source(offset);
        EXPECT_EQ(Decode(*NewDecoder(source), 0, image.get()), CxAV_FAILED) << offset;
        EXPECT_TRUE(IsFilledWith(*image, marker));
    }
    BoastingSource source(8);
    EXPECT_EQ(Decode(*NewDecoder(source), 0, image.get()), CxAV_OK);
    EXPECT_TRUE(IsFilledWith(*image, Grey(1)));
}

TEST(UncompressedSamples, ASourceWithoutABufferSizeDecodesFromItsOwnMemory) {
    MemoryTrackSource source = SmallTrack();
    source.maxSampleSize = 0;
    const CodecPointer decoder = NewDecoder(source);
    const ImagePtr image = MarkedImage(6, 4);
    EXPECT_EQ(Decode(*decoder, 1, image.get()), CxAV_OK);
    EXPECT_TRUE(IsFilledWith(*image, Grey(2)));
}

TEST(UncompressedSamples, TheCodecsOwnBufferServesASourceThatFillsIt) {
    MemoryTrackSource source = SmallTrack(MemoryTrackSource::Delivery::CallersBuffer);
    const CodecPointer decoder = NewDecoder(source);
    const ImagePtr image = MarkedImage(6, 4);
    EXPECT_EQ(Decode(*decoder, 2, image.get()), CxAV_OK);
    EXPECT_TRUE(IsFilledWith(*image, Grey(3)));
}

TEST(UncompressedSamples, ThreePlanesAreNeededWhereThePackingHasThree) {
    UncompressedCodecs codec(CxAV_DECODE, nullptr);
    MemoryTrackSource source(FourCC("rp16"), 2, 2, {Bytes(23, 1), Bytes(24, 2)});
    codec.SetDataSource(&source);
    const ImagePtr image = MarkedImage(2, 2);
    EXPECT_EQ(Decode(codec, 0, image.get()), CxAV_FAILED);
    EXPECT_TRUE(IsFilledWith(*image, marker));
    EXPECT_EQ(Decode(codec, 1, image.get()), CxAV_OK);
    EXPECT_TRUE(IsFilledWith(*image, {0x0202, 0x0202, 0x0202, 65535}));
}

TEST(UncompressedSamples, ATrackWidthWhoseRowSizeWrapsDecodesNothing) {
    for (const int32_t width : {-1, 0x20000000, 0x40000001, 0x7fffffff}) {
        MemoryTrackSource source(FourCC("b64a"), width, 4, {Bytes(64, 1)});
        const CodecPointer decoder = NewDecoder(source);
        const ImagePtr image = MarkedImage(6, 4);
        EXPECT_EQ(Decode(*decoder, 0, image.get()), CxAV_FAILED) << width;
        EXPECT_TRUE(IsFilledWith(*image, marker));
    }
}

TEST(UncompressedSamples, AnImageOfNoPixelsDecodesFromAnySample) {
    MemoryTrackSource source(FourCC("v210"), 0, 0, {{}, Bytes(5, 1)});
    const CodecPointer decoder = NewDecoder(source);
    EXPECT_EQ(Decode(*decoder, 0, MakeImage(0, 0, ImageData_RGBA8).get()), CxAV_OK);
    EXPECT_EQ(Decode(*decoder, 0, MakeImage(0, 4, ImageData_RGBA8).get()), CxAV_OK);
    EXPECT_EQ(Decode(*decoder, 1, MakeImage(0, 4, ImageData_RGBA8).get()), CxAV_OK);
}

} // namespace
