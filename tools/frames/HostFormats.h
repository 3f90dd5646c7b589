#pragma once

#include "host/Registry.h"

#include <string>
#include <vector>

/// The host formats that load files with the extension of this one, the first to be tried first.
std::vector<Registry*> LoadersOf(const std::string& path);

/// A format's name for people.
std::string FormatName(const Registry& format);
