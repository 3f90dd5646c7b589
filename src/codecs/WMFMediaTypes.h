#pragma once

#include "codecs/MediaFoundation.h"

#include <cstdint>
#include <vector>

struct CxVideoSettings;

// What a transform is told of the data on its two sides. Whatever it refuses to be told is left out.

namespace CxWMF {

/// The size of pictures, in pixels.
struct WMFSize {
    uint32_t width;
    uint32_t height;
};

void DescribeDecoderInput(IMFMediaType& type, WMFSize size);
void DescribeDecoderOutput(IMFMediaType& type);
void DescribeEncoderInput(IMFMediaType& type, const CxVideoSettings& settings);
void DescribeEncoderOutput(IMFMediaType& type, const CxVideoSettings& settings, WMFSize size);

void SetDecoderProperties(ICodecAPI& properties);
void SetEncoderProperties(ICodecAPI& properties, const CxVideoSettings& settings);

/// The parameter sets that an encoder has left in its output's type, as a byte stream; empty if there are
/// none. Throws std::bad_alloc.
std::vector<uint8_t> SequenceHeader(IMFMediaType& type);

} // namespace CxWMF
