#pragma once

#include "framework/Export.h"

#include <cstdint>

class Image;

/// Moves pixels between an image and a blob: one contiguous buffer of packed rows, top row of the picture
/// first, in a packing that a FourCC names. RGB packings are converted here, row by row on the host's
/// threads; YUV packings go to the host's colour conversion. docs/pixel-formats.md lists the packings and
/// which operation takes which.
///
/// Any thread may call; one image or blob is for one call at a time, and the two must not share memory. An
/// image without pixels, also one of a negative size, converts nothing, successfully: no row size is too
/// small for it.
class PixelConvert {
public:
    /// Bytes of one row of `width` pixels; 0 for a code without a row size of its own. The width is not
    /// checked: the size is cut to 32 bits.
    CORVEX_API static int32_t CalcRowBytes(uint32_t fourCC, uint32_t width);

    /// Writes a blob's pixels into `image`, over the image's `Width` and `Height`.
    ///
    /// @param blob  `Height` rows of `rowBytes` bytes each (`rp16`: three such planes; `nv12`: these and half
    ///              as many chroma rows, rounded up); read-only, not kept
    /// @param rowBytes  bytes from one row to the next, below 2^31; at least what the pixels of the image's
    ///                  width take
    /// @return false, with the image unchanged, for an unknown code or a null image, and for an image with
    ///         pixels if the blob is null or the row size too small; true otherwise, also where the host's
    ///         colour conversion fails
    CORVEX_API static bool BlobToImage(uint8_t* blob, uint32_t rowBytes, uint32_t fourCC, Image*& image);

    /// Writes the image's pixels into `blob`. Bytes between the last pixel of a row and the next row are left
    /// as they are.
    ///
    /// @param rowBytes  bytes from one row to the next, 0 or more; at least what the pixels of the image's
    ///                  width take
    /// @param blob  at least `Height` times `rowBytes` bytes; null asks for a buffer of that size, aligned to
    ///              32 bytes and of no rows for a negative `Height`, which then belongs to the caller, also
    ///              on failure, and is freed with `Platform::FreeMemAligned`. After success the bytes of such
    ///              a buffer that no pixel takes are 0; after failure it holds anything.
    /// @param flag  handed to the host's colour conversion; no effect on RGB packings
    /// @return false, with no pixel written, for an unknown code, a null image or a failed allocation, and
    ///         for an image with pixels if the row size is too small; true otherwise, also where the host's
    ///         colour conversion fails
    CORVEX_API static bool ImageToBlob(Image*& image, int32_t fourCC, int32_t rowBytes, uint8_t*& blob,
                                       bool flag);
};
