#pragma once

#include <string>

/// Whether a PNG file's chunks reach from its signature to the IEND chunk, all within the file (ISO/IEC
/// 15948, 5.3). Their contents are not looked at. libpng leaves a file that breaks off by a long jump, across
/// the memory that its caller holds, so such a file is better not handed to it.
bool PngChunksAreWhole(const std::string& path);
