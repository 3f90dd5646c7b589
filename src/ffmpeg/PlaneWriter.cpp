#include "ffmpeg/PlaneWriter.h"

#include "ffmpeg/FFmpegBinding.h"
#include "ffmpeg/FrameColors.h"

#include <algorithm>
#include <bit>
#include <cstdint>

namespace CxFFMPEG {

namespace {

static_assert(std::endian::native == std::endian::little, "words are taken and left as they stand in memory");

const AVPixFmtDescriptor* DescriptorOf(AVPixelFormat format) { return FFmpeg().av_pix_fmt_desc_get(format); }

// ---------------------------------------------------------------------------------------------------------
// The picture

/// What the codes of a picture mean.
struct PlaneCodes {
    double black;
    double lumaSpan; ///< from black to white
    double zero;     ///< of Cb and Cr
    double chromaSpan;
};

/// Recommendation ITU-T H.273, 8.3.
PlaneCodes CodesOf(int depth, bool isFullRange) {
    const double step = 1 << (depth - 8);
    const double most = (1 << depth) - 1;
    if (isFullRange) return {0, most, 128 * step, most};
    return {16 * step, 219 * step, 128 * step, 224 * step};
}

PlaneMatrix::Weights ToFloats(double red, double green, double blue) {
    return {static_cast<float>(red), static_cast<float>(green), static_cast<float>(blue)};
}

PlaneMatrix MatrixOf(const AVFrame& picture, int depth) {
    constexpr double white = 65535;
    const LumaShares shares = LumaSharesOf(picture);
    const PlaneCodes codes = CodesOf(depth, IsFullRange(picture, false));
    const double luma = codes.lumaSpan / white;
    const double cb = codes.chromaSpan / white / (2 * (1 - shares.blue));
    const double cr = codes.chromaSpan / white / (2 * (1 - shares.red));
    return {
        .luma = ToFloats(shares.red * luma, shares.Green() * luma, shares.blue * luma),
        .cb = ToFloats(-shares.red * cb, -shares.Green() * cb, (1 - shares.blue) * cb),
        .cr = ToFloats((1 - shares.red) * cr, -shares.Green() * cr, -shares.blue * cr),
        .black = static_cast<float>(codes.black),
        .zero = static_cast<float>(codes.zero),
    };
}

/// What all rows share.
struct Task {
    Task(const AVFrame& from, AVFrame& to, const PlaneKernels& steps)
        : words(from), picture(to), kernels(steps),
          descriptor(*DescriptorOf(static_cast<AVPixelFormat>(to.format))), depth(descriptor.comp[0].depth),
          matrix(MatrixOf(to, depth)) {}

    const AVFrame& words;
    AVFrame& picture;
    const PlaneKernels& kernels;
    const AVPixFmtDescriptor& descriptor;
    int depth;
    PlaneMatrix matrix;

    uint16_t Most() const { return static_cast<uint16_t>((1 << depth) - 1); }
    bool HasHalfColumns() const { return descriptor.log2_chroma_w != 0; }
    int32_t RowsOfGroup(int32_t group) const {
        return std::min(1 << descriptor.log2_chroma_h, picture.height - FirstRow(group));
    }
    int32_t FirstRow(int32_t group) const { return group << descriptor.log2_chroma_h; }

    const uint16_t* Words(int32_t row, int32_t column) const {
        const uint8_t* const start = words.data[0] + int64_t{row} * words.linesize[0];
        return reinterpret_cast<const uint16_t*>(start) + int64_t{3} * column;
    }
    uint8_t* Row(int plane, int32_t row) const {
        return picture.data[plane] + int64_t{row} * picture.linesize[plane];
    }
    void Store(const float* line, int32_t count, int plane, int32_t row, int32_t column) const {
        uint8_t* const start = Row(plane, row);
        if (depth == 8)
            kernels.storeBytes(line, Most(), start + column, count);
        else
            kernels.storeWords(line, Most(), reinterpret_cast<uint16_t*>(start) + column, count);
    }
};

// ---------------------------------------------------------------------------------------------------------
// The rows that share a row of chroma, a block of columns at a time, so that all lines stay in the fastest
// cache

constexpr int32_t blockColumns = 256; ///< even

/// A line of chroma: of a block, the last sample of the block before it, and one behind it.
class ChromaLine {
public:
    float* Samples() { return memory + 1; }

    /// Makes the line end as it has to for halving, and gives the samples that halving leaves.
    int32_t Halve(const PlaneKernels& kernels, int32_t count, bool isFirst, float* halved) {
        if (isFirst) memory[0] = memory[1];
        memory[count + 1] = memory[count];
        const int32_t pairs = (count + 1) / 2;
        kernels.halve(Samples(), halved, pairs);
        memory[0] = memory[count];
        return pairs;
    }

private:
    float memory[1 + blockColumns + 1];
};

/// Lines of one group of rows on their way.
struct Lines {
    float luma[blockColumns];
    ChromaLine cb;
    ChromaLine cr;
    float otherCb[blockColumns]; ///< of the second row
    float otherCr[blockColumns];
    float halved[blockColumns / 2];
};

/// A block of a group of rows.
struct Block {
    int32_t group;
    int32_t column;
    int32_t count; ///< columns
};

void WriteLuma(const Task& task, const Block& block, Lines& lines) {
    const int32_t row = task.FirstRow(block.group);
    const auto write = [&](int32_t y, float* cb, float* cr) {
        task.kernels.split(task.Words(y, block.column), task.matrix, {lines.luma, cb, cr}, block.count);
        task.Store(lines.luma, block.count, 0, y, block.column);
    };
    write(row, lines.cb.Samples(), lines.cr.Samples());
    if (task.RowsOfGroup(block.group) < 2) return;
    write(row + 1, lines.otherCb, lines.otherCr);
    task.kernels.mean(lines.cb.Samples(), lines.otherCb, block.count);
    task.kernels.mean(lines.cr.Samples(), lines.otherCr, block.count);
}

void WriteChroma(const Task& task, const Block& block, int plane, ChromaLine& line, float* halved) {
    if (!task.HasHalfColumns())
        return task.Store(line.Samples(), block.count, plane, block.group, block.column);
    const int32_t count = line.Halve(task.kernels, block.count, block.column == 0, halved);
    task.Store(halved, count, plane, block.group, block.column / 2);
}

void WriteAlpha(const Task& task, int32_t row) {
    if (task.depth == 8)
        std::fill_n(task.Row(3, row), task.picture.width, uint8_t{255});
    else
        std::fill_n(reinterpret_cast<uint16_t*>(task.Row(3, row)), task.picture.width, task.Most());
}

/// For `Image::DoMultiProcess`: (any image, `Task*`, row of chroma).
void WriteGroup(Image*, void* context, int group) {
    const Task& task = *static_cast<const Task*>(context);
    Lines lines;
    for (int32_t column = 0; column < task.picture.width; column += blockColumns) {
        const Block block = {group, column, std::min(blockColumns, task.picture.width - column)};
        WriteLuma(task, block, lines);
        WriteChroma(task, block, 1, lines.cb, lines.halved);
        WriteChroma(task, block, 2, lines.cr, lines.halved);
    }
    if (task.descriptor.nb_components < 4) return;
    for (int32_t i = 0; i < task.RowsOfGroup(group); ++i)
        WriteAlpha(task, task.FirstRow(group) + i);
}

} // namespace

bool HasWritablePlanes(AVPixelFormat format) {
    const AVPixFmtDescriptor* const descriptor = DescriptorOf(format);
    if (!HasRange(format) || descriptor->nb_components < 3) return false;
    constexpr uint64_t others = AV_PIX_FMT_FLAG_BE | AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_FLOAT;
    if ((descriptor->flags & others) != 0) return false;
    if (descriptor->log2_chroma_w > 1 || descriptor->log2_chroma_h > 1) return false;
    const AVComponentDescriptor& luma = descriptor->comp[0];
    if (luma.depth < 8 || luma.depth > 16) return false;
    for (int i = 0; i < descriptor->nb_components; ++i) {
        const AVComponentDescriptor& component = descriptor->comp[i];
        const bool isWhole = component.offset == 0 && component.shift == 0 && component.depth == luma.depth;
        if (component.plane != i || component.step != (luma.depth > 8 ? 2 : 1) || !isWhole) return false;
    }
    return true;
}

bool WritePlanes(const AVFrame& words, AVFrame& picture, Image& image, const PlaneKernels& kernels) {
    Task task(words, picture, kernels);
    const int rows = picture.height;
    const int shift = task.descriptor.log2_chroma_h;
    return image.DoMultiProcess(WriteGroup, &task, (rows + (1 << shift) - 1) >> shift, nullptr, false);
}

} // namespace CxFFMPEG
