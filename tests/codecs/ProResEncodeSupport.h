#pragma once

#include "codecs/ProResCodec.h"
#include "codecs/ProResTestSupport.h"

#include <cmath>

/// Images to encode as ProRes, and what became of them.

inline constexpr uint32_t apch = FourCC("apch");
inline constexpr uint32_t ap4h = FourCC("ap4h");
inline constexpr uint32_t codesAlpha = 2;
inline constexpr int32_t pictureWidth = 70;
inline constexpr int32_t pictureHeight = 37;

/// A smooth picture with an alpha of its own.
inline Pixel SmoothPixel(int32_t x, int32_t y) {
    return {8000 + 400 * x, 12000 + 900 * y, 50000 - 300 * x - 300 * y, 65535 - 131 * x - y};
}

inline ImagePtr SmoothImage(ImageDataKind kind = ImageData_RGBA16) {
    ImagePtr image = MakeImage(pictureWidth, pictureHeight, kind);
    for (int32_t y = 0; y < pictureHeight; ++y)
        for (int32_t x = 0; x < pictureWidth; ++x)
            SetPixelAt(*image, x, y, SmoothPixel(x, y));
    return image;
}

inline CxEncodedFrame FrameFor(uint32_t codecTag, uint32_t flags = 0, uint32_t fieldOrder = 1) {
    CxEncodedFrame frame;
    frame.codecTag = codecTag;
    frame.flags = flags;
    frame.fieldOrder = fieldOrder;
    return frame;
}

inline CxAVError EncodeInto(ProResCodec& codec, const ImagePtr& image, CxEncodedFrame& frame) {
    Image* const picture = image.get();
    Image* passed = picture;
    const CxAVError result = codec.EncodeFrame(passed, frame);
    EXPECT_EQ(passed, picture);
    return result;
}

/// The bytes of a frame in the buffer that the codec allocates.
inline Bytes Encoded(ProResCodec& codec, const ImagePtr& image, CxEncodedFrame frame) {
    EXPECT_EQ(EncodeInto(codec, image, frame), CxAV_OK);
    const Bytes bytes(frame.data, frame.data + frame.size);
    Platform::FreeMemAligned(frame.data);
    return bytes;
}

inline ImagePtr Decoded(const Bytes& sample, uint32_t code) {
    MemoryTrackSource source(code, pictureWidth, pictureHeight, {sample});
    ImagePtr image = MakeImage(pictureWidth, pictureHeight);
    EXPECT_EQ(Decode(*NewDecoder(source), 0, image.get()), CxAV_OK);
    return image;
}

/// Root of the mean squared difference of the colours of a picture and the smooth one.
inline double DistanceFromSmooth(Image& image) {
    double squares = 0;
    for (int32_t y = 0; y < pictureHeight; ++y) {
        for (int32_t x = 0; x < pictureWidth; ++x) {
            const Pixel is = PixelAt(image, x, y);
            const Pixel was = SmoothPixel(x, y);
            for (const int32_t difference : {is.R - was.R, is.G - was.G, is.B - was.B})
                squares += static_cast<double>(difference) * difference;
        }
    }
    return std::sqrt(squares / (3.0 * pictureWidth * pictureHeight));
}

inline size_t Bound(uint32_t code, bool alpha, int32_t frameWidth = pictureWidth,
                    int32_t frameHeight = pictureHeight) {
    int32_t bound = 0;
    PrxGetMaxFrameSize(code, alpha, frameWidth, frameHeight, &bound, nullptr);
    return static_cast<size_t>(bound);
}
