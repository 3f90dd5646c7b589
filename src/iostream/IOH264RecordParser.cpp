#include "framework/CxAVTypes.h"
#include "iostream/H264NALTypes.h"
#include "iostream/IOH264NALPayload.h"
#include "iostream/SampleFormat.h"

namespace IOStream {

uint32_t IOH264NALPayload::ParseConfigRecord(const std::vector<uint8_t>& record, uint32_t fourCC) {
    if (fourCC != FourCC("avcC") || record.size() < 8) return 0;
    const uint32_t spsLength = record[6] << 8 | record[7];
    if (spsLength < 2) return 0;
    info.profile = record[1];
    info.level = record[3];
    LengthPrefixedReader reader(record.data() + 6, record.size() - 6);
    const auto parseNext = [&](H264NALType type) {
        const std::optional<NALBytes> unit = reader.ReadUnit(2);
        if (unit && unit->size() > 2) ParseUnit(type, *unit);
        return unit.has_value();
    };
    // The first sequence parameter set is the only one that is read, whatever byte 5 says of their number,
    // and what follows it counts as the picture parameter sets. Kept.
    if (parseNext(H264NAL_SPS)) {
        uint32_t setsLeft = reader.ReadNumber(1).value_or(0);
        while (setsLeft > 0 && parseNext(H264NAL_PPS))
            --setsLeft;
    }
    return LengthSize(record[4]);
}

} // namespace IOStream
