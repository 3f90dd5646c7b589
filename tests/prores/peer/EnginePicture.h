#pragma once

#include "prores/Prx.h"
#include "prores/PrxFormats.h"

#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

/// A pixel of a picture, each component in codes of 10 bits. In 4:2:2 formats an odd pixel has the chroma of
/// the even one before it.
struct EnginePixel {
    double components[3]; ///< luma, Cb, Cr
    uint16_t alpha;       ///< of 16 bits; 0 in a format without alpha
};

/// The engine's picture of a frame in one of `v216`, `y416`, `2vuy` and `v210`.
class EnginePicture {
public:
    /// Decodes a frame of this size; `Result` says how that went.
    EnginePicture(PrxDecoderRef decoder, std::span<const uint8_t> frame, int width, int height,
                  uint32_t pixelFormat)
        : format_(pixelFormat), rowBytes_(PrxGetBytesPerRow(static_cast<uint32_t>(width), pixelFormat, 0)),
          bytes_(static_cast<size_t>(rowBytes_) * static_cast<size_t>(height)) {
        const PrxPixelBuffer buffer = {bytes_.data(), static_cast<int32_t>(rowBytes_), pixelFormat, width,
                                       height};
        result_ = PrxDecodeFrame(decoder, frame.data(), static_cast<int32_t>(frame.size()), &buffer, 0, 0);
    }

    /// What `PrxDecodeFrame` returned.
    int32_t Result() const { return result_; }

    EnginePixel At(int x, int y) const {
        const uint8_t* const row = bytes_.data() + static_cast<size_t>(y) * rowBytes_;
        switch (format_) {
        case prxFormat2vuy: return Bytes2vuy(row + x / 2 * 4, x & 1);
        case prxFormatV210: return WordsV210(row + x / 6 * 16, x % 6);
        case prxFormatV216: return Words16(row + x / 2 * 8, 1 + 2 * (x & 1), 0, 2, -1);
        default: return Words16(row + x * 8, 1, 2, 3, 0);
        }
    }

private:
    static uint16_t Word(const uint8_t* at, int index) {
        return static_cast<uint16_t>(at[2 * index] | at[2 * index + 1] << 8);
    }
    static EnginePixel Words16(const uint8_t* group, int luma, int cb, int cr, int alpha) {
        constexpr double tenBits = 64;
        return {{Word(group, luma) / tenBits, Word(group, cb) / tenBits, Word(group, cr) / tenBits},
                alpha < 0 ? uint16_t{0} : Word(group, alpha)};
    }
    static EnginePixel Bytes2vuy(const uint8_t* pair, int odd) {
        return {{pair[1 + 2 * odd] * 4.0, pair[0] * 4.0, pair[2] * 4.0}, 0};
    }
    /// Six pixels are twelve components Cb Y Cr Y ..., three in each little-endian word.
    static EnginePixel WordsV210(const uint8_t* group, int x) {
        const auto component = [group](int index) {
            uint32_t word = 0;
            std::memcpy(&word, group + index / 3 * 4, sizeof(word));
            return static_cast<double>(word >> index % 3 * 10 & 0x3ff);
        };
        const int pair = x / 2;
        return {{component(2 * x + 1), component(4 * pair), component(4 * pair + 2)}, 0};
    }

    uint32_t format_;
    uint32_t rowBytes_;
    std::vector<uint8_t> bytes_;
    int32_t result_ = 0;
};
