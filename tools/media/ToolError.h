#pragma once

#include <stdexcept>
#include <string>
#include <utility>

/// What the command gives back to the shell.
enum class ExitStatus : int {
    Done = 0,
    JobFailed = 1,
    Usage = 2,
    CannotOpen = 3,
    Damaged = 4,
    Unsupported = 5,
    CannotWrite = 6,
    Cancelled = 130,
};

/// A failure that ends a job. `what()` is the one line "FILE: CAUSE" that a person reads.
class ToolError : public std::runtime_error {
public:
    ToolError(ExitStatus status, std::string file, std::string cause)
        : std::runtime_error(file + ": " + cause), exitStatus(status), fileName(std::move(file)),
          causeText(std::move(cause)) {}

    ExitStatus status() const { return exitStatus; }
    const std::string& file() const { return fileName; }
    const std::string& cause() const { return causeText; }

private:
    ExitStatus exitStatus;
    std::string fileName;
    std::string causeText;
};
