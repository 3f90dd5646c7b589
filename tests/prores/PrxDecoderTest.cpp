#include "prores/PrxDecoder.h"

#include "prores/DecoderModel.h"
#include "prores/PrxFormats.h"
#include "prores/StreamFrame.h"
#include "prores/TestFrames.h"
#include "prores/TestTarget.h"

#include <gtest/gtest.h>

#include <atomic>
#include <new>
#include <vector>

namespace {

std::atomic<int> hookCalls;
void CountHook() { ++hookCalls; }

TEST(DecoderWorkers, CallTheHookOnceEach) {
    hookCalls = 0;
    const PrxDecoder decoder(5, CountHook);
    EXPECT_EQ(hookCalls, 5);
}

TEST(DecoderWorkers, AreNoMoreThan64) {
    hookCalls = 0;
    const PrxDecoder decoder(100, CountHook);
    EXPECT_EQ(hookCalls, 64);
}

TEST(DecoderWorkers, AreOneForEachProcessorIfNoneAreAskedFor) {
    for (const int32_t count : {0, -1, -100}) {
        hookCalls = 0;
        const PrxDecoder decoder(count, CountHook);
        EXPECT_EQ(hookCalls, std::min(PrxProcessorCount(), 64));
    }
}

TEST(DecoderWorkers, ThatCannotStartRaiseOutOfMemory) {
    static std::atomic<int> started;
    for (const int good : {0, 1, 2}) {
        started = good;
        const PrxThreadStarter starter = [](std::thread* thread, PrxThreadEntry entry, void* argument) {
            return started-- > 0 && PrxStartThread(thread, entry, argument);
        };
        EXPECT_THROW(PrxDecoder(3, nullptr, starter), std::bad_alloc);
    }
}

class InterlacedLines : public testing::TestWithParam<int32_t> {};

TEST_P(InterlacedLines, AreThoseOfTheirField) {
    stream::FrameSpec spec;
    spec.width = 16;
    spec.height = 1081;
    spec.interlaceMode = GetParam();
    // The top field is light, the bottom field dark.
    spec.coefficients = [&spec](int picture, int x, int y) {
        return stream::FlatColour(stream::IsBottomField(spec, picture) ? -200 : 200, 0, 0)(picture, x, y);
    };
    const TestTarget target(prxFormat2vuy, spec);
    PrxDecoder decoder(2, nullptr);
    ASSERT_GT(Decode(decoder, stream::BuildFrame(spec), target), 0);
    int32_t light = 0;
    for (int32_t y = 0; y < spec.height; ++y) {
        const bool isLight = target.Row(y)[1] > 128;
        EXPECT_EQ(isLight, y % 2 == 0) << y;
        light += isLight ? 1 : 0;
    }
    EXPECT_EQ(light, 541);
}
INSTANTIATE_TEST_SUITE_P(FieldOrders, InterlacedLines, testing::Values(1, 2));

class HalfHeight : public testing::TestWithParam<int32_t> {};

TEST_P(HalfHeight, OfAnInterlacedFrameIsItsFirstFieldInFullDetail) {
    stream::FrameSpec spec = FrameOf(2, GetParam());
    spec.height = 98;
    const stream::Bytes frame = stream::BuildFrame(spec);
    PrxDecoder decoder(2, nullptr);
    const TestTarget half(prxFormat2vuy, spec, 0, 1);
    const TestTarget full(prxFormat2vuy, spec);
    ASSERT_GT(Decode(decoder, frame, half, 2), 0);
    ASSERT_GT(Decode(decoder, frame, full, 1), 0);
    const int32_t firstLine = spec.interlaceMode == 2 ? 1 : 0;
    for (int32_t y = 0; y < 49; ++y)
        EXPECT_EQ(half.Row(y), full.Row(2 * y + firstLine)) << y;
}
INSTANTIATE_TEST_SUITE_P(FieldOrders, HalfHeight, testing::Values(1, 2));

TEST(HalfHeightTarget, LosesTheLastLineOfAFieldThatHasOneMore) {
    stream::FrameSpec spec;
    spec.width = 16;
    spec.height = 1081;
    spec.interlaceMode = 1;
    spec.coefficients = stream::NaturalPicture(7);
    const stream::Bytes frame = stream::BuildFrame(spec);
    const TestTarget target(prxFormat2vuy, 16, 540, 32); // forbidden memory follows
    const TestTarget whole(prxFormat2vuy, 16, 541, 32);
    PrxDecoder decoder(1, nullptr);
    ASSERT_GT(Decode(decoder, frame, target, 2), 0);
    ASSERT_GT(Decode(decoder, frame, whole, 2), 0);
    for (int32_t y = 0; y < 540; ++y)
        EXPECT_EQ(target.Row(y), whole.Row(y)) << y;
    EXPECT_FALSE(whole.RowUntouched(540));
}

TEST(SmallTarget, OneRowTooShortIsRefusedBeforeAnythingIsWritten) {
    const stream::FrameSpec spec = FrameOf(2);
    const stream::Bytes frame = stream::BuildFrame(spec);
    PrxDecoder decoder(1, nullptr);
    for (const int32_t mode : {1, 2, 6, 8, 10}) {
        const ModelReduction reduction = ReductionOf(mode);
        const TestTarget target(prxFormat2vuy, spec.width, (spec.height >> reduction.vShift) - 1, 1024);
        EXPECT_EQ(Decode(decoder, frame, target, mode), -4);
        EXPECT_TRUE(target.Untouched());
    }
}

TEST(LargeTarget, GetsThePicturesRowsAndMacroblocksOnly) {
    const stream::FrameSpec spec = FrameOf(2); // 130 by 99: 9 macroblocks across
    const stream::Bytes frame = stream::BuildFrame(spec);
    PrxDecoder decoder(2, nullptr);
    const TestTarget exact(prxFormat2vuy, spec);
    const TestTarget large(prxFormat2vuy, 400, 120, 800);
    ASSERT_GT(Decode(decoder, frame, exact), 0);
    ASSERT_GT(Decode(decoder, frame, large), 0);
    for (int32_t y = 0; y < 99; ++y) {
        const std::vector<uint8_t> row = large.Row(y);
        EXPECT_EQ(std::vector<uint8_t>(row.begin(), row.begin() + 288), exact.Row(y)) << y;
        const auto start = static_cast<size_t>(800 * y);
        EXPECT_TRUE(large.Untouched(start + 288, start + 800)) << y;
    }
    for (int32_t y = 99; y < 120; ++y)
        EXPECT_TRUE(large.RowUntouched(y)) << y;
}

TEST(LargeTarget, OfAnInterlacedFrameGetsThePicturesRowsOnly) {
    const stream::FrameSpec spec = FrameOf(2, 2);
    PrxDecoder decoder(2, nullptr);
    const TestTarget large(prxFormatB64a, 400, 120, 3200);
    ASSERT_GT(Decode(decoder, stream::BuildFrame(spec), large), 0);
    EXPECT_FALSE(large.RowUntouched(97));
    EXPECT_FALSE(large.RowUntouched(98));
    for (int32_t y = 99; y < 120; ++y)
        EXPECT_TRUE(large.RowUntouched(y)) << y;
}

TEST(L302, From422SucceedsAndLeavesTheTargetAsItWas) {
    const stream::FrameSpec spec = FrameOf(2);
    const stream::Bytes frame = stream::BuildFrame(spec);
    PrxDecoder decoder(1, nullptr);
    const TestTarget target(prxFormatL302, spec);
    EXPECT_EQ(Decode(decoder, frame, target), static_cast<int32_t>(frame.size()));
    EXPECT_TRUE(target.Untouched());
}

TEST(V210, WithRowsTooShortForItsGroupsSucceedsAndLeavesTheTargetAsItWas) {
    const stream::FrameSpec spec = FrameOf(2); // 130 pixels: 22 groups of 16 bytes
    PrxDecoder decoder(1, nullptr);
    const TestTarget target(prxFormatV210, spec.width, spec.height, 351);
    EXPECT_GT(Decode(decoder, stream::BuildFrame(spec), target), 0);
    EXPECT_TRUE(target.Untouched());
}

TEST(V210, OfAFieldTestsTheTargetsOwnRowSize) {
    const stream::FrameSpec spec = FrameOf(2, 1);
    PrxDecoder decoder(1, nullptr);
    const TestTarget target(prxFormatV210, spec.width, spec.height, 351);
    EXPECT_GT(Decode(decoder, stream::BuildFrame(spec), target), 0);
    EXPECT_TRUE(target.Untouched());
}

TEST(FrameForm, HeaderLongerThanItsFieldsIsSkipped) {
    stream::FrameSpec spec = FrameOf(2);
    spec.headerSize = 148; // and no matrices in it
    PrxDecoder decoder(1, nullptr);
    stream::FramePlaces places;
    const stream::Bytes frame = stream::BuildFrame(spec, &places);
    EXPECT_EQ(places.pictures[0].header, 156U);
    const TestTarget target(prxFormatV216, spec);
    const TestTarget model(prxFormatV216, spec);
    ASSERT_GT(Decode(decoder, frame, target), 0);
    ModelDecode(spec, model.Get(), 1, false);
    EXPECT_EQ(target.Bytes(), model.Bytes());
}

TEST(FrameForm, ShortHeaderInAStandardFrameIsReadFromTheStandardPlace) {
    stream::FrameSpec spec = FrameOf(2);
    spec.shortForm = true;
    const stream::Bytes shortFrame = stream::BuildFrame(spec);
    // The same bytes behind eight others, which are no short form themselves.
    stream::Bytes frame = {0, 0, 0, 0, 'i', 'c', 'p', 'f'};
    stream::Append(frame, shortFrame);
    stream::Patch32(frame, 0, static_cast<uint32_t>(frame.size()));
    PrxDecoder decoder(1, nullptr);
    const TestTarget target(prxFormatV216, spec);
    const TestTarget expected(prxFormatV216, spec);
    EXPECT_EQ(Decode(decoder, frame, target), static_cast<int32_t>(frame.size()));
    ASSERT_GT(Decode(decoder, shortFrame, expected), 0);
    EXPECT_EQ(target.Bytes(), expected.Bytes());
}

TEST(FrameForm, SliceCountOfThePictureHeaderIsNotRead) {
    const stream::FrameSpec spec = FrameOf(2);
    stream::FramePlaces places;
    stream::Bytes frame = stream::BuildFrame(spec, &places);
    PrxDecoder decoder(1, nullptr);
    const TestTarget expected(prxFormatV216, spec);
    ASSERT_GT(Decode(decoder, frame, expected), 0);
    for (const uint32_t count : {0U, 1U, 0xffffU}) {
        stream::Patch16(frame, places.pictures[0].header + 5, count);
        const TestTarget target(prxFormatV216, spec);
        ASSERT_GT(Decode(decoder, frame, target), 0);
        EXPECT_EQ(target.Bytes(), expected.Bytes());
    }
}

TEST(FrameForm, ElevenMacroblocksAreSlicesOfEightTwoAndOne) {
    stream::FrameSpec spec = FrameOf(2);
    spec.width = 11 * 16;
    spec.height = 16;
    stream::FramePlaces places;
    const stream::Bytes frame = stream::BuildFrame(spec, &places);
    EXPECT_EQ(places.pictures[0].slices.size(), 3U);
    PrxDecoder decoder(1, nullptr);
    const TestTarget target(prxFormatV216, spec);
    const TestTarget model(prxFormatV216, spec);
    ASSERT_GT(Decode(decoder, frame, target), 0);
    ModelDecode(spec, model.Get(), 1, false);
    EXPECT_EQ(target.Bytes(), model.Bytes());
}

TEST(Decoder, IsUsableAfterEachFailure) {
    const stream::FrameSpec spec = FrameOf(2, 0, 2);
    const stream::Bytes frame = stream::BuildFrame(spec);
    PrxDecoder decoder(2, nullptr);
    const TestTarget expected(prxFormatB64a, spec);
    ASSERT_GT(Decode(decoder, frame, expected), 0);
    const auto decodesWell = [&] {
        const TestTarget target(prxFormatB64a, spec);
        return Decode(decoder, frame, target) > 0 && target.Bytes() == expected.Bytes();
    };
    const TestTarget target(prxFormatB64a, spec);
    EXPECT_EQ(Decode(decoder, {}, target), -2);
    EXPECT_TRUE(decodesWell());
    EXPECT_EQ(Decode(decoder, frame, target, 12), -3);
    EXPECT_TRUE(decodesWell());
    EXPECT_EQ(Decode(decoder, frame, TestTarget(prxFormatB64a, 8, 8, 64)), -4);
    EXPECT_TRUE(decodesWell());
    EXPECT_EQ(Decode(decoder, frame, TestTarget(prxFormatYuvs, spec)), -1);
    EXPECT_TRUE(decodesWell());
    EXPECT_EQ(Decode(decoder, frame, target, 3), -3);
    EXPECT_TRUE(target.Untouched());
    EXPECT_TRUE(decodesWell());
}

TEST(Decoder, TakesFramesOfAnySizeAndFormInTurn) {
    PrxDecoder decoder(2, nullptr);
    for (const int size : {200, 16, 333, 20}) {
        for (const int interlaceMode : {0, 2}) {
            stream::FrameSpec spec = FrameOf(2 + size % 2, interlaceMode, size % 3);
            spec.width = size;
            spec.height = size / 2;
            const TestTarget target(prxFormatB64a, spec);
            const TestTarget model(prxFormatB64a, spec);
            ASSERT_GT(Decode(decoder, stream::BuildFrame(spec), target), 0);
            ModelDecode(spec, model.Get(), 1, false);
            EXPECT_EQ(target.Bytes(), model.Bytes()) << size;
        }
    }
}

} // namespace
