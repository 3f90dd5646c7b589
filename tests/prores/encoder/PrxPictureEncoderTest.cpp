#include "prores/encoder/PrxPictureEncoder.h"

#include "prores/PrxFormats.h"
#include "prores/PrxSizes.h"
#include "prores/encoder/EncodeFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <new>
#include <ostream>
#include <string>
#include <vector>

namespace {

/// What the jobs of the picture under test find as they start, with one worker.
struct Watched {
    std::vector<PrxCodingPass> passes;
    std::vector<uint32_t> indicesBeforeFit;
};
Watched watched;

void WatchJob(const PrxEncodeRowJob& job) {
    const PrxCodingPass pass = job.picture->pass;
    if (watched.passes.empty() || watched.passes.back() != pass) watched.passes.push_back(pass);
    if (pass != PrxCodingPass::Fit) return;
    for (const PrxSlice& slice : job.slices)
        watched.indicesBeforeFit.push_back(slice.quantIndex);
}

const PrxPoolClient watchingClient{
    []() -> void* { return new (std::nothrow) PrxEncodeContext; },
    [](void* context) { delete static_cast<PrxEncodeContext*>(context); },
    [](void* job, void* context) {
        WatchJob(*static_cast<PrxEncodeRowJob*>(job));
        PrxEncodeRow(static_cast<PrxEncodeRowJob*>(job), static_cast<PrxEncodeContext*>(context));
    },
    sizeof(PrxEncodeRowJob),
};

constexpr int32_t width = 240;
constexpr int32_t height = 80;
constexpr size_t sliceCount = 5 * 4; // 15 macroblocks: slices of 8, 4, 2 and 1
constexpr int64_t overhead = 8 + 8 * static_cast<int64_t>(sliceCount);

/// What kind of picture is encoded; of an interlaced one, each field has `height` rows.
struct Kind {
    const char* name;
    uint32_t pixelFormat;
    int32_t chromaFormat;
    bool hasAlpha;
    bool isField;
};
constexpr Kind plainKind = {"Plain", prxFormatV216, prxChroma422, false, false};

void PrintTo(const Kind& kind, std::ostream* out) { *out << kind.name; }

struct Encoded {
    std::vector<uint8_t> bytes;
    bool allOpaque;
    Watched seen;

    /// Bytes of slice `i` with its alpha, and where they start.
    size_t SliceSize(size_t i) const { return static_cast<size_t>(bytes[8 + 2 * i] << 8 | bytes[9 + 2 * i]); }
    std::vector<size_t> SlicePlaces() const {
        std::vector<size_t> places = {8 + 2 * sliceCount};
        for (size_t i = 0; i + 1 < sliceCount; ++i)
            places.push_back(places.back() + SliceSize(i));
        return places;
    }
    std::vector<uint32_t> Indices() const {
        std::vector<uint32_t> indices;
        for (const size_t place : SlicePlaces())
            indices.push_back(bytes[place + 1]);
        return indices;
    }
    /// Bytes of alpha, and of the fields that tell where it stands.
    int64_t AlphaSize() const {
        size_t size = 0;
        const std::vector<size_t> places = SlicePlaces();
        for (size_t i = 0; i < sliceCount; ++i) {
            const uint8_t* slice = bytes.data() + places[i];
            size_t colors = slice[0] / 8U;
            for (size_t plane = 0; plane < 3; ++plane)
                colors += static_cast<size_t>(slice[2 + 2 * plane] << 8 | slice[3 + 2 * plane]);
            size += SliceSize(i) - colors + 2;
        }
        return static_cast<int64_t>(size);
    }
};

/// Encodes a picture with one worker.
Encoded EncodePicture(Content content, PrxRateTarget target, const Kind& kind = plainKind) {
    const int32_t rowsApart = kind.isField ? 2 : 1;
    const InputPicture picture = MakePicture(kind.pixelFormat, width, rowsApart * height, content);
    const PrxPictureSource source{picture.buffer.baseAddress,
                                  ptrdiff_t{rowsApart} * picture.buffer.rowBytes,
                                  kind.pixelFormat,
                                  width,
                                  height,
                                  kind.isField};
    const PrxThreadPoolPtr pool(PrxThreadPool::create(1, nullptr, watchingClient));
    PrxPictureEncoder encoder;
    const size_t alphaRoom = kind.hasAlpha ? size_t{3} * width * height : 0;
    Encoded encoded{std::vector<uint8_t>(static_cast<size_t>(target.targetHigh) + alphaRoom), false, {}};
    watched = {};
    target.chromaFormat = kind.chromaFormat;
    const PrxCodedPicture coded = encoder.Encode(
        *pool, source, target, PrxChooseAlphaCoder(kind.hasAlpha, kind.pixelFormat), encoded.bytes);
    encoded.bytes.resize(coded.size);
    encoded.allOpaque = coded.allOpaque;
    encoded.seen = watched;
    return encoded;
}

PrxRateTarget TargetOf(uint32_t startQuantIndex, int64_t high, int64_t low) {
    return {startQuantIndex, 2, static_cast<int32_t>(high), static_cast<int32_t>(low), prxChroma422, 6};
}

/// What the picture takes at `startQuantIndex`, slice headers and table included.
int64_t FullSize(Content content, uint32_t startQuantIndex) {
    return static_cast<int64_t>(
        EncodePicture(content, TargetOf(startQuantIndex, 1 << 20, 1 << 20)).bytes.size());
}

using Passes = std::vector<PrxCodingPass>;

TEST(PictureEncoder, CountsOnceAndWritesOnceAtTheFirstIndexWhatFits) {
    const Encoded encoded = EncodePicture(Content::Ramps, TargetOf(2, 1 << 20, 1 << 20));
    EXPECT_EQ(encoded.seen.passes, (Passes{PrxCodingPass::Measure, PrxCodingPass::Write}));
    EXPECT_EQ(std::ranges::count(encoded.Indices(), 2U), static_cast<ptrdiff_t>(sliceCount));
}

TEST(PictureEncoder, DoesNotSearchBetweenTheLowAndTheHighTarget) {
    const int64_t full = FullSize(Content::Noise, 2);
    const Encoded encoded = EncodePicture(Content::Noise, TargetOf(2, full, full / 2));
    EXPECT_EQ(encoded.seen.passes, (Passes{PrxCodingPass::Measure, PrxCodingPass::Write}));
    EXPECT_EQ(std::ranges::count(encoded.Indices(), 2U), static_cast<ptrdiff_t>(sliceCount));
    EXPECT_EQ(static_cast<int64_t>(encoded.bytes.size()), full);
}

TEST(PictureEncoder, SearchesForAScaleAboveTheHighTarget) {
    const int64_t full = FullSize(Content::Ramps, 2);
    const Encoded encoded = EncodePicture(Content::Ramps, TargetOf(2, full * 19 / 20, full * 18 / 20));
    EXPECT_LE(static_cast<int64_t>(encoded.bytes.size()), full * 19 / 20);
    EXPECT_NE(std::ranges::count(encoded.Indices(), 2U), static_cast<ptrdiff_t>(sliceCount));
}

TEST(PictureEncoder, CutsWhatIsOneByteTooMuch) {
    // The scale that would save a byte is too near to the first to be told from it.
    const int64_t full = FullSize(Content::Ramps, 2);
    const Encoded encoded = EncodePicture(Content::Ramps, TargetOf(2, full - 1, full - 2));
    EXPECT_EQ(encoded.seen.passes.back(), PrxCodingPass::Fit);
    EXPECT_LT(static_cast<int64_t>(encoded.bytes.size()), full);
}

TEST(PictureEncoder, GivesAllLargeSlicesOneScale) {
    const int64_t full = FullSize(Content::Noise, 2);
    const Encoded encoded = EncodePicture(Content::Noise, TargetOf(2, full / 2, full * 4 / 9));
    std::vector<uint32_t> indices = encoded.Indices();
    std::ranges::sort(indices);
    EXPECT_EQ(indices.front(), indices.back());
    EXPECT_GT(indices.front(), 2U);
}

TEST(PictureEncoder, TakesIndex224AndThenBudgetsForNoiseThatStaysAboveItsTarget) {
    const int64_t full = FullSize(Content::Noise, 8);
    const Encoded encoded = EncodePicture(Content::Noise, TargetOf(8, full / 20, full / 23));
    EXPECT_EQ(encoded.seen.passes,
              (Passes{PrxCodingPass::Measure, PrxCodingPass::Write, PrxCodingPass::Fit}));
    EXPECT_EQ(encoded.seen.indicesBeforeFit, std::vector<uint32_t>(sliceCount, 224));
    EXPECT_LE(static_cast<int64_t>(encoded.bytes.size()), full / 20);
}

class PictureEncoderOf : public testing::TestWithParam<Kind> {};

TEST_P(PictureEncoderOf, StaysWithinEveryTargetThatHoldsTheSliceTable) {
    bool hasFit = false;
    for (const Content content : {Content::Flat, Content::Ramps, Content::Noise}) {
        for (int64_t high = overhead + 40; high < 120000; high += high / 7) {
            const Encoded encoded = EncodePicture(content, TargetOf(2, high, high * 8 / 9), GetParam());
            const int64_t alphaSize = GetParam().hasAlpha ? encoded.AlphaSize() : 0;
            ASSERT_LE(static_cast<int64_t>(encoded.bytes.size()) - alphaSize, high);
            hasFit |= encoded.seen.passes.back() == PrxCodingPass::Fit;
        }
    }
    EXPECT_TRUE(hasFit);
}

constexpr Kind kinds[] = {
    plainKind,
    {"Field", prxFormatV216, prxChroma422, false, true},
    {"RgbIn422", prxFormatB64a, prxChroma422, false, false},
    {"FullChroma", prxFormatY416, prxChroma444, false, false},
    {"FullChromaWithAlphaOf8Bits", prxFormatY408, prxChroma444, true, false},
    {"FullChromaWithAlphaOf16Bits", prxFormatY416, prxChroma444, true, false},
    {"FieldOfFullChromaWithAlpha", prxFormatB64a, prxChroma444, true, true},
};

INSTANTIATE_TEST_SUITE_P(EachKind, PictureEncoderOf, testing::ValuesIn(kinds),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(PictureEncoder, IsOpaqueWithoutAlpha) {
    EXPECT_TRUE(EncodePicture(Content::Noise, TargetOf(2, 1 << 20, 1 << 20)).allOpaque);
}

} // namespace
