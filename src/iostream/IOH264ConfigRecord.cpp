// Configuration records of H.264, "avcC" (ISO/IEC 14496-15, 5.3.3).

#include "framework/CxAVTypes.h"
#include "iostream/H264NALTypes.h"
#include "iostream/IOH264NALPayload.h"
#include "iostream/SampleFormat.h"

#include <array>

namespace IOStream {

namespace {

/// Place of the sequence parameter set's length field in a record.
constexpr size_t spsLengthOffset = 6;
constexpr size_t leastRecordSize = 8;

/// The parameter sets that go into a record.
struct ParameterSets {
    NALBytes sps; ///< the last one; empty without any
    std::vector<NALBytes> pps;
};

/// Access unit delimiters bound the search for picture parameter sets to the first two access units.
class ParameterSetSearch {
public:
    void Take(uint8_t type, NALBytes unit) {
        if (type == H264NAL_SPS) found_.sps = unit;
        if (type == H264NAL_PPS && delimiters_ < 2) found_.pps.push_back(unit);
        if (type == H264NAL_AccessUnitDelimiter) ++delimiters_;
    }
    const ParameterSets& Found() const { return found_; }

private:
    ParameterSets found_;
    uint32_t delimiters_ = 0;
};

/// profile_idc, the constraint flags and level_idc of a sequence parameter set; nothing if it is too short.
std::optional<std::array<uint8_t, 3>> ProfileAndLevel(NALBytes sps) {
    std::array<uint8_t, 3> bytes = {};
    try {
        BitBuffer reader(sps.data(), static_cast<uint32_t>(sps.size()));
        reader.SkipBits(8);
        for (uint8_t& byte : bytes)
            byte = static_cast<uint8_t>(reader.ReadBits(8));
    } catch (const BitBuffer::IOBitBufferNoDataException&) {
        return std::nullopt;
    }
    return bytes;
}

/// The record up to and with its sequence parameter set; empty if that is too short.
std::vector<uint8_t> RecordStart(NALBytes sps) {
    std::vector<uint8_t> record;
    const std::optional<std::array<uint8_t, 3>> profile = ProfileAndLevel(sps);
    if (!profile) return record;
    record.push_back(1);
    Append(record, *profile);
    record.push_back(0xFF); // reserved bits, lengthSizeMinusOne 3
    record.push_back(0xE1); // reserved bits, one sequence parameter set
    AppendWithLength(record, sps);
    return record;
}

/// The same part of a record that is there already; empty if it does not hold that part whole.
std::vector<uint8_t> StartOf(const std::vector<uint8_t>& record) {
    if (record.size() < leastRecordSize) return {};
    LengthPrefixedReader reader(record.data() + spsLengthOffset, record.size() - spsLengthOffset);
    if (!reader.ReadUnit(2)) return {};
    return {record.data(), reader.Rest().data()};
}

} // namespace

bool IOH264NALPayload::GetConfigRecord(std::vector<uint8_t>& out, uint32_t& fourCC) {
    if (!s_ConvertToAVCC(GetData(), GetDataSize(), out)) return false;
    fourCC = FourCC("avcC");
    return true;
}

bool IOH264NALPayload::s_ConvertH264(const uint8_t* data, uint64_t size, std::vector<uint8_t>& out,
                                     uint8_t& lengthSize) {
    if (size < 6) return false;
    lengthSize = LengthSize(data[4]);
    out.clear();
    if (data[0] == 0) { // no record, but a byte stream
        out.assign(data, data + size);
        return true;
    }
    LengthPrefixedReader reader(data + spsLengthOffset, size - spsLengthOffset);
    std::optional<uint32_t> unitsLeft = data[5] & 31;
    while (unitsLeft.value_or(0) > 0) {
        const std::optional<NALBytes> unit = reader.ReadUnit(2);
        if (!unit) break;
        AppendWithStartCode(out, *unit);
        // The number of picture parameter sets is the size of one more group, and so is each byte that
        // follows a group, such as those of the high profiles' extension: kept.
        if (--*unitsLeft == 0) unitsLeft = reader.ReadNumber(1);
    }
    return !out.empty();
}

bool IOH264NALPayload::s_ConvertToAVCC(const uint8_t* data, uint32_t size, std::vector<uint8_t>& out) {
    IOH264NALPayload payload(false);
    payload.AppendData(data, size);
    ParameterSetSearch search;
    for (uint32_t index = 0; index < payload.entries.size(); ++index)
        search.Take(payload.entries[index].type, payload.Unit(index));
    const ParameterSets& found = search.Found();
    if (found.pps.empty()) return false;
    std::vector<uint8_t> record = found.sps.empty() ? StartOf(out) : RecordStart(found.sps);
    if (record.empty()) return false;
    record.push_back(static_cast<uint8_t>(found.pps.size())); // of more than 255 the low bits: kept
    for (const NALBytes pps : found.pps)
        AppendWithLength(record, pps);
    out = std::move(record);
    return true;
}

uint32_t IOH264NALPayload::s_ExtractParameterSets(const std::vector<uint8_t>& record,
                                                  std::vector<const uint8_t*>& pointers,
                                                  std::vector<uint64_t>& sizes) {
    if (record.size() < leastRecordSize) return 0;
    LengthPrefixedReader reader(record.data() + spsLengthOffset, record.size() - spsLengthOffset);
    const auto takeUnit = [&] {
        const std::optional<NALBytes> unit = reader.ReadUnit(2);
        if (!unit) return false;
        pointers.push_back(unit->data());
        sizes.push_back(unit->size());
        return true;
    };
    // One sequence parameter set, whatever the record says of their number: kept.
    if (!takeUnit()) return 0;
    uint32_t ppsLeft = reader.ReadNumber(1).value_or(0);
    if (ppsLeft == 0) return 0;
    while (ppsLeft > 0 && takeUnit())
        --ppsLeft;
    return LengthSize(record[4]);
}

} // namespace IOStream
