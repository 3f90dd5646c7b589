#include "iostream/IOHEVCNALPayload.h"

#include "framework/CxAVTypes.h"
#include "iostream/SampleFormat.h"

namespace IOStream {

namespace {

enum NALType : uint8_t { NAL_SPS = 33, NAL_PPS = 34, NAL_PrefixSEI = 39 };

} // namespace

IOHEVCNALPayload::IOHEVCNALPayload(bool parseNALs) : IOH264NALPayload(parseNALs) {}

uint8_t IOHEVCNALPayload::GetNALType(uint8_t firstByte) const { return firstByte >> 1 & 63; }

void IOHEVCNALPayload::ParseNAL(uint8_t type, const uint8_t* payload, uint32_t size) {
    if (size < 2) return; // nothing behind the header, and no exception to pay for
    switch (type) {
    case NAL_SPS: ParseSPS(payload + 1, size - 1); break;
    case NAL_PPS: ParsePPS(payload + 1, size - 1); break;
    case NAL_PrefixSEI: ParseSEI(payload + 1, size - 1, true); break;
    default: break;
    }
}

uint32_t IOHEVCNALPayload::ParseConfigRecord(const std::vector<uint8_t>& configRecord, uint32_t fourCC) {
    if (fourCC != FourCC("hvcC") || configRecord.size() < record.size()) return 0;
    if (configRecord[Record_ArrayCount] == 0) return 0;
    info.profile = configRecord[Record_Profile] & 31;
    info.level = configRecord[Record_Level];
    VisitHVCCUnits(configRecord, [this](uint8_t type, NALBytes unit) { ParseUnit(type, unit); });
    return LengthSize(configRecord[Record_Layers]);
}

} // namespace IOStream
