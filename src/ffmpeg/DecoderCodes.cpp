#include "ffmpeg/DecoderCodes.h"

#include "framework/CxAVTypes.h"

#include <algorithm>
#include <array>
#include <bit>
#include <string_view>

namespace CxFFMPEG {

namespace {

constexpr size_t codeLength = 4; ///< characters

/// The codes of one codec, one behind the other.
struct Row {
    AVCodecID codec;
    std::string_view codes;
};

constexpr Row rows[] = {
    {AV_CODEC_ID_MPEG2VIDEO, "hdv1hdv2hdv3hdv4hdv5hdv6hdv7hdv8hdv9hdva"
                             "xdv1xdv2xdv3xdv4xdv5xdv6xdv7xdv8xdv9xdvaxdvbxdvcxdvdxdvexdvf"
                             "xd59xd5axd5bxd5cxd5dxd5exd5fxfz1mx3nmx3pmx4nmx4pmx5nmx5pmp2vm2v1"},
    {AV_CODEC_ID_DVVIDEO, "dvc dvcpdvsdpvsddvppdv5ndv5pdv1ndv1pdvhqdvhpdvh2dvh3dvh5dvh6p2dv"},
    {AV_CODEC_ID_H264, "avc1avcIxalgHDMVaivxavcixf4c"
                       "ai5pai5qai52ai53ai55ai56ai1pai1qai12ai13ai15ai16"},
    {AV_CODEC_ID_MPEG4, "mp4v"},
    {AV_CODEC_ID_MJPEG, "jpegmjpa"},
    {AV_CODEC_ID_MJPEGB, "mjpb"},
    {AV_CODEC_ID_HEVC, "hvc1hevchev1"},
    {AV_CODEC_ID_VP9, "VP90"},
};

constexpr std::string_view avcIntraCodes = "ai12ai13ai15ai16ai1pai1qai52ai53ai55ai56ai5pai5qaivxavcIavcixf4c";

constexpr uint32_t CodeAt(std::string_view codes, size_t at) {
    return FourCC({codes[at], codes[at + 1], codes[at + 2], codes[at + 3], '\0'});
}

constexpr size_t CountCodes() {
    size_t characters = 0;
    for (const Row& row : rows)
        characters += row.codes.size();
    return characters / codeLength;
}

constexpr auto MakeTable() {
    std::array<DecoderCode, CountCodes()> entries = {};
    auto* entry = entries.data();
    for (const Row& row : rows)
        for (size_t at = 0; at < row.codes.size(); at += codeLength)
            *entry++ = {CodeAt(row.codes, at), row.codec};
    std::sort(entries.begin(), entries.end(),
              [](const DecoderCode& a, const DecoderCode& b) { return a.fourCC < b.fourCC; });
    return entries;
}

constexpr auto table = MakeTable();

constexpr bool HasEachCodeOnce() {
    return std::adjacent_find(table.begin(), table.end(), [](const DecoderCode& a, const DecoderCode& b) {
               return a.fourCC == b.fourCC;
           }) == table.end();
}

static_assert(HasEachCodeOnce());
static_assert(table.size() == 84);
static_assert(avcIntraCodes.size() == 16 * codeLength);

} // namespace

std::span<const DecoderCode> DecoderCodes() { return table; }

AVCodecID CodecOfTrack(uint32_t fourCC) {
    const auto entry = std::ranges::lower_bound(table, fourCC, {}, &DecoderCode::fourCC);
    if (entry != table.end() && entry->fourCC == fourCC) return entry->codec;
    // The last one that FFmpeg's headers have, whatever their version. An enumeration of this language can't
    // hold a number with more bits than its members need.
    constexpr uint32_t end = std::bit_ceil(uint32_t{AV_CODEC_ID_WRAPPED_AVFRAME});
    return fourCC < end ? static_cast<AVCodecID>(fourCC) : AV_CODEC_ID_NONE;
}

bool IsAvcIntra(uint32_t fourCC) {
    for (size_t at = 0; at < avcIntraCodes.size(); at += codeLength)
        if (CodeAt(avcIntraCodes, at) == fourCC) return true;
    return false;
}

} // namespace CxFFMPEG
