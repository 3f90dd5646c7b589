#pragma once

#include <string>

/// Why raw camera clips can't be read, in words; empty if the camera maker's SDK is there. The module looks
/// for it with the first clip and keeps no reason, so it is looked for again.
std::string WhyRawSdkIsMissing();
