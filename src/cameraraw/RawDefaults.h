#pragma once

#include "cameraraw/RavenlightRawAPI.h"

#include <string>
#include <vector>

/// The values that a setting may have.
template <typename Number>
struct RawRange {
    Number preset; ///< the value to begin with
    Number lowest;
    Number highest;
    bool isReadOnly = false;
};

inline constexpr char rawDefaultGamut[] = "Ravenlight Design";
inline constexpr char rawDefaultGamma[] = "Ravenlight Design Film";

/// Limits of the settings that are numbers.
struct RawRanges {
    RawRange<uint32_t> whiteBalanceKelvin = {5500, 2000, 50000};
    RawRange<int16_t> whiteBalanceTint = {0, -150, 150};
    RawRange<float> exposure = {0.0F, -5.0F, 5.0F}; ///< stops
    RawRange<float> saturation = {2.0F, 0.0F, 4.0F};
    RawRange<float> contrast = {1.0F, 0.0F, 2.0F};
    RawRange<float> midpoint = {0.5F, 0.0F, 1.0F};
    RawRange<float> highlights = {1.0F, 0.0F, 2.0F};
    RawRange<float> shadows = {1.0F, 0.0F, 2.0F};
    RawRange<float> blackLevel = {0.0F, -1.0F, 1.0F};
    RawRange<float> whiteLevel = {1.0F, 0.0F, 2.0F};
};

/// What holds of every camera.
inline constexpr RawRanges rawRanges;

/// The names that a setting may have.
struct RawNames {
    std::vector<std::string> names;
    bool isReadOnly = false;
};

/// Limits of all settings.
struct RawDefaults : RawRanges {
    RawNames gamuts{{rawDefaultGamut}};
    RawNames gammas{{rawDefaultGamma}};
};

/// Asks the SDK for the limits of a model of camera. Those that it refuses stay what holds of every camera;
/// each refusal is reported. Throws std::bad_alloc.
RawDefaults ReadRawDefaults(RawConstants& constants);
