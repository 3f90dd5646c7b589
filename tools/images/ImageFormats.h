#pragma once

#include "host/Image.h"

#include <string>
#include <string_view>

/// Depth of an image file that the user asks for.
enum class ImageDepth { Default, Bits8, Bits16, Half, Float };

/// How the pictures of one job are stored.
struct ImageStorage {
    ImageDataKind kind; ///< of the host image that is written
    int bitsPerChannel; ///< of the file; fewer than the image's only for 10-bit DPX
};

/// One kind of image file that the command reads and writes.
struct ImageFileFormat {
    std::string_view name;       ///< as OpenImageIO calls it
    std::string_view extensions; ///< separated by blanks, lower case
    ImageStorage defaultStorage;
    bool integers; ///< stores 8 and 16 bits
    bool floats;   ///< stores half or float
};

/// The format of a file by its extension, in any case; null for every other file.
const ImageFileFormat* FindImageFormat(const std::string& path);

/// How files named like `path` are stored. By default EXR is half, PNG and TIFF have 16 bits, DPX 10.
/// @throw ToolError (usage) for an extension that is not written, or a depth that its format doesn't have
ImageStorage ChooseImageStorage(const std::string& path, ImageDepth depth);
