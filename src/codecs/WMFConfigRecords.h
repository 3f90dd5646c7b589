#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace CxWMF {

// Parameter sets as configuration records (ISO/IEC 14496-15) and as byte streams (ISO/IEC 14496-10, Annex B)
// with start codes of four bytes. Any bytes may be passed; no byte outside of them is read. All throw
// std::bad_alloc.

/// Turns an "avcC" record into a byte stream; one that is a byte stream already is copied. A unit that passes
/// the record's end ends the conversion, with what was collected before it.
std::vector<uint8_t> AnnexBFromAvcRecord(std::span<const uint8_t> record);

/// The same for an "hvcC" record. An array of units other than parameter sets and SEI messages ends the
/// conversion too.
std::vector<uint8_t> AnnexBFromHevcRecord(std::span<const uint8_t> record);

/// Makes an "avcC" record of a byte stream whose first unit is the sequence and whose second the picture
/// parameter set; data that doesn't begin with a start code of four bytes is copied.
/// @return nothing if there are no such units, or they are too short or too long for a record
std::vector<uint8_t> AvcRecordFromAnnexB(std::span<const uint8_t> stream);

} // namespace CxWMF
