#include "frames/MovieInput.h"

#include "frames/Packings.h"
#include "media/ToolError.h"

MovieInput::MovieInput(const std::string& path, DecodeRoad road)
    : source_(MovieTrackSource::Open(path)), decoder_(OpenFrameDecoder(*source_, road)) {
    track_.name = path;
    track_.movie = source_->Info();
    track_.width = source_->GetWidth();
    track_.height = source_->GetHeight();
    track_.frameCount = source_->GetFrameCount();
    track_.hasAlpha = CarriesAlpha(*track_.movie);
    track_.backEnd = decoder_->BackEnd();
    track_.isReadAsBt709 = decoder_->MatrixUsed() == FrameDecoder::Matrix::Bt709;
}

HostImage MovieInput::Read(int64_t index, ImageDataKind kind) {
    HostImage image = NewHostImage(track_.width, track_.height, kind);
    if (!image) throw ToolError(ExitStatus::JobFailed, track_.name, "not enough memory for a frame");
    decoder_->Decode(static_cast<int32_t>(index), image.get());
    return image;
}
