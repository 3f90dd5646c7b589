// From a YUV buffer to an image: a row is unpacked to lines, its chroma is brought to full rate, and the
// matrix takes the lines to pixels.

#include "host/ColorConvertImage.h"
#include "host/ColorConvertTasks.h"

#include <algorithm>

namespace {

class ToImage {
public:
    ToImage(const ColorBuffer& buffer, const ColorImage& image, const ColorToRgb& matrix,
            const ColorKernels& kernels)
        : buffer_(buffer), layout_(*buffer.layout), image_(image), matrix_(matrix), kernels_(kernels) {}

    void operator()(const ColorScratch& scratch, int64_t begin, int64_t end) const {
        for (int64_t row = begin; row < end; ++row) {
            UnpackRow(scratch, row);
            if (layout_.chromaWidth == 2) UpsampleRow(scratch.Lines());
            image_.WriteRow(row, buffer_.width, scratch.Lines(), matrix_, scratch.Pixels());
        }
    }

private:
    void UnpackRow(const ColorScratch& scratch, int64_t row) const {
        const auto unpack = kernels_.packings[static_cast<size_t>(layout_.packing)].unpack;
        const int64_t chromaRow = row / layout_.chromaHeight;
        unpack(buffer_.Row(row, chromaRow), scratch.Lines());
        if (layout_.chromaHeight == 1) return;

        const ColorLines otherLines = scratch.SecondLines();
        unpack(buffer_.Row(row, buffer_.OtherChromaRow(row)), otherLines);
        kernels_.blend(scratch.Lines().chroma, otherLines.chroma, 0.75f,
                       2 * layout_.ChromaCount(buffer_.width));
    }

    void UpsampleRow(const ColorLines& lines) const {
        const int64_t pairs = layout_.ChromaCount(buffer_.width);
        float* const behind = lines.chroma + 2 * pairs;
        // A row that ends at a lone pixel may have no room for its Cr: the one before it stands in.
        const bool lacksLastCr = layout_.IsPairs() && buffer_.Row(0, 0).count % 2 == 1;
        if (lacksLastCr) behind[-1] = pairs > 1 ? behind[-3] : static_cast<float>(layout_.range.zero);
        std::copy_n(behind - 2, 2, behind);
        kernels_.upsample(lines, pairs);
    }

    const ColorBuffer& buffer_;
    const ColorLayoutInfo& layout_;
    const ColorImage& image_;
    const ColorToRgb& matrix_;
    const ColorKernels& kernels_;
};

/// Planes of bytes to an image of bytes, which has a way of its own: most movies take it.
class BytesToImage {
public:
    BytesToImage(const ColorBuffer& buffer, const ColorImage& image, const ColorBytesToRgb& matrix,
                 const ColorKernels& kernels)
        : buffer_(buffer), image_(image), matrix_(matrix), kernels_(kernels) {}

    void operator()(const ColorScratch& scratch, int64_t begin, int64_t end) const {
        // Words in the room of floats. They are written before they are read.
        const auto cb = reinterpret_cast<int16_t*>(scratch.Lines().cb);
        const auto cr = reinterpret_cast<int16_t*>(scratch.Lines().cr);
        for (int64_t row = begin; row < end; ++row) {
            const ColorRow own = buffer_.Row(row, row / buffer_.layout->chromaHeight);
            const ColorRow other = buffer_.Row(row, buffer_.OtherChromaRow(row));
            BlendRow(own.plane[1], other.plane[1], cb);
            BlendRow(own.plane[2], other.plane[2], cr);
            kernels_.bytesToImage({own.plane[0], cb, cr}, matrix_, image_.PlainRow(row), buffer_.width);
        }
    }

private:
    void BlendRow(const uint8_t* own, const uint8_t* other, int16_t* line) const {
        const int64_t pairs = buffer_.layout->ChromaCount(buffer_.width);
        kernels_.blendBytes(own, other, line, pairs);
        line[pairs] = line[pairs - 1];
    }

    const ColorBuffer& buffer_;
    const ColorImage& image_;
    const ColorBytesToRgb matrix_;
    const ColorKernels& kernels_;
};

} // namespace

bool ConvertColorToImage(Image* image, const TagList& tags, const ColorKernels& kernels) {
    if (image == nullptr) return false;
    const auto buffer = ColorBuffer::FromTags(tags, image->Width, image->Height, image->Height);
    if (!buffer) return false;
    const ColorImage pixels(*image, kernels, buffer->layout->IsFloat());
    if (!pixels.IsUsable()) return false;
    const ColorToRgb matrix =
        MakeColorToRgb(tags.GetLong(ColorTag_Matrix, 1), buffer->layout->range, pixels.White());
    if (buffer->layout->packing == ColorPacking::Planar8 && pixels.HasBytes()) {
        const BytesToImage convert(*buffer, pixels, MakeColorBytesToRgb(matrix), kernels);
        return RunColorTasks(*image, *buffer, convert);
    }
    return RunColorTasks(*image, *buffer, ToImage(*buffer, pixels, matrix, kernels));
}
