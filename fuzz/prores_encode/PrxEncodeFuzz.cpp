// Pictures of any size, format and content, encoded with any settings into a buffer of exactly the capacity
// that is told. Sixteen bytes of options come first, and the rest is content. What is checked beside memory:
// what is refused leaves the output as it was and nothing else is refused, frames are whole and within their
// bound, the decoder takes them, and workers and instruction sets make no difference.

#include "prores/encoder/EncodeFixture.h"
#include "prores/peer/EnginePicture.h"
#include "support/VectorTargets.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <span>
#include <vector>

namespace {

constexpr uint32_t unknown = 0x3f3f3f3f;
constexpr uint32_t codecs[] = {prxCodecApch, prxCodecApcn, prxCodecApcs, prxCodecApco,
                               prxCodecAp4h, prxCodecAp4x, unknown};
constexpr uint32_t formats[] = {prxFormat2vuy, prxFormatYuvs, prxFormatV210, prxFormatV216, prxFormatV408,
                                prxFormatR408, prxFormatY408, prxFormatY416, prxFormatR4fl, prxFormatArgb,
                                prxFormatB64a, prxFormatR10k, prxFormatR210, prxFormatN302, prxFormatW216,
                                prxFormatBgra, prxFormatL302, unknown};

constexpr size_t optionBytes = 16;
constexpr int32_t largestSide = 300; ///< pixels of a picture that is encoded
constexpr uint8_t fill = 0xa5;

enum class Filling { Tiled, Stretched, Noise };

struct Options {
    PrxEncodeSettings settings;
    uint32_t pixelFormat;
    int32_t width;
    int32_t height;
    int32_t rowSlack; ///< bytes between rows, or by which they overlap
    bool upwards;     ///< rows follow each other upwards in memory
    uint8_t offset;   ///< of the first byte from an aligned address
    int32_t slack;    ///< of the capacity beyond the bound
    Filling filling;
    uint8_t instructionSet;
    bool threeWorkers;
    bool comparesTwo; ///< encodes again by other workers and another instruction set
    int32_t matrix;
};

/// Ordinary sides mostly, and now and then one that no frame has.
int32_t SideOf(uint8_t low, uint8_t high) {
    constexpr int32_t impossible[] = {0, -1, 65536, INT32_MAX, INT32_MIN};
    if (high >= 250) return impossible[low % std::size(impossible)];
    return 1 + (low | high << 8) % largestSide;
}

Options ReadOptions(const uint8_t* bytes) {
    return {{codecs[bytes[0] % std::size(codecs)], static_cast<int8_t>(bytes[1]), bytes[2]},
            formats[bytes[3] % std::size(formats)],
            SideOf(bytes[4], bytes[5]),
            SideOf(bytes[6], bytes[7]),
            static_cast<int8_t>(bytes[8]),
            (bytes[9] & 1) != 0,
            static_cast<uint8_t>(bytes[9] >> 1 & 15),
            static_cast<int8_t>(bytes[10]),
            static_cast<Filling>(bytes[11] % 3),
            bytes[12],
            (bytes[13] & 1) != 0,
            (bytes[13] & 2) != 0,
            bytes[14]};
}

void Require(bool holds) {
    if (!holds) std::abort();
}

void Fill(std::span<uint8_t> bytes, std::span<const uint8_t> content, Filling filling) {
    constexpr size_t stretch = 64;
    std::minstd_rand random(content.empty() ? 1 : content[0] + 1u);
    for (size_t i = 0; i < bytes.size(); ++i) {
        const size_t at = filling == Filling::Stretched ? i / stretch : i;
        const uint8_t tile = content.empty() ? uint8_t{0} : content[at % content.size()];
        bytes[i] = filling == Filling::Noise ? static_cast<uint8_t>(random() >> 8) : tile;
    }
}

/// A picture in a block that has no byte beside it but those before its first.
struct Picture {
    std::vector<uint8_t> bytes;
    PrxPixelBuffer buffer;

    Picture(const Options& options, std::span<const uint8_t> content)
        : buffer{nullptr, 0, options.pixelFormat, options.width, options.height} {
        const int32_t width = std::clamp(options.width, 1, largestSide);
        const auto rows = static_cast<size_t>(std::clamp(options.height, 1, largestSide));
        const int32_t rowSize = RowSize(options.pixelFormat, width);
        const auto step = static_cast<size_t>(std::max(rowSize + options.rowSlack, 0));
        bytes.resize(options.offset + step * (rows - 1) + static_cast<size_t>(rowSize));
        bytes.shrink_to_fit();
        Fill(bytes, content, options.filling);
        const auto rowBytes = static_cast<int32_t>(step);
        buffer.baseAddress = bytes.data() + options.offset + (options.upwards ? step * (rows - 1) : 0);
        buffer.rowBytes = options.upwards ? -rowBytes : rowBytes;
    }
};

struct Coded {
    int32_t result;
    std::vector<uint8_t> output;
    int32_t size;
};

int32_t Capacity(const Options& options) {
    int32_t bound = 0;
    PrxGetMaxFrameSize(options.settings.codecType, options.settings.hasAlpha, options.width, options.height,
                       &bound, nullptr);
    // What no frame has is refused in any buffer.
    constexpr int32_t largest = 1 << 20;
    return std::min(bound, largest) + options.slack;
}

PrxEncoderRef Encoder(bool threeWorkers) {
    static const EncoderPtr one = MakeEncoder(1);
    static const EncoderPtr three = MakeEncoder(3);
    return threeWorkers ? three.get() : one.get();
}

Coded EncodePicture(const Options& options, std::span<const uint8_t> content) {
    const std::vector<int64_t> sets = VectorTargets();
    const ForcedTarget forced(sets[options.instructionSet % sets.size()]);
    const PrxEncoderRef encoder = Encoder(options.threeWorkers);
    PrxSetEncoderOption(encoder, 0x666d6174, sizeof(options.matrix), &options.matrix); // "fmat"
    const Picture picture(options, content);
    Coded coded{0, std::vector<uint8_t>(static_cast<size_t>(Capacity(options)), fill), -1};
    coded.result = PrxEncodeFrame(encoder, &options.settings, &picture.buffer, coded.output.data(),
                                  Capacity(options), &coded.size, nullptr);
    return coded;
}

bool IsEncodable(const Options& options) {
    const auto isSide = [](int32_t side) { return side >= 1 && side <= largestSide; };
    const bool isInput = std::ranges::find(allInputs, options.pixelFormat) != std::end(allInputs);
    // For an unknown codec the bound leaves alpha out.
    const bool hasRoom =
        options.slack >= 0 && (options.settings.codecType != unknown || options.settings.hasAlpha == 0);
    // Rows may not overlap; those of v210 are then not read.
    const bool hasRows = options.rowSlack >= 0 || options.pixelFormat == prxFormatV210;
    return hasRows && isSide(options.width) && isSide(options.height) && isInput &&
           IsTaken(options.settings.codecType, options.pixelFormat) && hasRoom;
}

void CheckFrame(const Options& options, Coded& coded) {
    Require(coded.size > 0 &&
            static_cast<size_t>(coded.size) <= coded.output.size() - static_cast<size_t>(options.slack));
    Require(std::all_of(coded.output.begin() + coded.size, coded.output.end(),
                        [](uint8_t byte) { return byte == fill; }));
    coded.output.resize(static_cast<size_t>(coded.size));
    // A mode of the caller's own stands in the header, and the picture is progressive all the same.
    const int32_t mode = options.settings.interlaceMode;
    if ((mode < 0 || mode > 2) && (mode & 3) != 0) return;
    Require(!ReadPictures(coded.output).empty());
    // One row leaves a field without any, which is coded and not decoded.
    if (mode != 0 && options.height == 1) return;
    static const DecoderPtr decoder(PrxCreateDecoder(1, nullptr));
    const EnginePicture decoded(decoder.get(), coded.output, options.width, options.height, prxFormatY416);
    Require(decoded.Result() == coded.size);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < optionBytes) return 0;
    Options options = ReadOptions(data);
    const std::span<const uint8_t> content(data + optionBytes, size - optionBytes);
    Coded coded = EncodePicture(options, content);
    if (coded.result != 0) {
        Require(coded.size == -1);
        Require(std::ranges::all_of(coded.output, [](uint8_t byte) { return byte == fill; }));
        Require(!IsEncodable(options));
        return 0;
    }
    CheckFrame(options, coded);
    if (!options.comparesTwo) return 0;
    options.threeWorkers = !options.threeWorkers;
    ++options.instructionSet;
    Coded other = EncodePicture(options, content);
    Require(other.result == 0);
    other.output.resize(static_cast<size_t>(other.size));
    Require(other.output == coded.output);
    return 0;
}
