#include "prores/PrxDecodeRow.h"

#include "prores/DecoderModel.h"
#include "prores/PrxDecoder.h"
#include "prores/StreamFrame.h"
#include "prores/TestFrames.h"
#include "prores/TestTarget.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

// Slices that are refused, in every format.

namespace {

constexpr int32_t mbPixels = 16;

/// A frame of 9 by 2 macroblocks in slices of 2, 2, 2, 2, 1.
stream::FrameSpec SlicedFrame(int chromaFormat, int alphaType, int interlaceMode = 0) {
    stream::FrameSpec spec = FrameOf(chromaFormat, interlaceMode, alphaType);
    spec.width = 9 * mbPixels;
    spec.height = 32;
    spec.log2SliceMbWidth = 1;
    return spec;
}

void Damage(stream::Bytes& slice) { slice[0] = 0; }

/// The pixels [first, end) of all rows, which must start and end at groups.
stream::Bytes Columns(const TestTarget& target, int32_t first, int32_t end) {
    const PrxGroupSize group = PrxGetGroupSize(target.Get().pixelFormat);
    const auto byteOf = [&](int32_t pixel) {
        return static_cast<uint32_t>(pixel) / group.pixelsPerGroup * group.bytesPerGroup;
    };
    stream::Bytes columns;
    for (int32_t y = 0; y < target.Get().height; ++y) {
        const std::vector<uint8_t> row = target.Row(y);
        columns.insert(columns.end(), row.begin() + byteOf(first), row.begin() + byteOf(end));
    }
    return columns;
}

/// Pixels that are packed together: what is written of one is written of all.
int32_t PackedPixels(uint32_t format) { return format == prxFormatV210 ? 6 : 1; }
int32_t PackDown(uint32_t format, int32_t pixel) {
    return pixel / PackedPixels(format) * PackedPixels(format);
}
int32_t PackUp(uint32_t format, int32_t pixel) { return PackDown(format, pixel + PackedPixels(format) - 1); }

/// Of each reduction one; in all but the first `y416`, `r4fl` and `v408` are copied from a tile.
constexpr int32_t modes[] = {1, 2, 6, 9, 11};

class RefusedSlices : public testing::TestWithParam<std::tuple<int32_t, int32_t, int32_t>> {
protected:
    stream::FrameSpec Frame() const {
        const auto [chromaFormat, alphaType, interlaceMode] = GetParam();
        return SlicedFrame(chromaFormat, alphaType, interlaceMode);
    }
    std::vector<uint32_t> Formats() const { return TargetFormats(std::get<0>(GetParam())); }
    PrxDecoder decoder{1, nullptr};
};

TEST_P(RefusedSlices, KeepWhatTheTargetHeld) {
    stream::FrameSpec spec = Frame();
    spec.editSlice = [](const stream::SlicePlace& place, stream::Bytes& slice) {
        if (place.mbX == 4) Damage(slice);
    };
    const stream::Bytes frame = stream::BuildFrame(spec);
    for (const uint32_t format : Formats()) {
        for (const int32_t mode : modes) {
            const auto [hShift, vShift] = ReductionOf(mode);
            const TestTarget target(format, spec, hShift, vShift);
            const TestTarget before(format, spec, hShift, vShift);
            ASSERT_GT(Decode(decoder, frame, target, mode), 0);
            EXPECT_EQ(target.Untouched(), format == prxFormatL302) << std::hex << format;
            const int32_t first = PackUp(format, 4 * mbPixels >> hShift);
            const int32_t end = PackDown(format, 6 * mbPixels >> hShift);
            EXPECT_EQ(Columns(target, first, end), Columns(before, first, end))
                << std::hex << format << " mode " << mode;
        }
    }
}

TEST_P(RefusedSlices, LeaveThePixelsBehindThemAsInAGoodFrame) {
    stream::FrameSpec spec = Frame();
    const stream::Bytes good = stream::BuildFrame(spec);
    spec.editSlice = [](const stream::SlicePlace& place, stream::Bytes& slice) {
        if (place.mbX == 0 || place.mbX == 4) Damage(slice);
    };
    const stream::Bytes damaged = stream::BuildFrame(spec);
    for (const uint32_t format : Formats()) {
        const TestTarget target(format, spec);
        const TestTarget expected(format, spec);
        ASSERT_GT(Decode(decoder, damaged, target), 0);
        ASSERT_GT(Decode(decoder, good, expected), 0);
        const int32_t first = PackUp(format, 6 * mbPixels);
        EXPECT_EQ(Columns(target, first, 9 * mbPixels), Columns(expected, first, 9 * mbPixels))
            << std::hex << format;
    }
}

TEST_P(RefusedSlices, LeaveThePixelsBeforeThemAsInAFrameThatEndsThere) {
    stream::FrameSpec spec = Frame();
    spec.editSlice = [](const stream::SlicePlace& place, stream::Bytes& slice) {
        if (place.mbX == 4) Damage(slice);
    };
    const stream::Bytes damaged = stream::BuildFrame(spec);
    stream::FrameSpec narrow = Frame();
    narrow.width = 4 * mbPixels;
    const stream::Bytes ending = stream::BuildFrame(narrow);
    for (const uint32_t format : Formats()) {
        if (format == prxFormatL302) continue; // which is never written
        const TestTarget target(format, spec);
        const TestTarget expected(format, narrow);
        ASSERT_GT(Decode(decoder, damaged, target), 0);
        ASSERT_GT(Decode(decoder, ending, expected), 0);
        // In these two the last pixel is filtered with what the target held behind it.
        const bool filtersLast = format == prxFormatY416 || format == prxFormatR4fl;
        // Of a group that the two slices share, the missing pixels are black.
        const int32_t end = filtersLast ? 4 * mbPixels - 1 : PackUp(format, 4 * mbPixels);
        EXPECT_EQ(Columns(target, 0, end), Columns(expected, 0, end)) << std::hex << format;
    }
}

TEST_P(RefusedSlices, OfAWholeFrameLeaveTheTargetUntouched) {
    stream::FrameSpec spec = Frame();
    spec.editSlice = [](const stream::SlicePlace&, stream::Bytes& slice) { Damage(slice); };
    const stream::Bytes frame = stream::BuildFrame(spec);
    for (const uint32_t format : Formats()) {
        for (const int32_t mode : modes) {
            const auto [hShift, vShift] = ReductionOf(mode);
            const TestTarget target(format, spec, hShift, vShift);
            EXPECT_EQ(Decode(decoder, frame, target, mode), static_cast<int32_t>(frame.size()));
            EXPECT_TRUE(target.Untouched()) << std::hex << format << " mode " << mode;
        }
    }
}

TEST_P(RefusedSlices, GiveTheSamePictureWhateverWasDecodedBefore) {
    stream::FrameSpec spec = Frame();
    const stream::Bytes good = stream::BuildFrame(spec);
    spec.editSlice = [](const stream::SlicePlace& place, stream::Bytes& slice) {
        if (place.index % 3 == 1) Damage(slice);
    };
    const stream::Bytes damaged = stream::BuildFrame(spec);
    for (const uint32_t format : Formats()) {
        for (const int32_t mode : modes) {
            const ModelReduction reduction = ReductionOf(mode);
            PrxDecoder fresh(1, nullptr);
            const TestTarget first(format, spec, reduction.hShift, reduction.vShift);
            const TestTarget second(format, spec, reduction.hShift, reduction.vShift);
            const TestTarget other(format, spec);
            ASSERT_GT(Decode(fresh, damaged, first, mode), 0);
            ASSERT_GT(Decode(fresh, good, other), 0);
            ASSERT_GT(Decode(fresh, damaged, second, mode), 0);
            EXPECT_EQ(first.Bytes(), second.Bytes()) << std::hex << format << " mode " << mode;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Streams, RefusedSlices,
                         testing::Combine(testing::Values(2, 3), testing::Values(0, 2),
                                          testing::Values(0, 1, 2)));

/// The 16-bit value at the start of a sample.
uint16_t Word(const uint8_t* bytes) {
    uint16_t word;
    std::memcpy(&word, bytes, sizeof(word));
    return word;
}

TEST(RefusedSlice, LendsWhatTheTargetHeldToTheChromaOfThePixelBeforeIt) {
    stream::FrameSpec spec = SlicedFrame(2, 0);
    spec.editSlice = [](const stream::SlicePlace& place, stream::Bytes& slice) {
        if (place.mbX == 4) Damage(slice);
    };
    const TestTarget target(prxFormatY416, spec);
    PrxDecoder decoder(1, nullptr);
    ASSERT_GT(Decode(decoder, stream::BuildFrame(spec), target), 0);
    constexpr ptrdiff_t pixelBytes = 8;
    for (int32_t y = 0; y < spec.height; ++y) {
        const std::vector<uint8_t> row = target.Row(y);
        const uint8_t* last = row.data() + (4 * mbPixels - 1) * pixelBytes;
        for (const ptrdiff_t chroma : {4, 6}) {
            const int32_t left = Word(last - pixelBytes + chroma);
            const int32_t right = Word(last + pixelBytes + chroma);
            EXPECT_EQ(Word(last + chroma), (left + right + 1) >> 1) << y;
        }
    }
}

/// The 10-bit codes of a `v210` group: Cb Y Cr Y.
std::vector<uint32_t> CodesOfGroup(const TestTarget& target, int32_t y, ptrdiff_t group) {
    const std::vector<uint8_t> row = target.Row(y);
    std::vector<uint32_t> codes;
    for (ptrdiff_t i = 0; i < 4; ++i) {
        uint32_t word;
        std::memcpy(&word, row.data() + 16 * group + 4 * i, sizeof(word));
        for (const uint32_t shift : {0, 10, 20})
            codes.push_back(word >> shift & 0x3ff);
    }
    return codes;
}

TEST(RefusedSlice, IsBlackInAGroupOfV210ThatTheGoodSliceOnItsRightBegins) {
    stream::FrameSpec spec = SlicedFrame(2, 0);
    const TestTarget expected(prxFormatV210, spec);
    PrxDecoder decoder(1, nullptr);
    ASSERT_GT(Decode(decoder, stream::BuildFrame(spec), expected), 0);
    spec.editSlice = [](const stream::SlicePlace& place, stream::Bytes& slice) {
        if (place.mbX == 0) Damage(slice); // pixels 0 to 31
    };
    const TestTarget target(prxFormatV210, spec);
    ASSERT_GT(Decode(decoder, stream::BuildFrame(spec), target), 0);
    for (int32_t y = 0; y < spec.height; ++y) {
        std::vector<uint32_t> codes = CodesOfGroup(expected, y, 5); // pixels 30 to 35
        constexpr uint32_t blackPair[] = {0x200, 0x40, 0x200, 0x40};
        std::ranges::copy(blackPair, codes.begin());
        EXPECT_EQ(CodesOfGroup(target, y, 5), codes) << y;
    }
}

TEST(RefusedSlice, DoesNotStopTheOthersOfItsRow) {
    for (const int32_t bad : {0, 2, 8}) {
        stream::FrameSpec spec = SlicedFrame(2, 0);
        const stream::Bytes good = stream::BuildFrame(spec);
        spec.editSlice = [bad](const stream::SlicePlace& place, stream::Bytes& slice) {
            if (place.mbX == bad) Damage(slice);
        };
        const TestTarget target(prxFormatV216, spec);
        const TestTarget expected(prxFormatV216, spec);
        PrxDecoder decoder(1, nullptr);
        ASSERT_GT(Decode(decoder, stream::BuildFrame(spec), target), 0);
        ASSERT_GT(Decode(decoder, good, expected), 0);
        const int32_t end = bad == 8 ? 9 : bad + 2;
        EXPECT_EQ(Columns(target, 0, bad * mbPixels), Columns(expected, 0, bad * mbPixels));
        EXPECT_EQ(Columns(target, end * mbPixels, 9 * mbPixels),
                  Columns(expected, end * mbPixels, 9 * mbPixels));
    }
}

TEST(RefusedSlice, IsOneWhoseComponentsPassItsEnd) {
    stream::FrameSpec spec = SlicedFrame(2, 0);
    spec.editSlice = [](const stream::SlicePlace& place, stream::Bytes& slice) {
        if (place.mbX == 4) stream::Patch16(slice, 2, 0xffff);
    };
    const TestTarget target(prxFormatV216, spec);
    const TestTarget before(prxFormatV216, spec);
    PrxDecoder decoder(1, nullptr);
    ASSERT_GT(Decode(decoder, stream::BuildFrame(spec), target), 0);
    EXPECT_EQ(Columns(target, 64, 96), Columns(before, 64, 96));
    EXPECT_NE(Columns(target, 0, 64), Columns(before, 0, 64));
}

TEST(SliceTable, ThatPromisesTooMuchIsCutAtTheInputsEnd) {
    stream::FrameSpec spec = SlicedFrame(2, 0);
    stream::FramePlaces places;
    stream::Bytes frame = stream::BuildFrame(spec, &places);
    const TestTarget expected(prxFormatV216, spec);
    PrxDecoder decoder(1, nullptr);
    ASSERT_GT(Decode(decoder, frame, expected), 0);
    // The last slice: without alpha its Cr takes the bytes that are there, and no more.
    const size_t last = places.pictures[0].slices.size() - 1;
    stream::Patch16(frame, places.pictures[0].sliceTable + 2 * last, 0xffff);
    const TestTarget target(prxFormatV216, spec);
    ASSERT_GT(Decode(decoder, frame, target), 0);
    EXPECT_EQ(target.Bytes(), expected.Bytes());
}

TEST(SliceTable, ThatPromisesWhatTheInputCutsOffMakesTheSliceRefused) {
    stream::FrameSpec spec = SlicedFrame(2, 0);
    stream::FramePlaces places;
    stream::Bytes frame = stream::BuildFrame(spec, &places);
    // The last slice loses its Cr and the last byte of its Cb.
    const size_t last = places.pictures[0].slices.back();
    const auto sizeAt = [&](size_t offset) {
        return size_t{frame[last + offset]} << 8 | frame[last + offset + 1];
    };
    frame.resize(last + 6 + sizeAt(2) + sizeAt(4) - 1);
    stream::Patch32(frame, 0, static_cast<uint32_t>(frame.size()));
    const TestTarget target(prxFormatV216, spec);
    const TestTarget before(prxFormatV216, spec);
    PrxDecoder decoder(1, nullptr);
    ASSERT_GT(Decode(decoder, frame, target), 0);
    EXPECT_FALSE(target.RowUntouched(31)); // by the slices before it
    constexpr ptrdiff_t lastBytes = 64;    // of the last macroblock, in rows 16 to 31
    for (int32_t y = 16; y < 32; ++y) {
        const std::vector<uint8_t> row = target.Row(y);
        const std::vector<uint8_t> old = before.Row(y);
        EXPECT_TRUE(std::equal(row.end() - lastBytes, row.end(), old.end() - lastBytes)) << y;
    }
}

TEST(SliceTable, ThatEndsTheInputEarlyLeavesTheLaterSlicesUnwritten) {
    stream::FrameSpec spec = SlicedFrame(2, 0);
    stream::FramePlaces places;
    stream::Bytes frame = stream::BuildFrame(spec, &places);
    frame.resize(places.pictures[0].slices[5]); // the second row's first
    stream::Patch32(frame, 0, static_cast<uint32_t>(frame.size()));
    const TestTarget target(prxFormatV216, spec);
    PrxDecoder decoder(1, nullptr);
    EXPECT_EQ(Decode(decoder, frame, target), static_cast<int32_t>(frame.size()));
    EXPECT_FALSE(target.RowUntouched(15));
    for (int32_t y = 16; y < 32; ++y)
        EXPECT_TRUE(target.RowUntouched(y)) << y;
}

/// A row job whose row buffer is larger than any memory.
TEST(RowJob, WithoutMemoryForItsRowSaysSoAndWritesNothing) {
    const stream::Bytes bytes(64);
    uint8_t pixels[64] = {};
    PrxPictureContext picture{};
    picture.layout = {{bytes.data(), bytes.size(), nullptr}, 1U << 30, 1, 8, 1U << 27, 1U << 27};
    picture.converter.mbBytes = 1U << 28;
    picture.converter.direct = false;
    PrxRowJob job{&picture, 0, 64, pixels, 0, 16, false, false};
    PrxWorkerContext context;
    PrxDecodeRow(&job, &context);
    EXPECT_TRUE(job.outOfMemory);
    EXPECT_FALSE(job.allOk);
    EXPECT_TRUE(std::all_of(std::begin(pixels), std::end(pixels), [](uint8_t byte) { return byte == 0; }));
}

TEST(RowJob, WithoutRowsOrDataDoesNothing) {
    PrxPictureContext picture{};
    PrxWorkerContext context;
    PrxRowJob noRows{&picture, 0, 64, nullptr, 0, 0, false, false};
    PrxDecodeRow(&noRows, &context);
    EXPECT_FALSE(noRows.allOk);
    PrxRowJob noData{&picture, 0, 0, nullptr, 0, 16, false, false};
    PrxDecodeRow(&noData, &context);
    EXPECT_FALSE(noData.allOk);
}

} // namespace
