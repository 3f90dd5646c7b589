#pragma once

#include "host/Export.h"
#include "host/Image.h"
#include "host/TagList.h"

/// Tags of the two colour conversions.
enum ColorConvertTag : Tag {
    ColorTag_Width = 0x10010000,    ///< pixels across; `CxRGB2YUVTagList` only
    ColorTag_Height = 0x10010001,   ///< rows; `CxRGB2YUVTagList` only
    ColorTag_Matrix = 0x10010002,   ///< 1 BT.709; 0 and 2 BT.601; anything else is taken as 1, the default
    ColorTag_Layout = 0x10010003,   ///< a `ColorLayout`
    ColorTag_RowBytes = 0x10010004, ///< bytes from one row of the buffer, or of its first plane, to the next
    ColorTag_Flag = 0x10010007,     ///< carried for the host; no effect in the stand-alone host
    ColorTag_Buffer = 0x60010000,   ///< the buffer, or the first plane
    ColorTag_Plane2 = 0x60010002,   ///< second plane
    ColorTag_Plane3 = 0x60010003,   ///< third plane
};

/// The host's numbering of pixel layouts. docs/pixel-formats.md gives every byte layout and range.
enum ColorLayout : int32_t {
    ColorLayout_2vuy = 0,
    ColorLayout_uyvy = 1280,
    ColorLayout_v210 = 2816,
    ColorLayout_v410 = 3072,
    ColorLayout_v408 = 3328,
    ColorLayout_r408 = 3584,
    ColorLayout_r4fl = 3840,
    ColorLayout_yuv422p10 = 4608,
    ColorLayout_yuv422p = 4864,
    ColorLayout_yuv420p = 5120,
    ColorLayout_nv12 = 5376,
    ColorLayout_v216 = 5632,
    ColorLayout_yuvj422p = 5888,
    ColorLayout_yuvj420p = 6144,
    ColorLayout_yv16 = 6400,
    ColorLayout_yv8u = 6656,
    ColorLayout_yuvj422p10 = 6912,
    ColorLayout_y416 = 7424,
};

/// Fills `image` from a YUV buffer, over the image's `Width` and `Height`, on the host's threads. The
/// buffer's first row is the top of the picture. Rows are `ColorTag_RowBytes` apart; those of chroma planes
/// half of that, or the same for the one chroma plane of `nv12`, which follows the luma rows if there is no
/// `ColorTag_Plane2`. Half and float images keep what lies beyond black and white; integer images are limited
/// and rounded to nearest. An image whose accessors are not the host's is written through its
/// `SetPixelFloat`.
///
/// Nothing but the samples of each row is read: no byte behind them, nor behind the last row.
///
/// @return false, with the image unchanged, if the image is null or has no pixels or no pixel data, if the
///         layout is unknown or its tag missing, if the buffer or a plane that the layout needs is null, or
///         if the row size is too small for the width; false also if memory is short, where rows may be
///         missing then
/// @note   any thread; conversions of different images, or from one buffer to several, may run at once
CORVEX_HOST_API bool CxYUV2RGBTagList(Image* image, const TagList& tags);

/// Fills a YUV buffer from `image`, over the smaller of the image's size and the size in the tags (the
/// image's own without them), in the top left corner of both, on the host's threads. Codes are limited to
/// those that the layout may hold and rounded to nearest. Channels that are not numbers count as 0.
///
/// Nothing but the samples of each row is written: bytes behind them keep what they hold.
///
/// @return the buffer, which stays the caller's, or null for the failures of `CxYUV2RGBTagList`, with nothing
///         written unless memory was short
/// @note   as `CxYUV2RGBTagList`
CORVEX_HOST_API void* CxRGB2YUVTagList(Image* image, const TagList& tags);
