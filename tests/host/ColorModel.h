#pragma once

#include "host/ColorConvert.h"
#include "host/Half.h"
#include "host/Image.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <vector>

/// A model of the colour conversions in double precision, written from the description of the layouts alone.
/// It takes samples and pixels one at a time, by coordinates.
namespace color_model {

enum class Elements { Byte, Word, Float, Three10, Shifted10 };
enum class Arrangement { String, Quad, Planes, TwoPlanes };
enum class Codes { Video, Full, ZeroBased, Fraction };

struct Layout {
    ColorLayout code;
    const char* name;
    Arrangement arrangement;
    Elements elements;
    Codes codes;
    int bits;
    int across;                  ///< pixels that share a chroma sample
    int down;                    ///< the same
    std::array<int, 4> position; ///< of Y, Cb, Cr, A among a pixel's elements, or of a string; -1 none
};

constexpr auto string2 = std::array{1, 0, 0, -1};
constexpr auto string3 = std::array{1, 0, 0, 2};
constexpr auto cbFirst = std::array{1, 0, 2, 3};
constexpr auto alphaFirst = std::array{1, 2, 3, 0};
constexpr auto planar = std::array{0, 0, 0, -1};

inline const std::vector<Layout> layouts = {
    {ColorLayout_2vuy, "2vuy", Arrangement::String, Elements::Byte, Codes::Video, 8, 2, 1, string2},
    {ColorLayout_uyvy, "uyvy", Arrangement::String, Elements::Byte, Codes::Video, 8, 2, 1, string2},
    {ColorLayout_v210, "v210", Arrangement::String, Elements::Three10, Codes::Video, 10, 2, 1, string2},
    {ColorLayout_v216, "v216", Arrangement::String, Elements::Word, Codes::Video, 16, 2, 1, string2},
    {ColorLayout_yv8u, "yv8u", Arrangement::String, Elements::Byte, Codes::Video, 8, 2, 1, string3},
    {ColorLayout_yv16, "yv16", Arrangement::String, Elements::Word, Codes::Video, 16, 2, 1, string3},
    {ColorLayout_v408, "v408", Arrangement::Quad, Elements::Byte, Codes::Video, 8, 1, 1, cbFirst},
    {ColorLayout_r408, "r408", Arrangement::Quad, Elements::Byte, Codes::ZeroBased, 8, 1, 1, alphaFirst},
    {ColorLayout_y416, "y416", Arrangement::Quad, Elements::Word, Codes::Video, 16, 1, 1, alphaFirst},
    {ColorLayout_r4fl, "r4fl", Arrangement::Quad, Elements::Float, Codes::Fraction, 8, 1, 1, alphaFirst},
    {ColorLayout_v410, "v410", Arrangement::Quad, Elements::Shifted10, Codes::Video, 10, 1, 1, {1, 0, 2, -1}},
    {ColorLayout_nv12, "nv12", Arrangement::TwoPlanes, Elements::Byte, Codes::Video, 8, 2, 2, planar},
    {ColorLayout_yuv420p, "yuv420p", Arrangement::Planes, Elements::Byte, Codes::Video, 8, 2, 2, planar},
    {ColorLayout_yuv422p, "yuv422p", Arrangement::Planes, Elements::Byte, Codes::Video, 8, 2, 1, planar},
    {ColorLayout_yuv422p10, "yuv422p10", Arrangement::Planes, Elements::Word, Codes::Video, 10, 2, 1, planar},
    {ColorLayout_yuvj420p, "yuvj420p", Arrangement::Planes, Elements::Byte, Codes::Full, 8, 2, 2, planar},
    {ColorLayout_yuvj422p, "yuvj422p", Arrangement::Planes, Elements::Byte, Codes::Full, 8, 2, 1, planar},
    {ColorLayout_yuvj422p10, "yuvj422p10", Arrangement::Planes, Elements::Word, Codes::Full, 10, 2, 1,
     planar},
};

inline void PrintTo(const Layout& layout, std::ostream* out) { *out << layout.name; }

inline const Layout& LayoutOf(ColorLayout code) {
    return *std::find_if(layouts.begin(), layouts.end(), [&](const Layout& l) { return l.code == code; });
}

inline int BytesOf(Elements elements) {
    switch (elements) {
    case Elements::Byte: return 1;
    case Elements::Word: return 2;
    case Elements::Float:
    case Elements::Three10:
    case Elements::Shifted10: return 4;
    }
    return 0;
}

// ---------------------------------------------------------------------------------------------------------
// Buffers

enum Component { Luma, Cb, Cr, Alpha };

/// Planes in memory, which somebody else owns.
struct Buffer {
    const Layout* layout;
    int width;
    int height;
    int rowBytes;
    std::array<uint8_t*, 3> planes;

    int ChromaWidth() const { return (width + layout->across - 1) / layout->across; }
    int ChromaHeight() const { return (height + layout->down - 1) / layout->down; }
    int PlaneRowBytes(int plane) const {
        return plane > 0 && layout->arrangement == Arrangement::Planes ? rowBytes / 2 : rowBytes;
    }
};

/// Bytes that a row of the first plane takes, with whole pairs.
inline int LeastRowBytes(const Layout& layout, int width) {
    const int even = (width + 1) / 2 * 2;
    switch (layout.arrangement) {
    case Arrangement::String:
        if (layout.elements == Elements::Three10) return (width + 5) / 6 * 16;
        return even * BytesOf(layout.elements) * (layout.position[Alpha] >= 0 ? 3 : 2);
    case Arrangement::Quad:
        return width * (layout.elements == Elements::Shifted10 ? 1 : 4) * BytesOf(layout.elements);
    case Arrangement::Planes:
    case Arrangement::TwoPlanes: break;
    }
    return even * BytesOf(layout.elements);
}

inline int PlaneCount(const Layout& layout) {
    return layout.arrangement == Arrangement::Planes      ? 3
           : layout.arrangement == Arrangement::TwoPlanes ? 2
                                                          : 1;
}

/// Element `n` of a row, as a code.
inline double Element(Elements elements, const uint8_t* row, int n) {
    switch (elements) {
    case Elements::Byte: return row[n];
    case Elements::Word: return row[2 * n] + 256 * row[2 * n + 1];
    case Elements::Float: {
        float value;
        std::memcpy(&value, row + 4 * n, sizeof value);
        return value;
    }
    case Elements::Three10:
    case Elements::Shifted10: break;
    }
    const bool shifted = elements == Elements::Shifted10;
    const uint8_t* bytes = row + n / 3 * 4;
    const uint32_t word = static_cast<uint32_t>(bytes[0]) | static_cast<uint32_t>(bytes[1]) << 8 |
                          static_cast<uint32_t>(bytes[2]) << 16 | static_cast<uint32_t>(bytes[3]) << 24;
    return word >> (n % 3 * 10 + (shifted ? 2 : 0)) & 1023;
}

/// The code of a component at its own coordinates: those of chroma count chroma samples.
inline double CodeAt(const Buffer& buffer, Component component, int x, int y) {
    const Layout& layout = *buffer.layout;
    const int position = layout.position[component];
    const bool chroma = component == Cb || component == Cr;
    const auto row = [&](int plane) {
        return buffer.planes[static_cast<size_t>(plane)] + int64_t{y} * buffer.PlaneRowBytes(plane);
    };
    switch (layout.arrangement) {
    case Arrangement::String: {
        const int step = layout.position[Alpha] >= 0 ? 3 : 2;
        const int element = chroma ? 2 * x + (component == Cr) : x;
        return Element(layout.elements, row(0), step * element + position);
    }
    case Arrangement::Quad: {
        const int step = layout.elements == Elements::Shifted10 ? 3 : 4;
        return Element(layout.elements, row(0), step * x + position);
    }
    case Arrangement::TwoPlanes:
        if (chroma) return Element(layout.elements, row(1), 2 * x + (component == Cr));
        break;
    case Arrangement::Planes:
        if (chroma) return Element(layout.elements, row(component == Cb ? 1 : 2), x);
        break;
    }
    return Element(layout.elements, row(0), x);
}

// ---------------------------------------------------------------------------------------------------------
// Meaning of codes: black and white of luma are 0 and 1, chroma runs from -1/2 to 1/2

struct Meaning {
    double black, lumaSpan, zero, chromaSpan, opaque;
    double lumaLeast, lumaMost, chromaLeast, chromaMost; ///< of written codes
};

inline Meaning MeaningOf(const Layout& layout) {
    const double most = std::ldexp(1, layout.bits) - 1;
    const double step = std::ldexp(1, layout.bits - 8);
    const double reserved = layout.bits == 8 ? 1 : layout.bits == 10 ? 4 : 0;
    constexpr double unlimited = 1e300;
    switch (layout.codes) {
    case Codes::Video: break;
    case Codes::Full: return {0, most, 128 * step, most, most, 0, most, 0, most};
    case Codes::ZeroBased: return {0, 219, 128, 224, 255, 0, 238, 1, 254};
    // Grey is the float nearest to 128/255, so that grey and black have no trace of colour.
    case Codes::Fraction:
        return {0, 219 / 255., 128 / 255.f, 224 / 255., 1, -unlimited, unlimited, -unlimited, unlimited};
    }
    return {16 * step, 219 * step,      128 * step, 224 * step,     most,
            reserved,  most - reserved, reserved,   most - reserved};
}

struct Matrix {
    double kr, kb;
    double Green() const { return 1 - kr - kb; }
};
inline Matrix MatrixOf(int selector) {
    return selector == 0 || selector == 2 ? Matrix{0.299, 0.114} : Matrix{0.2126, 0.0722};
}

/// R, G, B, A with white at 1.
using Rgba = std::array<double, 4>;

// ---------------------------------------------------------------------------------------------------------
// Reading

/// Chroma between samples along a row: even pixels stand on a sample.
inline double ChromaInRow(const Buffer& buffer, Component component, int x, int chromaRow) {
    if (buffer.layout->across == 1) return CodeAt(buffer, component, x, chromaRow);
    const double left = CodeAt(buffer, component, x / 2, chromaRow);
    if (x % 2 == 0) return left;
    return (left + CodeAt(buffer, component, std::min(x / 2 + 1, buffer.ChromaWidth() - 1), chromaRow)) / 2;
}

/// Chroma between rows: a chroma row stands in the middle of its two luma rows.
inline double ChromaAt(const Buffer& buffer, Component component, int x, int y) {
    if (buffer.layout->down == 1) return ChromaInRow(buffer, component, x, y);
    const int other = std::clamp(y / 2 + (y % 2 == 0 ? -1 : 1), 0, buffer.ChromaHeight() - 1);
    return 0.75 * ChromaInRow(buffer, component, x, y / 2) + 0.25 * ChromaInRow(buffer, component, x, other);
}

/// The pixel at column `x` of row `y` from the top.
inline Rgba PixelOf(const Buffer& buffer, int selector, int x, int y) {
    const Meaning meaning = MeaningOf(*buffer.layout);
    const Matrix matrix = MatrixOf(selector);
    const double luma = (CodeAt(buffer, Luma, x, y) - meaning.black) / meaning.lumaSpan;
    const double cb = (ChromaAt(buffer, Cb, x, y) - meaning.zero) / meaning.chromaSpan;
    const double cr = (ChromaAt(buffer, Cr, x, y) - meaning.zero) / meaning.chromaSpan;
    const double red = luma + 2 * (1 - matrix.kr) * cr;
    const double blue = luma + 2 * (1 - matrix.kb) * cb;
    const double green = (luma - matrix.kr * red - matrix.kb * blue) / matrix.Green();
    const bool hasAlpha = buffer.layout->position[Alpha] >= 0;
    return {red, green, blue, hasAlpha ? CodeAt(buffer, Alpha, x, y) / meaning.opaque : 1};
}

// ---------------------------------------------------------------------------------------------------------
// Images

/// The pixel that is stored at column `x` of row `y` from the top.
inline Rgba StoredPixel(const Image& image, int x, int y) {
    const uint8_t* data = image.RowTable[image.Height - 1 - y] + int64_t{x} * image.PixelStride;
    Rgba pixel;
    for (int c = 0; c < 4; ++c) {
        uint16_t word;
        float real;
        switch (image.DataFormat->Kind) {
        case ImageData_RGBA8: pixel[static_cast<size_t>(c)] = data[c] / 255.; break;
        case ImageData_RGBAFloat:
            std::memcpy(&real, data + 4 * c, sizeof real);
            pixel[static_cast<size_t>(c)] = real;
            break;
        default:
            std::memcpy(&word, data + 2 * c, sizeof word);
            pixel[static_cast<size_t>(c)] =
                image.DataFormat->Kind == ImageData_RGBA16 ? word / 65535. : HalfToFloat(word);
        }
    }
    return pixel;
}

/// Distance of a stored channel from the exact value, in steps of the image's kind about that value. A little
/// over half a step is what rounding to nearest leaves.
inline double StepsApart(uint32_t kind, double stored, double exact) {
    if (kind == ImageData_RGBA8 || kind == ImageData_RGBA16) {
        const double white = kind == ImageData_RGBA8 ? 255 : 65535;
        return std::fabs(stored - std::clamp(exact, 0., 1.)) * white;
    }
    const int digits = kind == ImageData_RGBAHalf ? 10 : 23;
    // Below 1/16 the steps are finer than what the samples of any layout tell apart.
    const int exponent = std::ilogb(std::max(std::fabs(exact), 1. / 16));
    return std::fabs(stored - exact) / std::ldexp(1, exponent - digits);
}

// ---------------------------------------------------------------------------------------------------------
// Writing

inline double Sane(double channel) { return std::isnan(channel) ? 0 : std::clamp(channel, -65504., 65504.); }

/// Exact code of a component of one pixel, not limited.
inline double CodeOfPixel(const Image& image, const Layout& layout, int selector, Component component, int x,
                          int y) {
    const Rgba stored = StoredPixel(image, x, y);
    const double red = Sane(stored[0]), green = Sane(stored[1]), blue = Sane(stored[2]);
    const Meaning meaning = MeaningOf(layout);
    const Matrix matrix = MatrixOf(selector);
    const double luma = matrix.kr * red + matrix.Green() * green + matrix.kb * blue;
    switch (component) {
    case Luma: return meaning.black + meaning.lumaSpan * luma;
    case Cb: return meaning.zero + meaning.chromaSpan * (blue - luma) / (2 * (1 - matrix.kb));
    case Cr: return meaning.zero + meaning.chromaSpan * (red - luma) / (2 * (1 - matrix.kr));
    case Alpha: break;
    }
    return meaning.opaque * Sane(stored[3]);
}

/// Exact code of a component at its own coordinates, filtered and limited.
inline double WrittenCode(const Image& image, const Buffer& buffer, int selector, Component component, int x,
                          int y) {
    const Layout& layout = *buffer.layout;
    const Meaning meaning = MeaningOf(layout);
    const auto code = [&](int column, int row) {
        return CodeOfPixel(image, layout, selector, component, std::clamp(column, 0, buffer.width - 1),
                           std::min(row, buffer.height - 1));
    };
    if (component == Luma) return std::clamp(code(x, y), meaning.lumaLeast, meaning.lumaMost);
    if (component == Alpha)
        return layout.codes == Codes::Fraction ? code(x, y) : std::clamp(code(x, y), 0., meaning.opaque);
    const auto chroma = [&](int column, int row) { return std::clamp(code(column, row), -0x1p20, 0x1p20); };
    const auto inRow = [&](int row) {
        if (layout.across == 1) return chroma(x, row);
        return (chroma(2 * x - 1, row) + 2 * chroma(2 * x, row) + chroma(2 * x + 1, row)) / 4;
    };
    const double value = layout.down == 1 ? inRow(y) : (inRow(2 * y) + inRow(2 * y + 1)) / 2;
    return std::clamp(value, meaning.chromaLeast, meaning.chromaMost);
}

} // namespace color_model
