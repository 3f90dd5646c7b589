#include "rawsdk/clip/ClipFormat.h"

#include "rawsdk/clip/Failure.h"
#include "rawsdk/clip/FrameRecord.h"

#include <algorithm>

namespace rawsdk {

namespace {

constexpr uint8_t magic[8] = {'R', 'V', 'L', 'C', 'L', 'I', 'P', '\n'};
constexpr uint32_t version = 1;
constexpr size_t placeBytes = 16;

ClipProperties ReadClip(ByteReader& reader) {
    ClipProperties clip;
    clip.width = reader.Read<uint32_t>();
    clip.height = reader.Read<uint32_t>();
    clip.frameRate = reader.Read<float>();
    clip.camera = reader.ReadText<char>();
    clip.settings = ReadClipSettings(reader);
    clip.metadata = ReadMetadata(reader);
    clip.table = ReadColorTable(reader);
    Require(reader.IsSound() && IsPictureSize(clip.width, clip.height));
    return clip;
}

FramePlace ReadPlace(ByteReader& reader, uint64_t framesEnd) {
    const auto offset = reader.Read<uint64_t>();
    const auto size = reader.Read<uint32_t>();
    Require(offset >= ClipHeader::bytes && offset <= framesEnd && size <= framesEnd - offset);
    Require(size >= FrameRecord::leastBytes && size <= FrameRecord::mostBytes);
    return {offset, size, reader.Read<uint32_t>()};
}

} // namespace

std::string TimecodeText(uint32_t timecode) {
    if (timecode == noTimecode) return {};
    const auto pair = [&](uint32_t shift, uint32_t mask) {
        const uint32_t digits = timecode >> shift & mask;
        return std::string{static_cast<char>('0' + std::min(digits >> 4, 9u)),
                           static_cast<char>('0' + std::min(digits & 0xF, 9u))};
    };
    const bool dropsFrames = (timecode & 0x40) != 0;
    return pair(24, 0x3F) + ':' + pair(16, 0x7F) + ':' + pair(8, 0x7F) + (dropsFrames ? ';' : ':') +
           pair(0, 0x3F);
}

std::vector<uint8_t> WriteDirectory(const ClipDirectory& directory) {
    const ClipProperties& clip = directory.clip;
    ByteWriter writer;
    writer.Write(clip.width);
    writer.Write(clip.height);
    writer.Write(clip.frameRate);
    writer.WriteText<char>(clip.camera);
    WriteSettings(clip.settings, writer);
    WriteMetadata(clip.metadata, writer);
    WriteColorTable(clip.table, writer);
    writer.Write(uint64_t{directory.frames.size()});
    for (const FramePlace& place : directory.frames) {
        writer.Write(place.offset);
        writer.Write(place.size);
        writer.Write(place.timecode);
    }
    return writer.Bytes();
}

ClipDirectory ReadDirectory(std::span<const uint8_t> bytes, uint64_t framesEnd) {
    ByteReader reader(bytes);
    ClipDirectory directory;
    directory.clip = ReadClip(reader);
    const auto frames = reader.Read<uint64_t>();
    Require(frames == reader.Left() / placeBytes && reader.Left() % placeBytes == 0);
    directory.frames.reserve(frames);
    for (uint64_t i = 0; i < frames; ++i)
        directory.frames.push_back(ReadPlace(reader, framesEnd));
    Require(reader.IsSound());
    return directory;
}

std::vector<uint8_t> WriteHeader(const ClipHeader& header) {
    ByteWriter writer;
    writer.WriteBytes(magic);
    writer.Write(version);
    writer.Write(header.directoryCrc);
    writer.Write(header.directoryOffset);
    writer.Write(header.directorySize);
    writer.Write(uint32_t{0});
    writer.Write(Crc32(writer.Bytes()));
    return writer.Bytes();
}

ClipHeader ReadHeader(std::span<const uint8_t> bytes) {
    Require(bytes.size() == ClipHeader::bytes);
    ByteReader reader(bytes);
    Require(std::ranges::equal(reader.ReadBytes(sizeof(magic)), magic) && reader.Read<uint32_t>() == version);
    ClipHeader header;
    header.directoryCrc = reader.Read<uint32_t>();
    header.directoryOffset = reader.Read<uint64_t>();
    header.directorySize = reader.Read<uint64_t>();
    reader.Read<uint32_t>();
    Require(reader.Read<uint32_t>() == Crc32(bytes.first(ClipHeader::bytes - sizeof(uint32_t))));
    return header;
}

} // namespace rawsdk
