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

        // A chroma row stands midway between its two luma rows, so that each of them is a quarter of the way
        // to the chroma row on its other side. The outermost chroma rows repeat.
        const int64_t neighbour = row % 2 == 0 ? chromaRow - 1 : chromaRow + 1;
        const int64_t farRow = std::clamp<int64_t>(neighbour, 0, buffer_.ChromaHeight() - 1);
        const ColorLines farLines = scratch.SecondLines();
        unpack(buffer_.Row(row, farRow), farLines);
        kernels_.blend(scratch.Lines().chroma, farLines.chroma, 0.75f,
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

} // namespace

bool ConvertColorToImage(Image* image, const TagList& tags, const ColorKernels& kernels) {
    if (image == nullptr) return false;
    const auto buffer = ColorBuffer::FromTags(tags, image->Width, image->Height, image->Height);
    if (!buffer) return false;
    const ColorImage pixels(*image, kernels, buffer->layout->IsFloat());
    if (!pixels.IsUsable()) return false;
    const ColorToRgb matrix =
        MakeColorToRgb(tags.GetLong(ColorTag_Matrix, 1), buffer->layout->range, pixels.White());
    return RunColorTasks(*image, *buffer, ToImage(*buffer, pixels, matrix, kernels));
}
