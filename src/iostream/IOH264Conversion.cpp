// Samples: Annex B streams and length-prefixed units. Configuration records are in IOH264ConfigRecord.cpp.

#include "iostream/H264NALTypes.h"
#include "iostream/IOH264NALPayload.h"
#include "iostream/SampleFormat.h"

#include <algorithm>
#include <iterator>

namespace IOStream {

namespace {

/// Size of the sample's byte stream, so that it is allocated once.
uint64_t AnnexBSize(LengthPrefixedReader reader, uint32_t lengthSize) {
    uint64_t size = 0;
    while (const std::optional<NALBytes> unit = reader.ReadUnit(lengthSize))
        size += std::size(startCode) + unit->size();
    return size + reader.Rest().size();
}

/// Writes a start code over the length field of four bytes before a unit.
void OverwriteLength(NALBytes unit) {
    uint8_t* const field = const_cast<uint8_t*>(unit.data()) - std::size(startCode);
    std::copy(std::begin(startCode), std::end(startCode), field);
}

} // namespace

bool IOH264NALPayload::s_IsAnnexB(const uint8_t* data, uint64_t size) {
    return size >= 5 && std::equal(std::begin(startCode), std::end(startCode), data);
}

uint64_t IOH264NALPayload::GetAVCCStreamOffset(const uint8_t* data, uint64_t size) {
    uint64_t offset = 0;
    while (s_IsAnnexB(data + offset, size - offset)) {
        const uint8_t type = data[offset + 4] & 31;
        if (type != H264NAL_AccessUnitDelimiter && type != H264NAL_EndOfSequence) break;
        offset += 5;
    }
    return offset;
}

bool IOH264NALPayload::s_ConvertToAnnexB(const uint8_t* data, uint64_t size, uint8_t lengthSize,
                                         std::vector<uint8_t>& out) {
    out.clear();
    if (s_IsAnnexB(data, size)) return true;
    // With length fields of no bytes the walk would never end.
    if (lengthSize == 0 || lengthSize > 4) return false;
    LengthPrefixedReader reader(data, size);
    const bool isInPlace = lengthSize == 4;
    if (!isInPlace) out.reserve(AnnexBSize(reader, lengthSize));
    while (const std::optional<NALBytes> unit = reader.ReadUnit(lengthSize)) {
        // Writes to the caller's buffer, although it is declared const: kept.
        if (isInPlace)
            OverwriteLength(*unit);
        else
            AppendWithStartCode(out, *unit);
    }
    const NALBytes rest = reader.Rest();
    if (rest.empty()) return true;
    if (rest.size() < lengthSize) return false;
    // The last unit passes the end: it stays as it is, length field and all.
    if (!isInPlace) Append(out, rest);
    return true;
}

} // namespace IOStream
