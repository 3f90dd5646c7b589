#include "media/SampleReader.h"

#include "media/ToolError.h"

#include <algorithm>
#include <utility>

SampleReader::SampleReader(std::string filePath, std::unique_ptr<Demuxer> opened,
                           const FrameTable& frameTable)
    : path(std::move(filePath)), demuxer(std::move(opened)), table(frameTable) {
    for (int32_t i = 0; i < table.SampleCount(); ++i)
        byPosition.emplace_back(table.Sample(i).position, i);
    std::sort(byPosition.begin(), byPosition.end());
}

AVPacket* SampleReader::Read(int32_t sample) {
    if (sample < 0 || sample >= table.SampleCount()) return nullptr;
    if (sample == held) return packet.get();
    held = -1;
    const SampleEntry& wanted = table.Sample(sample);
    const SampleEntry& key = table.Sample(table.KeySample(sample));
    if ((sample == next && ReadForwardTo(sample)) ||
        ReadFrom(std::min(wanted.decode, wanted.presentation), sample) ||
        ReadFrom(std::min(key.decode, key.presentation), sample) || ReadFromStart(sample)) {
        held = sample;
        return packet.get();
    }
    next = -1;
    return nullptr;
}

bool SampleReader::ReadFrom(int64_t ticks, int32_t sample) {
    next = -1;
    return demuxer && demuxer->Seek(ticks) && ReadForwardTo(sample);
}

bool SampleReader::ReadFromStart(int32_t sample) {
    demuxer.reset();
    try {
        demuxer = std::make_unique<Demuxer>(path);
    } catch (const ToolError&) {
        return false; // the file went away, or is no movie any more
    }
    next = 0;
    return ReadForwardTo(sample);
}

bool SampleReader::ReadForwardTo(int32_t sample) {
    while (demuxer && demuxer->Read(*packet) >= 0) {
        const int32_t found = next < 0 ? Identify() : next;
        if (found < 0) continue; // a piece of a packet into whose middle the seek went
        if (found > sample || !IsSample(found)) return false;
        next = found + 1;
        if (found == sample) return true;
    }
    return false;
}

bool SampleReader::IsSample(int32_t sample) const {
    const SampleEntry& entry = table.Sample(sample);
    return entry.position == packet->pos && entry.size == packet->size;
}

int32_t SampleReader::Identify() const {
    const std::pair place(packet->pos, int32_t{0});
    const auto first = std::lower_bound(byPosition.begin(), byPosition.end(), place);
    const auto last = std::upper_bound(first, byPosition.end(), std::pair(packet->pos, INT32_MAX));
    const bool isPlaceEnough = packet->pos >= 0 && last - first == 1;
    const auto match = std::find_if(first, last, [&](const auto& candidate) {
        const SampleEntry& entry = table.Sample(candidate.second);
        return entry.size == packet->size && (isPlaceEnough || entry.decode == packet->dts);
    });
    return match == last ? -1 : match->second;
}
