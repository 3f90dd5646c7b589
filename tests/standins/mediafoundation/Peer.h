#pragma once

#include "standins/mediafoundation/MFLibrary.h"

#include <cstddef>
#include <string>
#include <vector>

/// A 4:2:0 picture of even size: luma, Cb and Cr, one behind the other.
struct PeerPicture {
    size_t width = 0;
    size_t height = 0;
    Bytes samples;

    friend bool operator==(const PeerPicture&, const PeerPicture&) = default;
};

/// Moving pictures with edges and smooth places.
std::vector<PeerPicture> Scene(size_t width, size_t height, int count);
/// How near two pictures of one size are: the peak signal-to-noise ratio in decibels, 100 if they are equal.
double Nearness(const Bytes& a, const Bytes& b);

/// How pictures are coded by libx264.
struct PeerCoding {
    std::string profile = "high";
    std::string parameters = ""; ///< "name=value:name=value"
    bool hasGlobalHeader = false;
    std::string format = "yuv420p"; ///< pictures are converted to it by repeating or widening samples
};

/// A stream of the peer's encoder, in decoding order.
struct PeerStream {
    Bytes header; ///< the parameter sets, if they aren't in the samples
    std::vector<TimedBytes> samples;
};

/// Time and duration of the picture with a number, at 25 pictures per second.
constexpr int64_t pictureDuration = 400000;
constexpr int64_t TimeOf(size_t number) { return static_cast<int64_t>(number + 1) * pictureDuration; }

PeerStream PeerEncode(const std::vector<PeerPicture>& pictures, const PeerCoding& coding);
/// The pictures of a stream, in presentation order.
/// @param header  the parameter sets, or the record that holds them, if they aren't in the samples
std::vector<PeerPicture> PeerDecode(const std::vector<TimedBytes>& samples, const Bytes& header = {});
