// Wrong calls, buffers and images in the encoding half of the ProRes back-end.

#include "codecs/ProResEncodeSupport.h"
#include "framework/AllocatorSpy.h"
#include "support/HeapSpy.h"

namespace {

TEST(ProResEncodeFailures, ABufferOneByteTooSmallFailsAndStaysAsItIs) {
    ProResCodec codec(CxAV_ENCODE, nullptr);
    const ImagePtr image = SmoothImage();
    for (const auto& [code, flags] : {std::pair{apch, 0U}, {ap4h, codesAlpha}}) {
        Bytes buffer(Bound(code, flags != 0) - 1, 0x5a);
        CxEncodedFrame frame = FrameFor(code, flags);
        frame.data = buffer.data();
        frame.size = static_cast<uint32_t>(buffer.size());
        EXPECT_EQ(EncodeInto(codec, image, frame), CxAV_FAILED);
        EXPECT_EQ(frame.data, buffer.data());
        EXPECT_EQ(frame.size, buffer.size());
        EXPECT_EQ(buffer, Bytes(buffer.size(), 0x5a));
    }
    Encoded(codec, image, FrameFor(apch));
}

TEST(ProResEncodeFailures, ABufferOfNoBytesFails) {
    ProResCodec codec(CxAV_ENCODE, nullptr);
    uint8_t byte = 0x5a;
    CxEncodedFrame frame = FrameFor(apch);
    frame.data = &byte;
    EXPECT_EQ(EncodeInto(codec, SmoothImage(), frame), CxAV_FAILED);
    EXPECT_EQ(byte, 0x5a);
}

TEST(ProResEncodeFailures, NoImageIsAnInvalidStateAndAllocatesNothing) {
    ProResCodec codec(CxAV_ENCODE, nullptr);
    CxEncodedFrame frame = FrameFor(apch);
    EXPECT_EQ(EncodeInto(codec, nullptr, frame), CxAV_INVALID_STATE);
    EXPECT_EQ(frame.data, nullptr);
    EXPECT_EQ(frame.size, 0U);
}

TEST(ProResEncodeFailures, AnImageWithoutPixelsFailsAndTheBufferIsTheCallers) {
    ProResCodec codec(CxAV_ENCODE, nullptr);
    for (const auto& [emptyWidth, emptyHeight] : {std::pair{0, 0}, {0, pictureHeight}, {pictureWidth, 0}}) {
        CxEncodedFrame frame = FrameFor(apch);
        EXPECT_EQ(EncodeInto(codec, MakeImage(emptyWidth, emptyHeight), frame), CxAV_FAILED);
        ASSERT_NE(frame.data, nullptr);
        Platform::FreeMemAligned(frame.data);
    }
}

TEST(ProResEncodeFailures, AnImageBeyondTheSidesOfAFrameFailsAndTheBufferIsTheCallers) {
    ProResCodec codec(CxAV_ENCODE, nullptr);
    for (const auto& [largeWidth, largeHeight] : {std::pair{65536, 2}, {2, 65536}}) {
        CxEncodedFrame frame = FrameFor(apch);
        EXPECT_EQ(EncodeInto(codec, MakeImage(largeWidth, largeHeight), frame), CxAV_FAILED);
        ASSERT_NE(frame.data, nullptr);
        EXPECT_EQ(frame.size, Bound(apch, false, largeWidth, largeHeight));
        Platform::FreeMemAligned(frame.data);
    }
}

TEST(ProResEncodeFailures, AnImageBeyondAnyBufferIsAnInvalidStateAndIsNotRead) {
    ProResCodec codec(CxAV_ENCODE, nullptr);
    Bytes buffer(16, 0x5a);
    for (const auto& [largeWidth, largeHeight] :
         {std::pair{0x7fffffff, 1}, {0x10000000, 1}, {65535, 65535}, {1, 0x7fffffff}}) {
        const ImagePtr image = MakeImage(16, 16);
        image->Width = largeWidth;
        image->Height = largeHeight;
        CxEncodedFrame frame = FrameFor(apch);
        frame.data = buffer.data();
        frame.size = 16;
        EXPECT_EQ(EncodeInto(codec, image, frame), CxAV_INVALID_STATE) << largeWidth << "x" << largeHeight;
    }
    EXPECT_EQ(buffer, Bytes(16, 0x5a));
}

TEST(ProResEncodeFailures, WithoutMemoryForTheFrameItFailsAndEncodesLater) {
    ProResCodec codec(CxAV_ENCODE, nullptr);
    const ImagePtr image = SmoothImage();
    CxEncodedFrame frame = FrameFor(apch);
    AllocatorSpy::Reset();
    AllocatorSpy::fails = true;
    EXPECT_EQ(EncodeInto(codec, image, frame), CxAV_FAILED);
    AllocatorSpy::Reset();
    EXPECT_EQ(frame.data, nullptr);
    EXPECT_EQ(frame.size, 0U);
    Encoded(codec, image, frame);
}

TEST(ProResEncodeFailures, WithoutMemoryForThePixelsItIsAnInvalidStateAndEncodesLater) {
    ProResCodec codec(CxAV_ENCODE, nullptr);
    const ImagePtr image = SmoothImage();
    Bytes buffer(Bound(apch, false), 0x5a);
    CxEncodedFrame frame = FrameFor(apch);
    frame.data = buffer.data();
    frame.size = static_cast<uint32_t>(buffer.size());
    AllocatorSpy::Reset();
    AllocatorSpy::fails = true;
    EXPECT_EQ(EncodeInto(codec, image, frame), CxAV_INVALID_STATE);
    AllocatorSpy::Reset();
    EXPECT_EQ(buffer, Bytes(buffer.size(), 0x5a));
    EXPECT_EQ(EncodeInto(codec, image, frame), CxAV_OK);
}

TEST(ProResEncodeFailures, AHeapThatRunsOutFailsAndTheCodecEncodesLater) {
    ProResCodec codec(CxAV_ENCODE, nullptr);
    const ImagePtr image = SmoothImage();
    Bytes buffer(Bound(apch, false));
    bool ranOut = true;
    for (int allocations = 0; ranOut; ++allocations) {
        CxEncodedFrame frame = FrameFor(apch);
        frame.data = buffer.data();
        frame.size = static_cast<uint32_t>(buffer.size());
        const HeapSpy heap(allocations);
        const CxAVError result = EncodeInto(codec, image, frame);
        ranOut = heap.RanOut();
        // The host's own threads may go on with less.
        EXPECT_TRUE(result == CxAV_OK || (ranOut && result == CxAV_FAILED)) << allocations;
    }
    EXPECT_LT(DistanceFromSmooth(*Decoded(Encoded(codec, image, FrameFor(apch)), apch)), 400);
}

} // namespace
