#include "prores/encoder/PrxRateTarget.h"

#include "prores/PrxFormats.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

/// First index and matrices of a codec type.
std::pair<uint32_t, int32_t> ProfileOf(uint32_t codecType) {
    const PrxProfile profile = PrxGetProfile(codecType);
    return {profile.startQuantIndex, profile.matrixIndex};
}

TEST(Profiles, StartCoarserTheLowerTheRate) {
    EXPECT_EQ(ProfileOf(prxCodecApco), std::pair(8U, 4));
    EXPECT_EQ(ProfileOf(prxCodecApcs), std::pair(3U, 3));
    EXPECT_EQ(ProfileOf(prxCodecApcn), std::pair(2U, 2));
    EXPECT_EQ(ProfileOf(prxCodecApch), std::pair(1U, 1));
    EXPECT_EQ(ProfileOf(prxCodecAp4h), std::pair(1U, 1));
    EXPECT_EQ(ProfileOf(prxCodecAp4x), std::pair(1U, 0));
}

TEST(Profiles, GiveAnUnknownCodecTheFinestMatrices) {
    EXPECT_EQ(ProfileOf(0x78787878), std::pair(1U, 0));
    EXPECT_EQ(ProfileOf(0), std::pair(1U, 0));
}

} // namespace
