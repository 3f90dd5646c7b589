#pragma once

#include "framework/CxAVCodecRegistry.h"
#include "framework/MemoryTrackSource.h"
#include "host/Image.h"
#include "host/Platform.h"
#include "support/TestSupport.h"

#include <array>
#include <memory>
#include <random>
#include <string>
#include <vector>

using Bytes = std::vector<uint8_t>;
using CodecPointer = std::unique_ptr<CxAbstractAVCodec>;

inline Bytes RandomBytes(size_t count, std::mt19937& random) {
    Bytes bytes(count);
    for (uint8_t& byte : bytes)
        byte = static_cast<uint8_t>(random());
    return bytes;
}

/// Pixel in column `x` of row `y`, counted from the top of the picture.
inline Pixel PixelAt(Image& image, int32_t x, int32_t y) {
    Pixel pixel = {};
    const uint8_t* const row = image.RowAddress(image.Height - 1 - y);
    image.GetPixel(pixel, row + int64_t{x} * image.PixelStride, nullptr, &image);
    return pixel;
}

inline void SetPixelAt(Image& image, int32_t x, int32_t y, const Pixel& pixel) {
    uint8_t* const row = image.RowAddress(image.Height - 1 - y);
    image.SetPixel(pixel, row + int64_t{x} * image.PixelStride, nullptr, &image);
}

inline Pixel RandomPixel(std::mt19937& random) {
    std::uniform_int_distribution<int32_t> channel(0, 65535);
    return {channel(random), channel(random), channel(random), channel(random)};
}

inline void FillAtRandom(Image& image, std::mt19937& random) {
    for (int32_t y = 0; y < image.Height; ++y)
        for (int32_t x = 0; x < image.Width; ++x)
            SetPixelAt(image, x, y, RandomPixel(random));
}

inline void FillWith(Image& image, const Pixel& pixel) {
    for (int32_t y = 0; y < image.Height; ++y)
        for (int32_t x = 0; x < image.Width; ++x)
            SetPixelAt(image, x, y, pixel);
}

inline bool IsFilledWith(Image& image, const Pixel& pixel) {
    for (int32_t y = 0; y < image.Height; ++y)
        for (int32_t x = 0; x < image.Width; ++x)
            if (!(PixelAt(image, x, y) == pixel)) return false;
    return true;
}

/// An encoder that the registry made, by its display name.
inline CodecPointer NewEncoder(const std::string& name) {
    return CodecPointer(CxAVCodecRegistry::CreateEncoder(name));
}

/// A decoder that the registry made and opened. The source must outlive it.
inline CodecPointer NewDecoder(MemoryTrackSource& source) {
    return CodecPointer(CxAVCodecRegistry::CreateDecoder(&source));
}

inline CxAVError Encode(CxAbstractAVCodec& encoder, uint32_t codecTag, Image* image, Bytes& out) {
    CxEncodedFrame frame;
    frame.codecTag = codecTag;
    const CxAVError result = encoder.EncodeFrame(image, frame);
    if (frame.data == nullptr) return result;
    out.assign(frame.data, frame.data + frame.size);
    Platform::FreeMemAligned(frame.data);
    return result;
}

inline CxAVError Decode(CxAbstractAVCodec& decoder, int32_t frame, Image* image) {
    return decoder.GetDecodedFrame(frame, image);
}

/// What an image that stays as it was is full of.
inline constexpr Pixel marker = {0x1111, 0x2222, 0x3333, 0x4444};

/// A 24-bit track of 6 x 4 pixels, whose sample n is filled with the byte n + 1.
inline MemoryTrackSource
SmallTrack(MemoryTrackSource::Delivery delivery = MemoryTrackSource::Delivery::OwnMemory) {
    return {24, 6, 4, {Bytes(72, 1), Bytes(72, 2), Bytes(72, 3)}, delivery};
}

inline ImagePtr MarkedImage(int32_t width, int32_t height) {
    ImagePtr image = MakeImage(width, height, ImageData_RGBA16);
    FillWith(*image, marker);
    return image;
}

/// What a byte of all colour channels becomes.
inline Pixel Grey(int32_t byte) { return {byte * 257, byte * 257, byte * 257, 65535}; }
