// Rows of 16-bit words in images, through accessors of any kind.

#include "ffmpeg/FrameRows.h"

#include "ffmpeg/FrameTestSupport.h"

#include <gtest/gtest.h>

#include <mutex>

using namespace CxFFMPEG;

namespace {

constexpr AVPixelFormat wordFormats[] = {AV_PIX_FMT_RGB48LE, AV_PIX_FMT_RGBA64LE};

/// A frame of random words, its lines as `av_image_alloc` has them.
struct WordFrame {
    WordFrame(AVPixelFormat format, int width, int height, std::mt19937& random)
        : frame(MakeEmptyFrame(format, width, height)) {
        if (av_image_alloc(frame->data, frame->linesize, width, height, format, 32) < 0) std::abort();
        for (int y = 0; y < height; ++y)
            std::generate_n(frame->data[0] + y * frame->linesize[0], width * PixelBytes(),
                            [&] { return static_cast<uint8_t>(random()); });
    }
    ~WordFrame() { av_freep(&frame->data[0]); }

    int PixelBytes() const { return frame->format == AV_PIX_FMT_RGBA64LE ? 8 : 6; }
    /// The pixel at column `x` of row `y` from the top.
    Pixel At(int x, int y) const {
        const uint8_t* in = frame->data[0] + y * frame->linesize[0] + x * PixelBytes();
        const auto word = [&](int i) { return in[2 * i] + 256 * in[2 * i + 1]; };
        return {word(0), word(1), word(2), PixelBytes() == 8 ? word(3) : 65535};
    }

    TestFrame frame;
};

/// What the accessor of an image was called with.
struct SetCall {
    Pixel pixel;
    const uint8_t* data;
    const uint8_t* aux;
};
std::mutex callsMutex;
std::vector<SetCall> calls;

void RecordPixel(const Pixel& pixel, uint8_t* data, uint8_t* aux, Image*) {
    const std::lock_guard lock(callsMutex);
    calls.push_back({pixel, data, aux});
}

std::vector<SetCall> CallsOf(const AVFrame& frame, Image& image) {
    calls.clear();
    image.SetPixel = RecordPixel;
    EXPECT_TRUE(WriteFrameRows(frame, image));
    return calls;
}

class FrameRows : public testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadFFmpeg()); }

    std::mt19937 random = MakeRandom();
};

} // namespace

TEST_F(FrameRows, PixelsOfNarrowFramesFollowEachOtherInTheStepOfTheFormat) {
    for (const AVPixelFormat format : wordFormats) {
        for (int width = 1; width < 70; ++width) {
            const WordFrame words(format, width, 2, random);
            const ImagePtr image = MakeImage(width + 1, 2);
            ASSERT_TRUE(WriteFrameRows(*words.frame, *image));
            for (int x = 0; x < width; ++x)
                ASSERT_EQ(PixelAt(*image, x, 1), words.At(x, 1)) << "width " << width << ", column " << x;
        }
    }
}

TEST_F(FrameRows, TheAccessorGetsUnsignedWordsAndOpaqueAlphaWhereThereIsNone) {
    for (const AVPixelFormat format : wordFormats) {
        const WordFrame words(format, 5, 1, random);
        const ImagePtr image = MakeImage(5, 1);
        const std::vector<SetCall> made = CallsOf(*words.frame, *image);
        ASSERT_EQ(made.size(), 5u);
        for (int x = 0; x < 5; ++x)
            EXPECT_EQ(made[static_cast<size_t>(x)].pixel, words.At(x, 0));
    }
}

TEST_F(FrameRows, TheAccessorGetsAddressesInBothBlocksOfTheImage) {
    const WordFrame words(AV_PIX_FMT_RGB48LE, 3, 1, random);
    const ImagePtr image = MakeImage(3, 1);
    uint8_t aux[64] = {};
    uint8_t* auxRows[] = {aux};
    image->AuxRowTable = auxRows;
    image->AuxPixelStride = 5;
    image->PixelStride = 24;
    const std::vector<SetCall> made = CallsOf(*words.frame, *image);
    ASSERT_EQ(made.size(), 3u);
    for (size_t x = 0; x < 3; ++x) {
        EXPECT_EQ(made[x].data, image->RowTable[0] + 24 * x);
        EXPECT_EQ(made[x].aux, aux + 5 * x);
    }
}

TEST_F(FrameRows, AnImageWithoutMainDataHasAddressesFrom0On) {
    const WordFrame words(AV_PIX_FMT_RGBA64LE, 2, 1, random);
    const ImagePtr image = MakeImage(2, 1);
    image->RowTable = nullptr;
    const std::vector<SetCall> made = CallsOf(*words.frame, *image);
    ASSERT_EQ(made.size(), 2u);
    EXPECT_EQ(made[0].data, nullptr);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(made[1].data), static_cast<uintptr_t>(image->PixelStride));
}

TEST_F(FrameRows, PlainImagesOfEachKindGetThePixelsThatTheirAccessorsStore) {
    for (const AVPixelFormat format : wordFormats) {
        for (const ImageDataKind kind :
             {ImageData_RGBA8, ImageData_RGBA16, ImageData_RGBAHalf, ImageData_RGBAFloat}) {
            for (const int width : {1, 7, 33, 64, 101}) {
                const WordFrame words(format, width, 3, random);
                const ImagePtr plain = MakeImage(width, 3, kind);
                const ImagePtr other = MakeImage(width, 3, kind);
                other->GetPixel = nullptr;
                ASSERT_TRUE(WriteFrameRows(*words.frame, *plain));
                ASSERT_TRUE(WriteFrameRows(*words.frame, *other));
                EXPECT_EQ(PixelBytes(*plain, kind), PixelBytes(*other, kind))
                    << "kind " << kind << ", width " << width;
            }
        }
    }
}

TEST_F(FrameRows, ARowIsWrittenAndReadToItsLastPixelOnly) {
    for (const AVPixelFormat format : wordFormats) {
        const size_t pixelBytes = format == AV_PIX_FMT_RGBA64LE ? 8 : 6;
        for (const int width : {1, 8, 37}) {
            const GuardedBytes words(pixelBytes * static_cast<size_t>(width), GuardedBytes::Guard::Behind);
            const GuardedBytes pixels(8 * static_cast<size_t>(width), GuardedBytes::Guard::Behind);
            const TestFrame frame = MakeEmptyFrame(format, width, 1);
            frame->data[0] = words.data();
            frame->linesize[0] = static_cast<int>(words.size());
            const ImagePtr image = MakeImage(width, 1);
            uint8_t* rows[] = {pixels.data()};
            image->RowTable = rows;
            EXPECT_TRUE(WriteFrameRows(*frame, *image));
        }
    }
}

TEST_F(FrameRows, AnExceptionOfAnAccessorReachesTheCaller) {
    const WordFrame words(AV_PIX_FMT_RGB48LE, 4, 4, random);
    const ImagePtr image = MakeImage(4, 4);
    image->SetPixel = [](const Pixel&, uint8_t*, uint8_t*, Image*) { throw std::bad_alloc(); };
    EXPECT_THROW(WriteFrameRows(*words.frame, *image), std::bad_alloc);
}

TEST_F(FrameRows, WordsHaveAlphaWhereTheFormatHasAnEvenNumberOfComponents) {
    const auto formatOf = [](AVPixelFormat format) { return WordFormatOf(*MakeEmptyFrame(format, 1, 1)); };
    for (const AVPixelFormat format :
         {AV_PIX_FMT_YUVA420P, AV_PIX_FMT_YA8, AV_PIX_FMT_BGRA, AV_PIX_FMT_GBRAP})
        EXPECT_EQ(formatOf(format), AV_PIX_FMT_RGBA64LE) << av_get_pix_fmt_name(format);
    for (const AVPixelFormat format :
         {AV_PIX_FMT_YUV420P, AV_PIX_FMT_GRAY8, AV_PIX_FMT_RGB24, AV_PIX_FMT_PAL8})
        EXPECT_EQ(formatOf(format), AV_PIX_FMT_RGB48LE) << av_get_pix_fmt_name(format);
    EXPECT_EQ(formatOf(AV_PIX_FMT_NONE), AV_PIX_FMT_NONE);
}
