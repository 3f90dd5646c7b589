#pragma once

#include "ffmpeg/EncodedTrack.h"
#include "ffmpeg/FFMPEGCodecs.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <string>

/// What is written to the standard error stream while `call` runs.
template <typename Call>
std::string WordsOf(const Call& call) {
    testing::internal::CaptureStderr();
    call();
    return testing::internal::GetCapturedStderr();
}

/// A decoder that reads a source, opened as far as the source lets it.
inline std::unique_ptr<CxFFMPEG::FFMPEGCodecs> OpenCodec(CxAbstractDataSource& source) {
    auto codec = std::make_unique<CxFFMPEG::FFMPEGCodecs>(CxAV_DECODE, nullptr);
    codec->SetDataSource(&source);
    return codec;
}

/// Feeds sample `sample` of a source as the temporal decoder does, past the end too.
inline CxAVError Feed(CxFFMPEG::FFMPEGCodecs& codec, EncodedSource& source, int32_t sample, AVFrame*& frame,
                      CxDecodeRequest& request) {
    request.decodeTime = source.GetDecodeTime(sample);
    request.sampleTime = source.GetSampleTime(sample);
    int32_t size = 0;
    uint8_t* const data = source.ReadSample(sample, nullptr, size);
    return codec.DecodeSample(data, size, frame, request);
}

/// Frames that come out of a decoder until it fails, with their times; nothing of them is kept.
struct DecodedFrame {
    int32_t frame; ///< by its luma
    int64_t time;  ///< the request's
};

inline std::vector<DecodedFrame> DecodeAll(CxFFMPEG::FFMPEGCodecs& codec, EncodedSource& source) {
    std::vector<DecodedFrame> decoded;
    for (int32_t sample = 0;; ++sample) {
        AVFrame* frame = nullptr;
        CxDecodeRequest request;
        const CxAVError result = Feed(codec, source, sample, frame, request);
        if (result == CxAV_OK) decoded.push_back({FrameOfLuma(frame->data[0][0]), request.frameTime});
        codec.ReleaseDecodedFrame(frame);
        if (result != CxAV_OK && result != CxAV_NEED_MORE_DATA) return decoded;
    }
}

/// The frame whose picture an image holds, by its grey; otherwise -1.
inline int32_t FrameOfImage(Image& image) {
    Pixel pixel = {};
    image.GetPixel(pixel, image.RowAddress(image.Height / 2) + image.Width / 2 * image.PixelStride, nullptr,
                   &image);
    return FrameOfLuma(16 + pixel.G / 65535.0 * 219);
}

/// Text of a key of the image's metadata, or "(none)".
inline std::string MetadataOf(const Image& image, const char* key) {
    return image.ImageInfo.FindKeyConst("Metadata").FindKeyConst(key).ToString("(none)");
}
