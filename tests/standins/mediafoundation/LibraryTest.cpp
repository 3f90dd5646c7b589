// What the library finds and makes, and the life of its objects.

#include "standins/mediafoundation/MFLibrary.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

constexpr UINT32 asked = MFT_ENUM_FLAG_SYNCMFT | MFT_ENUM_FLAG_LOCALMFT | MFT_ENUM_FLAG_SORTANDFILTER;
constexpr MFT_REGISTER_TYPE_INFO h264 = {MFMediaType_Video, MFVideoFormat_H264};
constexpr MFT_REGISTER_TYPE_INFO yuy2 = {MFMediaType_Video, MFVideoFormat_YUY2};
constexpr auto notInitialized = static_cast<HRESULT>(0x800401F0);
constexpr auto changedMode = static_cast<HRESULT>(0x80010106);

TEST(Library, FindsOneDecoderOfH264) {
    EXPECT_EQ(FindTransforms(MFT_CATEGORY_VIDEO_DECODER, asked, &h264, &yuy2).size(), 1u);
}

TEST(Library, FindsOneEncoderOfH264) {
    EXPECT_EQ(FindTransforms(MFT_CATEGORY_VIDEO_ENCODER, asked, &yuy2, &h264).size(), 1u);
}

TEST(Library, TakesNullForAnyType) {
    EXPECT_EQ(FindTransforms(MFT_CATEGORY_VIDEO_DECODER, asked, nullptr, nullptr).size(), 1u);
    EXPECT_EQ(FindTransforms(MFT_CATEGORY_VIDEO_ENCODER, asked, nullptr, &h264).size(), 1u);
}

TEST(Library, FindsNothingForTheOtherDirection) {
    EXPECT_TRUE(FindTransforms(MFT_CATEGORY_VIDEO_DECODER, asked, &yuy2, &h264).empty());
    EXPECT_TRUE(FindTransforms(MFT_CATEGORY_VIDEO_ENCODER, asked, &h264, &yuy2).empty());
}

TEST(Library, FindsNothingForOtherTypes) {
    const MFT_REGISTER_TYPE_INFO hevc = {MFMediaType_Video, Subtype("HEVC")};
    const MFT_REGISTER_TYPE_INFO audio = {Subtype("auds"), MFVideoFormat_H264};
    const MFT_REGISTER_TYPE_INFO deep = {MFMediaType_Video, Subtype("P010")};
    EXPECT_TRUE(FindTransforms(MFT_CATEGORY_VIDEO_DECODER, asked, &hevc, &yuy2).empty());
    EXPECT_TRUE(FindTransforms(MFT_CATEGORY_VIDEO_DECODER, asked, &audio, &yuy2).empty());
    EXPECT_TRUE(FindTransforms(MFT_CATEGORY_VIDEO_DECODER, asked, &h264, &deep).empty());
}

TEST(Library, FindsNothingInOtherCategories) {
    EXPECT_TRUE(FindTransforms(Subtype("what"), asked, nullptr, nullptr).empty());
}

TEST(Library, FindsItsTransformsAmongTheSynchronousOnes) {
    const auto count = [](UINT32 flags) {
        return FindTransforms(MFT_CATEGORY_VIDEO_DECODER, flags, &h264, &yuy2).size();
    };
    EXPECT_EQ(count(0), 1u);
    EXPECT_EQ(count(MFT_ENUM_FLAG_SYNCMFT), 1u);
    EXPECT_EQ(count(MFT_ENUM_FLAG_HARDWARE), 0u);
    EXPECT_EQ(count(MFT_ENUM_FLAG_ASYNCMFT), 0u);
}

TEST(Library, RefusesNullForWhatItGives) {
    IMFActivate** list = nullptr;
    UINT32 count = 0;
    EXPECT_EQ(MF().EnumTransforms(MFT_CATEGORY_VIDEO_DECODER, asked, nullptr, nullptr, nullptr, &count),
              E_POINTER);
    EXPECT_EQ(MF().EnumTransforms(MFT_CATEGORY_VIDEO_DECODER, asked, nullptr, nullptr, &list, nullptr),
              E_POINTER);
    EXPECT_EQ(MF().CreateSample(nullptr), E_POINTER);
    EXPECT_EQ(MF().CreateMemoryBuffer(1, nullptr), E_POINTER);
    EXPECT_TRUE(IsLibraryUnused());
}

TEST(Library, GivesNoListIfNothingIsFound) {
    auto* list = reinterpret_cast<IMFActivate**>(8);
    UINT32 count = 7;
    EXPECT_EQ(MF().EnumTransforms(Subtype("what"), asked, nullptr, nullptr, &list, &count), S_OK);
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(count, 0u);
    MF().CoTaskMemFree(list);
}

TEST(Library, CountsStartsOfCom) {
    EXPECT_EQ(MF().CoInitializeEx(nullptr, 6), S_OK);
    EXPECT_EQ(MF().CoInitializeEx(nullptr, 6), S_FALSE);
    EXPECT_EQ(MF().CoInitializeEx(nullptr, 0), changedMode);
    MF().CoUninitialize();
    EXPECT_EQ(MF().CoInitializeEx(nullptr, 6), S_FALSE);
    MF().CoUninitialize();
    MF().CoUninitialize();
    EXPECT_EQ(MF().CoInitializeEx(nullptr, 0), S_OK);
    MF().CoUninitialize();
}

TEST(Library, StartsComForEachThreadAlone) {
    const ComThread com;
    HRESULT ofOther = E_FAIL;
    std::thread([&] {
        ofOther = MF().CoInitializeEx(nullptr, 6);
        MF().CoUninitialize();
    }).join();
    EXPECT_EQ(ofOther, S_OK);
}

TEST(Library, MakesNoTransformWhereComIsNotStarted) {
    const auto found = FindTransforms(MFT_CATEGORY_VIDEO_DECODER, asked, nullptr, nullptr);
    ASSERT_EQ(found.size(), 1u);
    void* transform = &transform;
    EXPECT_EQ(found.front()->ActivateObject(IID_IMFTransform, &transform), notInitialized);
    EXPECT_EQ(transform, nullptr);
    const ComThread com;
    ASSERT_EQ(found.front()->ActivateObject(IID_IMFTransform, &transform), S_OK);
    static_cast<IMFTransform*>(transform)->Release();
}

TEST(Library, MakesTransformsThatOutliveWhatMadeThem) {
    const ComThread com;
    Ptr<IMFTransform> transform = NewTransform(MFT_CATEGORY_VIDEO_ENCODER);
    DWORD inputs = 0;
    DWORD outputs = 0;
    EXPECT_EQ(transform->GetStreamCount(&inputs, &outputs), S_OK);
    EXPECT_EQ(inputs + outputs, 2u);
    EXPECT_FALSE(IsLibraryUnused());
    transform.reset();
    EXPECT_TRUE(IsLibraryUnused());
}

TEST(Library, MakesTransformsOfTheInterfaceThatIsAskedFor) {
    const ComThread com;
    const auto found = FindTransforms(MFT_CATEGORY_VIDEO_DECODER, asked, nullptr, nullptr);
    ASSERT_EQ(found.size(), 1u);
    void* object = nullptr;
    ASSERT_EQ(found.front()->ActivateObject(IID_ICodecAPI, &object), S_OK);
    static_cast<ICodecAPI*>(object)->Release();
    EXPECT_EQ(found.front()->ActivateObject(IID_IMFSample, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
}

} // namespace
