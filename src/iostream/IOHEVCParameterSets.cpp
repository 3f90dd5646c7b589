#include "iostream/IOHEVCNALPayload.h"
#include "iostream/SkipUEs.h"

#include <algorithm>

// Sequence and picture parameter sets (ISO/IEC 23008-2, 7.3.2.2 and 7.3.2.3).

namespace IOStream {

namespace {

/// scaling_list_data (7.3.4).
void SkipScalingListData(BitBuffer& reader) {
    for (uint32_t size = 0; size < 4; ++size) {
        for (uint32_t matrix = 0; matrix < 6; matrix += size == 3 ? 3 : 1) {
            const bool isCoded = reader.ReadBit() != 0;
            if (!isCoded)
                SkipUEs(reader, 1); // the list that is taken over
            else
                SkipUEs(reader, std::min(64U, 1U << (4 + 2 * size)) + (size > 1 ? 1 : 0));
        }
    }
}

/// An st_ref_pic_set (7.3.7) that is told from the one before it.
/// @param deltas  pictures in the set before; receives those in this one
void SkipPredictedRefPicSet(BitBuffer& reader, uint32_t& deltas) {
    reader.SkipBits(1);
    SkipUEs(reader, 1);
    uint32_t used = 0;
    for (uint32_t entry = 0; entry <= deltas; ++entry) {
        const bool isUsed = reader.ReadBit() != 0 || reader.ReadBit() != 0;
        if (isUsed) ++used;
    }
    deltas = used;
}

/// An st_ref_pic_set (7.3.7) that stands alone.
/// @param deltas  receives the pictures in the set
/// @return false above 16 pictures before or after the current one
bool SkipExplicitRefPicSet(BitBuffer& reader, uint32_t& deltas) {
    const uint32_t negative = reader.ReadUE();
    if (negative > 16) return false;
    const uint32_t positive = reader.ReadUE();
    if (positive > 16) return false;
    deltas = negative + positive;
    for (uint32_t entry = 0; entry < deltas; ++entry) {
        SkipUEs(reader, 1);
        reader.SkipBits(1);
    }
    return true;
}

bool SkipShortTermRefPicSets(BitBuffer& reader) {
    const uint32_t sets = reader.ReadUE();
    if (sets > 64) return false;
    uint32_t deltas = 0;
    for (uint32_t set = 0; set < sets; ++set) {
        const bool isPredicted = set > 0 && reader.ReadBit() != 0;
        if (isPredicted)
            SkipPredictedRefPicSet(reader, deltas);
        else if (!SkipExplicitRefPicSet(reader, deltas))
            return false;
    }
    return true;
}

} // namespace

bool IOHEVCNALPayload::ParseSPS(const uint8_t* payload, uint32_t size) {
    BitBuffer reader(payload, size);
    reader.SkipBits(4); // sps_video_parameter_set_id
    ParseLayers(reader);
    ParseProfileTierLevel(reader);
    const uint32_t spsID = reader.ReadUE();
    if (spsID >= 32) return false;
    ParseChromaFormat(reader);
    ParsePictureSize(reader);
    ParseBitDepths(reader);
    log2MaxPicOrderCntLsb = reader.ReadUE() + 4;
    if (log2MaxPicOrderCntLsb > 16) return false;
    SkipCodingTools(reader);
    if (!SkipReferencePictures(reader)) return false;
    reader.SkipBits(2); // sps_temporal_mvp_enabled_flag, strong_intra_smoothing_enabled_flag
    const bool hasVUI = reader.ReadBit() != 0;
    if (hasVUI) ParseVUI(reader, spsID); // refused VUI parameters do not refuse the set
    return true;
}

/// sps_max_sub_layers_minus1 and sps_temporal_id_nesting_flag. The count is cut to 3 bits, so that the value
/// 7, which the standard forbids, gives no layers: kept.
void IOHEVCNALPayload::ParseLayers(BitBuffer& reader) {
    const uint32_t layers = (reader.ReadBits(3) + 1) & 7;
    const uint32_t isNested = reader.ReadBit();
    uint8_t& packed = record[Record_Layers];
    packed = static_cast<uint8_t>((packed & ~0x3CU) | layers << 3 | isNested << 2);
}

void IOHEVCNALPayload::ParseChromaFormat(BitBuffer& reader) {
    constexpr std::array<uint16_t, 4> formats = {1, 420, 422, 444};
    const uint32_t chroma = reader.ReadUE();
    record[Record_ChromaFormat] = chroma & 3;
    if (chroma < formats.size()) info.chromaFormat = formats[chroma];
    if (chroma == 3) separateColourPlane = reader.ReadBit() != 0;
}

/// Size and conformance window, the latter in chroma samples in the stream.
void IOHEVCNALPayload::ParsePictureSize(BitBuffer& reader) {
    constexpr std::array<uint16_t, 4> subWidths = {1, 2, 2, 1};
    constexpr std::array<uint16_t, 4> subHeights = {1, 2, 1, 1};
    info.width = static_cast<uint16_t>(reader.ReadUE());
    info.height = static_cast<uint16_t>(reader.ReadUE());
    const bool hasWindow = reader.ReadBit() != 0;
    if (!hasWindow) return;
    const uint32_t subWidth = subWidths[record[Record_ChromaFormat]];
    const uint32_t subHeight = subHeights[record[Record_ChromaFormat]];
    info.cropLeft = static_cast<uint16_t>(reader.ReadUE() * subWidth);
    info.cropRight = static_cast<uint16_t>(reader.ReadUE() * subWidth);
    info.cropTop = static_cast<uint16_t>(reader.ReadUE() * subHeight);
    info.cropBottom = static_cast<uint16_t>(reader.ReadUE() * subHeight);
    info.width = static_cast<uint16_t>(info.width - info.cropRight - info.cropLeft);
    info.height = static_cast<uint16_t>(info.height - info.cropBottom - info.cropTop);
}

void IOHEVCNALPayload::ParseBitDepths(BitBuffer& reader) {
    record[Record_BitDepthLuma] = reader.ReadUE() & 7;
    info.bitDepth = record[Record_BitDepthLuma] + 8;
    record[Record_BitDepthChroma] = reader.ReadUE() & 7;
}

/// What stands between the picture order count and the reference pictures.
void IOHEVCNALPayload::SkipCodingTools(BitBuffer& reader) const {
    const bool hasOrderingOfEachLayer = reader.ReadBit() != 0;
    SkipUEs(reader, 3 * (hasOrderingOfEachLayer ? LayerCount() : 1));
    SkipUEs(reader, 6); // sizes of coding and transform blocks
    const bool hasScalingLists = reader.ReadBit() != 0;
    if (hasScalingLists) {
        const bool areCoded = reader.ReadBit() != 0;
        if (areCoded) SkipScalingListData(reader);
    }
    reader.SkipBits(2); // amp_enabled_flag, sample_adaptive_offset_enabled_flag
    const bool hasPCM = reader.ReadBit() != 0;
    if (hasPCM) {
        reader.SkipBits(4 + 4);
        SkipUEs(reader, 2);
        reader.SkipBits(1);
    }
}

/// Short-term and long-term reference pictures.
/// @return false if there are more than can be
bool IOHEVCNALPayload::SkipReferencePictures(BitBuffer& reader) const {
    if (!SkipShortTermRefPicSets(reader)) return false;
    const bool hasLongTerm = reader.ReadBit() != 0;
    if (!hasLongTerm) return true;
    const uint32_t pictures = reader.ReadUE();
    if (pictures > 31) return false;
    reader.SkipBits(pictures * (log2MaxPicOrderCntLsb + 1));
    return true;
}

bool IOHEVCNALPayload::ParsePPS(const uint8_t* payload, uint32_t size) {
    BitBuffer reader(payload, size);
    SkipUEs(reader, 2); // ids
    reader.SkipBits(7);
    SkipUEs(reader, 3); // default numbers of reference pictures, first quantiser
    reader.SkipBits(2);
    const bool hasQPDelta = reader.ReadBit() != 0;
    if (hasQPDelta) SkipUEs(reader, 1);
    SkipUEs(reader, 2); // offsets of the chroma quantisers
    reader.SkipBits(4);
    const bool hasTiles = reader.ReadBit() != 0;
    const bool hasWavefronts = reader.ReadBit() != 0;
    if (hasTiles)
        record[Record_Parallelism] = hasWavefronts ? 0 : 2;
    else
        record[Record_Parallelism] = hasWavefronts ? 3 : 1;
    return true;
}

} // namespace IOStream
