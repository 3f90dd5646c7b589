#pragma once

#include "host/ColorConvertSamples.h"

#include <cstdint>

/// The stages over whole rows, put together from the steps of one form of them, scalar or vector. `Steps` has
/// the members of `color_scalar::Steps`.
template <typename Steps>
struct ColorRows {
    using QuadOrder = color_samples::QuadOrder;

    template <typename T, bool HasAlpha>
    static void UnpackPairs(const ColorRow& row, const ColorLines& lines) {
        Steps::template UnpackPairs<T, HasAlpha>(row.plane[0], lines, 0, row.count);
    }

    template <typename T, bool HasAlpha>
    static void PackPairs(const ColorLines& lines, const ColorRange& range, const ColorRow& row) {
        Steps::template PackPairs<T, HasAlpha>(lines, range, row.plane[0], 0, row.count);
    }

    static void UnpackPairsTens(const ColorRow& row, const ColorLines& lines) {
        Steps::ExpandTens(row.plane[0], lines.words, 0, TensWords(row.count));
        const auto* words = reinterpret_cast<const uint8_t*>(lines.words);
        Steps::template UnpackPairs<uint16_t, false>(words, lines, 0, row.count);
    }

    static void PackPairsTens(const ColorLines& lines, const ColorRange& range, const ColorRow& row) {
        auto* words = reinterpret_cast<uint8_t*>(lines.words);
        Steps::template PackPairs<uint16_t, false>(lines, range, words, 0, row.count);
        PadTens(range, lines.words, row.count);
        Steps::CompressTens(lines.words, row.plane[0], 0, TensWords(row.count));
    }

    template <typename T, QuadOrder Order>
    static void UnpackQuads(const ColorRow& row, const ColorLines& lines) {
        Steps::template UnpackQuads<T, Order>(row.plane[0], lines, 0, row.count);
    }

    template <typename T, QuadOrder Order>
    static void PackQuads(const ColorLines& lines, const ColorRange& range, const ColorRow& row) {
        Steps::template PackQuads<T, Order>(lines, range, row.plane[0], 0, row.count);
    }

    static void UnpackQuadTens(const ColorRow& row, const ColorLines& lines) {
        Steps::UnpackQuadTens(row.plane[0], lines, 0, row.count);
    }

    static void PackQuadTens(const ColorLines& lines, const ColorRange& range, const ColorRow& row) {
        Steps::PackQuadTens(lines, range, row.plane[0], 0, row.count);
    }

    static void UnpackSemiPlanar(const ColorRow& row, const ColorLines& lines) {
        Steps::template UnpackPlane<uint8_t>(row.plane[0], lines.luma, 0, row.count);
        Steps::template UnpackPlane<uint8_t>(row.plane[1], lines.chroma, 0, 2 * PairsOf(row.count));
    }

    static void PackSemiPlanar(const ColorLines& lines, const ColorRange& range, const ColorRow& row) {
        Steps::template PackPlane<uint8_t>(lines.luma, range.luma, row.plane[0], 0, row.count);
        Steps::template PackPlane<uint8_t>(lines.chroma, range.chroma, row.plane[1], 0,
                                           2 * PairsOf(row.count));
    }

    template <typename T>
    static void UnpackPlanar(const ColorRow& row, const ColorLines& lines) {
        Steps::template UnpackPlane<T>(row.plane[0], lines.luma, 0, row.count);
        Steps::template UnpackChromaPlanes<T>(row.plane[1], row.plane[2], lines.chroma, 0,
                                              PairsOf(row.count));
    }

    template <typename T>
    static void PackPlanar(const ColorLines& lines, const ColorRange& range, const ColorRow& row) {
        Steps::template PackPlane<T>(lines.luma, range.luma, row.plane[0], 0, row.count);
        Steps::template PackChromaPlanes<T>(lines.chroma, range.chroma, row.plane[1], row.plane[2], 0,
                                            PairsOf(row.count));
    }

    static void Upsample(const ColorLines& lines, int64_t pairs) { Steps::Upsample(lines, 0, pairs); }
    static void Downsample(const ColorLines& lines, int64_t pairs) { Steps::Downsample(lines, 0, pairs); }
    static void Blend(float* line, const float* other, float weight, int64_t count) {
        Steps::Blend(line, other, weight, 0, count);
    }

    static void BlendBytes(const uint8_t* own, const uint8_t* other, int16_t* line, int64_t count) {
        Steps::BlendBytes(own, other, line, 0, count);
    }

    static void BytesToImage(const ColorByteRow& row, const ColorBytesToRgb& matrix, uint8_t* pixels,
                             int64_t count) {
        Steps::BytesToImage(row, matrix, pixels, 0, count);
    }

    template <typename Real, typename Channel>
    static void ToImage(const ColorLines& lines, const ColorToRgb& matrix, uint8_t* pixels, int64_t count) {
        Steps::template ToImage<Real, Channel>(lines, matrix, pixels, 0, count);
    }

    template <typename Real, typename Channel>
    static void FromImage(const uint8_t* pixels, const ColorFromRgb& matrix, const ColorLines& lines,
                          int64_t count) {
        Steps::template FromImage<Real, Channel>(pixels, matrix, lines, 0, count);
    }

    static ColorKernels::ToImage ToImageOf(ImageDataKind kind, bool precise) {
        using namespace color_samples;
        switch (kind) {
        case ImageData_RGBA8: return precise ? &ToImage<double, ByteChannel> : &ToImage<float, ByteChannel>;
        case ImageData_RGBA16: return precise ? &ToImage<double, WordChannel> : &ToImage<float, WordChannel>;
        case ImageData_RGBAHalf: return &ToImage<double, HalfChannel>;
        case ImageData_RGBAFloat: return &ToImage<double, FloatChannel>;
        }
        return nullptr;
    }

    static ColorKernels::FromImage FromImageOf(ImageDataKind kind, bool precise) {
        using namespace color_samples;
        switch (kind) {
        case ImageData_RGBA8:
            return precise ? &FromImage<double, ByteChannel> : &FromImage<float, ByteChannel>;
        case ImageData_RGBA16:
            return precise ? &FromImage<double, WordChannel> : &FromImage<float, WordChannel>;
        case ImageData_RGBAHalf: return &FromImage<double, HalfChannel>;
        case ImageData_RGBAFloat: return &FromImage<double, FloatChannel>;
        }
        return nullptr;
    }

    /// The table of these stages.
    static constexpr ColorKernels Kernels(int64_t target) {
        return {
            .target = target,
            .packings = {{
                {UnpackPairs<uint8_t, false>, PackPairs<uint8_t, false>},
                {UnpackPairs<uint16_t, false>, PackPairs<uint16_t, false>},
                {UnpackPairs<uint8_t, true>, PackPairs<uint8_t, true>},
                {UnpackPairs<uint16_t, true>, PackPairs<uint16_t, true>},
                {UnpackPairsTens, PackPairsTens},
                {UnpackQuads<uint8_t, QuadOrder::CbYCrA>, PackQuads<uint8_t, QuadOrder::CbYCrA>},
                {UnpackQuads<uint8_t, QuadOrder::AYCbCr>, PackQuads<uint8_t, QuadOrder::AYCbCr>},
                {UnpackQuads<uint16_t, QuadOrder::AYCbCr>, PackQuads<uint16_t, QuadOrder::AYCbCr>},
                {UnpackQuads<float, QuadOrder::AYCbCr>, PackQuads<float, QuadOrder::AYCbCr>},
                {UnpackQuadTens, PackQuadTens},
                {UnpackSemiPlanar, PackSemiPlanar},
                {UnpackPlanar<uint8_t>, PackPlanar<uint8_t>},
                {UnpackPlanar<uint16_t>, PackPlanar<uint16_t>},
            }},
            .upsample = Upsample,
            .downsample = Downsample,
            .blend = Blend,
            .blendBytes = BlendBytes,
            .bytesToImage = BytesToImage,
            .toImage = ToImageOf,
            .fromImage = FromImageOf,
        };
    }

private:
    /// Words of ten-bit samples in whole groups of six pixels: 4 words, 12 samples.
    static int64_t TensWords(int64_t count) { return (count + 5) / 6 * 4; }

    /// Fills the last group behind element `count` with black.
    static void PadTens(const ColorRange& range, uint16_t* samples, int64_t count) {
        for (int64_t i = 2 * count; i < 3 * TensWords(count); ++i)
            samples[i] = static_cast<uint16_t>(i % 2 == 0 ? range.zero : range.black);
    }

    /// Chroma pairs to `count` luma samples of a plane.
    static int64_t PairsOf(int64_t count) { return (count + 1) / 2; }
};
