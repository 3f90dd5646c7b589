#pragma once

#include "Reductions.h"
#include "prores/PrxMacroblock.h"
#include "support/GuardedBytes.h"

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <random>
#include <span>
#include <vector>

/// What the tests of the 8-bit writers share: the cases, and memory for one of them that ends at forbidden
/// pages.
namespace eight_bit {

struct WriterCase {
    uint32_t format;
    int32_t chromaFormat;
    bool hasAlpha;
    int32_t hShift;
    int32_t vShift;

    /// `v408` is written at full size whatever the shifts are.
    int32_t WriterHShift() const { return format == prxFormatV408 ? 0 : hShift; }
    int32_t WriterVShift() const { return format == prxFormatV408 ? 0 : vShift; }
    int32_t Width() const { return 16 >> WriterHShift(); }
    int32_t Height() const { return 16 >> WriterVShift(); }
    int32_t RowBytes() const { return Width() * (format == prxFormat2vuy ? 2 : 4); }
    int32_t BlockSize() const { return 64 >> (WriterHShift() + WriterVShift()); }
    int32_t Blocks() const { return chromaFormat == prxChroma422 ? 8 : 12; }
};

inline void PrintTo(const WriterCase& c, std::ostream* out) {
    for (int32_t shift = 24; shift >= 0; shift -= 8)
        *out << static_cast<char>(c.format >> shift);
    *out << (c.chromaFormat == prxChroma422 ? " of 4:2:2" : " of 4:4:4") << (c.hasAlpha ? " with alpha" : "")
         << " reduced by 2^" << c.hShift << ", 2^" << c.vShift;
}

/// Every format of every stream, with alpha where the format has it.
inline std::vector<WriterCase> CasesAt(Reduction reduction) {
    std::vector<WriterCase> cases;
    for (const uint32_t format : {prxFormat2vuy, prxFormatV408, prxFormatR408, prxFormatY408})
        for (const int32_t chromaFormat : {prxChroma422, prxChroma444})
            for (const bool hasAlpha : {false, true})
                if (format != prxFormat2vuy || !hasAlpha)
                    cases.push_back({format, chromaFormat, hasAlpha, reduction.hShift, reduction.vShift});
    return cases;
}

inline void FillRandomly(std::span<uint8_t> bytes, std::mt19937& random) {
    std::ranges::generate(bytes, [&] { return static_cast<uint8_t>(random()); });
}

/// Most samples lie within eight bits or just outside, and one in eight anywhere.
inline void FillRandomly(std::span<int16_t> samples, std::mt19937& random) {
    std::ranges::generate(samples, [&] {
        const auto any = static_cast<int16_t>(random());
        return static_cast<int16_t>(random() % 8 == 0 ? any : any % 180);
    });
}

/// The macroblock of one case, `rows` rows of it, in memory of exactly its size. Target rows stand further
/// apart than they are wide, and at odd addresses.
class GuardedMacroblock {
public:
    static constexpr uint8_t untouched = 0xA5;
    static constexpr int32_t gap = 5;

    GuardedMacroblock(const WriterCase& c, int32_t rows, GuardedBytes::Guard guard)
        : case_(c), rows_(rows), samples_(static_cast<size_t>(c.Blocks() * c.BlockSize()) * 2, guard),
          alpha_(SizeOf(16, rows << c.WriterVShift()), guard), target_(SizeOf(c.RowBytes(), rows), guard) {}

    std::span<int16_t> samples() {
        return {reinterpret_cast<int16_t*>(samples_.data()), samples_.size() / sizeof(int16_t)};
    }
    std::span<uint8_t> alpha() { return {alpha_.data(), alpha_.size()}; }
    uint8_t AlphaAt(int32_t x, int32_t y) const { return alpha_.data()[y * (16 + gap) + x]; }

    /// The target's bytes after `writer` has run.
    std::vector<uint8_t> Run(PrxMacroblockWriter writer) {
        std::ranges::fill(target_, untouched);
        const PrxMacroblock macroblock = {samples().data(), case_.hasAlpha ? alpha_.data() : nullptr,
                                          16 + gap,         target_.data(),
                                          Stride(),         rows_};
        writer(macroblock, {case_.hShift, case_.vShift, 1});
        return {target_.begin(), target_.end()};
    }

    ptrdiff_t Stride() const { return case_.RowBytes() + gap; }

private:
    static size_t SizeOf(int32_t rowBytes, int32_t rows) {
        return static_cast<size_t>((rows - 1) * (rowBytes + gap) + rowBytes);
    }

    WriterCase case_;
    int32_t rows_;
    GuardedBytes samples_;
    GuardedBytes alpha_;
    GuardedBytes target_;
};

} // namespace eight_bit
