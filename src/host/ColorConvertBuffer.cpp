#include "host/ColorConvertBuffer.h"

#include <algorithm>
#include <limits>

namespace {

bool HasPlanes(const ColorBuffer& buffer) {
    for (int32_t i = 0; i < buffer.layout->planes; ++i) {
        if (buffer.planes[static_cast<size_t>(i)] == nullptr) return false;
    }
    return true;
}

/// Sizes are 32-bit numbers, so that their products fit 64 bits.
bool IsSize(int64_t value) { return value > 0 && value <= std::numeric_limits<int32_t>::max(); }

bool HoldsRows(const ColorBuffer& buffer) {
    const ColorLayoutInfo& layout = *buffer.layout;
    if (buffer.rowBytes < layout.LeastRowBytes(buffer.width)) return false;
    return layout.planes == 1 ||
           layout.ChromaRowBytes(buffer.rowBytes) >= layout.LeastChromaRowBytes(buffer.width);
}

uint8_t* PlaneOf(const TagList& tags, Tag tag) { return static_cast<uint8_t*>(tags.GetPtr(tag, nullptr)); }

} // namespace

std::optional<ColorBuffer> ColorBuffer::FromTags(const TagList& tags, int64_t width, int64_t height,
                                                 int64_t bufferHeight) {
    ColorBuffer buffer = {
        .layout = FindColorLayout(tags.GetLong(ColorTag_Layout, -1)),
        .planes = {PlaneOf(tags, ColorTag_Buffer), PlaneOf(tags, ColorTag_Plane2),
                   PlaneOf(tags, ColorTag_Plane3)},
        .rowBytes = tags.GetLong(ColorTag_RowBytes, 0),
        .width = width,
        .height = height,
    };
    if (buffer.layout == nullptr || !IsSize(width) || !IsSize(height) || !IsSize(bufferHeight)) return {};
    if (!IsSize(buffer.rowBytes) || !HoldsRows(buffer)) return {};
    const bool chromaFollows = buffer.layout->planes == 2 && !tags.FindQuery(ColorTag_Plane2);
    if (chromaFollows && buffer.planes[0] != nullptr)
        buffer.planes[1] = buffer.planes[0] + buffer.rowBytes * bufferHeight;
    if (!HasPlanes(buffer)) return {};
    return buffer;
}

ColorRow ColorBuffer::Row(int64_t row, int64_t chromaRow) const {
    ColorRow result = {{planes[0] + row * rowBytes, nullptr, nullptr}, ElementCount()};
    const int64_t chromaOffset = chromaRow * layout->ChromaRowBytes(rowBytes);
    for (size_t i = 1; i < static_cast<size_t>(layout->planes); ++i)
        result.plane[i] = planes[i] + chromaOffset;
    return result;
}

int64_t ColorBuffer::OtherChromaRow(int64_t row) const {
    if (layout->chromaHeight == 1) return row;
    const int64_t neighbour = row % 2 == 0 ? row / 2 - 1 : row / 2 + 1;
    return std::clamp<int64_t>(neighbour, 0, ChromaHeight() - 1);
}

/// `ColorRow::count` of each row. A string of pairs whose row size ends at a lone pixel has only its Cb.
int64_t ColorBuffer::ElementCount() const {
    if (layout->chromaWidth == 1 || layout->planes > 1) return width;
    const int64_t wholePairs = 2 * layout->ChromaCount(width);
    const bool cut = layout->IsPairs() && rowBytes < wholePairs * layout->groupBytes;
    return cut ? width : wholePairs;
}
