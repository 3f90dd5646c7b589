#include "host/ColorConvertScratch.h"

#include <algorithm>

namespace {

constexpr int64_t cacheLine = 64;
constexpr int64_t floatsPerCacheLine = cacheLine / int64_t{sizeof(float)};

/// Floats of one line: a margin of a cache line before the row, and one behind it for the rest of a group of
/// six pixels and the neighbours.
constexpr int64_t LineSize(int64_t width) {
    return (width + floatsPerCacheLine - 1) / floatsPerCacheLine * floatsPerCacheLine +
           2 * floatsPerCacheLine;
}

constexpr int64_t linesPerScratch = 8;
constexpr int64_t channelsPerPixel = 4;

} // namespace

ColorScratch::ColorScratch(const ColorLayoutInfo& layout, int64_t width) {
    const int64_t lineSize = LineSize(width);
    const auto bytes = (linesPerScratch + channelsPerPixel) * lineSize * int64_t{sizeof(float)};
    block_.reset(static_cast<float*>(Platform::AllocMemAligned(bytes, int{cacheLine})));
    if (!Ready()) return;

    float* next = block_.get() + floatsPerCacheLine;
    const auto takeLine = [&] {
        float* const line = next;
        next += lineSize;
        return line;
    };
    lines_.luma = takeLine();
    lines_.cb = takeLine();
    lines_.cr = takeLine();
    lines_.alpha = takeLine();
    lines_.chroma = takeLine();
    // Two words to a pixel, in the room of a float. They are written before they are read.
    lines_.words = reinterpret_cast<uint16_t*>(takeLine());
    secondLuma_ = takeLine();
    secondChroma_ = takeLine();
    pixels_ = next;
    // Stays as it is where the layout has no alpha.
    std::fill_n(lines_.alpha, width, static_cast<float>(layout.range.opaque));
}

ColorLines ColorScratch::SecondLines() const {
    ColorLines second = lines_;
    second.luma = secondLuma_;
    second.chroma = secondChroma_;
    return second;
}
