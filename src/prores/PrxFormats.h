#pragma once

#include <cstdint>

/// Codec types and pixel formats of the engine, and what is known of each. Free of state: callable from any
/// thread.

/// FourCCs of the codec types.
enum PrxCodecType : uint32_t {
    prxCodecApch = 0x61706368, ///< 422 HQ
    prxCodecApcn = 0x6170636e, ///< 422
    prxCodecApcs = 0x61706373, ///< 422 LT
    prxCodecApco = 0x6170636f, ///< 422 Proxy
    prxCodecAp4h = 0x61703468, ///< 4444
    prxCodecAp4x = 0x61703478, ///< 4444 XQ
};

/// FourCCs of the pixel formats.
enum PrxPixelFormat : uint32_t {
    prxFormat2vuy = 0x32767579, ///< 8-bit Y'CbCr 4:2:2: Cb Y0 Cr Y1
    prxFormatYuvs = 0x79757673, ///< 8-bit Y'CbCr 4:2:2: Y0 Cb Y1 Cr; encoder input only
    prxFormatV210 = 0x76323130, ///< 10-bit Y'CbCr 4:2:2, packed
    prxFormatV216 = 0x76323136, ///< 16-bit Y'CbCr 4:2:2, little-endian
    prxFormatW216 = 0x77323136, ///< 16-bit Y'CbCr 4:2:2 limited to the codes of 10 bits
    prxFormatV408 = 0x76343038, ///< 8-bit Cb Y Cr A, video range alpha
    prxFormatR408 = 0x72343038, ///< 8-bit A Y Cb Cr, luma black at 0
    prxFormatY408 = 0x79343038, ///< 8-bit A Y Cb Cr
    prxFormatY416 = 0x79343136, ///< 16-bit A Y Cb Cr, little-endian
    prxFormatR4fl = 0x7234666c, ///< 32-bit float A Y Cb Cr
    prxFormatArgb = 0x00000020, ///< 8-bit A R G B
    prxFormatBgra = 0x42475241, ///< 8-bit B G R A
    prxFormatB64a = 0x62363461, ///< 16-bit A R G B, big-endian
    prxFormatR10k = 0x5231306b, ///< 10-bit RGB, big-endian word, two low bits free
    prxFormatR210 = 0x72323130, ///< 10-bit RGB, big-endian word, two high bits free
    prxFormatN302 = 0x6e333032, ///< as `R10k`, little-endian word
    prxFormatL302 = 0x6c333032, ///< 10-bit RGB
};

/// Values of `chromaFormat` in a frame header (SMPTE RDD 36).
enum PrxChromaFormat : int32_t { prxChroma422 = 2, prxChroma444 = 3 };

/// Whether the codec is of the 4:2:2 family, of the 4:4:4:4 family, or of either.
bool PrxIs422Codec(uint32_t codecType);
bool PrxIs444Codec(uint32_t codecType);
bool PrxIsCodec(uint32_t codecType);

/// Whether a caller's picture in `pixelFormat` has 4:2:2 chroma. False for `w216`, which callers don't
/// encode.
bool PrxIs422Format(uint32_t pixelFormat);

/// The smallest run of pixels that takes whole bytes.
struct PrxGroupSize {
    uint32_t bytesPerGroup;  ///< an even number
    uint32_t pixelsPerGroup; ///< 1 in every format but `v210`
};

/// The group of `pixelFormat`; one pixel of 0 bytes for an unknown format.
PrxGroupSize PrxGetGroupSize(uint32_t pixelFormat);

/// Precision of the samples that the writers of `pixelFormat` take from the inverse transform: 8, 10 or 13
/// bits; 0 for a format that no writer makes.
int32_t PrxGetPrecisionClass(uint32_t pixelFormat);

/// Bytes of an alpha sample in `pixelFormat`: 0 (no alpha), 1, 2 or 4.
uint32_t PrxGetAlphaSampleSize(uint32_t pixelFormat);
