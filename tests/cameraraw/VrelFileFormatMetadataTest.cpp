// What of the metadata reaches an image.

#include "cameraraw/VrelFileFormat.h"

#include "cameraraw/FormatTestSupport.h"
#include "cameraraw/MetadataValues.h"

namespace {

class VrelFileFormatMetadata : public RawTest {
protected:
    /// The image of a frame of a clip that is opened now.
    const Image& LoadImage(uint32_t frame = 0) {
        EXPECT_TRUE(clip.Open());
        EXPECT_TRUE(clip.Load(frame, image));
        return *image;
    }
    /// Number of entries in the image's table.
    size_t CountEntries() const { return image->ImageInfo.FindKeyConst("Metadata").Keys().size(); }

    LoadedClip clip;
    ImagePtr image = MakeImage(4, 2);
};

TEST_F(VrelFileFormatMetadata, ValuesArriveAsText) {
    Script().clipMetadata = {{u"größe", TextValue(u"groß")},
                             {u"integer", NumberValue(uint32_t{0xFFFFFFFF})},
                             {u"float", NumberValue(-2.5F)}};
    LoadImage();
    EXPECT_EQ(MetadataText(*image, "größe"), "groß");
    EXPECT_EQ(MetadataText(*image, "integer"), "4294967295");
    EXPECT_EQ(MetadataText(*image, "float"), "-2.5");
}

TEST_F(VrelFileFormatMetadata, AFramesTimeCodeIsAmongThem) {
    Script().clipMetadata = {{u"a", TextValue(u"1")}};
    LoadImage(2);
    EXPECT_EQ(MetadataText(*image, "TimeCode"), "01:00:00:02");
}

TEST_F(VrelFileFormatMetadata, OfAKeyInClipAndFrameTheFramesTextEndsUpInTheTable) {
    Script().clipMetadata = {{u"a", TextValue(u"clip")}, {u"b", TextValue(u"clip")}};
    ASSERT_TRUE(clip.Open());
    // Only from here on: frame 0 tells the clip's metadata too.
    Script().frameMetadata = {{u"b", TextValue(u"frame")}};
    LoadImage();
    EXPECT_EQ(MetadataText(*image, "a"), "clip");
    EXPECT_EQ(MetadataText(*image, "b"), "frame");
}

TEST_F(VrelFileFormatMetadata, WithoutClipMetadataNothingIsWrittenNotEvenTheTimeCode) {
    ASSERT_TRUE(clip.Open());
    Script().frameMetadata = {{u"a", TextValue(u"1")}};
    LoadImage();
    EXPECT_FALSE(image->ImageInfo.IsTable());
}

TEST_F(VrelFileFormatMetadata, AnEmptyTextWritesNothingAndKeepsWhatIsThere) {
    Script().clipMetadata = {{u"a", TextValue(u"1")}};
    LoadImage();
    Script().frameMetadata = {{u"a", TextValue(u"")}, {u"b", TextValue(u"")}};
    LoadImage();
    EXPECT_EQ(MetadataText(*image, "a"), "1");
    EXPECT_EQ(MetadataText(*image, "b"), "-");
}

TEST_F(VrelFileFormatMetadata, AnEmptyTimeCodeIsNotWritten) {
    Script().timeCode = u"";
    Script().clipMetadata = {{u"a", TextValue(u"1")}};
    LoadImage();
    EXPECT_EQ(MetadataText(*image, "TimeCode"), "-");
    EXPECT_EQ(CountEntries(), 1U);
}

TEST_F(VrelFileFormatMetadata, AnArrayIsNotCarriedOver) {
    Script().clipMetadata = {{u"a", TextValue(u"1")}, {u"array", ArrayValue<int16_t>(VT_I2, {1, 2})}};
    LoadImage();
    EXPECT_EQ(MetadataText(*image, "array"), "-");
    EXPECT_EQ(CountEntries(), 2U);
}

TEST_F(VrelFileFormatMetadata, WhatElseTheImageHasStays) {
    image->ImageInfo.Set(ScriptVal_Table, nullptr);
    image->ImageInfo.FindKey("Other") = "1";
    ScriptVal& table = image->ImageInfo.FindKey("Metadata");
    table.Set(ScriptVal_Table, nullptr);
    table.FindKey("before") = "2";
    Script().clipMetadata = {{u"a", TextValue(u"1")}};
    LoadImage();
    EXPECT_STREQ(image->ImageInfo.FindKeyConst("Other").ToString(""), "1");
    EXPECT_EQ(MetadataText(*image, "before"), "2");
    EXPECT_EQ(MetadataText(*image, "a"), "1");
}

TEST_F(VrelFileFormatMetadata, AFrameThatFailsToDecodeHasThemAlready) {
    Script().clipMetadata = {{u"a", TextValue(u"1")}};
    ASSERT_TRUE(clip.Open());
    Script().decodeResults = {E_FAIL, E_FAIL};
    WordsOf([&] { EXPECT_FALSE(clip.Load(1, image)); });
    EXPECT_EQ(MetadataText(*image, "TimeCode"), "01:00:00:01");
}

TEST_F(VrelFileFormatMetadata, AFrameThatCantBeReadHasTheClips) {
    Script().clipMetadata = {{u"a", TextValue(u"1")}};
    ASSERT_TRUE(clip.Open());
    Script().hasFrame = false;
    EXPECT_EQ(WordsOf([&] { EXPECT_FALSE(clip.Load(1, image)); }), "Vrel NULL pointerVrel NULL pointer");
    EXPECT_EQ(MetadataText(*image, "a"), "1");
    EXPECT_EQ(MetadataText(*image, "TimeCode"), "-");
}

TEST_F(VrelFileFormatMetadata, WithoutAnImageNothingIsWritten) {
    Image* missing = nullptr;
    Script().clipMetadata = {{u"a", TextValue(u"1")}};
    ASSERT_TRUE(clip.Open());
    clip.format.ApplyMetadata(missing, {{"b", "2"}});
    EXPECT_EQ(missing, nullptr);
}

TEST_F(VrelFileFormatMetadata, AClosedFileHasForgottenThem) {
    Script().clipMetadata = {{u"a", TextValue(u"1")}};
    ASSERT_TRUE(clip.Open());
    clip.format.CloseFile();
    Image* target = image.get();
    clip.format.ApplyMetadata(target, {{"b", "2"}});
    EXPECT_FALSE(image->ImageInfo.IsTable());
}

} // namespace
