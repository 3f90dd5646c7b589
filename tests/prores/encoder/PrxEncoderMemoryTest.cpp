#include "prores/encoder/EncodeFixture.h"
#include "prores/encoder/PrxEncoder.h"
#include "support/HeapSpy.h"

#include <gtest/gtest.h>

#include <new>
#include <string>

namespace {

constexpr PrxEncodeSettings hq{prxCodecApch, 0, 0};

/// Encodes `picture` while allocations of the form fail, and then again with memory.
void ExpectFailureThenSuccess(PrxEncoderRef encoder, const PrxPixelBuffer& picture, Allocation form,
                              size_t leastSize, const PrxEncodeSettings& settings = hq) {
    {
        int32_t capacity = 0;
        PrxGetMaxFrameSize(settings.codecType, settings.hasAlpha, picture.width, picture.height, &capacity,
                           nullptr);
        std::vector<uint8_t> output(static_cast<size_t>(capacity));
        int32_t size = 77;
        const NoMemory noMemory(form, leastSize);
        EXPECT_THROW(PrxEncodeFrame(encoder, &settings, &picture, output.data(), capacity, &size, nullptr),
                     std::bad_alloc);
        EXPECT_EQ(size, 77);
    }
    EXPECT_EQ(Encode(encoder, settings, picture).bytes, Encode(MakeEncoder().get(), settings, picture).bytes);
}

TEST(EncoderMemory, ThrowsForWantOfCoefficientsAndGoesOn) {
    const EncoderPtr encoder = MakeEncoder();
    const InputPicture picture = MakePicture(prxFormatV216, 640, 480, Content::Noise);
    ExpectFailureThenSuccess(encoder.get(), picture.buffer, Allocation::Aligned, 500000);
}

TEST(EncoderMemory, ThrowsForWantOfRoomForAlphaAndGoesOn) {
    // The same picture without alpha finds all other memory.
    const EncoderPtr encoder = MakeEncoder();
    const InputPicture picture = MakePicture(prxFormatB64a, 640, 480, Content::Noise);
    ASSERT_EQ(Encode(encoder.get(), {prxCodecAp4h, 0, 0}, picture.buffer).result, 0);
    ExpectFailureThenSuccess(encoder.get(), picture.buffer, Allocation::Aligned, 900000,
                             {prxCodecAp4h, 0, 1});
}

TEST(EncoderMemory, ThrowsForWantOfSlicesAndGoesOn) {
    const EncoderPtr encoder = MakeEncoder();
    const InputPicture picture = MakePicture(prxFormatV216, 640, 480, Content::Noise);
    ExpectFailureThenSuccess(encoder.get(), picture.buffer, Allocation::Single, 20000);
}

TEST(EncoderMemory, ThrowsForWantOfRoomForASlicesBytesAndGoesOn) {
    // A flat picture of the same size finds all other memory.
    const EncoderPtr encoder = MakeEncoder(2);
    const InputPicture flat = MakePicture(prxFormatV216, 640, 480, Content::Flat);
    const InputPicture picture = MakePicture(prxFormatV216, 640, 480, Content::Noise);
    ASSERT_EQ(Encode(encoder.get(), hq, flat.buffer).result, 0);
    ExpectFailureThenSuccess(encoder.get(), picture.buffer, Allocation::Aligned, 1024);
}

TEST(EncoderMemory, ThrowsForWantOfARowBufferAndGoesOn) {
    const EncoderPtr encoder = MakeEncoder();
    const InputPicture direct = MakePicture(prxFormatV216, 640, 480, Content::Noise);
    const InputPicture picture = MakePicture(prxFormatB64a, 640, 480, Content::Flat);
    ASSERT_EQ(Encode(encoder.get(), hq, direct.buffer).result, 0);
    ExpectFailureThenSuccess(encoder.get(), picture.buffer, Allocation::Aligned, 30000);
}

TEST(EncoderMemory, AllocatesNothingForAPictureLikeTheOneBefore) {
    const EncoderPtr encoder = MakeEncoder();
    const InputPicture picture = MakePicture(prxFormatV216, 640, 480, Content::Noise);
    int32_t capacity = 0;
    PrxGetMaxFrameSize(hq.codecType, 0, 640, 480, &capacity, nullptr);
    std::vector<uint8_t> output(static_cast<size_t>(capacity));
    int32_t size = 0;
    for (int i = 0; i < 2; ++i) {
        const NoMemory aligned(Allocation::Aligned, i == 0 ? 1U << 31 : 1);
        const NoMemory single(Allocation::Single, i == 0 ? 1U << 31 : 1);
        EXPECT_EQ(
            PrxEncodeFrame(encoder.get(), &hq, &picture.buffer, output.data(), capacity, &size, nullptr), 0);
    }
}

TEST(CreateEncoder, ThrowsWhenAWorkerCannotStart) {
    const auto noThread = [](std::thread*, PrxThreadEntry, void*) { return false; };
    try {
        const PrxEncoder encoder(2, nullptr, noThread);
        FAIL();
    } catch (const std::bad_alloc& failure) {
        EXPECT_EQ(std::string(failure.what()), "bad allocation");
    }
}

TEST(CreateEncoder, ThrowsWhenAWorkerGetsNoMemory) {
    const NoMemory noMemory(Allocation::Aligned, sizeof(PrxEncodeContext));
    EXPECT_THROW(PrxCreateEncoder(1, nullptr), std::bad_alloc);
}

TEST(CreateEncoder, CallsTheHookOnceInEachWorker) {
    static int calls;
    calls = 0;
    const auto hook = [] { ++calls; }; // with the pool's lock held
    PrxDeleteEncoder(PrxCreateEncoder(3, hook));
    EXPECT_EQ(calls, 3);
    calls = 0;
    PrxDeleteEncoder(PrxCreateEncoder(100, hook));
    EXPECT_EQ(calls, 64);
}

TEST(CreateEncoder, TakesCountsBelow1ForOneWorkerForEachProcessor) {
    static int calls;
    const auto hook = [] { ++calls; };
    for (const int32_t count : {0, -1}) {
        calls = 0;
        PrxDeleteEncoder(PrxCreateEncoder(static_cast<uint32_t>(count), hook));
        EXPECT_EQ(calls, std::min(PrxProcessorCount(), prxMaxWorkers));
    }
}

} // namespace
