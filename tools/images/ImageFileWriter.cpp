#include "images/ImageFileWriter.h"

#include "images/ImageTypes.h"
#include "media/OutputFile.h"
#include "media/ToolError.h"

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>

#include <vector>

namespace {

/// Of zlib. With film grain the library's own level takes four times as long for a few per cent.
constexpr int kPngCompression = 2;

OIIO::ImageSpec SpecOf(const Image& image, const ImageStorage& storage, bool withAlpha,
                       const ImageMetadata& metadata) {
    OIIO::ImageSpec spec(image.Width, image.Height, withAlpha ? 4 : 3, ChannelType(storage.kind));
    spec.attribute("oiio:UnassociatedAlpha", 1);
    spec.attribute("png:compressionLevel", kPngCompression);
    // OpenImageIO misplaces words of ten bits in four channels at some widths; such pictures take 16 bits.
    const bool misplaced = withAlpha && storage.bitsPerChannel == 10;
    spec.attribute("oiio:BitsPerSample", misplaced ? 16 : storage.bitsPerChannel);
    if (metadata.timeCode) {
        const uint32_t words[2] = {*metadata.timeCode, 0};
        spec.attribute("smpte:TimeCode", OIIO::TypeTimeCode, words);
    }
    if (metadata.frameRateNumerator > 0) {
        const int rate[2] = {metadata.frameRateNumerator, metadata.frameRateDenominator};
        spec.attribute("FramesPerSecond", OIIO::TypeRational, rate);
    }
    return spec;
}

bool WriteRows(OIIO::ImageOutput& output, const Image& image, ImageDataKind kind) {
    for (int32_t y = 0; y < image.Height; ++y) {
        const uint8_t* row = image.RowAddress(image.Height - 1 - y);
        if (!output.write_scanline(y, 0, ChannelType(kind), row, image.PixelStride)) return false;
    }
    return true;
}

/// The bytes of the file; made in memory so that writing them can be checked as a whole.
std::vector<unsigned char> EncodeImage(const std::string& path, const Image& image,
                                       const OIIO::ImageSpec& spec, ImageDataKind kind) {
    std::vector<unsigned char> bytes;
    OIIO::Filesystem::IOVecOutput memory(bytes);
    OIIO::Filesystem::IOProxy* proxy = &memory;
    OIIO::ImageSpec described = spec;
    described.attribute("oiio:ioproxy", OIIO::TypeDesc::PTR, &proxy);
    auto output = OIIO::ImageOutput::create(std::string(FindImageFormat(path)->name));
    const bool written =
        output != nullptr && output->open(path, described) && WriteRows(*output, image, kind);
    if (!written || !output->close())
        throw ToolError(ExitStatus::CannotWrite, path, output ? output->geterror() : OIIO::geterror());
    return bytes;
}

} // namespace

void WriteImageFile(const std::string& path, const Image& image, const ImageStorage& storage, bool withAlpha,
                    const ImageMetadata& metadata) {
    const OIIO::ImageSpec spec = SpecOf(image, storage, withAlpha, metadata);
    const std::vector<unsigned char> bytes = EncodeImage(path, image, spec, storage.kind);
    OutputFile file(path);
    file.Write(bytes.data(), bytes.size());
    file.Commit();
}
