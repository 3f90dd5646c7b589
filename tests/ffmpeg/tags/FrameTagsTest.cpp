// What the host's colour conversion is asked for a frame. This program has a conversion in its place that
// fails and remembers.

#include "ffmpeg/FrameTestSupport.h"
#include "pixel/RecordedColorConvert.h"

#include <gtest/gtest.h>

#include <utility>

using namespace CxFFMPEG;

namespace {

using Tags = std::vector<std::pair<Tag, uint64_t>>;

uint64_t Address(const void* pointer) { return reinterpret_cast<uintptr_t>(pointer); }

/// The tags of the one call that a frame leads to, whose result is the frame's.
Tags TagsOf(const AVFrame& frame, bool isFullRange) {
    const ImagePtr image = MakeImage(frame.width, frame.height);
    RecordedColorConvert::Forget();
    EXPECT_FALSE(FrameConverter().ToImage(frame, isFullRange, *image));
    Tags tags;
    const auto call = RecordedColorConvert::OnlyCall();
    if (!call) return tags;
    EXPECT_EQ(call->image, image.get());
    for (const TagItem& item : call->tags)
        tags.emplace_back(item.tag, item.value);
    return tags;
}

/// The value of a tag, or -1.
int64_t ValueOf(const Tags& tags, Tag tag) {
    for (const auto& [name, value] : tags)
        if (name == tag) return static_cast<int64_t>(value);
    return -1;
}

class FrameTags : public testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadFFmpeg()); }
};

} // namespace

TEST_F(FrameTags, AreMatrixLayoutLineSizeAndPlanesInOrder) {
    const TestFrame frame = MakeTestFrame(AV_PIX_FMT_YUV420P, 30, 4);
    EXPECT_EQ(TagsOf(*frame, false), (Tags{{0x10010002, 1},
                                           {0x10010003, 0x1400},
                                           {0x10010004, 64},
                                           {0x60010000, Address(frame->data[0])},
                                           {0x60010002, Address(frame->data[1])},
                                           {0x60010003, Address(frame->data[2])}}));
}

TEST_F(FrameTags, LayoutsGoByFormatAndRange) {
    struct Row {
        AVPixelFormat format;
        int64_t full;
        int64_t other;
    };
    const Row rows[] = {
        {AV_PIX_FMT_YUV420P, 0x1800, 0x1400},  {AV_PIX_FMT_YUYV422, 0, 0},
        {AV_PIX_FMT_YUV422P, 0x1700, 0x1300},  {AV_PIX_FMT_YUVJ420P, 0x1800, 0x1800},
        {AV_PIX_FMT_YUVJ422P, 0x1700, 0x1700}, {AV_PIX_FMT_UYVY422, 0x500, 0x500},
        {AV_PIX_FMT_NV12, 0x1500, 0x1500},     {AV_PIX_FMT_YUV422P10LE, 0x1B00, 0x1200},
    };
    for (const Row& row : rows) {
        const TestFrame frame = MakeTestFrame(row.format, 16, 4);
        EXPECT_EQ(ValueOf(TagsOf(*frame, true), ColorTag_Layout), row.full)
            << av_get_pix_fmt_name(row.format);
        EXPECT_EQ(ValueOf(TagsOf(*frame, false), ColorTag_Layout), row.other)
            << av_get_pix_fmt_name(row.format);
    }
}

TEST_F(FrameTags, TheMatrixGoesByTheFramesColorspace) {
    const TestFrame frame = MakeTestFrame(AV_PIX_FMT_UYVY422, 16, 4);
    for (const auto& [colorspace, matrix] : {std::pair{0, 1},
                                             {1, 1},
                                             {2, 1},
                                             {4, 1},
                                             {5, 0},
                                             {6, 2},
                                             {7, 2},
                                             {8, 1},
                                             {9, 1},
                                             {10, 1},
                                             {14, 1}}) {
        frame->colorspace = static_cast<AVColorSpace>(colorspace);
        EXPECT_EQ(ValueOf(TagsOf(*frame, false), ColorTag_Matrix), matrix) << colorspace;
    }
}

TEST_F(FrameTags, Yuyv422IsHandedOverSwappedInMemoryOfItsOwn) {
    const TestFrame frame = MakeTestFrame(AV_PIX_FMT_YUYV422, 15, 4);
    const Tags tags = TagsOf(*frame, false);
    EXPECT_NE(ValueOf(tags, ColorTag_Buffer), static_cast<int64_t>(Address(frame->data[0])));
    EXPECT_EQ(ValueOf(tags, ColorTag_RowBytes), 32);
    EXPECT_EQ(ValueOf(tags, ColorTag_Plane2), 0);
}
