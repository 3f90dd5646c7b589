#include "prores/PrxDecoder.h"

#include "prores/PrxFormats.h"
#include "prores/StreamFrame.h"
#include "prores/TestFrames.h"
#include "prores/TestTarget.h"
#include "support/HeapSpy.h"

#include <gtest/gtest.h>

#include <sys/mman.h>

#include <cstdlib>
#include <new>
#include <string>

namespace {

/// Address space that may not be touched.
class ForbiddenMemory {
public:
    explicit ForbiddenMemory(size_t size)
        : size_(size),
          data_(mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)) {
        if (data_ == MAP_FAILED) std::abort();
    }
    ~ForbiddenMemory() { munmap(data_, size_); }
    ForbiddenMemory(const ForbiddenMemory&) = delete;
    ForbiddenMemory& operator=(const ForbiddenMemory&) = delete;
    uint8_t* data() const { return static_cast<uint8_t*>(data_); }

private:
    size_t size_;
    void* data_;
};

constexpr int32_t hugeSide = 65535;

/// A frame of a few bytes that claims the largest size.
stream::Bytes HugeClaim(int log2SliceMbWidth, int chromaFormat, int interlaceMode) {
    stream::FrameSpec spec;
    spec.chromaFormat = chromaFormat;
    spec.interlaceMode = interlaceMode;
    spec.log2SliceMbWidth = log2SliceMbWidth;
    stream::FramePlaces places;
    stream::Bytes frame = stream::BuildFrame(spec, &places);
    frame.resize(places.pictures.back().header + 8);
    stream::Patch32(frame, 0, static_cast<uint32_t>(frame.size()));
    stream::Patch16(frame, 16, hugeSide);
    stream::Patch16(frame, 18, hugeSide);
    return frame;
}

TEST(HugeClaim, OfThirtyBytesIsDamageOrFindsTheTargetTooSmall) {
    stream::Bytes frame = HugeClaim(0, 2, 0);
    const stream::FrameSpec spec = FrameOf(2);
    PrxDecoder decoder(2, nullptr);
    const TestTarget target(prxFormat2vuy, spec);
    EXPECT_EQ(Decode(decoder, frame, target), -4);
    frame.resize(30);
    stream::Patch32(frame, 0, 30);
    EXPECT_EQ(Decode(decoder, frame, target), -4);
    EXPECT_TRUE(target.Untouched());
    const ForbiddenMemory memory(size_t{131072} * hugeSide);
    const PrxOutputTarget huge{memory.data(), 131072, prxFormat2vuy, hugeSide, hugeSide};
    EXPECT_EQ(decoder.decodeFrame(PieceOf(frame), huge, 1, false, nullptr), -2);
}

TEST(HugeClaim, IntoATargetOfThatSizeSucceedsAndWritesNothing) {
    const ForbiddenMemory memory(size_t{65536} * 16 * hugeSide);
    PrxDecoder decoder(2, nullptr);
    for (int log2SliceMbWidth = 0; log2SliceMbWidth <= 3; ++log2SliceMbWidth) {
        for (const int chromaFormat : {2, 3}) {
            for (const int interlaceMode : {0, 1}) {
                const stream::Bytes frame = HugeClaim(log2SliceMbWidth, chromaFormat, interlaceMode);
                for (const uint32_t format : TargetFormats(chromaFormat)) {
                    const PrxOutputTarget target{memory.data(), 65536 * 16, format, hugeSide, hugeSide};
                    EXPECT_EQ(decoder.decodeFrame(PieceOf(frame), target, 1, false, nullptr),
                              static_cast<int32_t>(frame.size()));
                }
            }
        }
    }
}

TEST(HugeClaim, NeedsNoMemoryForItsSlices) {
    const ForbiddenMemory memory(size_t{65536} * 8 * hugeSide);
    PrxDecoder decoder(2, nullptr);
    const NoMemory buffers(Allocation::Aligned, 1); // not even for a row
    const stream::Bytes frame = HugeClaim(0, 2, 0);
    const PrxOutputTarget target{memory.data(), 65536 * 8, prxFormatB64a, hugeSide, hugeSide};
    EXPECT_EQ(decoder.decodeFrame(PieceOf(frame), target, 1, false, nullptr),
              static_cast<int32_t>(frame.size()));
}

/// Decodes a frame without memory for anything large, and then again with memory.
void ExpectOutOfMemoryThenAFrame(const stream::FrameSpec& spec) {
    const stream::Bytes frame = stream::BuildFrame(spec);
    PrxDecoder decoder(2, nullptr);
    const TestTarget target(prxFormatB64a, spec);
    {
        const NoMemory rows(Allocation::Aligned, 1024);
        EXPECT_THROW(Decode(decoder, frame, target), std::bad_alloc);
        EXPECT_TRUE(target.Untouched());
    }
    EXPECT_EQ(Decode(decoder, frame, target), static_cast<int32_t>(frame.size()));
    EXPECT_FALSE(target.Untouched());
}

TEST(NoMemory, ForARowRaisesOutOfMemoryAndLeavesTheDecoderUsable) { ExpectOutOfMemoryThenAFrame(FrameOf(2)); }

TEST(NoMemory, ForAlphaRaisesOutOfMemoryAndLeavesTheDecoderUsable) {
    ExpectOutOfMemoryThenAFrame(FrameOf(3, 0, 2));
}

TEST(NoMemory, ForTheWorkerPoolFailsTheDecodersCreation) {
    for (const Allocation form : {Allocation::Aligned, Allocation::Array}) {
        const NoMemory none(form, 1);
        EXPECT_THROW(PrxCreateDecoder(2, nullptr), std::bad_alloc);
    }
}

TEST(NoMemory, IsToldAsABadAllocation) {
    const NoMemory contexts(Allocation::Aligned, 1024);
    std::string text;
    try {
        PrxCreateDecoder(2, nullptr);
    } catch (const std::bad_alloc& failure) {
        text = failure.what();
    }
    EXPECT_EQ(text, "bad allocation");
}

TEST(NoMemory, ForAWorkersContextFailsTheDecodersCreation) {
    const NoMemory contexts(Allocation::Aligned, 1024);
    EXPECT_THROW(PrxDecoder(2, nullptr), std::bad_alloc);
    EXPECT_THROW(PrxCreateDecoder(2, nullptr), std::bad_alloc);
}

} // namespace
