#include "dnx/FrameHeader.h"

#include "dnx/Compressions.h"

namespace dnx {

namespace {

constexpr size_t leastHeaderSize = 640;

uint32_t Word(const uint8_t* data) { return uint32_t{data[0]} << 8 | data[1]; }

/// Whether the data begins with a header prefix: two zero bytes, the header's size and its version.
bool HasPrefix(const uint8_t* data, size_t size) {
    if (size < leastHeaderSize || Word(data) != 0) return false;
    const uint32_t headerSize = Word(data + 2);
    const uint8_t version = data[4];
    return headerSize >= leastHeaderSize && headerSize <= size && version >= 1 && version <= 3;
}

/// Bits of a sample, or 0 for a value that means none.
uint32_t DepthOf(uint8_t sampleBitDepth) {
    switch (sampleBitDepth >> 5) {
    case 1: return 8;
    case 2: return 10;
    case 3: return 12;
    default: return 0;
    }
}

FrameHeader Fields(const uint8_t* data) {
    FrameHeader header = {};
    header.interlaced = (data[5] & 2) != 0;
    header.alpha = (data[7] & 1) != 0;
    header.losslessAlpha = header.alpha && (data[7] & 2) != 0;
    // Each field of an interlaced frame has a header of its own, with its own lines, unless its macroblocks
    // choose between frame and field.
    const bool isField = header.interlaced && (data[6] & 0x20) == 0;
    header.height = Word(data + 0x18) << (isField ? 1 : 0);
    header.width = Word(data + 0x1A);
    header.depth = DepthOf(data[0x21]);
    header.compressionId = Word(data + 0x28) << 16 | Word(data + 0x2A);
    const bool is444 = (data[0x2C] & 0x40) != 0;
    header.sampling = is444 ? dnxSampling444 : dnxSampling422;
    header.color = is444 && (data[0x2C] & 1) == 0 ? dnxColorRgb : dnxColorYCbCr;
    return header;
}

} // namespace

bool ReadFrameHeader(const uint8_t* data, size_t size, FrameHeader& header) {
    if (!HasPrefix(data, size)) return false;
    FrameHeader fields = Fields(data);
    // Frames of a fixed size may tell the width of the samples before they were resized.
    if (const Compression* const compression = FindCompression(fields.compressionId);
        compression != nullptr && !compression->IsHR())
        fields.width = compression->width;
    if (fields.width == 0 || fields.height == 0 || fields.depth == 0) return false;
    header = fields;
    return true;
}

} // namespace dnx
