#include "prores/encoder/EncodeFixture.h"

#include "prores/PrxSliceHeader.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

int32_t RowSize(uint32_t pixelFormat, int32_t width) {
    if (pixelFormat == prxFormatV210) return (width + 5) / 6 * 16;
    const int32_t whole = PrxIs422Format(pixelFormat) ? (width + 1) / 2 * 2 : width;
    return whole * static_cast<int32_t>(PrxGetGroupSize(pixelFormat).bytesPerGroup);
}

namespace {

float FloatAt(Content content, std::mt19937& random, int32_t x, int32_t y) {
    if (content == Content::Flat) return 0.5F;
    if (content == Content::Ramps) return static_cast<float>((x + 2 * y) % 1000) / 1000;
    return static_cast<float>(random()) / 4294967296.0F;
}

uint8_t ByteAt(Content content, std::mt19937& random, int32_t x, int32_t y) {
    if (content == Content::Noise) return static_cast<uint8_t>(random());
    return content == Content::Flat ? 0x80 : static_cast<uint8_t>((x / 8 + y) / 4);
}

/// Makes the alpha of an otherwise even picture opaque.
void MakeOpaque(InputPicture* picture) {
    const uint32_t format = picture->buffer.pixelFormat;
    const size_t pixelSize = PrxGetGroupSize(format).bytesPerGroup;
    const size_t alphaSize = PrxGetAlphaSampleSize(format);
    const size_t alphaAt = format == prxFormatV408 ? 3 : 0;
    if (alphaSize == 0 || format == prxFormatR4fl) return;
    for (size_t at = alphaAt; at < picture->bytes.size(); at += pixelSize)
        std::fill_n(picture->bytes.begin() + static_cast<ptrdiff_t>(at), alphaSize, uint8_t{0xff});
}

} // namespace

InputPicture MakePicture(uint32_t pixelFormat, int32_t width, int32_t height, Content content,
                         uint32_t seed) {
    std::mt19937 random(seed);
    const int32_t rowSize = RowSize(pixelFormat, width);
    InputPicture picture{std::vector<uint8_t>(static_cast<size_t>(rowSize) * static_cast<size_t>(height)),
                         {}};
    for (int32_t y = 0; y < height; ++y) {
        uint8_t* row = picture.bytes.data() + static_cast<ptrdiff_t>(rowSize) * y;
        if (pixelFormat == prxFormatR4fl) {
            for (int32_t i = 0; i < 4 * width; ++i) {
                const float value =
                    i % 4 == 0 && content != Content::Noise ? 1.0F : FloatAt(content, random, i / 4, y);
                std::memcpy(row + 4 * i, &value, sizeof value);
            }
        } else {
            std::generate_n(row, rowSize, [&, x = 0]() mutable { return ByteAt(content, random, x++, y); });
        }
    }
    picture.buffer = {picture.bytes.data(), rowSize, pixelFormat, width, height};
    if (content != Content::Noise) MakeOpaque(&picture);
    return picture;
}

CodedFrame Encode(PrxEncoderRef encoder, const PrxEncodeSettings& settings, const PrxPixelBuffer& picture) {
    int32_t capacity = 0;
    PrxGetMaxFrameSize(settings.codecType, settings.hasAlpha, picture.width, picture.height, &capacity,
                       nullptr);
    CodedFrame frame{0, std::vector<uint8_t>(static_cast<size_t>(capacity)), false};
    int32_t size = 0;
    uint8_t allOpaque = 0;
    frame.result =
        PrxEncodeFrame(encoder, &settings, &picture, frame.bytes.data(), capacity, &size, &allOpaque);
    frame.bytes.resize(static_cast<size_t>(std::clamp(size, 0, capacity)));
    frame.allOpaque = allOpaque == 1;
    return frame;
}

PrxFrameHeader ReadHeader(const std::vector<uint8_t>& frame) {
    PrxFrameHeader header{};
    PrxParseFrameHeader({frame.data() + 8, frame.size() - 8, nullptr}, &header);
    return header;
}

namespace {

/// Reads the picture at the start of `data`. Returns whether it is whole.
bool ReadPicture(const PrxBufferPiece& data, const PrxFrameHeader& header, uint32_t height,
                 CodedPicture* out) {
    out->size = PrxGetPictureSize(data);
    out->sliceCountField = PrxRead16At(data, 5);
    if (out->size > data.size || out->size < 8) return false;
    if (height == 0) return out->size == 8;
    PrxPictureLayout layout;
    PrxInitPictureLayout(&layout, {data.data, out->size, nullptr}, header.width, height);
    PrxBufferPiece next = PrxAdvance(layout.sliceTable, uint64_t{2} * layout.sliceCount);
    for (uint32_t i = 0; i < layout.sliceCount; ++i) {
        const uint32_t size = PrxRead16At(layout.sliceTable, uint64_t{2} * i);
        PrxSliceHeader slice;
        if (size > next.size) return false;
        if (PrxReadSliceHeader(next, size, header.alphaType != 0, &slice) == 0) return false;
        uint32_t left = layout.mbWidth, width = 0;
        for (uint32_t k = 0; k <= i % layout.slicesPerRow; ++k, left -= width)
            width = PrxNextSliceWidth(layout.sliceMbWidth, left);
        out->slices.push_back({slice.headerSize,
                               PrxByteAt(next, 1),
                               size,
                               slice.alphaSize,
                               static_cast<int32_t>(width),
                               {slice.lumaSize, slice.cbSize, slice.crSize}});
        next = PrxAdvance(next, size);
    }
    return next.size == 0;
}

bool AllZero(const PrxBufferPiece& data) {
    return std::all_of(data.data, data.data + data.size, [](uint8_t byte) { return byte == 0; });
}

} // namespace

std::vector<CodedPicture> ReadPictures(const std::vector<uint8_t>& frame) {
    PrxBufferPiece rest{frame.data(), frame.size(), nullptr};
    if (frame.size() < 156 || PrxRead32At(rest, 0) != frame.size()) return {};
    const PrxFrameHeader header = ReadHeader(frame);
    rest = PrxAdvance(rest, 8 + header.headerSize);
    std::vector<CodedPicture> pictures;
    const bool interlaced = header.interlaceMode == 1 || header.interlaceMode == 2;
    for (uint32_t i = 0; i < (interlaced ? 2U : 1U); ++i) {
        const bool bottom = (header.interlaceMode == 2) != (i == 1);
        const uint32_t height = interlaced ? (header.height + (bottom ? 0 : 1)) / 2 : header.height;
        CodedPicture picture{};
        if (!ReadPicture(rest, header, height, &picture)) return {};
        rest = PrxAdvance(rest, picture.size);
        pictures.push_back(picture);
    }
    if (!AllZero(rest) || (rest.size != 0 && rest.size < 50) || rest.size > 65) return {};
    return pictures;
}
