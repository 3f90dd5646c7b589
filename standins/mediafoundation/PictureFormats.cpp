#include "mediafoundation/PictureFormats.h"

#include <algorithm>

namespace mediafoundation {

namespace {

constexpr int luma = 0;
constexpr int cb = 1;
constexpr int cr = 2;

uint8_t* CopyRows(const Picture& picture, int plane, uint8_t* bytes) {
    return std::copy_n(picture.Row(plane, 0), picture.PlaneWidth(plane) * picture.PlaneHeight(plane), bytes);
}

const uint8_t* CopyRows(const uint8_t* bytes, Picture& picture, int plane) {
    const size_t size = picture.PlaneWidth(plane) * picture.PlaneHeight(plane);
    std::copy_n(bytes, size, picture.Row(plane, 0));
    return bytes + size;
}

/// Planes one behind the other.
template <int First, int Second>
void PackPlanes(const Picture& picture, uint8_t* bytes) {
    bytes = CopyRows(picture, luma, bytes);
    bytes = CopyRows(picture, First, bytes);
    CopyRows(picture, Second, bytes);
}

template <int First, int Second>
void UnpackPlanes(const uint8_t* bytes, Picture& picture) {
    bytes = CopyRows(bytes, picture, luma);
    bytes = CopyRows(bytes, picture, First);
    CopyRows(bytes, picture, Second);
}

/// Luma, and pairs of Cb and Cr behind it.
void PackPairs(const Picture& picture, uint8_t* bytes) {
    bytes = CopyRows(picture, luma, bytes);
    const size_t count = picture.PlaneWidth(cb) * picture.PlaneHeight(cb);
    for (size_t i = 0; i < count; ++i) {
        bytes[2 * i] = picture.Row(cb, 0)[i];
        bytes[2 * i + 1] = picture.Row(cr, 0)[i];
    }
}

void UnpackPairs(const uint8_t* bytes, Picture& picture) {
    bytes = CopyRows(bytes, picture, luma);
    const size_t count = picture.PlaneWidth(cb) * picture.PlaneHeight(cb);
    for (size_t i = 0; i < count; ++i) {
        picture.Row(cb, 0)[i] = bytes[2 * i];
        picture.Row(cr, 0)[i] = bytes[2 * i + 1];
    }
}

/// Y Cb Y Cr: each row of chroma serves two rows of luma.
void PackYUY2(const Picture& picture, uint8_t* bytes) {
    for (size_t y = 0; y < picture.Height(); ++y) {
        const uint8_t* lumaRow = picture.Row(luma, y);
        const uint8_t* cbRow = picture.Row(cb, y / 2);
        const uint8_t* crRow = picture.Row(cr, y / 2);
        for (size_t x = 0; x < picture.Width() / 2; ++x, bytes += 4) {
            bytes[0] = lumaRow[2 * x];
            bytes[1] = cbRow[x];
            bytes[2] = lumaRow[2 * x + 1];
            bytes[3] = crRow[x];
        }
    }
}

uint8_t Mean(uint8_t a, uint8_t b) { return static_cast<uint8_t>((a + b + 1) / 2); }

/// The chroma of two rows is averaged.
void UnpackYUY2(const uint8_t* bytes, Picture& picture) {
    const size_t rowBytes = 2 * size_t{picture.Width()};
    for (size_t y = 0; y < picture.Height(); ++y) {
        uint8_t* row = picture.Row(luma, y);
        for (size_t x = 0; x < picture.Width(); ++x)
            row[x] = bytes[y * rowBytes + 2 * x];
    }
    for (size_t y = 0; y < picture.Height() / 2; ++y) {
        const uint8_t* upper = bytes + 2 * y * rowBytes;
        const uint8_t* lower = upper + rowBytes;
        for (size_t x = 0; x < picture.Width() / 2; ++x) {
            picture.Row(cb, y)[x] = Mean(upper[4 * x + 1], lower[4 * x + 1]);
            picture.Row(cr, y)[x] = Mean(upper[4 * x + 3], lower[4 * x + 3]);
        }
    }
}

/// A subtype is made of its four characters, the first one lowest.
constexpr GUID SubtypeOf(const char (&code)[5]) {
    GUID subtype = MFMediaType_Video;
    subtype.Data1 = 0;
    for (int i = 3; i >= 0; --i)
        subtype.Data1 = subtype.Data1 << 8 | static_cast<uint8_t>(code[i]);
    return subtype;
}
static_assert(SubtypeOf("YUY2") == MFVideoFormat_YUY2);

constexpr PictureFormat formats[] = {
    {SubtypeOf("NV12"), 3, PackPairs, UnpackPairs},
    {SubtypeOf("YV12"), 3, PackPlanes<cr, cb>, UnpackPlanes<cr, cb>},
    {SubtypeOf("IYUV"), 3, PackPlanes<cb, cr>, UnpackPlanes<cb, cr>},
    {MFVideoFormat_YUY2, 4, PackYUY2, UnpackYUY2},
};

} // namespace

std::span<const PictureFormat> PictureFormats() { return formats; }

const PictureFormat* FindPictureFormat(REFGUID subtype) {
    const auto* const found = std::ranges::find(formats, subtype, &PictureFormat::subtype);
    return found != std::end(formats) ? found : nullptr;
}

} // namespace mediafoundation
