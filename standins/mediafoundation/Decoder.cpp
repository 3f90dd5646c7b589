#include "mediafoundation/Decoder.h"

#include <limits>

namespace mediafoundation {

namespace {

/// In whole macroblocks; zeros for a size that no stream has.
NumberPair SurfaceOf(NumberPair size) {
    constexpr UINT32 most = 16384;
    const auto fits = [](UINT32 length) { return length > 0 && length <= most; };
    if (!fits(size.first) || !fits(size.second)) return {};
    return {(size.first + 15) / 16 * 16, (size.second + 15) / 16 * 16};
}

} // namespace

Held<MediaType> Decoder::AvailableType(Side side, DWORD index) {
    if (side == Side::Input) return index == 0 ? Make<MediaType>(MFVideoFormat_H264) : nullptr;
    if (index >= PictureFormats().size()) return nullptr;
    Held<MediaType> type = Make<MediaType>(PictureFormats()[index].subtype);
    type->SetUINT32(MF_MT_INTERLACE_MODE, MFVideoInterlace_Progressive);
    if (surface_ != NumberPair{}) SetPair(*type, MF_MT_FRAME_SIZE, surface_);
    return type;
}

HRESULT Decoder::PrepareFor(Side side, IMFMediaType& type) {
    const GUID subtype = VideoSubtypeOf(type);
    if (side == Side::Input) {
        if (subtype != MFVideoFormat_H264) return MF_E_INVALIDMEDIATYPE;
        Flush();
        decoder_.Forget();
        surface_ = SurfaceOf(PairOf(type, MF_MT_FRAME_SIZE));
        return S_OK;
    }
    const PictureFormat* format = FindPictureFormat(subtype);
    const NumberPair size = PairOf(type, MF_MT_FRAME_SIZE);
    if (format == nullptr || (size != NumberPair{} && size != surface_)) return MF_E_INVALIDMEDIATYPE;
    format_ = format;
    return S_OK;
}

HRESULT Decoder::Take(IMFSample& sample) {
    // More than any decoder holds: pictures that were dropped leave their times behind.
    constexpr size_t mostTimings = 256;
    return ReadSample(sample, [&](std::span<const uint8_t> bytes) {
        if (bytes.size() > std::numeric_limits<int32_t>::max()) return E_INVALIDARG;
        if (bytes.empty()) return S_OK;
        const SampleTiming timing = TimingOf(sample);
        timings_[samples_] = timing;
        if (timings_.size() > mostTimings) timings_.erase(timings_.begin());
        decoder_.Decode({bytes, samples_++, timing.time}, pictures_);
        return S_OK;
    });
}

HRESULT Decoder::Give(IMFSample& sample) {
    const Picture& picture = pictures_.front().picture;
    const NumberPair size = {picture.Width(), picture.Height()};
    if (size != surface_) {
        surface_ = size;
        Unset(Side::Output);
        return MF_E_TRANSFORM_STREAM_CHANGE;
    }
    const HRESULT result =
        FillSample(sample, OutputBytes(), [&](uint8_t* bytes) { format_->pack(picture, bytes); });
    if (FAILED(result)) return result;
    SetTiming(sample, TakeTiming(pictures_.front().tag));
    pictures_.pop_front();
    return S_OK;
}

/// None for a picture whose sample is long gone.
SampleTiming Decoder::TakeTiming(uint64_t tag) {
    const auto found = timings_.extract(tag);
    return found.empty() ? SampleTiming{} : found.mapped();
}

DWORD Decoder::OutputBytes() const {
    return format_ != nullptr ? static_cast<DWORD>(format_->Bytes(surface_.first, surface_.second)) : 0;
}

void Decoder::Flush() {
    decoder_.Restart();
    pictures_.clear();
    timings_.clear();
}

bool Decoder::KnowsProperty(REFGUID property) const {
    // Whether the graphics processor decodes, which it never does here.
    constexpr GUID acceleration = {
        0xf7db8a2f, 0x4f48, 0x4ee8, {0xae, 0x31, 0x8b, 0x6e, 0xbe, 0x55, 0x8a, 0xe2}};
    return property == acceleration;
}

} // namespace mediafoundation
