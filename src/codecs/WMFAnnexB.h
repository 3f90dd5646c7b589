#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace CxWMF {

// Byte streams (ISO/IEC 14496-10, Annex B) and samples whose units stand behind lengths of four bytes,
// highest first. Any bytes may be passed; no byte outside of them is touched.

/// The start code that is written.
inline constexpr std::array<uint8_t, 4> startCode = {0, 0, 0, 1};

/// Whether the data begin with a start code of four bytes.
bool BeginsWithStartCode(std::span<const uint8_t> data);

/// The same with one byte more at least.
bool IsAnnexB(std::span<const uint8_t> data);

/// The place of the first start code 00 00 01 at or behind `from`, or of the 00 before it if there is one;
/// the data's size if there is none.
size_t FindStartCode(std::span<const uint8_t> data, size_t from);

/// Turns the lengths of a sample into start codes, in place; one that is a byte stream already stays as it
/// is. A length of 2^24 or more ends the walk.
void AnnexBFromLengthPrefixes(std::span<uint8_t> sample);

/// Turns a byte stream into a sample. What stands before the first start code is left out, and so is a unit
/// that is empty; zeros behind a unit stay part of it, but for the one before the next start code. Ends at a
/// unit that `sample` has no room for.
/// @param sample  none of `stream`
/// @return bytes written
size_t LengthPrefixesFromAnnexB(std::span<const uint8_t> stream, std::span<uint8_t> sample);

} // namespace CxWMF
