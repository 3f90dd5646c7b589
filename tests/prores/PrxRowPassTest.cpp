#include "prores/PrxRowPass.h"

#include "prores/PrxFormats.h"
#include "prores/PrxRowPassRgb.h"
#include "prores/PrxRowPassSeam.h"
#include "prores/PrxRowPassV210.h"

#include <gtest/gtest.h>

namespace {

TEST(PrxRowPass, PacksV210OfEitherStream) {
    EXPECT_EQ(PrxSelectRowPass(prxFormatV210, prxChroma422, false), PrxSelectV210RowPass());
    EXPECT_EQ(PrxSelectRowPass(prxFormatV210, prxChroma444, true), PrxSelectV210RowPass());
}

TEST(PrxRowPass, FinishesY416AndR4flOfA422StreamOnly) {
    for (const uint32_t format : {prxFormatY416, prxFormatR4fl}) {
        EXPECT_NE(PrxSelectSeamPass(format), nullptr);
        EXPECT_EQ(PrxSelectRowPass(format, prxChroma422, false), PrxSelectSeamPass(format));
        EXPECT_EQ(PrxSelectRowPass(format, prxChroma422, true), PrxSelectSeamPass(format));
        EXPECT_EQ(PrxSelectRowPass(format, prxChroma444, false), nullptr);
    }
}

TEST(PrxRowPass, ConvertsA422StreamToRgbOnly) {
    for (const uint32_t format :
         {prxFormatArgb, prxFormatBgra, prxFormatB64a, prxFormatR10k, prxFormatR210, prxFormatN302}) {
        for (const bool hasAlpha : {false, true}) {
            EXPECT_NE(PrxSelectRgbRowPass(format, hasAlpha), nullptr);
            EXPECT_EQ(PrxSelectRowPass(format, prxChroma422, hasAlpha),
                      PrxSelectRgbRowPass(format, hasAlpha));
            EXPECT_EQ(PrxSelectRowPass(format, prxChroma444, hasAlpha), nullptr);
        }
    }
}

TEST(PrxRowPass, LeavesL302Alone) {
    EXPECT_EQ(PrxSelectRowPass(prxFormatL302, prxChroma422, false), nullptr);
}

TEST(PrxRowPass, LeavesFinishedFormatsAlone) {
    for (const uint32_t format : {prxFormat2vuy, prxFormatV216, prxFormatW216, prxFormatV408, prxFormatR408,
                                  prxFormatY408, prxFormatYuvs}) {
        EXPECT_EQ(PrxSelectRowPass(format, prxChroma422, false), nullptr);
        EXPECT_EQ(PrxSelectRowPass(format, prxChroma444, false), nullptr);
    }
}

} // namespace
