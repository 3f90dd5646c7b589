// What PixelConvert asks of the host's colour conversion.

#include "PixelTestSupport.h"
#include "RecordedColorConvert.h"
#include "framework/CxAVTypes.h"
#include "host/Platform.h"
#include "pixel/PixelConvert.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

using Bytes = std::vector<uint8_t>;

using Tags = std::vector<std::pair<Tag, uint64_t>>;

Tags TagsOf(const RecordedColorConvert::Call& call) {
    Tags tags;
    for (const TagItem& item : call.tags)
        tags.emplace_back(item.tag, item.value);
    return tags;
}

TEST(PixelConvertHost, BlobToImageHandsTheHostItsTagsInOrderAndIgnoresItsFailure) {
    const ImagePtr owner = MakeImage(4, 2);
    Bytes blob(32);
    RecordedColorConvert::Forget();
    Image* image = owner.get();
    EXPECT_TRUE(PixelConvert::BlobToImage(blob.data(), 16, FourCC("uyvy"), image));
    const auto call = RecordedColorConvert::OnlyCall();
    ASSERT_TRUE(call.has_value());
    EXPECT_FALSE(call->isWrite);
    EXPECT_EQ(call->image, image);
    EXPECT_EQ(TagsOf(*call), (Tags{{0x60010000, reinterpret_cast<uintptr_t>(blob.data())},
                                   {0x10010002, 1},
                                   {0x10010003, 1280},
                                   {0x10010004, 16}}));
}

TEST(PixelConvertHost, ImageToBlobHandsTheHostItsTagsInOrderAndIgnoresItsFailure) {
    const ImagePtr owner = MakeImage(4, 2);
    Bytes blob(32);
    for (const bool flag : {false, true}) {
        Image* image = owner.get();
        uint8_t* data = blob.data();
        RecordedColorConvert::Forget();
        EXPECT_TRUE(PixelConvert::ImageToBlob(image, static_cast<int32_t>(FourCC("uyvy")), 16, data, flag));
        const auto call = RecordedColorConvert::OnlyCall();
        ASSERT_TRUE(call.has_value());
        EXPECT_TRUE(call->isWrite);
        EXPECT_EQ(call->image, image);
        EXPECT_EQ(TagsOf(*call), (Tags{{0x10010000, 4},
                                       {0x10010001, 2},
                                       {0x60010000, reinterpret_cast<uintptr_t>(blob.data())},
                                       {0x10010002, 1},
                                       {0x10010003, 1280},
                                       {0x10010007, flag ? 1u : 0u},
                                       {0x10010004, 16}}));
    }
}

TEST(PixelConvertHost, ImageToBlobHandsTheHostTheBufferThatItMakes) {
    const ImagePtr owner = MakeImage(4, 2);
    Image* image = owner.get();
    uint8_t* blob = nullptr;
    RecordedColorConvert::Forget();
    EXPECT_TRUE(PixelConvert::ImageToBlob(image, static_cast<int32_t>(FourCC("uyvy")), 16, blob, false));
    ASSERT_NE(blob, nullptr);
    const auto call = RecordedColorConvert::OnlyCall();
    ASSERT_TRUE(call.has_value());
    const std::pair<Tag, uint64_t> buffer = {0x60010000, reinterpret_cast<uintptr_t>(blob)};
    EXPECT_EQ(TagsOf(*call).at(2), buffer);
    EXPECT_EQ(buffer.second % 32, 0u);
    Platform::FreeMemAligned(blob);
}

/// Whether the host was called for this image, and called once.
bool IsHandedOn(const Image* image) {
    const auto call = RecordedColorConvert::OnlyCall();
    RecordedColorConvert::Forget();
    return call.has_value() && call->image == image;
}

TEST(PixelConvertHost, AnImageOfNoPixelsIsTheHostsToRefuse) {
    for (const ImagePtr& owner : {MakeImage(0, 4), MakeImage(4, 0)}) {
        Image* image = owner.get();
        Bytes blob(4 * 128);
        uint8_t* data = blob.data();
        RecordedColorConvert::Forget();
        EXPECT_TRUE(PixelConvert::ImageToBlob(image, static_cast<int32_t>(FourCC("v210")), 128, data, false));
        EXPECT_TRUE(IsHandedOn(image));
        EXPECT_TRUE(PixelConvert::BlobToImage(data, 128, FourCC("v210"), image));
        EXPECT_TRUE(IsHandedOn(image));
    }
}

} // namespace
