#pragma once

#include <cstdint>

/// The flat interface of the ProRes engine: free functions over opaque handles, no dependency beyond the
/// operating system's threads, no logging, and no exception but `std::bad_alloc`, from those functions alone
/// that say so. A failure of the operating system's locks, waits or joins ends the process. Streams are those
/// of SMPTE RDD 36.

/// The caller's description of an uncompressed picture. Filled by the caller and never changed by the engine.
struct PrxPixelBuffer {
    uint8_t* baseAddress; ///< first byte of the top row
    int32_t rowBytes;     ///< bytes from one row to the next; rows may not overlap
    uint32_t pixelFormat; ///< FourCC of the layout, its first character in the most significant byte
    int32_t width;        ///< pixels that the buffer can take across
    int32_t height;       ///< rows that the buffer can take
};

/// A decoder; owned by the caller until `PrxDeleteDecoder`. Used by one thread at a time; separate decoders
/// share nothing and may run in parallel.
using PrxDecoderRef = struct PrxDecoderHandle*;

/// The caller's description of a stream to encode.
struct PrxEncodeSettings {
    uint32_t codecType;    ///< FourCC: `apch`, `apcn`, `apcs`, `apco`, `ap4h`, `ap4x`
    int32_t interlaceMode; ///< 0: progressive; 1: top field first; 2: bottom field first
    uint8_t hasAlpha;      ///< not 0: encode alpha, as far as a 4:4:4 stream is made of a format that has it
};

/// An encoder; owned by the caller until `PrxDeleteEncoder`. Used by one thread at a time; separate encoders
/// share nothing and may run in parallel.
using PrxEncoderRef = struct PrxEncoderHandle*;

/// Called once in each new worker thread before it takes any work, with the pool's lock held.
using PrxThreadStartHook = void (*)();

/// Makes a decoder with `workerCount` worker threads, at most 64; 0 or less, taken as signed, means one for
/// each usable processor. `threadStartHook` may be null. Throws `std::bad_alloc`, whose text is then
/// "bad allocation", if the workers can't start, as where the process may run on no processor.
PrxDecoderRef PrxCreateDecoder(uint32_t workerCount, PrxThreadStartHook threadStartHook);

/// Decodes the frame in the `size` bytes at `data` into `buffer`, and returns when the whole picture has
/// been written. `quality` 1 gives half height (of an interlaced frame the first field), 2 half size, any
/// other value full size. With `ignoreAlpha` set, alpha is not decoded and formats with alpha get the opaque
/// value. A row must take whole macroblocks of 16 pixels: see `PrxGetBytesPerRow`.
///
/// Returns the frame's size in bytes, or
/// -50: `handle`, `data` or `buffer` is null;
///  -1: this stream can't be decoded to the buffer's pixel format;
///  -2: the frame is damaged in its size, its frame header or a picture header, or `size` is 0 or below;
///  -3: the frame's interlace field is none of the defined values;
///  -4: the buffer is too small, its `rowBytes` negative or its `baseAddress` null.
/// Then nothing has been written. A damaged slice is no failure: its macroblocks keep what the buffer held.
///
/// Throws `std::bad_alloc` if there is no memory for a larger frame than before. Rows may then be missing in
/// the picture. The decoder stays usable in any case.
int32_t PrxDecodeFrame(PrxDecoderRef handle, const uint8_t* data, int32_t size, const PrxPixelBuffer* buffer,
                       uint32_t quality, uint8_t ignoreAlpha);

/// Stops the workers and frees the decoder. Null is fine.
void PrxDeleteDecoder(PrxDecoderRef handle);

/// Makes an encoder, with workers as `PrxCreateDecoder` has them and the same failure.
PrxEncoderRef PrxCreateEncoder(uint32_t workerCount, PrxThreadStartHook threadStartHook);

/// Encodes `pixels` into one frame in the `capacity` bytes at `output`, and returns when it is finished. The
/// same pixels, settings and options give the same bytes, whatever the workers and the machine. No pixel
/// outside the picture is read, and any address may be unaligned. Pixels of `y408`, `r408`, `v408`, `y416`
/// and `r4fl` that go into a 4:2:2 stream are changed: their chroma is low-passed in place.
///
/// `rowBytes` may be negative, for rows that go upwards. Either way a row has to take its `width` pixels:
/// whole pairs of them in `2vuy`, `yuvs` and `v216`, and in `v210` whole groups of six, 16 bytes each.
/// Shorter rows of `v210` are no error: they are not read, and black ones are encoded. In other formats the
/// `rowBytes` of a picture of one row may be anything.
///
/// Of an interlaced frame of one row the bottom field is a picture without slices. `PrxDecodeFrame` takes
/// such a frame only with top field first and at a `quality` of 1 or 2.
///
/// `*outputSize` gets the frame's size in bytes, which is within the `maxFrameSize` of `PrxGetMaxFrameSize`.
/// `*allOpaque` gets 1 if every sample of alpha is at full value or no alpha was encoded, else 0. Either
/// pointer may be null; both values stay as they were on failure.
///
/// Returns 0, or
/// -50: `handle`, `settings`, `pixels`, its `baseAddress` or `output` is null; there is no way from the pixel
///      format to the codec; `width` or `height` is below 1; `capacity` is below `maxFrameSize`, to which a
///      codec type that is none of the six adds 3 bytes for each pixel if `hasAlpha` is set and the stream is
///      4:4:4; `rowBytes`, taken without its sign, is too small for a row, but as told above;
///  -3: `width` or `height` is above 65535.
/// Then nothing has been written.
///
/// Throws `std::bad_alloc` if there is no memory for a larger frame than before. The output is then
/// undefined, pixels that encoding changes may be changed in some rows and not in others, and the encoder
/// stays usable.
int32_t PrxEncodeFrame(PrxEncoderRef handle, const PrxEncodeSettings* settings, const PrxPixelBuffer* pixels,
                       uint8_t* output, int32_t capacity, int32_t* outputSize, uint8_t* allOpaque);

/// Sets an option for the frames to come. `value` points to a 32-bit integer, `size` is 4. Options:
/// `fasp` aspect ratio code, 0 (default) to 3; `ffps` frame rate code, 0 (default) to 8; `fcol` colour
/// primaries, `fxfr` transfer function, `fmat` colour matrix, each 0 or above, 2 by default. The codes are
/// those of the frame header (SMPTE RDD 36). The matrix is also that by which RGB is converted: another value
/// than 1, 6 and 9 stands for 6 in frames of fewer than 720 rows, else for 1.
///
/// Returns 0, or, with nothing changed, -50: `handle` or `value` is null, or the value out of range; -2184:
/// another size; -2195: no such option.
int32_t PrxSetEncoderOption(PrxEncoderRef handle, uint32_t optionFourCC, uint32_t size, const void* value);

/// Stops the workers and frees the encoder. Null is fine.
void PrxDeleteEncoder(PrxEncoderRef handle);

/// The `rowBytes` for a picture of `width` pixels decoded at `quality` (0, 1 or 2) or given to the encoder
/// (0): a multiple of 16 that takes whole macroblocks. 0 for a format that the engine doesn't know. A
/// size of more than 32 bits gives 0xfffffff0, the largest multiple of 16; no frame is nearly that wide.
uint32_t PrxGetBytesPerRow(uint32_t width, uint32_t pixelFormat, int32_t quality);

/// The most bytes that a compressed frame takes, and the size that rate control aims for. Either pointer may
/// be null.
void PrxGetMaxFrameSize(uint32_t codecType, uint8_t hasAlpha, int32_t width, int32_t height,
                        int32_t* maxFrameSize, int32_t* targetFrameSize);

/// The chroma format that the encoder gives to a stream: 2 (4:2:2) for a codec of the 4:2:2 family or a
/// 4:2:2 pixel format, 3 (4:4:4) otherwise.
int32_t PrxGetChromaFormat(uint32_t codecType, uint32_t pixelFormat);
