// What a sample must hold for a conversion is what the conversion reads: the samples here end at a page that
// may not be touched.

#include "codecs/UncompressedCodecs.h"

#include "codecs/UncompressedTestSupport.h"
#include "pixel/PixelConvert.h"
#include "pixel/PixelFormatTable.h"
#include "support/GuardedBytes.h"

#include <gtest/gtest.h>

namespace {

/// Sizes of images around the groups of the packings and of vectors.
constexpr std::array widths = {1, 2, 3, 5, 6, 7, 17, 48, 49, 65, 131};
constexpr std::array heights = {1, 2, 5};

/// A sample that ends at a guarded page, delivered from the source's own memory.
class GuardedSource : public MemoryTrackSource {
public:
    GuardedSource(uint32_t code, int32_t frameWidth, int32_t frameHeight, size_t size)
        : MemoryTrackSource(code, frameWidth, frameHeight, {{}}), bytes(size, GuardedBytes::Guard::Behind) {}
    uint8_t* ReadSample(int32_t, uint8_t*, int32_t& size) override {
        size = static_cast<int32_t>(bytes.size()) - missing;
        return bytes.data();
    }

    int32_t missing = 0; ///< bytes at the end that the sample is said not to have

private:
    GuardedBytes bytes;
};

/// Decodes the top left part of a track from a sample of just as many bytes as are needed, and from one less.
void ExpectDecodedFromWhatIsNeeded(const PixelFormat& format, int32_t trackWidth, int32_t width,
                                   int32_t height) {
    const int32_t rowBytes = PixelConvert::CalcRowBytes(format.fourCC, static_cast<uint32_t>(trackWidth));
    const uint64_t needed = BytesRead(format, width, height, rowBytes);
    GuardedSource source(format.fourCC, trackWidth, height, needed);
    UncompressedCodecs decoder(CxAV_DECODE, nullptr);
    ASSERT_EQ(decoder.SetDataSource(&source), CxAV_OK);
    for (const ImageDataKind kind : {ImageData_RGBA8, ImageData_RGBAFloat}) {
        const ImagePtr image = MakeImage(width, height, kind);
        source.missing = 0;
        ASSERT_EQ(Decode(decoder, 0, image.get()), CxAV_OK);
        source.missing = 1;
        ASSERT_EQ(Decode(decoder, 0, image.get()), CxAV_FAILED);
    }
}

TEST(UncompressedBytesRead, EveryPackingDecodesFromTheBytesThatItNeedsAndFromNoneLess) {
    for (const PixelFormat& format : pixel_formats::all) {
        if (format.read.kind == PixelRoute::Kind::None || format.row.bytes == 0) continue;
        SCOPED_TRACE("code " + std::to_string(format.fourCC));
        for (const int32_t width : widths)
            for (const int32_t height : heights)
                for (const int32_t more : {0, 1, 7})
                    ExpectDecodedFromWhatIsNeeded(format, width + more, width, height);
    }
}

TEST(UncompressedBytesRead, ConversionsOfPackingsWithoutARowSizeReadNoByteMore) {
    for (const PixelFormat& format : pixel_formats::all) {
        if (format.read.kind == PixelRoute::Kind::None) continue;
        for (const int32_t width : widths) {
            for (const int32_t height : heights) {
                const auto least = static_cast<int32_t>(format.least.Bytes(static_cast<uint32_t>(width)));
                for (const int32_t rowBytes : {least, least + 1, 2 * least + 16}) {
                    const GuardedBytes blob(BytesRead(format, width, height, rowBytes),
                                            GuardedBytes::Guard::Behind);
                    const ImagePtr image = MakeImage(width, height);
                    Image* picture = image.get();
                    ASSERT_TRUE(PixelConvert::BlobToImage(blob.data(), static_cast<uint32_t>(rowBytes),
                                                          format.fourCC, picture));
                }
            }
        }
    }
}

} // namespace
