#include "iostream/peer/PeerFiles.h"

#include <stdexcept>

extern "C" {
#include <libavformat/avformat.h>
}

std::string RunInside(const Workspace& workspace, const std::string& line) {
    const ProgramRun run = workspace.Shell(line);
    if (run.status != 0) throw std::runtime_error(line + ": " + run.err);
    return run.out;
}

void PeerInputCloser::operator()(AVFormatContext* input) const { avformat_close_input(&input); }

PeerInput OpenByPeer(const std::string& path) {
    AVFormatContext* opened = nullptr;
    if (avformat_open_input(&opened, path.c_str(), nullptr, nullptr) < 0)
        throw std::runtime_error("no " + path);
    PeerInput input(opened);
    if (avformat_find_stream_info(opened, nullptr) < 0 || opened->nb_streams == 0)
        throw std::runtime_error("no stream in " + path);
    return input;
}

std::vector<uint8_t> MuxedRecord(const Workspace& workspace, const std::string& streamName) {
    RunInside(workspace, "ffmpeg -v error -i " + streamName + " -c copy muxed.mp4");
    const PeerInput input = OpenByPeer(workspace.Path("muxed.mp4"));
    const AVCodecParameters& stream = *input->streams[0]->codecpar;
    return {stream.extradata, stream.extradata + stream.extradata_size};
}
