#pragma once

#include "images/HostImage.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// What the header of an image file says.
struct ImageFileInfo {
    std::string format;                    ///< as OpenImageIO calls it: "openexr", "png", "tiff", "dpx"
    int32_t width = 0;                     ///< of the whole picture, in pixels
    int32_t height = 0;                    ///< of the whole picture, in pixels
    std::vector<std::string> channels;     ///< names in the order of the file
    std::string depth;                     ///< of a channel, e.g. "10 bits", "half"
    ImageDataKind kind = ImageData_RGBA16; ///< of a host image that holds the values
    bool hasAlpha = false;
};

/// An image file open for reading. Values are those of the file: no colour conversion, and alpha neither
/// multiplied nor divided.
class ImageFileReader {
public:
    /// Opens a file and reads its header.
    /// @throw ToolError: cannot open; damaged for a broken header or a size of 0; unsupported for a size that
    ///                   the command doesn't take
    explicit ImageFileReader(const std::string& path);
    ~ImageFileReader();

    const ImageFileInfo& Info() const { return info_; }

    /// Reads the picture into an image of the kind that `Info` gives. Grey becomes R, G and B; colour
    /// channels that are not there and pixels that the file doesn't hold are 0, and alpha that is not there
    /// is opaque.
    /// @throw ToolError: damaged for broken data
    HostImage Read();

private:
    struct File;
    std::string path_;
    std::unique_ptr<File> file_;
    ImageFileInfo info_;
};
