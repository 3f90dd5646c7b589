// Any bytes as a frame, decoded to any format in any mode by one or three workers, into a buffer of exactly
// the size that is told. Eight bytes of options come first. What is checked beside memory: a refused frame
// leaves the buffer as it was, and workers and instruction sets make no difference to a picture.

#include "prores/Prx.h"
#include "prores/PrxDecoder.h"
#include "prores/PrxFormats.h"
#include "prores/PrxHeaders.h"
#include "support/VectorTargets.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace {

constexpr uint32_t formats[] = {prxFormat2vuy, prxFormatYuvs, prxFormatV210, prxFormatV216, prxFormatW216,
                                prxFormatV408, prxFormatR408, prxFormatY408, prxFormatY416, prxFormatR4fl,
                                prxFormatArgb, prxFormatBgra, prxFormatB64a, prxFormatR10k, prxFormatR210,
                                prxFormatN302, prxFormatL302, 0x3f3f3f3f};

constexpr size_t optionBytes = 8;
constexpr uint32_t largestSide = 1024; ///< pixels that a target offers at most
constexpr uint8_t fill = 0xa5;

struct Options {
    uint32_t pixelFormat;
    int32_t mode;     ///< of `PrxDecoder::decodeFrame`; 0: through `PrxDecodeFrame`
    uint32_t quality; ///< of `PrxDecodeFrame`
    bool threeWorkers;
    bool ignoreAlpha;
    bool wantsOpaque;
    bool fixesSize;      ///< makes the frame's own size field right
    bool comparesTwo;    ///< decodes again by other workers and another instruction set
    int32_t rowSlack;    ///< bytes beyond the least row size
    int32_t heightSlack; ///< rows beyond the picture's height
    uint8_t instructionSet;
    uint8_t split; ///< bytes in the input's first piece; 0 for one piece
};

Options ReadOptions(const uint8_t* bytes) {
    return {formats[bytes[0] % std::size(formats)],
            bytes[1] % 14,
            bytes[7],
            (bytes[2] & 1) != 0,
            (bytes[2] & 2) != 0,
            (bytes[2] & 4) != 0,
            (bytes[2] & 8) != 0,
            (bytes[2] & 16) != 0,
            static_cast<int8_t>(bytes[3]),
            static_cast<int8_t>(bytes[4]),
            bytes[5],
            bytes[6]};
}

/// A target of the frame's size, as far as that is bearable.
struct Target {
    std::vector<uint8_t> bytes;
    PrxOutputTarget description = {};

    Target(const Options& options, const std::vector<uint8_t>& frame) {
        const PrxBufferPiece chain{frame.data(), frame.size(), nullptr};
        PrxFrameHeader header = {};
        PrxParseFrameHeader(PrxAdvance(chain, PrxFrameHeaderOffset(chain)), &header);
        const uint32_t width = std::min(header.width, largestSide);
        const int32_t height =
            static_cast<int32_t>(std::min(header.height, largestSide)) + options.heightSlack;
        const PrxGroupSize group = PrxGetGroupSize(options.pixelFormat);
        const uint32_t pixels = options.pixelFormat == prxFormatV210 ? width : (width + 15) / 16 * 16;
        const int32_t rowBytes =
            static_cast<int32_t>(pixels * group.bytesPerGroup / group.pixelsPerGroup) + options.rowSlack;
        bytes.assign(static_cast<size_t>(std::max(rowBytes, 0)) * static_cast<size_t>(std::max(height, 0)),
                     fill);
        bytes.shrink_to_fit();
        description = {bytes.data(), rowBytes, options.pixelFormat, static_cast<int32_t>(width), height};
    }

    bool IsUntouched() const {
        return std::all_of(bytes.begin(), bytes.end(), [](uint8_t byte) { return byte == fill; });
    }
};

PrxDecoder& InnerDecoder(bool threeWorkers) {
    static PrxDecoder one(1, nullptr);
    static PrxDecoder three(3, nullptr);
    return threeWorkers ? three : one;
}

PrxDecoderRef OuterDecoder(bool threeWorkers) {
    static const PrxDecoderRef one = PrxCreateDecoder(1, nullptr);
    static const PrxDecoderRef three = PrxCreateDecoder(3, nullptr);
    return threeWorkers ? three : one;
}

int32_t DecodePieces(const Options& options, const std::vector<uint8_t>& frame,
                     const PrxOutputTarget& target) {
    const size_t first = std::min<size_t>(options.split, frame.size());
    const std::vector<uint8_t> head(frame.begin(), frame.begin() + static_cast<ptrdiff_t>(first));
    const std::vector<uint8_t> tail(frame.begin() + static_cast<ptrdiff_t>(first), frame.end());
    const PrxBufferPiece second{tail.data(), tail.size(), nullptr};
    const PrxBufferPiece input{head.data(), head.size(), &second};
    uint8_t isOpaque = 0;
    return InnerDecoder(options.threeWorkers)
        .decodeFrame(input, target, options.mode, options.ignoreAlpha,
                     options.wantsOpaque ? &isOpaque : nullptr);
}

int32_t Decode(const Options& options, const std::vector<uint8_t>& frame, Target& target) {
    const std::vector<int64_t> sets = VectorTargets();
    const ForcedTarget forced(sets[options.instructionSet % sets.size()]);
    const PrxOutputTarget& to = target.description;
    if (options.mode != 0) return DecodePieces(options, frame, to);
    const PrxPixelBuffer buffer = {to.baseAddress, to.rowBytes, to.pixelFormat, to.width, to.height};
    return PrxDecodeFrame(OuterDecoder(options.threeWorkers), frame.data(),
                          static_cast<int32_t>(frame.size()), &buffer, options.quality, options.ignoreAlpha);
}

void Require(bool holds) {
    if (!holds) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < optionBytes) return 0;
    Options options = ReadOptions(data);
    std::vector<uint8_t> frame(data + optionBytes, data + size);
    if (options.fixesSize && frame.size() >= 4) {
        for (size_t i = 0; i < 4; ++i)
            frame[i] = static_cast<uint8_t>(frame.size() >> (24 - 8 * i));
    }
    Target target(options, frame);
    const int32_t result = Decode(options, frame, target);
    Require(result > 0 ? static_cast<size_t>(result) <= frame.size() : target.IsUntouched());
    if (!options.comparesTwo) return 0;

    options.threeWorkers = !options.threeWorkers;
    ++options.instructionSet;
    Target other(options, frame);
    Require(Decode(options, frame, other) == result);
    Require(other.bytes == target.bytes);
    return 0;
}
