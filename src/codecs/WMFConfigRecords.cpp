#include "codecs/WMFConfigRecords.h"

#include "codecs/WMFAnnexB.h"

#include <algorithm>
#include <limits>

namespace CxWMF {

namespace {

/// Reads numbers and units out of a record, as far as it goes.
class RecordReader {
public:
    RecordReader(std::span<const uint8_t> record, size_t start)
        : rest(record.subspan(std::min(start, record.size()))) {}

    /// A number of one or two bytes, highest first. False at the end.
    bool Read(size_t bytes, uint32_t& number) {
        if (rest.size() < bytes) return false;
        number = 0;
        for (const uint8_t byte : rest.first(bytes))
            number = number << 8 | byte;
        rest = rest.subspan(bytes);
        return true;
    }
    /// A unit behind its length. False if it passes the end.
    bool ReadUnit(std::span<const uint8_t>& unit) {
        uint32_t length = 0;
        if (!Read(lengthBytes, length) || rest.size() < length) return false;
        unit = rest.first(length);
        rest = rest.subspan(length);
        return true;
    }

private:
    static constexpr size_t lengthBytes = 2;

    std::span<const uint8_t> rest;
};

/// Copies `count` units behind start codes. False if one is cut off, or there is no room for it.
bool AppendUnits(RecordReader& reader, uint32_t count, std::vector<uint8_t>& stream) {
    constexpr size_t mostBytes = std::numeric_limits<int32_t>::max();
    for (std::span<const uint8_t> unit; count > 0; --count) {
        if (!reader.ReadUnit(unit)) return false;
        if (stream.size() + startCode.size() + unit.size() > mostBytes) return false;
        stream.insert(stream.end(), startCode.begin(), startCode.end());
        stream.insert(stream.end(), unit.begin(), unit.end());
    }
    return true;
}

/// Whether an array of an "hvcC" record holds parameter sets or SEI messages (ISO/IEC 23008-2, table 7-1).
bool IsForRecord(uint32_t type) { return (type >= 32 && type <= 34) || type == 39 || type == 40; }

void AppendLength(size_t length, std::vector<uint8_t>& record) {
    record.push_back(static_cast<uint8_t>(length >> 8));
    record.push_back(static_cast<uint8_t>(length));
}

} // namespace

std::vector<uint8_t> AnnexBFromAvcRecord(std::span<const uint8_t> record) {
    if (IsAnnexB(record)) return {record.begin(), record.end()};
    constexpr size_t countOffset = 5;
    constexpr uint32_t countMask = 31;
    RecordReader reader(record, countOffset);
    std::vector<uint8_t> stream;
    uint32_t count = 0;
    if (!reader.Read(1, count)) return stream;
    // Without a sequence parameter set the next byte is the count of picture parameter sets at once.
    if (!AppendUnits(reader, count & countMask, stream) || !reader.Read(1, count)) return stream;
    AppendUnits(reader, count, stream);
    return stream;
}

std::vector<uint8_t> AnnexBFromHevcRecord(std::span<const uint8_t> record) {
    if (IsAnnexB(record)) return {record.begin(), record.end()};
    constexpr size_t arraysOffset = 22;
    constexpr uint32_t typeMask = 63;
    RecordReader reader(record, arraysOffset);
    std::vector<uint8_t> stream;
    uint32_t arrays = 0;
    reader.Read(1, arrays);
    for (; arrays > 0; --arrays) {
        uint32_t type = 0;
        uint32_t count = 0;
        if (!reader.Read(1, type) || !reader.Read(2, count)) break;
        if (!IsForRecord(type & typeMask) || !AppendUnits(reader, count, stream)) break;
    }
    return stream;
}

std::vector<uint8_t> AvcRecordFromAnnexB(std::span<const uint8_t> stream) {
    if (!BeginsWithStartCode(stream)) return {stream.begin(), stream.end()};
    // Start codes of three bytes don't count, and stay part of a unit. Kept.
    const auto nextUnit = [&stream] {
        stream = stream.subspan(std::min(startCode.size(), stream.size()));
        const auto end = std::search(stream.begin(), stream.end(), startCode.begin(), startCode.end());
        const auto unit = stream.first(static_cast<size_t>(end - stream.begin()));
        stream = stream.subspan(unit.size());
        return unit;
    };
    const std::span<const uint8_t> sequence = nextUnit();
    const std::span<const uint8_t> picture = nextUnit();
    constexpr size_t leastSequence = 4;
    constexpr size_t mostBytes = std::numeric_limits<uint16_t>::max();
    if (sequence.size() < leastSequence || picture.empty()) return {};
    if (sequence.size() > mostBytes || picture.size() > mostBytes) return {};

    std::vector<uint8_t> record = {1, sequence[1], sequence[2], sequence[3], 0xFF, 0xE1};
    AppendLength(sequence.size(), record);
    record.insert(record.end(), sequence.begin(), sequence.end());
    record.push_back(1);
    AppendLength(picture.size(), record);
    record.insert(record.end(), picture.begin(), picture.end());
    return record;
}

} // namespace CxWMF
