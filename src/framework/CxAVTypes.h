#pragma once

#include <cstdint>
#include <string>
#include <vector>

class Image;

/// A four-character code as an integer, first character in the most significant byte. The integers 24 and 32
/// stand for plain RGB and ARGB.
constexpr uint32_t FourCC(const char (&text)[5]) {
    return static_cast<uint32_t>(static_cast<uint8_t>(text[0])) << 24 |
           static_cast<uint32_t>(static_cast<uint8_t>(text[1])) << 16 |
           static_cast<uint32_t>(static_cast<uint8_t>(text[2])) << 8 |
           static_cast<uint32_t>(static_cast<uint8_t>(text[3]));
}

/// What a codec object is made for.
enum CxAVOperation : uint32_t {
    CxAV_ENCODE = 1,
    CxAV_DECODE = 2,
};

/// Result of a codec call. The value -4 is not used.
enum CxAVError : int32_t {
    CxAV_OK = 0,
    CxAV_FAILED = -1,         ///< the frame could not be produced
    CxAV_NEED_MORE_DATA = -2, ///< the decoder has taken the sample and has no output yet
    CxAV_READ_FAILED = -3,    ///< the data source returned no sample
    CxAV_INVALID_STATE = -5,  ///< missing source or image, negative or unknown frame, failed conversion
    CxAV_UNSUPPORTED = -6,    ///< no engine for this stream, or an encoder code that is not known
};

/// One row of an encoder catalogue.
struct CxEncoderInfo {
    uint32_t fourCC = 0;     ///< the code that the file will carry
    uint32_t codecId = 0;    ///< the back-end's own code for this choice
    uint32_t reserved = 0;   ///< always 0
    std::string name;        ///< display name; also the key of `CxAVCodecRegistry::CreateEncoder`
    std::string description; ///< always empty
    uint32_t width = 0;      ///< frame width that the choice is bound to in pixels, 0 for any
    uint32_t height = 0;     ///< frame height that the choice is bound to in pixels, 0 for any
    uint32_t flags = 0;      ///< bit 0: interlaced; bit 1: carries alpha; bit 2: set on the H.264 row only
};

/// A stream to be encoded. The caller owns it; `SetEncoderSettings` may write `extraData`. Fields without a
/// meaning of their own are carried in their order and not read by the codecs.
struct CxVideoSettings {
    int32_t width = 0;              ///< frame width in pixels
    int32_t height = 0;             ///< frame height in pixels
    bool flag0 = false;             ///< carried
    uint32_t value0 = 0;            ///< carried
    uint32_t frameDuration = 0;     ///< frame duration in ticks of `timeScale`
    std::string text0;              ///< the encoder's name; carried
    std::string text1;              ///< the same
    uint32_t fourCC = 0;            ///< the chosen code
    uint32_t value1 = 0;            ///< FFmpeg codec id
    uint32_t value2 = 0;            ///< carried
    uint64_t value3 = 0;            ///< time code of the first frame
    uint32_t fieldOrder = 0;        ///< 1 progressive, 2 top field first, 3 bottom field first
    bool flag1 = false;             ///< carried
    uint32_t value4 = 0;            ///< carried
    uint64_t value5 = 0;            ///< the encoder context of the format that saves
    uint32_t bitRate = 0;           ///< average bits per second; 0 selects quality mode
    uint32_t gopSize = 0;           ///< frames between key frames; 0 leaves the encoder's default
    uint32_t value6 = 0;            ///< carried
    uint32_t value7 = 0;            ///< pixel aspect, numerator
    uint32_t value8 = 0;            ///< pixel aspect, denominator
    bool hasAlpha = false;          ///< the stream carries alpha
    uint16_t value9 = 0;            ///< colour primaries, in FFmpeg's numbering
    uint16_t value10 = 0;           ///< transfer, in FFmpeg's numbering
    uint16_t value11 = 0;           ///< colour matrix, in FFmpeg's numbering
    uint32_t timeScale = 0;         ///< ticks per second
    uint32_t value12 = 0;           ///< carried
    std::vector<uint8_t> extraData; ///< out: the codec configuration record that goes into the file
    uint32_t quality = 0;           ///< encoder quality, 0-100
};

/// Times of an encoded frame, filled by back-ends that reorder frames, in ticks of `timeBase`.
struct CxEncodedTiming {
    int64_t presentationTime = 0;
    int64_t decodeTime = 0;
    int64_t duration = 0;
    uint32_t timeBase = 0; ///< written as 32
    bool isKeyFrame = false;
};

/// In/out record of one `EncodeFrame` call.
struct CxEncodedFrame {
    uint32_t codecTag = 0;   ///< in: the compression to use, a FourCC or a back-end's own compression ID
    uint8_t* data = nullptr; ///< in/out: output buffer; null asks the back-end to allocate. From
                             ///< `Platform::AllocMemAligned`; the caller frees it, also after a failure
    uint32_t size = 0;       ///< in: buffer bytes if `data` is set; out: bytes written
    uint32_t fieldOrder = 0; ///< in: 1 progressive, 2 top field first, 3 bottom field first
    CxEncodedTiming timing;  ///< out
    uint32_t flags = 0;      ///< in: bit 1 (value 2) set if the alpha channel is to be coded
};
