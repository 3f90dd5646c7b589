// Any bytes as frame, picture and slice headers, in one piece and cut into several: what the parsers say must
// not depend on the cuts. Four bytes of options come first.

#include "prores/PrxHeaders.h"
#include "prores/PrxSliceHeader.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <list>
#include <vector>

namespace {

constexpr size_t optionBytes = 4;

/// The input in pieces of `pieceSize` bytes, each in memory of its own; some are empty.
class Pieces {
public:
    Pieces(const std::vector<uint8_t>& bytes, size_t pieceSize) {
        for (size_t at = 0; at < bytes.size(); at += pieceSize)
            Add({bytes.begin() + static_cast<ptrdiff_t>(at),
                 bytes.begin() + static_cast<ptrdiff_t>(std::min(at + pieceSize, bytes.size()))});
        for (auto piece = pieces_.begin(); piece != pieces_.end(); ++piece)
            piece->next = std::next(piece) != pieces_.end() ? &*std::next(piece) : nullptr;
    }
    PrxBufferPiece Head() const { return pieces_.empty() ? PrxBufferPiece{} : pieces_.front(); }

private:
    void Add(std::vector<uint8_t> bytes) {
        memory_.push_back(std::move(bytes));
        memory_.emplace_back();
        for (auto one = std::prev(memory_.end(), 2); one != memory_.end(); ++one)
            pieces_.push_back({one->data(), one->size(), nullptr});
    }

    std::list<std::vector<uint8_t>> memory_;
    std::list<PrxBufferPiece> pieces_;
};

/// All that the parsers say.
struct Reading {
    uint64_t total = 0;
    uint32_t headerSize = 0;
    PrxFrameHeader frame = {};
    uint32_t pictureHeaderSize = 0;
    uint32_t log2SliceMbWidth = 0;
    uint32_t pictureSize = 0;
    uint32_t layout[5] = {};
    uint32_t sliceHeaderSize = 0;
    PrxSliceHeader slice = {};
};

Reading Read(const PrxBufferPiece& input, size_t pictureOffset, bool sliceHasAlpha) {
    Reading reading;
    reading.total = PrxTotalSize(input);
    reading.headerSize = PrxParseFrameHeader(PrxAdvance(input, PrxFrameHeaderOffset(input)), &reading.frame);
    const PrxBufferPiece picture = PrxAdvance(input, pictureOffset);
    reading.pictureHeaderSize = PrxReadPictureHeader(picture, &reading.log2SliceMbWidth);
    reading.pictureSize = PrxGetPictureSize(picture);
    PrxPictureLayout layout = {};
    PrxInitPictureLayout(&layout, picture, reading.frame.width, reading.frame.height);
    reading.layout[0] = layout.mbWidth;
    reading.layout[1] = layout.mbHeight;
    reading.layout[2] = layout.sliceMbWidth;
    reading.layout[3] = layout.slicesPerRow;
    reading.layout[4] = layout.sliceCount;
    const auto sliceSize = static_cast<uint32_t>(PrxTotalSize(picture));
    reading.sliceHeaderSize = PrxReadSliceHeader(picture, sliceSize, sliceHasAlpha, &reading.slice);
    return reading;
}

bool SameHeader(const PrxFrameHeader& a, const PrxFrameHeader& b) {
    return a.width == b.width && a.height == b.height && a.chromaFormat == b.chromaFormat &&
           a.interlaceMode == b.interlaceMode && a.matrixCoefficients == b.matrixCoefficients &&
           a.sourcePixelFormat == b.sourcePixelFormat && a.alphaType == b.alphaType &&
           a.lumaMatrix == b.lumaMatrix && a.chromaMatrix == b.chromaMatrix;
}

bool SameSlice(const Reading& a, const Reading& b) {
    if (a.sliceHeaderSize != b.sliceHeaderSize) return false;
    return a.sliceHeaderSize == 0 ||
           (a.slice.quantiser == b.slice.quantiser && a.slice.lumaSize == b.slice.lumaSize &&
            a.slice.cbSize == b.slice.cbSize && a.slice.crSize == b.slice.crSize &&
            a.slice.alphaSize == b.slice.alphaSize);
}

bool Same(const Reading& a, const Reading& b) {
    return a.total == b.total && a.headerSize == b.headerSize && a.pictureSize == b.pictureSize &&
           a.pictureHeaderSize == b.pictureHeaderSize && std::equal(a.layout, a.layout + 5, b.layout) &&
           (a.headerSize == 0 || SameHeader(a.frame, b.frame)) && SameSlice(a, b);
}

/// What the rest of the decoder relies on.
bool IsSound(const Reading& reading) {
    const bool headerIsSound = reading.headerSize == 0 || reading.headerSize >= 20;
    const bool sliceIsSound =
        reading.sliceHeaderSize == 0 || (reading.slice.quantiser >= 1 && reading.slice.quantiser <= 512);
    const bool layoutIsSound = reading.layout[4] == reading.layout[3] * reading.layout[1];
    return headerIsSound && sliceIsSound && layoutIsSound;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < optionBytes) return 0;
    const std::vector<uint8_t> bytes(data + optionBytes, data + size);
    const size_t pictureOffset = data[1] | static_cast<size_t>(data[2]) << 8;
    const bool sliceHasAlpha = (data[3] & 1) != 0;
    const Reading whole = Read({bytes.data(), bytes.size(), nullptr}, pictureOffset, sliceHasAlpha);
    const Pieces pieces(bytes, size_t{1} + data[0] % 32);
    if (!IsSound(whole) || !Same(whole, Read(pieces.Head(), pictureOffset, sliceHasAlpha))) std::abort();
    return 0;
}
