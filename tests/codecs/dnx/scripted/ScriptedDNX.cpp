// In a process of its own the library is told by its environment: CORVEX_DNX_FAILING names the functions that
// fail, and with CORVEX_DNX_TELLS set the end is told on standard error.

#include "codecs/dnx/scripted/ScriptedDNX.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <sstream>

namespace {

constexpr int32_t bufferTooSmall = 43;

DNXScript* NewScript() {
    auto* const script = new DNXScript;
    if (const char* const failing = std::getenv("CORVEX_DNX_FAILING")) script->failing = failing;
    return script;
}

/// Enters a call; its result. A function without a result that fails has no effect.
int32_t Call(const std::string& function) {
    Script().calls.push_back(function);
    std::istringstream words(Script().failing);
    const bool fails = std::find(std::istream_iterator<std::string>(words), {}, function) !=
                       std::istream_iterator<std::string>();
    return fails ? Script().error : 0;
}

std::vector<uint8_t> BytesAt(const void* data, uint32_t size) {
    const auto* const bytes = static_cast<const uint8_t*>(data);
    return {bytes, bytes + size};
}

void FillPicture(uint8_t* output, uint32_t size) {
    const std::vector<uint8_t>& pixels = Script().pixels;
    for (uint32_t i = 0; i < size; ++i)
        output[i] = pixels[i % pixels.size()];
}

} // namespace

DNXScript& Script() {
    static DNXScript* const script = NewScript();
    return *script;
}

int32_t DNX_Initialize() { return Call("Initialize"); }

void DNX_Finalize() {
    if (Call("Finalize") != 0) return;
    if (std::getenv("CORVEX_DNX_TELLS") != nullptr) std::fputs("finalized\n", stderr);
}

void DNX_GetVersion(int32_t* major, int32_t* minor, int32_t* patch, int32_t* build, char* letter) {
    if (Call("GetVersion") != 0) return;
    *major = 2;
    *minor = 10;
    *patch = 3;
    *build = 456;
    *letter = 'R';
}

void DNX_GetErrorString(int32_t error, char* text) {
    if (Call("GetErrorString") != 0) return;
    const std::string& told = Script().errorText;
    const std::string words = told.empty() ? "error " + std::to_string(error) : told;
    std::memcpy(text, words.c_str(), std::min(words.size() + 1, dnxErrorTextSize));
}

int32_t DNX_GetInfoFromCompressedFrame(const void* data, uint32_t size, DNXFrameInformation* information,
                                       int32_t* frameType) {
    Script().data = BytesAt(data, size);
    Script().informationSize = information->size;
    if (const int32_t error = Call("GetInfoFromCompressedFrame")) return error;
    *information = Script().information;
    *frameType = Script().frameType;
    return 0;
}

int32_t DNX_CreateDecoder(const DNXFrameInformation* information,
                          const DNXUncompressedParameters* uncompressed, const DNXDecodeOperation* operation,
                          void** decoder) {
    Script().decoderInformation = *information;
    Script().uncompressed = *uncompressed;
    Script().decodeOperation = *operation;
    if (const int32_t error = Call("CreateDecoder")) return error;
    *decoder = &Script().decoders;
    ++Script().decoders;
    return 0;
}

int32_t DNX_DecodeFrame(void* decoder, const void* data, void* output, uint32_t dataSize,
                        uint32_t outputSize) {
    if (decoder != &Script().decoders) std::abort();
    Script().data = BytesAt(data, dataSize);
    Script().outputSize = outputSize;
    if (const int32_t error = Call("DecodeFrame")) return error;
    if (outputSize < Script().decodedSize) return bufferTooSmall;
    FillPicture(static_cast<uint8_t*>(output), Script().decodedSize != 0 ? Script().decodedSize : outputSize);
    return 0;
}

void DNX_DeleteDecoder(void* decoder) {
    if (decoder != &Script().decoders) std::abort();
    if (Call("DeleteDecoder") == 0) --Script().decoders;
}

int32_t DNX_CreateEncoder(const DNXCompressedParameters* compressed,
                          const DNXUncompressedParameters* uncompressed, const DNXEncodeOperation* operation,
                          void** encoder) {
    Script().compressed = *compressed;
    Script().uncompressed = *uncompressed;
    Script().encodeOperation = *operation;
    if (const int32_t error = Call("CreateEncoder")) return error;
    *encoder = &Script().encoders;
    ++Script().encoders;
    return 0;
}

uint32_t DNX_GetCompressedBufferSize(const DNXCompressedParameters* compressed) {
    Script().compressed = *compressed;
    return Call("GetCompressedBufferSize") == 0 ? Script().bufferSize : 0;
}

int32_t DNX_EncodeFrame(void* encoder, const void* input, void* output, uint32_t inputSize,
                        uint32_t outputSize, uint32_t* written) {
    if (encoder != &Script().encoders) std::abort();
    Script().input = BytesAt(input, inputSize);
    Script().outputSize = outputSize;
    if (const int32_t error = Call("EncodeFrame")) return error;
    const std::vector<uint8_t>& frame = Script().encoded;
    std::copy_n(frame.data(), std::min<size_t>(frame.size(), outputSize), static_cast<uint8_t*>(output));
    *written = static_cast<uint32_t>(frame.size());
    return 0;
}

void DNX_DeleteEncoder(void* encoder) {
    if (encoder != &Script().encoders) std::abort();
    if (Call("DeleteEncoder") == 0) --Script().encoders;
}
