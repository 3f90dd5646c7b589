#pragma once

#include "standins/mediafoundation/Peer.h"

#include <cstdint>
#include <string>
#include <vector>

/// A sample of an mp4 file. Times are milliseconds.
struct Mp4Sample {
    Bytes bytes; ///< behind lengths of four bytes
    int64_t presentationTime = 0;
    int64_t decodeTime = 0;
    int64_t duration = 0;
    bool isKey = false;

    friend bool operator==(const Mp4Sample&, const Mp4Sample&) = default;
};

/// One track of H.264.
struct Mp4Track {
    int width = 0;
    int height = 0;
    Bytes record; ///< the "avcC" record
    std::vector<Mp4Sample> samples;
};

/// Has FFmpeg write a file. False if it refuses.
bool WriteMp4(const std::string& path, const Mp4Track& track);
/// Has FFmpeg read a file, and decode its pictures in presentation order.
Mp4Track ReadMp4(const std::string& path, std::vector<PeerPicture>& pictures);
