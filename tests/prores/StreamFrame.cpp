#include "prores/StreamFrame.h"

#include <algorithm>
#include <span>
#include <stdexcept>

namespace stream {

namespace {

int AlphaDepth(const FrameSpec& spec) { return spec.alphaType == 1 ? 8 : 16; }
int MacroblocksOf(int pixels) { return (pixels + 15) / 16; }
int PictureCount(const FrameSpec& spec) { return spec.interlaceMode == 0 ? 1 : 2; }

/// Alpha of a slice's 16 lines, in coding order.
std::vector<uint16_t> AlphaSamples(const FrameSpec& spec, const SlicePlace& place) {
    const auto opaque = static_cast<uint16_t>((1 << AlphaDepth(spec)) - 1);
    const int lineStep = PictureCount(spec);
    const int firstLine = IsBottomField(spec, place.picture) ? 1 : 0;
    std::vector<uint16_t> samples;
    for (int y = 16 * place.mbY; y < 16 * (place.mbY + 1); ++y) {
        for (int x = 16 * place.mbX; x < 16 * (place.mbX + place.mbCount); ++x) {
            samples.push_back(spec.alpha ? spec.alpha(x, y * lineStep + firstLine) : opaque);
        }
    }
    return samples;
}

struct SliceBlocks {
    std::vector<Block> luma;
    std::vector<Block> cb;
    std::vector<Block> cr;
};

SliceBlocks GatherBlocks(const FrameSpec& spec, const SlicePlace& place) {
    const int chromaBlocks = spec.chromaFormat == 3 ? 4 : 2;
    SliceBlocks blocks;
    for (int i = 0; i < place.mbCount; ++i) {
        const Macroblock macroblock =
            spec.coefficients ? spec.coefficients(place.picture, place.mbX + i, place.mbY) : Macroblock{};
        blocks.luma.insert(blocks.luma.end(), macroblock.luma.begin(), macroblock.luma.end());
        blocks.cb.insert(blocks.cb.end(), macroblock.cb.begin(), macroblock.cb.begin() + chromaBlocks);
        blocks.cr.insert(blocks.cr.end(), macroblock.cr.begin(), macroblock.cr.begin() + chromaBlocks);
    }
    return blocks;
}

Bytes BuildSlice(const FrameSpec& spec, const SlicePlace& place) {
    const Scan& scan = ScanOrder(spec.interlaceMode != 0);
    const bool hasAlpha = spec.alphaType != 0;
    const SliceBlocks blocks = GatherBlocks(spec, place);
    const Bytes luma = CodeComponent(blocks.luma, scan);
    const Bytes cb = CodeComponent(blocks.cb, scan);
    const Bytes cr = CodeComponent(blocks.cr, scan);
    const int headerSize = spec.sliceHeaderSize.value_or(hasAlpha ? 8 : 6);

    Bytes slice = {static_cast<uint8_t>(headerSize << 3), static_cast<uint8_t>(spec.quantIndex(place))};
    Append16(slice, static_cast<uint32_t>(luma.size()));
    Append16(slice, static_cast<uint32_t>(cb.size()));
    if (hasAlpha) {
        Append16(slice, static_cast<uint32_t>(cr.size()));
    }
    slice.resize(static_cast<size_t>(headerSize));
    Append(slice, luma);
    Append(slice, cb);
    Append(slice, cr);
    if (hasAlpha) {
        Append(slice, CodeAlpha(AlphaSamples(spec, place), AlphaDepth(spec)));
    }
    if (spec.editSlice) {
        spec.editSlice(place, slice);
    }
    if (slice.size() > 0xffff) {
        throw std::length_error("a slice of more than 65535 bytes");
    }
    return slice;
}

/// Appends one picture to the frame.
PicturePlaces AppendPicture(Bytes& frame, const FrameSpec& spec, int picture) {
    const std::vector<SlicePlace> places = SlicesOf(spec, picture);
    const size_t headerSize = static_cast<size_t>(std::max(spec.pictureHeaderSize, 8));
    PicturePlaces result;
    result.header = frame.size();
    result.sliceTable = result.header + headerSize;
    frame.resize(result.sliceTable + 2 * places.size());
    frame[result.header] = static_cast<uint8_t>(spec.pictureHeaderSize << 3);
    Patch16(frame, result.header + 5, static_cast<uint32_t>(places.size()));
    frame[result.header + 7] = static_cast<uint8_t>(spec.log2SliceMbWidth << 4);
    for (const SlicePlace& place : places) {
        const Bytes slice = BuildSlice(spec, place);
        Patch16(frame, result.sliceTable + 2 * result.slices.size(), static_cast<uint32_t>(slice.size()));
        result.slices.push_back(frame.size());
        Append(frame, slice);
    }
    Patch32(frame, result.header + 1, static_cast<uint32_t>(frame.size() - result.header));
    return result;
}

/// The frame header of the standard form, without matrices (SMPTE RDD 36, 5.1.1).
Bytes StandardHeaderFields(const FrameSpec& spec) {
    Bytes header = {0, 0, 0, static_cast<uint8_t>(spec.version)};
    Append32(header, spec.encoderId);
    Append16(header, static_cast<uint32_t>(spec.width));
    Append16(header, static_cast<uint32_t>(spec.height));
    for (const int value :
         {spec.chromaFormat << 6 | spec.interlaceMode << 2, spec.aspectAndRate, spec.colorPrimaries,
          spec.transferCharacteristic, spec.matrixCoefficients, spec.sourcePixelFormat << 4 | spec.alphaType,
          0, (spec.lumaMatrix ? 2 : 0) | (spec.chromaMatrix ? 1 : 0)}) {
        header.push_back(static_cast<uint8_t>(value));
    }
    return header;
}

Bytes StandardHeader(const FrameSpec& spec) {
    Bytes header = StandardHeaderFields(spec);
    for (const std::optional<QuantMatrix>& matrix : {spec.lumaMatrix, spec.chromaMatrix}) {
        if (matrix) {
            header.insert(header.end(), matrix->begin(), matrix->end());
        }
    }
    header.resize(static_cast<size_t>(spec.headerSize.value_or(static_cast<int>(header.size()))));
    if (header.size() >= 2) {
        Patch16(header, 0, static_cast<uint32_t>(header.size()));
    }
    return header;
}

/// The whole short form up to the first picture: 24 bytes, of which the first four are the frame's size.
Bytes ShortHeader(const FrameSpec& spec) {
    constexpr std::array<uint8_t, 4> interlaceBytes = {0, 0x40, 0x4e, 0x40};
    Bytes header(24);
    header[4] = 1;
    header[5] = 18;
    Patch16(header, 6, static_cast<uint32_t>(spec.width));
    Patch16(header, 8, static_cast<uint32_t>(spec.height));
    header[16] = interlaceBytes[static_cast<size_t>(spec.interlaceMode)];
    header[17] = static_cast<uint8_t>(spec.chromaFormat << 6);
    header[18] = static_cast<uint8_t>(spec.colorPrimaries);
    header[19] = static_cast<uint8_t>(spec.transferCharacteristic);
    header[20] = static_cast<uint8_t>(spec.matrixCoefficients);
    return header;
}

} // namespace

int PictureHeight(const FrameSpec& spec, int picture) {
    if (spec.interlaceMode == 0) {
        return spec.height;
    }
    return IsBottomField(spec, picture) ? spec.height / 2 : (spec.height + 1) / 2;
}

bool IsBottomField(const FrameSpec& spec, int picture) {
    return spec.interlaceMode != 0 && (picture == 0) == (spec.interlaceMode == 2);
}

std::vector<SlicePlace> SlicesOf(const FrameSpec& spec, int picture) {
    const int mbWidth = MacroblocksOf(spec.width);
    std::vector<SlicePlace> slices;
    for (int y = 0; y < MacroblocksOf(PictureHeight(spec, picture)); ++y) {
        for (int x = 0; x < mbWidth;) {
            int count = 1 << spec.log2SliceMbWidth;
            while (count > mbWidth - x) {
                count /= 2;
            }
            slices.push_back({picture, static_cast<int>(slices.size()), x, y, count});
            x += count;
        }
    }
    return slices;
}

Bytes BuildFrame(const FrameSpec& spec, FramePlaces* places) {
    FramePlaces found;
    Bytes frame;
    if (spec.shortForm) {
        found.header = 0;
        frame = ShortHeader(spec);
    } else {
        found.header = 8;
        frame = {0, 0, 0, 0, 'i', 'c', 'p', 'f'};
        Append(frame, StandardHeader(spec));
    }
    for (int picture = 0; picture < PictureCount(spec); ++picture) {
        found.pictures.push_back(AppendPicture(frame, spec, picture));
    }
    Patch32(frame, 0, static_cast<uint32_t>(frame.size()));
    if (places != nullptr) {
        *places = found;
    }
    return frame;
}

} // namespace stream
