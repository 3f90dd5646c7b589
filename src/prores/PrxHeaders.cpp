#include "prores/PrxHeaders.h"

#include <algorithm>
#include <bit>

namespace {

constexpr uint32_t smallestFrameHeader = 20;
constexpr uint32_t smallestPictureHeader = 8;
constexpr uint8_t defaultWeight = 4;

/// A header with all fields that either layout has, from its first byte to the end of both matrices.
using HeaderBytes = std::array<uint8_t, 20 + 2 * 64>;

uint32_t Word(const HeaderBytes& bytes, size_t offset) { return bytes[offset] << 8 | bytes[offset + 1]; }

/// The mark of the short form, behind the frame size: a 1, then the number of header bytes that follow.
constexpr uint8_t shortMarker = 1;
constexpr uint8_t shortLength = 18;
bool HasShortMark(const PrxBufferPiece& chain) {
    return PrxByteAt(chain, 4) == shortMarker && PrxByteAt(chain, 5) == shortLength;
}

PrxQuantMatrix MatrixAt(const HeaderBytes& bytes, size_t offset) {
    PrxQuantMatrix matrix;
    std::copy_n(bytes.begin() + offset, matrix.size(), matrix.begin());
    return matrix;
}

void ReadMatrices(const HeaderBytes& bytes, PrxFrameHeader* header) {
    header->loadLumaMatrix = (bytes[19] & 2) != 0;
    header->loadChromaMatrix = (bytes[19] & 1) != 0;
    size_t offset = smallestFrameHeader;
    header->lumaMatrix.fill(defaultWeight);
    if (header->loadLumaMatrix) {
        header->lumaMatrix = MatrixAt(bytes, offset);
        offset += header->lumaMatrix.size();
    }
    header->chromaMatrix = header->loadChromaMatrix ? MatrixAt(bytes, offset) : header->lumaMatrix;
}

/// The size counts as it stands, also where it is below what the matrices take: the first picture then begins
/// inside of them. Kept.
uint32_t ParseStandardLayout(const HeaderBytes& bytes, PrxFrameHeader* header) {
    const uint32_t headerSize = Word(bytes, 0);
    const uint8_t bitstreamVersion = bytes[3];
    if (headerSize < smallestFrameHeader || bitstreamVersion > 1) return 0;
    header->headerSize = headerSize;
    header->width = Word(bytes, 8);
    header->height = Word(bytes, 10);
    header->chromaFormat = bytes[12] >> 6;
    header->interlaceMode = bytes[12] >> 2 & 3;
    header->colorPrimaries = bytes[14];
    header->transferCharacteristic = bytes[15];
    header->matrixCoefficients = bytes[16];
    header->sourcePixelFormat = bytes[17] >> 4;
    header->alphaType = bytes[17] & 15;
    ReadMatrices(bytes, header);
    return headerSize;
}

uint8_t ShortInterlaceMode(uint8_t interlaceByte) {
    if (interlaceByte < 64) return 0;
    return (interlaceByte & 15) == 14 ? 2 : 1;
}

/// The short layout starts at the frame's first byte, and has neither a version nor alpha nor matrices.
uint32_t ParseShortLayout(const HeaderBytes& bytes, PrxFrameHeader* header) {
    *header = {};
    header->headerSize = shortLength + 6;
    header->width = Word(bytes, 6);
    header->height = Word(bytes, 8);
    header->interlaceMode = ShortInterlaceMode(bytes[16]);
    header->chromaFormat = bytes[17] >> 6;
    header->colorPrimaries = bytes[18];
    header->transferCharacteristic = bytes[19];
    header->matrixCoefficients = bytes[20];
    header->lumaMatrix.fill(defaultWeight);
    header->chromaMatrix.fill(defaultWeight);
    return header->headerSize;
}

} // namespace

// A frame with any other tag than that of the standard is taken for one of the standard form. Kept.
uint32_t PrxFrameHeaderOffset(const PrxBufferPiece& frame) { return HasShortMark(frame) ? 0 : 8; }

uint32_t PrxParseFrameHeader(const PrxBufferPiece& chain, PrxFrameHeader* header) {
    HeaderBytes bytes;
    PrxCopyBytes(chain, bytes.size(), bytes.data());
    // The mark counts at the header's own start too: a standard frame whose encoder identifier begins with it
    // is read with the short layout. Kept.
    return HasShortMark(chain) ? ParseShortLayout(bytes, header) : ParseStandardLayout(bytes, header);
}

// The slice count isn't read: a wrong one, or 0, does no harm. Kept.
uint32_t PrxReadPictureHeader(const PrxBufferPiece& chain, uint32_t* log2SliceMbWidth) {
    const uint32_t headerSize = PrxByteAt(chain, 0) >> 3;
    if (headerSize < smallestPictureHeader || PrxTotalSize(chain) < headerSize) return 0;
    *log2SliceMbWidth = PrxByteAt(chain, 7) >> 4 & 3;
    return headerSize;
}

uint32_t PrxGetPictureSize(const PrxBufferPiece& chain) { return PrxRead32At(chain, 1); }

void PrxInitPictureLayout(PrxPictureLayout* layout, const PrxBufferPiece& picture, uint32_t width,
                          uint32_t height) {
    *layout = {};
    uint32_t log2SliceMbWidth = 0;
    const uint32_t headerSize = PrxReadPictureHeader(picture, &log2SliceMbWidth);
    if (headerSize == 0) return;
    layout->sliceTable = PrxAdvance(picture, headerSize);
    layout->mbWidth = PrxMbCount(width);
    layout->mbHeight = PrxMbCount(height);
    layout->sliceMbWidth = 1U << log2SliceMbWidth;
    layout->slicesPerRow = PrxSlicesPerRow(log2SliceMbWidth, layout->mbWidth);
    layout->sliceCount = layout->slicesPerRow * layout->mbHeight;
}

uint32_t PrxSlicesPerRow(uint32_t log2SliceMbWidth, uint32_t mbWidth) {
    // Each bit set in what full slices leave of a row is one narrower slice: see `PrxNextSliceWidth`.
    const uint32_t rest = mbWidth & ((1U << log2SliceMbWidth) - 1);
    return (mbWidth >> log2SliceMbWidth) + static_cast<uint32_t>(std::popcount(rest));
}

uint32_t PrxNextSliceWidth(uint32_t sliceMbWidth, uint32_t mbLeft) {
    while (sliceMbWidth > mbLeft)
        sliceMbWidth >>= 1;
    return sliceMbWidth;
}
