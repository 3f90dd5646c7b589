#include "media/OutputStream.h"

#include "media/ToolError.h"

#include <new>

namespace {

constexpr int bufferSize = 1 << 20;

int WriteBytes(void* opaque, uint8_t* data, int size) {
    auto* file = static_cast<OutputFile*>(opaque);
    return file->Write(data, static_cast<size_t>(size)) ? size : AVERROR(file->Error());
}

int64_t Seek(void* opaque, int64_t offset, int whence) {
    auto* file = static_cast<OutputFile*>(opaque);
    const int64_t place = whence & AVSEEK_SIZE ? file->Size() : file->Seek(offset, whence & ~AVSEEK_FORCE);
    return place < 0 ? AVERROR(file->Error()) : place;
}

} // namespace

OutputStream::OutputStream(const std::string& path) : file(path) {
    auto* buffer = static_cast<uint8_t*>(av_malloc(bufferSize));
    if (buffer != nullptr) io = avio_alloc_context(buffer, bufferSize, 1, &file, nullptr, WriteBytes, Seek);
    if (io != nullptr) return;
    av_free(buffer);
    throw std::bad_alloc();
}

OutputStream::~OutputStream() {
    av_freep(&io->buffer);
    avio_context_free(&io);
}

void OutputStream::Check(int result) const {
    file.Check();
    const int failure = result < 0 ? result : io->error;
    if (failure < 0) throw ToolError(ExitStatus::CannotWrite, file.Path(), AvErrorText(failure));
}

void OutputStream::Commit() {
    avio_flush(io);
    Check(0);
    file.Commit();
}
