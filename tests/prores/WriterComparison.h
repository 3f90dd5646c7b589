#pragma once

#include "prores/MacroblockFixture.h"
#include "support/TestSupport.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>

#include <span>

/// What a writer is compared for.
struct WriterFormat {
    uint32_t pixelFormat;
    size_t rowBytes;      ///< what 16 pixels take
    size_t alphaRowBytes; ///< what the alpha of 16 pixels takes; 0 without alpha
};

using SelectWriter = PrxMacroblockWriter (*)(uint32_t pixelFormat, int32_t chromaFormat, bool hasAlpha);

/// Compares two writers at every number of rows, on either side of forbidden memory, at even and odd strides,
/// with and without leave to store past the caches.
inline void CompareWriterPair(PrxMacroblockWriter vector, PrxMacroblockWriter scalar,
                              const TestMacroblock& macroblock, WriterCall call) {
    ASSERT_NE(vector, nullptr);
    for (call.rows = 1; call.rows <= 16; ++call.rows) {
        for (const auto guard : {GuardedBytes::Guard::Behind, GuardedBytes::Guard::Before}) {
            for (const size_t gap : {0, 64, 3}) {
                call.guard = guard;
                call.gap = gap;
                call.setup.streams = false;
                const auto expected = RunWriter(scalar, macroblock, call);
                ASSERT_EQ(RunWriter(vector, macroblock, call), expected) << call.rows << " rows, gap " << gap;
                call.setup.streams = true;
                ASSERT_EQ(RunWriter(vector, macroblock, call), expected)
                    << call.rows << " rows, gap " << gap << ", streaming";
            }
        }
    }
}

/// Compares the vector and the scalar form of the writers of `formats`, for each instruction set, on random
/// and extreme samples of streams of `chromaFormats`.
inline void CompareWriters(std::span<const WriterFormat> formats, SelectWriter vector, SelectWriter scalar,
                           std::initializer_list<int32_t> chromaFormats = {prxChroma422, prxChroma444}) {
    std::mt19937 random = MakeRandom();
    ASSERT_FALSE(VectorTargets().empty());
    for (const int64_t target : VectorTargets()) {
        const ForcedTarget forced(target);
        for (const WriterFormat& format : formats) {
            WriterCall call = {.rowBytes = format.rowBytes, .alphaRowBytes = format.alphaRowBytes};
            call.alpha.resize(16 * format.alphaRowBytes);
            for (uint8_t& byte : call.alpha)
                byte = static_cast<uint8_t>(random());
            for (const int32_t chromaFormat : chromaFormats) {
                SCOPED_TRACE(std::string(hwy::TargetName(target)) + ", format " +
                             std::to_string(format.pixelFormat) + ", chroma " + std::to_string(chromaFormat));
                const bool hasAlpha = format.alphaRowBytes != 0;
                for (const auto& fill : SampleFills(random)) {
                    TestMacroblock macroblock(chromaFormat);
                    macroblock.Fill(fill);
                    CompareWriterPair(vector(format.pixelFormat, chromaFormat, hasAlpha),
                                      scalar(format.pixelFormat, chromaFormat, hasAlpha), macroblock, call);
                    if (testing::Test::HasFatalFailure()) return;
                }
            }
        }
    }
}

/// Checks that `select` chooses the vector form of the writers of `formats`, for each instruction set.
inline void ExpectVectorWritersChosen(std::span<const WriterFormat> formats, SelectWriter select,
                                      SelectWriter vector) {
    ASSERT_FALSE(VectorTargets().empty());
    for (const int64_t target : VectorTargets()) {
        const ForcedTarget forced(target);
        for (const WriterFormat& format : formats) {
            for (const int32_t chromaFormat : {prxChroma422, prxChroma444}) {
                const bool hasAlpha = format.alphaRowBytes != 0;
                const auto expected = vector(format.pixelFormat, chromaFormat, hasAlpha);
                EXPECT_NE(expected, nullptr);
                EXPECT_EQ(select(format.pixelFormat, chromaFormat, hasAlpha), expected);
            }
        }
    }
}
