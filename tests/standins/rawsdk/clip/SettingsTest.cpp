#include "rawsdk/clip/Settings.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using namespace rawsdk;

TEST(Settings, OfClipsGoThereAndBack) {
    ClipSettings settings;
    settings.contrast = 0.5f;
    settings.videoBlackLevel = 7;
    settings.gamma = gammaLinear;
    settings.lutMode = lutSidecar;
    ByteWriter writer;
    WriteSettings(settings, writer);
    ByteReader reader(writer.Bytes());
    const ClipSettings read = ReadClipSettings(reader);
    EXPECT_EQ(read.contrast, 0.5f);
    EXPECT_EQ(read.videoBlackLevel, 7);
    EXPECT_EQ(read.gamma, gammaLinear);
    EXPECT_EQ(read.lutMode, lutSidecar);
    EXPECT_EQ(read.gamut, "Ravenlight Design");
    EXPECT_TRUE(reader.IsSound());
    EXPECT_EQ(reader.Left(), 0u);
}

TEST(Settings, OfFramesGoThereAndBack) {
    ByteWriter writer;
    WriteSettings(FrameSettings{3200, -12, 1.5f, 800}, writer);
    ByteReader reader(writer.Bytes());
    const FrameSettings read = ReadFrameSettings(reader);
    EXPECT_EQ(read.kelvin, 3200u);
    EXPECT_EQ(read.tint, -12);
    EXPECT_EQ(read.exposure, 1.5f);
    EXPECT_EQ(read.iso, 800);
}

TEST(Settings, HaveEveryAttributeOnce) {
    std::set<uint32_t> codes;
    for (const auto& attribute : ClipAttributes())
        codes.insert(attribute.code);
    EXPECT_EQ(codes.size(), 14u);
    EXPECT_EQ(ClipAttributes().size(), 14u);
    for (const auto& attribute : FrameAttributes())
        codes.insert(attribute.code);
    EXPECT_EQ(codes.size(), 18u);
    EXPECT_EQ(FrameAttributes().size(), 4u);
}

TEST(Settings, AreFoundByTheirCodes) {
    const Attribute<ClipSettings>* const gain = FindAttribute(ClipAttributes(), rawGain);
    ASSERT_NE(gain, nullptr);
    EXPECT_EQ(std::get<float ClipSettings::*>(gain->member), &ClipSettings::gain);
    EXPECT_EQ(FindAttribute(ClipAttributes(), rawIso), nullptr);
}

} // namespace
