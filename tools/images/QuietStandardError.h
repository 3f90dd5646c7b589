#pragma once

#include <fcntl.h>
#include <unistd.h>

/// Discards what is written to standard error while it lives: image libraries print words of their own beside
/// the error that they return, and the command prints one line per failure. For short calls on one thread.
class QuietStandardError {
public:
    QuietStandardError() : saved_(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0)) {
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (saved_ >= 0 && nowhere >= 0) dup2(nowhere, STDERR_FILENO);
        if (nowhere >= 0) close(nowhere);
    }
    ~QuietStandardError() {
        if (saved_ < 0) return;
        dup2(saved_, STDERR_FILENO);
        close(saved_);
    }
    QuietStandardError(const QuietStandardError&) = delete;
    QuietStandardError& operator=(const QuietStandardError&) = delete;

private:
    int saved_; ///< -1 if standard error is closed
};
