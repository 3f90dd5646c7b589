// The edition of the host that offers no ProRes encoders. A program of its own, because the back-ends
// register once, while the program loads.

#include "framework/CxAVCodecRegistry.h"
#include "framework/MemoryTrackSource.h"
#include "host/Edition.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

namespace {

/// Runs ahead of every ordinary initialiser, and so before the back-ends register.
__attribute__((constructor(101))) void ChooseEdition() { g_IsPalisade = true; }

TEST(Palisade, ListsNoProResEncoder) {
    std::vector<CxEncoderInfo> rows;
    EXPECT_TRUE(CxAVCodecRegistry::ListAllCodecs(true, rows));
    EXPECT_TRUE(
        std::ranges::none_of(rows, [](const CxEncoderInfo& row) { return row.name.starts_with("Apple"); }));
}

TEST(Palisade, MakesNoProResEncoder) {
    EXPECT_EQ(CxAVCodecRegistry::CreateEncoder("Apple ProRes 422"), nullptr);
    EXPECT_NE(std::unique_ptr<CxAbstractAVCodec>(CxAVCodecRegistry::CreateEncoder("Uncompressed RGB 8-bit")),
              nullptr);
}

TEST(Palisade, StillDecodesProRes) {
    EXPECT_TRUE(CxAVCodecRegistry::CanCreateDecoder(FourCC("apch")));
    MemoryTrackSource source(FourCC("apch"), 64, 32, {});
    EXPECT_NE(std::unique_ptr<CxAbstractAVCodec>(CxAVCodecRegistry::CreateDecoder(&source)), nullptr);
}

} // namespace
