// Any code, row size and image against buffers of exactly the size that the interface asks for, so that the
// sanitizers see every byte too many. Also what one direction writes, the other must be able to read.

#include "framework/CxAVTypes.h"
#include "host/Image.h"
#include "host/Platform.h"
#include "pixel/PixelConvert.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

constexpr uint32_t codes[] = {
    24,
    32,
    FourCC("24BG"),
    FourCC("2vuy"),
    FourCC("2Vuy"),
    FourCC("ABGR"),
    FourCC("BGRA"),
    FourCC("RGBA"),
    FourCC("a48r"),
    FourCC("abgr"),
    FourCC("b48r"),
    FourCC("b64a"),
    FourCC("l48r"),
    FourCC("l64r"),
    FourCC("nv12"),
    FourCC("r210"),
    FourCC("r214"),
    FourCC("r408"),
    FourCC("r4fl"),
    FourCC("raw "),
    FourCC("rgb "),
    FourCC("rgba"),
    FourCC("rp16"),
    FourCC("uyvy"),
    FourCC("v210"),
    FourCC("v216"),
    FourCC("v408"),
    FourCC("v410"),
    FourCC("y416"),
    FourCC("yv16"),
    FourCC("yv8u"),
};
constexpr ImageDataKind kinds[] = {ImageData_RGBA8, ImageData_RGBA16, ImageData_RGBAHalf,
                                   ImageData_RGBAFloat};

/// Bytes that a blob of this code holds for `height` rows.
size_t BlobSize(uint32_t code, uint32_t rowBytes, int32_t height) {
    const size_t plane = static_cast<size_t>(rowBytes) * static_cast<size_t>(height);
    if (code == FourCC("rp16")) return plane * 3;
    // Luma rows, then half as many rows of chroma.
    if (code == FourCC("nv12"))
        return plane + static_cast<size_t>(rowBytes) * ((static_cast<size_t>(height) + 1) / 2);
    return plane;
}

void ReadBlob(FuzzedDataProvider& input, uint32_t code, uint32_t rowBytes, Image* image) {
    std::vector<uint8_t> blob(BlobSize(code, rowBytes, image->Height));
    const std::vector<uint8_t> bytes = input.ConsumeRemainingBytes<uint8_t>();
    std::copy_n(bytes.begin(), std::min(bytes.size(), blob.size()), blob.begin());
    PixelConvert::BlobToImage(blob.data(), rowBytes, code, image);
}

void WriteBlob(uint32_t code, uint32_t rowBytes, Image* image) {
    uint8_t* fresh = nullptr;
    PixelConvert::ImageToBlob(image, static_cast<int32_t>(code), static_cast<int32_t>(rowBytes), fresh, true);
    if (fresh != nullptr) Platform::FreeMemAligned(fresh);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider input(data, size);
    const uint32_t code = input.PickValueInArray(codes);
    const ImageDataKind kind = input.PickValueInArray(kinds);
    const int32_t width = input.ConsumeIntegralInRange<int32_t>(0, 200);
    const int32_t height = input.ConsumeIntegralInRange<int32_t>(0, 6);
    const uint32_t wantedRow = input.ConsumeIntegralInRange<uint32_t>(0, 4096);
    const uint32_t tableRow =
        static_cast<uint32_t>(PixelConvert::CalcRowBytes(code, static_cast<uint32_t>(width)));
    const uint32_t rowBytes = input.ConsumeBool() ? tableRow : wantedRow;

    Image* image = Image::Allocate(width, height, kind);
    if (image == nullptr) return 0;
    ReadBlob(input, code, rowBytes, image);
    WriteBlob(code, rowBytes, image);
    Image::Free(image);
    return 0;
}
