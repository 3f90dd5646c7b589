#pragma once

#include "cameraraw/RavenlightRawAPI.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

/// When the scripted SDK tells of a job.
enum class Finish {
    OnThread,     ///< on a thread of its own, as soon as may be
    Late,         ///< on a thread of its own, some milliseconds later
    InsideSubmit, ///< before `Submit` returns
};

/// A piece of metadata; the value is made anew each time.
struct ScriptedEntry {
    std::u16string key;
    std::function<void(VARIANT& value)> fill;
};

/// What the scripted SDK answers and what it was asked. It takes the place of the closed library and does
/// what it is told. Calls are named as "RawClip.GetWidth"; `QueryInterface`, attributes and texts are told
/// with them, as in "RawCodec.QueryInterface RawExtras", "RawFrameSettings.GetAttribute wbkv" and
/// "RawClipSettings.SetAttribute lutm=Embedded". The end of an object is "~RawClip".
struct ScriptedRaw {
    using Attribute = std::variant<uint32_t, uint16_t, int16_t, float, std::string>;

    bool hasFactory = true;
    std::map<std::string, int> failing; ///< calls, and how many of them fail from now on, with 0x80040001
                                        ///< first, and 1 more each time
    std::set<std::string> givingNull;   ///< calls that succeed and give no object
    Finish finish = Finish::OnThread;

    uint32_t width = 4;
    uint32_t height = 2;
    uint32_t processedWidth = 4;
    uint32_t processedHeight = 2;
    uint64_t frameCount = 3;
    float frameRate = 24.0F;
    std::u16string timeCode = u"01:00:00:0"; ///< of frame 0, without the last digit, the frame's number
    std::map<uint32_t, Attribute> attributes;
    std::map<std::string, bool> luts; ///< modes that have a LUT, and whether it has a table
    std::vector<ScriptedEntry> clipMetadata;
    std::vector<ScriptedEntry> frameMetadata;
    uint32_t bitstreamBound = 16;
    uint32_t stateSize = 32;
    uint32_t decodedSize = 24;
    std::optional<uint32_t> processedSize; ///< else what the processed dimensions take
    HRESULT submitResult = S_OK;           ///< of jobs that are under way then
    HRESULT readResult = S_OK;
    bool hasFrame = true;                ///< whether a read has a product
    bool hasPicture = false;             ///< whether a process job has one
    std::vector<HRESULT> decodeResults;  ///< of the next decode jobs; success once there are no more
    std::vector<HRESULT> processResults; ///< the same of process jobs
    std::vector<std::string> gamuts = {"Ravenlight Design"};
    std::vector<uint32_t> listCounts; ///< told by the next questions for lists; else how many names there are

    std::vector<std::string> calls; ///< in their order
    HRESULT nextFailure = static_cast<HRESULT>(0x80040001);
    int objects = 0;          ///< that live
    void* lutTable = nullptr; ///< of the last process job
    std::string lastText;     ///< path or model of camera that was told last
};

/// The script of the process.
__attribute__((visibility("default"))) ScriptedRaw& Script();
/// Begins with a new script, once all threads have ended.
__attribute__((visibility("default"))) void ResetScript();
/// Waits until all threads that tell of jobs have ended.
__attribute__((visibility("default"))) void JoinThreads();

/// A sample of a processed frame: plane 0 to 2, pixel counted from the top left corner.
constexpr uint16_t ScriptedSample(uint64_t frame, uint32_t plane, uint32_t pixel) {
    return static_cast<uint16_t>(1000 * (frame + 1) + 10000 * plane + pixel);
}
