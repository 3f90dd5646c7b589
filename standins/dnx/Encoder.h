#pragma once

#include "codecs/DNXRecords.h"
#include "dnx/Compressions.h"
#include "dnx/ErrorTexts.h"
#include "dnx/FFmpegObjects.h"
#include "dnx/Packings.h"

#include <cstdint>
#include <memory>

namespace dnx {

/// Whether frames can be encoded as parameters tell, and as which compression.
Error CheckParameters(const DNXCompressedParameters& parameters, const Compression*& compression);

/// Encodes pictures of one size and packing to frames of one compression. One thread at a time; separate
/// encoders may run in parallel.
class Encoder {
public:
    /// Makes an encoder. On failure `encoder` is unchanged. Throws std::bad_alloc.
    static Error Create(const DNXCompressedParameters& compressed,
                        const DNXUncompressedParameters& uncompressed, std::unique_ptr<Encoder>& encoder);

    /// Encodes a picture. On failure nothing is written, and the encoder stays usable. Throws std::bad_alloc.
    /// @param inputSize  bytes of the picture, neither more nor fewer
    /// @param written    out: bytes of the frame, the first ones of `output`
    Error Encode(const uint8_t* input, uint32_t inputSize, uint8_t* output, uint32_t outputSize,
                 uint32_t& written);

private:
    explicit Encoder(const Packing& packing) : packing_(packing) {}
    Error Open(const Compression& compression, int width, int height);
    bool AllocateFrame();
    Error EncodePlanes();

    Packing packing_;
    CodecContextPtr context_;
    PacketPtr packet_;
    FramePtr frame_;
};

} // namespace dnx
