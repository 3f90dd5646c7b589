#pragma once

#include "PixelTestSupport.h"
#include "pixel/RowConverters.h"
#include "pixel/RowConvertersVector.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <random>
#include <span>
#include <string>
#include <vector>

inline constexpr ImageDataKind kinds[] = {ImageData_RGBA8, ImageData_RGBA16, ImageData_RGBAHalf,
                                          ImageData_RGBAFloat};

/// Whether the instruction set in use has vector forms for images of a kind: every one for all kinds but
/// half, which not all convert.
inline bool HasForm(ImageDataKind kind) {
    const ImagePtr image = MakeImage(1, 1, kind);
    const bool hasReader = VectorRowReader(RowPacking::B64a, *image) != nullptr;
    EXPECT_EQ(VectorRowWriter(RowPacking::B64a, *image) != nullptr, hasReader);
    EXPECT_TRUE(hasReader || kind == ImageData_RGBAHalf);
    return hasReader;
}

inline void ForEachTarget(const std::function<void()>& test) {
    const std::vector<int64_t> targets = VectorTargets();
    ASSERT_FALSE(targets.empty()) << "no vector instruction set was dispatched";
    for (const int64_t target : targets) {
        SCOPED_TRACE(hwy::TargetName(target));
        const ForcedTarget forced(target);
        test();
        if (testing::Test::HasFatalFailure()) return;
    }
}

/// Each packing with each kind of image that the instruction set has vector forms for.
inline void ForEachPacking(const std::function<void(RowPacking, ImageDataKind)>& test) {
    for (size_t i = 0; i < rowPackingCount; ++i) {
        for (const ImageDataKind kind : kinds) {
            if (!HasForm(kind)) continue;
            SCOPED_TRACE("packing " + std::to_string(i) + ", kind " + std::to_string(kind));
            test(static_cast<RowPacking>(i), kind);
            if (testing::Test::HasFatalFailure()) return;
        }
    }
}

/// Ways to fill a buffer: random and the extremes.
using Fill = std::function<void(std::span<uint8_t>)>;

inline std::vector<Fill> Fills(std::mt19937& random) {
    const auto alternate = [](size_t period) {
        return [period](std::span<uint8_t> bytes) {
            for (size_t i = 0; i < bytes.size(); ++i)
                bytes[i] = i / period % 2 == 0 ? 0x00 : 0xFF;
        };
    };
    return {
        [&random](std::span<uint8_t> bytes) {
            std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<uint8_t>(random()); });
        },
        [](std::span<uint8_t> bytes) { std::fill(bytes.begin(), bytes.end(), uint8_t{0x00}); },
        [](std::span<uint8_t> bytes) { std::fill(bytes.begin(), bytes.end(), uint8_t{0xFF}); },
        alternate(1),
        alternate(2),
        alternate(8),
    };
}

/// An image whose rows follow each other in the given memory.
class RowImage {
public:
    RowImage(int32_t width, ImageDataKind kind, uint8_t* pixels, int32_t height = 1)
        : image_(MakeImage(width, height, kind)) {
        for (int32_t row = 0; row < height; ++row)
            rows_.push_back(pixels + row * int64_t{width} * BytesPerPixelOf(kind));
        image_->RowTable = rows_.data();
    }
    Image* get() const { return image_.get(); }

private:
    ImagePtr image_;
    std::vector<uint8_t*> rows_;
};

inline size_t PlanesOf(RowPacking packing) { return LayoutOf(packing).word == RowWord::Plane16 ? 3 : 1; }

inline size_t BlobBytes(RowPacking packing, int32_t width) {
    return PlanesOf(packing) * LayoutOf(packing).BytesPerPixel() * static_cast<size_t>(width);
}

inline RowContext ContextOf(RowPacking packing, int32_t width, uint8_t* blob) {
    return {rowMarkerWithAlpha, static_cast<int32_t>(LayoutOf(packing).BytesPerPixel()) * width, blob};
}
