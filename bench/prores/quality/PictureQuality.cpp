#include "prores/quality/PictureQuality.h"

#include <cmath>

namespace {

constexpr double peak = 1023;
constexpr int32_t windowSize = 8;

double WindowSsim(const QualityPlane& a, const QualityPlane& b, int32_t left, int32_t top) {
    double sumA = 0, sumB = 0, sumAA = 0, sumBB = 0, sumAB = 0;
    for (int32_t y = top; y < top + windowSize; ++y) {
        for (int32_t x = left; x < left + windowSize; ++x) {
            const auto at = static_cast<size_t>(y) * static_cast<size_t>(a.width) + static_cast<size_t>(x);
            const double p = a.codes[at];
            const double q = b.codes[at];
            sumA += p;
            sumB += q;
            sumAA += p * p;
            sumBB += q * q;
            sumAB += p * q;
        }
    }
    constexpr double count = windowSize * windowSize;
    constexpr double c1 = 0.01 * peak * 0.01 * peak;
    constexpr double c2 = 0.03 * peak * 0.03 * peak;
    const double meanA = sumA / count;
    const double meanB = sumB / count;
    const double varianceA = sumAA / count - meanA * meanA;
    const double varianceB = sumBB / count - meanB * meanB;
    const double covariance = sumAB / count - meanA * meanB;
    return (2 * meanA * meanB + c1) * (2 * covariance + c2) /
           ((meanA * meanA + meanB * meanB + c1) * (varianceA + varianceB + c2));
}

} // namespace

double PlanePsnr(const QualityPlane& a, const QualityPlane& b) {
    double squares = 0;
    for (size_t i = 0; i < a.codes.size(); ++i) {
        const double difference = a.codes[i] - b.codes[i];
        squares += difference * difference;
    }
    return 10 * std::log10(peak * peak * static_cast<double>(a.codes.size()) / squares);
}

double PlaneSsim(const QualityPlane& a, const QualityPlane& b) {
    double sum = 0;
    int64_t windows = 0;
    for (int32_t y = 0; y + windowSize <= a.height; y += windowSize / 2) {
        for (int32_t x = 0; x + windowSize <= a.width; x += windowSize / 2) {
            sum += WindowSsim(a, b, x, y);
            ++windows;
        }
    }
    return sum / static_cast<double>(windows);
}
