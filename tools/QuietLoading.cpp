// Standard output carries the result alone, and back-ends of the module print a line while it loads: that of
// FFmpeg says its version. The libraries' initialisers run before anything of the program but the functions
// of its `.preinit_array`, so one of these takes standard output away and `main` puts it back.

#include "QuietLoading.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr int kNotParked = -2;
constexpr int kWasClosed = -1;
constexpr int kFirstOther = 3; ///< first number that no standard stream has

int parked = kNotParked; ///< where the program's standard output is meanwhile

/// Calls the system itself: what stands between it and the program, be it a sanitizer's run-time, has not
/// started yet. This file is compiled without sanitizers for the same reason.
void ParkStandardOutput() {
    const auto copy = static_cast<int>(syscall(SYS_fcntl, STDOUT_FILENO, F_DUPFD_CLOEXEC, kFirstOther));
    if (copy < 0 && errno != EBADF) return;
    const auto nowhere = static_cast<int>(syscall(SYS_openat, AT_FDCWD, "/dev/null", O_WRONLY));
    if (nowhere < 0) {
        if (copy >= 0) syscall(SYS_close, copy);
        return;
    }
    parked = copy >= 0 ? copy : kWasClosed;
    if (nowhere == STDOUT_FILENO) return;
    syscall(SYS_dup3, nowhere, STDOUT_FILENO, 0);
    syscall(SYS_close, nowhere);
}

[[gnu::section(".preinit_array"), gnu::used]] void (*const parkFirst)() = ParkStandardOutput;

} // namespace

void EndQuietLoading() {
    std::fflush(stdout);
    if (parked == kNotParked) return;
    if (parked == kWasClosed) {
        close(STDOUT_FILENO);
    } else {
        dup2(parked, STDOUT_FILENO);
        close(parked);
    }
    parked = kNotParked;
}
