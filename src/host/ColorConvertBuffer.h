#pragma once

#include "host/ColorConvertKernels.h"
#include "host/ColorLayout.h"
#include "host/TagList.h"

#include <array>
#include <cstdint>
#include <optional>

/// A YUV buffer as the tags describe it, tested to hold rows of the width in question.
struct ColorBuffer {
    const ColorLayoutInfo* layout;
    std::array<uint8_t*, 3> planes; ///< null where the layout has none
    int64_t rowBytes;               ///< of the first plane
    int64_t width;                  ///< pixels across that are converted, 1 or more
    int64_t height;                 ///< rows that are converted, 1 or more

    /// @param width,height  part of the buffer that is converted, from its top left corner
    /// @param bufferHeight  rows that the buffer has
    /// @return nothing if the tags describe no buffer that holds such rows
    static std::optional<ColorBuffer> FromTags(const TagList& tags, int64_t width, int64_t height,
                                               int64_t bufferHeight);

    /// Row `row` from the top, with the chroma of row `chromaRow` of the chroma planes if there are any.
    ColorRow Row(int64_t row, int64_t chromaRow) const;
    /// The row of the chroma planes that row `row` takes a quarter of, beside its own: a chroma row stands
    /// midway between its two luma rows, and the nearer other one counts. The outermost ones repeat. Its own
    /// row where rows don't share their chroma.
    int64_t OtherChromaRow(int64_t row) const;
    int64_t ChromaHeight() const { return (height + layout->chromaHeight - 1) / layout->chromaHeight; }

private:
    int64_t ElementCount() const;
};
