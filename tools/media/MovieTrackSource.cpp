#include "media/MovieTrackSource.h"

#include "media/FirstPicture.h"
#include "media/FrameTable.h"
#include "media/RawLayout.h"
#include "media/SampleReader.h"
#include "media/ToolError.h"
#include "media/TrackDescription.h"
#include "media/TrackScan.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int sizeLimit = 65535; // keeps every row size within 32 bits

MovieTrackInfo Checked(MovieTrackInfo info) {
    if (info.frameCount == 0) {
        throw ToolError(ExitStatus::Damaged, info.path, "no frame of the video track can be read");
    }
    if (info.width < 1 || info.height < 1) {
        throw ToolError(ExitStatus::Damaged, info.path, "the size of the picture is not told");
    }
    if (info.width > sizeLimit || info.height > sizeLimit) {
        const std::string size = std::to_string(info.width) + "x" + std::to_string(info.height);
        throw ToolError(ExitStatus::Unsupported, info.path, "pictures of " + size + " are not read");
    }
    return info;
}

} // namespace

struct MovieTrackSource::State {
    State(const std::string& path, std::unique_ptr<Demuxer> demuxer, const TrackScan& scan)
        : timeBase{demuxer->Track().time_base.num, demuxer->Track().time_base.den},
          table(scan.samples, timeBase, scan.frameTicks),
          info(Checked(DescribeTrack(path, *demuxer, scan, table))),
          packer(info.fourCC, info.width, info.height, IsBottomUp(*demuxer->Track().codecpar)),
          reader(path, std::move(demuxer), table) {
        if (LargestSample() > INT32_MAX) {
            throw ToolError(ExitStatus::Unsupported, path, "pictures above 2 GB are not read");
        }
    }

    int64_t LargestSample() const { return std::max<int64_t>(table.MaxSampleSize(), packer.PictureBytes()); }

    Rational timeBase;
    FrameTable table;
    MovieTrackInfo info;
    RowPacker packer;
    SampleReader reader; ///< stands on `table`
};

MovieTrackSource::MovieTrackSource(std::unique_ptr<State> opened) : state(std::move(opened)) {}
MovieTrackSource::~MovieTrackSource() = default;

std::unique_ptr<MovieTrackSource> MovieTrackSource::Open(const std::string& path) {
    auto demuxer = std::make_unique<Demuxer>(path);
    TrackScan scan = ScanTrack(*demuxer);
    HideUndecodableStart(path, scan);
    auto state = std::make_unique<State>(path, std::move(demuxer), scan);
    return std::unique_ptr<MovieTrackSource>(new MovieTrackSource(std::move(state)));
}

const MovieTrackInfo& MovieTrackSource::Info() const { return state->info; }
int32_t MovieTrackSource::GetFrameCount() const { return state->table.FrameCount(); }
Rational MovieTrackSource::GetTimeBase() const { return state->timeBase; }

int64_t MovieTrackSource::GetFrameTicks(int32_t frame) const {
    const int32_t sample = state->table.SampleForFrame(frame);
    return sample < 0 ? 0 : state->table.Sample(sample).presentation;
}

int32_t MovieTrackSource::GetWidth() { return state->info.width; }
int32_t MovieTrackSource::GetHeight() { return state->info.height; }
int64_t MovieTrackSource::GetSampleTime(int32_t sample) { return state->table.SampleTime(sample); }
int32_t MovieTrackSource::GetSampleCount() { return state->table.SampleCount(); }
int32_t MovieTrackSource::GetMaxSampleSize() { return static_cast<int32_t>(state->LargestSample()); }

uint8_t* MovieTrackSource::ReadSample(int32_t sample, uint8_t* /*buffer*/, int32_t& size) {
    const AVPacket* packet = state->reader.Read(sample);
    size = 0;
    if (packet == nullptr) return nullptr;
    if (!state->packer.IsNeeded()) {
        size = packet->size;
        return packet->data;
    }
    uint8_t* picture = state->packer.Pack(packet->data, packet->size);
    if (picture != nullptr) size = static_cast<int32_t>(state->packer.PictureBytes());
    return picture;
}

const std::vector<uint8_t>* MovieTrackSource::GetCodecPrivateData() { return &state->info.extraData; }
uint32_t MovieTrackSource::GetFourCC() { return state->info.fourCC; }
int32_t MovieTrackSource::GetSampleForFrame(int32_t frame) { return state->table.SampleForFrame(frame); }

// FFmpeg numbers field orders and ranges as the data source does.
int32_t MovieTrackSource::GetFieldOrder() { return state->info.fieldOrder.value; }
int32_t MovieTrackSource::GetColorRange() { return state->info.colorRange.value; }

int32_t MovieTrackSource::GetColorMatrix() {
    switch (state->info.colorMatrix.value) {
    case AVCOL_SPC_BT470BG:
    case AVCOL_SPC_SMPTE170M: return 3;
    case AVCOL_SPC_SMPTE240M: return 4;
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL: return 5;
    default: return 1;
    }
}

int32_t MovieTrackSource::GetColorPrimaries() {
    switch (state->info.colorPrimaries.value) {
    case AVCOL_PRI_BT470BG:
    case AVCOL_PRI_SMPTE170M: return 2;
    case AVCOL_PRI_SMPTE240M: return 3;
    case AVCOL_PRI_BT2020: return 4;
    default: return 1;
    }
}

int32_t MovieTrackSource::GetReserved() { return 0; }
int32_t MovieTrackSource::GetKeySample(int32_t sample) { return state->table.KeySample(sample); }
int64_t MovieTrackSource::GetDecodeTime(int32_t sample) { return state->table.DecodeTime(sample); }
int32_t MovieTrackSource::GetFrameForTime(int64_t time) { return state->table.FrameForTime(time); }
