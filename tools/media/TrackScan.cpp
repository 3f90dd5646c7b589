#include "media/TrackScan.h"

#include <algorithm>

namespace {

SampleEntry EntryOf(const AVPacket& packet) {
    SampleEntry entry;
    entry.presentation = packet.pts; // AV_NOPTS_VALUE is `noTime`
    entry.decode = packet.dts;
    entry.duration = packet.duration;
    entry.position = packet.pos;
    entry.size = packet.size;
    entry.isKey = (packet.flags & AV_PKT_FLAG_KEY) != 0;
    entry.isShown = (packet.flags & AV_PKT_FLAG_DISCARD) == 0;
    return entry;
}

int64_t FrameTicks(Demuxer& demuxer) {
    const AVRational rate = av_guess_frame_rate(&demuxer.Format(), &demuxer.Track(), nullptr);
    if (rate.num <= 0 || rate.den <= 0) return 1;
    return std::max<int64_t>(1, av_rescale_q(1, av_inv_q(rate), demuxer.Track().time_base));
}

/// Only the first packet is parsed, or all of them if that one has no presentation time: a container gives
/// these to the whole track or leaves them to the bitstream.
bool IsParsed(const TrackScan& scan) {
    return scan.samples.empty() || scan.samples.front().presentation == noTime;
}

std::string LostSamples(size_t found, int64_t listed) {
    return "samples are missing: " + std::to_string(found) + " of " + std::to_string(listed) + " can be read";
}

} // namespace

TrackScan ScanTrack(Demuxer& demuxer) {
    TrackScan scan;
    const int64_t listed = demuxer.ListedSamples();
    PictureParser parser(*demuxer.Track().codecpar);
    const AvPacket packet = NewPacket();
    bool isCutShort = false;
    int result = 0;
    while (scan.samples.size() < INT32_MAX && (result = demuxer.Read(*packet)) >= 0) {
        SampleEntry entry = EntryOf(*packet);
        if (IsParsed(scan)) parser.Parse(*packet, entry);
        scan.samples.push_back(entry);
        isCutShort = (packet->flags & AV_PKT_FLAG_CORRUPT) != 0;
    }
    if (isCutShort) scan.samples.pop_back();
    if (result < 0 && result != AVERROR_EOF) scan.damage = AvErrorText(result);
    if (isCutShort) scan.damage = "the last sample is cut short";
    if (static_cast<int64_t>(scan.samples.size()) < listed)
        scan.damage = LostSamples(scan.samples.size(), listed);
    scan.frameTicks = FrameTicks(demuxer);
    scan.codedWidth = parser.CodedWidth();
    scan.codedHeight = parser.CodedHeight();
    scan.fieldOrder = parser.FieldOrder();
    CompleteTimes(scan.samples, scan.frameTicks);
    return scan;
}
