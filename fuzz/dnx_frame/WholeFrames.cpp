#include "WholeFrames.h"

#include "framework/CxAVCodecRegistry.h"
#include "host/Image.h"
#include "host/Platform.h"

#include <cstdlib>
#include <memory>
#include <random>

namespace {

constexpr int32_t smallWidth = 261;
constexpr int32_t smallHeight = 125;
constexpr uint32_t idWithoutEncoder = 1256;

Image* NoisyImage(int32_t width, int32_t height) {
    Image* const image = Image::Allocate(width, height, ImageData_RGBA16);
    if (image == nullptr) std::abort();
    std::minstd_rand random(1);
    for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
            const auto noise = static_cast<int32_t>(random() % 4096);
            const Pixel pixel = {60000 * x / width + noise, 60000 * y / height + noise, 30000 + noise, 65535};
            image->SetPixel(pixel, image->RowAddress(y) + int64_t{x} * image->PixelStride, nullptr, image);
        }
    }
    return image;
}

WholeFrame Encoded(const CxEncoderInfo& row) {
    WholeFrame whole = {row.fourCC, smallWidth, smallHeight, {}};
    if (row.width != 0) {
        whole.width = static_cast<int32_t>(row.width);
        whole.height = static_cast<int32_t>(row.height);
    }
    const std::unique_ptr<CxAbstractAVCodec> encoder(CxAVCodecRegistry::CreateEncoder(row.name));
    Image* image = NoisyImage(whole.width, whole.height);
    CxEncodedFrame frame;
    frame.codecTag = row.codecId;
    if (encoder->EncodeFrame(image, frame) != CxAV_OK) std::abort();
    whole.bytes.assign(frame.data, frame.data + frame.size);
    Platform::FreeMemAligned(frame.data);
    Image::Free(image);
    return whole;
}

std::vector<WholeFrame> EncodeAll() {
    std::vector<CxEncoderInfo> rows;
    CxAVCodecRegistry::ListAllCodecs(true, rows);
    std::vector<WholeFrame> frames;
    for (const CxEncoderInfo& row : rows) {
        const bool isDNx = row.fourCC == FourCC("AVdn") || row.fourCC == FourCC("AVdh");
        if (isDNx && row.codecId != idWithoutEncoder) frames.push_back(Encoded(row));
    }
    if (frames.empty()) std::abort();
    return frames;
}

} // namespace

const std::vector<WholeFrame>& WholeFrames() {
    static const std::vector<WholeFrame> frames = EncodeAll();
    return frames;
}
