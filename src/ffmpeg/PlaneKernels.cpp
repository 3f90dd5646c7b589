#include "ffmpeg/PlaneKernels.h"

#include <algorithm>

namespace CxFFMPEG {

namespace {

float Weigh(const uint16_t* pixel, const PlaneMatrix::Weights& weights, float offset) {
    const float sum = static_cast<float>(pixel[0]) * weights[0] + static_cast<float>(pixel[1]) * weights[1];
    return sum + static_cast<float>(pixel[2]) * weights[2] + offset;
}

void Split(const uint16_t* words, const PlaneMatrix& matrix, const PlaneLines& lines, int32_t count) {
    for (int64_t i = 0; i < count; ++i) {
        const uint16_t* const pixel = words + 3 * i;
        lines.luma[i] = Weigh(pixel, matrix.luma, matrix.black);
        lines.cb[i] = Weigh(pixel, matrix.cb, matrix.zero);
        lines.cr[i] = Weigh(pixel, matrix.cr, matrix.zero);
    }
}

void Mean(float* line, const float* other, int32_t count) {
    for (int32_t i = 0; i < count; ++i)
        line[i] = (line[i] + other[i]) * 0.5F;
}

void Halve(const float* line, float* halved, int32_t count) {
    for (int64_t i = 0; i < count; ++i) {
        const float* const middle = line + 2 * i;
        halved[i] = ((middle[-1] + middle[1]) + (middle[0] + middle[0])) * 0.25F;
    }
}

template <typename Sample>
void Store(const float* line, float most, Sample* samples, int32_t count) {
    for (int32_t i = 0; i < count; ++i)
        samples[i] = static_cast<Sample>(static_cast<int32_t>(std::min(line[i] + 0.5F, most)));
}

} // namespace

const PlaneKernels& ScalarPlaneKernels() {
    static constexpr PlaneKernels kernels = {Split, Mean, Halve, Store<uint8_t>, Store<uint16_t>};
    return kernels;
}

} // namespace CxFFMPEG
