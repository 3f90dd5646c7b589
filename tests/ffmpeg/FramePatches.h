#pragma once

#include "ffmpeg/FrameTestSupport.h"

#include <cmath>
#include <ostream>

/// Frames of patches of one colour each, so that filters of chroma have no say at their middles, and what
/// colours these are in double precision.
namespace frame_patches {

inline constexpr int patchSize = 16;
inline constexpr int across = 12;
inline constexpr int down = 6;
inline constexpr int width = across * patchSize;
inline constexpr int height = down * patchSize;

/// A format and what its frame says of its colours.
struct Format {
    AVPixelFormat format;
    AVColorRange range = AVCOL_RANGE_MPEG;
    AVColorSpace matrix = AVCOL_SPC_BT709;

    const AVPixFmtDescriptor& Descriptor() const { return *av_pix_fmt_desc_get(format); }
    int Components() const { return Descriptor().nb_components; }
    bool IsFull() const { return range == AVCOL_RANGE_JPEG; }
    bool HasPalette() const { return (Descriptor().flags & AV_PIX_FMT_FLAG_PAL) != 0; }
    bool IsRgb() const { return (Descriptor().flags & AV_PIX_FMT_FLAG_RGB) != 0; }
    bool HasAlpha() const { return Components() % 2 == 0; }
};

inline void PrintTo(const Format& format, std::ostream* out) {
    *out << format.Descriptor().name << ", range " << format.range << ", matrix " << format.matrix;
}

/// R, G, B, A with white at 1.
using Color = std::array<double, 4>;

/// A code of each component.
using Codes = std::array<uint16_t, 4>;

/// Share of red and blue in luma.
struct LumaShares {
    double red;
    double blue;
    double Green() const { return 1 - red - blue; }
};

/// Recommendations ITU-R BT.709, BT.601 and BT.2020, SMPTE ST 240, and the FCC's rules of 1953.
inline LumaShares SharesOf(AVColorSpace matrix) {
    switch (matrix) {
    case AVCOL_SPC_BT470BG:
    case AVCOL_SPC_SMPTE170M: return {0.299, 0.114};
    case AVCOL_SPC_FCC: return {0.30, 0.11};
    case AVCOL_SPC_SMPTE240M: return {0.212, 0.087};
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL: return {0.2627, 0.0593};
    default: return {0.2126, 0.0722};
    }
}

/// The code that stands for 0 in a component, and how many there are from there to 1: luma, alpha and
/// channels run from 0 to 1, colour differences from -1/2 to 1/2.
struct Scale {
    double zero;
    double span;
};

inline Scale ScaleOf(const Format& format, int component) {
    const int depth = format.Descriptor().comp[component].depth;
    const double most = (1 << depth) - 1;
    const double step = std::ldexp(1, depth - 8);
    const bool isAlpha = format.HasAlpha() && component == format.Components() - 1;
    if (isAlpha || format.IsRgb()) return {0, most};
    if (component > 0) return {128 * step, format.IsFull() ? most : 224 * step};
    return format.IsFull() ? Scale{0, most} : Scale{16 * step, 219 * step};
}

/// The codes of a colour, neither rounded nor limited; full-range chroma may exceed what there is by half.
inline std::array<double, 4> ExactCodesOf(const Format& format, const Color& color) {
    const LumaShares shares = SharesOf(format.matrix);
    const double luma = shares.red * color[0] + shares.Green() * color[1] + shares.blue * color[2];
    std::array<double, 4> values = {luma, (color[2] - luma) / (2 * (1 - shares.blue)),
                                    (color[0] - luma) / (2 * (1 - shares.red)), color[3]};
    if (format.IsRgb()) values = color;
    if (format.Components() == 2) values[1] = color[3];
    for (int c = 0; c < format.Components(); ++c) {
        const Scale scale = ScaleOf(format, c);
        double& value = values[static_cast<size_t>(c)];
        value = scale.zero + scale.span * value;
    }
    return values;
}

/// The codes nearest to a colour.
inline Codes CodesOf(const Format& format, const Color& color) {
    const std::array<double, 4> exact = ExactCodesOf(format, color);
    Codes codes = {};
    for (size_t c = 0; c < static_cast<size_t>(format.Components()); ++c) {
        const double most = (1 << format.Descriptor().comp[c].depth) - 1;
        codes[c] = static_cast<uint16_t>(std::lround(std::clamp(exact[c], 0., most)));
    }
    return codes;
}

/// The colour that codes mean.
inline Color ColorOf(const Format& format, const Codes& codes) {
    std::array<double, 4> values = {0, 0, 0, 1};
    for (int c = 0; c < format.Components(); ++c) {
        const Scale scale = ScaleOf(format, c);
        values[static_cast<size_t>(c)] = (codes[static_cast<size_t>(c)] - scale.zero) / scale.span;
    }
    if (format.IsRgb()) return values;
    if (format.Components() <= 2) return {values[0], values[0], values[0], format.HasAlpha() ? values[1] : 1};
    const LumaShares shares = SharesOf(format.matrix);
    const double red = values[0] + 2 * (1 - shares.red) * values[2];
    const double blue = values[0] + 2 * (1 - shares.blue) * values[1];
    return {red, (values[0] - shares.red * red - shares.blue * blue) / shares.Green(), blue, values[3]};
}

/// A frame of patches and the codes in each.
struct Patches {
    TestFrame frame;
    std::vector<Codes> codes;
};

inline size_t PatchAt(int x, int y) { return static_cast<size_t>(y / patchSize * across + x / patchSize); }

/// A palette of random opaque colours: bytes B G R A.
inline void FillPalette(AVFrame& frame, std::mt19937& random) {
    for (int i = 0; i < AVPALETTE_SIZE; ++i)
        frame.data[1][i] = i % 4 == 3 ? 255 : static_cast<uint8_t>(random());
}

/// Black, white, and other colours at random; of a palette each patch has the next colour.
inline Patches MakePatches(const Format& format, std::mt19937& random) {
    Patches patches = {MakeTestFrame(format.format, width, height), {}};
    patches.frame->color_range = format.range;
    patches.frame->colorspace = format.matrix;
    std::uniform_real_distribution<double> channel(0, 1);
    for (uint16_t i = 0; i < across * down; ++i) {
        const double low = i == 0 ? 0 : channel(random);
        const Color other = {channel(random), channel(random), channel(random), channel(random)};
        const Color color = i < 2 ? Color{double(i), double(i), double(i), low} : other;
        patches.codes.push_back(format.HasPalette() ? Codes{i} : CodesOf(format, color));
    }
    if (format.HasPalette()) FillPalette(*patches.frame, random);
    FillFrame(*patches.frame, [&](int component, int x, int y) {
        return patches.codes[PatchAt(x, y)][static_cast<size_t>(component)];
    });
    return patches;
}

} // namespace frame_patches
