#pragma once

#include "host/ColorConvertKernels.h"
#include "host/Export.h"
#include "host/Platform.h"

#include <cstdint>
#include <memory>

/// Working memory of one task: lines for rows of up to a given width.
class CORVEX_HOST_API ColorScratch {
public:
    /// For rows of `width` pixels of `layout`. Test `Ready()` before use.
    ColorScratch(const ColorLayoutInfo& layout, int64_t width);

    /// Whether there was memory.
    bool Ready() const { return block_ != nullptr; }

    /// Lines of the row in work. There is room before and behind each for neighbours of the outermost
    /// samples.
    const ColorLines& Lines() const { return lines_; }
    /// Lines of a second row that shares chroma samples with the first; it has `luma` and `chroma` of its
    /// own.
    ColorLines SecondLines() const;
    /// One row of interleaved float channels.
    float* Pixels() const { return pixels_; }

private:
    struct FreeAligned {
        void operator()(float* block) const { Platform::FreeMemAligned(block); }
    };

    std::unique_ptr<float, FreeAligned> block_;
    ColorLines lines_ = {};
    float* secondLuma_ = nullptr;
    float* secondChroma_ = nullptr;
    float* pixels_ = nullptr;
};
