#pragma once

#include "rawsdk/Control.h"

namespace rawsdk {

/// The control of the process, whose references are not counted.
Control* GetControl();

} // namespace rawsdk
