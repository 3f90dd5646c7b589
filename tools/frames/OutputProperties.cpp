#include "frames/OutputProperties.h"

#include "media/ToolError.h"

#include <limits>

namespace {

constexpr Rational kDefaultRate{24, 1};

} // namespace

Rational OutputRate(const std::optional<Rational>& asked, const FrameTrack& track) {
    if (asked) return *asked;
    const Rational rate = track.movie ? track.movie->frameRate : kDefaultRate;
    constexpr int64_t most = std::numeric_limits<int32_t>::max();
    if (rate.num <= 0 || rate.den <= 0 || rate.num > most || rate.den > most)
        throw ToolError(ExitStatus::Usage, track.name, "its frame rate is not known; give it with --fps");
    return rate;
}

FieldOrder OutputFieldOrder(const FrameTrack& track) {
    switch (track.movie ? track.movie->fieldOrder.value : 0) {
    case 2:
    case 5: return FieldOrder::TopFirst;
    case 3:
    case 4: return FieldOrder::BottomFirst;
    default: return FieldOrder::Progressive;
    }
}

std::vector<std::string> InputWarnings(const FrameTrack& track) {
    std::vector<std::string> warnings;
    if (!track.movie) return warnings;
    if (!track.movie->damage.empty()) warnings.push_back(track.name + ": " + track.movie->damage);
    if (!track.movie->constantFrameRate)
        warnings.push_back(track.name + ": its frames are not evenly spaced; written at a steady rate");
    return warnings;
}
