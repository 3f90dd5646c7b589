#include "iostream/IOHEVCNALPayload.h"

// profile_tier_level (ISO/IEC 23008-2, 7.3.3).

namespace IOStream {

void IOHEVCNALPayload::ParseProfileTierLevel(BitBuffer& reader) {
    ParseGeneralProfile(reader, true);
    info.level = record[Record_Level] = static_cast<uint8_t>(reader.ReadBits(8));
    const uint32_t layers = LayerCount();
    if (layers == 1) return;
    struct SubLayer {
        bool hasProfile, hasLevel;
    };
    std::array<SubLayer, 6> subLayers = {}; // those below the top one
    const uint32_t count = layers == 0 ? 0 : layers - 1;
    for (uint32_t layer = 0; layer < count; ++layer) {
        subLayers[layer].hasProfile = reader.ReadBit() != 0;
        subLayers[layer].hasLevel = reader.ReadBit() != 0;
    }
    reader.SkipBits(2 * (9 - layers));
    for (const SubLayer& subLayer : subLayers) {
        if (subLayer.hasProfile) ParseGeneralProfile(reader, false);
        if (subLayer.hasLevel) reader.SkipBits(8);
    }
}

/// The 88 bits of a profile, of the whole stream or of a sub-layer.
/// @param interpret  whether they are kept
void IOHEVCNALPayload::ParseGeneralProfile(BitBuffer& reader, bool interpret) {
    if (!interpret) {
        reader.SkipBits(44 + 44);
        return;
    }
    record[Record_Profile] = static_cast<uint8_t>(reader.ReadBits(8));
    info.profile = record[Record_Profile] & 31;
    ApplyProfile();
    // Little-endian, unlike the record of the standard, which has the stream's byte order: kept.
    const uint32_t compatibility = reader.ReadBits(32);
    for (uint32_t byte = 0; byte < 4; ++byte)
        record[Record_Compatibility + byte] = static_cast<uint8_t>(compatibility >> 8 * byte);
    for (uint32_t byte = 0; byte < 6; ++byte)
        record[Record_Constraints + byte] = static_cast<uint8_t>(reader.ReadBits(8));
    ApplySourceFlags();
}

/// What the profiles of version 1 (A.3.2 to A.3.4) say of the format.
void IOHEVCNALPayload::ApplyProfile() {
    enum Profile : uint8_t { Profile_Main = 1, Profile_Main10 = 2, Profile_MainStillPicture = 3 };
    if (info.profile < Profile_Main || info.profile > Profile_MainStillPicture) return;
    info.bitDepth = info.profile == Profile_Main10 ? 10 : 8;
    info.chromaFormat = 420;
}

/// Takes the two least significant bits of the first constraint byte for the flags of progressive and
/// interlaced sources. The stream has general_progressive_source_flag and general_interlaced_source_flag in
/// the two most significant bits; the low bits are what is taken here: kept.
void IOHEVCNALPayload::ApplySourceFlags() {
    frameMbsOnly = (record[Record_Constraints] & 1) != 0;
    fieldSeen = (record[Record_Constraints] & 2) != 0;
    if (frameMbsOnly && !fieldSeen) info.fieldOrder = IOField_Progressive;
}

} // namespace IOStream
