#pragma once

#include "mediafoundation/Picture.h"

#include <wels/codec_api.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace mediafoundation {

struct EncoderSettings {
    uint32_t width = 0;       ///< even
    uint32_t height = 0;      ///< even
    float frameRate = 0;      ///< per second
    uint32_t bitRate = 0;     ///< per second; 0: by `quality`
    uint32_t quality = 0;     ///< 0-100
    uint32_t effort = 0;      ///< 0-100: from the fastest to the most thorough
    uint32_t keyDistance = 0; ///< pictures from one key picture to the next; 0: only the first is one
    uint32_t profile = 0;     ///< 66, 77 or 100
};

/// Encodes H.264 with OpenH264: I and P pictures in their order. One thread at a time.
class PictureEncoder {
public:
    /// @return null if OpenH264 can't encode this, or there is no memory
    static std::unique_ptr<PictureEncoder> Create(const EncoderSettings& settings);

    /// The parameter sets as a byte stream; empty if there is no memory. Throws std::bad_alloc.
    std::vector<uint8_t> ParameterSets();
    /// Encodes one picture of the size that was set as a byte stream; key pictures begin with the parameter
    /// sets. Throws std::bad_alloc.
    /// @return empty if it could not be encoded
    std::vector<uint8_t> Encode(const Picture& picture, bool& isKey);

private:
    struct DestroyEncoder {
        void operator()(ISVCEncoder* encoder) const;
    };
    using EncoderPtr = std::unique_ptr<ISVCEncoder, DestroyEncoder>;

    PictureEncoder(EncoderPtr encoder, float frameRate)
        : encoder_(std::move(encoder)), frameRate_(frameRate) {}

    EncoderPtr encoder_;
    float frameRate_;
    uint64_t count_ = 0; ///< pictures so far
};

} // namespace mediafoundation
