#pragma once

#include "cameraraw/RavenlightRawAPI.h"

/// A clip, as the codec opens it.
RawClip* NewScriptedClip();
/// A picture that a process job tells of.
IUnknown* NewScriptedPicture();
/// What a frame is numbered.
uint64_t NumberOf(RawFrame* frame);
