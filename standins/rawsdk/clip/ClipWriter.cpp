#include "rawsdk/clip/ClipWriter.h"

#include "rawsdk/clip/Failure.h"
#include "rawsdk/clip/FrameRecord.h"

#include <utility>

namespace rawsdk {

ClipWriter::ClipWriter(const std::filesystem::path& path, ClipProperties properties) {
    if (!IsPictureSize(properties.width, properties.height)) throw Failure{E_INVALIDARG};
    directory_.clip = std::move(properties);
    file_.open(path, std::ios::binary | std::ios::trunc);
    Write(std::vector<uint8_t>(ClipHeader::bytes));
}

void ClipWriter::Add(const FrameProperties& properties, std::span<const uint16_t> samples) {
    const ClipProperties& clip = directory_.clip;
    if (samples.size() != size_t{clip.width} * clip.height) throw Failure{E_INVALIDARG};
    const std::vector<uint8_t> record = WriteFrame(properties, samples, clip.width, clip.height);
    directory_.frames.push_back({position_, static_cast<uint32_t>(record.size()), properties.timecode});
    Write(record);
}

void ClipWriter::Finish() {
    const std::vector<uint8_t> directory = WriteDirectory(directory_);
    const std::vector<uint8_t> header = WriteHeader({position_, directory.size(), Crc32(directory)});
    Write(directory);
    file_.seekp(0);
    Write(header);
    file_.close();
    if (!file_) throw Failure{E_FAIL};
}

void ClipWriter::Write(std::span<const uint8_t> bytes) {
    file_.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!file_) throw Failure{E_FAIL};
    position_ += bytes.size();
}

} // namespace rawsdk
