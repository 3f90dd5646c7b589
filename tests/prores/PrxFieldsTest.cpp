#include "prores/PrxFields.h"

#include <gtest/gtest.h>

#include <initializer_list>

namespace {

TEST(Fields, ProgressiveFrameIsOnePictureInEveryModeThatKeepsFrames) {
    for (const int32_t mode : {1, 2, 6, 7, 8, 9, 10, 11}) {
        PrxFieldPlans plans;
        ASSERT_EQ(PrxPlanFields(0, mode, 1081, &plans), 1);
        EXPECT_FALSE(plans[0].codedSecond);
        EXPECT_FALSE(plans[0].interleaved);
        EXPECT_EQ(plans[0].height, 1081);
    }
}

TEST(Fields, ProgressiveFrameHasNoSingleField) {
    for (const int32_t mode : {3, 4, 5}) {
        PrxFieldPlans plans;
        EXPECT_EQ(PrxPlanFields(0, mode, 1080, &plans), 0);
    }
}

TEST(Fields, UndefinedInterlaceModeIsRefusedInEveryMode) {
    for (int32_t mode = 1; mode <= 11; ++mode) {
        PrxFieldPlans plans;
        EXPECT_EQ(PrxPlanFields(3, mode, 1080, &plans), 0);
    }
}

TEST(Fields, FullSizeOf1081LinesIs541EvenAnd540OddLines) {
    PrxFieldPlans plans;
    ASSERT_EQ(PrxPlanFields(1, 1, 1081, &plans), 2);
    EXPECT_FALSE(plans[0].bottom);
    EXPECT_EQ(plans[0].height, 541);
    EXPECT_TRUE(plans[1].bottom);
    EXPECT_EQ(plans[1].height, 540);
}

TEST(Fields, BottomFieldFirstPutsTheFirstCodedPictureOnTheOddLines) {
    PrxFieldPlans plans;
    ASSERT_EQ(PrxPlanFields(2, 1, 1081, &plans), 2);
    EXPECT_TRUE(plans[0].bottom);
    EXPECT_FALSE(plans[0].codedSecond);
    EXPECT_EQ(plans[0].height, 540);
    EXPECT_FALSE(plans[1].bottom);
    EXPECT_TRUE(plans[1].codedSecond);
    EXPECT_EQ(plans[1].height, 541);
}

struct SingleField {
    int32_t mode;
    int32_t interlaceMode;
    bool codedSecond;
    int32_t height; // of 1081 lines
};

TEST(Fields, SingleFieldModesTakeTheFieldTheyName) {
    for (const SingleField& field : {SingleField{3, 1, false, 541}, SingleField{3, 2, true, 541},
                                     SingleField{4, 1, true, 540}, SingleField{4, 2, false, 540}}) {
        PrxFieldPlans plans;
        ASSERT_EQ(PrxPlanFields(field.interlaceMode, field.mode, 1081, &plans), 1);
        EXPECT_EQ(plans[0].codedSecond, field.codedSecond) << field.mode << " " << field.interlaceMode;
        EXPECT_EQ(plans[0].height, field.height) << field.mode << " " << field.interlaceMode;
        EXPECT_FALSE(plans[0].interleaved);
    }
}

TEST(Fields, OtherReducedModesTakeTheFirstCodedField) {
    for (const int32_t mode : {2, 5, 6, 7, 8, 9, 10, 11}) {
        for (const int32_t interlaceMode : {1, 2}) {
            PrxFieldPlans plans;
            ASSERT_EQ(PrxPlanFields(interlaceMode, mode, 1081, &plans), 1);
            EXPECT_FALSE(plans[0].codedSecond);
            EXPECT_EQ(plans[0].height, interlaceMode == 1 ? 541 : 540);
        }
    }
}

} // namespace
