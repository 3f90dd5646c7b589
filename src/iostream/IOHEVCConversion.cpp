// Samples and configuration records of HEVC, "hvcC" (ISO/IEC 14496-15, 8.3.3).

#include "framework/CxAVTypes.h"
#include "host/Platform.h"
#include "iostream/IOHEVCNALPayload.h"
#include "iostream/SampleFormat.h"
#include "iostream/UnitScan.h"

#include <algorithm>
#include <map>

namespace IOStream {

namespace {

/// What a converted sample's block has beyond the size of the byte stream at least. A unit behind 00 00 01
/// gets one byte longer; where these take up the whole stream that is a quarter of its size.
constexpr uint64_t spareBytes = 131072;

/// Length of the start code at the beginning of the data, 3 or 4; 0 without one, and for data that is too
/// short or too long for a payload.
uint32_t FirstStartCodeLength(const uint8_t* data, uint64_t size) {
    if (size < 4 || size > UINT32_MAX) return 0;
    if (std::equal(std::begin(startCode), std::end(startCode), data)) return 4;
    return std::equal(std::begin(startCode) + 1, std::end(startCode), data) ? 3 : 0;
}

/// Units by type, those of one type in stream order.
using UnitsByType = std::map<uint8_t, std::vector<NALBytes>>;

void AppendArray(std::vector<uint8_t>& record, uint8_t type, const std::vector<NALBytes>& units) {
    record.push_back(type | 0x80); // array_completeness
    AppendNumber(record, units.size());
    for (const NALBytes unit : units)
        AppendWithLength(record, unit);
}

/// Writes a unit behind a length field of four bytes.
/// @return where the next one goes
uint8_t* WriteWithLength(uint8_t* place, NALBytes unit) {
    for (int shift = 24; shift >= 0; shift -= 8)
        *place++ = static_cast<uint8_t>(unit.size() >> shift);
    return std::copy(unit.begin(), unit.end(), place);
}

/// Writes the units of a byte stream, the same as a payload finds, as a sample.
/// @return where it ends
uint8_t* WriteSample(uint8_t* place, const uint8_t* data, uint32_t size) {
    const uint8_t* unit = nullptr; // found, but its end is not
    uint32_t scanned = 0;
    VisitUnits(data, scanned, size, [&](StartCode found, uint8_t) {
        if (unit != nullptr) place = WriteWithLength(place, {unit, data + found.place});
        unit = data + found.place + found.length;
    });
    return unit != nullptr ? WriteWithLength(place, {unit, data + size}) : place;
}

} // namespace

bool IOHEVCNALPayload::GetConfigRecord(std::vector<uint8_t>& out, uint32_t& fourCC) {
    if (!s_ConvertToHVCC(GetData(), GetDataSize(), out)) return false;
    fourCC = FourCC("hvcC");
    return true;
}

bool IOHEVCNALPayload::s_IsValidNalType(uint8_t type) {
    return (type >= 32 && type <= 34) || type == 39 || type == 40;
}

bool IOHEVCNALPayload::s_ConvertHEVC(const uint8_t* data, uint64_t size, std::vector<uint8_t>& out,
                                     uint8_t& lengthSize) {
    if (size < hvccHeaderSize) return false;
    lengthSize = LengthSize(data[Record_Layers]);
    out.clear();
    if (data[0] == 0) { // no record, but a byte stream
        out.assign(data, data + size);
        return true;
    }
    VisitHVCCUnits({data, size}, [&](uint8_t type, NALBytes unit) {
        if (s_IsValidNalType(type)) AppendWithStartCode(out, unit);
    });
    return !out.empty();
}

bool IOHEVCNALPayload::s_ConvertToHVCC(const uint8_t* data, uint64_t size, std::vector<uint8_t>& out) {
    const uint32_t startCodeLength = FirstStartCodeLength(data, size);
    if (startCodeLength == 0) return false;
    IOHEVCNALPayload payload(true);
    // The last unit is not parsed, because `GetStreamInfo` is not asked for: kept.
    payload.AppendData(data, static_cast<uint32_t>(size));
    if ((payload.record[Record_Profile] & 31) == 0) return false;
    UnitsByType units;
    for (uint32_t index = 0; index < payload.entries.size(); ++index) {
        const uint8_t type = payload.entries[index].type;
        if (s_IsValidNalType(type)) units[type].push_back(payload.Unit(index));
    }
    if (units.empty()) return false;
    // By the first start code alone, whatever the others are: kept.
    payload.record[Record_Layers] |= static_cast<uint8_t>(startCodeLength - 1);
    payload.record[Record_ArrayCount] = static_cast<uint8_t>(units.size());
    out.assign(payload.record.begin(), payload.record.end());
    for (const auto& [type, unitsOfType] : units)
        AppendArray(out, type, unitsOfType);
    return true;
}

bool IOHEVCNALPayload::s_ConvertToHVCCStream(const uint8_t* data, uint64_t size, uint8_t*& outData,
                                             uint64_t& outSize) {
    if (FirstStartCodeLength(data, size) == 0) return false;
    const uint64_t blockSize = size + std::max(spareBytes, size / 4);
    auto* const block = static_cast<uint8_t*>(Platform::AllocMemAligned(static_cast<int64_t>(blockSize), 32));
    if (block == nullptr) return false;
    const uint8_t* const end = WriteSample(block, data, static_cast<uint32_t>(size));
    if (end == block) {
        Platform::FreeMemAligned(block);
        return false;
    }
    outData = block;
    outSize = static_cast<uint64_t>(end - block);
    return true;
}

uint32_t IOHEVCNALPayload::s_ExtractParameterSets(const std::vector<uint8_t>& record,
                                                  std::vector<const uint8_t*>& pointers,
                                                  std::vector<uint64_t>& sizes) {
    if (record.size() < hvccHeaderSize || record[Record_ArrayCount] == 0) return 0;
    VisitHVCCUnits(record, [&](uint8_t type, NALBytes unit) {
        if (!s_IsValidNalType(type)) return;
        pointers.push_back(unit.data());
        sizes.push_back(unit.size());
    });
    return LengthSize(record[Record_Layers]);
}

} // namespace IOStream
