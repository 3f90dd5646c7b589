#pragma once

#include "host/Export.h"
#include "host/Object.h"
#include "host/ScriptVal.h"

#include <cstdint>
#include <memory>

class Image;

/// One pixel as the host's integer accessors see it: R, G, B, A, each 0..65535 whatever the image's depth.
struct Pixel {
    int32_t R;
    int32_t G;
    int32_t B;
    int32_t A;
};

/// One pixel as the host's floating-point accessors see it: 1.0 is white, 0.0 is black, nothing is clamped.
struct PixelFloat {
    float R;
    float G;
    float B;
    float A;
};

/// How an image stores its channels. The two floating-point kinds are 6 and 10.
enum ImageDataKind : uint32_t {
    ImageData_RGBA8 = 3,
    ImageData_RGBA16 = 5,
    ImageData_RGBAHalf = 6,
    ImageData_RGBAFloat = 10,
};

/// Describes the storage of an image's pixels. Shared constant data; never owned by the image.
struct ImageDataFormat {
    uint32_t Kind;          ///< an `ImageDataKind`
    uint32_t BytesPerPixel; ///< bytes of one pixel: 4 for 8-bit, 8 for 16-bit and half, 16 for float
};

/// Attributes of an image.
enum ImageTag : Tag {
    ImageTag_Interlaced = 0x1002000f, ///< int32: not 0 if the rows are of two fields; default 0
};

/// Progress data that a caller may hand to `Image::DoMultiProcess`; the stand-alone host reads none of it.
struct ImgMPData;

/// The host's frame object: four interleaved channels R, G, B, A, rows kept bottom row first.
///
/// Different rows of one image may be read and written from different threads at the same time.
class CORVEX_HOST_API Image : public RefObject {
public:
    /// Reads or writes one pixel. `data` is the pixel's address in the main data and `aux` its address in
    /// the second data block; both may be 0. With a null `data`, and on an image without main data, where
    /// `data` is a mere offset, the stand-alone host's accessors read transparent black and write nothing.
    using GetPixelFunction = void (*)(Pixel& pixel, const uint8_t* data, const uint8_t* aux, Image* image);
    using SetPixelFunction = void (*)(const Pixel& pixel, uint8_t* data, uint8_t* aux, Image* image);
    using GetPixelFloatFunction = void (*)(PixelFloat& pixel, const uint8_t* data, const uint8_t* aux,
                                           Image* image);
    using SetPixelFloatFunction = void (*)(const PixelFloat& pixel, uint8_t* data, uint8_t* aux,
                                           Image* image);
    using RowFunction = void (*)(Image* image, void* context, int index);

    /// Makes an image with its pixel data, cleared to transparent black. Rows start at multiples of 64 bytes.
    ///
    /// @param width,height  in pixels, 0 or more; an image of no pixels is valid
    /// @return the image, which the caller gives back with `Free`, or null if a size is negative, the kind
    ///         is unknown or memory is short
    CORVEX_HOST_API static Image* Allocate(int32_t width, int32_t height, ImageDataKind kind);

    /// Frees an image made by `Allocate`, whatever its members hold by now, and sets the pointer to null;
    /// null is fine.
    CORVEX_HOST_API static void Free(Image*& image);

    /// Runs `fn(this, context, index)` for each index from 0 to `count` - 1, on several threads and in any
    /// order, and returns when all are done; what they wrote is visible to the caller then. With `count` of 0
    /// or less nothing runs. An exception that `fn` lets out keeps further calls from beginning and reaches
    /// the caller once those that run have ended; of several exceptions the first one does. The calls run in
    /// the caller's oneTBB arena, so that an arena or a `tbb::global_control` of the caller limits the number
    /// of threads; the calling thread is one of them.
    ///
    /// @param data,flag  carried for the host; null and false here
    /// @return true
    CORVEX_HOST_API bool DoMultiProcess(RowFunction fn, void* context, int count, ImgMPData* data, bool flag);

    /// Whether all four accessors are those that `Allocate` set for the image's `DataFormat`, so that a
    /// caller may work on the plain interleaved channels itself with the same results.
    CORVEX_HOST_API bool HasHostAccessors() const;

    /// Whether the pixels stand in memory as `Allocate` lays them out, with nothing between them, so that a
    /// caller may work on rows of interleaved channels with the results of the accessors.
    CORVEX_HOST_API bool HasPlainPixels() const;

    /// Knows `ImageTag_Interlaced`.
    CORVEX_HOST_API bool SetAttrsTagList(const TagList& tags) override;
    /// Knows `ImageTag_Interlaced`.
    CORVEX_HOST_API bool CopyAttr(Tag key, void* out) override;

    /// Whether the image has main pixel data: `RowTable` is neither null nor all ones.
    bool HasMainData() const {
        return RowTable != nullptr && reinterpret_cast<uintptr_t>(RowTable) != UINTPTR_MAX;
    }

    /// Address of row `row` (0 is the bottom row of the picture) in the main data; 0 without main data.
    uint8_t* RowAddress(int32_t row) const { return HasMainData() ? RowTable[row] : nullptr; }

    /// Address of row `row` in the second data block; 0 if there is none.
    uint8_t* AuxRowAddress(int32_t row) const { return AuxRowTable != nullptr ? AuxRowTable[row] : nullptr; }

    ScriptVal ImageInfo;             ///< table that rides with the frame; metadata under "Metadata"
    uint8_t** RowTable = nullptr;    ///< one address per row, bottom row first; null or all ones: none
    uint8_t** AuxRowTable = nullptr; ///< the same for the second data block; may be null
    int32_t Width = 0;               ///< pixels across
    int32_t Height = 0;              ///< rows
    const ImageDataFormat* DataFormat = nullptr; ///< how channels are stored
    int32_t PixelStride = 0;                     ///< bytes from one pixel to the next in the main data
    int32_t AuxPixelStride = 0;                  ///< the same in the second data block
    double XAspect = 1.0;                        ///< width of a pixel, in units of its own
    double YAspect = 1.0;                        ///< height of a pixel, in the same units
    /// Integer accessors. Reading: 8-bit values times 257; half and float are clamped to 0..1 and rounded to
    /// nearest, not-a-number is 0. Writing takes the low 16 bits of each channel: 16-bit images keep them,
    /// 8-bit images round to nearest, float images get the value divided by 65535 in single precision, and
    /// half images the half nearest to that quotient, ties to even.
    GetPixelFunction GetPixel = nullptr;
    SetPixelFunction SetPixel = nullptr;
    /// Floating-point accessors. Reading an integer image divides by 255 or 65535; writing to one clamps to
    /// 0..1, takes not-a-number as 0, and rounds to nearest. Half images round to nearest, ties to even.
    GetPixelFloatFunction GetPixelFloat = nullptr;
    SetPixelFloatFunction SetPixelFloat = nullptr;

private:
    Image() = default;
    ~Image() override;

    bool AllocateRows(int64_t rowBytes);

    void* pixelBlock_ = nullptr;       ///< the pixel memory, owned; `RowTable` points into it
    std::unique_ptr<uint8_t*[]> rows_; ///< the table that `RowTable` points at, owned
    int32_t interlaced_ = 0;           ///< `ImageTag_Interlaced`
};
