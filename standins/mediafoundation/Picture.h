#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace mediafoundation {

/// A 4:2:0 picture of 8 bits: luma, Cb and Cr, one behind the other.
class Picture {
public:
    Picture() = default;
    /// @param width, height  even, up to 16384. Throws std::bad_alloc.
    Picture(uint32_t width, uint32_t height)
        : width_(width), height_(height), samples_(size_t{width} * height / 2 * 3) {}

    uint32_t Width() const { return width_; }
    uint32_t Height() const { return height_; }
    size_t PlaneWidth(int plane) const { return plane == 0 ? width_ : width_ / 2; }
    size_t PlaneHeight(int plane) const { return plane == 0 ? height_ : height_ / 2; }
    uint8_t* Row(int plane, size_t y) { return samples_.data() + Offset(plane) + y * PlaneWidth(plane); }
    const uint8_t* Row(int plane, size_t y) const {
        return samples_.data() + Offset(plane) + y * PlaneWidth(plane);
    }

private:
    size_t Offset(int plane) const {
        const size_t luma = size_t{width_} * height_;
        return plane == 0 ? 0 : luma + static_cast<size_t>(plane - 1) * (luma / 4);
    }

    uint32_t width_ = 0;
    uint32_t height_ = 0;
    std::vector<uint8_t> samples_;
};

} // namespace mediafoundation
