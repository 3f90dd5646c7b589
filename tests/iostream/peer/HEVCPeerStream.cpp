#include "iostream/peer/HEVCPeerStream.h"

#include "iostream/peer/PeerFiles.h"

#include <stdexcept>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/pixdesc.h>
}

namespace {

int ChromaFormat(const AVPixFmtDescriptor& format) {
    if (format.nb_components == 1) return 1;
    if (format.log2_chroma_h == 1) return 420;
    return format.log2_chroma_w == 1 ? 422 : 444;
}

} // namespace

HEVCPeerStream::HEVCPeerStream(const HEVCEncoding& encoding) {
    RunInside(workspace_,
              "ffmpeg -v error -f lavfi -i testsrc2=s=" + encoding.size + ":r=" + encoding.rate +
                  ",format=" + encoding.pixelFormat + "," + encoding.filter +
                  " -frames:v 5 -c:v libx265 -preset ultrafast -x265-params log-level=none:pools=2:" +
                  "frame-threads=1:" + encoding.params + " stream.hevc");
    bytes_ = workspace_.ReadBytes("stream.hevc");
}

DemuxedFacts HEVCPeerStream::Demux() const {
    const PeerInput input = OpenByPeer(workspace_.Path("stream.hevc"));
    const AVCodecParameters& stream = *input->streams[0]->codecpar;
    const AVPixFmtDescriptor* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(stream.format));
    if (format == nullptr) throw std::runtime_error("no pixel format");
    DemuxedFacts facts;
    facts.width = stream.width;
    facts.height = stream.height;
    facts.profile = stream.profile;
    facts.level = stream.level;
    facts.bitDepth = format->comp[0].depth;
    facts.chromaFormat = ChromaFormat(*format);
    facts.isFullRange = stream.color_range == AVCOL_RANGE_JPEG;
    facts.colourPrimaries = stream.color_primaries;
    facts.transferCharacteristics = stream.color_trc;
    facts.matrixCoefficients = stream.color_space;
    facts.pixelAspect = static_cast<float>(av_q2d(stream.sample_aspect_ratio));
    facts.frameRate = av_q2d(input->streams[0]->avg_frame_rate);
    return facts;
}

std::vector<uint8_t> HEVCPeerStream::MuxedRecord() const { return ::MuxedRecord(workspace_, "stream.hevc"); }

std::vector<uint8_t> Joined(const HEVCPeerStream& first, const HEVCPeerStream& second) {
    std::vector<uint8_t> joined = first.Bytes();
    joined.insert(joined.end(), second.Bytes().begin(), second.Bytes().end());
    return joined;
}
