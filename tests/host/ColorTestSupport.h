#pragma once

#include "host/ColorConvert.h"
#include "host/ColorModel.h"
#include "pixel/PixelTestSupport.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <vector>

inline constexpr ImageDataKind allImageKinds[] = {ImageData_RGBA8, ImageData_RGBA16, ImageData_RGBAHalf,
                                                  ImageData_RGBAFloat};

/// A YUV buffer on the heap, each plane a block of exactly the bytes that it takes: the last row ends with
/// its last sample.
class YuvBuffer {
public:
    /// @param padding  bytes behind each row, except for the last
    YuvBuffer(const color_model::Layout& layout, int width, int height, int padding = 0)
        : YuvBuffer(layout, width, height, color_model::LeastRowBytes(layout, width) + padding, padding) {}

    YuvBuffer(const color_model::Layout& layout, int width, int height, int rowBytes, int padding)
        : view_{&layout, width, height, rowBytes, {}} {
        for (int plane = 0; plane < color_model::PlaneCount(layout); ++plane) {
            const int planePadding =
                plane > 0 && color_model::PlaneCount(layout) == 3 ? padding / 2 : padding;
            const int rows = plane == 0 ? height : view_.ChromaHeight();
            auto& memory = memory_[static_cast<size_t>(plane)];
            memory.resize(static_cast<size_t>(view_.PlaneRowBytes(plane) * rows - planePadding));
            memory.shrink_to_fit();
            view_.planes[static_cast<size_t>(plane)] = memory.data();
        }
    }
    YuvBuffer(const YuvBuffer&) = delete;
    YuvBuffer& operator=(const YuvBuffer&) = delete;

    const color_model::Buffer& View() const { return view_; }
    uint8_t* Plane(size_t plane) { return memory_[plane].data(); }
    const std::vector<uint8_t>& Bytes(size_t plane = 0) const { return memory_[plane]; }
    /// Replaces all bytes of a plane, of which there must be as many.
    void SetBytes(const std::vector<uint8_t>& bytes, size_t plane = 0) {
        if (bytes.size() != memory_[plane].size()) std::abort();
        std::copy(bytes.begin(), bytes.end(), memory_[plane].begin());
    }

    void Fill(uint8_t value) {
        for (auto& memory : memory_)
            std::fill(memory.begin(), memory.end(), value);
    }

    /// Random samples that the layout may hold; floats about the range of codes.
    void FillRandom(std::mt19937& random) {
        for (auto& memory : memory_) {
            for (uint8_t& byte : memory)
                byte = static_cast<uint8_t>(random());
        }
        if (view_.layout->elements == color_model::Elements::Float) FillRandomFloats(random);
        if (view_.layout->elements == color_model::Elements::Word && view_.layout->bits == 10) {
            for (auto& memory : memory_) {
                for (size_t i = 1; i < memory.size(); i += 2)
                    memory[i] &= 3;
            }
        }
    }

    TagList Tags(int selector = 1) const {
        TagItem items[8] = {
            {ColorTag_Width, TagItem::FromInt(view_.width)},
            {ColorTag_Height, TagItem::FromInt(view_.height)},
            {ColorTag_Matrix, TagItem::FromInt(selector)},
            {ColorTag_Layout, TagItem::FromInt(view_.layout->code)},
            {ColorTag_RowBytes, TagItem::FromInt(view_.rowBytes)},
            {ColorTag_Buffer, TagItem::FromPtr(view_.planes[0])},
            {0, 0},
            {0, 0},
        };
        TagList tags(items, false);
        if (view_.planes[1] != nullptr) tags.SetPtr(ColorTag_Plane2, view_.planes[1]);
        if (view_.planes[2] != nullptr) tags.SetPtr(ColorTag_Plane3, view_.planes[2]);
        return tags;
    }

private:
    void FillRandomFloats(std::mt19937& random) {
        std::uniform_real_distribution<float> about(-0.5f, 1.5f);
        for (size_t i = 0; i + sizeof(float) <= memory_[0].size(); i += sizeof(float)) {
            const float value = about(random);
            std::memcpy(memory_[0].data() + i, &value, sizeof value);
        }
    }

    color_model::Buffer view_;
    std::vector<uint8_t> memory_[3];
};

inline PixelFloat GetFloatAt(Image& image, int32_t x, int32_t row) {
    PixelFloat pixel;
    image.GetPixelFloat(pixel, image.RowTable[row] + int64_t{x} * image.PixelStride, nullptr, &image);
    return pixel;
}

/// Random pixels: every code of integer kinds, somewhat more than black to white of the others.
inline void FillRandom(Image& image, std::mt19937& random) {
    std::uniform_real_distribution<float> about(-0.5f, 1.5f);
    const bool integers =
        image.DataFormat->Kind == ImageData_RGBA8 || image.DataFormat->Kind == ImageData_RGBA16;
    for (int32_t row = 0; row < image.Height; ++row) {
        for (int32_t x = 0; x < image.Width; ++x) {
            if (!integers) {
                SetPixelAt(image, x, row,
                           PixelFloat{about(random), about(random), about(random), about(random)});
                continue;
            }
            uint8_t* data = image.RowTable[row] + int64_t{x} * image.PixelStride;
            for (int32_t i = 0; i < image.PixelStride; ++i)
                data[i] = static_cast<uint8_t>(random());
        }
    }
}

inline void FillPixels(Image& image, const PixelFloat& pixel) {
    for (int32_t row = 0; row < image.Height; ++row) {
        for (int32_t x = 0; x < image.Width; ++x)
            SetPixelAt(image, x, row, pixel);
    }
}
