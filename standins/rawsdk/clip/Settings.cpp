#include "rawsdk/clip/Settings.h"

namespace rawsdk {

namespace {

constexpr const char* gamuts[] = {"Ravenlight Design"};
constexpr const char* gammas[] = {gammaFilm, gammaVideo, gammaLinear};
constexpr const char* lutModes[] = {lutDisabled, lutEmbedded, lutSidecar};

constexpr Attribute<ClipSettings> clipAttributes[] = {
    {rawContrast, &ClipSettings::contrast, {0, 2}, {}},
    {rawSaturation, &ClipSettings::saturation, {0, 4}, {}},
    {rawMidpoint, &ClipSettings::midpoint, {0, 1}, {}},
    {rawHighlights, &ClipSettings::highlights, {0, 2}, {}},
    {rawShadows, &ClipSettings::shadows, {0, 2}, {}},
    {rawBlackLevel, &ClipSettings::blackLevel, {-1, 1}, {}},
    {rawWhiteLevel, &ClipSettings::whiteLevel, {0, 2}, {}},
    {rawVideoBlackLevel, &ClipSettings::videoBlackLevel, {}, {}},
    {rawHighlightRecovery, &ClipSettings::highlightRecovery, {}, {}},
    {rawColorScienceGeneration, &ClipSettings::colorScienceGeneration, {}, {}},
    {rawGamut, &ClipSettings::gamut, {}, gamuts},
    {rawGamma, &ClipSettings::gamma, {}, gammas},
    {rawGain, &ClipSettings::gain, {0, 16}, {}},
    {rawLutMode, &ClipSettings::lutMode, {}, lutModes},
};

constexpr Attribute<FrameSettings> frameAttributes[] = {
    {rawWhiteBalanceKelvin, &FrameSettings::kelvin, {2000, 50000}, {}},
    {rawWhiteBalanceTint, &FrameSettings::tint, {-150, 150}, {}},
    {rawExposure, &FrameSettings::exposure, {-5, 5}, {}},
    {rawIso, &FrameSettings::iso, {}, {}},
};

void WriteOne(const std::string& text, ByteWriter& writer) { writer.WriteText<char>(text); }
template <typename Number>
void WriteOne(Number number, ByteWriter& writer) {
    writer.Write(number);
}

void ReadOne(std::string& text, ByteReader& reader) { text = reader.ReadText<char>(); }
template <typename Number>
void ReadOne(Number& number, ByteReader& reader) {
    number = reader.Read<Number>();
}

template <typename Owner>
void WriteAll(std::span<const Attribute<Owner>> attributes, const Owner& owner, ByteWriter& writer) {
    for (const Attribute<Owner>& attribute : attributes)
        std::visit([&](auto member) { WriteOne(owner.*member, writer); }, attribute.member);
}

template <typename Owner>
Owner ReadAll(std::span<const Attribute<Owner>> attributes, ByteReader& reader) {
    Owner owner;
    for (const Attribute<Owner>& attribute : attributes)
        std::visit([&](auto member) { ReadOne(owner.*member, reader); }, attribute.member);
    return owner;
}

} // namespace

std::span<const Attribute<ClipSettings>> ClipAttributes() { return clipAttributes; }
std::span<const Attribute<FrameSettings>> FrameAttributes() { return frameAttributes; }

void WriteSettings(const ClipSettings& settings, ByteWriter& writer) {
    WriteAll(ClipAttributes(), settings, writer);
}
void WriteSettings(const FrameSettings& settings, ByteWriter& writer) {
    WriteAll(FrameAttributes(), settings, writer);
}

ClipSettings ReadClipSettings(ByteReader& reader) { return ReadAll(ClipAttributes(), reader); }
FrameSettings ReadFrameSettings(ByteReader& reader) { return ReadAll(FrameAttributes(), reader); }

} // namespace rawsdk
