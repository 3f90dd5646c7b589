#pragma once

#include "codecs/MediaFoundation.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

/// Which sample a call of ProcessOutput leaves.
enum class MFSample {
    Given, ///< the one that it was given
    Own,   ///< one of the library's own in its place
    None,  ///< none in its place
};

/// What one call of ProcessOutput gives.
struct MFOutput {
    HRESULT result = S_OK;
    std::optional<int64_t> time = {};     ///< in ticks of 100 ns
    std::optional<int64_t> duration = {}; ///< in ticks
    std::vector<uint8_t> bytes = {};      ///< as far as the buffer goes
    std::optional<uint32_t> cleanPoint = {};
    MFSample sample = MFSample::Given;
};

/// What the scripted library answers and what it was asked. It takes the place of Media Foundation and COM,
/// and does what it is told.
struct MFScript {
    /// Results of the next calls of a function, by its name; S_OK once they are used up. A call that fails
    /// leaves everything as it is.
    std::map<std::string, std::deque<HRESULT>> results;
    std::set<std::string> empty; ///< functions that succeed without an object
    bool hasTransform = true;
    bool hasProperties = true;
    bool typesNeverEnd = false;
    std::vector<GUID> inputTypes;  ///< subtypes on offer; the ones of a decoder if there are none
    std::vector<GUID> outputTypes; ///< the same
    bool isOutputAudio = false;    ///< types of output are all of audio
    DWORD inputStatus = MFT_INPUT_STATUS_ACCEPT_DATA;
    DWORD outputSize = 64;
    DWORD changedOutputSize = 0;   ///< what it is from the first stream change on, if not 0
    DWORD mostLocked = 0xffffffff; ///< bytes that locked buffers admit
    std::vector<uint8_t> sequenceHeader;
    UINT32 blobSlack = 0;                 ///< bytes by which blobs are said to be larger than they are
    std::deque<MFOutput> outputs;         ///< then more input is needed
    std::function<void(int64_t)> onInput; ///< called with a sample's time, or 0, if it is taken
    std::function<void(MFT_MESSAGE_TYPE)> onMessage; ///< called with each message that succeeds

    std::vector<std::string> calls; ///< in their order, with their arguments
    int objects = 0;                ///< made and not released
    int started = 0;                ///< of COM, and not ended
    int arrays = 0;                 ///< handed out and not freed
};

/// The script of the process. Functions may still be called when other objects of the library are gone.
MFScript& Script();
