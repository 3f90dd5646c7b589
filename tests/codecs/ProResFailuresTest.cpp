// Wrong calls, samples and sizes in the ProRes back-end.

#include "codecs/ProResCodec.h"

#include "codecs/ProResTestSupport.h"
#include "framework/AllocatorSpy.h"
#include "support/HeapSpy.h"

namespace {

TEST(ProResFailures, OpenWithoutASourceIsAnInvalidState) {
    ProResCodec codec(CxAV_DECODE, nullptr);
    EXPECT_EQ(codec.Open(), CxAV_INVALID_STATE);
}

TEST(ProResFailures, DecodingWithoutASourceOrBeforeOpenIsAnInvalidState) {
    MemoryTrackSource source = ProResTrack({BuildFrame(GreyFrame())});
    ProResCodec codec(CxAV_DECODE, nullptr);
    const ImagePtr image = MarkedImage(64, 32);
    EXPECT_EQ(Decode(codec, 0, image.get()), CxAV_INVALID_STATE);
    codec.getDataSource() = &source;
    EXPECT_EQ(Decode(codec, 0, image.get()), CxAV_INVALID_STATE);
    EXPECT_TRUE(IsFilledWith(*image, marker));
}

TEST(ProResFailures, ASampleThatIsMissingOrEmptyFailsWithoutWords) {
    MemoryTrackSource source = ProResTrack({{}});
    const CodecPointer decoder = NewDecoder(source);
    const ImagePtr image = MarkedImage(64, 32);
    const std::string words = WordsOf([&] {
        for (const int32_t frame : {0, 1, -1})
            EXPECT_EQ(Decode(*decoder, frame, image.get()), CxAV_FAILED);
    });
    EXPECT_EQ(words, "");
    EXPECT_TRUE(IsFilledWith(*image, marker));
}

TEST(ProResFailures, AFrameThatTheEngineRefusesFailsWithAWarningAndTheNextOneDecodes) {
    const Bytes whole = BuildFrame(GreyFrame(100));
    const Bytes cut(whole.begin(), whole.end() - 1);
    MemoryTrackSource source = ProResTrack({cut, Bytes(20, 1), {0}, whole});
    const CodecPointer decoder = NewDecoder(source);
    for (int32_t frame = 0; frame < 3; ++frame) {
        const ImagePtr image = MarkedImage(64, 32);
        const std::string words =
            WordsOf([&] { EXPECT_EQ(Decode(*decoder, frame, image.get()), CxAV_FAILED); });
        EXPECT_EQ(words, decodeWarning) << frame;
        EXPECT_TRUE(IsFilledWith(*image, marker));
        EXPECT_FALSE(image->ImageInfo.IsTable());
    }
    const ImagePtr image = MakeImage(64, 32);
    EXPECT_EQ(Decode(*decoder, 3, image.get()), CxAV_OK);
    ExpectGrey(*image, 100);
}

TEST(ProResFailures, AFrameLargerThanTheTrackFailsWithAWarning) {
    stream::FrameSpec spec = GreyFrame();
    for (const auto& [width, height] : {std::pair{80, 32}, std::pair{64, 33}}) {
        spec.width = width;
        spec.height = height;
        MemoryTrackSource source = ProResTrack({BuildFrame(spec)});
        const CodecPointer decoder = NewDecoder(source);
        const ImagePtr image = MarkedImage(64, 32);
        const std::string words = WordsOf([&] { EXPECT_EQ(Decode(*decoder, 0, image.get()), CxAV_FAILED); });
        EXPECT_EQ(words, decodeWarning);
        EXPECT_TRUE(IsFilledWith(*image, marker));
    }
}

TEST(ProResFailures, NoImageFails) {
    MemoryTrackSource source = ProResTrack({BuildFrame(GreyFrame())});
    EXPECT_EQ(Decode(*NewDecoder(source), 0, nullptr), CxAV_FAILED);
}

TEST(ProResFailures, AnImageLargerThanTheTrackFailsAndKeepsItsPixels) {
    MemoryTrackSource source = ProResTrack({BuildFrame(GreyFrame())});
    const CodecPointer decoder = NewDecoder(source);
    for (const auto& [width, height] : {std::pair{65, 32}, std::pair{64, 33}}) {
        const ImagePtr image = MarkedImage(width, height);
        EXPECT_EQ(Decode(*decoder, 0, image.get()), CxAV_FAILED);
        EXPECT_TRUE(IsFilledWith(*image, marker));
    }
}

TEST(ProResFailures, AnImageSmallerThanTheTrackTakesTheTopLeftPart) {
    stream::FrameSpec spec;
    spec.coefficients = [](int, int x, int y) {
        return stream::FlatColour(x < 2 && y < 1 ? 300 : -300, 0, 0)(0, 0, 0);
    };
    MemoryTrackSource source = ProResTrack({BuildFrame(spec)});
    const ImagePtr image = MakeImage(32, 16);
    ASSERT_EQ(Decode(*NewDecoder(source), 0, image.get()), CxAV_OK);
    ExpectGrey(*image, 300);
}

TEST(ProResFailures, ASizeBeyondAnyBufferFailsAndReadsNoSample) {
    for (const auto& [width, height] :
         {std::pair{0x7fffffff, 32}, std::pair{0x10000000, 2}, std::pair{64, 0x7fffffff}, std::pair{-1, 32},
          std::pair{64, -1}, std::pair{64, 0}, std::pair{0, 32}}) {
        MemoryTrackSource source = ProResTrack({BuildFrame(GreyFrame())});
        source.width = width;
        source.height = height;
        const CodecPointer decoder = NewDecoder(source);
        const ImagePtr image = MarkedImage(64, 32);
        EXPECT_EQ(Decode(*decoder, 0, image.get()), CxAV_FAILED) << width << "x" << height;
        EXPECT_TRUE(IsFilledWith(*image, marker));
        EXPECT_EQ(source.lastSampleRead, -1);
    }
}

TEST(ProResFailures, ATrackWithoutMemoryForItsPictureFailsAndDecodesLater) {
    MemoryTrackSource source = ProResTrack({BuildFrame(GreyFrame())});
    const CodecPointer decoder = NewDecoder(source);
    const ImagePtr image = MarkedImage(64, 32);
    AllocatorSpy::Reset();
    AllocatorSpy::fails = true;
    EXPECT_EQ(Decode(*decoder, 0, image.get()), CxAV_FAILED);
    AllocatorSpy::Reset();
    EXPECT_TRUE(IsFilledWith(*image, marker));
    EXPECT_EQ(Decode(*decoder, 0, image.get()), CxAV_OK);
    ExpectGrey(*image, 0);
}

TEST(ProResFailures, AHeapThatRunsOutWhileTheTrackOpensFailsAndItOpensLater) {
    MemoryTrackSource source = ProResTrack({BuildFrame(GreyFrame())});
    ProResCodec codec(CxAV_DECODE, nullptr);
    codec.getDataSource() = &source;
    bool ranOut = true;
    for (int allocations = 0; ranOut; ++allocations) {
        const HeapSpy heap(allocations);
        const CxAVError result = codec.Open();
        ranOut = heap.RanOut();
        EXPECT_EQ(result, ranOut ? CxAV_FAILED : CxAV_OK) << allocations;
    }
    const ImagePtr image = MakeImage(64, 32);
    EXPECT_EQ(Decode(codec, 0, image.get()), CxAV_OK);
    ExpectGrey(*image, 0);
}

TEST(ProResFailures, AHeapThatRunsOutWhileAFrameDecodesFailsAndItDecodesLater) {
    MemoryTrackSource source = ProResTrack({BuildFrame(GreyFrame())});
    const CodecPointer decoder = NewDecoder(source);
    const ImagePtr image = MakeImage(64, 32);
    Image* const picture = image.get();
    bool ranOut = true;
    for (int allocations = 0; ranOut; ++allocations) {
        const HeapSpy heap(allocations);
        const CxAVError result = Decode(*decoder, 0, picture);
        ranOut = heap.RanOut();
        // The host's own threads may go on with less.
        EXPECT_TRUE(result == CxAV_OK || (ranOut && result == CxAV_FAILED)) << allocations;
    }
    ExpectGrey(*image, 0);
}

TEST(ProResFailures, ASampleCutToTheCodecsBufferFails) {
    MemoryTrackSource source = ProResTrack({BuildFrame(GreyFrame())});
    source.delivery = MemoryTrackSource::Delivery::CallersBuffer;
    source.maxSampleSize = static_cast<int32_t>(source.samples[0].size()) - 1;
    const CodecPointer decoder = NewDecoder(source);
    const ImagePtr image = MarkedImage(64, 32);
    const std::string words = WordsOf([&] { EXPECT_EQ(Decode(*decoder, 0, image.get()), CxAV_FAILED); });
    EXPECT_EQ(words, decodeWarning);
}

TEST(ProResFailures, ADamagedSliceShowsTheFrameBeforeAndNeverOldMemory) {
    stream::FrameSpec spec = GreyFrame(100);
    spec.log2SliceMbWidth = 1;
    const Bytes whole = BuildFrame(spec);
    spec.coefficients = stream::FlatColour(-100, 0, 0);
    spec.editSlice = [](const stream::SlicePlace&, Bytes& slice) { slice.clear(); };
    const Bytes empty = BuildFrame(spec);
    MemoryTrackSource source = ProResTrack({empty, whole});
    const CodecPointer decoder = NewDecoder(source);
    const ImagePtr image = MarkedImage(64, 32);
    ASSERT_EQ(Decode(*decoder, 0, image.get()), CxAV_OK);
    EXPECT_TRUE(IsFilledWith(*image, {0, 0, 0, 0}));
    ASSERT_EQ(Decode(*decoder, 1, image.get()), CxAV_OK);
    ASSERT_EQ(Decode(*decoder, 0, image.get()), CxAV_OK);
    ExpectGrey(*image, 100);
}

} // namespace
