#pragma once

#include "codecs/DNXRecords.h"
#include "dnx/ErrorTexts.h"
#include "dnx/FFmpegObjects.h"
#include "dnx/FrameHeader.h"
#include "dnx/Packings.h"

#include <cstdint>
#include <memory>

namespace dnx {

/// Decodes frames of one size to pictures of one packing. Compression, depth and sampling may change from
/// frame to frame as far as the packing holds them. One thread at a time; separate decoders may run in
/// parallel.
class Decoder {
public:
    /// Makes a decoder. On failure `decoder` is unchanged. Throws std::bad_alloc.
    static Error Create(const DNXFrameInformation& information, const DNXUncompressedParameters& uncompressed,
                        const DNXDecodeOperation& operation, std::unique_ptr<Decoder>& decoder);

    /// Decodes a frame into the first bytes of `output`. On failure nothing is written, and the decoder stays
    /// usable. Throws std::bad_alloc.
    Error Decode(const uint8_t* data, uint32_t size, uint8_t* output, uint32_t outputSize);

private:
    Decoder(const Packing& packing, uint32_t width, uint32_t height);
    Error Open();
    Error CheckHeader(const uint8_t* data, uint32_t size) const;
    Error DecodePlanes(const uint8_t* data, uint32_t size);
    Error CheckPlanes(const PlaneFormat* planes) const;

    Packing packing_;
    uint32_t width_;
    uint32_t height_;
    CodecContextPtr context_;
    PacketPtr packet_;
    FramePtr frame_;
};

} // namespace dnx
