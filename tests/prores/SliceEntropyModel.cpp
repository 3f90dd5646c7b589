#include "prores/SliceEntropyModel.h"

#include "prores/StreamCoefficients.h"

#include <algorithm>

namespace model {

namespace {

constexpr uint64_t maxRun = 2015;
constexpr uint64_t maxLevel = 16383;

void DecodeDc(BitSource& bits, const PrxSliceComponent& component) {
    if (bits.Ended()) return;
    const uint64_t first = bits.ReadCode(stream::firstDcBook);
    int64_t dc = first % 2 == 0 ? static_cast<int64_t>(first / 2) : -static_cast<int64_t>(first / 2) - 1;
    component.coefficients[0] = static_cast<int16_t>(dc);

    int64_t delta = 3;
    for (size_t block = 1; block < size_t{1} << component.log2BlockCount && !bits.Ended(); ++block) {
        const auto previous = static_cast<int>(std::clamp<int64_t>(delta, -3, 3));
        const uint64_t code = bits.ReadCode(stream::DcBook(previous));
        const auto magnitude = static_cast<int64_t>((code + 1) / 2);
        const bool negative = (previous < 0) != (code % 2 != 0);
        delta = negative ? -magnitude : magnitude;
        dc += delta;
        component.coefficients[block << component.log2BlockSize] = static_cast<int16_t>(dc);
    }
}

void DecodeAc(BitSource& bits, const PrxSliceComponent& component, const PrxCoefficientOrder& order) {
    const size_t blocks = size_t{1} << component.log2BlockCount;
    uint64_t run = 4;
    uint64_t level = 2;
    size_t position = blocks;
    while (!bits.Ended()) {
        run = bits.ReadCode(stream::RunBook(static_cast<int>(run)));
        if (bits.Ended()) return;
        level = bits.ReadCode(stream::LevelBook(static_cast<int>(level))) + 1;
        const bool negative = bits.Read(1) != 0;
        if (run > maxRun || level > maxLevel) return;
        position += run;
        if (position >= order.coefLimit * blocks) return;
        const auto value = static_cast<int16_t>(level);
        component
            .coefficients[(position % blocks << component.log2BlockSize) + order.scan[position / blocks]] =
            static_cast<int16_t>(negative ? -value : value);
        ++position;
    }
}

} // namespace

bool BitSource::BitAt(size_t position) const {
    return position / 8 < bytes_.size() && (bytes_[position / 8] >> (7 - position % 8) & 1) != 0;
}

bool BitSource::Ended() const {
    for (size_t i = 0; i < 32; ++i) {
        if (BitAt(position_ + i)) return false;
    }
    return true;
}

uint64_t BitSource::Read(uint32_t count) {
    uint64_t value = 0;
    for (uint32_t i = 0; i < count; ++i)
        value = value << 1 | static_cast<uint64_t>(BitAt(position_++));
    return value;
}

uint64_t BitSource::ReadCode(uint8_t book) {
    const uint32_t riceOrder = book >> 5;
    const uint32_t expOrder = book >> 2 & 7;
    const uint32_t switchBits = book & 3;
    uint32_t zeros = 0;
    while (Read(1) == 0)
        ++zeros;
    if (zeros <= switchBits) return (uint64_t{zeros} << riceOrder) + Read(riceOrder);
    const uint32_t moreBits = zeros - switchBits - 1 + expOrder;
    const uint64_t value = (uint64_t{1} << moreBits) + Read(moreBits) - (uint64_t{1} << expOrder);
    return value + (uint64_t{switchBits + 1} << riceOrder);
}

void DecodeComponent(const PrxSliceComponent& component, const PrxCoefficientOrder& order) {
    BitSource bits({component.data, component.size});
    DecodeDc(bits, component);
    DecodeAc(bits, component, order);
}

} // namespace model
