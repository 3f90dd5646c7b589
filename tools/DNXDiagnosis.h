#pragma once

#include <string>

/// Why the module has no DNx back-end, in words. The module keeps no reason, so its library is looked for
/// again.
std::string WhyDNXIsMissing();
