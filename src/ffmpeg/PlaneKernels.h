#pragma once

#include <array>
#include <cstdint>

namespace CxFFMPEG {

/// From R, G, B with white at 65535 to the codes of a picture, neither limited nor rounded.
struct PlaneMatrix {
    using Weights = std::array<float, 3>; ///< of R, G, B

    Weights luma;
    Weights cb;
    Weights cr;
    float black; ///< added to luma
    float zero;  ///< added to Cb and Cr
};

/// Codes of one row, one to a pixel, in single precision.
struct PlaneLines {
    float* luma;
    float* cb;
    float* cr;
};

/// The steps from 16-bit words to planes, each over `count` elements of one row. All instruction sets give
/// the same bits. No byte outside those elements is read or written, and nothing is aligned; lines must not
/// overlap.
struct PlaneKernels {
    /// Words R G B of `count` pixels to lines.
    using Split = void (*)(const uint16_t* words, const PlaneMatrix& matrix, const PlaneLines& lines,
                           int32_t count);
    /// `line` = the mean of both.
    using Mean = void (*)(float* line, const float* other, int32_t count);
    /// `halved` = weights 1 2 1 about every other sample of `line`, from its first on, which is twice as
    /// long. The sample before it is read too.
    using Halve = void (*)(const float* line, float* halved, int32_t count);
    /// Codes to nearest and `most` at most; none is below 0.
    template <typename Sample>
    using Store = void (*)(const float* line, float most, Sample* samples, int32_t count);

    Split split;
    Mean mean;
    Halve halve;
    Store<uint8_t> storeBytes;
    Store<uint16_t> storeWords;
};

/// The form that is written to be read; all others give its bits.
const PlaneKernels& ScalarPlaneKernels();
/// The form for the machine's best instruction set, or the scalar one if it has no vectors. Chosen at each
/// call, so that `hwy::SetSupportedTargetsForTest` has effect.
const PlaneKernels& VectorPlaneKernels();

} // namespace CxFFMPEG
