#pragma once

#include <cstddef>
#include <cstdint>

// The interface of the closed DNx library: its records, its constants and its twelve functions. A library
// that takes its place includes this header and defines the functions.
//
// Fields are little-endian, as on every machine that this code is built for, and stand at the offsets that
// the static assertions give. A record begins with its own size; fields named `reserved` are zero.

/// Colour of the coded or uncompressed samples.
constexpr uint32_t dnxColorYCbCr = 1;
constexpr uint32_t dnxColorRgb = 2;

/// Chroma sampling of a coded frame; any other value is 4:2:2.
constexpr uint32_t dnxSampling422 = 1;
constexpr uint32_t dnxSampling444 = 2;
constexpr uint32_t dnxSampling420 = 4;

/// Frame type that `DNX_GetInfoFromCompressedFrame` gives for a frame that isn't progressive.
constexpr int32_t dnxFrameTypeInterlaced = 1;

/// Frame structure of uncompressed pictures.
constexpr uint32_t dnxStructureInterlaced = 1;
constexpr uint32_t dnxStructureProgressive = 64;

/// Component layout of uncompressed pictures: what one component is stored as.
constexpr uint32_t dnxLayout8Bit = 1;
constexpr uint32_t dnxLayout16Bit = 4;         ///< with the DNxHD compression ids
constexpr uint32_t dnxLayout16BitHR = 0x20000; ///< with the DNxHR compression ids

/// Sample format of uncompressed pictures: which components there are, in the order in memory. Those that
/// carry alpha, and ARGB, have a second value, which goes with frames whose `codedBits` is 8; the bytes are
/// the same. docs/pixel-formats.md gives the bytes of each packing.
constexpr uint32_t dnxSamplesCbYCrY = 2;            ///< 4:2:2: packings `2vuy` and `v216`, by the layout
constexpr uint32_t dnxSamplesArgb = 4;              ///< 4:4:4:4: packing `a48r`
constexpr uint32_t dnxSamplesArgbCoded8 = 0x800000; ///< packing `a48r`
constexpr uint32_t dnxSamplesCbYACrYA = 0x40000;    ///< 4:2:2:4: packings `yv8u` and `yv16`, by the layout
constexpr uint32_t dnxSamplesCbYACrYACoded8 = 0x1000000; ///< packings `yv8u` and `yv16`, by the layout

/// Bytes of the text that `DNX_GetErrorString` may write.
constexpr size_t dnxErrorTextSize = 576;

#pragma pack(push, 1)

/// What an encoder is to make.
struct DNXCompressedParameters {
    uint64_t size;          ///< 64
    uint32_t width;         ///< pixels
    uint32_t height;        ///< pixels
    uint32_t compressionId; ///< 1235 to 1274
    uint32_t codedBits;     ///< 1
    uint32_t colorFormat;   ///< `dnxColor...`
    uint32_t sampling;      ///< `dnxSampling...`
    uint32_t depth;         ///< bits: 10 or 12
    uint32_t constants[3];  ///< 1 each
    uint32_t reserved1;
    uint32_t alpha; ///< 1: with alpha
    uint32_t reserved2[2];
};

/// What the library finds in a compressed frame. The caller sets `size`, the library all else.
struct DNXFrameInformation {
    uint64_t size;          ///< 64
    uint32_t width;         ///< pixels
    uint32_t height;        ///< pixels
    uint32_t compressionId; ///< 1235 to 1274
    uint32_t codedBits;     ///< 8 selects the `...Coded8` sample formats
    uint32_t colorFormat;   ///< `dnxColor...`
    uint32_t sampling;      ///< `dnxSampling...`
    uint32_t depth;         ///< bits: 10, 12, anything else is 8
    uint32_t reserved1[4];
    uint32_t alpha;         ///< non-zero: the frame has alpha
    uint32_t losslessAlpha; ///< non-zero: that alpha is lossless
    uint32_t reserved2;
};

/// The uncompressed picture on the other side of a decoder or encoder. Rows follow each other without
/// padding, top row first.
struct DNXUncompressedParameters {
    uint64_t size;            ///< 50
    uint32_t componentLayout; ///< `dnxLayout...`
    uint32_t codedBits;       ///< encoder: 1; decoder: that of the frame information
    uint32_t colorFormat;     ///< `dnxColor...`
    uint32_t sampleFormat;    ///< `dnxSamples...`
    uint32_t frameStructure;  ///< `dnxStructure...`
    uint32_t constant;        ///< 1
    uint8_t reserved[18];
};

/// How an encoder is to work.
struct DNXEncodeOperation {
    uint64_t size;     ///< 12
    uint32_t constant; ///< 4
};

/// How a decoder is to work.
struct DNXDecodeOperation {
    uint64_t size;         ///< 24
    uint32_t constants[2]; ///< 4, 1
    uint32_t unset;        ///< no library may rely on it
    uint32_t alpha;        ///< 1: the picture carries alpha
};

#pragma pack(pop)

static_assert(sizeof(DNXCompressedParameters) == 64);
static_assert(offsetof(DNXCompressedParameters, size) == 0);
static_assert(offsetof(DNXCompressedParameters, width) == 8);
static_assert(offsetof(DNXCompressedParameters, height) == 12);
static_assert(offsetof(DNXCompressedParameters, compressionId) == 16);
static_assert(offsetof(DNXCompressedParameters, codedBits) == 20);
static_assert(offsetof(DNXCompressedParameters, colorFormat) == 24);
static_assert(offsetof(DNXCompressedParameters, sampling) == 28);
static_assert(offsetof(DNXCompressedParameters, depth) == 32);
static_assert(offsetof(DNXCompressedParameters, constants) == 36);
static_assert(offsetof(DNXCompressedParameters, reserved1) == 48);
static_assert(offsetof(DNXCompressedParameters, alpha) == 52);
static_assert(offsetof(DNXCompressedParameters, reserved2) == 56);

static_assert(sizeof(DNXFrameInformation) == 64);
static_assert(offsetof(DNXFrameInformation, size) == 0);
static_assert(offsetof(DNXFrameInformation, width) == 8);
static_assert(offsetof(DNXFrameInformation, height) == 12);
static_assert(offsetof(DNXFrameInformation, compressionId) == 16);
static_assert(offsetof(DNXFrameInformation, codedBits) == 20);
static_assert(offsetof(DNXFrameInformation, colorFormat) == 24);
static_assert(offsetof(DNXFrameInformation, sampling) == 28);
static_assert(offsetof(DNXFrameInformation, depth) == 32);
static_assert(offsetof(DNXFrameInformation, reserved1) == 36);
static_assert(offsetof(DNXFrameInformation, alpha) == 52);
static_assert(offsetof(DNXFrameInformation, losslessAlpha) == 56);
static_assert(offsetof(DNXFrameInformation, reserved2) == 60);

static_assert(sizeof(DNXUncompressedParameters) == 50);
static_assert(offsetof(DNXUncompressedParameters, size) == 0);
static_assert(offsetof(DNXUncompressedParameters, componentLayout) == 8);
static_assert(offsetof(DNXUncompressedParameters, codedBits) == 12);
static_assert(offsetof(DNXUncompressedParameters, colorFormat) == 16);
static_assert(offsetof(DNXUncompressedParameters, sampleFormat) == 20);
static_assert(offsetof(DNXUncompressedParameters, frameStructure) == 24);
static_assert(offsetof(DNXUncompressedParameters, constant) == 28);
static_assert(offsetof(DNXUncompressedParameters, reserved) == 32);

static_assert(sizeof(DNXEncodeOperation) == 12);
static_assert(offsetof(DNXEncodeOperation, size) == 0);
static_assert(offsetof(DNXEncodeOperation, constant) == 8);

static_assert(sizeof(DNXDecodeOperation) == 24);
static_assert(offsetof(DNXDecodeOperation, size) == 0);
static_assert(offsetof(DNXDecodeOperation, constants) == 8);
static_assert(offsetof(DNXDecodeOperation, unset) == 16);
static_assert(offsetof(DNXDecodeOperation, alpha) == 20);

// The functions. The module finds them at run time and never links them. Results are 0 for success and error
// codes of the library's own otherwise. A handle is used by one thread at a time, different ones in parallel.
// Nothing that an argument points at is kept, except by name of a handle.
#pragma GCC visibility push(default)
extern "C" {

/// Called once for a process, before any other function.
int32_t DNX_Initialize();
/// Called when the process ends. Objects of the library's own that have destructors may be gone by then.
void DNX_Finalize();
void DNX_GetVersion(int32_t* major, int32_t* minor, int32_t* patch, int32_t* build, char* letter);
/// Writes the text for an error code, ended by a zero, within `dnxErrorTextSize` bytes. Any thread.
void DNX_GetErrorString(int32_t error, char* text);

/// Describes a compressed frame of `size` bytes. Any thread.
/// @param information  its `size` is set on entry
/// @param frameType    out: `dnxFrameTypeInterlaced`, or another value for a progressive frame
int32_t DNX_GetInfoFromCompressedFrame(const void* data, uint32_t size, DNXFrameInformation* information,
                                       int32_t* frameType);

/// Makes a decoder of pictures as `uncompressed` tells. On failure `*decoder` is null.
int32_t DNX_CreateDecoder(const DNXFrameInformation* information,
                          const DNXUncompressedParameters* uncompressed, const DNXDecodeOperation* operation,
                          void** decoder);
/// Decodes a frame of `dataSize` bytes into `output`, of which at most `outputSize` bytes are written.
int32_t DNX_DecodeFrame(void* decoder, const void* data, void* output, uint32_t dataSize,
                        uint32_t outputSize);
void DNX_DeleteDecoder(void* decoder);

/// Makes an encoder from pictures as `uncompressed` tells. On failure `*encoder` is null.
int32_t DNX_CreateEncoder(const DNXCompressedParameters* compressed,
                          const DNXUncompressedParameters* uncompressed, const DNXEncodeOperation* operation,
                          void** encoder);
/// Bytes that the largest frame takes.
uint32_t DNX_GetCompressedBufferSize(const DNXCompressedParameters* compressed);
/// Encodes a picture of `inputSize` bytes into `output`, of which at most `outputSize` bytes are written.
/// @param written  out: bytes of the frame
int32_t DNX_EncodeFrame(void* encoder, const void* input, void* output, uint32_t inputSize,
                        uint32_t outputSize, uint32_t* written);
void DNX_DeleteEncoder(void* encoder);

} // extern "C"
#pragma GCC visibility pop
