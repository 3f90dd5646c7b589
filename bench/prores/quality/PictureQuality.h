#pragma once

#include <cstdint>
#include <vector>

/// One plane of a picture, in codes of 10 bits that may have fractions.
struct QualityPlane {
    int32_t width = 0;
    int32_t height = 0;
    std::vector<float> codes; ///< row by row
};

/// Peak signal to noise ratio in dB, of a peak of 1023.
double PlanePsnr(const QualityPlane& a, const QualityPlane& b);

/// Structural similarity (Wang and others, 2004) of a range of 1023, as the mean over windows of 8 by 8
/// samples at every fourth column and row. Planes have 8 by 8 samples at least.
double PlaneSsim(const QualityPlane& a, const QualityPlane& b);
