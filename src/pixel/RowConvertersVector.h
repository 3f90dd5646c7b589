#pragma once

#include "host/Image.h"
#include "pixel/RowPacking.h"

/// Faster forms of the row converters of RowConverters.h, with the same arguments and the same bytes, for
/// images that stand in memory as the host lays its four kinds out. The instruction set is chosen here, at
/// run time, once for a conversion. There is no form for a machine without vectors, nor for half-precision
/// images on one that does not convert them itself.
///
/// They read and write no byte behind the last pixel of a row, in blob or image, and need no alignment. The
/// last block of a row overlaps the one before it, so blob and image must not share memory.

/// Converter from image to blob, or null if there is none for this packing or image.
Image::RowFunction VectorRowWriter(RowPacking packing, const Image& image);

/// Converter from blob to image, or null if there is none for this image.
Image::RowFunction VectorRowReader(RowPacking packing, const Image& image);
