// The reference 8-bit writers against a model in double precision that knows planes instead of blocks.

#include "prores/PrxWriters.h"

#include "EightBitWriters.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <string_view>

namespace {

using namespace eight_bit;

struct Range {
    double offset;
    double low;
    double high;

    uint8_t Byte(int16_t sample) const {
        return static_cast<uint8_t>(std::clamp(sample + offset, low, high));
    }
};

struct FormatModel {
    std::string_view order; ///< bytes of a group of pixels: luma Y, chroma U and V, alpha A
    Range luma;
    Range chroma;
    uint8_t opaque;
};

FormatModel ModelOf(uint32_t format) {
    switch (format) {
    case prxFormat2vuy: return {"UYVY", {128, 1, 254}, {128, 1, 254}, 0};
    case prxFormatV408: return {"UYVA", {128, 1, 254}, {128, 1, 254}, 235};
    case prxFormatR408: return {"AYUV", {112, 0, 239}, {128, 0, 255}, 255};
    default: return {"AYUV", {128, 0, 255}, {128, 0, 255}, 255};
    }
}

/// One component of a macroblock.
struct Plane {
    int32_t width;
    int32_t height;
    std::vector<int16_t> samples;

    Plane(int32_t w, int32_t h) : width(w), height(h), samples(static_cast<size_t>(w * h)) {}
    int16_t At(int32_t x, int32_t y) const { return samples[static_cast<size_t>(y * width + x)]; }
};

/// A macroblock as planes.
class MacroblockModel {
public:
    explicit MacroblockModel(const WriterCase& c)
        : luma(c.Width(), c.Height()), cb(ChromaWidth(c), c.Height()), cr(ChromaWidth(c), c.Height()),
          case_(c) {}

    Plane luma;
    Plane cb;
    Plane cr;

    /// The planes as the blocks that the transform leaves.
    void CopyToBlocks(std::span<int16_t> out) const {
        auto at = out.begin();
        for (int32_t block = 0; block < 4; ++block)
            at = CopyBlock(luma, block % 2, block / 2, at);
        for (int32_t block = 0; block < (case_.chromaFormat == prxChroma422 ? 2 : 4); ++block) {
            at = CopyBlock(cb, block / 2, block % 2, at);
            at = CopyBlock(cr, block / 2, block % 2, at);
        }
        ASSERT_EQ(at, out.end());
    }

    /// What `macroblock` holds after a writer has stored `rows` rows.
    std::vector<uint8_t> Expected(const GuardedMacroblock& macroblock, int32_t rows) const {
        std::vector<uint8_t> bytes;
        for (int32_t y = 0; y < rows; ++y) {
            bytes.resize(static_cast<size_t>(y * macroblock.Stride()), GuardedMacroblock::untouched);
            for (int32_t x = 0; x < case_.Width();)
                x = AppendGroup(bytes, macroblock, x, y);
        }
        return bytes;
    }

private:
    WriterCase case_;

    static int32_t ChromaWidth(const WriterCase& c) {
        return c.chromaFormat == prxChroma422 ? c.Width() / 2 : c.Width();
    }
    int32_t ChromaX(int32_t x) const { return case_.chromaFormat == prxChroma422 ? x / 2 : x; }

    template <typename Iterator>
    Iterator CopyBlock(const Plane& plane, int32_t blockX, int32_t blockY, Iterator out) const {
        const int32_t width = case_.Width() / 2;
        const int32_t height = case_.Height() / 2;
        for (int32_t y = 0; y < height; ++y)
            for (int32_t x = 0; x < width; ++x)
                *out++ = plane.At(blockX * width + x, blockY * height + y);
        return out;
    }

    /// Appends the pixels of a group, and returns the next pixel's position.
    int32_t AppendGroup(std::vector<uint8_t>& bytes, const GuardedMacroblock& macroblock, int32_t x,
                        int32_t y) const {
        const FormatModel model = ModelOf(case_.format);
        int32_t next = x;
        for (const char component : model.order) {
            switch (component) {
            case 'Y': bytes.push_back(model.luma.Byte(luma.At(next++, y))); break;
            case 'U': bytes.push_back(model.chroma.Byte(cb.At(ChromaX(x), y))); break;
            case 'V': bytes.push_back(model.chroma.Byte(cr.At(ChromaX(x), y))); break;
            default: bytes.push_back(case_.hasAlpha ? AlphaOf(macroblock, x, y) : model.opaque); break;
            }
        }
        return next;
    }

    uint8_t AlphaOf(const GuardedMacroblock& macroblock, int32_t x, int32_t y) const {
        return macroblock.AlphaAt(x << case_.WriterHShift(), y << case_.WriterVShift());
    }
};

void ExpectModelsBytes(const WriterCase& c, int32_t rows, GuardedMacroblock& macroblock,
                       const MacroblockModel& model) {
    const PrxMacroblockWriter writer = PrxSelectScalar8BitWriter(c.format, c.chromaFormat, c.hasAlpha);
    ASSERT_NE(writer, nullptr);
    model.CopyToBlocks(macroblock.samples());
    ASSERT_EQ(macroblock.Run(writer), model.Expected(macroblock, rows))
        << testing::PrintToString(c) << ", " << rows << " rows";
}

/// Consecutive values from `first` on, with the bits of `mask` turned over.
void FillFrom(Plane& plane, int32_t first, int32_t mask) {
    std::ranges::generate(plane.samples, [&] { return static_cast<int16_t>(first++ ^ mask); });
}

/// 0, 1, 2, ... along each row.
std::vector<int16_t> Ramp(const Plane& plane) {
    std::vector<int16_t> samples(plane.samples.size());
    for (size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<int16_t>(i % static_cast<size_t>(plane.width));
    return samples;
}

/// What `writer` makes of one row of a macroblock of `c`: all samples of a kind have one value.
std::vector<uint8_t> WriteFlat(PrxMacroblockWriter writer, const WriterCase& c, int16_t luma, int16_t cb,
                               int16_t cr) {
    GuardedMacroblock macroblock(c, 1, GuardedBytes::Guard::Behind);
    MacroblockModel model(c);
    std::ranges::fill(model.luma.samples, luma);
    std::ranges::fill(model.cb.samples, cb);
    std::ranges::fill(model.cr.samples, cr);
    model.CopyToBlocks(macroblock.samples());
    return macroblock.Run(writer);
}

/// The same by the reference writer.
std::vector<uint8_t> WriteFlat(const WriterCase& c, int16_t luma, int16_t cb, int16_t cr) {
    return WriteFlat(PrxSelectScalar8BitWriter(c.format, c.chromaFormat, c.hasAlpha), c, luma, cb, cr);
}

std::vector<uint8_t> FirstFour(const std::vector<uint8_t>& bytes) {
    return {bytes.begin(), bytes.begin() + 4};
}

using Bytes = std::vector<uint8_t>;

constexpr WriterCase full2vuy = {prxFormat2vuy, prxChroma422, false, 0, 0};
constexpr WriterCase fullV408 = {prxFormatV408, prxChroma422, false, 0, 0};
constexpr WriterCase fullR408 = {prxFormatR408, prxChroma422, false, 0, 0};
constexpr WriterCase fullY408 = {prxFormatY408, prxChroma422, false, 0, 0};

/// Expects `2vuy` bytes of one value from either stream, by the reference writer and by the one chosen.
void Expect2vuyBytes(int16_t sample, uint8_t byte) {
    for (const int32_t chromaFormat : {prxChroma422, prxChroma444}) {
        const WriterCase c = {prxFormat2vuy, chromaFormat, false, 0, 0};
        for (const auto writer : {PrxSelectScalar8BitWriter(prxFormat2vuy, chromaFormat, false),
                                  PrxSelect8BitWriter(prxFormat2vuy, chromaFormat, 0, 0, false)})
            EXPECT_EQ(WriteFlat(writer, c, sample, sample, sample), Bytes(32, byte))
                << testing::PrintToString(c) << ", sample " << sample;
    }
}

} // namespace

TEST(Writers8Bit, EverySampleValueGivesTheModelsBytes) {
    for (const WriterCase& c : CasesAt({0, 0})) {
        GuardedMacroblock macroblock(c, 16, GuardedBytes::Guard::Behind);
        std::ranges::fill(macroblock.alpha(), uint8_t{77});
        const int32_t step = c.chromaFormat == prxChroma422 ? 128 : 256; // samples of a component
        for (int32_t first = -32768; first < 32768; first += step) {
            MacroblockModel model(c);
            FillFrom(model.luma, first, 0);
            FillFrom(model.cb, first, -1);
            FillFrom(model.cr, first, 0x55);
            ASSERT_NO_FATAL_FAILURE(ExpectModelsBytes(c, 16, macroblock, model));
        }
    }
}

TEST(Writers8Bit, EachFormatAtEachReductionStoresExactlyTheRowsAskedFor) {
    std::mt19937 random = MakeRandom();
    for (const Reduction reduction : reductions) {
        for (const WriterCase& c : CasesAt(reduction)) {
            for (int32_t rows = 1; rows <= c.Height(); ++rows) {
                const auto guard = rows % 2 == 0 ? GuardedBytes::Guard::Behind : GuardedBytes::Guard::Before;
                GuardedMacroblock macroblock(c, rows, guard);
                FillRandomly(macroblock.alpha(), random);
                MacroblockModel model(c);
                for (Plane* plane : {&model.luma, &model.cb, &model.cr})
                    FillRandomly(plane->samples, random);
                ASSERT_NO_FATAL_FAILURE(ExpectModelsBytes(c, rows, macroblock, model));
            }
        }
    }
}

TEST(Writers8Bit, A2vuySampleOf127Becomes254) {
    Expect2vuyBytes(127, 254);
    Expect2vuyBytes(126, 254);
    Expect2vuyBytes(125, 253);
}

TEST(Writers8Bit, A2vuySampleOfMinus128Becomes1) {
    Expect2vuyBytes(-128, 1);
    Expect2vuyBytes(-127, 1);
    Expect2vuyBytes(-126, 2);
}

TEST(Writers8Bit, SamplesBeyondEightBitsAreClamped) {
    EXPECT_EQ(FirstFour(WriteFlat(full2vuy, 128, -129, 300)), (Bytes{1, 254, 254, 254}));
    EXPECT_EQ(FirstFour(WriteFlat(fullY408, 128, -129, 32767)), (Bytes{255, 255, 0, 255}));
    EXPECT_EQ(FirstFour(WriteFlat(fullR408, -32768, 32767, -32768)), (Bytes{255, 0, 255, 0}));
}

TEST(Writers8Bit, The2vuyBytesAreCbY0CrY1) {
    EXPECT_EQ(FirstFour(WriteFlat(full2vuy, 1, 2, 3)), (Bytes{130, 129, 131, 129}));
}

TEST(Writers8Bit, TheV408BytesAreCbYCrAWithAnOpaqueAlphaOf235) {
    EXPECT_EQ(FirstFour(WriteFlat(fullV408, 1, 2, 3)), (Bytes{130, 129, 131, 235}));
    EXPECT_EQ(FirstFour(WriteFlat(fullV408, 127, -128, 127)), (Bytes{1, 254, 254, 235}));
}

TEST(Writers8Bit, TheR408BytesAreAYCbCrWithLumaBlackAtZero) {
    EXPECT_EQ(FirstFour(WriteFlat(fullR408, -112, 2, 3)), (Bytes{255, 0, 130, 131}));
    EXPECT_EQ(FirstFour(WriteFlat(fullR408, -113, 2, 3)), (Bytes{255, 0, 130, 131}));
    EXPECT_EQ(FirstFour(WriteFlat(fullR408, 127, 127, -128)), (Bytes{255, 239, 255, 0}));
}

TEST(Writers8Bit, TheY408BytesAreAYCbCrWithTheLumaOffsetKept) {
    EXPECT_EQ(FirstFour(WriteFlat(fullY408, -112, 2, 3)), (Bytes{255, 16, 130, 131}));
    EXPECT_EQ(FirstFour(WriteFlat(fullY408, 127, 127, -128)), (Bytes{255, 255, 255, 0}));
}

TEST(Writers8Bit, TwoPixelsOfA422StreamShareTheirChroma) {
    GuardedMacroblock macroblock(fullY408, 1, GuardedBytes::Guard::Behind);
    MacroblockModel model(fullY408);
    model.cb.samples = Ramp(model.cb);
    model.CopyToBlocks(macroblock.samples());
    const Bytes bytes = macroblock.Run(PrxSelectScalar8BitWriter(prxFormatY408, prxChroma422, false));
    for (size_t x = 0; x < 16; ++x)
        EXPECT_EQ(bytes[4 * x + 2], 128 + x / 2) << "pixel " << x;
}

TEST(Writers8Bit, The2vuyFormatDropsTheOddPixelsChromaOfA444Stream) {
    const WriterCase c = {prxFormat2vuy, prxChroma444, false, 0, 0};
    GuardedMacroblock macroblock(c, 1, GuardedBytes::Guard::Behind);
    MacroblockModel model(c);
    model.cb.samples = Ramp(model.cb);
    model.CopyToBlocks(macroblock.samples());
    const Bytes bytes = macroblock.Run(PrxSelectScalar8BitWriter(c.format, c.chromaFormat, false));
    for (size_t pair = 0; pair < 8; ++pair)
        EXPECT_EQ(bytes[4 * pair], 128 + 2 * pair) << "pair " << pair;
}

TEST(Writers8Bit, AReducedPictureTakesSingleSamplesOfAlpha) {
    for (const Reduction reduction : reductions) {
        const WriterCase c = {prxFormatR408, prxChroma444, true, reduction.hShift, reduction.vShift};
        GuardedMacroblock macroblock(c, c.Height(), GuardedBytes::Guard::Behind);
        for (size_t i = 0; i < macroblock.alpha().size(); ++i) // column + 16 * line
            macroblock.alpha()[i] = static_cast<uint8_t>(i % 21 + 16 * (i / 21));
        std::ranges::fill(macroblock.samples(), int16_t{0});
        const Bytes bytes = macroblock.Run(PrxSelectScalar8BitWriter(c.format, c.chromaFormat, true));
        for (int32_t y = 0; y < c.Height(); ++y)
            for (int32_t x = 0; x < c.Width(); ++x)
                EXPECT_EQ(bytes[static_cast<size_t>(y * macroblock.Stride() + 4 * x)],
                          (x << c.hShift) + 16 * (y << c.vShift))
                    << testing::PrintToString(c) << ", pixel " << x << ", " << y;
    }
}

TEST(Writers8Bit, V408IsWrittenAtFullSizeWhateverTheShiftsAre) {
    std::mt19937 random = MakeRandom();
    for (const Reduction reduction : reductions) {
        const WriterCase c = {prxFormatV408, prxChroma422, true, reduction.hShift, reduction.vShift};
        GuardedMacroblock macroblock(c, 16, GuardedBytes::Guard::Behind);
        FillRandomly(macroblock.samples(), random);
        FillRandomly(macroblock.alpha(), random);
        const PrxMacroblockWriter writer =
            PrxSelect8BitWriter(c.format, c.chromaFormat, c.hShift, c.vShift, true);
        ASSERT_NE(writer, nullptr);
        const Bytes reduced = macroblock.Run(writer);
        GuardedMacroblock full({c.format, c.chromaFormat, true, 0, 0}, 16, GuardedBytes::Guard::Behind);
        std::ranges::copy(macroblock.samples(), full.samples().begin());
        std::ranges::copy(macroblock.alpha(), full.alpha().begin());
        EXPECT_EQ(reduced, full.Run(PrxSelectScalar8BitWriter(c.format, c.chromaFormat, true)));
    }
}

TEST(Writers8Bit, EachFormatHasAWriterAtAllTenReductions) {
    for (const Reduction reduction : reductions)
        for (const WriterCase& c : CasesAt(reduction))
            EXPECT_NE(PrxSelect8BitWriter(c.format, c.chromaFormat, c.hShift, c.vShift, c.hasAlpha), nullptr)
                << testing::PrintToString(c);
}

TEST(Writers8Bit, ThereIsNoWriterForAReductionThatNoModeMakes) {
    for (const Reduction reduction : {Reduction{0, 2}, {0, 3}, {2, 0}, {1, 3}, {3, 1}, {-1, 0}, {4, 4}})
        for (const WriterCase& c : CasesAt(reduction))
            EXPECT_EQ(PrxSelect8BitWriter(c.format, c.chromaFormat, c.hShift, c.vShift, c.hasAlpha), nullptr)
                << c.hShift << ", " << c.vShift;
}

TEST(Writers8Bit, ThereIsNoWriterForOtherChromaFormatsOrPixelFormats) {
    for (const int32_t chromaFormat : {-1, 0, 1, 4})
        EXPECT_EQ(PrxSelect8BitWriter(prxFormat2vuy, chromaFormat, 0, 0, false), nullptr);
    for (const uint32_t format : {prxFormatYuvs, prxFormatV216, prxFormatY416, prxFormatArgb})
        EXPECT_EQ(PrxSelect8BitWriter(format, prxChroma444, 0, 0, false), nullptr);
    EXPECT_EQ(PrxSelect8BitWriter(0, prxChroma444, 0, 0, false), nullptr);
}
