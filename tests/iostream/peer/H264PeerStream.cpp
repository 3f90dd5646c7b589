#include "iostream/peer/H264PeerStream.h"

#include "iostream/peer/PeerFiles.h"

#include <sstream>

namespace {

/// ffprobe's lines "name=value"; of a name that comes twice the last, that of the stream.
std::map<std::string, std::string> ReadEntries(const std::string& text) {
    std::map<std::string, std::string> entries;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const size_t equals = line.find('=');
        if (equals != std::string::npos) entries[line.substr(0, equals)] = line.substr(equals + 1);
    }
    return entries;
}

} // namespace

H264PeerStream EncodeByX264(const std::string& source, const std::string& options, bool isMuxed) {
    const Workspace place;
    RunInside(place, "ffmpeg -v error -f lavfi -i testsrc2=" + source +
                         " -frames:v 5 -threads 1 -c:v libx264 -preset veryfast " + options + " stream.h264");
    H264PeerStream peer;
    // With -bitexact the profile is a number.
    peer.shown = ReadEntries(RunInside(place, "ffprobe -v error -bitexact -show_streams -show_frames "
                                              "-read_intervals %+#1 -of default=nw=1 stream.h264"));
    peer.bytes = place.ReadBytes("stream.h264");
    peer.trace = TraceHeaders("h264", peer.bytes);
    if (isMuxed) peer.muxedRecord = MuxedRecord(place, "stream.h264");
    return peer;
}

std::vector<uint8_t> Joined(const H264PeerStream& first, const H264PeerStream& second) {
    std::vector<uint8_t> bytes = first.bytes;
    bytes.insert(bytes.end(), second.bytes.begin(), second.bytes.end());
    return bytes;
}
