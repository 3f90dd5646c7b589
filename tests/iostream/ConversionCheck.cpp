#include "iostream/ConversionCheck.h"

#include "framework/CxAVTypes.h"
#include "host/Platform.h"
#include "iostream/PayloadAccess.h"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

using IOStream::IOH264NALPayload;
using IOStream::IOHEVCNALPayload;
using Bytes = std::vector<uint8_t>;

const Bytes untouched = {0xAA, 0xBB};

void Require(bool holds, const char* promise) {
    if (!holds) throw std::logic_error(promise);
}

/// The same bytes without anything behind them.
Bytes Tight(const Bytes& bytes) {
    Bytes copy(bytes);
    copy.shrink_to_fit();
    return copy;
}

bool BeginsWithStartCode(const Bytes& bytes) {
    const Bytes startCode = {0, 0, 0, 1};
    return bytes.size() >= 4 && std::equal(startCode.begin(), startCode.end(), bytes.begin());
}

using RecordConversion = bool (*)(const uint8_t*, uint64_t, Bytes&, uint8_t&);

void CheckRecordToStream(const Bytes& bytes, RecordConversion convert, size_t leastSize) {
    Bytes out = untouched;
    uint8_t lengthSize = 0;
    const bool isDone = convert(bytes.data(), bytes.size(), out, lengthSize);
    if (bytes.size() < leastSize) {
        Require(!isDone && out == untouched && lengthSize == 0, "a short record leaves the outputs alone");
        return;
    }
    Require(isDone != out.empty(), "a stream comes with a true result and no other");
    Require(lengthSize >= 1 && lengthSize <= 4, "length sizes are 1 to 4");
    Require(out.size() <= 3 * bytes.size(), "a unit takes at least its length field");
    if (isDone && bytes[0] != 0) Require(BeginsWithStartCode(out), "a stream begins with a start code");
}

template <class Payload>
void CheckExtraction(const Bytes& record) {
    std::vector<const uint8_t*> pointers;
    std::vector<uint64_t> sizes;
    const uint32_t lengthSize = Payload::s_ExtractParameterSets(record, pointers, sizes);
    Require(lengthSize <= 4, "length sizes are 1 to 4");
    Require(pointers.size() == sizes.size(), "each unit has a place and a size");
    const uint8_t* const end = record.data() + record.size();
    for (size_t i = 0; i < pointers.size(); ++i) {
        Require(pointers[i] >= record.data() && pointers[i] <= end, "units begin in the record");
        Require(sizes[i] <= static_cast<uint64_t>(end - pointers[i]), "units end in the record");
    }
}

/// Feeds the bytes in pieces, as one sample and as a record, and asks for all that was learnt.
template <class Payload>
void CheckPayload(const Bytes& bytes, uint8_t lengthSize, size_t pieceSize, uint32_t recordTag) {
    Payload pieces;
    for (size_t at = 0; at < bytes.size(); at += pieceSize)
        pieces.AppendData(bytes.data() + at, static_cast<uint32_t>(std::min(pieceSize, bytes.size() - at)));
    Payload sample;
    Require(sample.AppendSample(bytes.data(), static_cast<uint32_t>(bytes.size()), lengthSize),
            "samples are taken");
    Payload record;
    Require(record.ParseConfigRecord(bytes, recordTag) <= 4, "length sizes are 1 to 4");
    for (Payload* payload : {&pieces, &sample, &record}) {
        payload->GetStreamInfo();
        Require(payload->GetFrameType() <= IOStream::IOFrame_BiPredicted, "frame types are known ones");
        for (uint32_t index = 0; index < payload->entries.size(); ++index)
            Require(payload->Unit(index).size() < payload->GetDataSize(), "units lie in the data");
        Bytes out = untouched;
        uint32_t tag = 0;
        const bool isDone = payload->GetConfigRecord(out, tag);
        Require((tag == recordTag) == isDone, "the tag comes with a record");
        Require(isDone || out == untouched, "a false result leaves the record alone");
    }
}

void CheckSampleToStream(const Bytes& bytes, uint8_t lengthSize) {
    const Bytes input = Tight(bytes);
    Bytes out = untouched;
    const bool isDone = IOH264NALPayload::s_ConvertToAnnexB(input.data(), input.size(), lengthSize, out);
    if (lengthSize != 4)
        Require(input == bytes, "only fields of four bytes are overwritten");
    else
        Require(out.empty(), "fields of four bytes never fill the output");
    if (lengthSize == 0 || lengthSize > 4)
        Require(isDone == IOH264NALPayload::s_IsAnnexB(bytes.data(), bytes.size()),
                "other length sizes are refused");
    if (isDone && out.empty() && lengthSize != 4)
        Require(bytes.empty() || BeginsWithStartCode(bytes), "an empty output is the input");
}

/// The sample of a byte stream; empty if there is none.
Bytes SampleOf(const Bytes& stream) {
    uint8_t* block = nullptr;
    uint64_t size = 77;
    if (!IOHEVCNALPayload::s_ConvertToHVCCStream(stream.data(), stream.size(), block, size)) {
        Require(block == nullptr && size == 77, "a false result leaves the outputs alone");
        return {};
    }
    const std::unique_ptr<uint8_t, void (*)(void*)> owner(block, Platform::FreeMemAligned);
    return {block, block + size};
}

void CheckStreamToSample(const Bytes& stream) {
    const Bytes sample = SampleOf(stream);
    // A first unit of one byte makes the sample look like a byte stream.
    if (sample.empty() || IOH264NALPayload::s_IsAnnexB(sample.data(), sample.size())) return;
    Bytes back = sample;
    Bytes out;
    Require(IOH264NALPayload::s_ConvertToAnnexB(back.data(), back.size(), 4, out), "samples are well formed");
    Require(SampleOf(Tight(back)) == sample, "a sample survives the way to a byte stream and back");
}

} // namespace

void CheckH264(const Bytes& bytes, uint8_t lengthSize, size_t pieceSize) {
    const Bytes input = Tight(bytes);
    const uint64_t offset = IOH264NALPayload::GetAVCCStreamOffset(input.data(), input.size());
    Require(offset <= input.size() && offset % 5 == 0, "delimiters of five bytes lie in the data");
    CheckRecordToStream(input, IOH264NALPayload::s_ConvertH264, 6);
    CheckExtraction<IOH264NALPayload>(input);
    CheckSampleToStream(input, lengthSize);
    CheckPayload<H264Payload>(input, lengthSize, pieceSize, FourCC("avcC"));
    Bytes record = input; // as an earlier record, and as the stream
    if (!IOH264NALPayload::s_ConvertToAVCC(input.data(), static_cast<uint32_t>(input.size()), record))
        Require(record == input, "a false result leaves the record alone");
}

void CheckHEVC(const Bytes& bytes, uint8_t lengthSize, size_t pieceSize) {
    const Bytes input = Tight(bytes);
    CheckRecordToStream(input, IOHEVCNALPayload::s_ConvertHEVC, 23);
    CheckExtraction<IOHEVCNALPayload>(input);
    CheckPayload<HEVCPayload>(input, lengthSize, pieceSize, FourCC("hvcC"));
    CheckStreamToSample(input);
    Bytes record = untouched;
    if (!IOHEVCNALPayload::s_ConvertToHVCC(input.data(), input.size(), record))
        Require(record == untouched, "a false result leaves the record alone");
    else
        Require(record.size() > 23 && record[22] > 0, "a record has arrays");
}
