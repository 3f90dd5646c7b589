#pragma once

#include "cameraraw/automation/Automation.h"

namespace rawsdk {

/// What ends an operation, thrown inside the library; its calls give the result.
struct Failure {
    HRESULT result;
};

/// The clip is not as a clip has to be.
inline constexpr HRESULT damagedClip = static_cast<HRESULT>(0x80070570);
inline constexpr HRESULT clipNotFound = static_cast<HRESULT>(0x80070002);

/// Ends the operation if a clip is damaged.
inline void Require(bool isSound) {
    if (!isSound) throw Failure{damagedClip};
}

} // namespace rawsdk
