#include "prores/encoder/PlaneCodeModel.h"

#include "prores/PrxSliceEntropy.h"
#include "prores/SliceEntropyModel.h"
#include "prores/StreamCoefficients.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdlib>

namespace plane {

namespace {

constexpr std::array<Filling, 9> fillings = {{
    {0.0, 0, 0, false},
    {0.01, 100, 3, false},
    {0.3, 1000, 12, true},
    {0.3, 3000, 2000, true},
    {1.0, 4095, 1, false},
    {0.9, 8191, 60, false},
    {0.5, 16383, 16383, true},
    {1.0, 16383, 16383, false},
    // What no decoder follows.
    {1.0, 32767, 32767, false},
}};

/// A magnitude up to `largest`.
uint32_t RandomMagnitude(std::mt19937& random, uint32_t largest, bool smallOnesPrevail) {
    if (largest == 0) return 0;
    if (!smallOnesPrevail) return random() % (largest + 1);
    const auto width = random() % (static_cast<uint32_t>(std::bit_width(largest)) + 1);
    return std::min(largest, static_cast<uint32_t>(random() % (1U << width)));
}

uint16_t RandomLevel(std::mt19937& random, uint32_t magnitude) {
    return magnitude == 0 ? uint16_t{0} : static_cast<uint16_t>(2 * magnitude + random() % 2);
}

/// Writes codes whole as long as they fit.
class BudgetedBits {
public:
    explicit BudgetedBits(size_t budget) : budget_(8 * budget) {}

    bool Put(const stream::BitWriter& code) {
        if (closed_ || bits_.Count() + code.Count() > budget_) {
            closed_ = true;
            return false;
        }
        for (size_t i = 0; i < code.Count(); ++i)
            bits_.Put(code.Data()[i / 8] >> (7 - i % 8) & 1, 1);
        return true;
    }

    int32_t Count() const { return static_cast<int32_t>(bits_.Count()); }
    const stream::Bytes& Data() const { return bits_.Data(); }

private:
    size_t budget_;
    bool closed_ = false;
    stream::BitWriter bits_;
};

bool CodeDc(const Plane& plane, BudgetedBits& bits, PrxPlaneStatistics* statistics) {
    int previousDelta = 3;
    for (uint32_t block = 0; block < plane.blockCount; ++block) {
        stream::BitWriter code;
        const int delta = plane.Value(block, 0) - (block > 0 ? plane.Value(block - 1, 0) : 0);
        if (block == 0) {
            stream::PutFirstDc(code, delta);
        } else {
            stream::PutDcDelta(code, delta, previousDelta);
            previousDelta = delta;
        }
        if (!bits.Put(code)) return false;
        statistics->dcChanges += delta != 0;
    }
    return true;
}

void CodeAc(const Plane& plane, BudgetedBits& bits, PrxPlaneStatistics* statistics) {
    int previousRun = 4;
    int previousLevel = 2;
    int run = 0;
    const std::vector<int> values = plane.InCodingOrder();
    for (size_t i = plane.blockCount; i < values.size(); ++i) {
        if (values[i] == 0) {
            ++run;
            continue;
        }
        const int magnitude = std::abs(values[i]);
        stream::BitWriter runCode;
        stream::BitWriter both;
        stream::PutCode(runCode, stream::RunBook(previousRun), static_cast<uint32_t>(run));
        stream::PutCode(both, stream::RunBook(previousRun), static_cast<uint32_t>(run));
        stream::PutCode(both, stream::LevelBook(previousLevel), static_cast<uint32_t>(magnitude - 1));
        both.Put(values[i] < 0, 1);
        if (!bits.Put(both)) return;
        statistics->runBits += static_cast<int32_t>(runCode.Count());
        for (size_t k = 0; k < 8; ++k)
            statistics->levelHistogram[k] += magnitude > (std::lround(std::pow(3, k)) - 1) / 2;
        previousRun = run;
        previousLevel = magnitude;
        run = 0;
    }
}

using Decoder = void (*)(const PrxSliceComponent&, const PrxCoefficientOrder&);

std::vector<int> Decode(Decoder decoder, const Plane& shape, const stream::Bytes& bytes) {
    std::vector<int16_t> coefficients(64 * shape.blockCount);
    const auto log2BlockCount = static_cast<uint32_t>(std::countr_zero(shape.blockCount));
    decoder({bytes.data(), bytes.size(), coefficients.data(), log2BlockCount, 6},
            {stream::ScanOrder(shape.interlaced), 64});
    std::vector<int> values;
    for (const uint8_t inBlock : stream::ScanOrder(shape.interlaced)) {
        for (uint32_t block = 0; block < shape.blockCount; ++block)
            values.push_back(coefficients[64 * block + inBlock]);
    }
    return values;
}

} // namespace

int Plane::Value(uint32_t block, uint32_t inBlock) const {
    const uint16_t level = levels[block * blockDistance + inBlock];
    return level % 2 != 0 ? -(level / 2) : level / 2;
}

std::vector<int> Plane::InCodingOrder() const {
    std::vector<int> values;
    for (const uint8_t inBlock : stream::ScanOrder(interlaced)) {
        for (uint32_t block = 0; block < blockCount; ++block)
            values.push_back(Value(block, inBlock));
    }
    return values;
}

std::span<const Filling> DecodableFillings() { return std::span(fillings).first(fillings.size() - 1); }

std::span<const Filling> AllFillings() { return fillings; }

Plane MakePlane(std::mt19937& random, uint32_t blockCount, uint32_t blockDistance, bool interlaced,
                const Filling& filling) {
    // The last block is not followed by one of another plane: nothing may be read there.
    Plane plane = {std::vector<uint16_t>((blockCount - 1) * blockDistance + 64), blockDistance, blockCount,
                   interlaced};
    std::bernoulli_distribution isLevel(filling.density);
    for (size_t i = 0; i < plane.levels.size(); ++i) {
        if (i % 64 == 0) {
            plane.levels[i] =
                RandomLevel(random, RandomMagnitude(random, filling.largestDc, filling.smallOnesPrevail));
        } else if (isLevel(random)) {
            const uint32_t magnitude =
                1 + RandomMagnitude(random, filling.largestAc - 1, filling.smallOnesPrevail);
            plane.levels[i] = RandomLevel(random, magnitude);
        }
    }
    return plane;
}

Plane MakeEmptyPlane(uint32_t blockCount) {
    return {std::vector<uint16_t>(64 * blockCount), 64, blockCount, false};
}

uint16_t LevelOf(int value) { return static_cast<uint16_t>(2 * std::abs(value) + (value < 0 ? 1 : 0)); }

Coded CodePlane(const Plane& plane, size_t budget) {
    BudgetedBits bits(budget);
    Coded coded;
    const bool fitted = CodeDc(plane, bits, &coded.statistics);
    coded.statistics.dcBits = bits.Count();
    if (fitted) CodeAc(plane, bits, &coded.statistics);
    coded.statistics.acBits = bits.Count() - coded.statistics.dcBits;
    coded.bytes = bits.Data();
    return coded;
}

std::vector<int> DecodeWithModel(const Plane& shape, const stream::Bytes& bytes) {
    return Decode(model::DecodeComponent, shape, bytes);
}

std::vector<int> DecodeWithEngine(const Plane& shape, const stream::Bytes& bytes) {
    return Decode(PrxDecodeSliceComponent, shape, bytes);
}

} // namespace plane
