// The least row size of each code that the host converts is the one that the host itself goes by.

#include "framework/CxAVTypes.h"
#include "host/ColorConvert.h"
#include "pixel/PixelFormatTable.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

constexpr int32_t height = 2;
constexpr int32_t widest = 100;

/// Whether the host fills an image from rows of this size.
bool HostAccepts(Image* image, ColorLayout layout, uint64_t rowBytes) {
    // Luma and as many rows of chroma, for the layout that has two planes.
    std::vector<uint8_t> blob(2 * height * rowBytes);
    const TagItem items[] = {
        {ColorTag_Buffer, TagItem::FromPtr(blob.data())},
        {ColorTag_Layout, TagItem::FromInt(layout)},
        {ColorTag_RowBytes, TagItem::FromInt(static_cast<int64_t>(rowBytes))},
        {0, 0},
    };
    return CxYUV2RGBTagList(image, TagList(items, false));
}

void ExpectHostAgrees(const PixelFormat& format, ColorLayout layout) {
    for (int32_t width = 1; width <= widest; ++width) {
        const ImagePtr image = MakeImage(width, height);
        const uint64_t least = format.least.Bytes(static_cast<uint32_t>(width));
        EXPECT_TRUE(HostAccepts(image.get(), layout, least)) << "width " << width;
        EXPECT_FALSE(HostAccepts(image.get(), layout, least - 1)) << "width " << width;
    }
}

TEST(PixelFormatTableHost, TheLeastRowSizeOfEachCodeIsTheLeastThatTheHostAccepts) {
    int codes = 0;
    for (const PixelFormat& format : pixel_formats::all) {
        const bool isRead = format.read.kind == PixelRoute::Kind::Host;
        if (!isRead && format.write.kind != PixelRoute::Kind::Host) continue;
        SCOPED_TRACE("code " + std::to_string(format.fourCC));
        ExpectHostAgrees(format, isRead ? format.read.layout : format.write.layout);
        ++codes;
    }
    EXPECT_EQ(codes, 12);
}

} // namespace
