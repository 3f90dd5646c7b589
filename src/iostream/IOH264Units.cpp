#include "iostream/H264NALTypes.h"
#include "iostream/IOH264NALPayload.h"

#include <array>

namespace IOStream {

void IOH264NALPayload::ParseUnit(uint8_t type, std::span<const uint8_t> unit) {
    if (unit.empty()) return;
    const std::span<const uint8_t> payload = unit.subspan(1);
    try {
        ParseNAL(type, payload.data(), static_cast<uint32_t>(payload.size()));
    } catch (...) { // a broken unit leaves what was read of it
    }
}

void IOH264NALPayload::ParseNAL(uint8_t type, const uint8_t* payload, uint32_t size) {
    if (size == 0 && type != H264NAL_IDRSlice) return; // nothing to read, and no exception to pay for
    switch (type) {
    case H264NAL_Slice:
        // The first slice that is looked at settles the type.
        if (info.frameType == IOFrame_Unknown) {
            BitBuffer reader(payload, size);
            ClassifySlice(ParseSliceStart(reader));
        }
        break;
    case H264NAL_IDRSlice:
        info.frameType = IOFrame_Intra;
        if (size > 0) ParseIDRSlice(payload, size);
        break;
    case H264NAL_SPS: ParseSPS(payload, size); break;
    case H264NAL_PPS: ParsePPS(payload, size); break;
    default: break;
    }
}

/// SP slices count as predicted and SI slices as intra ones; an unknown type says nothing.
void IOH264NALPayload::ClassifySlice(uint32_t sliceType) {
    constexpr std::array<IOFrameType, 5> types = {IOFrame_Predicted, IOFrame_BiPredicted, IOFrame_Intra,
                                                  IOFrame_Predicted, IOFrame_Intra};
    if (sliceType < 2 * types.size()) info.frameType = types[sliceType % types.size()];
}

} // namespace IOStream
