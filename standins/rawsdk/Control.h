#pragma once

#include "cameraraw/automation/Automation.h"

#include <cstdint>
#include <string>
#include <vector>

namespace rawsdk {

/// Calls that are to go wrong.
struct Fault {
    /// The call, such as "RawClip.GetWidth", or with what it is about, such as "RawClip.QueryInterface
    /// RawClipReader" or "RawClipSettings.GetAttribute gamt", as `Calls` tells it. "ReadJob.Run",
    /// "DecodeJob.Run" and "ProcessJob.Run" are the work of jobs, which then finish so, and
    /// "CreateRavenlightRawFactoryInstance" is the export, which then gives null.
    std::string call;
    uint32_t skip = 0;           ///< calls that do their work before that
    uint32_t times = UINT32_MAX; ///< calls that then go wrong
    /// What they give, without doing anything. With `S_OK` they succeed and give nothing: null, 0 or empty.
    HRESULT result = E_FAIL;
};

/// Lets tests make the library misbehave, and see what is asked of it. It is got from the factory and is the
/// same for the whole process. Any thread.
class Control : public IUnknown {
public:
    /// Ends faults and delays, and forgets the calls and that they are recorded.
    virtual void Reset() = 0;
    /// Adds a fault. Of several for a call the first that is not used up applies.
    virtual void Add(const Fault& fault) = 0;
    /// Lets jobs finish late by this much.
    virtual void DelayJobs(uint32_t milliseconds) = 0;
    /// Records from here on the calls of all operations but `AddRef`, `Release` and those of jobs on threads
    /// of the library, each as "INTERFACE.OPERATION" and, after a space, the attribute, interface, pipeline
    /// or kind of job that it is about. "RawClip.Released" and "RawCodec.Released" are the ends of these
    /// objects.
    virtual void RecordCalls() = 0;
    virtual std::vector<std::string> Calls() = 0;
    /// Objects of the library that have references, this one aside.
    virtual uint64_t LiveObjects() = 0;

protected:
    ~Control() = default;
};

inline constexpr IID IID_Control = {
    0x90b2c7de, 0x46f8, 0x4a15, {0x8b, 0xe3, 0x27, 0x9d, 0x50, 0x6c, 0xf4, 0x18}};

} // namespace rawsdk
