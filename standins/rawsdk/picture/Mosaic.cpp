#include "rawsdk/picture/Mosaic.h"

#include <algorithm>

namespace rawsdk {

namespace {

constexpr uint32_t mostCode = 65535;

/// The plane that a sample stands for.
constexpr size_t PlaneAt(uint32_t x, uint32_t y) { return (x & 1) + (y & 1); }

std::vector<uint16_t> SamplesOf(const ToneParameters& parameters, size_t channel) {
    const auto gamma = static_cast<ToneParameters::Gamma>(parameters.gamma);
    std::vector<uint16_t> samples(mostCode + 1);
    for (uint32_t code = 0; code <= mostCode; ++code) {
        const double light = Decode(gamma, static_cast<double>(code) / mostCode) / parameters.gains[channel];
        const double limited = light > 0 ? std::min(light, 1.0) : 0;
        samples[code] = static_cast<uint16_t>(limited * mostSample + 0.5);
    }
    return samples;
}

} // namespace

Mosaic::Mosaic(const ToneParameters& parameters)
    : samples_{SamplesOf(parameters, 0), SamplesOf(parameters, 1), SamplesOf(parameters, 2)} {}

std::vector<uint16_t> Mosaic::Samples(const PlanarPicture& picture) const {
    std::vector<uint16_t> samples;
    samples.reserve(size_t{picture.width} * picture.height);
    for (uint32_t y = 0; y < picture.height; ++y)
        for (uint32_t x = 0; x < picture.width; ++x)
            samples.push_back(samples_[PlaneAt(x, y)][picture.Row(PlaneAt(x, y), y)[x]]);
    return samples;
}

} // namespace rawsdk
