#pragma once

#include "codecs/DNXRecords.h"

#include <cstdint>
#include <string>
#include <vector>

/// What the scripted library answers and what it was asked. It takes the place of the closed library, does
/// what it is told, and reads and writes every byte that it is given.
struct DNXScript {
    std::string failing;                  ///< functions that fail, without their prefix, and a space
                                          ///< between two
    int32_t error = 42;                   ///< with which it fails
    std::string errorText;                ///< of any error; empty for "error 42"
    DNXFrameInformation information = {}; ///< of every frame
    int32_t frameType = 0;                ///< of every frame
    std::vector<uint8_t> pixels = {0};    ///< fills decoded pictures, again and again
    uint32_t decodedSize = 0;             ///< bytes of decoded pictures; 0 for what there is room for. A
                                          ///< smaller buffer is refused, with the error 43
    std::vector<uint8_t> encoded = {1};   ///< frame that is encoded
    uint32_t bufferSize = 64;             ///< of encoded frames

    std::vector<std::string> calls; ///< without prefix, in their order
    int decoders = 0;               ///< made and not deleted
    int encoders = 0;               ///< made and not deleted
    uint64_t informationSize = 0;   ///< size that the record had on entry
    DNXFrameInformation decoderInformation = {};
    DNXCompressedParameters compressed = {}; ///< of the last encoder or buffer size
    DNXUncompressedParameters uncompressed = {};
    DNXDecodeOperation decodeOperation = {};
    DNXEncodeOperation encodeOperation = {};
    std::vector<uint8_t> data;  ///< frame that was decoded last
    std::vector<uint8_t> input; ///< picture that was encoded last
    uint32_t outputSize = 0;    ///< of the last frame or picture
};

/// The script of the process. Functions may still be called when other objects of the library are gone.
__attribute__((visibility("default"))) DNXScript& Script();
