#pragma once

#include "codecs/MediaFoundation.h"

#include <algorithm>
#include <iterator>

namespace mediafoundation {

// Properties of the encoder by the platform's names, all 32-bit numbers.

/// AVEncCommonRateControlMode: 3 by quality, others by bit rate.
inline constexpr GUID rateControlMode = {
    0x1c0608e9, 0x370c, 0x4710, {0x8a, 0x58, 0xcb, 0x61, 0x81, 0xc4, 0x24, 0x23}};
/// AVEncCommonQuality: 0-100.
inline constexpr GUID commonQuality = {
    0xfcbf57a3, 0x7ea5, 0x4b0c, {0x96, 0x44, 0x69, 0xb4, 0x0c, 0x39, 0xc3, 0x91}};
/// AVEncMPVFrameFieldMode: how pictures of two fields are coded, which are none here.
inline constexpr GUID frameFieldMode = {
    0xacb5de96, 0x7b93, 0x4c2f, {0x88, 0x25, 0xb0, 0x29, 0x5f, 0xa9, 0x3b, 0xf4}};
/// AVEncMPVGOPSize: pictures from one key picture to the next.
inline constexpr GUID groupSize = {
    0x95f31b26, 0x95a4, 0x41aa, {0x93, 0x03, 0x24, 0x6a, 0x7f, 0xc6, 0xee, 0xf1}};
/// AVEncVideoOutputColorNominalRange: taken, and without effect: samples are coded as they are.
inline constexpr GUID nominalRange = {
    0x972835ed, 0x87b5, 0x4e95, {0x95, 0x00, 0xc7, 0x39, 0x58, 0x56, 0x6e, 0x54}};
/// AVEncCommonQualityVsSpeed: 0 the fastest, 100 the most thorough.
inline constexpr GUID qualityVsSpeed = {
    0x98332df8, 0x03cd, 0x476b, {0x89, 0xfa, 0x3f, 0x9e, 0x44, 0x2d, 0xec, 0x9f}};

inline bool IsEncoderProperty(REFGUID property) {
    constexpr GUID all[] = {rateControlMode, commonQuality, frameFieldMode,
                            groupSize,       nominalRange,  qualityVsSpeed};
    return std::ranges::find(all, property) != std::end(all);
}

} // namespace mediafoundation
