#pragma once

#include "host/Export.h"
#include "host/Image.h"
#include "host/TagList.h"

/// Tags of the two colour conversions.
enum ColorConvertTag : Tag {
    ColorTag_Width = 0x10010000,    ///< pixels across; `CxRGB2YUVTagList` only
    ColorTag_Height = 0x10010001,   ///< rows; `CxRGB2YUVTagList` only
    ColorTag_Matrix = 0x10010002,   ///< 1 BT.709; 0 and 2 BT.601
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

/// Fills `image` from a YUV buffer, top row of the buffer first, over the image's `Width` and `Height`, on
/// the host's threads. Rows of the buffer are `ColorTag_RowBytes` apart; chroma planes of planar layouts have
/// half of that. Without `ColorTag_Plane2` the chroma of `nv12` follows the luma rows.
///
/// @return false, with the image unchanged, if the image is null, the layout is unknown, the buffer or a
/// plane
///         that the layout needs is null, or the row size is too small for the width
CORVEX_HOST_API bool CxYUV2RGBTagList(Image* image, const TagList& tags);

/// Fills a YUV buffer from `image`, over the smaller of the image's size and the size in the tags, on the
/// host's threads.
///
/// @return the buffer, or null, with nothing written, for the failures of `CxYUV2RGBTagList`
CORVEX_HOST_API void* CxRGB2YUVTagList(Image* image, const TagList& tags);
