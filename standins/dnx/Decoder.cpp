#include "dnx/Decoder.h"

#include <climits>
#include <cstring>

namespace dnx {

namespace {

/// What a frame header can hold.
constexpr uint32_t greatestSize = 65535;

bool IsFrameStructure(uint32_t structure) {
    return structure == dnxStructureInterlaced || structure == dnxStructureProgressive;
}

/// Copies a frame into a packet, since FFmpeg reads some zero bytes behind it.
Error FillPacket(AVPacket& packet, const uint8_t* data, uint32_t size) {
    if (size > INT_MAX - AV_INPUT_BUFFER_PADDING_SIZE) return Error::NotAFrame;
    if (av_new_packet(&packet, static_cast<int>(size)) < 0) return Error::OutOfMemory;
    std::memcpy(packet.data, data, size);
    return Error::None;
}

} // namespace

Error Decoder::Create(const DNXFrameInformation& information, const DNXUncompressedParameters& uncompressed,
                      const DNXDecodeOperation& operation, std::unique_ptr<Decoder>& decoder) {
    if (information.alpha != 0 || operation.alpha != 0) return Error::Alpha;
    if (information.width == 0 || information.width > greatestSize) return Error::PictureSize;
    if (information.height == 0 || information.height > greatestSize) return Error::PictureSize;
    if (!IsFrameStructure(uncompressed.frameStructure)) return Error::FrameStructure;
    Packing packing;
    if (!FindPacking(uncompressed, packing)) return Error::PictureFormat;
    std::unique_ptr<Decoder> made(new Decoder(packing, information.width, information.height));
    const Error error = made->Open();
    if (error == Error::None) decoder = std::move(made);
    return error;
}

Decoder::Decoder(const Packing& packing, uint32_t width, uint32_t height)
    : packing_(packing), width_(width), height_(height) {}

Error Decoder::Open() {
    const AVCodec* const codec = avcodec_find_decoder(AV_CODEC_ID_DNXHD);
    context_ = AllocateContext(codec);
    packet_.reset(av_packet_alloc());
    frame_.reset(av_frame_alloc());
    if (context_ == nullptr || packet_ == nullptr || frame_ == nullptr) return Error::OutOfMemory;
    // A damaged header makes it allocate no more than a picture of this size, whose rows it makes longer.
    context_->max_pixels = (int64_t{width_} + 128) * (int64_t{height_} + 128);
    return ErrorOf(avcodec_open2(context_.get(), codec, nullptr), Error::NoCodec);
}

Error Decoder::CheckHeader(const uint8_t* data, uint32_t size) const {
    FrameHeader header;
    if (!ReadFrameHeader(data, size, header)) return Error::NotAFrame;
    if (header.alpha) return Error::Alpha;
    return header.width == width_ && header.height == height_ ? Error::None : Error::FrameSize;
}

Error Decoder::DecodePlanes(const uint8_t* data, uint32_t size) {
    if (const Error error = FillPacket(*packet_, data, size); error != Error::None) return error;
    int result = avcodec_send_packet(context_.get(), packet_.get());
    av_packet_unref(packet_.get());
    if (result >= 0) result = avcodec_receive_frame(context_.get(), frame_.get());
    // Forgets what it may still hold of a frame that failed.
    if (result < 0) avcodec_flush_buffers(context_.get());
    return ErrorOf(result, Error::DamagedFrame);
}

Error Decoder::CheckPlanes(const PlaneFormat* planes) const {
    const bool isOfSize =
        static_cast<uint32_t>(frame_->width) == width_ && static_cast<uint32_t>(frame_->height) == height_;
    if (!isOfSize) return Error::FrameSize;
    if (planes == nullptr || !Converts(packing_, *planes)) return Error::FrameFormat;
    const bool needsMatrix = packing_.rgb && planes->color != PlaneColor::Rgb;
    return needsMatrix && frame_->colorspace == AVCOL_SPC_BT2020_CL ? Error::ConstantLuminance : Error::None;
}

Error Decoder::Decode(const uint8_t* data, uint32_t size, uint8_t* output, uint32_t outputSize) {
    if (const Error error = CheckHeader(data, size); error != Error::None) return error;
    if (outputSize < PictureBytes(packing_, width_, height_)) return Error::PictureBuffer;
    if (const Error error = DecodePlanes(data, size); error != Error::None) return error;
    const PlaneFormat* const planes = FindPlaneFormat(frame_->format);
    Error error = CheckPlanes(planes);
    if (error == Error::None)
        error = ForEachBand(*context_, height_,
                            [&](RowBand band) { PackRows(*frame_, *planes, band, packing_, output); });
    av_frame_unref(frame_.get());
    return error;
}

} // namespace dnx
