#include "frames/FrameDecoder.h"

#include "FourCCText.h"
#include "QuietStream.h"
#include "frames/FormatDecoder.h"
#include "frames/FrameFailure.h"
#include "frames/HostFormats.h"
#include "framework/CxAVCodecRegistry.h"
#include "pixel/PixelConvert.h"

namespace {

/// Bytes of a sample whose rows are packed as `PixelConvert::CalcRowBytes` says; 0 for any other code.
int64_t PackedSampleBytes(uint32_t fourCC, int32_t width, int32_t height) {
    const int64_t planes = fourCC == FourCC("rp16") ? 3 : 1;
    return planes * PixelConvert::CalcRowBytes(fourCC, static_cast<uint32_t>(width)) * height;
}

/// Whether samples of the track are rows of pixels.
bool IsPacked(const MovieTrackInfo& track) {
    return PackedSampleBytes(track.fourCC, track.width, track.height) > 0;
}

class RegistryDecoder : public FrameDecoder {
public:
    RegistryDecoder(const MovieTrackInfo& track, std::unique_ptr<CxAbstractAVCodec> codec)
        : FrameDecoder(codec->GetName(), IsPacked(track) ? Matrix::Bt709 : Matrix::OfTrack),
          path_(track.path), codec_(std::move(codec)) {}

    void Decode(int32_t frame, Image* image) override {
        switch (codec_->GetDecodedFrame(frame, image)) {
        case CxAV_OK: return;
        case CxAV_READ_FAILED: FailFrame(path_, frame, ExitStatus::Damaged, "its sample can't be read");
        case CxAV_UNSUPPORTED: FailFrame(path_, frame, ExitStatus::Unsupported, "no engine for this stream");
        default: FailFrame(path_, frame, ExitStatus::Damaged, "it can't be decoded");
        }
    }

private:
    std::string path_;
    std::unique_ptr<CxAbstractAVCodec> codec_;
};

/// Reads packings that `PixelConvert` knows and no back-end claims.
class PackedDecoder : public FrameDecoder {
public:
    explicit PackedDecoder(MovieTrackSource& source)
        : FrameDecoder("pixel conversion", Matrix::Bt709), source_(source) {}

    void Decode(int32_t frame, Image* image) override {
        const std::string& path = source_.Info().path;
        const uint32_t fourCC = source_.GetFourCC();
        int32_t size = 0;
        uint8_t* sample = source_.ReadSample(source_.GetSampleForFrame(frame), nullptr, size);
        if (sample == nullptr || size < PackedSampleBytes(fourCC, image->Width, image->Height))
            FailFrame(path, frame, ExitStatus::Damaged, "its sample can't be read or is too short");
        const auto rowBytes =
            static_cast<uint32_t>(PixelConvert::CalcRowBytes(fourCC, static_cast<uint32_t>(image->Width)));
        if (!PixelConvert::BlobToImage(sample, rowBytes, fourCC, image))
            FailFrame(path, frame, ExitStatus::Unsupported, "this packing is not read");
    }

private:
    MovieTrackSource& source_;
};

/// Back-ends say on standard error why they refuse a track that another may decode.
std::unique_ptr<FrameDecoder> OpenRegistryDecoder(MovieTrackSource& source) {
    const QuietStream quiet(stderr);
    std::unique_ptr<CxAbstractAVCodec> codec(CxAVCodecRegistry::CreateDecoder(&source));
    if (!codec) return nullptr;
    return std::make_unique<RegistryDecoder>(source.Info(), std::move(codec));
}

std::unique_ptr<FrameDecoder> OpenPackedDecoder(MovieTrackSource& source) {
    return IsPacked(source.Info()) ? std::make_unique<PackedDecoder>(source) : nullptr;
}

std::string CodecText(const MovieTrackSource& source) {
    const MovieTrackInfo& info = source.Info();
    return "'" + FourCCText(info.fourCC) + "' (" + info.codecName + ")";
}

std::string WhyNothingDecodes(const MovieTrackSource& source, DecodeRoad road) {
    if (road == DecodeRoad::Format) return WhyNoFormatOpens(source.Info().path);
    return "no decoder for track code " + CodecText(source);
}

} // namespace

std::unique_ptr<FrameDecoder> OpenFrameDecoder(MovieTrackSource& source, DecodeRoad road) {
    std::unique_ptr<FrameDecoder> decoder;
    if (road != DecodeRoad::Format) decoder = OpenRegistryDecoder(source);
    if (!decoder && road != DecodeRoad::Registry) decoder = OpenFormatDecoder(source);
    if (!decoder && road == DecodeRoad::Auto) decoder = OpenPackedDecoder(source);
    if (!decoder)
        throw ToolError(ExitStatus::Unsupported, source.Info().path, WhyNothingDecodes(source, road));
    return decoder;
}
