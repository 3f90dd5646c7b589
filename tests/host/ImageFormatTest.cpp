#include "host/ImageFormat.h"

#include "FakeFormat.h"
#include "host/CorvexDoc.h"

#include <gtest/gtest.h>

#include <bit>
#include <limits>

namespace {

using Calls = std::vector<std::string>;

class ImageFormatObject : public testing::Test {
protected:
    ImageFormatObject() { FakeFormat::calls.clear(); }
    ~ImageFormatObject() override { Image::Free(image); }

    TagList tags;
    Image* image = nullptr;
    FakeFormat format = FakeFormat(nullptr, ScriptVal(), TagList());
    ImageFormat& base =
        format; ///< operations are called through this one, from another file than their bodies
};

TEST_F(ImageFormatObject, OperationsBeforeTheToolsControlsReachTheDerivedClass) {
    base.ObjectSize();
    base.SetAttrsTagList(tags);
    base.CheckOptions();
    base.OpenFile("path", tags);
    base.LoadHeaderTagList(CxID("other", true), "path", tags);
    base.SaveHeaderTagList(CxID(), nullptr, nullptr, tags);
    base.LoadDataTagList(CxID(), 0.0, 1.0, tags);
    base.SaveDataTagList(CxID(), nullptr, 0.0, tags);
    base.CloseFile();
    base.GetPreviews(nullptr, 1, nullptr);
    base.GetNumStreams(CxID());
    EXPECT_EQ(FakeFormat::calls,
              Calls({"ObjectSize", "SetAttrsTagList", "CheckOptions", "OpenFile", "LoadHeaderTagList(CxID)",
                     "SaveHeaderTagList(CxID)", "LoadDataTagList", "SaveDataTagList", "CloseFile",
                     "GetPreviews", "GetNumStreams"}));
}

TEST_F(ImageFormatObject, OperationsForTheToolsControlsReachTheDerivedClass) {
    base.AddLoadInputs(nullptr);
    base.NotifyChangedLoad(nullptr, nullptr, nullptr, 0.0);
    base.SetupLoad(nullptr, nullptr);
    base.CleanupLoad(nullptr);
    base.AddSaveInputs(nullptr);
    base.NotifyChangedSave(nullptr, nullptr, nullptr, 0.0);
    base.SetupSave(nullptr, nullptr);
    base.CleanupSave(nullptr);
    EXPECT_EQ(FakeFormat::calls, Calls({"AddLoadInputs", "NotifyChangedLoad", "SetupLoad", "CleanupLoad",
                                        "AddSaveInputs", "NotifyChangedSave", "SetupSave", "CleanupSave"}));
}

TEST_F(ImageFormatObject, OperationsOnPicturesReachTheDerivedClass) {
    base.CheckSizeOptions();
    base.LoadHeaderTagList("path", tags);
    base.LoadFrameTagList(0, image, tags);
    base.SaveHeaderTagList("path", image, tags);
    base.SaveHeaderTagList(static_cast<IOClass*>(nullptr), image, tags);
    base.SaveFrameTagList(0, image, tags);
    base.PredictFileSize(image);
    EXPECT_EQ(FakeFormat::calls, Calls({"CheckSizeOptions", "LoadHeaderTagList(path)", "LoadFrameTagList",
                                        "SaveHeaderTagList(path)", "SaveHeaderTagList(IOClass)",
                                        "SaveFrameTagList", "PredictFileSize"}));
}

/// Slot of a virtual operation in the table of its class. In the Itanium C++ ABI (2.3) the first word of a
/// pointer to a virtual member function is the slot's offset in bytes, with a low bit set on some targets.
template <typename Member>
size_t Slot(Member member) {
    struct Words {
        size_t pointer;
        size_t adjustment;
    };
    static_assert(sizeof(Member) == sizeof(Words));
    return std::bit_cast<Words>(member).pointer / sizeof(void*);
}

TEST(ImageFormatSlots, TheOperationsStandInTheOrderOfTheInterface) {
    using F = ImageFormat;
    const size_t slots[] = {
        Slot(&F::SetAttrsTagList),
        Slot(&F::CopyAttr),
        Slot(&F::CheckOptions),
        Slot(&F::OpenFile),
        Slot<bool (F::*)(const CxID&, const char*, TagList&)>(&F::LoadHeaderTagList),
        Slot<bool (F::*)(CxID, IOClass*, Parameter*, TagList&)>(&F::SaveHeaderTagList),
        Slot(&F::LoadDataTagList),
        Slot(&F::SaveDataTagList),
        Slot(&F::CloseFile),
        Slot(&F::GetPreviews),
        Slot(&F::GetNumStreams),
        Slot(&F::AddLoadInputs),
        Slot(&F::NotifyChangedLoad),
        Slot(&F::SetupLoad),
        Slot(&F::CleanupLoad),
        Slot(&F::AddSaveInputs),
        Slot(&F::NotifyChangedSave),
        Slot(&F::SetupSave),
        Slot(&F::CleanupSave),
        Slot(&F::CheckSizeOptions),
        Slot<bool (F::*)(const char*, TagList&)>(&F::LoadHeaderTagList),
        Slot(&F::LoadFrameTagList),
        Slot<bool (F::*)(const char*, Image*, TagList&)>(&F::SaveHeaderTagList),
        Slot<bool (F::*)(IOClass*, Image*, TagList&)>(&F::SaveHeaderTagList),
        Slot(&F::SaveFrameTagList),
        Slot(&F::PredictFileSize),
    };
    for (size_t i = 1; i < std::size(slots); ++i)
        EXPECT_EQ(slots[i], slots[0] + i) << i;
    EXPECT_LT(Slot(&F::ObjectSize), slots[0]);
}

TEST_F(ImageFormatObject, WhatAFormatDoesNotFillRefuses) {
    EXPECT_FALSE(base.OpenFile("path", tags));
    EXPECT_FALSE(base.LoadHeaderTagList("path", tags));
    EXPECT_FALSE(base.SaveHeaderTagList("path", nullptr, tags));
    EXPECT_FALSE(base.SaveHeaderTagList(static_cast<IOClass*>(nullptr), nullptr, tags));
    EXPECT_FALSE(base.SaveHeaderTagList(CxID(), nullptr, nullptr, tags));
    EXPECT_FALSE(base.SaveFrameTagList(0, nullptr, tags));
    EXPECT_FALSE(base.LoadDataTagList(CxID(), 0, 0, tags));
    EXPECT_FALSE(base.SaveDataTagList(CxID(), nullptr, 0, tags));
    EXPECT_FALSE(base.GetPreviews(nullptr, 0, nullptr));
    EXPECT_EQ(base.GetNumStreams(CxID()), 0);
    EXPECT_EQ(base.PredictFileSize(nullptr), 0);
}

TEST_F(ImageFormatObject, OptionsAreInOrderAndAClosedFormatCloses) {
    EXPECT_TRUE(base.CheckOptions());
    EXPECT_TRUE(base.CheckSizeOptions());
    EXPECT_TRUE(base.CloseFile());
}

TEST_F(ImageFormatObject, AHeaderOfPicturesGoesToTheFormWithoutADataType) {
    base.LoadHeaderTagList(CxID(CLSID_DataType_Image, true), "path", tags);
    EXPECT_EQ(FakeFormat::calls, Calls({"LoadHeaderTagList(CxID)", "LoadHeaderTagList(path)"}));
}

TEST_F(ImageFormatObject, AHeaderOfAnotherDataTypeIsRefused) {
    EXPECT_FALSE(base.LoadHeaderTagList(CxID("DataType_Sound", true), "path", tags));
    EXPECT_EQ(FakeFormat::calls, Calls({"LoadHeaderTagList(CxID)"}));
}

TEST_F(ImageFormatObject, LoadFrameMakesA16BitImageOfTheFormatsSize) {
    format.width = 5;
    format.height = 3;
    ASSERT_TRUE(base.LoadFrameTagList(0, image, tags));
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->Width, 5);
    EXPECT_EQ(image->Height, 3);
    EXPECT_EQ(image->DataFormat->Kind, ImageData_RGBA16);
}

TEST_F(ImageFormatObject, LoadFrameMakesAnImageOfTheKindInTheTags) {
    format.width = format.height = 2;
    tags.Set(FormatTag_DataKind, ImageData_RGBAFloat, false);
    ASSERT_TRUE(base.LoadFrameTagList(0, image, tags));
    EXPECT_EQ(image->DataFormat->Kind, ImageData_RGBAFloat);
}

TEST_F(ImageFormatObject, LoadFrameLeavesAnImageThatIsThere) {
    format.width = format.height = 100;
    image = Image::Allocate(7, 7, ImageData_RGBA8);
    Image* const given = image;
    EXPECT_TRUE(base.LoadFrameTagList(0, image, tags));
    EXPECT_EQ(image, given);
    EXPECT_EQ(image->Width, 7);
}

TEST_F(ImageFormatObject, LoadFrameFailsWithoutASizeOrWithAnUnknownKind) {
    EXPECT_FALSE(base.LoadFrameTagList(0, image, tags));
    format.width = 4;
    format.height = -4;
    EXPECT_FALSE(base.LoadFrameTagList(0, image, tags));
    format.height = 4;
    tags.Set(FormatTag_DataKind, 1, false);
    EXPECT_FALSE(base.LoadFrameTagList(0, image, tags));
    EXPECT_EQ(image, nullptr);
}

TEST_F(ImageFormatObject, LoadFrameRefusesAKindWhoseLow32BitsAloneAreOne) {
    format.width = format.height = 2;
    tags.Set(FormatTag_DataKind, (int64_t{1} << 32) + ImageData_RGBA16, false);
    EXPECT_FALSE(base.LoadFrameTagList(0, image, tags));
    EXPECT_EQ(image, nullptr);
    tags.Set(FormatTag_DataKind, (int64_t{-1} << 32) + ImageData_RGBA16, false);
    EXPECT_FALSE(base.LoadFrameTagList(0, image, tags));
    EXPECT_EQ(image, nullptr);
}

TEST_F(ImageFormatObject, AttributesAnswerWithTheSize) {
    format.width = 1920;
    format.height = 1080;
    EXPECT_EQ(base.GetAttr(FormatTag_Width, 0), 1920);
    EXPECT_EQ(base.GetAttr(FormatTag_Height, 0), 1080);
}

TEST_F(ImageFormatObject, AttributesOfTheDerivedClassAnswerFirst) {
    EXPECT_EQ(base.GetAttr(Tag{0x200000c8}, 0.0), 24.0);
}

TEST_F(ImageFormatObject, UnknownAttributesGiveTheDefaultAndTouchNothing) {
    int32_t value = 99;
    EXPECT_FALSE(base.CopyAttr(0x100000cc, &value));
    EXPECT_EQ(value, 99);
    EXPECT_EQ(base.GetAttr(Tag{0x100000cc}, -3), -3);
    EXPECT_EQ(base.GetAttr(Tag{0x200000cc}, -3.5), -3.5);
}

TEST_F(ImageFormatObject, AnAttributeAskedAsAnotherKindGivesTheDefault) {
    format.width = 1920;
    EXPECT_EQ(base.GetAttr(FormatTag_Width, -1.0), -1.0);
    EXPECT_EQ(base.GetAttr(Tag{0x200000c8}, -1), -1);
}

TEST_F(ImageFormatObject, SettingAttributesTellsWhetherOneWasKnown) {
    tags.Set(0x100000cc, 5, false);
    EXPECT_FALSE(base.SetAttrsTagList(tags));
    tags.Set(FormatTag_Width, 640, false);
    EXPECT_TRUE(base.SetAttrsTagList(tags));
    EXPECT_EQ(format.width, 640);
    EXPECT_EQ(format.height, 0);
}

TEST_F(ImageFormatObject, TheObjectSizeIsThatOfTheDerivedClass) {
    EXPECT_EQ(base.ObjectSize(), sizeof(FakeFormat));
    EXPECT_EQ(format.ImageFormat::ObjectSize(), sizeof(ImageFormat));
}

TEST_F(ImageFormatObject, TheDocumentIsTheHosts) { EXPECT_EQ(base.GetDoc(), CorvexDoc::Get()); }

TEST(ImageFormatChain, TheClassesDeriveFromEachOther) {
    EXPECT_TRUE((std::is_base_of_v<MediaFormat, ImageFormat>));
    EXPECT_TRUE((std::is_base_of_v<Object, MediaFormat>));
    EXPECT_TRUE((std::is_base_of_v<RefObject, Object>));
    EXPECT_TRUE((std::is_base_of_v<_Object, RefObject>));
    EXPECT_TRUE((std::is_base_of_v<ScriptObject, _Object>));
    EXPECT_TRUE((std::is_base_of_v<LuaClass, ScriptObject>));
    EXPECT_TRUE((std::is_base_of_v<Reuser, LuaClass>));
}

TEST(ImageFormatChain, AnObjectIsDestroyedThroughAnyOfItsBases) {
    FakeFormat::calls.clear();
    Reuser* const object = new FakeFormat(nullptr, ScriptVal(), TagList());
    delete object;
    EXPECT_EQ(FakeFormat::calls, Calls({"destructor"}));
}

} // namespace
