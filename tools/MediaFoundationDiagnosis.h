#pragma once

#include <string>

/// Why the module has no back-end of Media Foundation, in words. The module keeps no reason, so its libraries
/// are looked for again.
std::string WhyMediaFoundationIsMissing();
