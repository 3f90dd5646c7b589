#include "mediafoundation/StreamUnits.h"

#include <algorithm>

namespace mediafoundation {

namespace {

constexpr uint8_t startCode[] = {0, 0, 1};

} // namespace

std::vector<std::span<const uint8_t>> StreamUnits(std::span<const uint8_t> stream) {
    std::vector<std::span<const uint8_t>> units;
    const auto findCode = [&](auto from) {
        return std::search(from, stream.end(), std::begin(startCode), std::end(startCode));
    };
    auto code = findCode(stream.begin());
    while (code != stream.end()) {
        const auto begin = code + std::size(startCode);
        code = findCode(begin);
        units.emplace_back(begin, code);
    }
    return units;
}

void ParameterSets::Keep(std::span<const uint8_t> unit) {
    constexpr size_t most = 32 + 256;
    constexpr size_t mostBytes = 0xffff;
    if (!IsOf(unit, UnitType::SequenceSet) && !IsOf(unit, UnitType::PictureSet)) return;
    if (unit.size() > mostBytes) return;
    std::erase_if(sets_, [&](const std::vector<uint8_t>& set) { return std::ranges::equal(set, unit); });
    sets_.emplace_back(unit.begin(), unit.end());
    if (sets_.size() > most) sets_.pop_front();
}

std::vector<uint8_t> ParameterSets::Stream() const {
    std::vector<uint8_t> stream;
    for (const std::vector<uint8_t>& set : sets_) {
        stream.push_back(0);
        stream.insert(stream.end(), std::begin(startCode), std::end(startCode));
        stream.insert(stream.end(), set.begin(), set.end());
    }
    return stream;
}

} // namespace mediafoundation
