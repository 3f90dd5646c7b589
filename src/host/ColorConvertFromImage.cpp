// From an image to a YUV buffer: the matrix takes a row of pixels to lines, their chroma is brought to the
// rate of the layout, and the lines are packed.

#include "host/ColorConvertImage.h"
#include "host/ColorConvertTasks.h"

#include <algorithm>

namespace {

class FromImage {
public:
    FromImage(const ColorBuffer& buffer, const ColorImage& image, const ColorFromRgb& matrix,
              const ColorKernels& kernels)
        : buffer_(buffer), layout_(*buffer.layout), image_(image), matrix_(matrix), kernels_(kernels) {}

    void operator()(const ColorScratch& scratch, int64_t begin, int64_t end) const {
        for (int64_t row = begin; row < end; row += layout_.chromaHeight) {
            ReadRow(scratch.Lines(), scratch.Pixels(), row);
            if (layout_.chromaHeight == 2 && row + 1 < end) {
                WriteTwoRows(scratch, row);
            } else {
                PackRow(scratch.Lines(), row);
            }
        }
    }

private:
    /// The first row of a pair is in the scratch lines already. Both take the mean of their chroma.
    void WriteTwoRows(const ColorScratch& scratch, int64_t row) const {
        ColorLines second = scratch.SecondLines();
        ReadRow(second, scratch.Pixels(), row + 1);
        kernels_.blend(scratch.Lines().chroma, second.chroma, 0.5f, 2 * Pairs());
        second.chroma = scratch.Lines().chroma;
        PackRow(scratch.Lines(), row);
        PackRow(second, row + 1);
    }

    void ReadRow(const ColorLines& lines, float* pixels, int64_t row) const {
        image_.ReadRow(row, buffer_.width, matrix_, lines, pixels);
        if (layout_.chromaWidth == 1) return;
        for (float* line : {lines.luma, lines.cb, lines.cr, lines.alpha})
            RepeatEdges(line);
        kernels_.downsample(lines, Pairs());
    }

    void PackRow(const ColorLines& lines, int64_t row) const {
        const auto pack = kernels_.packings[static_cast<size_t>(layout_.packing)].pack;
        pack(lines, layout_.range, buffer_.Row(row, row / layout_.chromaHeight));
    }

    /// For the filter, and for the second pixel of a last pair that is not in the picture.
    void RepeatEdges(float* line) const {
        line[-2] = line[-1] = line[0];
        line[buffer_.width] = line[buffer_.width - 1];
    }

    int64_t Pairs() const { return layout_.ChromaCount(buffer_.width); }

    const ColorBuffer& buffer_;
    const ColorLayoutInfo& layout_;
    const ColorImage& image_;
    const ColorFromRgb& matrix_;
    const ColorKernels& kernels_;
};

} // namespace

void* ConvertColorFromImage(Image* image, const TagList& tags, const ColorKernels& kernels) {
    if (image == nullptr) return nullptr;
    const int64_t bufferWidth = tags.GetLong(ColorTag_Width, image->Width);
    const int64_t bufferHeight = tags.GetLong(ColorTag_Height, image->Height);
    const auto buffer = ColorBuffer::FromTags(tags, std::min<int64_t>(image->Width, bufferWidth),
                                              std::min<int64_t>(image->Height, bufferHeight), bufferHeight);
    if (!buffer) return nullptr;
    const ColorImage pixels(*image, kernels, buffer->layout->IsFloat());
    if (!pixels.IsUsable()) return nullptr;
    const ColorFromRgb matrix =
        MakeColorFromRgb(tags.GetLong(ColorTag_Matrix, 1), buffer->layout->range, pixels.White());
    const bool complete = RunColorTasks(*image, *buffer, FromImage(*buffer, pixels, matrix, kernels));
    return complete ? buffer->planes[0] : nullptr;
}
