#include "media/TrackDescription.h"

#include "media/FrameRate.h"
#include "media/RawLayout.h"

#include <algorithm>
#include <climits>
#include <cmath>

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace {

std::string Text(const char* text) { return text != nullptr ? text : ""; }

std::string TagText(uint32_t tag) {
    char text[AV_FOURCC_MAX_STRING_SIZE] = "";
    return tag != 0 ? av_fourcc_make_string(text, tag) : text;
}

std::string CodecName(AVCodecID codec) {
    return codec == AV_CODEC_ID_NONE ? "unknown" : avcodec_get_name(codec);
}

StreamInfo DescribeStream(const AVStream& stream) {
    const char* type = av_get_media_type_string(stream.codecpar->codec_type);
    return {stream.index, type != nullptr ? type : "unknown", CodecName(stream.codecpar->codec_id),
            TagText(stream.codecpar->codec_tag)};
}

/// Chooses between the container's word, the word of container and bitstream together, and what is assumed.
TrackValue Choose(int container, int both, int unknown, int assumed) {
    if (both != unknown && both != container) return {both, "", ValueSource::Bitstream};
    if (both != unknown) return {both, "", ValueSource::Container};
    return {assumed, "", ValueSource::Assumed};
}

const char* FieldOrderName(int fieldOrder) {
    switch (fieldOrder) {
    case AV_FIELD_TT: return "tt";
    case AV_FIELD_BB: return "bb";
    case AV_FIELD_TB: return "tb";
    case AV_FIELD_BT: return "bt";
    default: return "progressive";
    }
}

void DescribeFieldOrder(MovieTrackInfo& info, Demuxer& demuxer, const TrackScan& scan) {
    AVFieldOrder order = demuxer.Track().codecpar->field_order;
    if (order == AV_FIELD_UNKNOWN) order = scan.fieldOrder;
    info.fieldOrder =
        Choose(demuxer.ContainerProperties().fieldOrder, order, AV_FIELD_UNKNOWN, AV_FIELD_PROGRESSIVE);
    info.fieldOrder.text = FieldOrderName(info.fieldOrder.value);
}

void DescribeColor(MovieTrackInfo& info, Demuxer& demuxer) {
    const PictureProperties& container = demuxer.ContainerProperties();
    const PictureProperties both = PropertiesOf(*demuxer.Track().codecpar);
    info.colorRange =
        Choose(container.colorRange, both.colorRange, AVCOL_RANGE_UNSPECIFIED, AVCOL_RANGE_MPEG);
    info.colorRange.text = Text(av_color_range_name(static_cast<AVColorRange>(info.colorRange.value)));
    info.colorMatrix =
        Choose(container.colorMatrix, both.colorMatrix, AVCOL_SPC_UNSPECIFIED, AVCOL_SPC_BT709);
    info.colorMatrix.text = Text(av_color_space_name(static_cast<AVColorSpace>(info.colorMatrix.value)));
    info.colorPrimaries =
        Choose(container.colorPrimaries, both.colorPrimaries, AVCOL_PRI_UNSPECIFIED, AVCOL_PRI_BT709);
    info.colorPrimaries.text =
        Text(av_color_primaries_name(static_cast<AVColorPrimaries>(info.colorPrimaries.value)));
    info.colorTransfer =
        Choose(container.colorTransfer, both.colorTransfer, AVCOL_TRC_UNSPECIFIED, AVCOL_TRC_BT709);
    info.colorTransfer.text =
        Text(av_color_transfer_name(static_cast<AVColorTransferCharacteristic>(info.colorTransfer.value)));
}

int ChromaFormat(const AVPixFmtDescriptor& format) {
    if (format.nb_components < 3) return 1;
    if (format.log2_chroma_w == 0 && format.log2_chroma_h == 0) return 444;
    if (format.log2_chroma_w != 1 || format.log2_chroma_h > 1) return 0;
    return format.log2_chroma_h == 0 ? 422 : 420;
}

void DescribePixels(MovieTrackInfo& info, AVPixelFormat format) {
    info.pixelFormat = Text(av_get_pix_fmt_name(format));
    const AVPixFmtDescriptor* const descriptor = av_pix_fmt_desc_get(format);
    if (descriptor == nullptr) return;
    info.chromaFormat = ChromaFormat(*descriptor);
    info.bitDepth = descriptor->comp[0].depth;
}

void DescribeCodec(MovieTrackInfo& info, const AVCodecParameters& parameters) {
    info.fourCC = RegistryFourCC(parameters);
    info.containerTag = SwapTag(parameters.codec_tag);
    info.codecName = CodecName(parameters.codec_id);
    info.profile = Text(avcodec_profile_name(parameters.codec_id, parameters.profile));
    // FFmpeg keeps flags above the number.
    if (parameters.profile >= 0) info.profileNumber = parameters.profile & 0xFF;
    info.level = parameters.level;
    DescribePixels(info, static_cast<AVPixelFormat>(parameters.format));
    info.bitsPerCodedSample = parameters.bits_per_coded_sample;
    if (parameters.extradata_size > 0) {
        info.extraData.assign(parameters.extradata, parameters.extradata + parameters.extradata_size);
    }
}

void DescribeSize(MovieTrackInfo& info, Demuxer& demuxer, const TrackScan& scan) {
    const AVCodecParameters& parameters = *demuxer.Track().codecpar;
    info.width = parameters.width;
    info.height = parameters.height;
    info.codedWidth = std::max(scan.codedWidth, info.width);
    info.codedHeight = std::max(scan.codedHeight, info.height);
    const AVRational aspect = av_guess_sample_aspect_ratio(&demuxer.Format(), &demuxer.Track(), nullptr);
    if (aspect.num > 0 && aspect.den > 0) info.sampleAspect = {aspect.num, aspect.den};
    const int64_t displayWidth = av_rescale(info.width, info.sampleAspect.num, info.sampleAspect.den);
    info.displayWidth = static_cast<int>(std::min<int64_t>(displayWidth, INT_MAX));
    info.displayHeight = info.height;
}

int64_t MeanBitRate(const TrackScan& scan, Rational duration) {
    if (duration.num <= 0) return 0;
    double bytes = 0;
    for (const SampleEntry& sample : scan.samples)
        bytes += sample.size;
    return std::llround(bytes * 8 * static_cast<double>(duration.den) / static_cast<double>(duration.num));
}

void DescribeTiming(MovieTrackInfo& info, const AVStream& track, const TrackScan& scan,
                    const FrameTable& table) {
    info.frameCount = table.FrameCount();
    if (info.frameCount == 0) return;
    const std::vector<Rational> stated{{track.avg_frame_rate.num, track.avg_frame_rate.den},
                                       {track.r_frame_rate.num, track.r_frame_rate.den}};
    const FrameRate rate = FindFrameRate(table, {track.time_base.num, track.time_base.den}, stated);
    info.frameRate = rate.rate;
    info.constantFrameRate = rate.isConstant;
    const SampleEntry& first = table.Sample(table.SampleForFrame(0));
    const SampleEntry& last = table.Sample(table.SampleForFrame(info.frameCount - 1));
    const int64_t lastTicks = last.duration > 0 ? last.duration : scan.frameTicks;
    info.startTime = TicksToSeconds(first.presentation, track.time_base);
    info.duration = TicksToSeconds(last.presentation + lastTicks - first.presentation, track.time_base);
    info.bitRate = track.codecpar->bit_rate > 0 ? track.codecpar->bit_rate : MeanBitRate(scan, info.duration);
}

void AddMetadata(std::map<std::string, std::string>& metadata, const AVDictionary* entries) {
    const AVDictionaryEntry* entry = nullptr;
    while ((entry = av_dict_get(entries, "", entry, AV_DICT_IGNORE_SUFFIX)) != nullptr) {
        metadata[entry->key] = entry->value;
    }
}

std::string TimeCodeIn(const AVDictionary* entries) {
    const AVDictionaryEntry* entry = av_dict_get(entries, "timecode", nullptr, 0);
    return entry != nullptr ? entry->value : "";
}

/// The track's own time code, else the file's, else that of a time code track.
std::string FindTimeCode(const AVFormatContext& format, const AVStream& track) {
    std::string timeCode = TimeCodeIn(track.metadata);
    if (timeCode.empty()) timeCode = TimeCodeIn(format.metadata);
    for (unsigned i = 0; i < format.nb_streams && timeCode.empty(); ++i) {
        timeCode = TimeCodeIn(format.streams[i]->metadata);
    }
    return timeCode;
}

} // namespace

const char* ValueSourceName(ValueSource source) {
    switch (source) {
    case ValueSource::Bitstream: return "bitstream";
    case ValueSource::Container: return "container";
    default: return "assumed";
    }
}

MovieTrackInfo DescribeTrack(const std::string& path, Demuxer& demuxer, const TrackScan& scan,
                             const FrameTable& table) {
    MovieTrackInfo info;
    const AVFormatContext& format = demuxer.Format();
    const AVStream& track = demuxer.Track();
    info.path = path;
    info.container = format.iformat->name;
    for (unsigned i = 0; i < format.nb_streams; ++i)
        info.streams.push_back(DescribeStream(*format.streams[i]));
    info.streamIndex = track.index;
    DescribeCodec(info, *track.codecpar);
    DescribeSize(info, demuxer, scan);
    DescribeTiming(info, track, scan, table);
    DescribeFieldOrder(info, demuxer, scan);
    DescribeColor(info, demuxer);
    info.timeCode = FindTimeCode(format, track);
    AddMetadata(info.metadata, format.metadata);
    AddMetadata(info.metadata, track.metadata);
    info.damage = scan.damage;
    return info;
}
