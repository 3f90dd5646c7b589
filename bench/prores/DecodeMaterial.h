#pragma once

#include "prores/PeerCodec.h"
#include "prores/Prx.h"
#include "prores/PrxFormats.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

/// What the decoder is measured on.

struct Size {
    const char* name;
    int32_t width;
    int32_t height;
    int32_t packets;
};
inline constexpr Size sizes[] = {{"1080", 1920, 1080, 4}, {"2160", 3840, 2160, 2}};

struct Material {
    PeerProfile profile;
    Size size;

    const std::vector<PeerPacket>& Packets() const {
        return PeerPackets(profile, size.width, size.height, size.packets);
    }
};

struct DeleteDecoder {
    void operator()(PrxDecoderRef decoder) const { PrxDeleteDecoder(decoder); }
};
struct FreeBytes {
    void operator()(uint8_t* bytes) const { std::free(bytes); }
};

/// A picture buffer as the engine's callers hold it.
class Picture {
public:
    Picture(const Size& size, uint32_t format, int32_t quality)
        : buffer_{nullptr,
                  static_cast<int32_t>(PrxGetBytesPerRow(static_cast<uint32_t>(size.width), format, quality)),
                  format, size.width, size.height} {
        const size_t bytes = static_cast<size_t>(buffer_.rowBytes) * static_cast<size_t>(size.height);
        bytes_.reset(static_cast<uint8_t*>(std::aligned_alloc(64, (bytes + 63) / 64 * 64)));
        buffer_.baseAddress = bytes_.get();
    }
    const PrxPixelBuffer* Buffer() const { return &buffer_; }

private:
    PrxPixelBuffer buffer_;
    std::unique_ptr<uint8_t, FreeBytes> bytes_;
};
