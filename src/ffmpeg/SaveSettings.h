#pragma once

#include <cstdint>

// What the values of the save controls become in the settings of an encoder. Values that no integer holds are
// limited, and not-a-number is 0.

namespace CxFFMPEG {

/// A frame rate: `timeScale` / `frameDuration` frames per second.
struct SaveRate {
    uint32_t timeScale;
    uint32_t frameDuration;

    bool operator==(const SaveRate&) const = default;
};

/// The rate of a number of frames per second, to three decimals and of at least a thousandth. The film and
/// video rates that are no whole numbers become their exact fractions.
/// @param divisor  the document's, by which the rate is divided; 0 for none
SaveRate SaveRateOf(double framesPerSecond, int32_t divisor);

/// Bits per second of a number of kilobytes of 1024 bytes per second.
uint32_t BitRateOf(double kilobytes);

/// Frames from one key frame to the next: the whole part, limited to 0 to 64.
uint32_t GopSizeOf(double frames);

/// A fraction.
struct PixelAspect {
    int32_t numerator;
    int32_t denominator;

    bool operator==(const PixelAspect&) const = default;
};

/// The aspect of a pixel of `x` by `y`, to four decimals each, in lowest terms; sides that are not above 0
/// stay as they are.
PixelAspect ReducePixelAspect(double x, double y);

/// `CxVideoSettings::fieldOrder` of pictures: interlaced ones have the top field first, but for those of the
/// 525-line sizes.
uint32_t SaveFieldOrder(bool isInterlaced, int32_t width, int32_t height);

} // namespace CxFFMPEG
