#pragma once

#include "host/ImageFormat.h"
#include "host/Registry.h"

#include <memory>
#include <string>
#include <vector>

/// Attribute of movie formats: frames a second, of the file that is open or of the save that is set up.
inline constexpr Tag kFormatFrameRate = 0x200000c8;

/// The host formats that load files with the extension of this one, the first to be tried first.
std::vector<Registry*> LoadersOf(const std::string& path);

/// A format's name for people.
std::string FormatName(const Registry& format);

/// Makes an object of a format's class; null if it refuses, as it does where what it stands on is missing.
std::unique_ptr<ImageFormat> NewFormat(Registry& format);

/// A format that has opened a file; both null if there is none.
struct OpenedFormat {
    Registry* registry = nullptr;
    std::unique_ptr<ImageFormat> format;
};

/// Opens a file by the first host format that claims its extension and opens it, the one of highest priority
/// being tried first.
OpenedFormat OpenHostFormat(const std::string& path);

/// Whether one of the file's formats could not be tried, as what it stands on is missing.
bool IsFormatMissing(const std::string& path);

/// Why `OpenHostFormat` gave nothing for the file.
std::string WhyNoFormatOpens(const std::string& path);
