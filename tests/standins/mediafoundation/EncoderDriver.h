#pragma once

#include "standins/mediafoundation/Peer.h"

/// What an encoder's output type says, as the module sets it.
struct EncoderCase {
    uint32_t width = 96;
    uint32_t height = 80;
    uint64_t frameRate = PairOf(25, 1);
    uint32_t bitRate = 1000000;
    uint32_t profile = 77;
    uint32_t keyDistance = 10;
    uint32_t structure = MFVideoInterlace_Progressive;
    GUID input = MFVideoFormat_YUY2;
};

/// An encoder, on a thread that has COM.
class EncoderDriver {
public:
    EncoderDriver() : transform_(NewTransform(MFT_CATEGORY_VIDEO_ENCODER)) {}

    IMFTransform& Transform() { return *transform_; }
    HRESULT SetProperty(const GUID& property, uint32_t number);
    HRESULT SetOutput(const EncoderCase& coding);
    HRESULT SetInput(const GUID& subtype);
    /// Sets both types; false if one is refused.
    bool SetUp(const EncoderCase& coding);
    /// Encodes pictures in YUY2 whose times are those of a movie.
    std::vector<TimedBytes> Encode(const std::vector<PeerPicture>& pictures);

    Bytes header; ///< that the last output type got

private:
    ComThread com_;
    Ptr<IMFTransform> transform_;
};

// Properties of the encoder.
inline constexpr GUID rateControlMode = {
    0x1c0608e9, 0x370c, 0x4710, {0x8a, 0x58, 0xcb, 0x61, 0x81, 0xc4, 0x24, 0x23}};
inline constexpr GUID commonQuality = {
    0xfcbf57a3, 0x7ea5, 0x4b0c, {0x96, 0x44, 0x69, 0xb4, 0x0c, 0x39, 0xc3, 0x91}};
inline constexpr GUID frameFieldMode = {
    0xacb5de96, 0x7b93, 0x4c2f, {0x88, 0x25, 0xb0, 0x29, 0x5f, 0xa9, 0x3b, 0xf4}};
inline constexpr GUID keyFrameDistance = {
    0x95f31b26, 0x95a4, 0x41aa, {0x93, 0x03, 0x24, 0x6a, 0x7f, 0xc6, 0xee, 0xf1}};
inline constexpr GUID nominalRange = {
    0x972835ed, 0x87b5, 0x4e95, {0x95, 0x00, 0xc7, 0x39, 0x58, 0x56, 0x6e, 0x54}};
inline constexpr GUID qualityVsSpeed = {
    0x98332df8, 0x03cd, 0x476b, {0x89, 0xfa, 0x3f, 0x9e, 0x44, 0x2d, 0xec, 0x9f}};
