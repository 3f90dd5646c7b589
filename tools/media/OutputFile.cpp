#include "media/OutputFile.h"

#include "media/ToolError.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Brings the new name to the disk. A file system that can't is no reason to fail: the file itself is there.
void SyncFolder(const std::string& path) {
    const std::string folder = std::filesystem::path(path).parent_path().string();
    const int handle = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0) return;
    fsync(handle);
    close(handle);
}

} // namespace

OutputFile::OutputFile(const std::string& target) : path(target), partPath(target + ".part") {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) {
        throw ToolError(ExitStatus::CannotWrite, path, std::strerror(EISDIR));
    }
    file = open(partPath.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (file < 0) throw ToolError(ExitStatus::CannotWrite, path, std::strerror(errno));
}

OutputFile::~OutputFile() {
    if (file >= 0) close(file);
    if (!isCommitted) unlink(partPath.c_str());
}

bool OutputFile::Note(bool done) {
    if (!done && error == 0) error = errno;
    return done;
}

bool OutputFile::Write(const uint8_t* data, size_t size) {
    for (size_t done = 0; done < size;) {
        const ssize_t written = write(file, data + done, size - done);
        if (written < 0 && errno == EINTR) continue;
        if (!Note(written >= 0)) return false;
        done += static_cast<size_t>(written);
    }
    return true;
}

int64_t OutputFile::Seek(int64_t offset, int whence) {
    const off_t place = lseek(file, offset, whence);
    Note(place >= 0);
    return place;
}

int64_t OutputFile::Size() {
    struct stat status {};
    return Note(fstat(file, &status) == 0) ? status.st_size : -1;
}

void OutputFile::Check() const {
    if (error != 0) throw ToolError(ExitStatus::CannotWrite, path, std::strerror(error));
}

void OutputFile::CheckRoom() {
    // A full disk has no block left, but may have room in a file's last one.
    constexpr std::array<uint8_t, 4096> block{};
    const int64_t end = Seek(0, SEEK_END);
    Write(block.data(), block.size());
    Require(ftruncate(file, end) == 0);
}

void OutputFile::Require(bool done) {
    Note(done);
    Check();
}

void OutputFile::Commit() {
    Check();
    Require(fsync(file) == 0);
    const int finished = file;
    file = -1;
    Require(close(finished) == 0); // some file systems tell only here that the disk is full
    Require(std::rename(partPath.c_str(), path.c_str()) == 0);
    isCommitted = true;
    SyncFolder(path);
}
