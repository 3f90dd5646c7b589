#pragma once

#include "codecs/UncompressedTestSupport.h"
#include "prores/StreamFrame.h"

#include <gtest/gtest.h>

#include <string>

/// A frame of 4:2:2 in one grey, progressive, 64 by 32 pixels. A luma DC of 0 is the middle of the range, and
/// a step of it half a code of 10 bits.
inline stream::FrameSpec GreyFrame(int lumaDc = 0) {
    stream::FrameSpec spec;
    spec.coefficients = stream::FlatColour(lumaDc, 0, 0);
    return spec;
}

/// 16-bit RGB of a grey frame.
inline double GreyLevel(int lumaDc) { return (512 + lumaDc / 2.0 - 64) / 876 * 65535; }

/// A track of 64 by 32 pixels with these samples.
inline MemoryTrackSource ProResTrack(std::vector<Bytes> samples, uint32_t fourCC = FourCC("apch")) {
    return {fourCC, 64, 32, std::move(samples)};
}

/// Text of a key of the image's metadata, or "(none)".
inline std::string Metadata(Image& image, const char* key) {
    return image.ImageInfo.FindKeyConst("Metadata").FindKeyConst(key).ToString("(none)");
}

inline void ExpectGrey(Image& image, int lumaDc, int32_t alpha = 65535) {
    for (int32_t y = 0; y < image.Height; ++y) {
        for (int32_t x = 0; x < image.Width; ++x) {
            const Pixel pixel = PixelAt(image, x, y);
            for (const int32_t channel : {pixel.R, pixel.G, pixel.B})
                ASSERT_NEAR(channel, GreyLevel(lumaDc), 40) << x << ", " << y;
            ASSERT_EQ(pixel.A, alpha) << x << ", " << y;
        }
    }
}

/// What is written to the standard error stream while `call` runs.
template <typename Call>
std::string WordsOf(const Call& call) {
    testing::internal::CaptureStderr();
    call();
    return testing::internal::GetCapturedStderr();
}

inline constexpr const char* decodeWarning = "Warning: ProResCodec decode failed\n";
