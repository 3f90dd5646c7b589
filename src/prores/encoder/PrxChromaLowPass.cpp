#include "prores/encoder/PrxChromaLowPass.h"

#include "prores/PrxFormats.h"
#include "prores/PrxRoundToNearest.h"
#include "prores/encoder/PrxChromaLowPassVector.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {

template <typename T>
T Filtered(T left, T middle, T right) {
    return static_cast<T>((left + 2 * middle + right + 2) >> 2);
}
float Filtered(float left, float middle, float right) {
    const double sum = static_cast<double>(left) + 2.0 * static_cast<double>(middle);
    return static_cast<float>((sum + static_cast<double>(right)) * 0.25);
}

/// Channel `channel` of four of pixel `x`.
template <typename T>
T Get(const uint8_t* row, int32_t x, int32_t channel) {
    T value;
    std::memcpy(&value, row + (4 * static_cast<ptrdiff_t>(x) + channel) * sizeof(T), sizeof(T));
    return value;
}
template <typename T>
void Set(uint8_t* row, int32_t x, int32_t channel, T value) {
    std::memcpy(row + (4 * static_cast<ptrdiff_t>(x) + channel) * sizeof(T), &value, sizeof(T));
}

template <typename T, int32_t Cb, int32_t Cr>
void LowPassRow(uint8_t* row, int32_t width, int32_t first) {
    for (int32_t x = first; x < width; x += 2) {
        const int32_t left = std::max(x - 1, 0);
        const int32_t right = std::min(x + 1, width - 1);
        for (const int32_t channel : {Cb, Cr})
            Set<T>(
                row, x, channel,
                Filtered(Get<T>(row, left, channel), Get<T>(row, x, channel), Get<T>(row, right, channel)));
    }
}

[[gnu::noinline]] void LowPassFloatRow(uint8_t* row, int32_t width, int32_t first) {
    LowPassRow<float, 2, 3>(row, width, first);
}

void LowPassFloatRowNearest(uint8_t* row, int32_t width, int32_t first) {
    PrxRunRoundingToNearest<&LowPassFloatRow>(row, width, first);
}

} // namespace

void PrxLowPassY408(uint8_t* row, int32_t width, int32_t first) {
    LowPassRow<uint8_t, 2, 3>(row, width, first);
}
void PrxLowPassV408(uint8_t* row, int32_t width, int32_t first) {
    LowPassRow<uint8_t, 0, 2>(row, width, first);
}
void PrxLowPassY416(uint8_t* row, int32_t width, int32_t first) {
    LowPassRow<uint16_t, 2, 3>(row, width, first);
}

PrxChromaLowPass PrxGetScalarChromaLowPass(uint32_t pixelFormat) {
    switch (pixelFormat) {
    case prxFormatY408:
    case prxFormatR408: return PrxLowPassY408;
    case prxFormatV408: return PrxLowPassV408;
    case prxFormatY416: return PrxLowPassY416;
    case prxFormatR4fl: return LowPassFloatRowNearest;
    default: return nullptr;
    }
}

PrxChromaLowPass PrxGetChromaLowPass(uint32_t pixelFormat) {
    const PrxChromaLowPass vector = PrxSelectVectorChromaLowPass(pixelFormat);
    return vector != nullptr ? vector : PrxGetScalarChromaLowPass(pixelFormat);
}
