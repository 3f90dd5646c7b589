#include "ffmpeg/InBandParameters.h"

#include <algorithm>
#include <span>
#include <utility>

namespace CxFFMPEG {

namespace {

bool HasParameterSets(AVCodecID codec) {
    return codec == AV_CODEC_ID_H264 || codec == AV_CODEC_ID_HEVC || codec == AV_CODEC_ID_MPEG4;
}

std::span<const uint8_t> Bytes(const uint8_t* data, int size) {
    if (data == nullptr || size <= 0) return {};
    return {data, static_cast<size_t>(size)};
}

} // namespace

std::vector<uint8_t> WithParameters(const AVPacket& packet, const AVCodecContext& encoder,
                                    const AVOutputFormat& muxer) {
    const bool isKept = (muxer.flags & AVFMT_GLOBALHEADER) != 0;
    if (isKept || !HasParameterSets(encoder.codec_id) || (packet.flags & AV_PKT_FLAG_KEY) == 0) return {};
    const auto parameters = Bytes(encoder.extradata, encoder.extradata_size);
    const auto picture = Bytes(packet.data, packet.size);
    const bool isThere = picture.size() >= parameters.size() &&
                         std::equal(parameters.begin(), parameters.end(), picture.begin());
    if (isThere || !std::in_range<int>(parameters.size() + picture.size() + AV_INPUT_BUFFER_PADDING_SIZE))
        return {};
    std::vector<uint8_t> bytes(parameters.size() + picture.size() + AV_INPUT_BUFFER_PADDING_SIZE);
    std::copy(picture.begin(), picture.end(), std::copy(parameters.begin(), parameters.end(), bytes.begin()));
    return bytes;
}

} // namespace CxFFMPEG
