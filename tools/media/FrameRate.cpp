#include "media/FrameRate.h"

#include "media/AvHandles.h"

#include <climits>

namespace {

AVRational ToAv(Rational value) { return {static_cast<int>(value.num), static_cast<int>(value.den)}; }

int64_t FrameTicks(const FrameTable& table, int32_t frame) {
    return table.Sample(table.SampleForFrame(frame)).presentation;
}

bool LiesOnGrid(const FrameTable& table, AVRational timeBase, AVRational rate) {
    const int64_t start = FrameTicks(table, 0);
    for (int32_t frame = 1; frame < table.FrameCount(); ++frame) {
        const int64_t grid = av_rescale_q(frame, av_inv_q(rate), timeBase);
        if (grid < 0) return false; // beyond 64 bits
        const int64_t off = FrameTicks(table, frame) - start - grid;
        if (off < -1 || off > 1) return false;
    }
    return true;
}

/// Frames over time, from the first frame's start to the last one's.
Rational MeanRate(const FrameTable& table, AVRational timeBase) {
    const int32_t last = table.FrameCount() - 1;
    const Rational span = TicksToSeconds(FrameTicks(table, last) - FrameTicks(table, 0), timeBase);
    if (span.num <= 0) return {};
    AVRational rate{};
    av_reduce(&rate.num, &rate.den, span.den, span.num, INT_MAX);
    return TicksToSeconds(last, rate);
}

} // namespace

FrameRate FindFrameRate(const FrameTable& table, Rational timeBase, const std::vector<Rational>& candidates) {
    for (const Rational& rate : candidates) {
        const bool isRate = rate.num > 0 && rate.den > 0;
        if (isRate && LiesOnGrid(table, ToAv(timeBase), ToAv(rate))) return {rate, true};
    }
    return {MeanRate(table, ToAv(timeBase)), false};
}
