#pragma once

#include "rawsdk/clip/Bytes.h"

#include "cameraraw/RavenlightRawAPI.h"

#include <cstdint>
#include <span>
#include <string>
#include <variant>

namespace rawsdk {

/// What a clip says of how its frames are processed. The defaults change nothing but for the gamma.
struct ClipSettings {
    float contrast = 1;
    float saturation = 1;
    float midpoint = 0.5f;
    float highlights = 1;
    float shadows = 1;
    float blackLevel = 0;
    float whiteLevel = 1;
    uint16_t videoBlackLevel = 0;
    uint16_t highlightRecovery = 0;
    uint16_t colorScienceGeneration = 1;
    std::string gamut = "Ravenlight Design";
    std::string gamma = "Ravenlight Design Film";
    float gain = 1;
    std::string lutMode = "Disabled";
};

/// What a frame says of how it is processed.
struct FrameSettings {
    uint32_t kelvin = 5500;
    int16_t tint = 0;
    float exposure = 0; ///< stops
    int16_t iso = 400;
};

/// Lowest and highest value of an attribute; both 0 for texts, and for numbers that tell no range.
struct Limits {
    double lowest = 0;
    double highest = 0;

    bool Any() const { return lowest != highest; }
};

/// An attribute of `Owner`: its code, where its value is, and which values it takes.
template <typename Owner>
struct Attribute {
    using Member = std::variant<float Owner::*, int16_t Owner::*, uint16_t Owner::*, uint32_t Owner::*,
                                std::string Owner::*>;
    uint32_t code;
    Member member;
    Limits limits;
    std::span<const char* const> choices; ///< of a text
};

/// The attributes in the order in which clips hold them.
std::span<const Attribute<ClipSettings>> ClipAttributes();
std::span<const Attribute<FrameSettings>> FrameAttributes();

/// The attribute of a code, or null.
template <typename Owner>
const Attribute<Owner>* FindAttribute(std::span<const Attribute<Owner>> attributes, uint32_t code) {
    for (const Attribute<Owner>& attribute : attributes)
        if (attribute.code == code) return &attribute;
    return nullptr;
}

void WriteSettings(const ClipSettings& settings, ByteWriter& writer);
void WriteSettings(const FrameSettings& settings, ByteWriter& writer);
/// The reader tells whether all was there.
ClipSettings ReadClipSettings(ByteReader& reader);
FrameSettings ReadFrameSettings(ByteReader& reader);

// The values of the attributes that are texts.
inline constexpr const char* gammaFilm = "Ravenlight Design Film";
inline constexpr const char* gammaVideo = "BT.709";
inline constexpr const char* gammaLinear = "Linear";
inline constexpr const char* lutDisabled = "Disabled";
inline constexpr const char* lutEmbedded = "Embedded";
inline constexpr const char* lutSidecar = "Sidecar";

} // namespace rawsdk
