// What the encoder offers and refuses on its two sides.

#include "standins/mediafoundation/EncoderDriver.h"

#include <gtest/gtest.h>

namespace {

class EncoderTypes : public testing::Test {
protected:
    EncoderDriver encoder_;
    IMFTransform& transform_ = encoder_.Transform();
};

TEST_F(EncoderTypes, OfTheOutputAreH264Alone) {
    EXPECT_EQ(OutputSubtypesOf(transform_), std::vector<GUID>{MFVideoFormat_H264});
}

TEST_F(EncoderTypes, OfTheInputAreUnknownBeforeTheOutputs) {
    IMFMediaType* type = nullptr;
    EXPECT_EQ(transform_.GetInputAvailableType(0, 0, &type), MF_E_TRANSFORM_TYPE_NOT_SET);
    EXPECT_EQ(encoder_.SetOutput({}), S_OK);
    EXPECT_EQ(InputSubtypesOf(transform_),
              (std::vector<GUID>{Subtype("NV12"), Subtype("YV12"), Subtype("IYUV"), Subtype("YUY2")}));
}

TEST_F(EncoderTypes, OfTheInputHaveSizeAndRateOfTheOutput) {
    ASSERT_EQ(encoder_.SetOutput({.width = 64, .height = 48, .frameRate = PairOf(30000, 1001)}), S_OK);
    const Ptr<IMFMediaType> type = InputTypeOf(transform_, MFVideoFormat_YUY2);
    EXPECT_EQ(PairOf(*type, MF_MT_FRAME_SIZE), PairOf(64, 48));
    EXPECT_EQ(PairOf(*type, MF_MT_FRAME_RATE), PairOf(30000, 1001));
}

TEST_F(EncoderTypes, AreBothNeededForSamples) {
    DWORD status = 0;
    EXPECT_EQ(encoder_.SetOutput({}), S_OK);
    EXPECT_EQ(transform_.GetInputStatus(0, &status), MF_E_TRANSFORM_TYPE_NOT_SET);
    EXPECT_EQ(encoder_.SetInput(MFVideoFormat_YUY2), S_OK);
    EXPECT_EQ(transform_.GetInputStatus(0, &status), S_OK);
    EXPECT_EQ(status, DWORD{MFT_INPUT_STATUS_ACCEPT_DATA});
}

TEST_F(EncoderTypes, OfSizesThatCannotBeEncodedAreRefused) {
    for (const auto& [width, height] : {std::pair{0u, 0u},
                                        {15u, 16u},
                                        {97u, 80u},
                                        {96u, 81u},
                                        {14u, 80u},
                                        {16384u, 16384u},
                                        {0xfffffffeu, 16u}})
        EXPECT_EQ(encoder_.SetOutput({.width = width, .height = height}), MF_E_INVALIDMEDIATYPE)
            << width << " by " << height;
    EXPECT_EQ(encoder_.SetOutput({.width = 16, .height = 16}), S_OK);
}

TEST_F(EncoderTypes, WithoutAFrameRateAreRefused) {
    EXPECT_EQ(encoder_.SetOutput({.frameRate = PairOf(25, 0)}), MF_E_INVALIDMEDIATYPE);
    EXPECT_EQ(encoder_.SetOutput({.frameRate = PairOf(0, 1)}), MF_E_INVALIDMEDIATYPE);
}

TEST_F(EncoderTypes, TakeAnyFrameRate) {
    for (const uint64_t rate : {PairOf(1, 0xffffffff), PairOf(0xffffffff, 1), PairOf(120, 1)}) {
        EXPECT_TRUE(encoder_.SetUp({.frameRate = rate}));
        EXPECT_EQ(encoder_.Encode(Scene(96, 80, 3)).size(), 3u);
    }
}

TEST_F(EncoderTypes, OfFieldsAreRefused) {
    for (const uint32_t structure :
         {MFVideoInterlace_FieldInterleavedUpperFirst, MFVideoInterlace_FieldInterleavedLowerFirst,
          MFVideoInterlace_MixedInterlaceOrProgressive})
        EXPECT_EQ(encoder_.SetOutput({.structure = structure}), MF_E_INVALIDMEDIATYPE);
}

TEST_F(EncoderTypes, OfOtherProfilesAreRefused) {
    for (const uint32_t profile : {0u, 88u, 110u, 122u, 244u, 0xffffffffu})
        EXPECT_EQ(encoder_.SetOutput({.profile = profile}), MF_E_INVALIDMEDIATYPE) << profile;
}

TEST_F(EncoderTypes, WithoutABitRateAreRefusedUnlessQualityCounts) {
    EXPECT_EQ(encoder_.SetOutput({.bitRate = 0}), MF_E_INVALIDMEDIATYPE);
    EXPECT_EQ(encoder_.SetProperty(rateControlMode, 3), S_OK);
    EXPECT_EQ(encoder_.SetOutput({.bitRate = 0}), S_OK);
}

TEST_F(EncoderTypes, OfBitRatesThatNoLevelHasAreRefused) {
    EXPECT_EQ(encoder_.SetOutput({.bitRate = 1000000000}), MF_E_INVALIDMEDIATYPE);
    EXPECT_EQ(encoder_.SetOutput({.bitRate = 0xffffffff}), MF_E_INVALIDMEDIATYPE);
}

TEST_F(EncoderTypes, OfAnotherSizeOnTheInputAreRefused) {
    ASSERT_EQ(encoder_.SetOutput({}), S_OK);
    const Ptr<IMFMediaType> type = InputTypeOf(transform_, MFVideoFormat_YUY2);
    type->SetUINT64(MF_MT_FRAME_SIZE, PairOf(80, 96));
    EXPECT_EQ(transform_.SetInputType(0, type.get(), 0), MF_E_INVALIDMEDIATYPE);
    type->DeleteItem(MF_MT_FRAME_SIZE);
    EXPECT_EQ(transform_.SetInputType(0, type.get(), 0), S_OK);
    type->SetUINT32(MF_MT_INTERLACE_MODE, MFVideoInterlace_FieldInterleavedUpperFirst);
    EXPECT_EQ(transform_.SetInputType(0, type.get(), 0), MF_E_INVALIDMEDIATYPE);
}

TEST_F(EncoderTypes, OfTheInputGoWithANewOutputType) {
    ASSERT_TRUE(encoder_.SetUp({}));
    EXPECT_EQ(encoder_.SetOutput({.width = 64, .height = 48}), S_OK);
    DWORD status = 0;
    EXPECT_EQ(transform_.GetInputStatus(0, &status), MF_E_TRANSFORM_TYPE_NOT_SET);
}

TEST_F(EncoderTypes, ThatAreRefusedLeaveTheOthers) {
    ASSERT_TRUE(encoder_.SetUp({}));
    EXPECT_EQ(encoder_.SetOutput({.profile = 110}), MF_E_INVALIDMEDIATYPE);
    EXPECT_EQ(encoder_.Encode(Scene(96, 80, 2)).size(), 2u);
}

TEST_F(EncoderTypes, GoWithThePropertiesThatTheModuleSets) {
    for (const GUID& property :
         {rateControlMode, commonQuality, frameFieldMode, keyFrameDistance, nominalRange, qualityVsSpeed})
        EXPECT_EQ(encoder_.SetProperty(property, 1), S_OK);
    EXPECT_EQ(encoder_.SetProperty(MF_MT_SUBTYPE, 1), E_NOTIMPL);
}

} // namespace
