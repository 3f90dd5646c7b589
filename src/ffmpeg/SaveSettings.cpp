#include "ffmpeg/SaveSettings.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>

namespace CxFFMPEG {

namespace {

int32_t ToInt(double value) {
    constexpr double least = std::numeric_limits<int32_t>::min();
    constexpr double most = std::numeric_limits<int32_t>::max();
    return std::isnan(value) ? 0 : static_cast<int32_t>(std::clamp(value, least, most));
}

/// Rates in thousandths and what they stand for.
struct KnownRate {
    uint32_t thousandths;
    SaveRate rate;
};

constexpr std::array<KnownRate, 9> knownRates = {{
    {23976, {24000, 1001}},
    {23980, {24000, 1001}},
    {24000, {2400, 100}},
    {25000, {2500, 100}},
    {29970, {30000, 1001}},
    {30000, {3000, 100}},
    {50000, {5000, 100}},
    {59940, {60000, 1001}},
    {60000, {6000, 100}},
}};

} // namespace

SaveRate SaveRateOf(double framesPerSecond, int32_t divisor) {
    double thousandths = ToInt(framesPerSecond * 1000.0 + 0.5);
    if (divisor != 0) thousandths /= divisor;
    const auto scale = static_cast<uint32_t>(ToInt(std::floor(std::max(1.0, thousandths) + 0.5)));
    const auto* const known = std::find_if(knownRates.begin(), knownRates.end(),
                                           [=](const KnownRate& row) { return row.thousandths == scale; });
    return known != knownRates.end() ? known->rate : SaveRate{scale, 1000};
}

uint32_t BitRateOf(double kilobytes) { return static_cast<uint32_t>(ToInt(kilobytes * 8192.0)); }

uint32_t GopSizeOf(double frames) { return static_cast<uint32_t>(std::clamp(ToInt(frames), 0, 64)); }

PixelAspect ReducePixelAspect(double x, double y) {
    int32_t across = ToInt(std::floor(x * 10000.0 + 0.5));
    int32_t down = ToInt(std::floor(y * 10000.0 + 0.5));
    if (across == down) return {1, 1};
    if (std::min(across, down) < 1) return {across, down};
    const int32_t divisor = std::gcd(across, down);
    return {across / divisor, down / divisor};
}

uint32_t SaveFieldOrder(bool isInterlaced, int32_t width, int32_t height) {
    if (!isInterlaced) return 1;
    return width == 720 && (height == 480 || height == 486) ? 3 : 2;
}

} // namespace CxFFMPEG
