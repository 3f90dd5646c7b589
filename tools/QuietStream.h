#pragma once

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

/// Discards what is written to standard output or standard error while it lives: libraries print words of
/// their own beside the error that they return, and the command prints one line per failure. For short calls
/// on one thread.
class QuietStream {
public:
    /// @param stream  `stdout` or `stderr`
    explicit QuietStream(std::FILE* stream) : stream_(stream) {
        std::fflush(stream_);
        saved_ = fcntl(fileno(stream_), F_DUPFD_CLOEXEC, 0);
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (saved_ >= 0 && nowhere >= 0) dup2(nowhere, fileno(stream_));
        if (nowhere >= 0) close(nowhere);
    }
    ~QuietStream() {
        std::fflush(stream_);
        if (saved_ < 0) return;
        dup2(saved_, fileno(stream_));
        close(saved_);
    }
    QuietStream(const QuietStream&) = delete;
    QuietStream& operator=(const QuietStream&) = delete;

private:
    std::FILE* stream_;
    int saved_ = -1; ///< -1 if the stream's file is closed
};
