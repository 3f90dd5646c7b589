#pragma once

#include "media/Rational.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// Where a value about the track comes from.
enum class ValueSource { Bitstream, Container, Assumed };

/// "bitstream", "container" or "assumed".
const char* ValueSourceName(ValueSource source);

/// One property of the picture that a file may leave open.
struct TrackValue {
    int value = 0;    ///< in FFmpeg's numbering
    std::string text; ///< the same in words; for an assumed value the words of what is assumed
    ValueSource source = ValueSource::Assumed;
};

/// One stream of the file, whatever it holds.
struct StreamInfo {
    int index = 0;
    std::string type;       ///< "video", "audio", "data", "subtitle", "attachment" or "unknown"
    std::string codecName;  ///< FFmpeg's name; "unknown" if it has none
    std::string fourCCText; ///< container tag as text, with bytes outside ASCII as [n]; empty without a tag
};

/// What is known of a movie file and of its video track.
struct MovieTrackInfo {
    std::string path;
    std::string container; ///< FFmpeg's name of the demuxer, such as "mov,mp4,m4a,3gp,3g2,mj2"
    std::vector<StreamInfo> streams;
    int streamIndex = 0; ///< the video track's place in `streams`

    uint32_t fourCC = 0;       ///< code under which the registry knows the track
    uint32_t containerTag = 0; ///< the container's code, first character most significant; 0 without one
    std::string codecName;
    std::string profile;    ///< empty if unknown
    int profileNumber = -1; ///< as the codec numbers its profiles; negative if unknown
    int level = -1;         ///< the same of levels
    std::string pixelFormat;
    int chromaFormat = 0; ///< 1 for monochrome, 420, 422 or 444; 0 for any other
    int bitDepth = 0;     ///< of the first component; 0 if unknown
    int bitsPerCodedSample = 0;
    int64_t bitRate = 0; ///< bits per second; 0 if unknown
    std::vector<uint8_t> extraData;

    int width = 0; ///< frame as codecs deliver it, pixels
    int height = 0;
    int codedWidth = 0; ///< with the padding that the codec codes and crops
    int codedHeight = 0;
    int displayWidth = 0; ///< with the pixel aspect applied
    int displayHeight = 0;
    Rational sampleAspect{1, 1};

    int32_t frameCount = 0;
    Rational frameRate;            ///< frames per second
    bool constantFrameRate = true; ///< every frame lies on the grid of `frameRate`
    Rational startTime;            ///< presentation time of frame 0, seconds
    Rational duration;             ///< from the start of frame 0 to the end of the last frame, seconds

    TrackValue fieldOrder; ///< 1 progressive, 2 TT, 3 BB, 4 TB, 5 BT
    TrackValue colorRange; ///< 1 video, 2 full
    TrackValue colorMatrix;
    TrackValue colorPrimaries;
    TrackValue colorTransfer;

    std::string timeCode; ///< of frame 0, "hh:mm:ss:ff", or "hh:mm:ss;ff" for drop frame; empty without one
    std::map<std::string, std::string> metadata; ///< of the file and of the track; the track's win

    std::string damage; ///< why the file could not be read to its end; empty for a whole file
};
