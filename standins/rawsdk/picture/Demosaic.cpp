#include "rawsdk/picture/Demosaic.h"

#include <algorithm>
#include <memory>

namespace rawsdk {

namespace {

constexpr int reach = 2; ///< samples that a colour looks to each side

uint16_t ToColor(int sum) { return static_cast<uint16_t>(std::clamp(sum, 0, static_cast<int>(mostColor))); }

/// Five rows about the one that is interpolated.
struct Window {
    const int16_t* rows[2 * reach + 1];

    int At(int dx, int dy, uint32_t x) const { return rows[reach + dy][static_cast<ptrdiff_t>(x) + dx]; }
    int Sides(uint32_t x) const { return At(-1, 0, x) + At(1, 0, x); }
    int Ends(uint32_t x) const { return At(0, -1, x) + At(0, 1, x); }
    int FarSides(uint32_t x) const { return At(-2, 0, x) + At(2, 0, x); }
    int FarEnds(uint32_t x) const { return At(0, -2, x) + At(0, 2, x); }
    int Corners(uint32_t x) const { return At(-1, -1, x) + At(1, -1, x) + At(-1, 1, x) + At(1, 1, x); }
};

// Each in sixteenths of a sample.

/// Green where red or blue is.
int GreenAcross(const Window& window, uint32_t x) {
    return 8 * window.At(0, 0, x) + 4 * (window.Sides(x) + window.Ends(x)) -
           2 * (window.FarSides(x) + window.FarEnds(x));
}

/// The other colour of a green's own row.
int FromSides(const Window& window, uint32_t x) {
    return 10 * window.At(0, 0, x) + 8 * window.Sides(x) - 2 * (window.Corners(x) + window.FarSides(x)) +
           window.FarEnds(x);
}

/// The other colour of the rows about a green's.
int FromEnds(const Window& window, uint32_t x) {
    return 10 * window.At(0, 0, x) + 8 * window.Ends(x) - 2 * (window.Corners(x) + window.FarEnds(x)) +
           window.FarSides(x);
}

/// Blue where red is, and red where blue is.
int FromCorners(const Window& window, uint32_t x) {
    return 12 * window.At(0, 0, x) + 4 * window.Corners(x) - 3 * (window.FarSides(x) + window.FarEnds(x));
}

/// Interpolates a row.
/// @param own, other  rows of the plane of the row's own colour, red or blue, and of the other one
/// @param ownColumn   0 or 1: the first column in which the row has its own colour
void DemosaicRow(const Window& window, uint32_t width, uint32_t ownColumn, uint16_t* own, uint16_t* green,
                 uint16_t* other) {
    for (uint32_t x = ownColumn; x < width; x += 2) {
        own[x] = ToColor(window.At(0, 0, x) * static_cast<int>(stepsPerSample));
        green[x] = ToColor(GreenAcross(window, x));
        other[x] = ToColor(FromCorners(window, x));
    }
    for (uint32_t x = 1 - ownColumn; x < width; x += 2) {
        own[x] = ToColor(FromSides(window, x));
        green[x] = ToColor(window.At(0, 0, x) * static_cast<int>(stepsPerSample));
        other[x] = ToColor(FromEnds(window, x));
    }
}

/// Samples outside of the picture go on from the two nearest ones of their colour as these go on. Four in a
/// row are there always.
int16_t Beyond(int nearest, int next) { return static_cast<int16_t>(2 * nearest - next); }

/// Copies a row of the picture, or makes one at most `reach` outside of it.
void CopyRow(const uint16_t* samples, uint32_t width, uint32_t height, int64_t row, int16_t* copy) {
    const auto rowAt = [&](int64_t index) { return samples + index * int64_t{width}; };
    if (row >= 0 && row < height) {
        std::copy_n(rowAt(row), width, copy);
        return;
    }
    const int inwards = row < 0 ? 2 : -2;
    const uint16_t* const nearest = rowAt(row + inwards);
    const uint16_t* const next = rowAt(row + 2 * inwards);
    for (uint32_t x = 0; x < width; ++x)
        copy[x] = Beyond(nearest[x], next[x]);
}

/// Makes the `reach` samples on both sides of a row.
void ExtendRow(int16_t* row, uint32_t width) {
    for (int i = 1; i <= reach; ++i) {
        int16_t* const left = row - i;
        int16_t* const right = row + width - 1 + i;
        *left = Beyond(left[2], left[4]);
        *right = Beyond(right[-2], right[-4]);
    }
}

} // namespace

void Demosaic(const uint16_t* samples, const PlanarPicture& picture, uint32_t firstRow, uint32_t rows) {
    const size_t stride = size_t{picture.width} + 2 * reach;
    const auto padded = std::make_unique_for_overwrite<int16_t[]>(stride * (size_t{rows} + 2 * reach));
    const auto paddedRow = [&](size_t index) { return &padded[index * stride + reach]; };
    for (uint32_t i = 0; i < rows + 2 * reach; ++i) {
        CopyRow(samples, picture.width, picture.height, int64_t{firstRow} + i - reach, paddedRow(i));
        ExtendRow(paddedRow(i), picture.width);
    }
    for (uint32_t i = 0; i < rows; ++i) {
        const Window window = {
            {paddedRow(i), paddedRow(i + 1), paddedRow(i + 2), paddedRow(i + 3), paddedRow(i + 4)}};
        const uint32_t row = firstRow + i;
        const uint32_t isBlue = row & 1;
        DemosaicRow(window, picture.width, isBlue, picture.Row(isBlue != 0 ? 2 : 0, row), picture.Row(1, row),
                    picture.Row(isBlue != 0 ? 0 : 2, row));
    }
}

} // namespace rawsdk
