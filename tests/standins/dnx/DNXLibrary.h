#pragma once

#include "codecs/DNXRecords.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

using Bytes = std::vector<uint8_t>;

/// The functions of the library under test, which is loaded on first use and stays.
struct DNXLibrary {
    decltype(&DNX_Initialize) Initialize;
    decltype(&DNX_Finalize) Finalize;
    decltype(&DNX_GetVersion) GetVersion;
    decltype(&DNX_GetErrorString) GetErrorString;
    decltype(&DNX_GetInfoFromCompressedFrame) GetInfoFromCompressedFrame;
    decltype(&DNX_CreateDecoder) CreateDecoder;
    decltype(&DNX_DecodeFrame) DecodeFrame;
    decltype(&DNX_DeleteDecoder) DeleteDecoder;
    decltype(&DNX_CreateEncoder) CreateEncoder;
    decltype(&DNX_GetCompressedBufferSize) GetCompressedBufferSize;
    decltype(&DNX_EncodeFrame) EncodeFrame;
    decltype(&DNX_DeleteEncoder) DeleteEncoder;
};
const DNXLibrary& DNX();

// The library's error codes.
constexpr int32_t noError = 0;
constexpr int32_t nullArgument = -2;
constexpr int32_t recordSize = -3;
constexpr int32_t notAFrame = -5;
constexpr int32_t unknownCompression = -6;
constexpr int32_t wrongPictureSize = -7;
constexpr int32_t noAlpha = -8;
constexpr int32_t wrongFrameStructure = -9;
constexpr int32_t wrongPictureFormat = -10;
constexpr int32_t wrongFrameFormat = -11;
constexpr int32_t wrongFrameSize = -12;
constexpr int32_t wrongPictureBuffer = -13;
constexpr int32_t smallFrameBuffer = -14;
constexpr int32_t damagedFrame = -15;
constexpr int32_t constantLuminance = -17;

/// A packing by its name, and what records say of it.
struct PackingRow {
    const char* name;
    uint32_t layout;
    uint32_t color;
    uint32_t samples;
    size_t pixelBytes;
};
constexpr PackingRow a48r = {"a48r", dnxLayout16Bit, dnxColorRgb, dnxSamplesArgb, 8};
constexpr PackingRow vuy2 = {"2vuy", dnxLayout8Bit, dnxColorYCbCr, dnxSamplesCbYCrY, 2};
constexpr PackingRow v216 = {"v216", dnxLayout16BitHR, dnxColorYCbCr, dnxSamplesCbYCrY, 4};
constexpr PackingRow yv8u = {"yv8u", dnxLayout8Bit, dnxColorYCbCr, dnxSamplesCbYACrYA, 3};
constexpr PackingRow yv16 = {"yv16", dnxLayout16BitHR, dnxColorYCbCr, dnxSamplesCbYACrYA, 6};

// Records as the module fills them.
DNXCompressedParameters Compressed(uint32_t id, uint32_t width, uint32_t height);
DNXUncompressedParameters Uncompressed(const PackingRow& packing,
                                       uint32_t structure = dnxStructureProgressive);
DNXFrameInformation Information(uint32_t id, uint32_t width, uint32_t height);
inline constexpr DNXEncodeOperation encodeOperation = {12, 4};
inline constexpr DNXDecodeOperation decodeOperation = {24, {4, 1}, 0, 0};

struct DeleteEncoder {
    void operator()(void* encoder) const { DNX().DeleteEncoder(encoder); }
};
struct DeleteDecoder {
    void operator()(void* decoder) const { DNX().DeleteDecoder(decoder); }
};
using EncoderPtr = std::unique_ptr<void, DeleteEncoder>;
using DecoderPtr = std::unique_ptr<void, DeleteDecoder>;

/// A result of the library, with what came of it: empty on failure.
template <typename Value>
struct Outcome {
    int32_t error;
    Value value;
};

Outcome<EncoderPtr> MakeEncoder(const DNXCompressedParameters& compressed,
                                const DNXUncompressedParameters& uncompressed);
Outcome<DecoderPtr> MakeDecoder(const DNXFrameInformation& information,
                                const DNXUncompressedParameters& uncompressed);

/// Encodes one picture into a buffer of `GetCompressedBufferSize` bytes.
Outcome<Bytes> EncodeWith(const EncoderPtr& encoder, const DNXCompressedParameters& compressed,
                          const Bytes& picture);
/// Makes an encoder for one picture.
Outcome<Bytes> EncodePicture(uint32_t id, uint32_t width, uint32_t height, const PackingRow& packing,
                             const Bytes& picture);

/// Describes a frame, makes a decoder for it, and decodes it.
Outcome<Bytes> DecodePicture(const Bytes& frame, const PackingRow& packing);
