// The exported functions: they look at pointers and records, and keep exceptions inside.

#include "codecs/DNXRecords.h"
#include "dnx/Decoder.h"
#include "dnx/Encoder.h"

#include <cstring>
#include <new>

namespace {

using dnx::Decoder;
using dnx::Encoder;
using dnx::Error;

/// Runs a function of the library and gives its error code.
template <typename Function>
int32_t Guarded(Function function) {
    try {
        return static_cast<int32_t>(function());
    } catch (...) {
        return static_cast<int32_t>(Error::OutOfMemory);
    }
}

/// Whether each record begins with its own size.
template <typename... Records>
bool HaveTheirSizes(const Records&... records) {
    return ((records.size == sizeof(records)) && ...);
}

template <typename... Pointers>
bool AnyNull(Pointers... pointers) {
    return ((pointers == nullptr) || ...);
}

void Describe(const dnx::FrameHeader& header, DNXFrameInformation& information) {
    information = {};
    information.size = sizeof(information);
    information.width = header.width;
    information.height = header.height;
    information.compressionId = header.compressionId;
    information.codedBits = header.depth;
    information.colorFormat = header.color;
    information.sampling = header.sampling;
    information.depth = header.depth;
    information.alpha = header.alpha ? 1 : 0;
    information.losslessAlpha = header.losslessAlpha ? 1 : 0;
}

} // namespace

int32_t DNX_Initialize() {
    const bool hasBoth = avcodec_find_decoder(AV_CODEC_ID_DNXHD) != nullptr &&
                         avcodec_find_encoder(AV_CODEC_ID_DNXHD) != nullptr;
    return static_cast<int32_t>(hasBoth ? Error::None : Error::NoCodec);
}

void DNX_Finalize() {}

void DNX_GetVersion(int32_t* major, int32_t* minor, int32_t* patch, int32_t* build, char* letter) {
    if (AnyNull(major, minor, patch, build, letter)) return;
    *major = 1;
    *minor = 0;
    *patch = 0;
    *build = LIBAVCODEC_VERSION_MAJOR;
    *letter = 'f';
}

void DNX_GetErrorString(int32_t error, char* text) {
    if (text != nullptr) std::strcpy(text, dnx::ErrorText(error));
}

int32_t DNX_GetInfoFromCompressedFrame(const void* data, uint32_t size, DNXFrameInformation* information,
                                       int32_t* frameType) {
    return Guarded([&] {
        if (AnyNull(data, information, frameType)) return Error::NullArgument;
        if (!HaveTheirSizes(*information)) return Error::RecordSize;
        dnx::FrameHeader header;
        if (!dnx::ReadFrameHeader(static_cast<const uint8_t*>(data), size, header)) return Error::NotAFrame;
        Describe(header, *information);
        *frameType = header.interlaced ? dnxFrameTypeInterlaced : 0;
        return Error::None;
    });
}

int32_t DNX_CreateDecoder(const DNXFrameInformation* information,
                          const DNXUncompressedParameters* uncompressed, const DNXDecodeOperation* operation,
                          void** decoder) {
    return Guarded([&] {
        if (decoder == nullptr) return Error::NullArgument;
        *decoder = nullptr;
        if (AnyNull(information, uncompressed, operation)) return Error::NullArgument;
        if (!HaveTheirSizes(*information, *uncompressed, *operation)) return Error::RecordSize;
        std::unique_ptr<Decoder> made;
        const Error error = Decoder::Create(*information, *uncompressed, *operation, made);
        *decoder = made.release();
        return error;
    });
}

int32_t DNX_DecodeFrame(void* decoder, const void* data, void* output, uint32_t dataSize,
                        uint32_t outputSize) {
    return Guarded([&] {
        if (AnyNull(decoder, data, output)) return Error::NullArgument;
        return static_cast<Decoder*>(decoder)->Decode(static_cast<const uint8_t*>(data), dataSize,
                                                      static_cast<uint8_t*>(output), outputSize);
    });
}

void DNX_DeleteDecoder(void* decoder) { delete static_cast<Decoder*>(decoder); }

int32_t DNX_CreateEncoder(const DNXCompressedParameters* compressed,
                          const DNXUncompressedParameters* uncompressed, const DNXEncodeOperation* operation,
                          void** encoder) {
    return Guarded([&] {
        if (encoder == nullptr) return Error::NullArgument;
        *encoder = nullptr;
        if (AnyNull(compressed, uncompressed, operation)) return Error::NullArgument;
        if (!HaveTheirSizes(*compressed, *uncompressed, *operation)) return Error::RecordSize;
        std::unique_ptr<Encoder> made;
        const Error error = Encoder::Create(*compressed, *uncompressed, made);
        *encoder = made.release();
        return error;
    });
}

uint32_t DNX_GetCompressedBufferSize(const DNXCompressedParameters* compressed) {
    if (compressed == nullptr || !HaveTheirSizes(*compressed)) return 0;
    const dnx::Compression* compression = nullptr;
    if (dnx::CheckParameters(*compressed, compression) != Error::None) return 0;
    return dnx::FrameBytes(*compression, compressed->width, compressed->height);
}

int32_t DNX_EncodeFrame(void* encoder, const void* input, void* output, uint32_t inputSize,
                        uint32_t outputSize, uint32_t* written) {
    return Guarded([&] {
        if (AnyNull(encoder, input, output, written)) return Error::NullArgument;
        return static_cast<Encoder*>(encoder)->Encode(static_cast<const uint8_t*>(input), inputSize,
                                                      static_cast<uint8_t*>(output), outputSize, *written);
    });
}

void DNX_DeleteEncoder(void* encoder) { delete static_cast<Encoder*>(encoder); }
