// Walks through the metadata of clips and frames.

#include "cameraraw/IOMetadataMap.h"

#include "cameraraw/MetadataValues.h"
#include "cameraraw/RawTestSupport.h"
#include "cameraraw/VrelDecoderContext.h"

namespace {

using FlatMap = QMap<QString, QVariant>;

class ReadIteratorTest : public RawTest {
protected:
    /// The metadata of a clip that is opened now.
    FlatMap ClipMetadata() {
        EXPECT_TRUE(context.OpenClip("clip.vrel"));
        FlatMap metadata;
        context.GetClipMetadata(metadata);
        return metadata;
    }

    VrelDecoderContext context;
};

TEST_F(ReadIteratorTest, GathersEveryEntry) {
    Script().clipMetadata = {{u"camera", TextValue(u"A")}, {u"größe", NumberValue(uint16_t{2})}};
    EXPECT_EQ(ClipMetadata(), (FlatMap{{"camera", "A"}, {QString::fromUtf8("größe"), 2LL}}));
}

TEST_F(ReadIteratorTest, AnIteratorWithoutEntriesGivesNone) { EXPECT_TRUE(ClipMetadata().isEmpty()); }

TEST_F(ReadIteratorTest, TheClipsMetadataAreThoseOfTheClipAndOfFrame0) {
    Script().clipMetadata = {{u"a", TextValue(u"clip")}, {u"b", TextValue(u"clip")}};
    Script().frameMetadata = {{u"b", TextValue(u"frame")}, {u"c", TextValue(u"frame")}};
    EXPECT_EQ(ClipMetadata(), (FlatMap{{"a", "clip"}, {"b", "frame"}, {"c", "frame"}}));
}

TEST_F(ReadIteratorTest, AKeyThatOccursTwiceHasItsLastValue) {
    Script().clipMetadata = {{u"a", TextValue(u"1")}, {u"a", TextValue(u"2")}};
    EXPECT_EQ(ClipMetadata(), (FlatMap{{"a", "2"}}));
}

TEST_F(ReadIteratorTest, AValueOfAnUnknownTypeIsSkippedSilentlyAndTheRestGoesOn) {
    const auto fillUnknown = [](VARIANT& value) { value.vt = VT_R8; };
    Script().clipMetadata = {{u"a", fillUnknown}, {u"b", TextValue(u"2")}};
    EXPECT_EQ(WordsOf([&] { EXPECT_EQ(ClipMetadata(), (FlatMap{{"b", "2"}})); }), "");
}

TEST_F(ReadIteratorTest, TheTableOfALutIsNotEvenAskedFor) {
    Script().clipMetadata = {
        {u"lut_data", TextValue(u"table")}, {u"lut_data2", TextValue(u"1")}, {u"LUT_DATA", TextValue(u"2")}};
    EXPECT_EQ(ClipMetadata(), (FlatMap{{"lut_data2", "1"}, {"LUT_DATA", "2"}}));
    EXPECT_EQ(CallsOf("RawMetadataIterator.GetData"), 2);
}

TEST_F(ReadIteratorTest, AValueThatIsRefusedIsSkippedAndNotAskedForAgain) {
    Script().clipMetadata = {{u"a", TextValue(u"1")}, {u"b", TextValue(u"2")}};
    Script().failing["RawMetadataIterator.GetData"] = 1;
    EXPECT_EQ(WordsOf([&] { EXPECT_EQ(ClipMetadata(), (FlatMap{{"b", "2"}})); }), "");
    EXPECT_EQ(CallsOf("RawMetadataIterator.GetData"), 2);
}

TEST_F(ReadIteratorTest, AKeyThatIsRefusedEndsItWithWhatWasGathered) {
    Script().clipMetadata = {{u"a", TextValue(u"1")}};
    Script().failing["RawMetadataIterator.GetKey"] = 1;
    EXPECT_EQ(WordsOf([&] { EXPECT_TRUE(ClipMetadata().isEmpty()); }), "");
    EXPECT_EQ(CallsOf("RawMetadataIterator.Next"), 0);
}

TEST_F(ReadIteratorTest, AStepThatIsRefusedEndsItWithWhatWasGathered) {
    Script().clipMetadata = {{u"a", TextValue(u"1")}, {u"b", TextValue(u"2")}};
    Script().failing["RawMetadataIterator.Next"] = 1;
    EXPECT_EQ(ClipMetadata(), (FlatMap{{"a", "1"}}));
}

TEST_F(ReadIteratorTest, AClipWithoutAnIteratorHasTheFramesMetadata) {
    Script().clipMetadata = {{u"a", TextValue(u"1")}};
    Script().frameMetadata = {{u"b", TextValue(u"2")}};
    Script().givingNull = {"RawClip.GetMetadataIterator"};
    EXPECT_EQ(ClipMetadata(), (FlatMap{{"b", "2"}}));
    Script().givingNull = {};
    Script().failing["RawClip.GetMetadataIterator"] = 1;
    EXPECT_EQ(WordsOf([&] { EXPECT_EQ(ClipMetadata(), (FlatMap{{"b", "2"}})); }), "");
}

TEST_F(ReadIteratorTest, AKeyWithoutAUtf8FormIsKeptWithAReplacementCharacter) {
    Script().clipMetadata = {{u"k\xDC00", TextValue(u"1")}};
    EXPECT_EQ(ClipMetadata(), (FlatMap{{QString::fromUtf8("k\uFFFD"), "1"}}));
}

TEST_F(ReadIteratorTest, AnArrayOfASingleElementLeaksNothingAndTheRestGoesOn) {
    Script().clipMetadata = {{u"a", ArrayValue<float>(VT_R4, {1.0F})}, {u"b", TextValue(u"2")}};
    EXPECT_EQ(ClipMetadata(), (FlatMap{{"b", "2"}}));
}

TEST_F(ReadIteratorTest, AFramesMetadataAreItsOwnWithItsTimeCode) {
    Script().clipMetadata = {{u"a", TextValue(u"1")}};
    Script().frameMetadata = {{u"b", TextValue(u"2")}, {u"TimeCode", TextValue(u"other")}};
    ClipMetadata();
    FlatMap frame = {{"old", 1}};
    context.GetFrameMetadata(2, frame);
    EXPECT_EQ(frame, (FlatMap{{"TimeCode", "01:00:00:02"}, {"b", "2"}}));
}

TEST_F(ReadIteratorTest, AFrameWithoutMetadataHasItsTimeCode) {
    ClipMetadata();
    FlatMap frame;
    for (const auto& refuse : std::vector<std::function<void()>>{
             [] {}, [] { Script().givingNull = {"RawFrame.GetMetadataIterator"}; },
             [] { Script().failing["RawFrame.GetMetadataIterator"] = 1; }}) {
        refuse();
        context.GetFrameMetadata(1, frame);
        EXPECT_EQ(frame, (FlatMap{{"TimeCode", "01:00:00:01"}}));
    }
}

TEST_F(ReadIteratorTest, ATimeCodeThatIsAbsentOrRefusedIsEmpty) {
    ClipMetadata();
    FlatMap frame;
    Script().failing["RawClip.GetTimecode 1"] = 2;
    EXPECT_EQ(WordsOf([&] { context.GetFrameMetadata(1, frame); }), "Vrel HRESULT = 0x80040002");
    EXPECT_EQ(frame, (FlatMap{{"TimeCode", ""}}));
    Script().timeCode = u"";
    context.GetFrameMetadata(1, frame);
    EXPECT_EQ(frame, (FlatMap{{"TimeCode", ""}}));
}

TEST_F(ReadIteratorTest, WithoutAFrameTheMetadataAreEmptyAndItIsReported) {
    FlatMap frame = {{"old", 1}};
    EXPECT_EQ(WordsOf([&] { context.GetFrameMetadata(0, frame); }), "Vrel NULL pointerVrel NULL pointer");
    EXPECT_TRUE(frame.isEmpty());
    ClipMetadata();
    frame = {{"old", 1}};
    Script().hasFrame = false;
    EXPECT_EQ(WordsOf([&] { context.GetFrameMetadata(0, frame); }), "Vrel NULL pointer");
    EXPECT_TRUE(frame.isEmpty());
}

} // namespace
