// The records of the codec interface keep their fields in order and start cleared.

#include "framework/CxAbstractAVCodec.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <type_traits>

namespace {

using Offsets = std::vector<size_t>;

/// Whether the fields follow one another, the first at the start of the record.
bool AreInOrder(const Offsets& offsets) {
    return offsets.front() == 0 &&
           std::adjacent_find(offsets.begin(), offsets.end(), std::greater_equal<>()) == offsets.end();
}

TEST(CxAVTypes, AFourCCHasItsFirstCharacterInTheMostSignificantByte) {
    EXPECT_EQ(FourCC("avc1"), 0x61766331u);
    EXPECT_EQ(FourCC("apch"), 0x61706368u);
    EXPECT_EQ(FourCC("\xff\x80\x01\x7f"), 0xff80017fu);
}

TEST(CxAVTypes, OperationsHaveTheirValues) {
    EXPECT_EQ(CxAV_ENCODE, 1u);
    EXPECT_EQ(CxAV_DECODE, 2u);
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<CxAVOperation>, uint32_t>));
}

TEST(CxAVTypes, ErrorsHaveTheirValues) {
    EXPECT_EQ(CxAV_OK, 0);
    EXPECT_EQ(CxAV_FAILED, -1);
    EXPECT_EQ(CxAV_NEED_MORE_DATA, -2);
    EXPECT_EQ(CxAV_READ_FAILED, -3);
    EXPECT_EQ(CxAV_INVALID_STATE, -5);
    EXPECT_EQ(CxAV_UNSUPPORTED, -6);
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<CxAVError>, int32_t>));
}

TEST(CxAVTypes, EncoderInfoKeepsItsFieldsInOrder) {
    using R = CxEncoderInfo;
    EXPECT_TRUE(
        AreInOrder({offsetof(R, fourCC), offsetof(R, codecId), offsetof(R, reserved), offsetof(R, name),
                    offsetof(R, description), offsetof(R, width), offsetof(R, height), offsetof(R, flags)}));
}

TEST(CxAVTypes, VideoSettingsKeepTheirFieldsInOrder) {
    using R = CxVideoSettings;
    EXPECT_TRUE(AreInOrder(
        {offsetof(R, width),         offsetof(R, height),  offsetof(R, flag0),     offsetof(R, value0),
         offsetof(R, frameDuration), offsetof(R, text0),   offsetof(R, text1),     offsetof(R, fourCC),
         offsetof(R, value1),        offsetof(R, value2),  offsetof(R, value3),    offsetof(R, fieldOrder),
         offsetof(R, flag1),         offsetof(R, value4),  offsetof(R, value5),    offsetof(R, bitRate),
         offsetof(R, gopSize),       offsetof(R, value6),  offsetof(R, value7),    offsetof(R, value8),
         offsetof(R, hasAlpha),      offsetof(R, value9),  offsetof(R, value10),   offsetof(R, value11),
         offsetof(R, timeScale),     offsetof(R, value12), offsetof(R, extraData), offsetof(R, quality)}));
}

TEST(CxAVTypes, VideoSettingsHaveTheirTypes) {
    using R = CxVideoSettings;
    EXPECT_TRUE((std::is_same_v<decltype(R::value3), uint64_t>));
    EXPECT_TRUE((std::is_same_v<decltype(R::value5), uint64_t>));
    EXPECT_TRUE((std::is_same_v<decltype(R::value9), uint16_t>));
    EXPECT_TRUE((std::is_same_v<decltype(R::value10), uint16_t>));
    EXPECT_TRUE((std::is_same_v<decltype(R::value11), uint16_t>));
    EXPECT_TRUE((std::is_same_v<decltype(R::extraData), std::vector<uint8_t>>));
}

TEST(CxAVTypes, EncodedTimingKeepsItsFieldsInOrder) {
    using R = CxEncodedTiming;
    EXPECT_TRUE(AreInOrder({offsetof(R, presentationTime), offsetof(R, decodeTime), offsetof(R, duration),
                            offsetof(R, timeBase), offsetof(R, isKeyFrame)}));
}

TEST(CxAVTypes, EncodedFrameKeepsItsFieldsInOrder) {
    using R = CxEncodedFrame;
    EXPECT_TRUE(AreInOrder({offsetof(R, codecTag), offsetof(R, data), offsetof(R, size),
                            offsetof(R, fieldOrder), offsetof(R, timing), offsetof(R, flags)}));
}

TEST(CxAVTypes, AlignedBufferKeepsItsFieldsInOrder) {
    using R = CxAlignedBuffer;
    EXPECT_TRUE(AreInOrder({offsetof(R, data), offsetof(R, capacity), offsetof(R, used)}));
}

TEST(CxAVTypes, EncoderInfoStartsCleared) {
    const CxEncoderInfo row;
    EXPECT_EQ(row.fourCC | row.codecId | row.reserved | row.width | row.height | row.flags, 0u);
    EXPECT_TRUE(row.name.empty() && row.description.empty());
}

TEST(CxAVTypes, EncodedFrameStartsCleared) {
    const CxEncodedFrame frame;
    EXPECT_EQ(frame.data, nullptr);
    EXPECT_EQ(frame.codecTag | frame.size | frame.fieldOrder | frame.flags | frame.timing.timeBase, 0u);
    EXPECT_EQ(frame.timing.presentationTime | frame.timing.decodeTime | frame.timing.duration, 0);
    EXPECT_FALSE(frame.timing.isKeyFrame);
}

TEST(CxAVTypes, VideoSettingsStartCleared) {
    const CxVideoSettings settings;
    EXPECT_EQ(settings.width | settings.height, 0);
    EXPECT_EQ(settings.bitRate | settings.gopSize | settings.timeScale | settings.quality, 0u);
    EXPECT_FALSE(settings.flag0 || settings.flag1 || settings.hasAlpha);
    EXPECT_TRUE(settings.text0.empty() && settings.text1.empty() && settings.extraData.empty());
}

} // namespace
