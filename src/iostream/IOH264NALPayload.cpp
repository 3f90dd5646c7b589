#include "iostream/IOH264NALPayload.h"

#include "iostream/SampleFormat.h"
#include "iostream/UnitScan.h"

#include <algorithm>
#include <iterator>
#include <optional>

namespace IOStream {

namespace {

/// What the scan looks at again with the next data, because a start code may straddle the end. A start code
/// that the scan left behind because a single byte stood behind it has lost its first zero then, and is never
/// found: kept.
constexpr uint32_t rescannedBytes = 3;

} // namespace

IOH264NALPayload::IOH264NALPayload(bool parseNALs) : parseNALs(parseNALs) {}

uint8_t IOH264NALPayload::GetNALType(uint8_t firstByte) const { return firstByte & 31; }

uint32_t IOH264NALPayload::GetFrameType() {
    GetStreamInfo();
    return info.frameType;
}

const IOElementaryStreamInfo& IOH264NALPayload::GetStreamInfo() {
    for (auto index = static_cast<uint32_t>(lastParsed + 1); index < entries.size(); ++index)
        ParseEntry(index);
    return info;
}

void IOH264NALPayload::AppendData(const uint8_t* bytes, uint32_t size) {
    if (!Grow(size)) return;
    std::copy_n(bytes, size, data.begin() + dataSize);
    dataSize += size;
    ScanData();
}

bool IOH264NALPayload::AppendSample(const uint8_t* sample, uint32_t size, uint32_t lengthSize) {
    if (s_IsAnnexB(sample, size)) {
        AppendData(sample, size);
        return true;
    }
    if (lengthSize < 1 || lengthSize > 4) return true;
    LengthPrefixedReader reader(sample, size);
    while (const std::optional<uint32_t> length = reader.ReadNumber(lengthSize)) {
        const NALBytes unit = reader.Take(*length);
        AppendData(startCode, std::size(startCode));
        AppendData(unit.data(), static_cast<uint32_t>(unit.size()));
    }
    return true;
}

bool IOH264NALPayload::ScanData() {
    if (isScanStopped) return false;
    isScanStopped = !VisitUnits(data.data(), scanPos, dataSize, [this](StartCode found, uint8_t header) {
        entries.push_back({GetNALType(header), found.length, found.place});
        // A unit that the info was asked for in between is parsed once more: kept.
        if (entries.size() >= 2) ParseEntry(static_cast<uint32_t>(entries.size() - 2));
    });
    if (isScanStopped) return false;
    if (dataSize >= rescannedBytes) scanPos = dataSize - rescannedBytes;
    return true;
}

std::span<const uint8_t> IOH264NALPayload::Unit(uint32_t index) const {
    const uint32_t begin = entries[index].offset + entries[index].startCodeLength;
    const uint32_t end = std::max(begin, index + 1 < entries.size() ? entries[index + 1].offset : dataSize);
    return {data.data() + begin, end - begin};
}

void IOH264NALPayload::ParseEntry(uint32_t index) {
    if (!parseNALs || index >= entries.size()) return;
    ParseUnit(entries[index].type, Unit(index));
    lastParsed = static_cast<int32_t>(index);
}

} // namespace IOStream
