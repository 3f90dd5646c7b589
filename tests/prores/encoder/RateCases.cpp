#include "prores/encoder/RateCases.h"

#include "prores/PrxSliceHeader.h"
#include "prores/encoder/PrxPictureEncoder.h"
#include "prores/encoder/PrxScale.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <map>
#include <numbers>
#include <ostream>
#include <set>

namespace {

using Block = std::array<int, 64>; ///< samples of 12 bits around 0

/// A block whose AC coefficients are all `magnitude` or its negative, of the orthonormal transform.
Block MakeEqualLevels(std::mt19937& random, double magnitude) {
    const auto basis = [](int frequency, int place) {
        const double scale = frequency == 0 ? std::sqrt(0.125) : 0.5;
        return scale * std::cos((2 * place + 1) * frequency * std::numbers::pi / 16);
    };
    std::array<double, 64> sums = {};
    for (int i = 1; i < 64; ++i) {
        const double coefficient = random() % 2 != 0 ? magnitude : -magnitude;
        for (int at = 0; at < 64; ++at)
            sums[static_cast<size_t>(at)] += coefficient * basis(i / 8, at / 8) * basis(i % 8, at % 8);
    }
    Block block;
    for (size_t at = 0; at < block.size(); ++at)
        block[at] = static_cast<int>(std::lround(sums[at]));
    return block;
}

/// Replaces the colours of a `y416` picture.
void ShowEqualLevels(InputPicture* picture) {
    // Levels of 5 to 13 at the finest scale: it is predicted that all of them stay when that is tripled
    // twice, and none when thrice.
    constexpr double least = 20, step = 0.5;
    std::mt19937 random(1);
    std::array<Block, 65> blocks;
    for (size_t i = 0; i < blocks.size(); ++i)
        blocks[i] = MakeEqualLevels(random, least + step * static_cast<double>(i));
    const PrxPixelBuffer& buffer = picture->buffer;
    for (int32_t y = 0; y < buffer.height; y += 8) {
        for (int32_t x = 0; x < buffer.width; x += 8) {
            for (int32_t component = 1; component < 4; ++component) {
                const size_t nearby = random() % 8;
                const Block& block = blocks[static_cast<size_t>(x * 57 / buffer.width) + nearby];
                for (int32_t at = 0; at < 64; ++at) {
                    const auto word = static_cast<uint16_t>(32768 + 16 * block[static_cast<size_t>(at)]);
                    uint8_t* pixel =
                        buffer.baseAddress + ptrdiff_t{buffer.rowBytes} * (y + at / 8) + 8 * (x + at % 8);
                    std::memcpy(pixel + 2 * component, &word, sizeof word);
                }
            }
        }
    }
}

/// Indices of the picture's slices but for those at which a search leaves small ones.
std::set<uint32_t> CommonIndices(const CodedPicture& picture, uint32_t startQuantIndex) {
    std::set<uint32_t> indices;
    for (const CodedSlice& slice : picture.slices)
        indices.insert(slice.quantIndex);
    for (int64_t scale = PrxQuantiserOf(startQuantIndex); scale < prxMaxScale; scale *= 3)
        indices.erase(PrxQuantIndexOf(scale));
    return indices;
}

/// The slices of a progressive case, all at one index and without budgets.
std::vector<CodedSlice> EncodeWithoutBudgets(const RateCase& test, const std::vector<uint8_t>& frame,
                                             uint32_t quantIndex) {
    constexpr PrxPoolClient client = prxPoolClientFor<PrxEncodeRowJob, PrxEncodeContext, PrxEncodeRow>;
    constexpr size_t headersSize = 156;
    constexpr int32_t enough = 1 << 24;
    const InputPicture picture = MakeRateCase(test);
    const PrxPixelBuffer& buffer = picture.buffer;
    const PrxThreadPoolPtr pool(PrxThreadPool::create(2, nullptr, client));
    const PrxRateTarget target = {
        quantIndex, PrxGetProfile(test.settings.codecType).matrixIndex, enough, enough, 2, 6};
    std::vector<uint8_t> bytes(frame.begin(), frame.begin() + headersSize);
    bytes.resize(headersSize + enough);
    PrxPictureEncoder encoder;
    const PrxCodedPicture coded = encoder.Encode(
        *pool, {buffer.baseAddress, buffer.rowBytes, buffer.pixelFormat, buffer.width, buffer.height, false},
        target, PrxChooseAlphaCoder(false, buffer.pixelFormat), std::span(bytes).subspan(headersSize));
    bytes.resize(headersSize + coded.size);
    for (size_t i = 0; i < 4; ++i)
        bytes[i] = static_cast<uint8_t>(bytes.size() >> (24 - 8 * i));
    return ReadPictures(bytes).at(0).slices;
}

} // namespace

void PrintTo(const RateCase& test, std::ostream* out) { *out << test.name; }

InputPicture MakeRateCase(const RateCase& test) {
    InputPicture picture = MakePicture(test.pixelFormat, test.width, test.height, Content::Noise);
    if (test.pixelFormat == prxFormatY416) ShowEqualLevels(&picture);
    return picture;
}

bool HasBudgets(const RateCase& test, const std::vector<uint8_t>& frame) {
    const std::vector<CodedPicture> pictures = ReadPictures(frame);
    const uint32_t start = PrxGetProfile(test.settings.codecType).startQuantIndex;
    return !pictures.empty() && std::ranges::all_of(pictures, [&](const CodedPicture& picture) {
        const std::set<uint32_t> indices = CommonIndices(picture, start);
        const bool isCoarsest = indices == std::set<uint32_t>{prxMaxQuantIndex};
        return isCoarsest ? CountCutPlanes(test, frame) > 0 : indices.size() > 1;
    });
}

size_t CountCutPlanes(const RateCase& test, const std::vector<uint8_t>& frame) {
    const std::vector<CodedSlice> slices = ReadPictures(frame).at(0).slices;
    std::map<uint32_t, std::vector<CodedSlice>> whole;
    size_t cut = 0;
    for (size_t i = 0; i < slices.size(); ++i) {
        std::vector<CodedSlice>& same = whole[slices[i].quantIndex];
        if (same.empty()) same = EncodeWithoutBudgets(test, frame, slices[i].quantIndex);
        for (size_t plane = 0; plane < 3; ++plane)
            cut += slices[i].planeSize[plane] < same[i].planeSize[plane] ? 1 : 0;
    }
    return cut;
}
