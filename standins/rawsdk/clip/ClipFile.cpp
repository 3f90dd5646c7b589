#include "rawsdk/clip/ClipFile.h"

#include "rawsdk/clip/Failure.h"

#include <algorithm>
#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace rawsdk {

namespace {

/// A file descriptor until somebody else owns it.
class Descriptor {
public:
    explicit Descriptor(const std::filesystem::path& path) : file_(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (file_ < 0) throw Failure{clipNotFound};
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (file_ >= 0) close(file_);
    }

    int Get() const { return file_; }
    int Take() { return std::exchange(file_, -1); }

private:
    int file_;
};

uint64_t SizeOf(int file) {
    struct stat status {};
    if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) throw Failure{clipNotFound};
    return static_cast<uint64_t>(status.st_size);
}

void ReadFrom(int file, uint64_t offset, std::span<uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = pread(file, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        Require(count > 0);
        bytes = bytes.subspan(static_cast<size_t>(count));
        offset += static_cast<uint64_t>(count);
    }
}

ClipDirectory ReadDirectoryOf(int file) {
    const uint64_t size = SizeOf(file);
    Require(size >= ClipHeader::bytes);
    std::vector<uint8_t> bytes(ClipHeader::bytes);
    ReadFrom(file, 0, bytes);
    const ClipHeader header = ReadHeader(bytes);
    Require(header.directoryOffset <= size && header.directorySize == size - header.directoryOffset);
    bytes.resize(header.directorySize);
    ReadFrom(file, header.directoryOffset, bytes);
    Require(Crc32(bytes) == header.directoryCrc);
    return ReadDirectory(bytes, header.directoryOffset);
}

std::shared_ptr<const ColorTable> ReadSidecar(const std::filesystem::path& clip) {
    std::ifstream text(SidecarOf(clip));
    if (!text) return nullptr;
    try {
        return std::make_shared<ColorTable>(ReadColorTable(text));
    } catch (const Failure&) {
        return nullptr;
    }
}

} // namespace

ClipFile::ClipFile(const std::filesystem::path& path) {
    Descriptor file(path);
    directory_ = ReadDirectoryOf(file.Get());
    if (Clip().table.size != 0) embedded_ = std::make_shared<ColorTable>(std::move(directory_.clip.table));
    directory_.clip.table = {};
    sidecar_ = ReadSidecar(path);
    file_ = file.Take();
}

ClipFile::~ClipFile() { close(file_); }

uint32_t ClipFile::BitstreamBound() const {
    const auto largest = std::ranges::max_element(directory_.frames, {}, &FramePlace::size);
    return largest == directory_.frames.end() ? 0 : largest->size;
}

std::shared_ptr<const ColorTable> ClipFile::Table(std::string_view lutMode) const {
    if (lutMode == lutEmbedded) return embedded_;
    return lutMode == lutSidecar ? sidecar_ : nullptr;
}

FrameRecord ClipFile::Read(uint64_t frame, std::span<uint8_t> buffer) const {
    if (frame >= FrameCount()) throw Failure{E_INVALIDARG};
    const FramePlace& place = directory_.frames[frame];
    if (place.size > buffer.size()) throw Failure{E_INVALIDARG};
    const std::span<uint8_t> bytes = buffer.first(place.size);
    ReadFrom(file_, place.offset, bytes);
    return ReadFrame(bytes, Clip().height);
}

} // namespace rawsdk
