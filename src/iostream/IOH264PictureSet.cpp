#include "iostream/IOH264NALPayload.h"
#include "iostream/SkipUEs.h"

#include <bit>

namespace IOStream {

namespace {

/// slice_group_id of each of `units` map units.
/// @return false if an id has more than 30 bits
bool SkipSliceGroupIDs(BitBuffer& reader, uint32_t units) {
    // The width goes by the number of units, where 7.4.2.2 goes by the number of groups. Kept.
    const auto bits = static_cast<uint32_t>(std::bit_width(units - 1));
    if (bits > 30) return false;
    for (uint32_t unit = 0; unit < units; ++unit)
        reader.SkipBits(bits);
    return true;
}

/// The map of two or more slice groups.
/// @return false if it is refused
bool SkipSliceGroups(BitBuffer& reader, uint32_t groups) {
    switch (reader.ReadUE()) { // slice_group_map_type
    case 0:
        SkipUEs(reader, groups); // run_length_minus1
        return true;
    case 2:
        // top_left and bottom_right, one pair more than 7.3.2.2 has: the last group has none there. Kept.
        for (uint32_t group = 0; group < groups; ++group)
            SkipUEs(reader, 2);
        return true;
    case 3:
    case 4:
    case 5:
        reader.SkipBits(1); // slice_group_change_direction_flag
        reader.ReadUE();    // slice_group_change_rate_minus1
        return true;
    case 6: return SkipSliceGroupIDs(reader, reader.ReadUE() + 1);
    default: return true;
    }
}

} // namespace

bool IOH264NALPayload::ParsePPS(const uint8_t* payload, uint32_t size) {
    BitBuffer reader(payload, size);
    if (reader.ReadUE() >= 256) return false; // pic_parameter_set_id
    if (reader.ReadUE() >= 32) return false;  // seq_parameter_set_id
    entropyCodingMode = reader.ReadBit() != 0;
    bottomFieldPicOrderPresent = reader.ReadBit() != 0;
    const uint32_t groups = reader.ReadUE() + 1;
    if (groups > 1 && !SkipSliceGroups(reader, groups)) return false;
    const uint32_t referencesL0 = reader.ReadUE() + 1;
    const uint32_t referencesL1 = reader.ReadUE() + 1;
    if (referencesL0 > 32 || referencesL1 > 32) return false;
    reader.SkipBits(3); // weighted_pred_flag, weighted_bipred_idc
    SkipUEs(reader, 3); // pic_init_qp_minus26, pic_init_qs_minus26, chroma_qp_index_offset
    deblockingControlPresent = reader.ReadBit() != 0;
    reader.SkipBits(1); // constrained_intra_pred_flag
    redundantPicCntPresent = reader.ReadBit() != 0;
    return true;
}

} // namespace IOStream
