#include "media/FirstPicture.h"

#include <algorithm>

namespace {

/// Presentation time of the first picture that comes out of the decoder, in the track's ticks; `noTime` if
/// none does, or if it has none.
int64_t FirstShownTime(Demuxer& demuxer, AVCodecContext& decoder) {
    const AvPacket packet = NewPacket();
    const AvFrame frame = NewFrame();
    bool isMore = true;
    while (isMore) {
        isMore = demuxer.Read(*packet) >= 0;
        avcodec_send_packet(&decoder, isMore ? packet.get() : nullptr); // damaged ones pass
        if (avcodec_receive_frame(&decoder, frame.get()) == 0) return frame->pts;
    }
    return noTime;
}

/// Whether every picture can be decoded from the first sample on.
bool BeginsWhole(const std::vector<SampleEntry>& samples) {
    return samples.empty() ||
           (samples.front().isKey && std::ranges::none_of(samples, [&](const SampleEntry& sample) {
                return sample.presentation < samples.front().presentation;
            }));
}

} // namespace

void HideUndecodableStart(const std::string& path, TrackScan& scan) {
    if (BeginsWhole(scan.samples)) return;
    Demuxer demuxer(path);
    const AvCodecContext decoder = OpenDecoder(*demuxer.Track().codecpar);
    const int64_t first = decoder ? FirstShownTime(demuxer, *decoder) : noTime;
    if (std::ranges::find(scan.samples, first, &SampleEntry::presentation) == scan.samples.end()) return;
    for (SampleEntry& sample : scan.samples)
        sample.isShown = sample.isShown && sample.presentation >= first;
}
