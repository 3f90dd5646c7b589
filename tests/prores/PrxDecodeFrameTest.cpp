#include "prores/Prx.h"

#include "prores/StreamFrame.h"
#include "prores/TestFrames.h"
#include "prores/TestTarget.h"

#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <memory>

namespace {

struct DecoderDeleter {
    void operator()(PrxDecoderRef handle) const { PrxDeleteDecoder(handle); }
};
using DecoderPtr = std::unique_ptr<PrxDecoderHandle, DecoderDeleter>;

DecoderPtr MakeDecoder(uint32_t workers = 2) { return DecoderPtr(PrxCreateDecoder(workers, nullptr)); }

int32_t DecodeTo(const TestTarget& target, const stream::Bytes& frame, uint32_t quality = 0,
                 uint8_t ignoreAlpha = 0) {
    const DecoderPtr decoder = MakeDecoder();
    const PrxPixelBuffer buffer = target.PublicBuffer();
    return PrxDecodeFrame(decoder.get(), frame.data(), static_cast<int32_t>(frame.size()), &buffer, quality,
                          ignoreAlpha);
}

TEST(DecodeFrame, ReturnsTheFrameSize) {
    const stream::FrameSpec spec = FrameOf(2);
    const stream::Bytes frame = stream::BuildFrame(spec);
    const TestTarget target(prxFormatV216, spec);
    EXPECT_EQ(DecodeTo(target, frame), static_cast<int32_t>(frame.size()));
    EXPECT_FALSE(target.Untouched());
}

TEST(DecodeFrame, RefusesMissingArguments) {
    const DecoderPtr decoder = MakeDecoder();
    const stream::Bytes frame = stream::BuildFrame(stream::FrameSpec{});
    const auto size = static_cast<int32_t>(frame.size());
    const PrxPixelBuffer buffer{};
    EXPECT_EQ(PrxDecodeFrame(nullptr, frame.data(), size, &buffer, 0, 0), -50);
    EXPECT_EQ(PrxDecodeFrame(decoder.get(), nullptr, size, &buffer, 0, 0), -50);
    EXPECT_EQ(PrxDecodeFrame(decoder.get(), frame.data(), size, nullptr, 0, 0), -50);
}

TEST(DecodeFrame, RefusesMissingArgumentsBeforeItLooksAtTheSize) {
    EXPECT_EQ(PrxDecodeFrame(MakeDecoder().get(), nullptr, 0, nullptr, 0, 0), -50);
}

TEST(DecodeFrame, TakesASizeOfZeroOrLessAsAnEmptyInput) {
    const DecoderPtr decoder = MakeDecoder();
    const stream::Bytes frame = stream::BuildFrame(stream::FrameSpec{});
    const TestTarget target(prxFormatV216, 64, 32, 256);
    const PrxPixelBuffer buffer = target.PublicBuffer();
    for (const int32_t size : {0, -1, std::numeric_limits<int32_t>::min()}) {
        EXPECT_EQ(PrxDecodeFrame(decoder.get(), frame.data(), size, &buffer, 0, 0), -2) << size;
    }
    EXPECT_TRUE(target.Untouched());
}

TEST(DecodeFrame, ReportsEachFailureByItsCode) {
    const stream::FrameSpec spec = FrameOf(2);
    stream::Bytes frame = stream::BuildFrame(spec);
    EXPECT_EQ(DecodeTo(TestTarget(prxFormatYuvs, spec), frame), -1);
    EXPECT_EQ(DecodeTo(TestTarget(prxFormatV216, 64, 64, 1024), frame), -4);
    frame[8 + 12] |= 3 << 2;
    EXPECT_EQ(DecodeTo(TestTarget(prxFormatV216, spec), frame), -3);
    frame[8 + 3] = 2;
    EXPECT_EQ(DecodeTo(TestTarget(prxFormatV216, spec), frame), -2);
}

TEST(DecodeFrame, MapsQualityToTheModesOfThatSize) {
    for (const int interlaceMode : {0, 1}) {
        const stream::FrameSpec spec = FrameOf(2, interlaceMode);
        const stream::Bytes frame = stream::BuildFrame(spec);
        PrxDecoder decoder(1, nullptr);
        const int32_t modes[] = {1, 2, 6};
        const int32_t shifts[][2] = {{0, 0}, {0, 1}, {1, 1}};
        for (uint32_t quality = 0; quality < 3; ++quality) {
            const TestTarget target(prxFormat2vuy, spec, shifts[quality][0], shifts[quality][1]);
            const TestTarget expected(prxFormat2vuy, spec, shifts[quality][0], shifts[quality][1]);
            ASSERT_GT(DecodeTo(target, frame, quality), 0);
            ASSERT_GT(Decode(decoder, frame, expected, modes[quality]), 0);
            EXPECT_EQ(target.Bytes(), expected.Bytes()) << quality;
        }
    }
}

TEST(DecodeFrame, DecodesAtFullSizeForAnyOtherQuality) {
    const stream::FrameSpec spec = FrameOf(2);
    const stream::Bytes frame = stream::BuildFrame(spec);
    const TestTarget expected(prxFormatV216, spec);
    ASSERT_GT(DecodeTo(expected, frame, 0), 0);
    for (const uint32_t quality : {3U, 4U, 6U, 11U, 0x80000000U, 0xffffffffU}) {
        const TestTarget target(prxFormatV216, spec);
        EXPECT_GT(DecodeTo(target, frame, quality), 0);
        EXPECT_EQ(target.Bytes(), expected.Bytes()) << quality;
    }
}

TEST(DecodeFrame, RefusesTheEncodersInputFormat) {
    const stream::FrameSpec spec = FrameOf(2);
    const TestTarget target(prxFormatYuvs, spec);
    EXPECT_EQ(DecodeTo(target, stream::BuildFrame(spec)), -1);
    EXPECT_TRUE(target.Untouched());
    EXPECT_GT(PrxGetBytesPerRow(130, prxFormatYuvs, 0), 0U);
}

TEST(DecodeFrame, GivesTheOpaqueValueIfAlphaIsIgnored) {
    stream::FrameSpec spec = FrameOf(3, 0, 2);
    spec.alpha = [](int, int) { return uint16_t{0x1234}; };
    const stream::Bytes frame = stream::BuildFrame(spec);
    for (const uint8_t ignoreAlpha : {0, 1, 255}) {
        const TestTarget target(prxFormatY416, spec);
        ASSERT_GT(DecodeTo(target, frame, 0, ignoreAlpha), 0);
        for (int32_t y = 0; y < spec.height; ++y) {
            const std::vector<uint8_t> row = target.Row(y);
            EXPECT_EQ(row[0] | row[1] << 8, ignoreAlpha != 0 ? 0xffff : 0x1234);
        }
    }
}

TEST(DecodeFrame, DecodesIntoRowsOfTheSizeThatTheEngineNames) {
    for (const uint32_t format : TargetFormats(2)) {
        for (const int width : {1, 47, 48, 49, 130}) {
            stream::FrameSpec spec = FrameOf(2);
            spec.width = width;
            spec.height = 17;
            const auto rowBytes =
                static_cast<int32_t>(PrxGetBytesPerRow(static_cast<uint32_t>(width), format, 0));
            const TestTarget target(format, width, 17, rowBytes);
            EXPECT_GT(DecodeTo(target, stream::BuildFrame(spec)), 0) << std::hex << format << " " << width;
        }
    }
}

TEST(DecodeFrame, ReadsNoByteBehindTheInput) {
    const stream::FrameSpec spec = FrameOf(2, 1, 1);
    const stream::Bytes frame = stream::BuildFrame(spec);
    const DecoderPtr decoder = MakeDecoder();
    const TestTarget target(prxFormatB64a, spec);
    const PrxPixelBuffer buffer = target.PublicBuffer();
    for (size_t size = 1; size <= frame.size(); size += size < 64 ? 1 : 97) {
        const GuardedBytes input(size, GuardedBytes::Guard::Behind);
        std::copy_n(frame.begin(), size, input.data());
        if (size >= 21) { // else the frame is refused for its size
            for (size_t i = 0; i < 4; ++i)
                input.data()[i] = static_cast<uint8_t>(size >> (24 - 8 * i));
        }
        const int32_t result =
            PrxDecodeFrame(decoder.get(), input.data(), static_cast<int32_t>(size), &buffer, 0, 0);
        EXPECT_TRUE(result == -2 || result == static_cast<int32_t>(size)) << size;
    }
}

TEST(DeleteDecoder, OfNullDoesNothingToOtherDecoders) {
    const stream::FrameSpec spec = FrameOf(2);
    const stream::Bytes frame = stream::BuildFrame(spec);
    const TestTarget expected(prxFormatV216, spec);
    ASSERT_GT(DecodeTo(expected, frame), 0);
    const DecoderPtr decoder = MakeDecoder();
    PrxDeleteDecoder(nullptr);
    const TestTarget target(prxFormatV216, spec);
    const PrxPixelBuffer buffer = target.PublicBuffer();
    const auto size = static_cast<int32_t>(frame.size());
    EXPECT_EQ(PrxDecodeFrame(decoder.get(), frame.data(), size, &buffer, 0, 0), size);
    EXPECT_EQ(target.Bytes(), expected.Bytes());
}

TEST(CreateDecoder, TakesItsWorkerCountAsSigned) {
    static std::atomic<int> calls;
    calls = 0;
    const DecoderPtr decoder(PrxCreateDecoder(0x80000000U, [] { ++calls; }));
    EXPECT_EQ(calls, std::min(PrxProcessorCount(), 64));
}

TEST(CreateDecoder, StartsTheWorkersThatItIsAskedFor) {
    static std::atomic<int> calls;
    calls = 0;
    const DecoderPtr decoder(PrxCreateDecoder(3, [] { ++calls; }));
    EXPECT_EQ(calls, 3);
}

TEST(SeparateDecoders, RunInParallel) {
    const stream::FrameSpec spec = FrameOf(2);
    const stream::Bytes frame = stream::BuildFrame(spec);
    const TestTarget expected(prxFormatV216, spec);
    ASSERT_GT(DecodeTo(expected, frame), 0);
    std::vector<std::thread> threads;
    std::atomic<int> good = 0;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            const TestTarget target(prxFormatV216, spec);
            if (DecodeTo(target, frame) > 0 && target.Bytes() == expected.Bytes()) ++good;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(good, 4);
}

} // namespace
