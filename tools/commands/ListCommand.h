#pragma once

#include "report/Report.h"

#include <string>

/// Says what this build offers, and for a back-end that is missing, why.
/// @param section  "decoders", "encoders", "containers" or "formats"; empty for all
void RunList(const std::string& section, Report& report);
