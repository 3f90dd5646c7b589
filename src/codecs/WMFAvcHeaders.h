#pragma once

#include <cstdint>
#include <span>

namespace CxWMF {

/// Parameter sets for a track that brings none, which is taken for AVC-Intra with progressive pictures: a
/// sequence and a picture parameter set as a byte stream (ISO/IEC 14496-10, Annex B). They live for good.
/// @param width  of the picture, in pixels
/// @return nothing for a width of 1281 to 1439 or 1441 to 1919
std::span<const uint8_t> AvcHeader(int32_t width);

} // namespace CxWMF
