#include "mediafoundation/PictureDecoder.h"

#include <algorithm>
#include <new>

namespace mediafoundation {

namespace {

uint32_t InMacroblocks(int size) { return (static_cast<uint32_t>(size) + 15) / 16 * 16; }

struct Plane {
    const uint8_t* samples;
    int stride;
    size_t width;
    size_t height;
};

/// Copies a plane into a larger one, and its last column and row into what is left.
void CopyPlane(const Plane& source, Picture& picture, int plane) {
    const size_t width = picture.PlaneWidth(plane);
    for (size_t y = 0; y < picture.PlaneHeight(plane); ++y) {
        const auto from = static_cast<ptrdiff_t>(std::min(y, source.height - 1));
        uint8_t* const row = picture.Row(plane, y);
        uint8_t* const end = std::copy_n(source.samples + from * source.stride, source.width, row);
        std::fill(end, row + width, end[-1]);
    }
}

/// Takes a picture if one came out. Its memory is OpenH264's, and only until the next call.
void TakePicture(const SBufferInfo& info, PictureDecoder::Output& output) {
    const SSysMEMBuffer& buffer = info.UsrData.sSystemBuffer;
    if (info.iBufferStatus != 1 || buffer.iWidth < 2 || buffer.iHeight < 2) return;
    Picture picture(InMacroblocks(buffer.iWidth), InMacroblocks(buffer.iHeight));
    for (int plane = 0; plane < 3; ++plane) {
        const int half = plane == 0 ? 1 : 2;
        CopyPlane({info.pDst[plane], buffer.iStride[half - 1], static_cast<size_t>(buffer.iWidth / half),
                   static_cast<size_t>(buffer.iHeight / half)},
                  picture, plane);
    }
    output.push_back({std::move(picture), info.uiOutYuvTimeStamp});
}

} // namespace

void PictureDecoder::DestroyDecoder::operator()(ISVCDecoder* decoder) const {
    decoder->Uninitialize();
    WelsDestroyDecoder(decoder);
}

void PictureDecoder::Decode(const AccessUnit& unit, Output& output) {
    bool hasIdr = false;
    bool hasOther = false;
    for (const std::span<const uint8_t> part : StreamUnits(unit.bytes)) {
        sets_.Keep(part);
        hasIdr |= IsOf(part, UnitType::IdrSlice);
        hasOther |= IsOf(part, UnitType::Slice);
    }
    // At an IDR picture OpenH264 writes others into pictures that wait. It doesn't recover from every
    // error either, and keeps memory for pictures that never come out.
    if (hasIdr && (TakeWaiting(output) || isDamaged_)) Restart();
    if (decoder_ == nullptr) Begin();
    if ((hasIdr || hasOther) && IsLeading(hasIdr, unit.time)) return;
    unsigned char* planes[3] = {};
    SBufferInfo info = {};
    info.uiInBsTimeStamp = unit.tag;
    const DECODING_STATE state =
        decoder_->DecodeFrameNoDelay(unit.bytes.data(), static_cast<int>(unit.bytes.size()), planes, &info);
    TakePicture(info, output);
    isDamaged_ |= state != dsErrorFree;
    if ((state & dsOutOfMemory) != 0) Restart();
}

/// Whether a picture is shown before the one at which decoding began. It refers to pictures that are not
/// there, and OpenH264 would lose the other one with it.
bool PictureDecoder::IsLeading(bool isIdr, std::optional<int64_t> time) {
    if (isIdr || isAtBegin_) {
        isAtBegin_ = false;
        beginTime_ = isIdr ? std::nullopt : time;
        return false;
    }
    return beginTime_.has_value() && time.has_value() && *time < *beginTime_;
}

void PictureDecoder::Drain(Output& output) {
    TakeWaiting(output);
    Restart();
}

void PictureDecoder::Forget() {
    Restart();
    sets_.Clear();
}

void PictureDecoder::Begin() {
    ISVCDecoder* made = nullptr;
    if (WelsCreateDecoder(&made) != 0 || made == nullptr) throw std::bad_alloc();
    decoder_.reset(made);
    int silent = WELS_LOG_QUIET;
    decoder_->SetOption(DECODER_OPTION_TRACE_LEVEL, &silent);
    SDecodingParam parameters = {};
    parameters.uiTargetDqLayer = 255;
    parameters.eEcActiveIdc = ERROR_CON_SLICE_COPY;
    parameters.sVideoProperty.size = sizeof(parameters.sVideoProperty);
    parameters.sVideoProperty.eVideoBsType = VIDEO_BITSTREAM_AVC;
    if (decoder_->Initialize(&parameters) != 0) {
        decoder_.reset();
        throw std::bad_alloc();
    }
    isDamaged_ = false;
    isAtBegin_ = true;
    beginTime_.reset();
    const std::vector<uint8_t> sets = sets_.Stream();
    if (sets.empty()) return;
    unsigned char* planes[3] = {};
    SBufferInfo info = {};
    decoder_->DecodeFrameNoDelay(sets.data(), static_cast<int>(sets.size()), planes, &info);
}

/// Takes the pictures that wait.
/// @return whether there were any; it is to be restarted then: OpenH264 doesn't use their memory again
bool PictureDecoder::TakeWaiting(Output& output) {
    if (decoder_ == nullptr) return false;
    int count = 0;
    decoder_->GetOption(DECODER_OPTION_NUM_OF_FRAMES_REMAINING_IN_BUFFER, &count);
    for (int i = 0; i < count; ++i) {
        unsigned char* planes[3] = {};
        SBufferInfo info = {};
        decoder_->FlushFrame(planes, &info);
        TakePicture(info, output);
    }
    return count > 0;
}

} // namespace mediafoundation
