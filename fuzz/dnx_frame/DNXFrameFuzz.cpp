// A clip of DNx: a whole frame, a damaged one of any compression, and the whole one once more. What is
// checked beside memory: a frame that fails leaves the image as it was, and the whole one comes out the same
// behind the damaged one. Six bytes of options come first; then either the damaged frame itself, or a cut and
// changes to a whole frame. The library of DNx must be beside the host's. -close_fd_mask=2 keeps the codec's
// words away.

#include "WholeFrames.h"
#include "framework/CxAVCodecRegistry.h"
#include "framework/MemoryTrackSource.h"
#include "host/Image.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <span>

namespace {

constexpr size_t optionBytes = 6;
constexpr size_t cutBytes = 3;
constexpr size_t changeBytes = 4;
constexpr size_t headerBytes = 640;
constexpr ImageDataKind kinds[] = {ImageData_RGBA8, ImageData_RGBA16, ImageData_RGBAHalf,
                                   ImageData_RGBAFloat};

struct ReleaseImage {
    void operator()(Image* image) const { Image::Free(image); }
};
using ImagePointer = std::unique_ptr<Image, ReleaseImage>;

/// What of the clip the options tell.
struct Options {
    const WholeFrame& first;   ///< the decoder is made for it
    const WholeFrame& changed; ///< what the damaged frame was
    bool isRaw;                ///< the damaged frame stands in the input
    ImageDataKind kind;
    int32_t extraTrackRows; ///< beyond those of the first frame; negative for fewer, as in the next two
    int32_t extraImageColumns;
    int32_t extraImageRows;
};

/// Most inputs ask for the small frames, which take less time.
const WholeFrame& Pick(uint8_t byte) {
    const std::vector<WholeFrame>& frames = WholeFrames();
    constexpr size_t ofAnySize = 5;
    if (byte < 240) return frames[frames.size() - 1 - byte % ofAnySize];
    return frames[byte % frames.size()];
}

Options ReadOptions(const uint8_t* bytes) {
    const auto extra = [&](int bit, uint8_t byte) {
        return (bytes[2] & bit) != 0 ? static_cast<int8_t>(byte) / 8 : 0;
    };
    return {Pick(bytes[0]),     Pick(bytes[1]),     (bytes[2] & 1) != 0, kinds[bytes[2] >> 6],
            extra(2, bytes[3]), extra(4, bytes[4]), extra(8, bytes[5])};
}

size_t NumberAt(std::span<const uint8_t> bytes) { return bytes[0] | bytes[1] << 8 | bytes[2] << 16; }

/// Changes a frame: first how much of its end is cut off, then places and what is put there. Half of the
/// places are in the header.
std::vector<uint8_t> Damaged(std::vector<uint8_t> frame, std::span<const uint8_t> input) {
    if (input.size() >= cutBytes) {
        const size_t cut = NumberAt(input);
        if (cut % 2 != 0) frame.resize(frame.size() - cut / 2 % frame.size());
        input = input.subspan(cutBytes);
    }
    for (; input.size() >= changeBytes; input = input.subspan(changeBytes)) {
        const size_t place = NumberAt(input);
        const size_t range = place % 2 != 0 ? std::min(headerBytes, frame.size()) : frame.size();
        frame[place / 2 % range] = input[cutBytes];
    }
    return frame;
}

std::vector<uint8_t> PixelsOf(const Image& image) {
    std::vector<uint8_t> pixels;
    const int64_t rowBytes = int64_t{image.Width} * image.PixelStride;
    for (int32_t row = 0; row < image.Height; ++row)
        pixels.insert(pixels.end(), image.RowAddress(row), image.RowAddress(row) + rowBytes);
    return pixels;
}

void Require(bool holds) {
    if (!holds) std::abort();
}

/// Decodes a frame into a fresh image, which is black and transparent.
/// @return the pixels, or nothing for a frame that fails
std::vector<uint8_t> Decode(CxAbstractAVCodec& decoder, int32_t frame, const Options& options) {
    const ImagePointer image(Image::Allocate(std::max(options.first.width + options.extraImageColumns, 0),
                                             std::max(options.first.height + options.extraImageRows, 0),
                                             options.kind));
    Require(image != nullptr);
    Image* target = image.get();
    const bool decoded = decoder.GetDecodedFrame(frame, target) == CxAV_OK;
    std::vector<uint8_t> pixels = PixelsOf(*image);
    Require(image->ImageInfo.IsTable() == decoded);
    if (decoded) return pixels;
    Require(std::ranges::all_of(pixels, [](uint8_t byte) { return byte == 0; }));
    return {};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < optionBytes) return 0;
    const Options options = ReadOptions(data);
    const std::span<const uint8_t> input(data + optionBytes, size - optionBytes);
    std::vector<uint8_t> damaged = options.isRaw ? std::vector<uint8_t>(input.begin(), input.end())
                                                 : Damaged(options.changed.bytes, input);
    MemoryTrackSource source(options.first.fourCC, options.first.width,
                             options.first.height + options.extraTrackRows,
                             {options.first.bytes, std::move(damaged)});
    const std::unique_ptr<CxAbstractAVCodec> decoder(CxAVCodecRegistry::CreateDecoder(&source));
    Require(decoder != nullptr);

    // Every other clip begins with the damaged frame, whose header the decoder is made for then.
    const bool damagedFirst = (data[2] & 16) != 0;
    if (damagedFirst) {
        Decode(*decoder, 1, options);
        Decode(*decoder, 0, options);
        return 0;
    }
    const std::vector<uint8_t> before = Decode(*decoder, 0, options);
    Decode(*decoder, 1, options);
    Require(Decode(*decoder, 0, options) == before);
    return 0;
}
