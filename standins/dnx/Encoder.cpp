#include "dnx/Encoder.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <cstring>

namespace dnx {

namespace {

/// Whether a compression codes the kind of pictures that a record tells. One that codes fields takes
/// progressive pictures too.
bool CodesStructure(const Compression& compression, uint32_t structure) {
    return structure == dnxStructureProgressive ||
           (structure == dnxStructureInterlaced && compression.interlaced);
}

uint32_t ColorOf(const Compression& compression) {
    return FindPlaneFormat(compression.format)->color == PlaneColor::Rgb ? dnxColorRgb : dnxColorYCbCr;
}

} // namespace

Error CheckParameters(const DNXCompressedParameters& parameters, const Compression*& compression) {
    compression = FindCompression(parameters.compressionId);
    if (compression == nullptr) return Error::UnknownCompression;
    if (parameters.alpha != 0) return Error::Alpha;
    if (parameters.colorFormat != ColorOf(*compression)) return Error::PictureFormat;
    return AllowsSize(*compression, parameters.width, parameters.height) ? Error::None : Error::PictureSize;
}

Error Encoder::Create(const DNXCompressedParameters& compressed,
                      const DNXUncompressedParameters& uncompressed, std::unique_ptr<Encoder>& encoder) {
    const Compression* compression = nullptr;
    if (const Error error = CheckParameters(compressed, compression); error != Error::None) return error;
    if (!CodesStructure(*compression, uncompressed.frameStructure)) return Error::FrameStructure;
    Packing packing;
    if (!FindPacking(uncompressed, packing)) return Error::PictureFormat;
    if (packing.alpha && !packing.rgb) return Error::Alpha;
    if (!Converts(packing, *FindPlaneFormat(compression->format))) return Error::PictureFormat;
    std::unique_ptr<Encoder> made(new Encoder(packing));
    const Error error =
        made->Open(*compression, static_cast<int>(compressed.width), static_cast<int>(compressed.height));
    if (error == Error::None) encoder = std::move(made);
    return error;
}

Error Encoder::Open(const Compression& compression, int width, int height) {
    constexpr int64_t bitsOfMbit = 1'000'000;
    const AVCodec* const codec = avcodec_find_encoder(AV_CODEC_ID_DNXHD);
    context_ = AllocateContext(codec);
    packet_.reset(av_packet_alloc());
    if (context_ == nullptr || packet_ == nullptr) return Error::OutOfMemory;
    context_->width = width;
    context_->height = height;
    context_->pix_fmt = compression.format;
    context_->colorspace = AVCOL_SPC_BT709;
    context_->time_base = {1, 25};
    if (compression.IsHR())
        av_opt_set_int(context_->priv_data, "profile", compression.selector, 0);
    else
        context_->bit_rate = compression.selector * bitsOfMbit;
    if (compression.interlaced) context_->flags |= AV_CODEC_FLAG_INTERLACED_DCT;
    if (!AllocateFrame()) return Error::OutOfMemory;
    return ErrorOf(avcodec_open2(context_.get(), codec, nullptr), Error::NoCodec);
}

/// The frame that pictures are unpacked into. It doesn't tell the order of its fields: the top field is coded
/// first.
bool Encoder::AllocateFrame() {
    frame_.reset(av_frame_alloc());
    if (frame_ == nullptr) return false;
    frame_->width = context_->width;
    frame_->height = context_->height;
    frame_->format = context_->pix_fmt;
    frame_->pts = 0;
    return av_frame_get_buffer(frame_.get(), 0) >= 0;
}

Error Encoder::EncodePlanes() {
    ++frame_->pts;
    int result = avcodec_send_frame(context_.get(), frame_.get());
    if (result >= 0) result = avcodec_receive_packet(context_.get(), packet_.get());
    return ErrorOf(result, Error::EncodingFailed);
}

Error Encoder::Encode(const uint8_t* input, uint32_t inputSize, uint8_t* output, uint32_t outputSize,
                      uint32_t& written) {
    const auto width = static_cast<uint32_t>(frame_->width);
    const auto height = static_cast<uint32_t>(frame_->height);
    if (inputSize != PictureBytes(packing_, width, height)) return Error::PictureBuffer;
    // FFmpeg may still hold the planes of the frame before.
    if (av_frame_make_writable(frame_.get()) < 0) return Error::OutOfMemory;
    const PlaneFormat& planes = *FindPlaneFormat(frame_->format);
    const Error unpacked = ForEachBand(
        *context_, height, [&](RowBand band) { UnpackRows(input, packing_, planes, band, *frame_); });
    if (unpacked != Error::None) return unpacked;
    if (const Error error = EncodePlanes(); error != Error::None) return error;
    const auto size = static_cast<uint32_t>(packet_->size);
    const bool fits = size <= outputSize;
    if (fits) {
        std::memcpy(output, packet_->data, size);
        written = size;
    }
    av_packet_unref(packet_.get());
    return fits ? Error::None : Error::FrameBuffer;
}

} // namespace dnx
