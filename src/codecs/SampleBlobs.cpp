#include "codecs/SampleBlobs.h"

#include "framework/CatchAll.h"
#include "framework/CxAbstractAVCodec.h"
#include "framework/SampleSize.h"
#include "host/Image.h"
#include "pixel/PixelConvert.h"
#include "pixel/PixelFormatTable.h"

bool HoldsImage(int32_t size, uint32_t packing, int32_t rowBytes, const Image& image) {
    const PixelFormat* const format = FindPixelFormat(packing);
    if (format == nullptr || size < 0 || rowBytes < 0) return false;
    return static_cast<uint64_t>(size) >= BytesRead(*format, image.Width, image.Height, rowBytes);
}

const uint8_t* ReadSample(CxAbstractAVCodec& codec, int32_t index, int32_t& size) {
    uint8_t* const buffer = codec.GetDataBuffer();
    const int32_t capacity = codec.GetDataBufferSize();
    size = capacity;
    const uint8_t* const sample = codec.getDataSource()->ReadSample(index, buffer, size);
    size = LimitToBuffer(size, sample, buffer, capacity);
    return size != 0 ? sample : nullptr;
}

bool ConvertToImage(uint8_t* blob, int32_t size, int32_t rowBytes, uint32_t packing, Image*& image) {
    if (image == nullptr || !HoldsImage(size, packing, rowBytes, *image)) return false;
    return CatchAll(false, [&] {
        return PixelConvert::BlobToImage(blob, static_cast<uint32_t>(rowBytes), packing, image);
    });
}
