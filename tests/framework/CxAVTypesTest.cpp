// The records of the codec interface keep their fields in order and type, and start cleared.

#include "framework/CxAbstractAVCodec.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <type_traits>
#include <vector>

namespace {

// Callers that were compiled apart rely on the type of every field; a field of another one stops the build.

static_assert(std::is_same_v<decltype(CxEncoderInfo::fourCC), uint32_t>);
static_assert(std::is_same_v<decltype(CxEncoderInfo::codecId), uint32_t>);
static_assert(std::is_same_v<decltype(CxEncoderInfo::reserved), uint32_t>);
static_assert(std::is_same_v<decltype(CxEncoderInfo::name), std::string>);
static_assert(std::is_same_v<decltype(CxEncoderInfo::description), std::string>);
static_assert(std::is_same_v<decltype(CxEncoderInfo::width), uint32_t>);
static_assert(std::is_same_v<decltype(CxEncoderInfo::height), uint32_t>);
static_assert(std::is_same_v<decltype(CxEncoderInfo::flags), uint32_t>);

static_assert(std::is_same_v<decltype(CxVideoSettings::width), int32_t>);
static_assert(std::is_same_v<decltype(CxVideoSettings::height), int32_t>);
static_assert(std::is_same_v<decltype(CxVideoSettings::flag0), bool>);
static_assert(std::is_same_v<decltype(CxVideoSettings::value0), uint32_t>);
static_assert(std::is_same_v<decltype(CxVideoSettings::frameDuration), uint32_t>);
static_assert(std::is_same_v<decltype(CxVideoSettings::text0), std::string>);
static_assert(std::is_same_v<decltype(CxVideoSettings::text1), std::string>);
static_assert(std::is_same_v<decltype(CxVideoSettings::fourCC), uint32_t>);
static_assert(std::is_same_v<decltype(CxVideoSettings::value1), uint32_t>);
static_assert(std::is_same_v<decltype(CxVideoSettings::value2), uint32_t>);
static_assert(std::is_same_v<decltype(CxVideoSettings::value3), uint64_t>);
static_assert(std::is_same_v<decltype(CxVideoSettings::fieldOrder), uint32_t>);
static_assert(std::is_same_v<decltype(CxVideoSettings::flag1), bool>);
static_assert(std::is_same_v<decltype(CxVideoSettings::value4), uint32_t>);
static_assert(std::is_same_v<decltype(CxVideoSettings::value5), uint64_t>);
static_assert(std::is_same_v<decltype(CxVideoSettings::bitRate), uint32_t>);
static_assert(std::is_same_v<decltype(CxVideoSettings::gopSize), uint32_t>);
static_assert(std::is_same_v<decltype(CxVideoSettings::value6), uint32_t>);
static_assert(std::is_same_v<decltype(CxVideoSettings::value7), uint32_t>);
static_assert(std::is_same_v<decltype(CxVideoSettings::value8), uint32_t>);
static_assert(std::is_same_v<decltype(CxVideoSettings::hasAlpha), bool>);
static_assert(std::is_same_v<decltype(CxVideoSettings::value9), uint16_t>);
static_assert(std::is_same_v<decltype(CxVideoSettings::value10), uint16_t>);
static_assert(std::is_same_v<decltype(CxVideoSettings::value11), uint16_t>);
static_assert(std::is_same_v<decltype(CxVideoSettings::timeScale), uint32_t>);
static_assert(std::is_same_v<decltype(CxVideoSettings::value12), uint32_t>);
static_assert(std::is_same_v<decltype(CxVideoSettings::extraData), std::vector<uint8_t>>);
static_assert(std::is_same_v<decltype(CxVideoSettings::quality), uint32_t>);

static_assert(std::is_same_v<decltype(CxEncodedTiming::presentationTime), int64_t>);
static_assert(std::is_same_v<decltype(CxEncodedTiming::decodeTime), int64_t>);
static_assert(std::is_same_v<decltype(CxEncodedTiming::duration), int64_t>);
static_assert(std::is_same_v<decltype(CxEncodedTiming::timeBase), uint32_t>);
static_assert(std::is_same_v<decltype(CxEncodedTiming::isKeyFrame), bool>);

static_assert(std::is_same_v<decltype(CxEncodedFrame::codecTag), uint32_t>);
static_assert(std::is_same_v<decltype(CxEncodedFrame::data), uint8_t*>);
static_assert(std::is_same_v<decltype(CxEncodedFrame::size), uint32_t>);
static_assert(std::is_same_v<decltype(CxEncodedFrame::fieldOrder), uint32_t>);
static_assert(std::is_same_v<decltype(CxEncodedFrame::timing), CxEncodedTiming>);
static_assert(std::is_same_v<decltype(CxEncodedFrame::flags), uint32_t>);

static_assert(std::is_same_v<decltype(CxAlignedBuffer::data), void*>);
static_assert(std::is_same_v<decltype(CxAlignedBuffer::capacity), int32_t>);
static_assert(std::is_same_v<decltype(CxAlignedBuffer::used), int32_t>);

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
    const CxVideoSettings s;
    EXPECT_EQ(s.width | s.height, 0);
    EXPECT_EQ(s.frameDuration | s.fourCC | s.fieldOrder | s.bitRate | s.gopSize | s.timeScale | s.quality,
              0u);
    EXPECT_EQ(s.value0 | s.value1 | s.value2 | s.value4 | s.value6 | s.value7 | s.value8 | s.value12, 0u);
    EXPECT_EQ(s.value3 | s.value5, 0u);
    EXPECT_EQ(s.value9 | s.value10 | s.value11, 0);
    EXPECT_FALSE(s.flag0 || s.flag1 || s.hasAlpha);
    EXPECT_TRUE(s.text0.empty() && s.text1.empty() && s.extraData.empty());
}

} // namespace
