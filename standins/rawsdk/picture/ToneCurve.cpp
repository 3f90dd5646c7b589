#include "rawsdk/picture/ToneCurve.h"

#include "rawsdk/clip/Failure.h"
#include "rawsdk/picture/Samples.h"

#include <algorithm>
#include <cmath>

namespace rawsdk {

namespace {

constexpr double neutralKelvin = 5500;
/// How strongly the temperature of the light works on red and blue.
constexpr double kelvinPower = 0.6;
/// Tint that doubles green or halves it.
constexpr double tintPerStop = -150;

constexpr double filmFactor = 31;
constexpr double filmStops = 5;
constexpr double videoSlope = 4.5;
constexpr double videoPower = 0.45;
constexpr double videoOffset = 0.099;
constexpr double videoLinearEnd = 0.018;

ToneParameters::Gamma GammaOf(const std::string& name) {
    if (name == gammaFilm) return ToneParameters::Film;
    if (name == gammaVideo) return ToneParameters::Video;
    if (name == gammaLinear) return ToneParameters::Linear;
    throw Failure{E_INVALIDARG};
}

/// The gains of the white balance, the least of which is 1, so that no sample has to be more than the most
/// that there is for white.
std::array<double, 3> WhiteBalance(const FrameSettings& frame) {
    const double kelvin = std::max<double>(frame.kelvin, 1);
    std::array<double, 3> gains = {std::pow(kelvin / neutralKelvin, kelvinPower),
                                   std::exp2(frame.tint / tintPerStop),
                                   std::pow(neutralKelvin / kelvin, kelvinPower)};
    const double least = std::ranges::min(gains);
    for (double& gain : gains)
        gain /= least;
    return gains;
}

/// The curve behind the encoding.
double Shape(const ToneParameters& tone, double code) {
    const double dark = 1 - code;
    code += (tone.shadows - 1) / 2 * code * dark * dark + (tone.highlights - 1) / 2 * code * code * dark;
    code = tone.midpoint + (code - tone.midpoint) * tone.contrast;
    return tone.blackLevel + code * (tone.whiteLevel - tone.blackLevel);
}

/// A code of 0 to 1 as a word; 0 for what is no number.
uint16_t ToWord(double code) {
    const double limited = code > 0 ? std::min(code, 1.0) : 0;
    return static_cast<uint16_t>(limited * 65535 + 0.5);
}

} // namespace

ToneParameters ToneOf(const ClipSettings& clip, const FrameSettings& frame) {
    ToneParameters tone{};
    const std::array<double, 3> balance = WhiteBalance(frame);
    for (size_t channel = 0; channel < 3; ++channel)
        tone.gains[channel] = static_cast<float>(balance[channel] * std::exp2(frame.exposure) * clip.gain);
    tone.contrast = clip.contrast;
    tone.midpoint = clip.midpoint;
    tone.highlights = clip.highlights;
    tone.shadows = clip.shadows;
    tone.blackLevel = clip.blackLevel;
    tone.whiteLevel = clip.whiteLevel;
    tone.saturation = clip.saturation;
    tone.gamma = GammaOf(clip.gamma);
    return tone;
}

double Encode(ToneParameters::Gamma gamma, double light) {
    if (gamma == ToneParameters::Film) return std::log2(1 + filmFactor * light) / filmStops;
    if (gamma == ToneParameters::Linear) return light;
    if (light < videoLinearEnd) return videoSlope * light;
    return (1 + videoOffset) * std::pow(light, videoPower) - videoOffset;
}

double Decode(ToneParameters::Gamma gamma, double code) {
    if (gamma == ToneParameters::Film) return (std::exp2(code * filmStops) - 1) / filmFactor;
    if (gamma == ToneParameters::Linear) return code;
    if (code < videoSlope * videoLinearEnd) return code / videoSlope;
    return std::pow((code + videoOffset) / (1 + videoOffset), 1 / videoPower);
}

ToneCurve::ToneCurve(const ToneParameters& parameters, size_t channel) : codes_(mostSample + 2) {
    const auto gamma = static_cast<ToneParameters::Gamma>(parameters.gamma);
    for (uint32_t sample = 0; sample <= mostSample; ++sample) {
        const double light = static_cast<double>(sample) / mostSample * parameters.gains[channel];
        codes_[sample] = ToWord(Shape(parameters, Encode(gamma, light)));
    }
    codes_.back() = codes_[mostSample];
}

uint16_t ToneCurve::operator()(uint32_t color) const {
    const uint32_t limited = std::min(color, mostColor);
    const int32_t low = codes_[limited / stepsPerSample];
    const int32_t high = codes_[limited / stepsPerSample + 1];
    const auto part = static_cast<int32_t>(limited % stepsPerSample);
    // Division by a power of two, so that falling curves round as rising ones.
    return static_cast<uint16_t>(low + (high - low) * part / static_cast<int32_t>(stepsPerSample));
}

void ToneCurve::Apply(const uint16_t* colors, uint16_t* codes, size_t count) const {
    for (size_t i = 0; i < count; ++i)
        codes[i] = (*this)(colors[i]);
}

} // namespace rawsdk
