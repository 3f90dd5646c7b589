#pragma once

#include "ffmpeg/FFmpegFunctions.h"

#include <cstdint>
#include <list>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

/// What can be saved: a fixed table of codecs and profiles, crossed with what the FFmpeg in hand has. Without
/// FFmpeg all lists are empty.
///
/// The tables are built by the first call that needs them, which therefore must not meet another one, and
/// stay for the life of the process; a table that came out empty is built anew by the next call. Throws
/// std::bad_alloc.
namespace CxFFMPEG {

/// One encoder with one profile.
struct EncoderEntry {
    int32_t codecId = 0; ///< an `AVCodecID`; 0 in the entry of an unknown label
    int32_t profile = 0; ///< as the codec numbers its profiles; -99 for none
    std::string label;   ///< what the user chooses; in the table of profiles the profile's own text
    int32_t pixelFormat = AV_PIX_FMT_NONE; ///< an `AVPixelFormat`, that the encoder is given its frames in
    const AVCodec* encoder = nullptr;      ///< FFmpeg's; null in the table of profiles
};

/// One muxer.
struct ContainerEntry {
    const AVOutputFormat* format = nullptr; ///< FFmpeg's; null in the entry of an unknown name
    std::vector<std::string> labels;        ///< of the encoders whose streams it holds, in no order
};

using EncoderTable = std::unordered_map<std::string, EncoderEntry>;     ///< by label
using ContainerTable = std::unordered_map<std::string, ContainerEntry>; ///< by name
/// The profiles of each codec, by codec id.
using ProfileTable = std::map<int32_t, std::vector<EncoderEntry>>;
/// Options of an encoder, each a key and its value, in the order in which they are set.
using EncoderOptions = std::vector<std::pair<std::string, std::string>>;

const ProfileTable& GetProfileTable();
/// The rows of the table of profiles for whose codec there is an encoder that takes the row's pixel format.
const EncoderTable& GetEncoderTable();
/// The muxers that hold at least one of the encoders' codecs, by their long names.
const ContainerTable& GetContainerTable();

/// The container of a name, or an empty entry.
ContainerEntry FindContainer(const std::string& name);
/// The encoder of a label, or an empty entry.
EncoderEntry FindEncoder(const std::string& label);
/// Names of all containers, in no order.
std::list<std::string> GetContainerNames();
/// Labels of the encoders of a container, in no order; none for an unknown name.
std::list<std::string> GetEncoderLabels(const std::string& container);

/// Reads pairs `key=value`, each ended by a run of newlines, bars, colons, commas or semicolons. A pair that
/// nothing ends is lost, and so is one without "=". Kept: `a=1,b=2` has one pair, `a=1,b=2,` two.
EncoderOptions ParseEncoderOptions(const std::string& text);

} // namespace CxFFMPEG
