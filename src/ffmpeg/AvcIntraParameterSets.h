#pragma once

#include <cstdint>
#include <span>

namespace CxFFMPEG {

/// Parameter sets of AVC-Intra for a track that brings none: a sequence and a picture parameter set as a byte
/// stream (ISO/IEC 14496-10, Annex B) with start codes of four bytes. They live as long as the process.
///
/// @param width       of the picture, in pixels
/// @param fieldOrder  of the track, as `CxAbstractDataSource::GetFieldOrder`; 1 is progressive
/// @return nothing for a width other than 1920, 1440 and 1280
std::span<const uint8_t> AvcIntraParameterSets(int32_t width, int32_t fieldOrder);

} // namespace CxFFMPEG
