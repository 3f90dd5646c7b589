#include "cameraraw/RawSettings.h"

#include "cameraraw/RawPointer.h"
#include "cameraraw/RawValue.h"

namespace {

constexpr struct {
    const char* mode;
    RawLutSource source;
} lutModes[] = {{"Embedded", RawLut_Embedded}, {"Sidecar", RawLut_Sidecar}};

template <typename Settings, typename Value>
void Read(Settings& settings, uint32_t attribute, Value& out) {
    RawValue value;
    if (settings.GetAttribute(attribute, value.Receive()) == S_OK) value.StoreIn(out);
}

void ChooseLut(RawClipSettings& settings, const std::string& mode) {
    settings.SetAttribute(rawLutMode, RawValue(mode).Get());
}

bool HasTable(RawClipSettings& settings) {
    RawPointer<RawLut> lut;
    void* table = nullptr;
    return settings.GetLut(lut.Receive()) == S_OK && lut && lut->GetTable(&table) == S_OK && table != nullptr;
}

} // namespace

void ReadRawSettings(RawFrameSettings& settings, RawFrameValues& values) {
    Read(settings, rawWhiteBalanceKelvin, values.whiteBalanceKelvin);
    Read(settings, rawWhiteBalanceTint, values.whiteBalanceTint);
    Read(settings, rawExposure, values.exposure);
    Read(settings, rawIso, values.iso);
}

void ReadRawSettings(RawClipSettings& settings, RawClipValues& values) {
    Read(settings, rawContrast, values.contrast);
    Read(settings, rawSaturation, values.saturation);
    Read(settings, rawMidpoint, values.midpoint);
    Read(settings, rawHighlights, values.highlights);
    Read(settings, rawShadows, values.shadows);
    Read(settings, rawBlackLevel, values.blackLevel);
    Read(settings, rawWhiteLevel, values.whiteLevel);
    Read(settings, rawVideoBlackLevel, values.videoBlackLevel);
    Read(settings, rawHighlightRecovery, values.highlightRecovery);
    Read(settings, rawColorScienceGeneration, values.colorScienceGeneration);
    Read(settings, rawGamut, values.gamut);
    Read(settings, rawGamma, values.gamma);
    Read(settings, rawGain, values.gain);
    Read(settings, rawLutMode, values.lutMode);
}

uint32_t FindRawLutSources(RawClipSettings& settings, const std::string& lutMode) {
    uint32_t sources = 0;
    for (const auto& [mode, source] : lutModes) {
        ChooseLut(settings, "Disabled");
        ChooseLut(settings, mode);
        if (HasTable(settings)) sources |= source;
    }
    ChooseLut(settings, lutMode);
    return sources;
}
