#pragma once

#include "prores/PrxDecoder.h"
#include "prores/PrxFormats.h"
#include "prores/StreamFrame.h"
#include "support/GuardedBytes.h"

#include <algorithm>
#include <cstdint>
#include <vector>

/// What a picture buffer holds before a decode: no two neighbouring bytes alike, and no value that repeats
/// with a row.
inline uint8_t UntouchedByte(size_t offset) {
    return static_cast<uint8_t>(offset * 167 + (offset >> 8) * 59 + 13);
}

/// The least `rowBytes` that a decoder accepts for a picture `width` pixels wide, reduced by 2^hShift.
inline int32_t LeastRowBytes(uint32_t format, int32_t width, int32_t hShift) {
    // The pass that writes v210 wants whole groups of six pixels in 16 bytes.
    if (format == prxFormatV210) return ((width >> hShift) + 5) / 6 * 16;
    const int32_t stored = ((width + 15) / 16 * 16) >> hShift;
    return static_cast<int32_t>(PrxGetGroupSize(format).bytesPerGroup) * stored;
}

/// A picture buffer of exactly the size that it claims; behind it memory is forbidden.
class TestTarget {
public:
    TestTarget(uint32_t format, int32_t width, int32_t height, int32_t rowBytes)
        : memory_(static_cast<size_t>(rowBytes) * static_cast<size_t>(height), GuardedBytes::Guard::Behind),
          target_{memory_.data(), rowBytes, format, width, height} {
        Restore();
    }
    /// One that takes the frame reduced by 2^hShift and 2^vShift, and nothing more.
    TestTarget(uint32_t format, const stream::FrameSpec& spec, int32_t hShift = 0, int32_t vShift = 0)
        : TestTarget(format, spec.width >> hShift, spec.height >> vShift,
                     LeastRowBytes(format, spec.width, hShift)) {}

    const PrxOutputTarget& Get() const { return target_; }
    PrxPixelBuffer PublicBuffer() const {
        return {target_.baseAddress, target_.rowBytes, target_.pixelFormat, target_.width, target_.height};
    }
    std::vector<uint8_t> Bytes() const { return {memory_.begin(), memory_.end()}; }
    std::vector<uint8_t> Row(int32_t y) const {
        const uint8_t* row = memory_.data() + ptrdiff_t{y} * target_.rowBytes;
        return {row, row + target_.rowBytes};
    }

    void Restore() {
        for (size_t i = 0; i < memory_.size(); ++i)
            memory_.data()[i] = UntouchedByte(i);
    }
    bool Untouched(size_t begin, size_t end) const {
        for (size_t i = begin; i < end; ++i) {
            if (memory_.data()[i] != UntouchedByte(i)) return false;
        }
        return true;
    }
    bool Untouched() const { return Untouched(0, memory_.size()); }
    bool RowUntouched(int32_t y) const {
        const auto rowBytes = static_cast<size_t>(target_.rowBytes);
        return Untouched(static_cast<size_t>(y) * rowBytes, static_cast<size_t>(y + 1) * rowBytes);
    }

private:
    GuardedBytes memory_;
    PrxOutputTarget target_;
};

inline PrxBufferPiece PieceOf(const stream::Bytes& bytes) { return {bytes.data(), bytes.size(), nullptr}; }

/// Decodes `frame` into `target` and returns what the decoder returned.
inline int32_t Decode(PrxDecoder& decoder, const stream::Bytes& frame, const TestTarget& target,
                      int32_t mode = 1, bool ignoreAlpha = false, uint8_t* isOpaque = nullptr) {
    return decoder.decodeFrame(PieceOf(frame), target.Get(), mode, ignoreAlpha, isOpaque);
}

/// All formats that a stream of `chromaFormat` decodes to.
inline std::vector<uint32_t> TargetFormats(int32_t chromaFormat) {
    std::vector<uint32_t> formats = {prxFormat2vuy, prxFormatV210, prxFormatV216, prxFormatW216,
                                     prxFormatV408, prxFormatR408, prxFormatY408, prxFormatY416,
                                     prxFormatR4fl, prxFormatArgb, prxFormatBgra, prxFormatB64a,
                                     prxFormatR10k, prxFormatR210, prxFormatN302};
    if (chromaFormat == prxChroma422) formats.push_back(prxFormatL302);
    return formats;
}
