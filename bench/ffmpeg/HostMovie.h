#pragma once

#include "host/ImageFormat.h"

#include <cstdint>
#include <memory>
#include <string>

/// A movie as the host's loader tool has it: the format class that claims the file's extension, and an image
/// that its frames are loaded into. Ends the process if there is no such class.
class HostMovie {
public:
    HostMovie(const std::string& path, ImageDataKind kind);

    /// Loads a frame into the image.
    bool Load(uint32_t frame);
    int32_t FrameCount();
    const Image& Picture() const { return *image_; }

private:
    struct Release {
        void operator()(Image* image) const { Image::Free(image); }
    };

    std::unique_ptr<Object> object_;
    ImageFormat* format_;
    std::unique_ptr<Image, Release> image_;
};
