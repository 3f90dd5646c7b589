#include "rawsdk/clip/FrameRecord.h"

#include "rawsdk/clip/Failure.h"
#include "rawsdk/clip/StripCodec.h"

#include <algorithm>
#include <numeric>

namespace rawsdk {

namespace {

/// What stands between the first three numbers of a record and its strips.
std::vector<uint8_t> WriteHead(const FrameProperties& properties,
                               const std::vector<std::vector<uint8_t>>& strips) {
    ByteWriter writer;
    WriteSettings(properties.settings, writer);
    WriteMetadata(properties.metadata, writer);
    for (const std::vector<uint8_t>& strip : strips)
        writer.Write(static_cast<uint32_t>(strip.size()));
    return writer.Bytes();
}

std::vector<std::vector<uint8_t>> CompressStrips(std::span<const uint16_t> samples, uint32_t width) {
    std::vector<std::vector<uint8_t>> strips;
    const size_t stripSamples = size_t{stripRows} * width;
    for (; !samples.empty(); samples = samples.subspan(std::min(stripSamples, samples.size())))
        strips.push_back(CompressStrip(samples.first(std::min(stripSamples, samples.size())), width));
    return strips;
}

} // namespace

std::vector<uint8_t> WriteFrame(const FrameProperties& properties, std::span<const uint16_t> samples,
                                uint32_t width, uint32_t height) {
    const std::vector<std::vector<uint8_t>> strips =
        CompressStrips(samples.first(size_t{width} * height), width);
    const std::vector<uint8_t> head = WriteHead(properties, strips);
    const size_t stripBytes =
        std::accumulate(strips.begin(), strips.end(), size_t{0},
                        [](size_t sum, const auto& strip) { return sum + strip.size(); });
    const size_t size = 3 * sizeof(uint32_t) + head.size() + stripBytes;
    if (size > FrameRecord::mostBytes) throw Failure{E_INVALIDARG};
    ByteWriter writer;
    writer.Write(static_cast<uint32_t>(size));
    writer.Write(static_cast<uint32_t>(head.size()));
    writer.Write(Crc32(head));
    writer.WriteBytes(head);
    for (const std::vector<uint8_t>& strip : strips)
        writer.WriteBytes(strip);
    return writer.Bytes();
}

FrameRecord ReadFrame(std::span<const uint8_t> bytes, uint32_t height) {
    ByteReader reader(bytes);
    FrameRecord record;
    record.size = reader.Read<uint32_t>();
    const auto headBytes = reader.Read<uint32_t>();
    record.crc = reader.Read<uint32_t>();
    ByteReader head(reader.ReadBytes(headBytes));
    Require(reader.IsSound() && record.size == bytes.size());
    Require(Crc32(bytes.subspan(3 * sizeof(uint32_t), headBytes)) == record.crc);

    record.settings = ReadFrameSettings(head);
    record.metadata = ReadMetadata(head);
    for (uint32_t strip = 0; strip < StripsOf(height); ++strip)
        record.strips.push_back(reader.ReadBytes(head.Read<uint32_t>()));
    Require(head.IsSound() && head.Left() == 0 && reader.IsSound() && reader.Left() == 0);
    return record;
}

} // namespace rawsdk
