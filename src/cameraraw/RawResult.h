#pragma once

#include "cameraraw/automation/Automation.h"

// What failing calls of the SDK say on standard error. None of these words ends with a newline. Kept.

/// "Vrel HRESULT = 0x%x".
void ReportRawResult(HRESULT result);
/// "Vrel (%s) HRESULT = 0x%x", for a step in the life of a job.
void ReportRawStep(const char* step, HRESULT result);
/// "Vrel NULL pointer", for an object that should be there.
void ReportRawNull();

/// Runs a call of the SDK, which has succeeded if it gives exactly 0. One that fails is run once more, with
/// the same arguments, and the second result is what is reported; it counts as failed whatever that is. Kept.
template <typename Call>
bool RawSucceeds(const Call& call) {
    if (call() == S_OK) return true;
    ReportRawResult(call());
    return false;
}

/// The same for a step in the life of a job.
template <typename Call>
bool RawStepSucceeds(const char* step, const Call& call) {
    if (call() == S_OK) return true;
    ReportRawStep(step, call());
    return false;
}

/// Whether there is an object, which is reported if not.
template <typename Pointer>
bool IsRawThere(const Pointer& pointer) {
    if (pointer) return true;
    ReportRawNull();
    return false;
}

/// The same for a call after which only the object counts that it gave: one that came with the second try
/// will do. Kept. One that is missing after a success is reported too.
/// @param pointer  where the call puts it
template <typename Pointer, typename Call>
bool RawFinds(const Pointer& pointer, const Call& call) {
    return RawSucceeds(call) ? IsRawThere(pointer) : static_cast<bool>(pointer);
}

/// `RawSucceeds` for a call that gives an object. One that is missing after a success is reported too.
/// @param pointer  where the call puts it; empty after a failure
template <typename Pointer, typename Call>
bool RawGives(Pointer& pointer, const Call& call) {
    if (RawSucceeds(call)) return IsRawThere(pointer);
    pointer.Reset();
    return false;
}
