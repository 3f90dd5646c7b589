#include "iostream/IOH264NALPayload.h"

namespace IOStream {

uint32_t IOH264NALPayload::ParseSliceStart(BitBuffer& reader) {
    reader.ReadUE(); // first_mb_in_slice
    const uint32_t sliceType = reader.ReadUE();
    if (reader.ReadUE() >= 256) return 0; // pic_parameter_set_id; the slice passes for a predicted one. Kept.
    if (separateColourPlane) reader.SkipBits(2);            // colour_plane_id
    reader.ReadBits(static_cast<uint8_t>(log2MaxFrameNum)); // frame_num
    if (frameMbsOnly) return sliceType;
    const bool isField = reader.ReadBit() != 0;
    if (isField) fieldSeen = true;
    // A frame of a stream that may have fields, MBAFF included, counts as top field first. Kept.
    const bool isBottomField = isField && reader.ReadBit() != 0;
    info.fieldOrder = isBottomField ? IOField_BottomFirst : IOField_TopFirst;
    return sliceType;
}

bool IOH264NALPayload::ParseIDRSlice(const uint8_t* payload, uint32_t size) {
    constexpr uint32_t allSlicesIntra = 7; // IDR slices of type 2 tell nothing here. Kept.
    BitBuffer reader(payload, size);
    const uint32_t sliceType = ParseSliceStart(reader);
    if (sliceType != allSlicesIntra || deblockingSeen || !deblockingControlPresent) return false;
    reader.ReadUE(); // idr_pic_id
    // The second delta is read for fields too, where 7.3.3 has it for frames alone. Kept.
    if (picOrderCntType == 0) {
        reader.SkipBits(log2MaxPicOrderCntLsb);
        if (bottomFieldPicOrderPresent) reader.ReadUE(); // delta_pic_order_cnt_bottom
    } else if (picOrderCntType == 1 && !deltaPicOrderAlwaysZero) {
        reader.ReadUE();                                 // delta_pic_order_cnt[0]
        if (bottomFieldPicOrderPresent) reader.ReadUE(); // delta_pic_order_cnt[1]
    }
    if (redundantPicCntPresent) reader.ReadUE(); // redundant_pic_cnt
    reader.SkipBits(2);                          // no_output_of_prior_pics_flag, long_term_reference_flag
    reader.ReadUE();                             // slice_qp_delta
    const uint32_t disableDeblockingFilterIdc = reader.ReadUE();
    if (disableDeblockingFilterIdc > 2) return false;
    deblockingSeen = disableDeblockingFilterIdc == 0;
    info.deblockingEnabled = deblockingSeen;
    return true;
}

} // namespace IOStream
