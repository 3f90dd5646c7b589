#pragma once

#include <cstdint>
#include <deque>
#include <span>
#include <vector>

namespace mediafoundation {

/// The NAL units of a byte stream (ISO/IEC 14496-10, Annex B), without their start codes; what stands in
/// front of the first start code is passed over. Throws std::bad_alloc.
std::vector<std::span<const uint8_t>> StreamUnits(std::span<const uint8_t> stream);

/// Types of NAL units (ISO/IEC 14496-10, 7.4.1).
enum class UnitType : uint8_t { Slice = 1, IdrSlice = 5, SequenceSet = 7, PictureSet = 8 };

inline bool IsOf(std::span<const uint8_t> unit, UnitType type) {
    return !unit.empty() && (unit[0] & 0x1f) == static_cast<uint8_t>(type);
}

/// The parameter sets that a stream had so far, the latest last. A stream may have 32 sequence and 256
/// picture parameter sets, of 65535 bytes in the files that hold them; of more than that the oldest go.
class ParameterSets {
public:
    /// Keeps a unit if it is a parameter set. Throws std::bad_alloc.
    void Keep(std::span<const uint8_t> unit);
    void Clear() { sets_.clear(); }
    /// All of them as a byte stream. Throws std::bad_alloc.
    std::vector<uint8_t> Stream() const;

private:
    std::deque<std::vector<uint8_t>> sets_;
};

} // namespace mediafoundation
