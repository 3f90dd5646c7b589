#include "media/TrackFormat.h"

#include "framework/CxAVTypes.h"
#include "media/ToolError.h"
#include "pixel/PixelConvert.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <string_view>

namespace {

/// An uncompressed code in the containers. A tag of 0: the container can't hold it.
struct UncompressedRow {
    uint32_t fourCC;
    AVCodecID codec;
    AVPixelFormat pixelFormat;
    int bitsPerPixel;
    uint32_t movTag;
    uint32_t otherTag; ///< AVI and Matroska
};

// Depths as the QuickTime file format gives them for these codes.
constexpr std::array uncompressedRows{
    UncompressedRow{24, AV_CODEC_ID_RAWVIDEO, AV_PIX_FMT_RGB24, 24, FourCC("raw "), 0},
    UncompressedRow{32, AV_CODEC_ID_RAWVIDEO, AV_PIX_FMT_ARGB, 32, FourCC("raw "), 0},
    UncompressedRow{FourCC("2vuy"), AV_CODEC_ID_RAWVIDEO, AV_PIX_FMT_UYVY422, 24, FourCC("2vuy"),
                    FourCC("UYVY")},
    UncompressedRow{FourCC("BGRA"), AV_CODEC_ID_RAWVIDEO, AV_PIX_FMT_BGRA, 32, FourCC("BGRA"), 0},
    UncompressedRow{FourCC("b64a"), AV_CODEC_ID_RAWVIDEO, AV_PIX_FMT_RGBA64BE, 64, FourCC("b64a"), 0},
    UncompressedRow{FourCC("r210"), AV_CODEC_ID_R210, AV_PIX_FMT_GBRP10, 30, FourCC("r210"), FourCC("r210")},
    UncompressedRow{FourCC("v210"), AV_CODEC_ID_V210, AV_PIX_FMT_YUV422P10, 24, FourCC("v210"),
                    FourCC("v210")},
    UncompressedRow{FourCC("v216"), AV_CODEC_ID_RAWVIDEO, AV_PIX_FMT_NONE, 24, FourCC("v216"), 0},
    UncompressedRow{FourCC("v408"), AV_CODEC_ID_V408, AV_PIX_FMT_YUVA444P, 32, FourCC("v408"),
                    FourCC("v408")},
};

const char* MuxerFor(const std::string& path) {
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (extension == ".mov") return "mov";
    if (extension == ".avi") return "avi";
    if (extension == ".mkv") return "matroska";
    throw ToolError(ExitStatus::Unsupported, path,
                    "no container for this extension; .mov, .avi and .mkv are written");
}

std::string CodeText(uint32_t fourCC) {
    if (fourCC < 256) return std::to_string(fourCC);
    char text[AV_FOURCC_MAX_STRING_SIZE] = "";
    return av_fourcc_make_string(text, SwapTag(fourCC));
}

/// A code that is not uncompressed. AVI has codes and sample forms of its own for these codecs, and takes
/// none.
TrackFormat CompressedFormat(const char* muxer, uint32_t fourCC, bool alpha) {
    const std::array<const AVCodecTag*, 2> tables{avformat_get_mov_video_tags(), nullptr};
    const uint32_t tag = SwapTag(fourCC);
    const AVCodecID codec = av_codec_get_id(tables.data(), tag);
    const AVOutputFormat* output = av_guess_format(muxer, nullptr, nullptr);
    const bool isHeld = std::string_view(muxer) != "avi" && output != nullptr &&
                        avformat_query_codec(output, codec, FF_COMPLIANCE_NORMAL) == 1;
    return {muxer, isHeld ? codec : AV_CODEC_ID_NONE, AV_PIX_FMT_NONE, tag, alpha ? 32 : 24};
}

} // namespace

TrackFormat ChooseTrackFormat(const std::string& path, uint32_t fourCC, bool alpha) {
    TrackFormat format;
    format.muxer = MuxerFor(path);
    const auto* row = std::find_if(uncompressedRows.begin(), uncompressedRows.end(),
                                   [=](const UncompressedRow& r) { return r.fourCC == fourCC; });
    if (row == uncompressedRows.end()) {
        format = CompressedFormat(format.muxer, fourCC, alpha);
    } else if (const uint32_t tag = std::string_view(format.muxer) == "mov" ? row->movTag : row->otherTag;
               tag != 0) {
        format = {format.muxer, row->codec, row->pixelFormat, SwapTag(tag), row->bitsPerPixel};
    }
    if (format.codec == AV_CODEC_ID_NONE) {
        throw ToolError(ExitStatus::Unsupported, path,
                        std::string("a ") + format.muxer + " file can't hold '" + CodeText(fourCC) +
                            "' video");
    }
    return format;
}

int64_t FileRowBytes(uint32_t fourCC, int width) {
    const int64_t pairs = (int64_t{width} + 1) / 2;
    if (fourCC == FourCC("2vuy")) return pairs * 4;
    if (fourCC == FourCC("v216")) return pairs * 8;
    return PixelConvert::CalcRowBytes(fourCC, static_cast<uint32_t>(width));
}
