#include "DNXMaterial.h"

#include "framework/CxAVCodecRegistry.h"
#include "host/Platform.h"
#include "pixel/PixelConvert.h"
#include "support/CameraMaterial.h"

#include <cstdlib>
#include <map>

namespace {

constexpr int32_t width = 1920;
constexpr int32_t height = 1080;

std::vector<uint8_t> Encode(const BenchCompression& compression) {
    const std::unique_ptr<CxAbstractAVCodec> encoder(CxAVCodecRegistry::CreateEncoder(compression.encoder));
    const BenchImage picture = MakeBenchImage(ImageData_RGBA16);
    Image* image = picture.get();
    CxEncodedFrame frame;
    frame.codecTag = compression.id;
    if (!encoder || encoder->EncodeFrame(image, frame) != CxAV_OK) std::abort();
    std::vector<uint8_t> bytes(frame.data, frame.data + frame.size);
    Platform::FreeMemAligned(frame.data);
    return bytes;
}

} // namespace

BenchImage MakeBenchImage(ImageDataKind kind) {
    constexpr uint32_t packing = FourCC("b64a");
    constexpr uint32_t rowBytes = width * 8;
    static std::vector<uint8_t> blob =
        PackCameraPicture(MakeCameraPicture(width, height, 0), packing, rowBytes);
    BenchImage picture(Image::Allocate(width, height, kind));
    Image* image = picture.get();
    if (!PixelConvert::BlobToImage(blob.data(), rowBytes, packing, image)) std::abort();
    return picture;
}

const std::vector<uint8_t>& FrameOf(const BenchCompression& compression) {
    static std::map<uint32_t, std::vector<uint8_t>> frames;
    std::vector<uint8_t>& frame = frames[compression.id];
    if (frame.empty()) frame = Encode(compression);
    return frame;
}
