#pragma once

#include "prores/Prx.h"
#include "prores/PrxFormats.h"
#include "prores/PrxHeaders.h"

#include <array>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

/// Frames through the engine's interface, and what can be read off them.

struct EncoderDeleter {
    void operator()(PrxEncoderRef encoder) const { PrxDeleteEncoder(encoder); }
};
using EncoderPtr = std::unique_ptr<PrxEncoderHandle, EncoderDeleter>;
inline EncoderPtr MakeEncoder(uint32_t workerCount = 1) {
    return EncoderPtr(PrxCreateEncoder(workerCount, nullptr));
}

struct DecoderDeleter {
    void operator()(PrxDecoderRef decoder) const { PrxDeleteDecoder(decoder); }
};
using DecoderPtr = std::unique_ptr<PrxDecoderHandle, DecoderDeleter>;

inline constexpr uint32_t allCodecs[] = {prxCodecApch, prxCodecApcn, prxCodecApcs,
                                         prxCodecApco, prxCodecAp4h, prxCodecAp4x};

/// Formats that the encoder takes for one codec or another.
inline constexpr uint32_t allInputs[] = {
    prxFormat2vuy, prxFormatYuvs, prxFormatV210, prxFormatV216, prxFormatV408, prxFormatR408, prxFormatY408,
    prxFormatY416, prxFormatR4fl, prxFormatArgb, prxFormatB64a, prxFormatR10k, prxFormatR210, prxFormatN302,
};

/// Whether the encoder takes the format for the codec: all of the above but `n302` to 4:2:2.
inline bool IsTaken(uint32_t codecType, uint32_t pixelFormat) {
    return pixelFormat != prxFormatN302 || PrxGetChromaFormat(codecType, pixelFormat) == prxChroma444;
}

/// Bytes that `width` pixels of a row take.
int32_t RowSize(uint32_t pixelFormat, int32_t width);

/// What a picture shows.
enum class Content {
    Flat,  ///< one grey, opaque
    Ramps, ///< slow slopes
    Noise, ///< independent samples over their whole range, in alpha too
};

/// A picture in memory of its own, without a byte between its rows.
struct InputPicture {
    std::vector<uint8_t> bytes;
    PrxPixelBuffer buffer;
};
InputPicture MakePicture(uint32_t pixelFormat, int32_t width, int32_t height, Content content,
                         uint32_t seed = 1);

struct CodedFrame {
    int32_t result;
    std::vector<uint8_t> bytes;
    bool allOpaque;
};

/// Encodes with just the capacity that is needed.
CodedFrame Encode(PrxEncoderRef encoder, const PrxEncodeSettings& settings, const PrxPixelBuffer& picture);

struct CodedSlice {
    uint32_t headerSize;
    uint32_t quantIndex;
    uint32_t size;      ///< bytes, with the alpha
    uint32_t alphaSize; ///< bytes
    int32_t mbCount;
    std::array<uint32_t, 3> planeSize; ///< bytes of Y', Cb and Cr
};
struct CodedPicture {
    uint32_t size;            ///< bytes
    uint32_t sliceCountField; ///< as the header has it
    std::vector<CodedSlice> slices;
};

/// Reads what a decoder would, by headers and slice tables alone; empty if these don't fit each other or the
/// frame to the byte, its zeros at the end included.
std::vector<CodedPicture> ReadPictures(const std::vector<uint8_t>& frame);

PrxFrameHeader ReadHeader(const std::vector<uint8_t>& frame);
