#include "media/RawLayout.h"

#include "ffmpeg/DecoderCodes.h"
#include "framework/CxAVTypes.h"
#include "pixel/PixelConvert.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

struct PixelFormatCode {
    AVPixelFormat format;
    uint32_t fourCC;
};

constexpr std::array pixelFormatCodes{
    PixelFormatCode{AV_PIX_FMT_RGB24, 24},
    PixelFormatCode{AV_PIX_FMT_ARGB, 32},
    PixelFormatCode{AV_PIX_FMT_BGRA, FourCC("BGRA")},
    PixelFormatCode{AV_PIX_FMT_BGR24, FourCC("24BG")},
    PixelFormatCode{AV_PIX_FMT_RGBA, FourCC("RGBA")},
    PixelFormatCode{AV_PIX_FMT_ABGR, FourCC("ABGR")},
};

/// The codes of codecs whose tracks come without one, or with one that no back-end claims; for each codec the
/// first row is what it goes by then. `avc1` and `hvc1` do for byte streams too: decoders tell the form of
/// the samples from the configuration record.
constexpr std::array<CxFFMPEG::DecoderCode, 13> codecCodes{{
    {FourCC("avc1"), AV_CODEC_ID_H264},
    {FourCC("hvc1"), AV_CODEC_ID_HEVC},
    {FourCC("mp2v"), AV_CODEC_ID_MPEG2VIDEO},
    {FourCC("mp4v"), AV_CODEC_ID_MPEG4},
    {FourCC("jpeg"), AV_CODEC_ID_MJPEG},
    {FourCC("mjpb"), AV_CODEC_ID_MJPEGB},
    {FourCC("dvc "), AV_CODEC_ID_DVVIDEO},
    {FourCC("VP90"), AV_CODEC_ID_VP9},
    {FourCC("AVdn"), AV_CODEC_ID_DNXHD},
    {FourCC("AVdh"), AV_CODEC_ID_DNXHD},
    {FourCC("v210"), AV_CODEC_ID_V210},
    {FourCC("r210"), AV_CODEC_ID_R210},
    {FourCC("v408"), AV_CODEC_ID_V408},
}};

/// Whether back-ends know the codec by this code.
bool IsCodeOf(uint32_t fourCC, AVCodecID codec) {
    const auto isIt = [=](const CxFFMPEG::DecoderCode& row) {
        return row.fourCC == fourCC && row.codec == codec;
    };
    return std::ranges::any_of(CxFFMPEG::DecoderCodes(), isIt) || std::ranges::any_of(codecCodes, isIt);
}

uint32_t UncompressedFourCC(const AVCodecParameters& parameters, uint32_t tag) {
    // These three tags mean rows that stand bottom row first, or packings of their own.
    if (tag == 0x03000000 || tag == FourCC("WRAW") || tag == FourCC("cyuv")) return tag;
    if (parameters.format == AV_PIX_FMT_UYVY422) {
        return tag == 0 || tag == FourCC("2vuy") || tag == FourCC("2Vuy") ? FourCC("2vuy") : FourCC("uyvy");
    }
    for (const PixelFormatCode& row : pixelFormatCodes) {
        if (row.format == parameters.format) return row.fourCC;
    }
    if (tag == FourCC("raw ")) return static_cast<uint32_t>(parameters.bits_per_coded_sample);
    return tag;
}

/// Bytes at the start of a row that hold pixels; the codes not named pad nothing.
int64_t PixelBytes(uint32_t fourCC, int64_t width, int32_t rowBytes) {
    if (fourCC == FourCC("r210")) return width * 4;
    if (fourCC == FourCC("v210")) return (width + 5) / 6 * 16;
    return rowBytes;
}

} // namespace

uint32_t RegistryFourCC(const AVCodecParameters& parameters) {
    const uint32_t tag = SwapTag(parameters.codec_tag);
    if (parameters.codec_id == AV_CODEC_ID_RAWVIDEO) return UncompressedFourCC(parameters, tag);
    if (IsCodeOf(tag, parameters.codec_id)) return tag;
    const auto own = std::ranges::find(codecCodes, parameters.codec_id, &CxFFMPEG::DecoderCode::codec);
    return own != codecCodes.end() ? own->fourCC : tag;
}

bool IsBottomUp(const AVCodecParameters& parameters) {
    // FFmpeg's AVI and Matroska readers tell it by this word, with its closing zero, at the end of the
    // record.
    constexpr char word[] = "BottomUp";
    constexpr int length = sizeof word;
    const int size = parameters.extradata_size;
    return parameters.codec_id == AV_CODEC_ID_RAWVIDEO && size >= length &&
           std::memcmp(parameters.extradata + size - length, word, length) == 0;
}

RowPacker::RowPacker(uint32_t fourCC, int width, int pictureHeight, bool isBottomUp)
    : rowBytes(PixelConvert::CalcRowBytes(fourCC, static_cast<uint32_t>(width))),
      pixelBytes(PixelBytes(fourCC, width, rowBytes)), height(pictureHeight), bottomUp(isBottomUp) {}

int64_t RowPacker::SourceRowBytes(int64_t size) const {
    if (size >= PictureBytes() && (size % height != 0 || size == PictureBytes())) return rowBytes;
    return size % height == 0 ? size / height : 0;
}

uint8_t* RowPacker::Pack(uint8_t* data, int64_t size) {
    const int64_t sourceRowBytes = SourceRowBytes(size);
    if (sourceRowBytes < pixelBytes) return nullptr;
    if (sourceRowBytes == rowBytes && !bottomUp) return data;
    packed.resize(PictureBytes());
    for (int row = 0; row < height; ++row) {
        const uint8_t* source = data + sourceRowBytes * (bottomUp ? height - 1 - row : row);
        std::memcpy(packed.data() + int64_t{rowBytes} * row, source,
                    std::min<int64_t>(rowBytes, sourceRowBytes));
    }
    return packed.data();
}
