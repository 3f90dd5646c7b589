#pragma once

#include "cameraraw/RavenlightRawAPI.h"

#include <functional>

/// How a job tells of its end.
using TellEnd = std::function<void(IRavenlightRawCallback& callback, RawJob* job)>;

/// A job that works and tells of its end each time that it is submitted.
/// @param kind  "read", "decode" or "process"
RawJob* NewScriptedJob(const char* kind, TellEnd tellEnd);

/// Sets whom jobs tell, once no thread is inside the one before.
void SetJobCallback(IRavenlightRawCallback* callback);
