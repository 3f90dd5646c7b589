#include "codecs/wmf/ConversionCheck.h"

#include "codecs/WMFAnnexB.h"
#include "codecs/WMFConfigRecords.h"

#include <algorithm>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>

namespace {

using Bytes = std::vector<uint8_t>;

void Require(bool holds, const char* promise) {
    if (!holds) throw std::logic_error(promise);
}

/// A copy in memory of exactly its size.
class Exact {
public:
    explicit Exact(const Bytes& bytes) : memory(new uint8_t[bytes.size()]), size(bytes.size()) {
        std::ranges::copy(bytes, memory.get());
    }
    std::span<uint8_t> Span() const { return {memory.get(), size}; }

private:
    std::unique_ptr<uint8_t[]> memory;
    size_t size;
};

std::string Text(std::span<const uint8_t> bytes) { return {bytes.begin(), bytes.end()}; }

const std::string shortCode("\0\0\1", 3);
const std::string longCode("\0\0\0\1", 4);

std::string Number(size_t value, int bytes) {
    std::string text;
    for (int i = bytes - 1; i >= 0; --i)
        text += static_cast<char>(value >> (8 * i));
    return text;
}

/// The units of a byte stream, found as text.
std::vector<std::string> UnitsOf(const std::string& stream) {
    std::vector<std::string> units;
    size_t code = stream.find(shortCode);
    while (code != std::string::npos) {
        const size_t start = code + shortCode.size();
        code = stream.find(shortCode, start);
        std::string unit = stream.substr(start, code == std::string::npos ? code : code - start);
        // One zero goes with the start code behind it.
        if (code != std::string::npos && !unit.empty() && unit.back() == '\0') unit.pop_back();
        units.push_back(unit);
    }
    return units;
}

std::string ModelOfSample(const std::string& stream, size_t capacity) {
    std::string sample;
    for (const std::string& unit : UnitsOf(stream)) {
        if (sample.size() + 4 + unit.size() > capacity) break;
        if (!unit.empty()) sample += Number(unit.size(), 4) + unit;
    }
    return sample;
}

std::string ModelOfStream(const std::string& sample) {
    if (sample.size() > 4 && sample.starts_with(longCode)) return sample;
    std::string stream = sample;
    for (size_t at = 0; at + 4 <= sample.size() && sample[at] == 0;) {
        size_t length = 0;
        for (size_t i = 1; i < 4; ++i)
            length = length * 256 + static_cast<uint8_t>(sample[at + i]);
        stream.replace(at, 4, longCode);
        at += 4 + length;
    }
    return stream;
}

/// The record, if `stream` has what it takes.
std::string ModelOfRecord(const std::string& stream) {
    if (!stream.starts_with(longCode)) return stream;
    const size_t second = stream.find(longCode, 4);
    if (second == std::string::npos) return "";
    const size_t third = stream.find(longCode, second + 4);
    const std::string sequence = stream.substr(4, second - 4);
    const std::string picture =
        stream.substr(second + 4, third == std::string::npos ? third : third - second - 4);
    if (sequence.size() < 4 || sequence.size() > 65535 || picture.empty() || picture.size() > 65535)
        return "";
    return "\1" + sequence.substr(1, 3) + "\xff\xe1" + Number(sequence.size(), 2) + sequence + "\1" +
           Number(picture.size(), 2) + picture;
}

} // namespace

void CheckAnnexB(const Bytes& bytes, size_t capacity) {
    const Exact stream(bytes);
    const Exact sample(Bytes(capacity, 0xaa));
    const size_t written = CxWMF::LengthPrefixesFromAnnexB(stream.Span(), sample.Span());
    Require(written <= capacity, "a sample stays in its room");
    Require(Text(sample.Span().first(written)) == ModelOfSample(Text(bytes), capacity),
            "a sample holds the units of its stream");
    Require(Text(stream.Span()) == Text(bytes), "a stream is only read");

    const Exact turned(bytes);
    CxWMF::AnnexBFromLengthPrefixes(turned.Span());
    Require(Text(turned.Span()) == ModelOfStream(Text(bytes)), "lengths become start codes");

    for (size_t from = 0; from <= bytes.size(); ++from) {
        const size_t code = Text(bytes).find(shortCode, from);
        const size_t expected = code == std::string::npos ? bytes.size() : code;
        const bool isLong = code != std::string::npos && code > from && bytes[code - 1] == 0;
        Require(CxWMF::FindStartCode(stream.Span(), from) == expected - (isLong ? 1 : 0),
                "the first start code is found");
        if (from == 16) break; // The rest is found on the way.
    }
}

void CheckRecords(const Bytes& bytes) {
    const Exact record(bytes);
    for (const Bytes& stream :
         {CxWMF::AnnexBFromAvcRecord(record.Span()), CxWMF::AnnexBFromHevcRecord(record.Span())}) {
        const bool isCopy = stream == bytes;
        Require(isCopy || stream.empty() || CxWMF::BeginsWithStartCode(stream),
                "a stream begins with a start code");
        // Two bytes of length become four of a start code.
        Require(stream.size() <= 2 * bytes.size(), "a stream holds what its record does");
    }
    Require(Text(CxWMF::AvcRecordFromAnnexB(record.Span())) == ModelOfRecord(Text(bytes)),
            "a record holds the first two units of its stream");
}

std::vector<Unit> RandomUnits(size_t count, size_t mostBytes, std::mt19937& random) {
    std::vector<Unit> units(count);
    for (Unit& unit : units) {
        unit.resize(1 + random() % mostBytes);
        // Many small numbers, so that start codes are only just avoided.
        for (uint8_t& byte : unit)
            byte = static_cast<uint8_t>(random() % 3 == 0 ? random() : random() % 3);
        for (size_t i = 2; i < unit.size(); ++i)
            if (unit[i - 2] == 0 && unit[i - 1] == 0 && unit[i] <= 1) unit[i] = 3;
        if (unit.back() == 0) unit.back() = 0x80;
    }
    return units;
}
