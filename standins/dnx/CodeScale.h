#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace dnx {

/// Lowest and highest code of samples that video may use: those beyond are timing codes. Words of 16 bits
/// exist in memory only and use every code.
constexpr uint32_t LowestCode(int depth) { return depth < 16 ? 1u << (depth - 8) : 0; }
constexpr uint32_t HighestCode(int depth) { return depth < 16 ? (255u << (depth - 8)) - 1 : 65535; }

/// Takes codes of video range from one depth to another. More bits are a shift; fewer bits are rounded to
/// nearest and limited to the codes that video may use; the same number of bits changes nothing.
class CodeScale {
public:
    constexpr CodeScale(int fromDepth, int toDepth)
        : up_(std::max(toDepth - fromDepth, 0)), down_(std::max(fromDepth - toDepth, 0)),
          half_(down_ > 0 ? 1u << (down_ - 1) : 0), lowest_(down_ > 0 ? LowestCode(toDepth) : 0),
          highest_(down_ > 0 ? HighestCode(toDepth) : 65535) {}

    constexpr uint32_t operator()(uint32_t code) const {
        return std::min(std::max(((code << up_) + half_) >> down_, lowest_), highest_);
    }

private:
    int up_;
    int down_;
    uint32_t half_;
    uint32_t lowest_;
    uint32_t highest_;
};

/// Samples of a packed row, which may stand at any address.
template <typename Word>
uint32_t LoadSample(const uint8_t* row, size_t index) {
    Word word;
    std::memcpy(&word, row + index * sizeof(Word), sizeof(Word));
    return word;
}
template <typename Word>
void StoreSample(uint8_t* row, size_t index, uint32_t value) {
    const Word word = static_cast<Word>(value);
    std::memcpy(row + index * sizeof(Word), &word, sizeof(Word));
}

} // namespace dnx
